// What is said about the size of a text in UTF-16 before it is decoded. Output that
// seems to hold nearly 4 GiB leaves room for a few units only.

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <string>

#include "quorvel/base/NullLog.h"
#include "quorvel/support/Utf16Size.hpp"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/Seed.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;

EncodingConvert withAction(int action) {
  EncodingConvert converter;
  converter.setErrorAction(action);
  return converter;
}

/// Whether `text` is said to be too long for output with room for `units` units.
bool isTooLong(int codePage, const Bytes& text, unsigned int units, int action = 0) {
  static unsigned char nothing;
  NullLog log;
  DataBuffer out;
  out.borrowData(&nothing, std::numeric_limits<unsigned int>::max() - 2 * units);
  const EncodingConvert converter = withAction(action);
  if (codePage == 65001) {
    return quorvel::utf8IsTooLong(converter, text.data(), sizeOf(text), out);
  }
  EncodingConvert::ensureHashToUnicode(codePage, log);
  return quorvel::tableTextIsTooLong(converter, *quorvel::tableRegistry::toUnicode(codePage),
                                     text.data(), sizeOf(text), out);
}

TEST(Utf16Size, IsThatOfAsciiToTheUnit) {
  const Bytes text(1000, 0x61);
  for (const int codePage : {65001, 1252, 932, 1361, 437, 37}) {
    EXPECT_TRUE(isTooLong(codePage, text, 999)) << codePage;
    EXPECT_FALSE(isTooLong(codePage, text, 1000)) << codePage;
  }
}

TEST(Utf16Size, CountsNoByteThatASingleBytePageLacks) {
  const Bytes text = bytes("61 81 62 81 63 00");
  EXPECT_TRUE(isTooLong(1252, text, 3));
  EXPECT_FALSE(isTooLong(1252, text, 4));
}

TEST(Utf16Size, CountsNothingThatALeadByteMayTake) {
  EXPECT_TRUE(isTooLong(932, bytes("61 62 63 82 41"), 2));
  EXPECT_FALSE(isTooLong(932, bytes("61 62 63 82 41"), 3));
  EXPECT_TRUE(isTooLong(65001, bytes("61 62 63 64 F0 61 62 63"), 3));
  EXPECT_FALSE(isTooLong(65001, bytes("61 62 63 64 F0 61 62 63"), 4));
}

TEST(Utf16Size, IsNotJudgedForTheActionThatConvertsAgain) {
  EXPECT_TRUE(isTooLong(65001, bytes("61 62"), 1, 7));
  EXPECT_FALSE(isTooLong(65001, bytes("61 62"), 1, 6));
  EXPECT_FALSE(isTooLong(1252, bytes("61 62"), 1, 6));
}

unsigned int unitsOf(int codePage, const Bytes& text, int action) {
  NullLog log;
  DataBuffer out;
  EncodingConvert converter = withAction(action);
  converter.m_fromCodePage = codePage;
  converter.convert_a(codePage, 1200, text.data(), sizeOf(text), out, log);
  return (out.getSize() + 1) / 2;
}

TEST(Utf16Size, IsNeverMoreThanWhatIsDecoded) {
  constexpr int codePages[] = {65001, 1252, 932, 949, 1361, 10001, 51932, 874};
  constexpr int actions[] = {0, 1, 2, 3, 7, 8};
  quorvel::test_seed::Random random(31);
  for (int i = 0; i < 40000; ++i) {
    const int codePage = codePages[random() % std::size(codePages)];
    const int action = actions[random() % std::size(actions)];
    Bytes text(1 + random() % 24);
    for (unsigned char& byte : text) {
      byte = random() % 2 ? static_cast<unsigned char>(random() % 256) : 0x41;
    }
    text[0] = 0x41;  // no byte-order mark
    const unsigned int units = unitsOf(codePage, text, action);
    ASSERT_FALSE(isTooLong(codePage, text, units, action)) << codePage << ": " << hex(text);
  }
}

}  // namespace
