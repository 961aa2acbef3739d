// Text that converts without an error, as fast as possible.

#include "LongTexts.h"

#include <algorithm>
#include <iostream>
#include <regex>

#include "Agreement.h"
#include "Markdown.h"
#include "SourceText.h"

namespace quorvel::bench {

namespace {

constexpr int patience = 3;

Result measureRow(const Row& row, const Options& options) {
  Match match = prepare(row, {sourceText(row, options.bytes)}, options.targets);
  enterText({TextWay::string, TextWay::pieces, TextWay::convert}, options.targets.back(), match);
  if (!match.has(Library::glibc)) std::cerr << row.name() << ": glibc does not agree with us\n";
  if (!match.has(Library::icu)) std::cerr << row.name() << ": ICU does not agree with us\n";
  Result result = measure(match, options.repetitions);
  if (!isFastEnough(result, options) || !isTextFastEnough(result, options)) {
    std::cerr << asProgress(result) << "  once more\n";
    result = measure(match, patience * options.repetitions);
  }
  return result;
}

std::vector<Result> measureRows(const Options& options) {
  const std::regex wanted(options.rows);
  std::vector<Result> results;
  for (const Row& row : allRows()) {
    if (!std::regex_search(row.name(), wanted)) continue;
    results.push_back(measureRow(row, options));
    std::cerr << asProgress(results.back()) << std::endl;
  }
  return results;
}

}  // namespace

const std::vector<Result>& measureLongTexts(const Options& options) {
  static const std::vector<Result> results = measureRows(options);
  return results;
}

bool isFastEnough(const Result& result, const Options& options) {
  return result.best().overFaster() >= options.atLeast;
}

bool isTextFastEnough(const Result& result, const Options& options) {
  return std::all_of(result.text.begin(), result.text.end(), [&](const OurFigure& figure) {
    return figure.overFaster() >= options.atLeast && figure.overConverter >= options.textAtLeast;
  });
}

std::string asProgress(const Result& result) {
  std::string text = format("%-38s", result.row.name().c_str());
  for (const OurFigure& figure : result.ours) {
    text += format(" %s %6s (x %5s)", figure.way.c_str(), megabytes(figure.speed).c_str(),
                   asRatio(figure.overFaster()).c_str());
  }
  for (const OurFigure& figure : result.text) {
    text += format("  %s %5s", figure.way.c_str(), asRatio(figure.overConverter).c_str());
  }
  return text + format("  glibc %5s  ICU %5s", megabytes(result.glibc.speed).c_str(),
                       megabytes(result.icu.speed).c_str());
}

}  // namespace quorvel::bench
