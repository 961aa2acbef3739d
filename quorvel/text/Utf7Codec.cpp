// UTF-7 (RFC 2152): ASCII text in which "+" begins a run of base64 over UTF-16, high
// byte first, without padding. "-" ends a run and is absorbed; so does any other
// character that is no base64 digit, and stands for itself. "+-" is "+".
//
// A character of a run begins and ends inside of bytes. Its first byte is the one
// that holds its first bit, its last the one that holds its last: of "+AKM-" the
// bytes A, K, M. With so many bits read and not yet used, b of them, the next
// character began ceil(b / 6) bytes ago.

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <string_view>

#include "quorvel/kernel/Base64Digits.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf7Text.hpp"
#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/text/UnicodeDecoders.hpp"
#include "quorvel/text/UnicodeEncoders.hpp"

namespace quorvel::text {

namespace {

constexpr unsigned int bitsPerDigit = 6;
constexpr unsigned int bitsPerUnit = 16;

constexpr unsigned int digitsFor(unsigned int bits) {
  return (bits + bitsPerDigit - 1) / bitsPerDigit;
}

// --- Reading -----------------------------------------------------------------

struct Reading {
  std::uint16_t bits = 0;  // read and not yet used
  std::uint16_t high = 0;  // a high surrogate that waits for its other half
  std::uint8_t bitCount = 0;
  bool hasHigh = false;
  bool isOpen = false;                                                           // in a run
  enum class Run : std::uint8_t { empty, digits, characters } run = Run::empty;  // what it has

  bool hasDigits() const { return run != Run::empty; }

  // The digits whose bits are not all used.
  unsigned int digitsLeft() const { return digitsFor(bitCount + (hasHigh ? bitsPerUnit : 0)); }

  // How many bits of the first of these belong to the character in front.
  unsigned int bitsOfLast() const {
    return bitsPerDigit * digitsLeft() - bitCount - (hasHigh ? bitsPerUnit : 0);
  }
};

static_assert(sizeof(Reading) == sizeof(Decoder::State));

class Utf7Decoder : public Decoder {
 public:
  Decoded decode(const DecoderJob& job) override {
    m_now = std::bit_cast<Reading>(m_state);
    const Decoded decoded = decodeAll(job);
    m_state = std::bit_cast<State>(m_now);
    return decoded;
  }

  // The "+" too, as long as nothing stands behind it.
  unsigned int heldBack(State state) const override {
    const auto reading = std::bit_cast<Reading>(state);
    if (!reading.isOpen) return 0;
    return reading.digitsLeft() + (reading.run == Reading::Run::characters ? 0 : 1);
  }

  unsigned int lastLength() const override { return m_lastLength; }

 private:
  Decoded decodeAll(const DecoderJob& job) {
    DecoderJob rest = job;
    const unsigned char* slowUntil = job.in;
    for (;;) {
      if (rest.in >= slowUntil) slowUntil = runLoop(rest);
      if (rest.in == rest.end) return atEnd(rest);
      if (rest.outEnd - rest.out < 2) return {rest.in, rest.out, DecoderStop::room};
      const Decoded stepped = m_now.isOpen ? stepInRun(rest) : stepOutside(rest);
      if (stepped.why != DecoderStop::end) return stepped;
      rest.in = stepped.in;
      rest.out = stepped.out;
    }
  }

  // Takes what the loop can take whole, and says up to where it is not worth asking
  // again.
  const unsigned char* runLoop(DecoderJob& rest) {
    constexpr std::ptrdiff_t worthIt = 32;
    const std::ptrdiff_t length = std::min(rest.end - rest.in, (rest.outEnd - rest.out) / 2);
    if (length < worthIt || m_now.hasHigh) return rest.in + 1;
    kernel::Utf7Reading run{m_now.isOpen, m_now.hasDigits(), m_now.bits, m_now.bitCount};
    const Progress progress = kernel::loops().utf7ToUtf16(rest.in, rest.in + length, rest.out, run);
    if (mayHaveHalves(rest.in, progress.in, rest.out, progress.out)) return progress.in;
    const Reading before = m_now;
    m_now.isOpen = run.isOpen;
    keep(run.bits, run.bitCount);
    m_now.run = run.hasDigits ? Reading::Run::digits : Reading::Run::empty;
    if (run.hasDigits && runHasCharacters(before, rest.in, progress.in)) {
      m_now.run = Reading::Run::characters;
    }
    rest.in = progress.in;
    rest.out = progress.out;
    return progress.in + worthIt;
  }

  // Whether units made of [in, end) may be halves of pairs: alone, or in two runs, of which
  // one ends with a hyphen right in front of the other and the units show nothing.
  static bool mayHaveHalves(const unsigned char* in, const unsigned char* end, unsigned char* units,
                            unsigned char* unitsEnd) {
    if (!haveSurrogates(units, unitsEnd)) return false;
    const std::string_view text(reinterpret_cast<const char*>(in),
                                static_cast<std::size_t>(end - in));
    return text.find("-+") != std::string_view::npos ||
           kernel::loops().utf16ToUtf16(units, unitsEnd, units).why != Stop::end;
  }

