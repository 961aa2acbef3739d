#include <gtest/gtest.h>

#include <random>
#include <string>

#include "quorvel/unicode/_qvUtf.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"
#include "tests/reference/Utf7Reference.h"

namespace quorvel {
namespace {

using quorvel_test::contentOf;
using quorvel_test::fill;
using quorvel_test::hostUnits;
using quorvel_test::sizeOf;

using Result = quorvel_test::Transformed;

using Transform = bool (*)(DataBuffer&, DataBuffer&);

// The input is borrowed from in front of memory that cannot be read.
Result transformed(Transform transform, std::string_view in) {
  static test_memory::GuardedBytes guarded(1u << 20);
  DataBuffer source;
  source.borrowData(guarded.place(in), sizeOf(in));
  DataBuffer out;
  const bool ok = transform(source, out);
  EXPECT_TRUE(contentOf(source) == in);
  return {ok, contentOf(out)};
}

Result encode(std::u16string_view units) {
  return transformed(_qvUtf::Utf16XEToUtf7, hostUnits(units));
}
Result decode(std::string_view text) { return transformed(_qvUtf::Utf7ToUtf16_xe, text); }

void expectEncoded(const std::u16string& units, const std::string& text) {
  EXPECT_EQ(encode(units), (Result{true, text}));
}

void expectDecoded(std::string_view text, const std::u16string& units, bool ok = true) {
  EXPECT_EQ(decode(text), (Result{ok, hostUnits(units)})) << text;
}

void expectBothWays(const std::u16string& units, const std::string& text) {
  expectEncoded(units, text);
  expectDecoded(text, units);
}

TEST(Utf7, ServesTheExamplesOfTheStandard) {
  expectBothWays(u"A\u2262\u0391.", "A+ImIDkQ.");
  expectBothWays(u"\u65E5\u672C\u8A9E", "+ZeVnLIqe");
  expectBothWays(u"Item 3 is \u00A31.", "Item 3 is +AKM-1.");
  // The exclamation mark is of the optional set: read, but not written, as it stands.
  expectDecoded("Hi Mom -+Jjo--!", u"Hi Mom -\u263A-!");
  expectEncoded(u"Hi Mom -\u263A-!", "Hi Mom -+Jjo--+ACE");
  expectDecoded("+ZeVnLIqe-", u"\u65E5\u672C\u8A9E");
}

TEST(Utf7, IsNothingForNothing) { expectBothWays(u"", ""); }

TEST(Utf7, AppendsToTheOutput) {
  DataBuffer in;
  fill(in, hostUnits(u"\u00A3"));
  DataBuffer text;
  fill(text, "x");
  EXPECT_TRUE(_qvUtf::Utf16XEToUtf7(in, text));
  EXPECT_EQ(contentOf(text), "x+AKM");
  DataBuffer out;
  fill(out, "y");
  EXPECT_TRUE(_qvUtf::Utf7ToUtf16_xe(text, out));
  EXPECT_TRUE(contentOf(out) == "y" + hostUnits(u"x\u00A3"));
}

TEST(Utf7Encoding, WritesTheDirectSetAndWhiteSpaceAsTheyStand) {
  expectBothWays(u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789'(),-./:?",
                 "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789'(),-./:?");
  expectBothWays(u"a b\tc\rd\ne", "a b\tc\rd\ne");
}

TEST(Utf7Encoding, WritesTheOptionalSetInBase64) {
  const struct {
    char16_t unit;
    const char* text;
  } cases[] = {
      {'!', "+ACE"},  {'"', "+ACI"},  {'#', "+ACM"},  {'$', "+ACQ"},  {'%', "+ACU"},
      {'&', "+ACY"},  {'*', "+ACo"},  {';', "+ADs"},  {'<', "+ADw"},  {'=', "+AD0"},
      {'>', "+AD4"},  {'@', "+AEA"},  {'[', "+AFs"},  {']', "+AF0"},  {'^', "+AF4"},
      {'_', "+AF8"},  {'`', "+AGA"},  {'{', "+AHs"},  {'|', "+AHw"},  {'}', "+AH0"},
      {'~', "+AH4"},  {'\\', "+AFw"}, {0x7F, "+AH8"}, {0x00, "+AAA"}, {0x01, "+AAE"},
      {0x0B, "+AAs"}, {0x0C, "+AAw"}, {0x1B, "+ABs"}, {0x1F, "+AB8"}, {0x80, "+AIA"},
      {0xA0, "+AKA"},
  };
  for (const auto& test : cases) expectBothWays(std::u16string(1, test.unit), test.text);
}

TEST(Utf7Encoding, WritesAPlusOutsideARunAsPlusMinus) {
  expectBothWays(u"+", "+-");
  expectBothWays(u"1+1=2", "1+-1+AD0-2");
  expectBothWays(u"++", "+-+-");
  expectBothWays(u"+-", "+--");
  expectBothWays(u"+\u00A3", "+-+AKM");
  expectBothWays(u"a+b", "a+-b");
}

TEST(Utf7Encoding, WritesAPlusInsideARunInBase64) {
  expectBothWays(u"\u00A3+", "+AKMAKw");
  expectBothWays(u"\u00A3+a", "+AKMAKw-a");
  expectBothWays(u"\u00A3+\u00A3", "+AKMAKwCj");
  expectBothWays(u"!+.", "+ACEAKw.");
}

TEST(Utf7Encoding, ClosesARunOnlyWhereTheNextCharacterNeedsIt) {
  for (const char next : std::string("AZaz09/-"))
    expectBothWays({u'\u00A3', static_cast<char16_t>(next)}, std::string("+AKM-") + next);
  for (const char next : std::string("'(),.:? \t\r\n"))
    expectBothWays({u'\u00A3', static_cast<char16_t>(next)}, std::string("+AKM") + next);
  expectBothWays(u"\u00A3", "+AKM");
}

TEST(Utf7Encoding, OpensANewRunBehindADirectCharacter) {
  expectBothWays(u"\u00A3 \u00A3", "+AKM +AKM");
  expectBothWays(u"\u00A3a\u00A3", "+AKM-a+AKM");
}

TEST(Utf7Encoding, FillsRunsOfEveryLength) {
  expectBothWays(u"\uFFFF", "+//8");
  expectBothWays(u"\uFFFF\uFFFF", "+/////w");
  expectBothWays(u"\uFFFF\uFFFF\uFFFF", "+////////");
  expectBothWays(u"\uFFFF\uFFFF\uFFFF\uFFFF", "+//////////8");
  expectBothWays(std::u16string(3, u'\0'), "+AAAAAAAA");
}

TEST(Utf7Encoding, WritesUnitsAsTheyStand) {
  expectBothWays(u"\U0001F600", "+2D3eAA");
  expectBothWays({0xD83D}, "+2D0");
  expectBothWays({0xDE00}, "+3gA");
  expectBothWays({0xDE00, 0xD83D}, "+3gDYPQ");
  expectBothWays({0xD83D, u'a', 0xDE00}, "+2D0-a+3gA");
  expectBothWays(u"\uFEFF\uFFFE", "+/v///g");
}

TEST(Utf7Encoding, LeavesAnIncompleteLastUnitOut) {
  for (const char last : {'\0', 'a', '\xFF'}) {
    const std::string tail(1, last);
    EXPECT_EQ(transformed(_qvUtf::Utf16XEToUtf7, tail), (Result{false, ""}));
    EXPECT_EQ(transformed(_qvUtf::Utf16XEToUtf7, hostUnits(u"ab") + tail), (Result{false, "ab"}));
    EXPECT_EQ(transformed(_qvUtf::Utf16XEToUtf7, hostUnits(u"\u00A3") + tail),
              (Result{false, "+AKM"}));
  }
}

TEST(Utf7, RoundTripsEveryUnitByItself) {
  for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
    const std::u16string text(1, static_cast<char16_t>(unit));
    const Result encoded = encode(text);
    ASSERT_EQ(encoded, (Result{true, reference::encodeUtf7(text)})) << unit;
    ASSERT_EQ(decode(encoded.bytes), (Result{true, hostUnits(text)})) << unit;
  }
}

TEST(Utf7, RoundTripsAllUnitsInOneText) {
  std::u16string text;
  for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) text += static_cast<char16_t>(unit);
  const Result encoded = encode(text);
  EXPECT_TRUE((encoded == Result{true, reference::encodeUtf7(text)}));
  EXPECT_TRUE((decode(encoded.bytes) == Result{true, hostUnits(text)}));
}

