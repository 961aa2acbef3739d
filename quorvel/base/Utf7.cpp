// UTF-7 (RFC 2152): ASCII text in which "+" begins a run of base64 over UTF-16,
// high byte first, without padding. "-" ends a run and is absorbed; so does any
// other character that is no base64 digit, and stands for itself. "+-" is "+".

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "quorvel/base/Base64Digits.h"
#include "quorvel/base/BlockRunner.h"
#include "quorvel/base/Utf16Unit.h"
#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/base/_qvUtf.h"
#include "quorvel/base/kernel/Target.h"

namespace quorvel {

namespace {

// Set D of the RFC and the white space that rule 3 adds to it.
constexpr std::array<bool, 128> makeDirectUnits() {
  std::array<bool, 128> isDirect{};
  for (unsigned int unit = 0; unit < isDirect.size(); ++unit) {
    isDirect[unit] = base64DigitValue(unit) < 62;
  }
  for (const char unit : std::string_view("'(),-./:? \t\r\n")) {
    isDirect[static_cast<unsigned int>(unit)] = true;
  }
  return isDirect;
}

constexpr std::array<bool, 128> directUnits = makeDirectUnits();

bool isDirect(unsigned int unit) { return unit < directUnits.size() && directUnits[unit]; }

// In a run eight digits are three units.
constexpr std::ptrdiff_t digitsPerGroup = 8;
constexpr std::ptrdiff_t bytesPerGroup = 6;

unsigned char* storeUnit(unsigned int unit, unsigned char* out) {
  const auto value = static_cast<unsigned short>(unit);
  std::memcpy(out, &value, sizeof value);
  return out + sizeof value;
}

class Decoder {
 public:
  // Each byte becomes at most one unit, in host byte order at `out`.
  Progress decode(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    while (in != end) {
      if (m_bitCount == 0) {
        const Progress progress = kernel::utf7().toUtf16(in, end, out, m_run);
        in = progress.in;
        out = progress.out;
      }
      if (in != end) out = step(*in++, out);
    }
    return {in, out};
  }

  // Whether all that was decoded, the run that the text ends in included, was
  // well-formed.
  bool finish() {
    if (m_run.isOpen) endRun();
    return m_isClean;
  }

 private:
  // What the loop stops in front of.
  unsigned char* step(unsigned int byte, unsigned char* out) {
    if (m_run.isOpen) {
      const unsigned int digit = base64DigitValue(byte);
      if (digit != noBase64Digit) return takeDigit(digit, out);
      if (byte == '-' && !m_run.hasDigits) {
        m_run = {};
        return storeUnit('+', out);
      }
      endRun();
      if (byte == '-') return out;
    }
    if (byte == '+') {
      m_run = {true, false};
      return out;
    }
    m_isClean = m_isClean && byte < 0x80;
    return storeUnit(byte < 0x80 ? byte : replacementCharacter, out);
  }

  unsigned char* takeDigit(unsigned int digit, unsigned char* out) {
    m_run.hasDigits = true;
    m_bits = m_bits << 6 | digit;
    m_bitCount += 6;
    if (m_bitCount < 16) return out;
    m_bitCount -= 16;
    out = storeUnit(m_bits >> m_bitCount, out);
    m_bits &= (1U << m_bitCount) - 1;
    return out;
  }

  // A run is whole when it has digits and, behind the last unit, only the zero
  // bits that fill up its last digit.
  void endRun() {
    m_isClean = m_isClean && m_run.hasDigits && m_bitCount < 6 && m_bits == 0;
    m_run = {};
    m_bits = 0;
    m_bitCount = 0;
  }

  kernel::Utf7Run m_run;
  bool m_isClean = true;
  unsigned int m_bits = 0;
  unsigned int m_bitCount = 0;
};

unsigned char* putDigit(std::uint64_t bits, unsigned char* out) {
  *out++ = static_cast<unsigned char>(base64Digits[bits & 0x3F]);
  return out;
}

// Writes the eight digits of three units, or nothing if one of them ends the run.
bool encodeGroup(const unsigned char* in, unsigned char* out) {
  std::uint64_t bits = 0;
  for (std::ptrdiff_t i = 0; i < bytesPerGroup; i += 2) {
    const unsigned int unit = loadUnit(in + i);
    if (isDirect(unit)) return false;
    bits = bits << 16 | unit;
  }
  for (int shift = 42; shift >= 0; shift -= 6) out = putDigit(bits >> shift, out);
  return true;
}

class Encoder {
 public:
  static constexpr unsigned int mostBytesPerUnit = 4;

  // Each unit becomes at most `mostBytesPerUnit` bytes.
  Progress encode(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    while (in != end) {
      if (m_inRun) {
        const Progress progress = putUnits(in, end, out);
        if (progress.in == end) return progress;
        in = progress.in;
        out = endRun(loadUnit(in), progress.out);
      }
      for (; in != end && isDirect(loadUnit(in)); in += 2) {
        *out++ = static_cast<unsigned char>(loadUnit(in));
      }
      if (in == end) break;
      *out++ = '+';
      if (loadUnit(in) == '+') {
        *out++ = '-';
        in += 2;
      } else {
        m_inRun = true;
      }
    }
    return {in, out};
  }

  // Ends the run that the text is in, if it is in one: one byte at the most.
  unsigned char* finish(unsigned char* out) {
    if (m_bitCount) out = putDigit(m_bits << (6 - m_bitCount), out);
    m_inRun = false;
    m_bitCount = 0;
    return out;
  }

 private:
  Progress putUnits(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    while (in != end) {
      while (m_bitCount == 0 && end - in >= bytesPerGroup && encodeGroup(in, out)) {
        in += bytesPerGroup;
        out += digitsPerGroup;
      }
      if (in == end || isDirect(loadUnit(in))) break;
      m_bits = m_bits << 16 | loadUnit(in);
      m_bitCount += 16;
      in += 2;
      while (m_bitCount >= 6) {
        m_bitCount -= 6;
        out = putDigit(m_bits >> m_bitCount, out);
      }
    }
    return {in, out};
  }

  // `next` is the direct unit behind the run.
  unsigned char* endRun(unsigned int next, unsigned char* out) {
    out = finish(out);
    if (next == '-' || base64DigitValue(next) != noBase64Digit) *out++ = '-';
    return out;
  }

  bool m_inRun = false;
  unsigned int m_bits = 0;
  unsigned int m_bitCount = 0;
};

}  // namespace

bool _qvUtf::Utf7ToUtf16_xe(DataBuffer& in, DataBuffer& out) {
  Decoder decoder;
  const auto loop = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
    return decoder.decode(p, stop, room);
  };
  const unsigned char* p = in.getData2();
  const unsigned char* end = p + in.getSize();
  return runInBlocks(loop, p, end, 4, out) == end && decoder.finish();
}

bool _qvUtf::Utf16XEToUtf7(DataBuffer& in, DataBuffer& out) {
  Encoder encoder;
  const auto loop = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
    return encoder.encode(p, stop, room);
  };
  const unsigned int numUnits = in.getSize() / 2;
  const unsigned char* p = in.getData2();
  const unsigned char* end = p + std::size_t{2} * numUnits;
  if (runInBlocks(loop, p, end, Encoder::mostBytesPerUnit, out) != end) return false;
  unsigned char* room = out.growBy(1);
  if (!room) return false;
  out.keepWritten(static_cast<unsigned int>(encoder.finish(room) - room));
  return in.getSize() % 2 == 0;
}

}  // namespace quorvel