  static bool haveSurrogates(const unsigned char* units, const unsigned char* end) {
    // With their number known the compiler makes vector code of it.
    constexpr std::ptrdiff_t atOnce = 64;
    for (; end - units >= 2 * atOnce; units += 2 * atOnce) {
      std::uint16_t values[atOnce];
      std::memcpy(values, units, sizeof values);
      std::uint16_t found = 0;
      for (const std::uint16_t value : values) found |= (value & 0xF800) == 0xD800 ? 0xFFFF : 0;
      if (found != 0) return true;
    }
    while (units != end && !isSurrogate(loadUnit(units))) units += 2;
    return units != end;
  }

  // Whether the run in force behind [begin, in) has more than the digits that are left.
  // What stands in front of these is a digit then, or else the "+" that began the run; but
  // "+" is a digit too.
  bool runHasCharacters(const Reading& before, const unsigned char* begin,
                        const unsigned char* in) const {
    if (m_now.bitsOfLast() != 0) return true;
    const auto left = static_cast<std::ptrdiff_t>(m_now.digitsLeft());
    const bool hadCharacters = before.isOpen && before.run == Reading::Run::characters;
    if (in - begin <= left) return hadCharacters;
    const unsigned char* last = in - left - 1;
    if (*last != '+') return true;
    // The first "+" behind the last byte that is no digit has begun the run.
    const unsigned char* from = last;
    while (from != begin && base64DigitValue(from[-1]) != noBase64Digit) --from;
    if (from == begin && before.isOpen) return true;
    return std::find(from, last, '+') != last;
  }

  Decoded on(const unsigned char* in, unsigned char* out) const {
    return {in, out, DecoderStop::end};
  }

  Decoded put(char32_t character, unsigned int length, const DecoderJob& rest,
              const unsigned char* next) {
    m_lastLength = length;
    return on(next, putCharacter(character, rest.out));
  }

  static Decoded lose(const DecoderJob& rest, unsigned int back, unsigned int length) {
    return {rest.in, rest.out, DecoderStop::malformed, length, back};
  }

  Decoded stepOutside(const DecoderJob& rest) {
    const unsigned char byte = *rest.in;
    if (byte >= 0x80) return lose(rest, 0, 1);
    if (byte != '+') return put(byte, 1, rest, rest.in + 1);
    m_now.isOpen = true;
    m_now.run = Reading::Run::empty;
    return on(rest.in + 1, rest.out);
  }

  Decoded stepInRun(const DecoderJob& rest) {
    const unsigned char byte = *rest.in;
    const unsigned int digit = base64DigitValue(byte);
    if (digit != noBase64Digit) return takeDigit(digit, rest);
    if (byte == '-' && !m_now.hasDigits()) {
      m_now.isOpen = false;
      return put('+', 2, rest, rest.in + 1);
    }
    Decoded ended = endRun(rest);
    // The hyphen goes with the run, whatever its last bits are worth.
    if (byte == '-' && !m_now.isOpen) {
      ended.in += 1;
      if (ended.why == DecoderStop::malformed) ended.back += 1;
    }
    return ended;
  }

  Decoded takeDigit(unsigned int digit, const DecoderJob& rest) {
    const unsigned int count = m_now.bitCount + bitsPerDigit;
    const unsigned int bits = static_cast<unsigned int>(m_now.bits) << bitsPerDigit | digit;
    if (count < bitsPerUnit) {
      if (!m_now.hasDigits()) m_now.run = Reading::Run::digits;
      keep(bits, count);
      return on(rest.in + 1, rest.out);
    }
    const unsigned int unit = bits >> (count - bitsPerUnit);
    if (m_now.hasHigh && !isLowSurrogate(unit)) return loseHigh(rest);
    if (m_now.hasHigh && rest.outEnd - rest.out < 4) return {rest.in, rest.out, DecoderStop::room};
    const unsigned int back = digitsFor(m_now.bitCount);
    keep(bits & ((1U << (count - bitsPerUnit)) - 1), count - bitsPerUnit);
    return takeUnit(unit, back, rest);
  }

  // The unit whose last digit is the byte at hand and that began `back` bytes ago.
  Decoded takeUnit(unsigned int unit, unsigned int back, const DecoderJob& rest) {
    if (m_now.hasHigh) {
      m_now.hasHigh = false;
      const char32_t character = 0x10000 + ((m_now.high & 0x3FFU) << 10 | (unit & 0x3FFU));
      const unsigned int length = digitsFor(m_now.bitCount + 2 * bitsPerUnit);
      m_now.run = Reading::Run::characters;
      return put(character, length, rest, rest.in + 1);
    }
    if (isHighSurrogate(unit)) {
      m_now.hasHigh = true;
      m_now.high = static_cast<std::uint16_t>(unit);
      return on(rest.in + 1, rest.out);
    }
    if (isLowSurrogate(unit)) return lose(rest, back, back + 1);
    m_now.run = Reading::Run::characters;
    return put(unit, back + 1, rest, rest.in + 1);
  }

