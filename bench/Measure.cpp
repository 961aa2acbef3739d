#include "Measure.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>

namespace quorvel::bench {

namespace {

// Keeps the processor time of one call, for each benchmark in the order in which
// they ran.
class TimeCollector : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) throw std::runtime_error(run.error_message);
      m_seconds.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
    }
  }

  std::vector<double> take() { return std::exchange(m_seconds, {}); }

 private:
  std::vector<double> m_seconds;
};

void convertAgainAndAgain(benchmark::State& state, Contender& contender, const std::string& text) {
  for (auto _ : state) {
    if (!contender.convert(text)) {
      state.SkipWithError("a conversion failed");
      break;
    }
    benchmark::DoNotOptimize(contender.result().data());
  }
}

double medianOf(std::vector<double> values) {
  const std::size_t middle = values.size() / 2;
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(middle),
                   values.end());
  return values[middle];
}

// The seconds per call: an inner vector for each repetition, in it a value for
// each entrant.
std::vector<std::vector<double>> timesOf(const Match& match, int repetitions) {
  for (const Entrant& entrant : match.entrants) {
    benchmark::RegisterBenchmark(entrant.way.c_str(), [&match, &entrant](benchmark::State& state) {
      convertAgainAndAgain(state, *entrant.contender, match.text);
    });
  }
  TimeCollector collector;
  std::vector<std::vector<double>> times;
  for (int i = 0; i < repetitions; ++i) {
    benchmark::RunSpecifiedBenchmarks(&collector, ".");
    times.push_back(collector.take());
  }
  benchmark::ClearRegisteredBenchmarks();
  return times;
}

Figure figureOf(const Match& match, const std::vector<std::vector<double>>& times,
                std::size_t entrant) {
  std::vector<double> speeds;
  std::vector<double> ratios;
  for (const std::vector<double>& repetition : times) {
    speeds.push_back(static_cast<double>(match.text.size()) / repetition.at(entrant));
    ratios.push_back(repetition.at(entrant) / repetition.at(0));
  }
  return {match.entrants[entrant].way, medianOf(speeds), medianOf(ratios)};
}

}  // namespace

double Result::ratioToFaster() const {
  if (glibc.way.empty()) return icu.ourRatio;
  if (icu.way.empty()) return glibc.ourRatio;
  return std::min(glibc.ourRatio, icu.ourRatio);
}

void setUpMeasuring(const char* program, double secondsPerMeasurement) {
  std::string name = program;
  std::string minTime = "--benchmark_min_time=" + std::to_string(secondsPerMeasurement);
  char* arguments[] = {name.data(), minTime.data(), nullptr};
  int count = 2;
  benchmark::Initialize(&count, arguments);
}

Result measure(const Match& match, int repetitions) {
  const std::vector<std::vector<double>> times = timesOf(match, repetitions);
  Result result{match.row, match.text.size(), {}, {}, {}};
  for (std::size_t i = 0; i < match.entrants.size(); ++i) {
    const Figure figure = figureOf(match, times, i);
    const Library library = match.entrants[i].library;
    Figure& best = library == Library::quorvel ? result.ours
                   : library == Library::glibc ? result.glibc
                                               : result.icu;
    if (figure.speed > best.speed) best = figure;
  }
  return result;
}

}  // namespace quorvel::bench
