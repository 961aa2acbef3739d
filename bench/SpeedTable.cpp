// Long text by EncodingConvert, and all figures of long text in a file.

#include <iostream>
#include <vector>

#include "LongTexts.h"
#include "Markdown.h"
#include "Plot.h"
#include "Tables.h"

namespace quorvel::bench {

namespace {

// Whether every row is fast enough; says which are not.
bool reachGoal(const std::vector<Result>& results, const Options& options) {
  bool all = true;
  for (const Result& result : results) {
    if (isFastEnough(result, options)) continue;
    std::cerr << "too slow: " << asProgress(result) << "\n";
    all = false;
  }
  return all;
}

// The plainest target stands beside the best, unless there is only one.
std::string asMarkdown(const std::vector<Result>& results) {
  const std::string plainest = results.front().ours.front().way;
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
                      megabytes(result.glibc.speed), megabytes(result.icu.speed),
                      asRatio(result.best().overIcu), asRatio(result.best().overGlibc),
                      asRatio(result.best().overFaster()), asRatio(plain.overFaster())});
  }
  return text;
}

std::string asCsv(const std::vector<Result>& results) {
  std::string text = "from,to,text,bytes,glibc_mb_s,icu_mb_s";
  for (const OurFigure& figure : results.front().ours) {
    for (const char* column : {"mb_s", "x_glibc", "x_icu", "x_faster"}) {
      text += "," + figure.way + "_" + column;
    }
  }
  for (const OurFigure& figure : results.front().text) {
    text += ",text_" + figure.way + "_mb_s,text_" + figure.way + "_x_converter";
  }
  text += ",glibc_way,icu_way\n";
  for (const Result& result : results) {
    text += format("%d,%d,%s,%zu,%s,%s", result.row.from->codePage, result.row.to->codePage,
                   result.row.language->name, result.numBytes,
                   megabytes(result.glibc.speed).c_str(), megabytes(result.icu.speed).c_str());
    for (const OurFigure& figure : result.ours) {
      text +=
          format(",%s,%s,%s,%s", megabytes(figure.speed).c_str(), asRatio(figure.overGlibc).c_str(),
                 asRatio(figure.overIcu).c_str(), asRatio(figure.overFaster()).c_str());
    }
    for (const OurFigure& figure : result.text) {
      text +=
          format(",%s,%s", megabytes(figure.speed).c_str(), asRatio(figure.overConverter).c_str());
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
  return plot("Times as fast as the faster of glibc and ICU: bars " + results.front().best().way +
                  ", marks " + plain.way,
              bars);
}

}  // namespace

Outcome measureSpeed(const Options& options) {
  const std::vector<Result>& results = measureLongTexts(options);
  if (results.empty()) return {};
  return {asMarkdown(results),
          {{"performance.csv", asCsv(results)}, {"performance.svg", asPlot(results)}},
          reachGoal(results, options)};
}

}  // namespace quorvel::bench
