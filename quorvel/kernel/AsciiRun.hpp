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

inline constexpr std::uint64_t inEachByte = 0x0101010101010101U;

/// How many of eight bytes stand before the first whose highest bit is set.
inline unsigned int countBeforeHighBit(std::uint64_t bytes) {
  const std::uint64_t highBits = bytes & 0x80 * inEachByte;
  const int bits = std::endian::native == std::endian::little ? std::countr_zero(highBits)
                                                              : std::countl_zero(highBits);
  return static_cast<unsigned int>(bits) / 8;
}

/// How many of the eight bytes at `in` are ASCII before the first that is not.
inline unsigned int countAscii(const unsigned char* in) { return countBeforeHighBit(loadRun(in)); }

/// The four bytes at `in` as four units, in memory each with a zero byte behind it.
inline std::uint64_t widenFour(const unsigned char* in) {
  std::uint32_t bytes = 0;
  std::memcpy(&bytes, in, sizeof bytes);
  std::uint64_t units = bytes;
  units = (units | units << 16) & 0x0000FFFF0000FFFFU;
  units = (units | units << 8) & 0x00FF00FF00FF00FFU;
  return std::endian::native == std::endian::little ? units : units << 8;
}

/// Writes each of the eight bytes at `in` with a zero byte behind it.
inline void widenRun(const unsigned char* in, unsigned char* out) {
  const std::uint64_t units[2] = {widenFour(in), widenFour(in + 4)};
  std::memcpy(out, units, sizeof units);
}

inline constexpr std::uint64_t inEachUnit = 0x0001000100010001U;

/// Whether one of four units is zero: only then a unit's borrow reaches its sign.
inline bool hasZeroUnit(std::uint64_t units) {
  return ((units - inEachUnit) & ~units & 0x8000 * inEachUnit) != 0;
}

}  // namespace quorvel
