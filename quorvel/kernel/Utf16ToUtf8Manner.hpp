#pragma once

namespace quorvel::kernel {

/// The manners in which UTF-16 becomes UTF-8, one loop each (Loops.hpp).
enum class Manner {
  loose,         ///< drops U+0000, writes lone low surrogates, may meet a marker
  withoutPairs,  ///< likewise, and stops in front of every high surrogate
  strict,        ///< every character as itself, nothing else
};

}  // namespace quorvel::kernel
