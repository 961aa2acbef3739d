#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/kernel/Utf8ToUnitsScalar.hpp"

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

// UTF-16 out of UTF-8.
struct Sixteen {
  static constexpr unsigned int bytesPerAscii = 2;

  static unsigned char* putAscii(unsigned int unit, unsigned char* out) {
    return putUnit(unit, out);
  }

  static unsigned char* putBasic(unsigned int unit, unsigned char* out) {
    return storeUnit(unit, out);
  }

  static unsigned char* putBeyond(char32_t codePoint, unsigned char* out) {
    const unsigned int units = utf16Units(codePoint);
    return storeUnit(units >> 16, storeUnit(units & 0xFFFF, out));
  }

  static void widenRun(const unsigned char* in, unsigned char* out) { quorvel::widenRun(in, out); }
};

bool areAscii(std::uint64_t units) { return (units & 0xFF80 * inEachUnit) == 0; }

// What no run takes: U+0000 goes, a low surrogate without a high one in front is
// written as it is, a pair is joined.
template <bool joinsPairs>
Progress encodeOne(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  const unsigned int unit = loadUnit(in);
  if (unit == 0) return {in + 2, out};
  if (unit == undecidedUnit) return {in, out};
  if (!isHighSurrogate(unit)) return {in + 2, encodeUtf8(unit, out)};
  const unsigned int next = joinsPairs && end - in >= 4 ? loadUnit(in + 2) : 0;
  if (!isLowSurrogate(next)) return {in, out};
  return {in + 4, encodeUtf8(0x10000 + ((unit & 0x3FF) << 10 | (next & 0x3FF)), out)};
}

// Three bytes, and a fourth that the unit behind has room for.
unsigned char* storeThree(unsigned int unit, unsigned char* out) {
  const std::uint32_t bytes =
      utf8_runs::fourBytes(static_cast<unsigned char>(0xE0 | unit >> 12),
                           static_cast<unsigned char>(0x80 | (unit >> 6 & 0x3F)),
                           static_cast<unsigned char>(0x80 | (unit & 0x3F)), 0);
  std::memcpy(out, &bytes, sizeof bytes);
  return out + 3;
}

bool areAsciiWithoutNul(const unsigned char* in) {
  const std::uint64_t units = loadRun(in);
  return areAscii(units) && !hasZeroUnit(units);
}

template <bool joinsPairs>
Progress encodeUnits(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 4) {
    const unsigned int unit = loadUnit(in);
    if (unit - 0x80 < 0x780) {
      out = storePair(0xC0 | unit >> 6, 0x80 | (unit & 0x3F), out);
      in += 2;
    } else if (unit - 0x800 < 0xD000) {
      out = storeThree(unit, out);
      in += 2;
    } else if (unit - 1 < 0x7F) {
      *out++ = static_cast<unsigned char>(unit);
      in += 2;
      while (end - in >= runLength && areAsciiWithoutNul(in)) {
        for (std::ptrdiff_t i = 0; i < runLength; i += 2) {
          *out++ = static_cast<unsigned char>(loadUnit(in + i));
        }
        in += runLength;
      }
    } else {
      const Progress progress = encodeOne<joinsPairs>(in, end, out);
      if (progress.in == in) return progress;
      in = progress.in;
      out = progress.out;
    }
  }
  return end - in >= 2 ? encodeOne<joinsPairs>(in, end, out) : Progress{in, out};
}

}  // namespace

Progress utf8ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return utf8_runs::decode<Sixteen>(in, end, out);
}

Progress utf16ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return encodeUnits<true>(in, end, out);
}

Progress utf16ToUtf8WithoutPairs(const unsigned char* in, const unsigned char* end,
                                 unsigned char* out) {
  return encodeUnits<false>(in, end, out);
}

}  // namespace quorvel::kernel::scalar
