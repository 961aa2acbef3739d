// Text of which some cannot be converted. What the libraries make of that differs,
// so their results do too; only the work is alike.

#include <algorithm>
#include <iostream>
#include <random>
#include <regex>
#include <stdexcept>
#include <vector>

#include "Agreement.h"
#include "Markdown.h"
#include "Measure.h"
#include "SourceText.h"
#include "Tables.h"

namespace quorvel::bench {

namespace {

constexpr int mostRepetitions = 5;
constexpr unsigned int percentages[] = {0, 1, 10};

struct Action {
  int number;
  OnError ours;
  OnError peers;  ///< the nearest that they have
};

constexpr Action actions[] = {
    {0, OnError::skip, OnError::skip},
    {1, OnError::substitute, OnError::substitute},
    {2, OnError::escape, OnError::escape},
    {6, OnError::convert, OnError::substitute},
};

struct Route {
  int from;
  int to;
  const char* language;
  std::vector<std::string> flaws;  ///< in the source encoding
};

const std::vector<Route>& routes() {
  static const std::vector<Route> all = {
      {utf8, 1252, "french", {"\u0436", "\u03b1", "\u6f22", "\U0001f600"}},
      {utf16le, 932, "japanese", {"\x5C\xD5", "\x01\x0E", "\x33\x06", "\x3D\xD8\x36\xDE"}},
      {932,
       utf8,
       "japanese",
       {"\x81 ", "\x85 ",
        "\xE0"
        "0",
        "\xFC"
        "9"}},
      {utf8, utf16le, "japanese", {"\xFF", "\xC3 ", "\xE3\x81 ", "\xED\xA0\x80"}},
  };
  return all;
}

// Replaces characters at random places.
std::string flawedText(const Row& row, const Route& route, unsigned int percentage,
                       std::size_t numBytes) {
  std::mt19937 engine(20240229);
  CharacterEncoder encoder(*row.from);
  std::string text;
  for (const std::string& character : charactersOf(makeText(*row.language, numBytes))) {
    const bool isFlaw = engine() % 100 < percentage;
    text += isFlaw ? route.flaws[engine() % route.flaws.size()] : encoder.encode(character);
  }
  return text;
}

// Everybody with the same way to go on, or for `OnError::stop` those who have none.
Match matchOf(const Row& row, const std::string& text, const std::string& target, OnError ours,
              OnError peers) {
  Match match{row, {text}, {}};
  match.entrants.push_back(
      {Library::quorvel, target, makeQuorvel(row.from->codePage, row.to->codePage, target, ours)});
  if (auto layer = makeText(row.from->codePage, row.to->codePage, TextWay::string, target,
                            text.size(), ours)) {
    match.entrants.push_back({Library::text, nameOf(TextWay::string), std::move(layer)});
  }
  const std::string iconvFrom = wordsOf(row.from->iconvNames).front();
  const std::string iconvTo = wordsOf(row.to->iconvNames).front();
  match.entrants.push_back(
      {Library::glibc, "a loop around iconv", makeIconv(iconvFrom, iconvTo, text.size(), peers)});
  if (peers == OnError::skip) {
    match.entrants.push_back({Library::glibc, "iconv with //IGNORE",
                              makeIconv(iconvFrom, iconvTo + "//IGNORE", text.size(), peers)});
  }
  const std::string icuFrom = wordsOf(row.from->icuNames).front();
  const std::string icuTo = wordsOf(row.to->icuNames).front();
  match.entrants.push_back({Library::icu, "ucnv_convertEx",
                            makeIcu(icuFrom, icuTo, IcuWay::direct, text.size(), peers)});
  match.entrants.push_back(
      {Library::icu, "UChars", makeIcu(icuFrom, icuTo, IcuWay::units, text.size(), peers)});
  return match;
}

// That the flaws are flaws for the peers as well, and nothing else is.
void check(const Row& row, const std::string& text, bool isFlawed, const Options& options) {
  const Match strict = matchOf(row, text, options.targets.back(), OnError::stop, OnError::stop);
  for (const Entrant& entrant : strict.entrants) {
    if (entrant.library == Library::quorvel) continue;
    if (entrant.contender->convert(text) == isFlawed) {
      throw std::runtime_error(row.name() + ": not the flaws that were meant");
    }
  }
}

std::string measureRow(const Row& row, const std::string& text, unsigned int percentage,
                       const Action& action, const Options& options) {
  const Match match = matchOf(row, text, options.targets.back(), action.ours, action.peers);
  const Result result = measure(match, std::min(options.repetitions, mostRepetitions));
  std::vector<std::string> cells = {std::to_string(row.from->codePage),
                                    std::to_string(row.to->codePage),
                                    row.language->name,
                                    std::to_string(percentage),
                                    std::to_string(action.number),
                                    megabytes(result.best().speed),
                                    megabytes(result.glibc.speed),
                                    megabytes(result.icu.speed),
                                    asRatio(result.best().overIcu),
                                    asRatio(result.best().overGlibc),
                                    asRatio(result.best().overFaster())};
  if (result.text.empty()) {
    cells.insert(cells.end(), {"-", "-", "-"});
  } else {
    const OurFigure& layer = result.text.front();
    cells.insert(cells.end(), {megabytes(layer.speed), asRatio(layer.overConverter),
                               asRatio(layer.overFaster())});
  }
  return tableRow(cells);
}

}  // namespace

Outcome measureErrors(const Options& options) {
  const std::regex wanted(options.rows);
  Outcome outcome;
  for (const Route& route : routes()) {
    const Row row = {Family::legacy, &encodingOf(route.from), &encodingOf(route.to),
                     &languageNamed(route.language)};
    if (!std::regex_search(row.name(), wanted)) continue;
    for (const unsigned int percentage : percentages) {
      const std::string text = flawedText(row, route, percentage, options.bytes / 16);
      check(row, text, percentage > 0, options);
      for (const Action& action : actions) {
        const std::string line = measureRow(row, text, percentage, action, options);
        std::cerr << line << std::flush;
        outcome.markdown += line;
      }
    }
  }
  if (outcome.markdown.empty()) return {};
  outcome.markdown = tableHead({"from", "to", "text", "wrong %", "action", "Quorvel MB/s",
                                "glibc MB/s", "ICU MB/s", "x ICU", "x glibc", "x faster",
                                "layer MB/s", "layer x EncConvert", "layer x faster"},
                               3) +
                     outcome.markdown;
  return outcome;
}

}  // namespace quorvel::bench
