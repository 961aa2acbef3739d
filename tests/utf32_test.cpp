#include <gtest/gtest.h>

#include <bit>
#include <random>
#include <string>

#include "quorvel/unicode/_qvUtf.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"
#include "tests/reference/Utf8Reference.h"

namespace quorvel {
namespace {

using namespace quorvel_test;
using reference::IllFormedUtf8;
using reference::illFormedUtf8;
using test_memory::GuardedBytes;

constexpr bool hostIsBigEndian = std::endian::native == std::endian::big;

using Result = quorvel_test::Transformed;

std::string utf32(bool bigEndian, std::u32string_view units) {
  std::string bytes;
  for (const char32_t unit : units) bytes += unit32(bigEndian, unit);
  return bytes;
}

std::string hostUtf32(std::u32string_view units) { return utf32(hostIsBigEndian, units); }

std::string utf8(std::u32string_view scalars) {
  std::string bytes;
  for (const char32_t scalar : scalars) bytes += reference::encodeUtf8(scalar);
  return bytes;
}

// The bytes stand in front of memory that cannot be read, and in a buffer that
// borrows them, so that nothing is copied past the guard.
Result toUtf8(std::string_view units) {
  static GuardedBytes guarded(5u << 20);
  DataBuffer in;
  in.borrowData(guarded.place(units), sizeOf(units));
  DataBuffer out;
  const bool ok = _qvUtf::Utf32ToUtf8(in, out);
  return {ok, contentOf(out)};
}

Result rawToUtf8(std::string_view units) {
  static GuardedBytes guarded(5u << 20);
  DataBuffer out;
  const bool ok = _qvUtf::utf32ToUtf8(guarded.place(units), sizeOf(units) / 4, out);
  return {ok, contentOf(out)};
}

Result toUtf32(bool bigEndian, std::string_view text) {
  static GuardedBytes guarded(5u << 20);
  DataBuffer in;
  in.borrowData(guarded.place(text), sizeOf(text));
  DataBuffer out;
  const bool ok = _qvUtf::Utf8toUtf32(bigEndian, in, out);
  return {ok, contentOf(out)};
}

Result rawToUtf32(bool bigEndian, std::string_view text) {
  static GuardedBytes guarded(5u << 20);
  DataBuffer out;
  const bool ok = _qvUtf::utf8toUtf32(bigEndian, guarded.place(text), sizeOf(text), out);
  return {ok, contentOf(out)};
}

void expectUtf8(std::u32string_view units, bool ok, const char* expected) {
  const Result wanted{ok, byteString(expected)};
  EXPECT_EQ(toUtf8(hostUtf32(units)), wanted);
  EXPECT_EQ(rawToUtf8(hostUtf32(units)), wanted);
}

void expectUtf32(std::string_view text, const Result& wanted, bool bigEndian) {
  EXPECT_EQ(toUtf32(bigEndian, text), wanted) << hex(text);
  EXPECT_EQ(rawToUtf32(bigEndian, text), wanted) << hex(text);
}

TEST(Utf32ToUtf8, EncodesInHostOrder) {
  expectUtf8(U"", true, "");
  expectUtf8(U"A", true, "41");
  expectUtf8(U"caf\u00E9 \u20AC \U0001F600", true, "63 61 66 C3 A9 20 E2 82 AC 20 F0 9F 98 80");
}

TEST(Utf32ToUtf8, KeepsNulAndTheByteOrderMark) {
  expectUtf8(std::u32string_view(U"\uFEFFa\0b", 4), true, "EF BB BF 61 00 62");
}

TEST(Utf32ToUtf8, EncodesEveryScalarValue) {
  const std::u32string& all = reference::allScalarValues();
  const Result wanted{true, utf8(all)};
  EXPECT_TRUE(toUtf8(hostUtf32(all)) == wanted);
  EXPECT_TRUE(rawToUtf8(hostUtf32(all)) == wanted);
}

TEST(Utf32ToUtf8, ReplacesWhatIsNoScalarValueAndFinishesTheRest) {
  for (const char32_t value :
       {0xD800U, 0xD83DU, 0xDBFFU, 0xDC00U, 0xDFFFU, 0x110000U, 0x1FFFFFU, 0x200000U, 0x10000041U,
        0x7FFFFFFFU, 0x80000000U, 0xD8000000U, 0xFFFE0000U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(static_cast<unsigned int>(value));
    const std::u32string unit(1, value);
    expectUtf8(unit, false, "EF BF BD");
    expectUtf8(unit + U"ab", false, "EF BF BD 61 62");
    expectUtf8(U"a" + unit + U"b", false, "61 EF BF BD 62");
    expectUtf8(U"ab" + unit, false, "61 62 EF BF BD");
    expectUtf8(unit + unit, false, "EF BF BD EF BF BD");
  }
}

TEST(Utf32ToUtf8, DoesNotJoinAPairOfSurrogates) {
  expectUtf8(std::u32string{0xD83D, 0xDE00}, false, "EF BF BD EF BF BD");
}

TEST(Utf32ToUtf8, ReplacesEverySurrogate) {
  std::u32string surrogates;
  for (char32_t value = 0xD800; value <= 0xDFFF; ++value) surrogates += value;
  std::string expected;
  for (unsigned int i = 0; i < 0x800; ++i) expected += "\xEF\xBF\xBD";
  EXPECT_TRUE((toUtf8(hostUtf32(surrogates)) == Result{false, expected}));
}

TEST(Utf32ToUtf8, LeavesAnIncompleteLastUnitOut) {
  const std::string units = hostUtf32(U"a\u20AC");
  for (std::size_t tail = 1; tail <= 3; ++tail) {
    const std::string rest = hostUtf32(U"z").substr(0, tail);
    EXPECT_EQ(toUtf8(units + rest), (Result{false, "a\xE2\x82\xAC"})) << tail;
    EXPECT_EQ(toUtf8(rest), (Result{false, ""})) << tail;
  }
}

TEST(Utf32ToUtf8, TakesUnitsAtAnyAddress) {
  const std::string units = hostUtf32(U"a\u00E9\U0001F600");
  for (std::size_t shift = 0; shift < 4; ++shift) {
    const std::string shifted = std::string(shift, '\xFF') + units;
    DataBuffer out;
    EXPECT_TRUE(_qvUtf::utf32ToUtf8(unsignedBytes(shifted) + shift, 3, out));
    EXPECT_EQ(hex(out), "61 C3 A9 F0 9F 98 80") << shift;
  }
}

TEST(Utf32ToUtf8, AppendsToTheOutput) {
  DataBuffer in;
  fill(in, hostUtf32(U"\u00E9"));
  DataBuffer out;
  fill(out, "x");
  EXPECT_TRUE(_qvUtf::Utf32ToUtf8(in, out));
  EXPECT_TRUE(_qvUtf::utf32ToUtf8(in.getData2(), 1, out));
  EXPECT_EQ(hex(out), "78 C3 A9 C3 A9");
}

TEST(Utf32ToUtf8, TakesNothingForNoUnits) {
  DataBuffer out;
  EXPECT_TRUE(_qvUtf::utf32ToUtf8(nullptr, 0, out));
  EXPECT_EQ(out.getSize(), 0U);
}

TEST(Utf8ToUtf32, WritesEitherByteOrder) {
  const std::string text = byteString("63 C3 A9 E2 82 AC F0 9F 98 80");
  expectUtf32(text, {true, byteString("00000063 000000E9 000020AC 0001F600")}, true);
  expectUtf32(text, {true, byteString("63000000 E9000000 AC200000 00F60100")}, false);
}

TEST(Utf8ToUtf32, TakesNothingForAnEmptyText) {
  for (const bool bigEndian : {true, false}) {
    expectUtf32("", {true, ""}, bigEndian);
    DataBuffer out;
    EXPECT_TRUE(_qvUtf::utf8toUtf32(bigEndian, nullptr, 0, out));
    EXPECT_EQ(out.getSize(), 0U);
  }
}

TEST(Utf8ToUtf32, KeepsNulAndTheByteOrderMark) {
  expectUtf32(byteString("EF BB BF 61 00 62"),
              {true, byteString("0000FEFF 00000061 00000000 00000062")}, true);
}

TEST(Utf8ToUtf32, DecodesEveryScalarValueInBothOrders) {
  const std::u32string& all = reference::allScalarValues();
  const std::string text = utf8(all);
  for (const bool bigEndian : {true, false}) {
    const Result wanted{true, utf32(bigEndian, all)};
    EXPECT_TRUE(toUtf32(bigEndian, text) == wanted);
    EXPECT_TRUE(rawToUtf32(bigEndian, text) == wanted);
  }
}

TEST(Utf8ToUtf32, RoundTripsEveryScalarValueInHostOrder) {
  const std::string units = hostUtf32(reference::allScalarValues());
  EXPECT_TRUE((toUtf32(hostIsBigEndian, toUtf8(units).bytes) == Result{true, units}));
}

TEST(Utf8ToUtf32, ReplacesEachIllFormedSubpart) {
  const struct {
    const char* text;
    const char* units;
  } cases[] = {
      {"80", "0000FFFD"},
      {"C0 AF", "0000FFFD 0000FFFD"},
      {"C3", "0000FFFD"},
      {"C3 41", "0000FFFD 00000041"},
      {"E0 80 AF", "0000FFFD 0000FFFD 0000FFFD"},
      {"E2 82", "0000FFFD"},
      {"E2 82 41", "0000FFFD 00000041"},
      {"E2 41 82", "0000FFFD 00000041 0000FFFD"},
      {"ED A0 80", "0000FFFD 0000FFFD 0000FFFD"},
      {"F0 9F 98", "0000FFFD"},
      {"F0 9F 98 C3 A9", "0000FFFD 000000E9"},
      {"F4 90 80 80", "0000FFFD 0000FFFD 0000FFFD 0000FFFD"},
      {"61 F1 80 80 E1 80 C2 62 80 63 80 BF 64",
       "00000061 0000FFFD 0000FFFD 0000FFFD 00000062 0000FFFD 00000063 0000FFFD 0000FFFD 00000064"},
      {"FF FE 41", "0000FFFD 0000FFFD 00000041"},
  };
  for (const auto& test : cases)
    expectUtf32(byteString(test.text), {false, byteString(test.units)}, true);
}

TEST(Utf8ToUtf32, ReplacesEachClassOfErrorBetweenAnyTwoCharacters) {
  const std::u32string text = U"a\u00E9\u20AC\U0001F600z";
  for (const IllFormedUtf8& example : illFormedUtf8)
    for (std::size_t at = 0; at <= text.size(); ++at) {
      SCOPED_TRACE(std::string(example.name) + " before character " + std::to_string(at));
      const std::u32string before = text.substr(0, at);
      const std::u32string after = text.substr(at);
      const std::string bytes = utf8(before) + byteString(example.bytes) + utf8(after);
      const std::u32string units = before + std::u32string(example.subparts, U'\uFFFD') + after;
      for (const bool bigEndian : {true, false})
        expectUtf32(bytes, {false, utf32(bigEndian, units)}, bigEndian);
    }
}

void expectAgreement(std::string_view bytes) {
  const reference::Utf8Text text = reference::decodeUtf8(bytes);
  for (const bool bigEndian : {true, false}) {
    const Result wanted{text.wellFormed, utf32(bigEndian, text.codePoints)};
    ASSERT_EQ(toUtf32(bigEndian, bytes), wanted) << hex(bytes);
  }
}

TEST(Utf8ToUtf32, ReplacesEachClassOfErrorAtEveryByteOfAText) {
  const std::string text = utf8(U"a\u00E9\u20AC\U0001F600z");
  for (const IllFormedUtf8& example : illFormedUtf8)
    for (std::size_t at = 0; at <= text.size(); ++at)
      expectAgreement(std::string(text).insert(at, byteString(example.bytes)));
}

TEST(Utf8ToUtf32, AgreesWithTheTableOnEveryTextCutOff) {
  const std::string text = utf8(U"\u07FF\u0800\uD7FF\uFFFD\U00010000\U0010FFFF");
  for (std::size_t from = 0; from <= text.size(); ++from)
    for (std::size_t to = from; to <= text.size(); ++to)
      expectAgreement(std::string_view(text).substr(from, to - from));
}

TEST(Utf8ToUtf32, AgreesWithTheTableOnEveryPairOfBytes) {
  std::string bytes;
  for (unsigned int first = 0; first <= 0xFF; ++first)
    for (unsigned int second = 0; second <= 0xFF; ++second)
      for (const unsigned int byte : {first, second, unsigned{'x'}})
        bytes += static_cast<char>(byte);
  const reference::Utf8Text text = reference::decodeUtf8(bytes);
  EXPECT_TRUE((toUtf32(true, bytes) == Result{false, utf32(true, text.codePoints)}));
}

TEST(Utf8ToUtf32, AgreesWithTheTableOnRandomTexts) {
  constexpr unsigned char alphabet[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0,
                                        0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0,
                                        0xF1, 0xF3, 0xF4, 0xF5, 0xF7, 0xF8, 0xFE, 0xFF};
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    std::string bytes(random() % 40, '\0');
    for (char& byte : bytes) byte = static_cast<char>(alphabet[random() % std::size(alphabet)]);
    expectAgreement(bytes);
  }
}

// Long plain stretches take other paths than short ones; an error anywhere in
// one must still be met.
TEST(Utf8ToUtf32, MeetsAnErrorAnywhereInALongPlainText) {
  for (std::size_t length = 0; length <= 70; ++length)
    for (std::size_t at = 0; at < length; at += 3) {
      std::string bytes(length, 'a');
      bytes[at] = '\x80';
      expectAgreement(bytes);
      bytes[at] = '\xE2';
      expectAgreement(bytes);
    }
}

// Long texts are worked on in pieces; no sequence may be torn between two.
TEST(Utf8ToUtf32, AgreesWithTheTableOnLongRandomTexts) {
  std::mt19937 random(6);
  const std::string pieces[] = {"a",    "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                "\x80", "\xE2\x82"};
  for (const unsigned int kinds : {1U, 2U, 3U, 4U, 6U}) {
    std::string bytes;
    while (bytes.size() < 60000) bytes += pieces[random() % kinds];
    const reference::Utf8Text text = reference::decodeUtf8(bytes);
    const Result wanted{text.wellFormed, utf32(true, text.codePoints)};
    EXPECT_TRUE(toUtf32(true, bytes) == wanted) << kinds;
    if (!text.wellFormed) continue;
    EXPECT_TRUE((toUtf8(hostUtf32(text.codePoints)) == Result{true, bytes})) << kinds;
  }
}

TEST(Utf8ToUtf32, AppendsToTheOutput) {
  DataBuffer in;
  fill(in, "a");
  DataBuffer out;
  fill(out, "x");
  EXPECT_TRUE(_qvUtf::Utf8toUtf32(true, in, out));
  EXPECT_TRUE(_qvUtf::utf8toUtf32(false, in.getData2(), 1, out));
  EXPECT_EQ(hex(out), "78 00 00 00 61 61 00 00 00");
}

// The results would take 2^32 bytes and more: room computed in 32 bits would
// come out tiny.
TEST(Utf32Sizes, DoNotWrapForGigabytesOfInput) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const test_memory::RepeatedBytes ascii("aaaa", 0x40000001U);
  const test_memory::RepeatedBytes units(hostUtf32(U"\U0001F600"),
                                         static_cast<std::size_t>(0x100000004U));
  DataBuffer in;
  in.borrowData(units.data(), 0xFFFFFFFFU);
  const test_memory::MemoryLimit limit(16u << 20);
  DataBuffer out;
  EXPECT_FALSE(_qvUtf::utf8toUtf32(true, ascii.data(), 0x40000001U, out));
  EXPECT_FALSE(_qvUtf::utf32ToUtf8(units.data(), 0x40000001U, out));
  EXPECT_FALSE(_qvUtf::Utf32ToUtf8(in, out));
  in.borrowData(ascii.data(), 0x40000001U);
  EXPECT_FALSE(_qvUtf::Utf8toUtf32(false, in, out));
}

}  // namespace
}  // namespace quorvel
