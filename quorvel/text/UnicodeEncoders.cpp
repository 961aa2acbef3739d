// UTF-16LE to UTF-8, UTF-16, UTF-32 and GSM 03.38.

#include "quorvel/text/UnicodeEncoders.hpp"

#include <cstdint>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/unicode/GsmText.hpp"

namespace quorvel::text {

namespace {

// --- UTF-8 -------------------------------------------------------------------

class Utf8Encoder : public Encoder {
 public:
  Encoded encode(const EncoderJob& job) override {
    return encodeBy(kernel::loops().utf16ToUtf8Strictly, 3, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    return encodeUtf8(character, out);
  }
};

// --- UTF-16 ------------------------------------------------------------------

template <Order order>
class Utf16Encoder : public Encoder {
 public:
  Encoded encode(const EncoderJob& job) override {
    const auto loop = [](const unsigned char* in, const unsigned char* end, unsigned char* out) {
      for (; end - in >= runLength; in += runLength, out += runLength) {
        std::uint64_t units = loadRun(in);
        if (hasZeroUnit((units & 0xF800 * inEachUnit) ^ 0xD800 * inEachUnit)) break;
        if (order == Order::highFirst) units = swapped(units);
        std::memcpy(out, &units, sizeof units);
      }
      return Position{in, out};
    };
    return encodeBy(loop, 2, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    const unsigned int units = utf16Units(character);
    out = put(units & 0xFFFF, out);
    return character < 0x10000 ? out : put(units >> 16, out);
  }

 private:
  static std::uint64_t swapped(std::uint64_t units) {
    constexpr std::uint64_t lows = 0x00FF00FF00FF00FFU;
    return (units & lows) << 8 | (units >> 8 & lows);
  }

  static unsigned char* put(unsigned int unit, unsigned char* out) {
    const auto low = static_cast<unsigned char>(unit);
    const auto high = static_cast<unsigned char>(unit >> 8);
    out[0] = order == Order::lowFirst ? low : high;
    out[1] = order == Order::lowFirst ? high : low;
    return out + 2;
  }
};

// --- UTF-32 ------------------------------------------------------------------

template <Order order>
class Utf32Encoder : public Encoder {
 public:
  Encoded encode(const EncoderJob& job) override {
    const auto loop = [](const unsigned char* in, const unsigned char* end, unsigned char* out) {
      for (; end - in >= runLength; in += runLength) {
        const std::uint64_t units = loadRun(in);
        if (hasZeroUnit((units & 0xF800 * inEachUnit) ^ 0xD800 * inEachUnit)) break;
        for (unsigned int i = 0; i < 4; ++i) out = put(units >> 16 * i & 0xFFFF, out);
      }
      return Position{in, out};
    };
    return encodeBy(loop, 4, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    return put(character, out);
  }

 private:
  static unsigned char* put(std::uint64_t value, unsigned char* out) {
    for (unsigned int i = 0; i < 4; ++i) {
      out[i] = static_cast<unsigned char>(value >> 8 * (order == Order::lowFirst ? i : 3 - i));
    }
    return out + 4;
  }
};

// --- GSM 03.38 ---------------------------------------------------------------

class GsmEncoder : public Encoder {
 public:
  Encoded encode(const EncoderJob& job) override {
    const auto loop = [](const unsigned char* in, const unsigned char*, unsigned char* out) {
      return Position{in, out};
    };
    return encodeBy(loop, 2, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    const GsmSeptets septets = gsmSeptetsOf(character);
    if (septets.length == 0) return nullptr;
    return std::copy_n(septets.bytes, septets.length, out);
  }
};

}  // namespace

std::unique_ptr<Encoder> makeUtf8Encoder() { return std::make_unique<Utf8Encoder>(); }

std::unique_ptr<Encoder> makeUtf16Encoder(Order order) {
  if (order == Order::lowFirst) return std::make_unique<Utf16Encoder<Order::lowFirst>>();
  return std::make_unique<Utf16Encoder<Order::highFirst>>();
}

std::unique_ptr<Encoder> makeUtf32Encoder(Order order) {
  if (order == Order::lowFirst) return std::make_unique<Utf32Encoder<Order::lowFirst>>();
  return std::make_unique<Utf32Encoder<Order::highFirst>>();
}

std::unique_ptr<Encoder> makeGsmEncoder() { return std::make_unique<GsmEncoder>(); }

}  // namespace quorvel::text
