// The speed of all that take part in a row, measured in turn. Of several names and ways of
// a peer the fastest is taken.

#include "Measure.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "Timing.h"

namespace quorvel::bench {

namespace {

constexpr int repetitionsToChoose = 3;

using Entrants = std::vector<const Entrant*>;

bool convertAll(Contender& contender, const std::vector<std::string>& texts) {
  return std::all_of(texts.begin(), texts.end(),
                     [&](const std::string& text) { return contender.convert(text); });
}

Times timesOf(const Entrants& entrants, const std::vector<std::string>& texts, int repetitions) {
  std::vector<Job> jobs;
  for (const Entrant* entrant : entrants) {
    Contender& contender = *entrant->contender;
    jobs.push_back({[&contender] { contender.getReady(); },
                    [&contender, &texts] { return convertAll(contender, texts); }});
  }
  return timeInTurn(jobs, repetitions);
}

std::size_t numberOf(Library library, const Entrants& entrants) {
  return static_cast<std::size_t>(
      std::count_if(entrants.begin(), entrants.end(),
                    [&](const Entrant* entrant) { return entrant->library == library; }));
}

bool haveChoice(const Entrants& entrants) {
  return numberOf(Library::glibc, entrants) > 1 || numberOf(Library::icu, entrants) > 1;
}

bool areOurs(Library library) { return library == Library::quorvel || library == Library::text; }

// All of ours, and of each peer the fastest.
Entrants finalists(const Match& match) {
  Entrants all;
  for (const Entrant& entrant : match.entrants) all.push_back(&entrant);
  if (!haveChoice(all)) return all;
  const Times times = timesOf(all, match.texts, repetitionsToChoose);
  Entrants chosen;
  double fastest = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const double seconds = secondsOf(times, i);
    const bool isOurs = areOurs(all[i]->library);
    const bool isFirst = isOurs || chosen.back()->library != all[i]->library;
    if (!isFirst && seconds >= fastest) continue;
    if (!isFirst) chosen.pop_back();
    chosen.push_back(all[i]);
    fastest = seconds;
  }
  return chosen;
}

}  // namespace

double OurFigure::overFaster() const { return std::min(overGlibc, overIcu); }

Result measure(const Match& match, int repetitions) {
  const Entrants entrants = finalists(match);
  const Times times = timesOf(entrants, match.texts, repetitions);
  const auto speed = [&](std::size_t i) {
    return static_cast<double>(match.numBytes()) / secondsOf(times, i);
  };
  // The last of ours has the best kernels.
  const auto lastOf = [&](Library library) {
    std::optional<std::size_t> last;
    for (std::size_t i = 0; i < entrants.size(); ++i) {
      if (entrants[i]->library == library) last = i;
    }
    return last;
  };
  const auto ratio = [&](std::optional<std::size_t> other, std::size_t i) {
    return other ? ratioOf(times, *other, i) : std::numeric_limits<double>::infinity();
  };
  const std::optional<std::size_t> converter = lastOf(Library::quorvel);
  const std::optional<std::size_t> glibc = lastOf(Library::glibc);
  const std::optional<std::size_t> icu = lastOf(Library::icu);

  Result result{match.row, match.numBytes(), {}, {}, {}, {}};
  if (glibc) result.glibc = {entrants[*glibc]->way, speed(*glibc)};
  if (icu) result.icu = {entrants[*icu]->way, speed(*icu)};
  for (std::size_t i = 0; i < entrants.size(); ++i) {
    if (!areOurs(entrants[i]->library)) continue;
    auto& figures = entrants[i]->library == Library::text ? result.text : result.ours;
    figures.push_back(
        {entrants[i]->way, speed(i), ratio(converter, i), ratio(glibc, i), ratio(icu, i)});
  }
  return result;
}

}  // namespace quorvel::bench
