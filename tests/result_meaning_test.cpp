// What a result of true with a clear `m_hadError` says, which depends on the
// route: docs/behaviour.md groups the routes as these tests do.

#include <gtest/gtest.h>

#include <ostream>
#include <string_view>

#include "quorvel/base/NullLog.h"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/Conversion.h"

namespace {

using namespace quorvel_test;

struct Route {
  int from;
  int to;
  std::string_view text;
  std::string_view out = "";
};

std::ostream& operator<<(std::ostream& stream, const Route& route) {
  return stream << route.from << " to " << route.to << ", " << route.text;
}

Outcome convert(const Route& route) {
  return quorvel_test::convert(route.from, route.to, route.text);
}

bool isReported(const Outcome& outcome) { return !outcome.result || outcome.hadError; }

template <typename Routes>
void expectReported(const Routes& losses) {
  for (const Route& loss : losses) EXPECT_TRUE(isReported(convert(loss))) << loss;
}

template <typename Routes>
void expectSilent(const Routes& losses) {
  for (const Route& loss : losses) EXPECT_EQ(convert(loss), converts(loss.out)) << loss;
}

TEST(ResultMeaning, ReportsEveryLossFromUnicodeAndGsmOnMostWays) {
  const Route losses[] = {
      {65001, 1200, "61 FF 62"},     {65001, 1201, "61 E2 82"}, {65001, 12000, "61 ED A0 80"},
      {65001, 65000, "61 E2 82"},    {65001, 1252, "D0 96"},    {1200, 65000, "61 00 62"},
      {12000, 65001, "00 D8 00 00"}, {12000, 1200, "61 00 00"}, {12000, 1252, "16 04 00 00"},
      {65000, 1252, "'+BBY-'"},      {55000, 65001, "FE"},      {55000, 12000, "FE"},
      {55000, 1252, "FE"},
  };
  expectReported(losses);
}

TEST(ResultMeaning, ReportsEveryLossFromACodePageToUtf16Utf7AndOtherPages) {
  const Route losses[] = {
      {932, 1200, "61 82"}, {932, 1201, "85 40"},   {932, 65000, "61 82"}, {932, 1252, "82 A0"},
      {1252, 28592, "E3"},  {20127, 1200, "61 80"}, {20127, 932, "E9"},    {20127, 65000, "61 80"},
  };
  expectReported(losses);
}

TEST(ResultMeaning, SaysNothingOfNullsOnTheWayFromUtf16ToUtf8) {
  const Route losses[] = {
      {1200, 65001, "61 00 00 00 62 00", "'ab'"},
      {1201, 65001, "00 61 00 00 00 62", "'ab'"},
      {1200, 12000, "61 00 00 00", "61 00 00 00"},
      {65000, 65001, "61 00 62", "'ab'"},
      {932, 65001, "61 00 62", "'ab'"},
      {1252, 12001, "61 00", "00 00 00 61"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingOfSurrogatesThatAreNotPairedOnTheWayToUtf8) {
  const Route losses[] = {
      {1200, 65001, "00 D8", "ED A0 80"},
      {1201, 65001, "DC 00", "ED B0 80"},
      {65000, 65001, "'+2AA-'", "ED A0 80"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingOfAnIncompleteLastUnit) {
  const Route losses[] = {
      {1200, 1252, "61 00 62", "'a'"},
      {1200, 1201, "61 00 62", "00 61"},
      {1201, 65000, "61", ""},
      {1201, 1252, "00 61 00", "'a'"},
      {1201, 65001, "00 61 00", "'a'"},
      {12001, 65001, "00 00 00 61 00 00", "'a'"},
      {12001, 12000, "00 00 00 61 00", "61 00 00 00"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingOfAByteOrderThatTheMarkContradicts) {
  EXPECT_EQ(convert({1200, 1201, "FE FF 00 61"}), converts("61 00"));
}

TEST(ResultMeaning, ReportsOtherLossesOnTheseWays) {
  const Route losses[] = {
      {1200, 65001, "61 00 62"}, {1200, 1252, "16 04"},        {1201, 1252, "04 16"},
      {932, 65001, "61 82"},     {12001, 1252, "00 00 04 16"}, {12001, 65001, "00 00 D8 00"},
      {1200, 12000, "00 D8"},    {65000, 12000, "'+2AA-'"},
  };
  expectReported(losses);
}

TEST(ResultMeaning, SaysNothingOfACharacterThatIsTakenForAMarker) {
  const Route losses[] = {
      {65001, 1252, "'a' EE BF BD 01 'b'", "61 00 62"},
      {12000, 1252, "FD EF 00 00 0D 00 00 00", "0D"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingOfSubstitutesInGsm) {
  const Route losses[] = {
      {65001, 55000, "'a' D0 96", "'a' 3F"},
      {1200, 55000, "16 04", "3F"},
      {12000, 55000, "16 04 00 00", "3F"},
      {65000, 55000, "'+BBY-'", "3F"},
      {1251, 55000, "C6", "3F"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingOfUndefinedGsmOnTheWayToUtf16AndUtf7) {
  const Route losses[] = {
      {55000, 1200, "FE", "FD FF"},
      {55000, 1201, "FE", "FF FD"},
      {55000, 65000, "FE", "'+//0'"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingOfWhatIso2022Loses) {
  const Route losses[] = {
      {50220, 932, "1B '$B$'", ""},
      {50220, 65001, "'a' 0E FE 'b'", "'ab'"},
      {50225, 65001, "'a' 1B '!'", "'a' 1B '!'"},
      {65001, 50220, "'a' 0E 'b'", "'ab'"},
      {932, 50220, "FA 4A", "1B '$B' 22 2E 1B '(B'"},
      {949, 50225, "0E", "1B '$)C'"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingWhereBytesAreCopied) {
  const Route losses[] = {
      {20127, 65001, "'a' E9", "'a'"},   {20127, 12000, "'a' E9", "61 00 00 00"},
      {20127, 1252, "'a' E9", "'a' E9"}, {20127, 28605, "E9", "E9"},
      {65001, 65001, "FF", "FF"},        {932, 65001, "'%PDF-1.' 82", "'%PDF-1.' 82"},
  };
  expectSilent(losses);
}

TEST(ResultMeaning, SaysNothingOfAnUnknownName) {
  quorvel::EncodingConvert converter;
  quorvel::NullLog log;
  quorvel::DataBuffer out;
  const Bytes text = bytes("C3 A9");
  EXPECT_TRUE(converter.ChConvert2p("klingon", 1200, text.data(), sizeOf(text), out, log));
  EXPECT_FALSE(converter.m_hadError);
  EXPECT_EQ(hex(out), "E9 00");
}

TEST(ResultMeaning, ReportsAFailureThoughTheTextIsComplete) {
  const Route whole[] = {
      {1201, 1200, "00 61 20 AC", "61 00 AC 20"},
      {65000, 1200, "'a+IKw-'", "61 00 AC 20"},
      {65000, 1201, "'a+IKw-'", "00 61 20 AC"},
  };
  for (const Route& route : whole) {
    const Outcome outcome = convert(route);
    EXPECT_TRUE(isReported(outcome)) << route;
    EXPECT_EQ(outcome.out, hex(bytes(route.out))) << route;
  }
}

}  // namespace
