#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>

#include "quorvel/unicode/_qvUtf.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"
#include "tests/reference/Utf8Reference.h"

namespace quorvel {
namespace {

using quorvel_test::byteString;
using quorvel_test::hex;
using reference::encodeUtf8;
using reference::Utf8Step;
using reference::utf8Step;
using test_memory::GuardedBytes;

struct Decoded {
  unsigned int units;
  unsigned int consumed;
  bool operator==(const Decoded&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Decoded& decoded) {
  return stream << std::hex << decoded.units << ", consumed " << decoded.consumed;
}

Decoded decodeAt(const unsigned char* p) {
  unsigned int consumed = 0;
  const unsigned int units = _qvUtf::utf16FromUtf8(p, consumed);
  return {units, consumed};
}

Decoded expectedFrom(const Utf8Step& step) {
  const auto value = static_cast<unsigned int>(step.codePoint);
  if (value < 0x10000) return {value, step.consumed};
  const unsigned int first = 0xD800 + (value - 0x10000) / 0x400;
  const unsigned int second = 0xDC00 + (value - 0x10000) % 0x400;
  return {second << 16 | first, step.consumed};
}

// Decodes the front of `bytes` with only those in reach that settle it, so that
// one look too far ends the test run.
bool agreesWithReference(GuardedBytes& guarded, std::string_view bytes) {
  const Utf8Step step = utf8Step(bytes);
  const unsigned char* p = guarded.place(bytes.substr(0, step.looked));
  return decodeAt(p) == expectedFrom(step);
}

struct Case {
  const char* bytes;
  unsigned int units;
  unsigned int consumed;
};

void expectDecoded(const Case& test) {
  GuardedBytes guarded;
  EXPECT_EQ(decodeAt(guarded.place(byteString(test.bytes))), (Decoded{test.units, test.consumed}))
      << test.bytes;
}

// A byte that can stand at an edge of one of the ranges of a sequence.
constexpr unsigned char edges[] = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xFF};

std::string asString(std::initializer_list<unsigned int> bytes) {
  std::string text;
  for (const unsigned int byte : bytes) text += static_cast<char>(byte);
  return text;
}

TEST(Utf8Decoding, GivesOneUnitForACharacterOfTheBasicPlane) {
  const Case cases[] = {
      {"00", 0x0000, 1},       {"41", 0x0041, 1},       {"7F", 0x007F, 1},
      {"C2 80", 0x0080, 2},    {"C3 A9", 0x00E9, 2},    {"DF BF", 0x07FF, 2},
      {"E0 A0 80", 0x0800, 3}, {"E2 82 AC", 0x20AC, 3}, {"ED 9F BF", 0xD7FF, 3},
      {"EE 80 80", 0xE000, 3}, {"EF BB BF", 0xFEFF, 3}, {"EF BF BF", 0xFFFF, 3},
  };
  for (const Case& test : cases) expectDecoded(test);
}

TEST(Utf8Decoding, GivesAPairWithTheFirstUnitLow) {
  const Case cases[] = {
      {"F0 90 80 80", 0xDC00D800, 4},
      {"F0 9F 98 80", 0xDE00D83D, 4},
      {"F3 BF BF BF", 0xDFFFDBBF, 4},
      {"F4 8F BF BF", 0xDFFFDBFF, 4},
  };
  for (const Case& test : cases) expectDecoded(test);
}

TEST(Utf8Decoding, GivesZeroAndOneByteForWhatBeginsNothing) {
  for (unsigned int lead = 0x80; lead <= 0xFF; ++lead)
    if (lead < 0xC2 || lead > 0xF4) expectDecoded({hex(asString({lead})).c_str(), 0, 1});
}

TEST(Utf8Decoding, GivesTheLengthOfTheMaximalSubpart) {
  const Case cases[] = {
      {"C2 41", 0, 1},       {"DF 00", 0, 1},       {"DF C0", 0, 1},    {"E0 80", 0, 1},
      {"E0 9F", 0, 1},       {"E0 A0 41", 0, 2},    {"E0 BF C0", 0, 2}, {"E0 C2", 0, 1},
      {"E1 7F", 0, 1},       {"E1 80 7F", 0, 2},    {"EC BF E2", 0, 2}, {"ED A0", 0, 1},
      {"ED BF", 0, 1},       {"ED 80 00", 0, 2},    {"ED 9F C0", 0, 2}, {"EF BF 41", 0, 2},
      {"F0 8F", 0, 1},       {"F0 80", 0, 1},       {"F0 90 41", 0, 2}, {"F0 BF 80 41", 0, 3},
      {"F0 90 80 C0", 0, 3}, {"F1 7F", 0, 1},       {"F1 80 7F", 0, 2}, {"F3 BF BF 00", 0, 3},
      {"F4 90", 0, 1},       {"F4 BF", 0, 1},       {"F4 80 C0", 0, 2}, {"F4 8F BF 7F", 0, 3},
      {"F4 41", 0, 1},       {"F0 9F 98 F0", 0, 3},
  };
  for (const Case& test : cases) expectDecoded(test);
}

TEST(Utf8Decoding, DecodesEveryScalarValueAndReadsNoFurther) {
  GuardedBytes guarded;
  for (const char32_t value : reference::allScalarValues()) {
    const std::string bytes = encodeUtf8(value);
    ASSERT_TRUE(agreesWithReference(guarded, bytes)) << hex(bytes);
  }
}

TEST(Utf8Decoding, AgreesWithTheTableOnEveryPairOfBytes) {
  GuardedBytes guarded;
  for (unsigned int first = 0; first <= 0xFF; ++first)
    for (unsigned int second = 0; second <= 0xFF; ++second) {
      const std::string bytes = asString({first, second, 'x'});
      ASSERT_TRUE(agreesWithReference(guarded, bytes)) << hex(bytes);
    }
}

TEST(Utf8Decoding, AgreesWithTheTableAtTheEdgesOfLongerSequences) {
  GuardedBytes guarded;
  for (unsigned int lead = 0xC0; lead <= 0xFF; ++lead)
    for (unsigned int second = 0; second <= 0xFF; ++second)
      for (const unsigned int third : edges)
        for (const unsigned int fourth : edges) {
          const std::string bytes = asString({lead, second, third, fourth});
          ASSERT_TRUE(agreesWithReference(guarded, bytes)) << hex(bytes);
        }
}

TEST(Utf8Decoding, IsBoundedByAByteThatIsNoContinuationByte) {
  GuardedBytes guarded;
  for (const reference::IllFormedUtf8& example : reference::illFormedUtf8)
    for (const char* end : {"00", "41", "C3", "FF"}) {
      const std::string bytes = byteString(example.bytes) + byteString(end);
      EXPECT_EQ(decodeAt(guarded.place(bytes)), expectedFrom(utf8Step(bytes))) << hex(bytes);
    }
}

TEST(Utf8Length, GoesByTheBitPatternOfTheLeadByte) {
  for (unsigned int lead = 0; lead <= 0xFF; ++lead) {
    const int announced = lead >= 0xC0 && lead <= 0xDF   ? 2
                          : lead >= 0xE0 && lead <= 0xEF ? 3
                          : lead >= 0xF0 && lead <= 0xF7 ? 4
                                                         : 1;
    // Only the lead byte may be looked at.
    GuardedBytes guarded;
    const unsigned char* p = guarded.place(asString({lead}));
    for (const int n : {4, 5, 1000, 0x7FFFFFFF})
      EXPECT_EQ(_qvUtf::NumUtf8Bytes(p, n), announced) << lead << " of " << n;
    for (const int n : {1, 2, 3})
      EXPECT_EQ(_qvUtf::NumUtf8Bytes(p, n), std::min(n, announced)) << lead << " of " << n;
  }
}

TEST(Utf8Length, IsZeroWhenNothingIsLeft) {
  GuardedBytes guarded;
  for (const int n : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(_qvUtf::NumUtf8Bytes(guarded.place(""), n), 0) << n;
    EXPECT_EQ(_qvUtf::NumUtf8Bytes(nullptr, n), 0) << n;
  }
}

struct Encoded {
  bool ok;
  std::string bytes;
};

Encoded encode(unsigned int codePoint) {
  char out[4];
  unsigned int n = 99;
  const bool ok = _qvUtf::oneUtf32ToUtf8(codePoint, out, n);
  return {ok, n <= 4 ? std::string(out, n) : "a length of " + std::to_string(n)};
}

TEST(Utf8Encoding, WritesTheShortestForm) {
  const struct {
    unsigned int codePoint;
    const char* bytes;
  } cases[] = {
      {0x0000, "00"},           {0x0041, "41"},           {0x007F, "7F"},
      {0x0080, "C2 80"},        {0x00E9, "C3 A9"},        {0x07FF, "DF BF"},
      {0x0800, "E0 A0 80"},     {0x20AC, "E2 82 AC"},     {0xD7FF, "ED 9F BF"},
      {0xE000, "EE 80 80"},     {0xFFFD, "EF BF BD"},     {0xFFFF, "EF BF BF"},
      {0x10000, "F0 90 80 80"}, {0x1F600, "F0 9F 98 80"}, {0x10FFFF, "F4 8F BF BF"},
  };
  for (const auto& test : cases) {
    const Encoded encoded = encode(test.codePoint);
    EXPECT_TRUE(encoded.ok) << test.bytes;
    EXPECT_EQ(hex(encoded.bytes), test.bytes);
  }
}

TEST(Utf8Encoding, WritesEveryScalarValue) {
  for (const char32_t value : reference::allScalarValues()) {
    const Encoded encoded = encode(value);
    ASSERT_TRUE(encoded.ok && encoded.bytes == encodeUtf8(value))
        << hex(encodeUtf8(value)) << " became " << hex(encoded.bytes);
  }
}

void expectRefused(unsigned int value) {
  char out[4] = {'a', 'b', 'c', 'd'};
  unsigned int n = 99;
  EXPECT_FALSE(_qvUtf::oneUtf32ToUtf8(value, out, n)) << std::hex << value;
  EXPECT_EQ(n, 0U) << std::hex << value;
  EXPECT_EQ(std::string(out, 4), "abcd") << std::hex << value;
}

TEST(Utf8Encoding, RefusesSurrogatesAndWritesNothing) {
  for (unsigned int value = 0xD800; value <= 0xDFFF; ++value) expectRefused(value);
}

TEST(Utf8Encoding, RefusesValuesAboveTheLastCodePoint) {
  for (const unsigned int value : {0x110000U, 0x110001U, 0x1FFFFFU, 0x200000U, 0x3FFFFFFU,
                                   0x4000000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
    expectRefused(value);
}

TEST(Utf8Encoding, OfFourBytesIsAllowedFromTheStart) { EXPECT_TRUE(g_allow_4byte_utf8); }

}  // namespace
}  // namespace quorvel
