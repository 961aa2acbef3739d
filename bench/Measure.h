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

/// What we came to in one way, and how many times faster that is than each of the
/// peers and than `EncodingConvert` as a user gets it; a peer that does not take part
/// is infinitely slow.
struct OurFigure {
  std::string way;  ///< the target, or how quorvel/text is used
  double speed = 0;
  double overConverter = 0;
  double overGlibc = 0;
  double overIcu = 0;

  double overFaster() const;
};

struct Result {
  Row row;
  std::size_t numBytes;         ///< of source text, in all
  std::vector<OurFigure> ours;  ///< `EncodingConvert`, the plainest target first
  std::vector<OurFigure> text;  ///< quorvel/text, in the ways in which it takes part
  Figure glibc;
  Figure icu;

  /// What a user gets: the last target is the best.
  const OurFigure& best() const { return ours.back(); }
};

/// Measures everybody in turn. Of a peer's ways only the fastest goes through
/// all the repetitions.
Result measure(const Match& match, int repetitions);

}  // namespace quorvel::bench
