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

// Who took part, and how long everybody took.
class Race {
 public:
  Race(const Match& match, int repetitions)
      : m_numBytes(match.numBytes()),
        m_entrants(finalists(match)),
        m_times(timesOf(m_entrants, match.texts, repetitions)) {}

  Figure figureOf(Library peer) const {
    const std::optional<std::size_t> i = lastOf(peer);
    return i ? Figure{m_entrants[*i]->way, speed(*i)} : Figure{};
  }

  std::vector<OurFigure> figuresOf(Library ours) const {
    std::vector<OurFigure> figures;
    for (std::size_t i = 0; i < m_entrants.size(); ++i) {
      if (m_entrants[i]->library != ours) continue;
      figures.push_back({m_entrants[i]->way, speed(i), ratio(Library::quorvel, i),
                         ratio(Library::glibc, i), ratio(Library::icu, i)});
    }
    return figures;
  }

 private:
  double speed(std::size_t i) const {
    return static_cast<double>(m_numBytes) / secondsOf(m_times, i);
  }

  double ratio(Library other, std::size_t i) const {
    const std::optional<std::size_t> last = lastOf(other);
    return last ? ratioOf(m_times, *last, i) : std::numeric_limits<double>::infinity();
  }

  // The only one of a peer, the best target of ours.
  std::optional<std::size_t> lastOf(Library library) const {
    std::optional<std::size_t> last;
    for (std::size_t i = 0; i < m_entrants.size(); ++i) {
      if (m_entrants[i]->library == library) last = i;
    }
    return last;
  }

  std::size_t m_numBytes;
  Entrants m_entrants;
  Times m_times;
};

}  // namespace

double OurFigure::overFaster() const { return std::min(overGlibc, overIcu); }

Result measure(const Match& match, int repetitions) {
  const Race race(match, repetitions);
  return {match.row,
          match.numBytes(),
          race.figuresOf(Library::quorvel),
          race.figuresOf(Library::text),
          race.figureOf(Library::glibc),
          race.figureOf(Library::icu)};
}

}  // namespace quorvel::bench
