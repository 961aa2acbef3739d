// Lets those take part in a row whose results are ours to the byte.

#include "Agreement.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quorvel::bench {

namespace {

std::size_t largestOf(const std::vector<std::string>& texts) {
  std::size_t largest = 0;
  for (const std::string& text : texts) largest = std::max(largest, text.size());
  return largest;
}

bool agree(Contender& ours, Contender& other, const std::vector<std::string>& texts) {
  return std::all_of(texts.begin(), texts.end(), [&](const std::string& text) {
    ours.getReady();
    const bool isConverted = ours.convert(text);
    other.getReady();
    return isConverted && other.convert(text) && ours.result() == other.result();
  });
}

void enterUs(const std::vector<std::string>& targets, Match& match) {
  for (const std::string& target : targets) {
    match.entrants.push_back(
        {Library::quorvel, target,
         makeQuorvel(match.row.from->codePage, match.row.to->codePage, target, OnError::stop)});
    if (!agree(*match.entrants.front().contender, *match.entrants.back().contender, match.texts)) {
      throw std::runtime_error(match.row.name() + ": we fail, or our targets differ");
    }
  }
}

// `make(from, to)` gives a contender for a pair of names, or null.
template <typename Make>
void enterAllThatAgree(Library library, const char* fromNames, const char* toNames,
                       const std::string& suffix, const Make& make, Match& match) {
  for (const std::string& from : wordsOf(fromNames)) {
    for (const std::string& to : wordsOf(toNames)) {
      std::unique_ptr<Contender> contender = make(from, to);
      if (!contender) continue;
      if (!agree(*match.entrants.front().contender, *contender, match.texts)) continue;
      match.entrants.push_back({library, from + " to " + to + suffix, std::move(contender)});
    }
  }
}

void enterIconv(Match& match) {
  const auto make = [&](const std::string& from, const std::string& to) {
    return makeIconv(from, to, largestOf(match.texts), OnError::stop);
  };
  enterAllThatAgree(Library::glibc, match.row.from->iconvNames, match.row.to->iconvNames, "", make,
                    match);
}

void enterIcu(IcuWay way, const char* wayName, Match& match) {
  const auto make = [&](const std::string& from, const std::string& to) {
    return makeIcu(from, to, way, largestOf(match.texts), OnError::stop);
  };
  enterAllThatAgree(Library::icu, match.row.from->icuNames, match.row.to->icuNames,
                    std::string(" by ") + wayName, make, match);
}

}  // namespace

bool Match::has(Library library) const {
  return std::any_of(entrants.begin(), entrants.end(),
                     [&](const Entrant& entrant) { return entrant.library == library; });
}

std::size_t Match::numBytes() const {
  std::size_t sum = 0;
  for (const std::string& text : texts) sum += text.size();
  return sum;
}

Match prepare(const Row& row, std::vector<std::string> texts,
              const std::vector<std::string>& targets) {
  Match match{row, std::move(texts), {}};
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

void enterText(const std::vector<TextWay>& ways, const std::string& target, Match& match) {
  for (const TextWay way : ways) {
    match.entrants.push_back({Library::text, nameOf(way),
                              makeText(match.row.from->codePage, match.row.to->codePage, way,
                                       target, largestOf(match.texts), OnError::stop)});
    if (!agree(*match.entrants.front().contender, *match.entrants.back().contender, match.texts)) {
      throw std::runtime_error(match.row.name() + ": quorvel/text fails, or gives another result");
    }
  }
}

}  // namespace quorvel::bench
