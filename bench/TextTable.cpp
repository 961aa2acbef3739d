// Long text by quorvel/text, beside EncodingConvert.

#include <iostream>
#include <vector>

#include "LongTexts.h"
#include "Markdown.h"
#include "Tables.h"

namespace quorvel::bench {

namespace {

// Whether every row is fast enough; says which are not.
bool reachGoal(const std::vector<Result>& results, const Options& options) {
  bool all = true;
  for (const Result& result : results) {
    if (isTextFastEnough(result, options)) continue;
    std::cerr << "quorvel/text too slow: " << asProgress(result) << "\n";
    all = false;
  }
  return all;
}

std::vector<std::string> head(const Result& any) {
  std::vector<std::string> names = {"from", "to", "text"};
  for (const OurFigure& figure : any.text) names.push_back(figure.way + " MB/s");
  for (const OurFigure& figure : any.text) names.push_back(figure.way + " x EncConvert");
  for (const OurFigure& figure : any.text) names.push_back(figure.way + " x faster");
  return names;
}

std::string line(const Result& result) {
  std::vector<std::string> cells = {std::to_string(result.row.from->codePage),
                                    std::to_string(result.row.to->codePage),
                                    result.row.language->name};
  for (const OurFigure& figure : result.text) cells.push_back(megabytes(figure.speed));
  for (const OurFigure& figure : result.text) cells.push_back(asRatio(figure.overConverter));
  for (const OurFigure& figure : result.text) cells.push_back(asRatio(figure.overFaster()));
  return tableRow(cells);
}

}  // namespace

Outcome measureText(const Options& options) {
  const std::vector<Result>& results = measureLongTexts(options);
  if (results.empty()) return {};
  Outcome outcome;
  outcome.markdown = tableHead(head(results.front()), 3);
  for (const Result& result : results) outcome.markdown += line(result);
  outcome.isGood = reachGoal(results, options);
  return outcome;
}

}  // namespace quorvel::bench
