#pragma once

// One UTF-32 unit, low byte first, between memory and a number. No position need be
// aligned.

#include <cstddef>
#include <cstring>

namespace quorvel {

inline constexpr std::ptrdiff_t utf32UnitLength = 4;

/// The unit at `p`.
inline char32_t loadUtf32(const unsigned char* p) {
  char32_t unit = 0;
  std::memcpy(&unit, p, sizeof unit);
  return unit;
}

/// Writes `unit` and returns the position behind it.
inline unsigned char* putUtf32(char32_t unit, unsigned char* out) {
  std::memcpy(out, &unit, sizeof unit);
  return out + sizeof unit;
}

}  // namespace quorvel
