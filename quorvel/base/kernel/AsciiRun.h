#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvel {

// ASCII is found and moved eight bytes at a time.

/// Bytes that are looked at at once.
inline constexpr std::ptrdiff_t runLength = 8;

inline std::uint64_t loadRun(const unsigned char* p) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

inline bool isAsciiRun(const unsigned char* in) { return (loadRun(in) & 0x8080808080808080U) == 0; }

/// How many of the eight bytes at `in` are ASCII before the first that is not.
inline unsigned int countAscii(const unsigned char* in) {
  const std::uint64_t others = loadRun(in) & 0x8080808080808080U;
  const int bits = std::endian::native == std::endian::little ? std::countr_zero(others)
                                                              : std::countl_zero(others);
  return static_cast<unsigned int>(bits) / 8;
}

/// Writes each of the eight bytes at `in` with a zero byte behind it.
inline void widenRun(const unsigned char* in, unsigned char* out) {
  unsigned char bytes[runLength];
  unsigned char units[2 * runLength];
  std::memcpy(bytes, in, sizeof bytes);
  for (std::ptrdiff_t i = 0; i < runLength; ++i) {
    units[2 * i] = bytes[i];
    units[2 * i + 1] = 0;
  }
  std::memcpy(out, units, sizeof units);
}

inline constexpr std::uint64_t inEachUnit = 0x0001000100010001U;

/// Whether one of four units is zero: only then a unit's borrow reaches its sign.
inline bool hasZeroUnit(std::uint64_t units) {
  return ((units - inEachUnit) & ~units & 0x8000 * inEachUnit) != 0;
}

}  // namespace quorvel
