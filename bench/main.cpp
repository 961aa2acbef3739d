// Measures our conversions beside those of glibc and ICU: for each row everybody
// converts the same text, the results are compared, and then everybody is
// measured in turn.

#include <exception>
#include <fstream>
#include <iostream>
#include <regex>
#include <stdexcept>
#include <vector>

#include "Agreement.h"
#include "Measure.h"
#include "Options.h"
#include "Report.h"
#include "Rows.h"
#include "quorvel/base/kernel/Target.h"

namespace {

using namespace quorvel::bench;
namespace kernel = quorvel::kernel;

void chooseTarget(const std::string& name) {
  if (name.empty()) return;
  for (const kernel::Target target : kernel::allTargets) {
    if (name == kernel::nameOf(target) && kernel::canRun(target)) return kernel::setTarget(target);
  }
  throw std::runtime_error("no kernels are called that here: " + name);
}

std::vector<Result> measureRows(const Options& options) {
  const std::regex wanted(options.rows);
  std::vector<Result> results;
  for (const Row& row : allRows()) {
    if (!std::regex_search(row.name(), wanted)) continue;
    const Match match = prepare(row, options.bytes);
    if (!match.has(Library::glibc)) std::cerr << row.name() << ": glibc does not agree with us\n";
    if (!match.has(Library::icu)) std::cerr << row.name() << ": ICU does not agree with us\n";
    results.push_back(measure(match, options.repetitions));
    std::cerr << asProgress(results.back()) << std::endl;
  }
  return results;
}

void write(const std::string& path, const std::string& text) {
  if (path.empty()) return;
  std::ofstream file(path);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

// Whether every row is fast enough; says which are not.
bool reachGoal(const std::vector<Result>& results, double goal) {
  bool all = true;
  for (const Result& result : results) {
    if (result.glibc.way.empty() || result.glibc.ourRatio >= goal) continue;
    std::cerr << "too slow: " << asProgress(result) << "\n";
    all = false;
  }
  return all;
}

}  // namespace

int main(int argc, char** argv) try {
  const Options options = parseOptions(argc, argv);
  chooseTarget(options.target);
  setUpMeasuring(argv[0], options.seconds);
  const std::vector<Result> results = measureRows(options);
  if (results.empty()) throw std::runtime_error("no row is called that");
  const std::string table = describeMachine() +
                            "; kernels: " + kernel::nameOf(kernel::currentTarget()) + "\n\n" +
                            asMarkdown(results);
  std::cout << table;
  write(options.markdown, table);
  write(options.csv, asCsv(results));
  return reachGoal(results, options.atLeast) ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 2;
}
