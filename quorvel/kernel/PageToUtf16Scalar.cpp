#include <cstdint>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/PageTables.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"

namespace quorvel::kernel::scalar {

namespace {

unsigned int unitAt(const unsigned char* in) {
  return in[0] | static_cast<unsigned int>(in[1]) << 8;
}

// The first in the lowest bits.
unsigned char* putFourUnits(std::uint64_t units, unsigned char* out) {
  for (int i = 0; i < 8; ++i) out[i] = static_cast<unsigned char>(units >> 8 * i);
  return out + 8;
}

// Four bytes at a time, as long as all are mapped.
Progress decodeFours(const unsigned short* table, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  constexpr std::ptrdiff_t atOnce = 4;
  for (; end - in >= atOnce; in += atOnce) {
    std::uint64_t units = 0;
    for (std::ptrdiff_t i = atOnce - 1; i >= 0; --i) units = units << 16 | table[in[i]];
    if (hasZeroUnit(units)) break;
    out = putFourUnits(units, out);
  }
  return {in, out};
}

Progress decodeAscii(const unsigned char* in, const unsigned char* stop, unsigned char* out) {
  while (stop - in >= runLength && isAsciiRun(in)) {
    widenRun(in, out);
    in += runLength;
    out += 2 * runLength;
  }
  while (in < stop && *in < 0x80) out = putUnit(*in++, out);
  return {in, out};
}

unsigned int unitOfPair(const PairsToUnits& table, const unsigned char* in) {
  return table.isLead[in[0]] ? table.units[in[0] << 8 | in[1]] : 0;
}

Progress pairsToUnits(const PairsToUnits& table, const unsigned char* in, const unsigned char* stop,
                      const unsigned char* end, unsigned char* out) {
  while (in < stop) {
    if (table.isLowerAscii && *in < 0x80) {
      const Progress progress = decodeAscii(in, stop, out);
      in = progress.in;
      out = progress.out;
    }
    while (in < stop && end - in >= 2) {
      const unsigned int unit = unitOfPair(table, in);
      if (unit == 0) break;
      out = putUnit(unit, out);
      in += 2;
    }
    if (in >= stop) break;
    if (table.isLowerAscii && *in < 0x80) continue;
    // A zero byte stands for itself only where nothing follows it.
    const bool isLastZero = end - in == 1 && *in == 0;
    const unsigned int unit = isLastZero ? 0 : table.bytes[*in];
    if (unit == 0 && !isLastZero) break;
    out = putUnit(unit, out);
    ++in;
  }
  return {in, out};
}

Progress unitsToBytes(const UnitsToBytes& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  for (; end - in >= 2; in += 2) {
    const unsigned int unit = unitAt(in);
    const unsigned char code = table.codes[unit];
    if (code == 0 && unit != 0) break;
    *out++ = code;
  }
  return {in, out};
}

// Two bytes are written where there is room for them, whatever the length.
unsigned char* putCode(unsigned int code, unsigned char* out) {
  putUnit(code, out);
  return out + (code < 0x100 ? 1 : 2);
}

Progress unitsToPairs(const UnitsToPairs& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  for (; end - in >= 2; in += 2) {
    const unsigned int unit = unitAt(in);
    const unsigned int code = table.codes[unit];
    if (code == 0 && unit != 0) break;
    out = putCode(code, out);
  }
  return {in, out};
}

Progress tableToUnits(const BytesToUnits& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return bytesToUnits(table.units, in, end, out);
}

}  // namespace

Progress bytesToUnits(const unsigned short* units, const unsigned char* in,
                      const unsigned char* end, unsigned char* out) {
  // An entry of the byte 00 is not to be used, so that it must stop the fours.
  const bool hasNoZero = units[0] == 0;
  while (in != end) {
    if (hasNoZero) {
      const Progress progress = decodeFours(units, in, end, out);
      in = progress.in;
      out = progress.out;
      if (in == end) break;
    }
    const unsigned int unit = units[*in];
    if (*in != 0 && unit == 0) break;
    out = putUnit(*in != 0 ? unit : 0, out);
    ++in;
  }
  return {in, out};
}

const Table table{tableToUnits, pairsToUnits, unitsToBytes, unitsToPairs};

}  // namespace quorvel::kernel::scalar
