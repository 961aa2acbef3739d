#pragma once

#include <string>
#include <vector>

#include "Agreement.h"
#include "Rows.h"

namespace quorvel::bench {

/// What one library came to on a row, in its fastest way.
struct Figure {
  std::string way;      ///< empty when it does not take part
  double speed = 0;     ///< bytes of source text per second, median
  double ourRatio = 0;  ///< how many times faster we are, median over the repetitions
};

struct Result {
  Row row;
  std::size_t numBytes;  ///< of source text
  Figure ours;
  Figure glibc;
  Figure icu;

  /// How many times faster we are than the faster of the peers.
  double ratioToFaster() const;
};

/// Hands the wish for the length of one measurement to Google Benchmark; called
/// once, before the first `measure`.
void setUpMeasuring(const char* program, double secondsPerMeasurement);

/// Measures everybody in turn, as often as said, so that a slow moment of the
/// machine falls on all alike.
Result measure(const Match& match, int repetitions);

}  // namespace quorvel::bench
