// Text that converts without an error, as fast as possible.

#include <iostream>
#include <regex>
#include <vector>

#include "Agreement.h"
#include "Markdown.h"
#include "Measure.h"
#include "Plot.h"
#include "SourceText.h"
#include "Tables.h"

namespace quorvel::bench {

namespace {

constexpr int patience = 3;

std::string megabytes(double speed) { return format("%.0f", speed / 1e6); }

std::string megabytes(const Figure& figure) {
  return figure.way.empty() ? "-" : megabytes(figure.speed);
}

std::string asProgress(const Result& result) {
  std::string text = format("%-38s", result.row.name().c_str());
  for (const OurFigure& figure : result.ours) {
    text += format(" %s %6s (x %5s)", figure.target.c_str(), megabytes(figure.speed).c_str(),
                   asRatio(figure.overFaster()).c_str());
  }
  return text + format("  glibc %5s  ICU %5s", megabytes(result.glibc).c_str(),
                       megabytes(result.icu).c_str());
}

Result measureRow(const Row& row, const Options& options) {
  const Match match = prepare(row, {sourceText(row, options.bytes)}, options.targets);
  if (!match.has(Library::glibc)) std::cerr << row.name() << ": glibc does not agree with us\n";
  if (!match.has(Library::icu)) std::cerr << row.name() << ": ICU does not agree with us\n";
  Result result = measure(match, options.repetitions);
  if (result.best().overFaster() < options.atLeast) {
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

// Whether every row is fast enough; says which are not.
bool reachGoal(const std::vector<Result>& results, double goal) {
  bool all = true;
  for (const Result& result : results) {
    if (result.best().overFaster() >= goal) continue;
    std::cerr << "too slow: " << asProgress(result) << "\n";
    all = false;
  }
  return all;
}

// The plainest target stands beside the best, unless there is only one.
std::string asMarkdown(const std::vector<Result>& results) {
  const std::string plainest = results.front().ours.front().target;
  const std::vector<std::string> names = {
      "from",     "to",    "text",    "Quorvel MB/s", plainest + " MB/s",    "glibc MB/s",
      "ICU MB/s", "x ICU", "x glibc", "x faster",     plainest + " x faster"};
  std::string text;
  for (std::size_t i = 0; i < results.size(); ++i) {
    const Result& result = results[i];
    if (i == 0 || results[i - 1].row.family != result.row.family) {
      text += format("%s**%s**\n\n", i > 0 ? "\n" : "", titleOf(result.row.family));
      text += tableHead(names, 3);
    }
    const OurFigure& plain = result.ours.front();
    text += tableRow({std::to_string(result.row.from->codePage),
                      std::to_string(result.row.to->codePage), result.row.language->name,
                      megabytes(result.best().speed), megabytes(plain.speed),
                      megabytes(result.glibc), megabytes(result.icu),
                      asRatio(result.best().overIcu), asRatio(result.best().overGlibc),
                      asRatio(result.best().overFaster()), asRatio(plain.overFaster())});
  }
  return text;
}

std::string asCsv(const std::vector<Result>& results) {
  std::string text = "from,to,text,bytes,glibc_mb_s,icu_mb_s";
  for (const OurFigure& figure : results.front().ours) {
    for (const char* column : {"mb_s", "x_glibc", "x_icu", "x_faster"}) {
      text += "," + figure.target + "_" + column;
    }
  }
  text += ",glibc_way,icu_way\n";
  for (const Result& result : results) {
    text += format("%d,%d,%s,%zu,%s,%s", result.row.from->codePage, result.row.to->codePage,
                   result.row.language->name, result.numBytes, megabytes(result.glibc).c_str(),
                   megabytes(result.icu).c_str());
    for (const OurFigure& figure : result.ours) {
      text +=
          format(",%s,%s,%s,%s", megabytes(figure.speed).c_str(), asRatio(figure.overGlibc).c_str(),
                 asRatio(figure.overIcu).c_str(), asRatio(figure.overFaster()).c_str());
    }
    text += "," + result.glibc.way + "," + result.icu.way + "\n";
  }
  return text;
}

std::string asPlot(const std::vector<Result>& results) {
  std::vector<Bar> bars;
  for (const Result& result : results) {
    bars.push_back({titleOf(result.row.family), result.row.name(), result.best().overFaster(),
                    result.ours.front().overFaster()});
  }
  const OurFigure& plain = results.front().ours.front();
  return plot("Times as fast as the faster of glibc and ICU: bars " +
                  results.front().best().target + ", marks " + plain.target,
              bars);
}

}  // namespace

Outcome measureSpeed(const Options& options) {
  const std::vector<Result> results = measureRows(options);
  if (results.empty()) return {};
  return {asMarkdown(results),
          {{"performance.csv", asCsv(results)}, {"performance.svg", asPlot(results)}},
          reachGoal(results, options.atLeast)};
}

}  // namespace quorvel::bench
