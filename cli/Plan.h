#pragma once

#include "quorvel/base/DataBuffer.h"

namespace qvconv {

/// How much of a text could be converted.
enum class Outcome {
  all,   ///< every character arrived
  some,  ///< what was written is not the whole text
  none,  ///< nothing was written
};

/// Converts `text` between two code pages and appends the result to `out`.
///
/// The library keeps to the behaviour that its callers have come to rely on,
/// and some of its results do not tell a person at a terminal whether the text
/// arrived. Here they do: each pair of encodings goes by the calls whose result
/// can be trusted, and what the library drops without a word counts as lost.
Outcome convertText(int from, int to, quorvel::DataBuffer& text, quorvel::DataBuffer& out);

}  // namespace qvconv
