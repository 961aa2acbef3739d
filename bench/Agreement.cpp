#include "Agreement.h"

#include <algorithm>
#include <stdexcept>

namespace quorvel::bench {

namespace {

// Encoded by the peers, so that what we decode does not come from us.
std::string encoded(const std::string& text, const Encoding& encoding) {
  for (const std::string& name : wordsOf(encoding.iconvNames)) {
    const auto contender = makeIconv("UTF-8", name, text.size());
    if (contender && contender->convert(text)) return std::string(contender->result());
  }
  throw std::runtime_error("text does not fit code page " + std::to_string(encoding.codePage));
}

// The size that counts is the one in the source encoding, which is known only
// when some text has been encoded.
std::string sourceText(const Row& row, std::size_t numBytes) {
  const std::string trial = makeText(*row.language, numBytes);
  const std::size_t trialSize = encoded(trial, *row.from).size();
  const std::size_t size =
      static_cast<std::size_t>(1.0 * static_cast<double>(numBytes) *
                               static_cast<double>(trial.size()) / static_cast<double>(trialSize));
  return encoded(makeText(*row.language, size), *row.from);
}

void enterUs(const std::vector<kernel::Target>& targets, Match& match) {
  for (const kernel::Target target : targets) {
    auto ours = makeQuorvel(match.row.from->codePage, match.row.to->codePage, target);
    ours->getReady();
    if (!ours->convert(match.text)) throw std::runtime_error(match.row.name() + ": we fail");
    match.entrants.push_back({Library::quorvel, kernel::nameOf(target), std::move(ours)});
    if (match.entrants.front().contender->result() != match.entrants.back().contender->result()) {
      throw std::runtime_error(match.row.name() + ": our targets differ");
    }
  }
}

bool agrees(const Entrant& entrant, Contender* contender, const std::string& text) {
  return contender && contender->convert(text) &&
         contender->result() == entrant.contender->result();
}

// `make(from, to)` gives a contender for a pair of names, or null.
template <typename Make>
void enterAllThatAgree(Library library, const char* fromNames, const char* toNames,
                       const std::string& suffix, const Make& make, Match& match) {
  for (const std::string& from : wordsOf(fromNames)) {
    for (const std::string& to : wordsOf(toNames)) {
      std::unique_ptr<Contender> contender = make(from, to);
      if (!agrees(match.entrants.front(), contender.get(), match.text)) continue;
      match.entrants.push_back({library, from + " to " + to + suffix, std::move(contender)});
    }
  }
}

void enterIconv(Match& match) {
  const auto make = [&](const std::string& from, const std::string& to) {
    return makeIconv(from, to, match.text.size());
  };
  enterAllThatAgree(Library::glibc, match.row.from->iconvNames, match.row.to->iconvNames, "", make,
                    match);
}

void enterIcu(IcuWay way, const char* wayName, Match& match) {
  const auto make = [&](const std::string& from, const std::string& to) {
    return makeIcu(from, to, way, match.text.size());
  };
  enterAllThatAgree(Library::icu, match.row.from->icuNames, match.row.to->icuNames,
                    std::string(" by ") + wayName, make, match);
}

}  // namespace

bool Match::has(Library library) const {
  return std::any_of(entrants.begin(), entrants.end(),
                     [&](const Entrant& entrant) { return entrant.library == library; });
}

Match prepare(const Row& row, std::size_t numBytes, const std::vector<kernel::Target>& targets) {
  Match match{row, sourceText(row, numBytes), {}};
  enterUs(targets, match);
  enterIconv(match);
  enterIcu(IcuWay::direct, "ucnv_convertEx", match);
  enterIcu(IcuWay::units, "UChars", match);
  enterIcu(IcuWay::strings, "u_str UTF-8", match);
  if (match.entrants.back().library == Library::quorvel) {
    throw std::runtime_error(row.name() + ": no peer agrees with us");
  }
  return match;
}

}  // namespace quorvel::bench
