#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/TextLog.h"
#include "quorvel/unicode/_qvUtf.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"
#include "tests/reference/Utf8Reference.h"

namespace quorvel {
namespace {

using namespace quorvel_test;
using reference::encodeUtf8;

constexpr unsigned int escape = 0x1B;

// The default alphabet; the escape has no character of its own.
constexpr char32_t alphabet[128] = {
    0x40,   0xA3,   0x24,   0xA5,   0xE8,   0xE9,   0xF9,   0xEC,    //
    0xF2,   0xC7,   0x0A,   0xD8,   0xF8,   0x0D,   0xC5,   0xE5,    //
    0x0394, 0x5F,   0x03A6, 0x0393, 0x039B, 0x03A9, 0x03A0, 0x03A8,  //
    0x03A3, 0x0398, 0x039E, 0,      0xC6,   0xE6,   0xDF,   0xC9,    //
    0x20,   0x21,   0x22,   0x23,   0xA4,   0x25,   0x26,   0x27,    //
    0x28,   0x29,   0x2A,   0x2B,   0x2C,   0x2D,   0x2E,   0x2F,    //
    0x30,   0x31,   0x32,   0x33,   0x34,   0x35,   0x36,   0x37,    //
    0x38,   0x39,   0x3A,   0x3B,   0x3C,   0x3D,   0x3E,   0x3F,    //
    0xA1,   0x41,   0x42,   0x43,   0x44,   0x45,   0x46,   0x47,    //
    0x48,   0x49,   0x4A,   0x4B,   0x4C,   0x4D,   0x4E,   0x4F,    //
    0x50,   0x51,   0x52,   0x53,   0x54,   0x55,   0x56,   0x57,    //
    0x58,   0x59,   0x5A,   0xC4,   0xD6,   0xD1,   0xDC,   0xA7,    //
    0xBF,   0x61,   0x62,   0x63,   0x64,   0x65,   0x66,   0x67,    //
    0x68,   0x69,   0x6A,   0x6B,   0x6C,   0x6D,   0x6E,   0x6F,    //
    0x70,   0x71,   0x72,   0x73,   0x74,   0x75,   0x76,   0x77,    //
    0x78,   0x79,   0x7A,   0xE4,   0xF6,   0xF1,   0xFC,   0xE0,    //
};

// What follows the escape.
const std::map<unsigned int, char32_t> extension = {
    {0x0A, 0x0C}, {0x14, '^'}, {0x28, '{'}, {0x29, '}'}, {0x2F, '\\'},
    {0x3C, '['},  {0x3D, '~'}, {0x3E, ']'}, {0x40, '|'}, {0x65, 0x20AC},
};

std::string septets(std::initializer_list<unsigned int> values) {
  std::string bytes;
  for (const unsigned int value : values) bytes += static_cast<char>(value);
  return bytes;
}

// Every character of the alphabet and its code.
const std::map<char32_t, std::string>& codes() {
  static const std::map<char32_t, std::string> all = [] {
    std::map<char32_t, std::string> result;
    for (unsigned int value = 0; value < 128; ++value)
      if (value != escape) result[alphabet[value]] = septets({value});
    for (const auto& [value, character] : extension) result[character] = septets({escape, value});
    return result;
  }();
  return all;
}

using Result = quorvel_test::Transformed;

using Transform = bool (*)(const unsigned char*, unsigned int, DataBuffer&, LogBase&);

// The input stands in front of memory that cannot be read; nothing is logged.
Result transformed(Transform transform, std::string_view in) {
  static test_memory::GuardedBytes guarded(5u << 20);
  DataBuffer out;
  StringBuffer text;
  TextLog log(text);
  log.m_verboseLogging = true;
  const bool ok = transform(guarded.place(in), sizeOf(in), out, log);
  EXPECT_STREQ(text.getString(), "");
  return {ok, contentOf(out)};
}

Result decode(std::string_view in) { return transformed(_qvUtf::gsm_to_utf8, in); }
Result encode(std::string_view in) { return transformed(_qvUtf::utf8_to_gsm, in); }

const std::string replacement = "\xEF\xBF\xBD";

TEST(GsmDecoding, DecodesTheWholeAlphabet) {
  for (unsigned int value = 0; value < 128; ++value) {
    if (value == escape) continue;
    EXPECT_EQ(decode(septets({value})), (Result{true, encodeUtf8(alphabet[value])})) << value;
  }
}

TEST(GsmDecoding, DecodesTheCapitalCWithCedilla) {
  EXPECT_EQ(decode("\x09"), (Result{true, "\xC3\x87"}));
}

TEST(GsmDecoding, DecodesTheExtensionTable) {
  EXPECT_EQ(decode(byteString("1B 0A 1B 14 1B 28 1B 29 1B 2F 1B 3C 1B 3D 1B 3E 1B 40 1B 65")),
            (Result{true, "\f^{}\\[~]|\xE2\x82\xAC"}));
}

TEST(GsmDecoding, DecodesAText) {
  EXPECT_EQ(decode(byteString("00 68 69 20 1B 65 35 0A 04")), (Result{true,
                                                                      "@hi \xE2\x82\xAC"
                                                                      "5\n\xC3\xA8"}));
}

TEST(GsmDecoding, ReplacesAnEscapeThatLeadsNowhereAndDecodesTheRestByItself) {
  for (unsigned int value = 0; value < 128; ++value) {
    if (value == escape || extension.count(value) != 0) continue;
    EXPECT_EQ(decode(septets({escape, value, 'a'})),
              (Result{false, replacement + encodeUtf8(alphabet[value]) + "a"}))
        << value;
  }
}

TEST(GsmDecoding, LetsTheSecondOfTwoEscapesLead) {
  EXPECT_EQ(decode(byteString("1B 1B 65")), (Result{false, replacement + "\xE2\x82\xAC"}));
  EXPECT_EQ(decode(byteString("1B 1B")), (Result{false, replacement + replacement}));
  EXPECT_EQ(decode(byteString("1B 1B 61")), (Result{false, replacement + replacement + "a"}));
}

TEST(GsmDecoding, ReplacesAnEscapeAtTheEnd) {
  EXPECT_EQ(decode("\x1B"), (Result{false, replacement}));
  EXPECT_EQ(decode("ab\x1B"), (Result{false, "ab" + replacement}));
}

TEST(GsmDecoding, ReplacesBytesThatAreNoSeptets) {
  for (unsigned int value = 0x80; value <= 0xFF; ++value) {
    EXPECT_EQ(decode(septets({'a', value, 'b'})), (Result{false, "a" + replacement + "b"}))
        << value;
    EXPECT_EQ(decode(septets({escape, value, 'b'})),
              (Result{false, replacement + replacement + "b"}))
        << value;
  }
}

TEST(GsmDecoding, TakesNothingForNothing) { EXPECT_EQ(decode(""), (Result{true, ""})); }

TEST(GsmEncoding, EncodesTheWholeAlphabet) {
  EXPECT_EQ(codes().size(), 127U + 10U);
  for (const auto& [character, code] : codes())
    EXPECT_EQ(encode(encodeUtf8(character)), (Result{true, code})) << hex(code);
}

TEST(GsmEncoding, EncodesAText) {
  EXPECT_EQ(encode("@hi {\xE2\x82\xAC}\r\n_$"),
            (Result{true, byteString("00 68 69 20 1B 28 1B 65 1B 29 0D 0A 11 02")}));
}

TEST(GsmEncoding, AsksForEveryCharacterOutsideTheAlphabet) {
  std::string in;
  std::string expected;
  for (const char32_t value : reference::allScalarValues()) {
    const auto found = codes().find(value);
    in += encodeUtf8(value);
    expected += found != codes().end() ? found->second : "?";
  }
  EXPECT_TRUE((encode(in) == Result{false, expected}));
}

TEST(GsmEncoding, FinishesTheRestBehindACharacterOutside) {
  EXPECT_EQ(encode("a\xC3\xA7"
                   "b`\xF0\x9F\x98\x80"
                   "c\x1B\x65"),
            (Result{false, "a?b??c?e"}));
}

TEST(GsmEncoding, AsksForEachIllFormedSubpartAtEveryPlace) {
  const std::u32string text = U"a\u00E9\u20ACz";
  const std::string places[] = {"a", "\x05", "\x1B\x65", "z"};
  for (const reference::IllFormedUtf8& example : reference::illFormedUtf8)
    for (std::size_t at = 0; at <= text.size(); ++at) {
      std::string in;
      std::string expected;
      for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == at)
          in += byteString(example.bytes), expected += std::string(example.subparts, '?');
        if (i < text.size()) in += encodeUtf8(text[i]), expected += places[i];
      }
      EXPECT_EQ(encode(in), (Result{false, expected})) << example.name << " at " << at;
    }
}

