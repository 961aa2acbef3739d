#pragma once

// ASCII found and moved eight bytes at a time, as one number of 64 bits. The first
// byte in memory is the lowest of the number: "A B C ..." is 0x...43'42'41.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorvel/kernel/Progress.hpp"

namespace quorvel {

/// Bytes that are looked at at once.
inline constexpr std::ptrdiff_t runLength = 8;

inline std::uint64_t loadRun(const unsigned char* p) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

inline constexpr std::uint64_t inEachByte = 0x0101010101010101U;

inline bool isAsciiRun(const unsigned char* in) { return (loadRun(in) & 0x80 * inEachByte) == 0; }

/// How many of eight bytes stand before the first whose highest bit is set, 8 if
/// there is none. Of 61 62 C3 A9 63 64 65 66 the number is 0x66656463A9C36261; its
/// highest bits are 0x0000000080800000, below which are 23 zero bits: two bytes.
inline unsigned int countBeforeHighBit(std::uint64_t bytes) {
  return static_cast<unsigned int>(std::countr_zero(bytes & 0x80 * inEachByte)) / 8;
}

/// How many of the eight bytes at `in` are ASCII before the first that is not.
inline unsigned int countAscii(const unsigned char* in) { return countBeforeHighBit(loadRun(in)); }

/// The four bytes at `in` as four units. 41 42 43 44, the number 0x44434241, moves
/// apart in two steps: 0x0000444300004241, then 0x0044004300420041.
inline std::uint64_t widenFour(const unsigned char* in) {
  std::uint32_t bytes = 0;
  std::memcpy(&bytes, in, sizeof bytes);
  std::uint64_t units = bytes;
  units = (units | units << 16) & 0x0000FFFF0000FFFFU;
  return (units | units << 8) & 0x00FF00FF00FF00FFU;
}

/// Writes each of the eight bytes at `in` with a zero byte behind it.
inline void widenRun(const unsigned char* in, unsigned char* out) {
  const std::uint64_t units[2] = {widenFour(in), widenFour(in + 4)};
  std::memcpy(out, units, sizeof units);
}

inline constexpr std::uint64_t inEachUnit = 0x0001000100010001U;

/// Whether all of four units are below U+0080.
inline bool areAsciiUnits(std::uint64_t units) { return (units & 0xFF80 * inEachUnit) == 0; }

/// Whether one of four units is zero. One is taken from each, and a zero unit turns
/// to FFFF: of 0041 0000 0043 0044 the differences are 0040 FFFF 0042 0043, and
/// `& ~units` leaves the sign of the second. A unit from 8000 on has a sign, but
/// `~units` takes it away; a unit that a borrow turned over has a zero below it,
/// which tells by itself.
inline bool hasZeroUnit(std::uint64_t units) {
  return ((units - inEachUnit) & ~units & 0x8000 * inEachUnit) != 0;
}

/// Moves eight bytes at a time by `takeRun(in, out)`, each byte to `bytesPerByte`,
/// as long as `isRun` says so of the next eight.
template <std::ptrdiff_t bytesPerByte, typename IsRun, typename TakeRun>
inline Position takeRuns(Position at, const unsigned char* end, const IsRun& isRun,
                         const TakeRun& takeRun) {
  while (end - at.in >= runLength && isRun(at.in)) {
    takeRun(at.in, at.out);
    at = {at.in + runLength, at.out + bytesPerByte * runLength};
  }
  return at;
}

}  // namespace quorvel