TEST(Utf7, RoundTripsEveryMixOfFourKindsOfUnits) {
  const char16_t units[] = {u'a', u'-', u'.', u'+', u'!', u'\u00A3', 0xD83D, 0};
  for (const char16_t first : units)
    for (const char16_t second : units)
      for (const char16_t third : units)
        for (const char16_t fourth : units) {
          const std::u16string text = {first, second, third, fourth};
          const Result encoded = encode(text);
          ASSERT_EQ(encoded, (Result{true, reference::encodeUtf7(text)}));
          ASSERT_EQ(decode(encoded.bytes), (Result{true, hostUnits(text)}));
        }
}

TEST(Utf7Decoding, TakesAnyAsciiCharacterDirectly) {
  for (unsigned int value = 0; value <= 0x7F; ++value) {
    if (value == '+') continue;
    const char character = static_cast<char>(value);
    expectDecoded({&character, 1}, std::u16string(1, static_cast<char16_t>(value)));
  }
  expectDecoded("~\\!\"#$%&*;<=>@[]^_`{|}", u"~\\!\"#$%&*;<=>@[]^_`{|}");
}

TEST(Utf7Decoding, EndsARunAtAnyCharacterThatIsNoDigit) {
  for (unsigned int value = 0; value <= 0x7F; ++value) {
    const char character = static_cast<char>(value);
    if (character == '-' || reference::base64Digits.find(character) != std::string_view::npos)
      continue;
    expectDecoded(std::string("+AKM") + character + "a",
                  std::u16string{u'\u00A3', static_cast<char16_t>(value), u'a'});
  }
}