TEST(GsmEncoding, TakesNothingForNothing) { EXPECT_EQ(encode(""), (Result{true, ""})); }

TEST(Gsm, AppendsToTheOutput) {
  DataBuffer out;
  fill(out, "x");
  StringBuffer text;
  TextLog log(text);
  const std::string in = "@";
  EXPECT_TRUE(_qvUtf::utf8_to_gsm(quorvel_test::unsignedBytes(in), 1, out, log));
  const std::string code(1, '\0');
  EXPECT_TRUE(_qvUtf::gsm_to_utf8(quorvel_test::unsignedBytes(code), 1, out, log));
  EXPECT_TRUE(_qvUtf::gsm_to_utf8(nullptr, 0, out, log));
  EXPECT_TRUE(_qvUtf::utf8_to_gsm(nullptr, 0, out, log));
  EXPECT_EQ(hex(out), "78 00 40");
}

TEST(Gsm, RoundTripsTextsOfItsAlphabet) {
  std::string text;
  for (const auto& entry : codes()) text += encodeUtf8(entry.first);
  for (const auto& entry : codes()) text.insert(0, encodeUtf8(entry.first));
  const Result encoded = encode(text);
  EXPECT_TRUE(encoded.ok);
  EXPECT_EQ(decode(encoded.bytes), (Result{true, text}));
}

