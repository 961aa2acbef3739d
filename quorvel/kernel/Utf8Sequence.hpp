#pragma once

// One character of UTF-8, judged in full: for what loops stop in front of, and for
// texts that are too rare to have a loop.

#include <cstddef>

namespace quorvel {

/// What stands at one position of UTF-8 text: a character, or the maximal
/// subpart of an ill-formed sequence.
struct Utf8Sequence {
  char32_t codePoint;   ///< meaningful only when well-formed
  unsigned int length;  ///< bytes, at least 1
  bool isWellFormed;
};

/// Decodes the sequence at `p` by the table of well-formed sequences (Unicode,
/// table 3-7; RFC 3629). Looks at no byte past `available`, which is at least
/// 1, and at no byte behind the first one that cannot continue the sequence.
inline Utf8Sequence decodeUtf8(const unsigned char* p, std::size_t available) {
  const unsigned int lead = p[0];
  if (lead < 0x80) return {lead, 1, true};
  if (lead < 0xC2 || lead > 0xF4) return {0, 1, false};

  // Only the second byte's range depends on the lead: that is what keeps out
  // overlong forms (E0, F0), surrogates (ED) and values above U+10FFFF (F4).
  const unsigned int length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  unsigned int lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned int highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t codePoint = lead & (0x7FU >> length);
  for (unsigned int i = 1; i < length; ++i) {
    if (i == available || p[i] < lowest || p[i] > highest) return {0, i, false};
    codePoint = codePoint << 6 | (p[i] & 0x3FU);
    lowest = 0x80;
    highest = 0xBF;
  }
  return {codePoint, length, true};
}

/// Whether the bytes from `p` to `end`, which is behind it, are the first ones of a
/// well-formed sequence and need more.
inline bool isCutOff(const unsigned char* p, const unsigned char* end) {
  const bool isLead = p[0] >= 0xC2 && p[0] <= 0xF4;
  if (!isLead || end - p >= 4) return false;
  const auto available = static_cast<std::size_t>(end - p);
  const Utf8Sequence sequence = decodeUtf8(p, available);
  return !sequence.isWellFormed && sequence.length == available;
}

/// Whether `value` is a Unicode scalar value: no surrogate, not above U+10FFFF.
inline bool isScalarValue(char32_t value) {
  return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

/// Writes the UTF-8 form of a scalar value (room for 4 bytes) and returns the
/// position behind it.
inline unsigned char* encodeUtf8(char32_t value, unsigned char* out) {
  const auto byte = [](char32_t bits) { return static_cast<unsigned char>(bits); };
  if (value < 0x80) {
    *out++ = byte(value);
    return out;
  }
  if (value < 0x800) {
    *out++ = byte(0xC0 | value >> 6);
  } else {
    if (value < 0x10000) {
      *out++ = byte(0xE0 | value >> 12);
    } else {
      *out++ = byte(0xF0 | value >> 18);
      *out++ = byte(0x80 | (value >> 12 & 0x3F));
    }
    *out++ = byte(0x80 | (value >> 6 & 0x3F));
  }
  *out++ = byte(0x80 | (value & 0x3F));
  return out;
}

/// The UTF-16 form of a scalar value: the first unit in the low 16 bits, the
/// second, if there is one, in the high 16 bits.
inline unsigned int utf16Units(char32_t value) {
  if (value < 0x10000) return value;
  const unsigned int first = 0xD7C0 + (value >> 10);
  const unsigned int second = 0xDC00 | (value & 0x3FF);
  return second << 16 | first;
}

inline constexpr char32_t replacementCharacter = 0xFFFD;

}  // namespace quorvel