TEST(Utf7Decoding, TakesInTheMinusThatEndsARun) {
  expectDecoded("+AKM-", u"\u00A3");
  expectDecoded("+AKM--", u"\u00A3-");
  expectDecoded("+AKM-a", u"\u00A3a");
  expectDecoded("-a-", u"-a-");
  expectDecoded("+-", u"+");
  expectDecoded("+--", u"+-");
  expectDecoded("+-+-", u"++");
  expectDecoded("+AKM-+AKM-", u"\u00A3\u00A3");
}

TEST(Utf7Decoding, ReadsAPlusInARunAsADigit) { expectDecoded("+++8-", u"\uFBEF"); }

TEST(Utf7Decoding, ReadsDirectCharactersWrittenInBase64) {
  expectDecoded("+AGEAYg-", u"ab");
  expectDecoded("+AAoALQArAC8", u"\n-+/");
}

TEST(Utf7Decoding, JoinsASurrogatePairAcrossTheRun) {
  expectDecoded("+2D3eAA-", u"\U0001F600");
  expectDecoded("+AKPYPd4A", u"\u00A3\U0001F600");
  expectDecoded("+2D0-+3gA-", u"\U0001F600");
}

TEST(Utf7Decoding, KeepsUnpairedSurrogates) {
  expectDecoded("+2D0-a", std::u16string{0xD83D, u'a'});
  expectDecoded("+3gA-a", std::u16string{0xDE00, u'a'});
}

TEST(Utf7Decoding, RefusesAStraySextetAndKeepsTheRest) {
  expectDecoded("+A", u"", false);
  expectDecoded("+A-b", u"b", false);
  expectDecoded("+AA-b", u"b", false);
  expectDecoded("+AA b", u" b", false);
  expectDecoded("a+AKMA-b", u"a\u00A3b", false);
  expectDecoded("a+AKMAA.b", u"a\u00A3.b", false);
  expectDecoded("a+AKMAo-b", u"a\u00A3b", false);
  expectDecoded("+AKMAowA-", u"\u00A3\u00A3", false);
  expectDecoded("+AAAAAAAAA", std::u16string(3, u'\0'), false);
}

TEST(Utf7Decoding, RefusesLeftoverBitsOtherThanZero) {
  for (const char* text : {"+AKN-b", "+AKO-b", "+AKP-b"}) expectDecoded(text, u"\u00A3b", false);
  expectDecoded("+AKMAox-b", u"\u00A3\u00A3b", false);
  expectDecoded("+AKN", u"\u00A3", false);
  expectDecoded("+AKN +AKM", u"\u00A3 \u00A3", false);
}

