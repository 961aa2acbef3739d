// UTF-16LE to UTF-8, UTF-16, UTF-32 and GSM 03.38.

#include "quorvel/text/UnicodeEncoders.hpp"

#include <cstdint>
#include <cstring>

#include "quorvel/kernel/Target.hpp"
#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/unicode/ByteOrder.hpp"
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
    const kernel::Loops& loops = kernel::loops();
    return encodeBy(order == Order::lowFirst ? loops.utf16ToUtf16 : loops.utf16ToUtf16Be, 2, *this,
                    job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    const unsigned int units = utf16Units(character);
    out = put(units & 0xFFFF, out);
    return character < 0x10000 ? out : put(units >> 16, out);
  }

 private:
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
      // With their number known the compiler makes vector code of it.
      constexpr std::ptrdiff_t atOnce = 16;
      while (end - in >= 2 * atOnce) {
        char16_t units[atOnce];
        std::memcpy(units, in, sizeof units);
        bool haveSurrogate = false;
        std::uint32_t values[atOnce];
        for (std::ptrdiff_t i = 0; i < atOnce; ++i) {
          haveSurrogate |= isSurrogate(units[i]);
          values[i] = order == Order::lowFirst ? units[i] : reversed(std::uint32_t{units[i]});
        }
        if (haveSurrogate) break;
        std::memcpy(out, values, sizeof values);
        in += sizeof units;
        out += sizeof values;
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
