#pragma once

// What the scalar loops of ISO-2022 stand on: text that no set changes, and the
// highest bit, by which the 8-bit encodings tell a character from ASCII.

#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Iso2022Text.hpp"
#include "quorvel/kernel/Progress.hpp"

namespace quorvel::kernel::scalar {

using iso2022::isGraphic;
using iso2022::isSwitch;

inline constexpr unsigned char highBit = 0x80;

inline unsigned char withHighBit(unsigned char byte) {
  return static_cast<unsigned char>(byte | highBit);
}

inline unsigned char withoutHighBit(unsigned char byte) {
  return static_cast<unsigned char>(byte & ~highBit);
}

inline bool isGraphicPair(const unsigned char* in) { return isGraphic(in[0]) && isGraphic(in[1]); }

/// Whether eight bytes are ASCII none of which is SO, SI or an escape: those are
/// below 20, which a subtraction shows, together with all other controls.
inline bool isTextRun(const unsigned char* in) {
  const std::uint64_t bytes = loadRun(in);
  return ((bytes | (bytes - 0x20 * inEachByte)) & 0x80 * inEachByte) == 0;
}

/// Copies bytes up to the first for which `isOther` is true; those of a text run
/// are not asked for.
template <typename IsOther>
Position copyUpTo(Position at, const unsigned char* end, const IsOther& isOther) {
  const auto copyRun = [](const unsigned char* in, unsigned char* out) {
    std::memcpy(out, in, runLength);
  };
  while (at.in != end) {
    at = takeRuns<1>(at, end, isTextRun, copyRun);
    if (at.in == end || isOther(*at.in)) break;
    *at.out++ = *at.in++;
  }
  return at;
}

/// ASCII but what would switch sets.
inline Position copyText(Position at, const unsigned char* end) {
  return copyUpTo(at, end, [](unsigned char byte) { return byte >= highBit || isSwitch(byte); });
}

}  // namespace quorvel::kernel::scalar
