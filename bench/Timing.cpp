// Measures by Google Benchmark, which runs each job as often as a time that can be
// believed takes.

#include "Timing.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quorvel::bench {

namespace {

// Keeps the processor time of one run, for each job in the order in which they
// ran.
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

void runAgainAndAgain(benchmark::State& state, const Job& job) {
  job.getReady();
  for (auto _ : state) {
    if (job.run()) continue;
    state.SkipWithError("a conversion failed");
    break;
  }
}

double medianOf(std::vector<double> values) {
  const std::size_t middle = values.size() / 2;
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(middle),
                   values.end());
  return values[middle];
}

}  // namespace

void setUpTiming(const char* program, double secondsPerMeasurement) {
  std::string name = program;
  std::string minTime = "--benchmark_min_time=" + std::to_string(secondsPerMeasurement);
  char* arguments[] = {name.data(), minTime.data(), nullptr};
  int count = 2;
  benchmark::Initialize(&count, arguments);
}

Times timeInTurn(const std::vector<Job>& jobs, int repetitions) {
  for (const Job& job : jobs) {
    benchmark::RegisterBenchmark("job",
                                 [&job](benchmark::State& state) { runAgainAndAgain(state, job); });
  }
  TimeCollector collector;
  Times times;
  for (int i = 0; i < repetitions; ++i) {
    benchmark::RunSpecifiedBenchmarks(&collector, ".");
    times.push_back(collector.take());
  }
  benchmark::ClearRegisteredBenchmarks();
  return times;
}

double secondsOf(const Times& times, std::size_t job) {
  std::vector<double> values;
  for (const std::vector<double>& repetition : times) values.push_back(repetition.at(job));
  return medianOf(std::move(values));
}

double ratioOf(const Times& times, std::size_t other, std::size_t job) {
  std::vector<double> values;
  for (const std::vector<double>& repetition : times) {
    values.push_back(repetition.at(other) / repetition.at(job));
  }
  return medianOf(std::move(values));
}

}  // namespace quorvel::bench