// Decoding by the tables, one byte after another.
Result referenceDecoding(std::string_view in) {
  Result result{true, ""};
  for (std::size_t i = 0; i < in.size(); ++i) {
    const auto value = static_cast<unsigned char>(in[i]);
    const auto next =
        i + 1 < in.size() ? extension.find(static_cast<unsigned char>(in[i + 1])) : extension.end();
    if (value == escape && next != extension.end()) {
      result.bytes += encodeUtf8(next->second);
      ++i;
    } else if (value == escape || value > 0x7F) {
      result.bytes += replacement;
      result.ok = false;
    } else {
      result.bytes += encodeUtf8(alphabet[value]);
    }
  }
  return result;
}

TEST(Gsm, DecodesRandomBytesByTheTables) {
  std::mt19937 random(3);
  for (int i = 0; i < 5000; ++i) {
    std::string in(random() % 24, '\0');
    for (char& byte : in) byte = static_cast<char>(random() % 4 == 0 ? escape : random() % 0x90);
    ASSERT_EQ(decode(in), referenceDecoding(in)) << hex(in);
  }
}

// Long texts are worked on in pieces; no escape may be torn from its character.
TEST(Gsm, DecodesLongRandomTextsByTheTables) {
  std::mt19937 random(7);
  for (unsigned int escapes = 2; escapes < 6; ++escapes) {
    std::string in(50000, '\0');
    for (char& byte : in)
      byte = static_cast<char>(random() % escapes == 0 ? escape : random() % 0x80);
    EXPECT_TRUE(decode(in) == referenceDecoding(in)) << escapes;
  }
}

TEST(GsmSizes, DoNotWrapForGigabytesOfInput) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const test_memory::RepeatedBytes euros("\x1B\x65", 0xFFFFFFFFU);
  const test_memory::RepeatedBytes upper("\xC0\xC0", 0xFFFFFFFFU);
  StringBuffer text;
  TextLog log(text);
  const test_memory::MemoryLimit limit(16u << 20);
  DataBuffer out;
  EXPECT_FALSE(_qvUtf::gsm_to_utf8(euros.data(), 0xFFFFFFFFU, out, log));
  EXPECT_FALSE(_qvUtf::gsm_to_utf8(upper.data(), 0x60000000U, out, log));
  EXPECT_FALSE(_qvUtf::utf8_to_gsm(euros.data(), 0xFFFFFFFFU, out, log));
}

}  // namespace
}  // namespace quorvel
