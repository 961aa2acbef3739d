#pragma once

// One UTF-16 unit, low byte first as everywhere: what it is, and between memory and
// a number. No position need be aligned.

#include <cstring>

namespace quorvel {

inline bool isSurrogate(unsigned int unit) { return (unit & 0xF800) == 0xD800; }
inline bool isHighSurrogate(unsigned int unit) { return (unit & 0xFC00) == 0xD800; }
inline bool isLowSurrogate(unsigned int unit) { return (unit & 0xFC00) == 0xDC00; }

/// The unit at `p`.
inline unsigned int loadUnit(const unsigned char* p) {
  unsigned short unit = 0;
  std::memcpy(&unit, p, sizeof unit);
  return unit;
}

/// Writes `unit` and returns the position behind it.
inline unsigned char* putUnit(unsigned int unit, unsigned char* out) {
  const auto value = static_cast<unsigned short>(unit);
  std::memcpy(out, &value, sizeof value);
  return out + sizeof value;
}

/// Writes any unit, a surrogate too, as a UTF-8 style sequence of three bytes, the
/// form of U+0800 to U+FFFF, and returns the position behind it.
inline unsigned char* writeThreeBytes(unsigned int unit, unsigned char* out) {
  *out++ = static_cast<unsigned char>(0xE0 | unit >> 12);
  *out++ = static_cast<unsigned char>(0x80 | (unit >> 6 & 0x3F));
  *out++ = static_cast<unsigned char>(0x80 | (unit & 0x3F));
  return out;
}

}  // namespace quorvel
