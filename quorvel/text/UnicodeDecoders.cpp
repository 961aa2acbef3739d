// UTF-8, UTF-16, UTF-32 and GSM 03.38 to UTF-16LE.

#include "quorvel/text/UnicodeDecoders.hpp"

#include <cstdint>
#include <cstring>

#include "quorvel/kernel/Target.hpp"
#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/unicode/ByteOrder.hpp"
#include "quorvel/unicode/GsmText.hpp"

namespace quorvel::text {

namespace {

// --- UTF-8 -------------------------------------------------------------------

// Ill-formed text is taken apart by maximal subparts (Unicode, section 3.9).
Stepped stepUtf8(const unsigned char* in, const unsigned char* end, bool isLast) {
  const auto available = static_cast<std::size_t>(end - in);
  const Utf8Sequence sequence = decodeUtf8(in, available);
  if (sequence.isWellFormed) return characterOf(sequence.codePoint, sequence.length);
  const bool isLead = *in >= 0xC2 && *in <= 0xF4;
  if (isLead && sequence.length == available) return cutOffAfter(available, isLast);
  return malformedFor(sequence.length);
}

class Utf8Decoder : public Decoder {
 public:
  Decoded decode(const DecoderJob& job) override {
    const auto loop = [](const unsigned char* in, const unsigned char* stop, const unsigned char*,
                         unsigned char* out) { return kernel::loops().utf8ToUtf16(in, stop, out); };
    return decodeBy(loop, stepUtf8, job);
  }
};

// --- UTF-16 ------------------------------------------------------------------

template <Order order>
unsigned int unitAt(const unsigned char* in) {
  const unsigned int first = in[0];
  const unsigned int second = in[1];
  return order == Order::lowFirst ? first | second << 8 : second | first << 8;
}

template <Order order>
Stepped stepUtf16(const unsigned char* in, const unsigned char* end, bool isLast) {
  const auto available = static_cast<std::size_t>(end - in);
  if (available < 2) return cutOffAfter(available, isLast);
  const unsigned int first = unitAt<order>(in);
  if (!isSurrogate(first)) return characterOf(first, 2);
  if (isLowSurrogate(first)) return malformedFor(2);
  if (available < 4) return isLast ? malformedFor(2) : cutOffAfter(available, isLast);
  const unsigned int second = unitAt<order>(in + 2);
  if (!isLowSurrogate(second)) return malformedFor(2);
  return characterOf(0x10000 + ((first & 0x3FFU) << 10 | (second & 0x3FFU)), 4);
}

template <Order order>
class Utf16Decoder : public Decoder {
 public:
  Decoded decode(const DecoderJob& job) override {
    const auto loop = [](const unsigned char* in, const unsigned char* stop, const unsigned char*,
                         unsigned char* out) {
      if constexpr (order == Order::lowFirst) return kernel::loops().utf16ToUtf16(in, stop, out);
      return kernel::loops().utf16BeToUtf16(in, stop, out);
    };
    return decodeBy(loop, stepUtf16<order>, job);
  }
};

// --- UTF-32 ------------------------------------------------------------------

constexpr unsigned int bytesPerValue = 4;

template <Order order>
char32_t valueAt(const unsigned char* in) {
  char32_t value = 0;
  for (unsigned int i = 0; i < bytesPerValue; ++i) {
    value = value << 8 | in[order == Order::lowFirst ? bytesPerValue - 1 - i : i];
  }
  return value;
}

template <Order order>
Stepped stepUtf32(const unsigned char* in, const unsigned char* end, bool isLast) {
  const auto available = static_cast<std::size_t>(end - in);
  if (available < bytesPerValue) return cutOffAfter(available, isLast);
  const char32_t value = valueAt<order>(in);
  return isScalarValue(value) ? characterOf(value, bytesPerValue) : malformedFor(bytesPerValue);
}

// Values of one unit each, sixteen at a time: with their number known the compiler makes
// vector code of it.
template <Order order>
Position narrowValues(const unsigned char* in, const unsigned char* stop, unsigned char* out) {
  constexpr std::ptrdiff_t atOnce = 16;
  while (stop - in >= atOnce * std::ptrdiff_t{bytesPerValue}) {
    std::uint32_t values[atOnce];
    std::memcpy(values, in, sizeof values);
    std::uint32_t others = 0;
    for (std::uint32_t& value : values) {
      if (order == Order::highFirst) value = reversed(value);
      const std::uint32_t isSurrogateValue = (value & 0xF800) == 0xD800 ? 1 : 0;
      others |= value >> 16 | isSurrogateValue;
    }
    if (others != 0) break;
    char16_t units[atOnce];
    for (std::ptrdiff_t i = 0; i < atOnce; ++i) units[i] = static_cast<char16_t>(values[i]);
    std::memcpy(out, units, sizeof units);
    in += sizeof values;
    out += sizeof units;
  }
  return {in, out};
}

template <Order order>
class Utf32Decoder : public Decoder {
 public:
  Decoded decode(const DecoderJob& job) override {
    const auto loop = [](const unsigned char* in, const unsigned char* stop, const unsigned char*,
                         unsigned char* out) { return narrowValues<order>(in, stop, out); };
    return decodeBy(loop, stepUtf32<order>, job);
  }
};

// --- GSM 03.38 ---------------------------------------------------------------

Stepped stepGsm(const unsigned char* in, const unsigned char* end, bool isLast) {
  if (isLast || end - in >= 2 || *in != gsmEscape) {
    const GsmCharacter character = gsmCharacterAt(in, static_cast<std::size_t>(end - in));
    return character.unit ? characterOf(*character.unit, character.length) : malformedFor(1);
  }
  return cutOffAfter(1, isLast);
}

class GsmDecoder : public Decoder {
 public:
  Decoded decode(const DecoderJob& job) override {
    const auto loop = [](const unsigned char* in, const unsigned char* stop, const unsigned char*,
                         unsigned char* out) {
      // The second half of an escape may stand behind `stop`, where a step finds it.
      for (; in < stop && *in != gsmEscape; ++in) {
        const GsmCharacter character = gsmCharacterAt(in, 1);
        if (!character.unit) break;
        out = putUnit(*character.unit, out);
      }
      return Position{in, out};
    };
    return decodeBy(loop, stepGsm, job);
  }
};

}  // namespace

std::unique_ptr<Decoder> makeUtf8Decoder() { return std::make_unique<Utf8Decoder>(); }

std::unique_ptr<Decoder> makeUtf16Decoder(Order order) {
  if (order == Order::lowFirst) return std::make_unique<Utf16Decoder<Order::lowFirst>>();
  return std::make_unique<Utf16Decoder<Order::highFirst>>();
}

std::unique_ptr<Decoder> makeUtf32Decoder(Order order) {
  if (order == Order::lowFirst) return std::make_unique<Utf32Decoder<Order::lowFirst>>();
  return std::make_unique<Utf32Decoder<Order::highFirst>>();
}

std::unique_ptr<Decoder> makeGsmDecoder() { return std::make_unique<GsmDecoder>(); }

}  // namespace quorvel::text