  void keep(unsigned int bits, unsigned int count) {
    m_now.bits = static_cast<std::uint16_t>(bits);
    m_now.bitCount = static_cast<std::uint8_t>(count);
  }

  // The high surrogate in front of the bits that are left.
  Decoded loseHigh(const DecoderJob& rest) {
    m_now.hasHigh = false;
    const unsigned int back = digitsFor(m_now.bitCount + bitsPerUnit);
    return lose(rest, back, back - digitsFor(m_now.bitCount + 1U) + 1);
  }

  // A run is whole when it has digits and, behind the last unit, only the zero bits
  // that fill up its last digit.
  Decoded endRun(const DecoderJob& rest) {
    if (m_now.hasHigh) return loseHigh(rest);
    if (!m_now.hasDigits()) {
      m_now.isOpen = false;
      return lose(rest, 1, 1);
    }
    const unsigned int back = digitsFor(m_now.bitCount);
    const bool isWhole = m_now.bitCount < bitsPerDigit && m_now.bits == 0;
    m_now = {};
    return isWhole ? on(rest.in, rest.out) : lose(rest, back, back);
  }

  Decoded atEnd(const DecoderJob& rest) {
    if (!rest.isLast || !m_now.isOpen) return on(rest.in, rest.out);
    return endRun(rest);
  }

  Reading m_now;
  unsigned int m_lastLength = 0;
};

// --- Writing -----------------------------------------------------------------

// The run in force, in a word.
Encoder::State packed(const kernel::Utf7Writing& run) {
  return Encoder::State{run.isOpen} | Encoder::State{run.bitCount} << 8 |
         Encoder::State{run.bits} << 32;
}

kernel::Utf7Writing unpacked(Encoder::State state) {
  return {(state & 1) != 0, static_cast<unsigned int>(state >> 32),
          static_cast<unsigned int>(state >> 8 & 0xFF)};
}

class Utf7Encoder : public Encoder {
 public:
  Encoded encode(const EncoderJob& job) override {
    const auto loop = [this](const unsigned char* in, const unsigned char* end,
                             unsigned char* out) {
      kernel::Utf7Writing run = unpacked(m_state);
      const Progress progress = kernel::loops().utf16ToUtf7(in, end, out, run);
      m_state = packed(run);
      return progress;
    };
    return encodeBy(loop, 4, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    kernel::Utf7Writing run = unpacked(m_state);
    const unsigned int units = utf16Units(character);
    out = put(units & 0xFFFF, run, out);
    if (character >= 0x10000) out = put(units >> 16, run, out);
    m_state = packed(run);
    return out;
  }

  // A run goes on behind the last digit that was copied, with the bits that the next one
  // has of the last character.
  void follow(Decoder::State state, std::span<const unsigned char> held) override {
    const auto reading = std::bit_cast<Reading>(state);
    kernel::Utf7Writing run;
    run.isOpen = reading.isOpen && reading.run == Reading::Run::characters;
    if (run.isOpen && reading.bitsOfLast() != 0) {
      run.bitCount = reading.bitsOfLast();
      run.bits = base64DigitValue(held.front()) >> (bitsPerDigit - run.bitCount);
    }
    m_state = packed(run);
  }

  // In a run the source may have its characters at other bits.
  unsigned char* comeInStepWith(Decoder::State state, unsigned char* out) override {
    return std::bit_cast<Reading>(state).isOpen ? nullptr : finish(out);
  }

  unsigned char* interrupt(unsigned char* out) override { return finish(out); }

  unsigned char* finish(unsigned char* out) override {
    kernel::Utf7Writing run = unpacked(m_state);
    if (run.isOpen) {
      out = utf7::endRun(run, out);
      *out++ = '-';
    }
    m_state = packed(run);
    return out;
  }

 private:
  static unsigned char* put(unsigned int unit, kernel::Utf7Writing& run, unsigned char* out) {
    if (utf7::isDirect(unit)) {
      const bool wasOpen = run.isOpen;
      out = utf7::endRun(run, out);
      if (wasOpen && utf7::needsHyphen(unit)) *out++ = '-';
      *out++ = static_cast<unsigned char>(unit);
      return out;
    }
    if (!run.isOpen) {
      *out++ = '+';
      if (unit == '+') {
        *out++ = '-';
        return out;
      }
      run.isOpen = true;
    }
    run.bits = run.bits << bitsPerUnit | unit;
    run.bitCount += bitsPerUnit;
    while (run.bitCount >= bitsPerDigit) {
      run.bitCount -= bitsPerDigit;
      *out++ = utf7::digitOf(run.bits >> run.bitCount);
    }
    run.bits &= (1U << run.bitCount) - 1;
    return out;
  }
};

}  // namespace

std::unique_ptr<Decoder> makeUtf7Decoder() { return std::make_unique<Utf7Decoder>(); }

std::unique_ptr<Encoder> makeUtf7Encoder() { return std::make_unique<Utf7Encoder>(); }

}  // namespace quorvel::text
