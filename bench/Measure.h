#pragma once

#include <string>
#include <vector>

#include "Agreement.h"
#include "Rows.h"

namespace quorvel::bench {

/// What one library came to on a row, in its fastest way.
struct Figure {
  std::string way;   ///< empty when it does not take part
  double speed = 0;  ///< bytes of source text per second, median
};

/// What we came to with the kernels of one target, and how many times faster
/// that is than each of the peers; a peer that does not take part is infinitely
/// slow.
struct OurFigure {
  std::string target;
  double speed = 0;
  double overGlibc = 0;
  double overIcu = 0;

  double overFaster() const;
};

struct Result {
  Row row;
  std::size_t numBytes;         ///< of source text, in all
  std::vector<OurFigure> ours;  ///< the plainest target first
  Figure glibc;
  Figure icu;

  /// What a user gets: the last target is the best.
  const OurFigure& best() const { return ours.back(); }
};

/// Measures everybody in turn. Of a peer's ways only the fastest goes through
/// all the repetitions.
Result measure(const Match& match, int repetitions);

}  // namespace quorvel::bench
