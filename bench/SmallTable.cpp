// Many small texts, each converted by a call of its own; quorvel/text also takes them as
// pieces of one text.

#include <algorithm>
#include <iostream>
#include <regex>
#include <vector>

#include "Agreement.h"
#include "Markdown.h"
#include "Measure.h"
#include "SourceText.h"
#include "Tables.h"

namespace quorvel::bench {

namespace {

constexpr int mostRepetitions = 7;
constexpr std::size_t sizes[] = {16, 64, 1024};

struct Route {
  int from;
  int to;
  const char* language;
};

constexpr Route routes[] = {
    {utf8, utf16le, "japanese"}, {utf16le, utf8, "japanese"}, {1252, utf16le, "french"},
    {1252, utf8, "french"},      {utf8, 1251, "russian"},     {932, utf16le, "japanese"},
    {utf16le, 932, "japanese"},  {932, utf8, "japanese"},     {utf8, 936, "chinese_simplified"},
};

// What a call took, at the speed of the whole.
std::string nanoseconds(double speed, std::size_t numBytes, std::size_t numCalls) {
  return format("%.0f",
                1e9 * static_cast<double>(numBytes) / speed / static_cast<double>(numCalls));
}

std::string measureRow(const Row& row, std::size_t size, const Options& options) {
  Match match = prepare(row, sourceSlices(row, size), options.targets);
  enterText({TextWay::pieces, TextWay::stream}, options.targets.back(), match);
  const Result result = measure(match, std::min(options.repetitions, mostRepetitions));
  const auto each = [&](double speed) {
    return speed > 0 ? nanoseconds(speed, match.numBytes(), match.texts.size()) : "-";
  };
  const OurFigure& plain = result.ours.front();
  const OurFigure& layer = result.text.front();
  const OurFigure& piece = result.text.back();
  return tableRow({std::to_string(row.from->codePage), std::to_string(row.to->codePage),
                   row.language->name, std::to_string(size), each(result.best().speed),
                   each(plain.speed), each(result.glibc.speed), each(result.icu.speed),
                   asRatio(result.best().overIcu), asRatio(result.best().overGlibc),
                   asRatio(result.best().overFaster()), asRatio(plain.overFaster()),
                   each(layer.speed), each(piece.speed), asRatio(layer.overConverter),
                   asRatio(piece.overConverter), asRatio(layer.overFaster())});
}

}  // namespace

Outcome measureSmall(const Options& options) {
  const std::regex wanted(options.rows);
  const std::string& plainest = options.targets.front();
  Outcome outcome;
  for (const auto& [from, to, language] : routes) {
    const Row row = {Family::legacy, &encodingOf(from), &encodingOf(to), &languageNamed(language)};
    if (!std::regex_search(row.name(), wanted)) continue;
    for (const std::size_t size : sizes) {
      const std::string line = measureRow(row, size, options);
      std::cerr << line << std::flush;
      outcome.markdown += line;
    }
  }
  if (outcome.markdown.empty()) return {};
  outcome.markdown =
      tableHead({"from", "to", "text", "bytes", "Quorvel ns", plainest + " ns", "glibc ns",
                 "ICU ns", "x ICU", "x glibc", "x faster", plainest + " x faster", "layer ns",
                 "piece ns", "layer x EncConvert", "piece x EncConvert", "layer x faster"},
                3) +
      outcome.markdown;
  return outcome;
}

}  // namespace quorvel::bench