TEST(Utf7Decoding, RefusesAPlusThatOpensNothing) {
  expectDecoded("+", u"", false);
  expectDecoded("a+", u"a", false);
  expectDecoded("+!", u"!", false);
  expectDecoded("a+ b", u"a b", false);
  expectDecoded("+\\+AKM-", u"\\\u00A3", false);
  expectDecoded("+-+", u"+", false);
  expectDecoded("+\n", u"\n", false);
}

TEST(Utf7Decoding, ReplacesBytesAbove7F) {
  for (unsigned int value = 0x80; value <= 0xFF; ++value) {
    const std::string byte(1, static_cast<char>(value));
    expectDecoded(byte, u"\uFFFD", false);
    expectDecoded("a" + byte + "b", u"a\uFFFDb", false);
    expectDecoded("+AKM" + byte + "b", u"\u00A3\uFFFDb", false);
    expectDecoded("+AKM" + byte + "AKM", u"\u00A3\uFFFDAKM", false);
    expectDecoded("+" + byte, u"\uFFFD", false);
  }
  expectDecoded("\xC3\xA9", u"\uFFFD\uFFFD", false);
}

void expectAgreement(std::string_view text) {
  const reference::Utf7Text wanted = reference::decodeUtf7(text);
  ASSERT_EQ(decode(text), (Result{wanted.wellFormed, hostUnits(wanted.units)})) << text;
}

TEST(Utf7Decoding, AgreesWithTheReferenceOnEveryTextOfFiveSymbols) {
  constexpr std::string_view symbols = "+-A/ \xE9";
  for (unsigned int number = 0; number < 6 * 6 * 6 * 6 * 6; ++number) {
    std::string text;
    for (unsigned int rest = number, i = 0; i < 5; ++i, rest /= 6) text += symbols[rest % 6];
    expectAgreement(text);
    expectAgreement("+AKM" + text);
  }
}

TEST(Utf7Decoding, AgreesWithTheReferenceOnRandomBytes) {
  std::mt19937 random(4);
  for (int i = 0; i < 8000; ++i) {
    std::string text(random() % 40, '\0');
    for (char& byte : text) {
      const unsigned int kind = static_cast<unsigned int>(random() % 8);
      byte = kind == 0   ? '+'
             : kind == 1 ? static_cast<char>(random() % 256)
                         : reference::base64Digits[random() % 64];
    }
    expectAgreement(text);
  }
}

// Long texts are worked on in pieces; a run goes on from one to the next.
TEST(Utf7, RoundTripsLongRandomTexts) {
  std::mt19937 random(5);
  constexpr std::u16string_view kinds = u"ab-. +!\u00A3\u20AC\uFFFF";
  for (int i = 0; i < 20; ++i) {
    std::u16string text(20000 + random() % 20000, u'\u00A3');
    // The texts go from one single run to hardly any.
    for (char16_t& unit : text)
      if (random() % 20 < static_cast<unsigned int>(i)) unit = kinds[random() % kinds.size()];
    const Result encoded = encode(text);
    ASSERT_TRUE((encoded == Result{true, reference::encodeUtf7(text)})) << i;
    ASSERT_TRUE((decode(encoded.bytes) == Result{true, hostUnits(text)})) << i;
  }
}

TEST(Utf7Sizes, DoNotWrapForGigabytesOfInput) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const test_memory::RepeatedBytes direct("aaaa", 0xFFFFFFFFU);
  const test_memory::RepeatedBytes units(hostUnits(u"\u00A3a"), 0xFFFFFFFFU);
  DataBuffer in;
  DataBuffer out;
  const test_memory::MemoryLimit limit(16u << 20);
  for (const unsigned int size : {0x80000001U, 0xFFFFFFFFU}) {
    in.borrowData(direct.data(), size);
    EXPECT_FALSE(_qvUtf::Utf7ToUtf16_xe(in, out));
    in.borrowData(units.data(), size);
    EXPECT_FALSE(_qvUtf::Utf16XEToUtf7(in, out));
  }
}

}  // namespace
}  // namespace quorvel
