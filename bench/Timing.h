#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quorvel::bench {

/// Something to be timed: readied before each measurement, then run again and
/// again. A run that returns false ends the whole with an exception.
struct Job {
  std::function<void()> getReady;
  std::function<bool()> run;
};

/// Processor seconds per run: an inner vector for each repetition, in it a value
/// for each job.
using Times = std::vector<std::vector<double>>;

/// Hands the wish for the length of one measurement to Google Benchmark; called
/// once, before the first `timeInTurn`.
void setUpTiming(const char* program, double secondsPerMeasurement);

/// Times all jobs in turn, as often as said, so that a slow moment of the machine
/// falls on all alike.
Times timeInTurn(const std::vector<Job>& jobs, int repetitions);

/// The median over the repetitions.
double secondsOf(const Times& times, std::size_t job);

/// How many times faster `job` is than `other`: the median of the ratios within
/// each repetition.
double ratioOf(const Times& times, std::size_t other, std::size_t job);

}  // namespace quorvel::bench
