#include "quorvel/support/TranscodeLoops.h"

#include <cstring>

#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/support/PassthroughMarker.h"

namespace quorvel {

namespace {

unsigned char* storeUnit(unsigned int unit, unsigned char* out) {
  const auto value = static_cast<unsigned short>(unit);
  std::memcpy(out, &value, sizeof value);
  return out + sizeof value;
}

template <bool joinsPairs>
Progress encodeUnits(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 2) {
    const unsigned int unit = loadUnit(in);
    if (unit == 0) {
      in += 2;
      continue;
    }
    if (isHighSurrogate(unit)) {
      const unsigned int next = joinsPairs && end - in >= 4 ? loadUnit(in + 2) : 0;
      if (!isLowSurrogate(next)) break;
      out = encodeUtf8(0x10000 + ((unit & 0x3FF) << 10 | (next & 0x3FF)), out);
      in += 4;
      continue;
    }
    if (unit == passthroughMarkerUnit) break;
    out = encodeUtf8(unit, out);
    in += 2;
  }
  return {in, out};
}

}  // namespace

Progress utf8ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (in != end) {
    if (*in < 0x80) {
      *out++ = *in++;
      *out++ = 0;
      continue;
    }
    const Utf8Sequence sequence = decodeUtf8(in, static_cast<std::size_t>(end - in));
    if (!sequence.isWellFormed) break;
    const unsigned int units = utf16Units(sequence.codePoint);
    out = storeUnit(units & 0xFFFF, out);
    if (units > 0xFFFF) out = storeUnit(units >> 16, out);
    in += sequence.length;
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

// The form that UTF-8 has for U+0800 to U+FFFF, without asking what the unit is.
unsigned char* writeThreeBytes(unsigned int unit, unsigned char* out) {
  *out++ = static_cast<unsigned char>(0xE0 | unit >> 12);
  *out++ = static_cast<unsigned char>(0x80 | (unit >> 6 & 0x3F));
  *out++ = static_cast<unsigned char>(0x80 | (unit & 0x3F));
  return out;
}

unsigned int loadUnit(const unsigned char* p) {
  unsigned short unit = 0;
  std::memcpy(&unit, p, sizeof unit);
  return unit;
}

}  // namespace quorvel
