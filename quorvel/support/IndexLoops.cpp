// The loops over the flat indices of published tables.

#include <cstdint>
#include <cstring>

#include "quorvel/base/Utf16Unit.h"
#include "quorvel/base/kernel/AsciiRun.h"
#include "quorvel/support/TableLoops.h"

namespace quorvel {

namespace {

// The first in the lowest bits.
unsigned char* putFourUnits(std::uint64_t units, unsigned char* out) {
  for (int i = 0; i < 8; ++i) out[i] = static_cast<unsigned char>(units >> 8 * i);
  return out + 8;
}

unsigned int unitAt(const unsigned char* in) {
  return in[0] | static_cast<unsigned int>(in[1]) << 8;
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

// Four bytes at a time, as long as all are mapped.
Progress decodeFours(const UnicodeLookup& lookup, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  constexpr std::ptrdiff_t atOnce = 4;
  for (; end - in >= atOnce; in += atOnce) {
    std::uint64_t units = 0;
    for (std::ptrdiff_t i = atOnce - 1; i >= 0; --i) units = units << 16 | lookup.m_units[in[i]];
    if (hasZeroUnit(units)) break;
    out = putFourUnits(units, out);
  }
  return {in, out};
}

// Four units at a time, as long as all are mapped.
Progress encodeFours(const ByteIndex& index, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  for (; end - in >= 8; in += 8) {
    const unsigned int a = index.codeOf(unitAt(in));
    const unsigned int b = index.codeOf(unitAt(in + 2));
    const unsigned int c = index.codeOf(unitAt(in + 4));
    const unsigned int d = index.codeOf(unitAt(in + 6));
    if (a == 0 || b == 0 || c == 0 || d == 0) break;
    *out++ = static_cast<unsigned char>(a);
    *out++ = static_cast<unsigned char>(b);
    *out++ = static_cast<unsigned char>(c);
    *out++ = static_cast<unsigned char>(d);
  }
  return {in, out};
}

// Two bytes are written where there is room for them, whatever the length.
unsigned char* putCode(unsigned int code, unsigned char* out) {
  putUnit(code, out);
  return out + (code < 0x100 ? 1 : 2);
}

}  // namespace

Progress decodeSingleBytes(const UnicodeLookup& lookup, const unsigned char* in,
                           const unsigned char* end, unsigned char* out) {
  // The unit of the byte 00 is not to be used, so that it must stop the fours.
  const bool hasNoZero = lookup.m_units[0] == 0;
  while (in != end) {
    if (hasNoZero) {
      const Progress progress = decodeFours(lookup, in, end, out);
      in = progress.in;
      out = progress.out;
      if (in == end) break;
    }
    const unsigned int unit = lookup.m_units[*in];
    if (*in != 0 && unit == 0) break;
    out = putUnit(*in != 0 ? unit : 0, out);
    ++in;
  }
  return {in, out};
}

Progress decodeMultiBytes(const PairIndex& index, const unsigned char* in,
                          const unsigned char* stop, const unsigned char* end, unsigned char* out) {
  while (in < stop) {
    if (index.isLowerAscii() && *in < 0x80) {
      const Progress progress = decodeAscii(in, stop, out);
      in = progress.in;
      out = progress.out;
    }
    while (in < stop && end - in >= 2) {
      const unsigned int unit = index.unitOfPair(in[0], in[1]);
      if (unit == 0) break;
      out = putUnit(unit, out);
      in += 2;
    }
    if (in >= stop) break;
    if (index.isLowerAscii() && *in < 0x80) continue;
    // A zero byte stands for itself only where nothing follows it.
    const bool isLastZero = end - in == 1 && *in == 0;
    const unsigned int unit = isLastZero ? 0 : index.unitOfByte(*in);
    if (unit == 0 && !isLastZero) break;
    out = putUnit(unit, out);
    ++in;
  }
  return {in, out};
}

Progress encodeUnits(const CodeIndex& index, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  for (; end - in >= 2; in += 2) {
    const unsigned int unit = unitAt(in);
    const unsigned int code = index.codeOf(unit);
    if (code == 0 && unit != 0) break;
    out = putCode(code, out);
  }
  return {in, out};
}

Progress encodeUnits(const ByteIndex& index, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  while (end - in >= 2) {
    const Progress progress = encodeFours(index, in, end, out);
    in = progress.in;
    out = progress.out;
    if (end - in < 2) break;
    const unsigned int unit = unitAt(in);
    const unsigned int code = index.codeOf(unit);
    if (code == 0 && unit != 0) break;
    *out++ = static_cast<unsigned char>(code);
    in += 2;
  }
  return {in, out};
}

}  // namespace quorvel
