// UTF-7 (RFC 2152): ASCII text in which "+" begins a run of base64 over UTF-16,
// high byte first, without padding. "-" ends a run and is absorbed; so does any
// other character that is no base64 digit, and stands for itself. "+-" is "+".

#include <algorithm>
#include <cstring>
#include <string_view>

#include "quorvel/base/Base64Digits.h"
#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/base/_qvUtf.h"

namespace quorvel {

namespace {

constexpr unsigned int bytesPerBlock = 8192;

// Set D of the RFC and the white space that rule 3 adds to it.
bool isDirect(unsigned int unit) {
  if (unit >= 0x80) return false;
  if (base64DigitValue(unit) < 62) return true;
  return unit != 0 && std::string_view("'(),-./:? \t\r\n").find(static_cast<char>(unit)) !=
                          std::string_view::npos;
}

class Decoder {
 public:
  // Decodes one byte to at most one unit, in host byte order at `out`.
  unsigned char* decode(unsigned int byte, unsigned char* out) {
    if (m_inRun) {
      const unsigned int digit = base64DigitValue(byte);
      if (digit != noBase64Digit) return takeDigit(digit, out);
      m_inRun = false;
      if (byte == '-') return m_hasDigits ? endRun(out) : putUnit('+', out);
      endRun(out);
    }
    if (byte == '+') {
      m_inRun = true;
      m_hasDigits = false;
      return out;
    }
    m_isClean = m_isClean && byte < 0x80;
    return putUnit(byte < 0x80 ? byte : replacementCharacter, out);
  }

  // Whether all that was decoded, the run that the text ends in included, was
  // well-formed.
  bool finish() {
    if (m_inRun) endRun(nullptr);
    return m_isClean;
  }

 private:
  static unsigned char* putUnit(unsigned int unit, unsigned char* out) {
    const auto value = static_cast<unsigned short>(unit);
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
  }

  unsigned char* takeDigit(unsigned int digit, unsigned char* out) {
    m_hasDigits = true;
    m_bits = m_bits << 6 | digit;
    m_bitCount += 6;
    if (m_bitCount < 16) return out;
    m_bitCount -= 16;
    out = putUnit(m_bits >> m_bitCount, out);
    m_bits &= (1U << m_bitCount) - 1;
    return out;
  }

  // A run is whole when it has digits and, behind the last unit, only the zero
  // bits that fill up its last digit.
  unsigned char* endRun(unsigned char* out) {
    m_isClean = m_isClean && m_hasDigits && m_bitCount < 6 && m_bits == 0;
    m_bits = 0;
    m_bitCount = 0;
    return out;
  }

  bool m_inRun = false;
  bool m_hasDigits = false;
  bool m_isClean = true;
  unsigned int m_bits = 0;
  unsigned int m_bitCount = 0;
};

class Encoder {
 public:
  static constexpr unsigned int mostBytesPerUnit = 4;

  // Encodes one unit in at most `mostBytesPerUnit` bytes.
  unsigned char* encode(unsigned int unit, unsigned char* out) {
    if (isDirect(unit)) {
      if (m_inRun) {
        out = finish(out);
        if (unit == '-' || base64DigitValue(unit) != noBase64Digit) *out++ = '-';
      }
      *out++ = static_cast<unsigned char>(unit);
      return out;
    }
    if (!m_inRun) {
      *out++ = '+';
      if (unit == '+') {
        *out++ = '-';
        return out;
      }
      m_inRun = true;
    }
    m_bits = m_bits << 16 | unit;
    m_bitCount += 16;
    while (m_bitCount >= 6) {
      m_bitCount -= 6;
      out = putDigit(m_bits >> m_bitCount & 0x3F, out);
    }
    return out;
  }

  // Ends the run that the text is in, if it is in one: one byte at the most.
  unsigned char* finish(unsigned char* out) {
    if (m_bitCount) out = putDigit(m_bits << (6 - m_bitCount) & 0x3F, out);
    m_inRun = false;
    m_bitCount = 0;
    return out;
  }

 private:
  static unsigned char* putDigit(unsigned int value, unsigned char* out) {
    *out++ = static_cast<unsigned char>(base64Digits[value]);
    return out;
  }

  bool m_inRun = false;
  unsigned int m_bits = 0;
  unsigned int m_bitCount = 0;
};

}  // namespace

bool _qvUtf::Utf7ToUtf16_xe(DataBuffer& in, DataBuffer& out) {
  Decoder decoder;
  const unsigned char* p = in.getData2();
  for (unsigned int left = in.getSize(); left;) {
    const unsigned int bytes = std::min(left, bytesPerBlock);
    unsigned char* room = out.growBy(2 * bytes);
    if (!room) return false;
    unsigned char* end = room;
    for (unsigned int i = 0; i < bytes; ++i) end = decoder.decode(*p++, end);
    out.keepWritten(static_cast<unsigned int>(end - room));
    left -= bytes;
  }
  return decoder.finish();
}

bool _qvUtf::Utf16XEToUtf7(DataBuffer& in, DataBuffer& out) {
  Encoder encoder;
  const unsigned char* p = in.getData2();
  for (unsigned int left = in.getSize() / 2; left;) {
    const unsigned int units = std::min(left, bytesPerBlock);
    unsigned char* room = out.growBy(units * Encoder::mostBytesPerUnit + 1);
    if (!room) return false;
    unsigned char* end = room;
    for (unsigned int i = 0; i < units; ++i, p += 2) {
      unsigned short unit = 0;
      std::memcpy(&unit, p, sizeof unit);
      end = encoder.encode(unit, end);
    }
    left -= units;
    if (left == 0) end = encoder.finish(end);
    out.keepWritten(static_cast<unsigned int>(end - room));
  }
  return in.getSize() % 2 == 0;
}

}  // namespace quorvel
