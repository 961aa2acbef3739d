// UTF-16 to UTF-8, unit by unit in the order of what is common; behind a unit of
// ASCII four at a time as long as there are more.

#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16ToUtf8Manner.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"

namespace quorvel::kernel::scalar {

namespace {

// What no run takes: U+0000, which goes unless the manner is strict, surrogates, and
// whatever else there is.
template <Manner manner>
Progress encodeOne(Position at, const unsigned char* end) {
  constexpr bool isStrict = manner == Manner::strict;
  const unsigned int unit = loadUnit(at.in);
  if (!isStrict && unit == 0) return {at.in + 2, at.out, Stop::end};
  if (isStrict ? isLowSurrogate(unit) : unit == undecidedUnit) return {at.in, at.out, Stop::met};
  if (!isHighSurrogate(unit)) return {at.in + 2, encodeUtf8(unit, at.out), Stop::end};
  if (manner == Manner::withoutPairs) return {at.in, at.out, Stop::met};
  if (end - at.in < 4) return {at.in, at.out, Stop::cutOff};
  const unsigned int next = loadUnit(at.in + 2);
  if (!isLowSurrogate(next)) return {at.in, at.out, Stop::met};
  const char32_t codePoint = 0x10000 + ((unit & 0x3FF) << 10 | (next & 0x3FF));
  return {at.in + 4, encodeUtf8(codePoint, at.out), Stop::end};
}

unsigned char* storeTwo(unsigned int unit, unsigned char* out) {
  out[0] = static_cast<unsigned char>(0xC0 | unit >> 6);
  out[1] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
  return out + 2;
}

// Three bytes, and a fourth that the unit behind has room for.
unsigned char* storeThree(unsigned int unit, unsigned char* out) {
  const std::uint32_t bytes = 0x8080E0U | unit >> 12 | (unit << 2 & 0x3F00) | (unit & 0x3F) << 16;
  std::memcpy(out, &bytes, sizeof bytes);
  return out + 3;
}

template <Manner manner>
Position narrowRuns(Position at, const unsigned char* end) {
  while (end - at.in >= runLength) {
    const std::uint64_t units = loadRun(at.in);
    if (!areAsciiUnits(units) || (manner != Manner::strict && hasZeroUnit(units))) break;
    for (std::ptrdiff_t i = 0; i < runLength; i += 2) {
      *at.out++ = static_cast<unsigned char>(loadUnit(at.in + i));
    }
    at.in += runLength;
  }
  return at;
}

template <Manner manner>
Progress encode(Position at, const unsigned char* end) {
  while (end - at.in >= 4) {
    const unsigned int unit = loadUnit(at.in);
    if (unit - 0x80 < 0x780) {
      at = {at.in + 2, storeTwo(unit, at.out)};
    } else if (unit - 0x800 < 0xD000) {
      at = {at.in + 2, storeThree(unit, at.out)};
    } else if (unit - 1 < 0x7F) {
      *at.out++ = static_cast<unsigned char>(unit);
      at = narrowRuns<manner>({at.in + 2, at.out}, end);
    } else {
      const Progress one = encodeOne<manner>(at, end);
      if (one.why != Stop::end) return one;
      at = {one.in, one.out};
    }
  }
  if (end - at.in >= 2) {
    const Progress one = encodeOne<manner>(at, end);
    if (one.why != Stop::end) return one;
    at = {one.in, one.out};
  }
  return {at.in, at.out, at.in == end ? Stop::end : Stop::cutOff};
}

}  // namespace

Progress utf16ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return encode<Manner::loose>({in, out}, end);
}

Progress utf16ToUtf8WithoutPairs(const unsigned char* in, const unsigned char* end,
                                 unsigned char* out) {
  return encode<Manner::withoutPairs>({in, out}, end);
}

Progress utf16ToUtf8Strictly(const unsigned char* in, const unsigned char* end,
                             unsigned char* out) {
  return encode<Manner::strict>({in, out}, end);
}

}  // namespace quorvel::kernel::scalar
