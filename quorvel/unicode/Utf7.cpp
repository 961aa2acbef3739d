// UTF-7 (RFC 2152): ASCII text in which "+" begins a run of base64 over UTF-16,
// high byte first, without padding. "-" ends a run and is absorbed; so does any
// other character that is no base64 digit, and stands for itself. "+-" is "+".

#include <cstring>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/kernel/Base64Digits.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf7Text.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

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

class Encoder {
 public:
  static constexpr unsigned int mostBytesPerUnit = 4;

  // Each unit becomes at most `mostBytesPerUnit` bytes.
  Progress encode(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    while (in != end) {
      if (m_bitCount == 0) {
        const Progress progress = kernel::utf7().fromUtf16(in, end, out, m_run);
        in = progress.in;
        out = progress.out;
      }
      if (in == end) break;
      out = step(loadUnit(in), out);
      in += 2;
    }
    return {in, out};
  }

  // Ends the run that the text is in, if it is in one: one byte at the most.
  unsigned char* finish(unsigned char* out) {
    if (m_bitCount) out = putDigit(m_bits << (6 - m_bitCount), out);
    m_run = {};
    m_bitCount = 0;
    return out;
  }

 private:
  // The loop leaves only the last units of an input, in a run, and what follows
  // them in the next.
  unsigned char* step(unsigned int unit, unsigned char* out) {
    if (utf7::isDirect(unit)) {
      out = finish(out);
      if (utf7::needsHyphen(unit)) *out++ = '-';
      *out++ = static_cast<unsigned char>(unit);
      return out;
    }
    m_bits = m_bits << 16 | unit;
    m_bitCount += 16;
    while (m_bitCount >= 6) {
      m_bitCount -= 6;
      out = putDigit(m_bits >> m_bitCount, out);
    }
    return out;
  }

  static unsigned char* putDigit(unsigned int bits, unsigned char* out) {
    *out++ = static_cast<unsigned char>(base64Digits[bits & 0x3F]);
    return out;
  }

  kernel::Utf7Run m_run;
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
