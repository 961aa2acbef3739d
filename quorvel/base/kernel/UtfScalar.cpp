#include <array>
#include <bit>
#include <cstring>

#include "quorvel/base/Utf16Unit.h"
#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/base/kernel/AsciiRun.h"
#include "quorvel/base/kernel/Utf.h"

namespace quorvel::kernel::scalar {

namespace {

unsigned char* storeUnit(unsigned int unit, unsigned char* out) {
  const auto value = static_cast<unsigned short>(unit);
  std::memcpy(out, &value, sizeof value);
  return out + sizeof value;
}

unsigned char* storePair(unsigned int first, unsigned int second, unsigned char* out) {
  out[0] = static_cast<unsigned char>(first);
  out[1] = static_cast<unsigned char>(second);
  return out + 2;
}

// Four bytes as a number in host order.
constexpr std::uint32_t fourBytes(unsigned char a, unsigned char b, unsigned char c,
                                  unsigned char d) {
  return std::bit_cast<std::uint32_t>(std::array{a, b, c, d});
}

std::uint32_t loadFour(const unsigned char* p) {
  std::uint32_t bytes = 0;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

unsigned int joinTwo(const unsigned char* in) { return (in[0] & 0x1FU) << 6 | (in[1] & 0x3FU); }

unsigned int joinThree(const unsigned char* in) {
  return (in[0] & 0x0FU) << 12 | (in[1] & 0x3FU) << 6 | (in[2] & 0x3FU);
}

// Pairs of two-byte characters. Their form is that of one mask; only C0 and C1,
// which would be overlong, have none of the bits 1E.
Progress decodeTwos(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 4) {
    const std::uint32_t bytes = loadFour(in);
    if ((bytes & fourBytes(0xE0, 0xC0, 0xE0, 0xC0)) != fourBytes(0xC0, 0x80, 0xC0, 0x80)) break;
    if ((in[0] & 0x1E) == 0 || (in[2] & 0x1E) == 0) break;
    out = storeUnit(joinTwo(in), out);
    out = storeUnit(joinTwo(in + 2), out);
    in += 4;
  }
  return {in, out};
}

// Three-byte characters that a fourth byte follows.
Progress decodeThrees(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 4) {
    const std::uint32_t bytes = loadFour(in);
    if ((bytes & fourBytes(0xF0, 0xC0, 0xC0, 0x00)) != fourBytes(0xE0, 0x80, 0x80, 0x00)) break;
    const unsigned int unit = joinThree(in);
    if (unit < 0x800 || isSurrogate(unit)) break;
    out = storeUnit(unit, out);
    in += 3;
  }
  return {in, out};
}

// Four-byte characters, a surrogate pair each. `high` is the code point
// above its lowest ten bits, of which U+10000 to U+10FFFF have 40 to 43F.
Progress decodeFours(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 4) {
    const std::uint32_t bytes = loadFour(in);
    if ((bytes & fourBytes(0xF8, 0xC0, 0xC0, 0xC0)) != fourBytes(0xF0, 0x80, 0x80, 0x80)) break;
    const unsigned int high = (in[0] & 0x07U) << 8 | (in[1] & 0x3FU) << 2 | (in[2] & 0x30U) >> 4;
    if (high - 0x40 >= 0x400) break;
    const unsigned int low = (in[2] & 0x0FU) << 6 | (in[3] & 0x3FU);
    out = storeUnit(0xD800 | (high - 0x40), out);
    out = storeUnit(0xDC00 | low, out);
    in += 4;
  }
  return {in, out};
}

Progress decodeOne(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  const Utf8Sequence sequence = decodeUtf8(in, static_cast<std::size_t>(end - in));
  if (!sequence.isWellFormed) return {in, out};
  if (sequence.length == 1) {
    *out++ = *in++;
    *out++ = 0;
    return {in, out};
  }
  const unsigned int units = utf16Units(sequence.codePoint);
  out = storeUnit(units & 0xFFFF, out);
  if (units > 0xFFFF) out = storeUnit(units >> 16, out);
  return {in + sequence.length, out};
}

bool areAscii(std::uint64_t units) { return (units & 0xFF80 * inEachUnit) == 0; }

// What no run takes: U+0000 goes, a low surrogate without a high one in front is
// written as it is, a pair is joined.
template <bool joinsPairs>
Progress encodeOne(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  const unsigned int unit = loadUnit(in);
  if (unit == 0) return {in + 2, out};
  if (isLowSurrogate(unit)) return {in + 2, writeThreeBytes(unit, out)};
  const unsigned int next =
      joinsPairs && isHighSurrogate(unit) && end - in >= 4 ? loadUnit(in + 2) : 0;
  if (!isLowSurrogate(next)) return {in, out};
  return {in + 4, encodeUtf8(0x10000 + ((unit & 0x3FF) << 10 | (next & 0x3FF)), out)};
}

template <bool joinsPairs>
Progress encodeUnits(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 2) {
    const unsigned int unit = loadUnit(in);
    if (unit < 0x80) {
      if (unit == 0) {
        in += 2;
        continue;
      }
      *out++ = static_cast<unsigned char>(unit);
      in += 2;
      while (end - in >= runLength) {
        const std::uint64_t units = loadRun(in);
        if (!areAscii(units) || hasZeroUnit(units)) break;
        for (std::ptrdiff_t i = 0; i < runLength; i += 2) {
          *out++ = static_cast<unsigned char>(loadUnit(in + i));
        }
        in += runLength;
      }
    } else if (unit < 0x800) {
      out = storePair(0xC0 | unit >> 6, 0x80 | (unit & 0x3F), out);
      in += 2;
    } else if (!isSurrogate(unit) && unit != undecidedUnit) {
      out = writeThreeBytes(unit, out);
      in += 2;
    } else {
      const Progress progress = encodeOne<joinsPairs>(in, end, out);
      if (progress.in == in) break;
      in = progress.in;
      out = progress.out;
    }
  }
  return {in, out};
}

}  // namespace

Progress utf8ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (in != end) {
    while (end - in >= runLength && isAsciiRun(in)) {
      widenRun(in, out);
      in += runLength;
      out += 2 * runLength;
    }
    if (end - in >= runLength) {
      const unsigned int count = countAscii(in);
      widenRun(in, out);
      in += count;
      out += std::size_t{2} * count;
    }
    Progress progress = decodeTwos(in, end, out);
    progress = decodeThrees(progress.in, end, progress.out);
    progress = decodeFours(progress.in, end, progress.out);
    if (progress.in == in && in != end) {
      progress = decodeOne(in, end, out);
      if (progress.in == in) break;
    }
    in = progress.in;
    out = progress.out;
  }
  return {in, out};
}

Progress utf16ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return encodeUnits<true>(in, end, out);
}

Progress utf16ToUtf8WithoutPairs(const unsigned char* in, const unsigned char* end,
                                 unsigned char* out) {
  return encodeUnits<false>(in, end, out);
}

}  // namespace quorvel::kernel::scalar
