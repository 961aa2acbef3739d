// Code pages to UTF-16 by their tables: single bytes four at a time, multibyte text
// character by character with its ASCII eight bytes at a time.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"

namespace quorvel::kernel::scalar {

namespace {

// Four bytes at a time, as long as all are mapped.
Position decodeFours(const unsigned short* units, Position at, const unsigned char* end) {
  constexpr std::ptrdiff_t atOnce = 4;
  for (; end - at.in >= atOnce; at.in += atOnce) {
    std::uint64_t four = 0;
    for (std::ptrdiff_t i = atOnce - 1; i >= 0; --i) four = four << 16 | units[at.in[i]];
    if (hasZeroUnit(four)) break;
    std::memcpy(at.out, &four, sizeof four);
    at.out += sizeof four;
  }
  return at;
}

Position decodeAscii(Position at, const unsigned char* stop) {
  at = takeRuns<2>(at, stop, isAsciiRun, widenRun);
  for (; at.in < stop && *at.in < 0x80; ++at.in) at.out = putUnit(*at.in, at.out);
  return at;
}

unsigned int unitOfPair(const PairsToUnits& table, const unsigned char* in) {
  return table.isLead[in[0]] ? table.units[in[0] << 8 | in[1]] : 0;
}

// A byte that nothing follows is cut off if any pair begins with it: `isLead` says so
// of its neighbours too.
Stop whyUnmapped(const PairsToUnits& table, const unsigned char* in, const unsigned char* end) {
  if (end - in != 1 || !table.isLead[*in]) return Stop::met;
  const unsigned short* row = table.units + (*in << 8);
  const bool hasPair = std::any_of(row, row + 0x100, [](unsigned short unit) { return unit != 0; });
  return hasPair ? Stop::cutOff : Stop::met;
}

}  // namespace

Progress bytesToUnits(const unsigned short* units, const unsigned char* in,
                      const unsigned char* end, unsigned char* out) {
  // An entry of the byte 00 is not to be used, so that it must stop the fours.
  const bool hasNoZero = units[0] == 0;
  Position at{in, out};
  while (at.in != end) {
    if (hasNoZero) {
      at = decodeFours(units, at, end);
      if (at.in == end) break;
    }
    const unsigned int unit = units[*at.in];
    if (*at.in != 0 && unit == 0) return {at.in, at.out, Stop::met};
    at.out = putUnit(*at.in != 0 ? unit : 0, at.out);
    ++at.in;
  }
  return {at.in, at.out, Stop::end};
}

Progress bytesToUnits(const BytesToUnits& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return bytesToUnits(table.units, in, end, out);
}

Progress pairsToUnits(const PairsToUnits& table, const unsigned char* in, const unsigned char* stop,
                      const unsigned char* end, unsigned char* out) {
  Position at{in, out};
  while (at.in < stop) {
    if (table.isLowerAscii && *at.in < 0x80) at = decodeAscii(at, stop);
    while (at.in < stop && end - at.in >= 2) {
      const unsigned int unit = unitOfPair(table, at.in);
      if (unit == 0) break;
      at = {at.in + 2, putUnit(unit, at.out)};
    }
    if (at.in >= stop) break;
    if (table.isLowerAscii && *at.in < 0x80) continue;
    // A zero byte stands for itself only where nothing follows it.
    const bool isLastZero = end - at.in == 1 && *at.in == 0;
    const unsigned int unit = isLastZero ? 0 : table.bytes[*at.in];
    if (unit == 0 && !isLastZero) return {at.in, at.out, whyUnmapped(table, at.in, end)};
    at = {at.in + 1, putUnit(unit, at.out)};
  }
  return {at.in, at.out, Stop::end};
}

}  // namespace quorvel::kernel::scalar
