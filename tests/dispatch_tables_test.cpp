#include <gtest/gtest.h>

#include "tests/support/Conversion.h"

namespace {

using namespace quorvel_test;
using quorvel::EncodingConvert;

// The byte 81 stands for nothing in 1252, U+3042 has no place there, and
// U+00E9 none in 932.

struct ActionRow {
  EncodingConvert converter;
  const char* name;
  Outcome expected;
};

template <std::size_t n>
void expectRows(const ActionRow (&rows)[n], int from, int to, std::string_view input) {
  for (const ActionRow& row : rows) {
    EXPECT_EQ(convert(EncodingConvert(row.converter), from, to, input), row.expected) << row.name;
  }
}

TEST(TableSource, ConvertsToTheUnicodeForms) {
  EXPECT_EQ(convert(37, 65001, "C1 C2"), converts("'AB'"));
  EXPECT_EQ(convert(1252, 65001, "63 61 66 E9", "'>'"), converts("'>caf' C3 A9"));
  EXPECT_EQ(convert(1252, 1200, "61 E9"), converts("61 00 E9 00"));
  EXPECT_EQ(convert(1252, 1201, "61 E9"), converts("00 61 00 E9"));
  EXPECT_EQ(convert(1252, 12000, "E9"), converts("E9 00 00 00"));
  EXPECT_EQ(convert(1252, 65006, "E9"), converts("00 00 00 E9"));
  EXPECT_EQ(convert(1252, 65000, "E9 62"), converts("'+AOk-b'"));
  EXPECT_EQ(convert(1252, 55000, "E9 80"), converts("05 1B 65"));
  EXPECT_EQ(convert(932, 65001, "82 A0"), converts("E3 81 82"));
  EXPECT_EQ(convert(20127, 1200, "61"), converts("61 00"));
}

TEST(TableDestination, IsReachedFromTheUnicodeForms) {
  EXPECT_EQ(convert(65001, 37, "'AB'"), converts("C1 C2"));
  EXPECT_EQ(convert(65001, 1252, "EF BB BF 61 C3 A9"), converts("61 E9"));
  EXPECT_EQ(convert(1200, 1252, "FF FE 61 00 E9 00"), converts("61 E9"));
  EXPECT_EQ(convert(1200, 1252, "FE FF 00 61 00 E9"), converts("61 E9"));
  EXPECT_EQ(convert(1201, 1252, "00 61 00 E9"), converts("61 E9"));
  EXPECT_EQ(convert(12000, 1252, "E9 00 00 00"), converts("E9"));
  EXPECT_EQ(convert(12001, 1252, "00 00 00 E9"), converts("E9"));
  EXPECT_EQ(convert(65000, 1252, "'+AOk-b'"), converts("E9 62"));
  EXPECT_EQ(convert(55000, 1252, "05 1B 65"), converts("E9 80"));
  EXPECT_EQ(convert(1200, 1252, "61 00 E9"), converts("61"));
  EXPECT_EQ(convert(1200, 1252, "61"), fails());
  EXPECT_EQ(convert(1200, 1252, "61 00 00 00"), converts("61 00"));
}

TEST(TableDestination, IsReachedFromAnotherTable) {
  EXPECT_EQ(convert(37, 1252, "C1 C2"), converts("'AB'"));
  EXPECT_EQ(convert(1252, 437, "E9"), converts("82"));
  EXPECT_EQ(convert(1252, 932, "63 61 66"), converts("'caf'"));
}

TEST(MacArabicText, IsReorderedBeforeItIsDecoded) {
  EXPECT_EQ(convert(10004, 65001, "B1 B2 B3"), converts("'321'"));
  EXPECT_EQ(convert(10004, 1252, "'a' B1 'b' B2 B3"), converts("'a1b32'"));
  EXPECT_EQ(convert(10004, 1201, "B1 B2"), converts("00 32 00 31"));
  EXPECT_EQ(convert(10004, 65001, "'%PDF-1.' B1 B2"), converts("'%PDF-1.' B1 B2"));
}

TEST(Iso2022, ConvertsByWayOfItsTable) {
  EXPECT_EQ(convert(50220, 65001, "1B 24 42 24 22 1B 28 42"), converts("E3 81 82"));
  EXPECT_EQ(convert(65001, 50220, "E3 81 82"), converts("1B 24 42 24 22 1B 28 42"));
  EXPECT_EQ(convert(50225, 65001, "1B 24 29 43 0E 30 21 0F"), converts("EA B0 80"));
  EXPECT_EQ(convert(65001, 50225, "EA B0 80 0A"), converts("1B 24 29 43 0E 30 21 0F 0A"));
  EXPECT_EQ(convert(50225, 50220, "1B 24 29 43 0E 2A 22 0F"), converts("1B 24 42 24 22 1B 28 42"));
}

TEST(ToIso2022, KeepsWhatAFailedConversionGave) {
  // U+AC00 has no Shift_JIS code and is dropped.
  EXPECT_EQ(convert(65001, 50220, "61 EA B0 80 62"), fails("'ab'"));
}

TEST(ToUtf8FromATable, ShowsMarkersAsCharacters) {
  // The handlers write FD EF, the transcoder looks for EF FD.
  const ActionRow rows[] = {
      {withAction(0), "drop", convertsWithError("61 62")},
      {withSubstitute("3F"), "substitute", convertsWithError("61 EE BF BD E3 BC 81 62")},
      {withSubstitute(""), "substitute nothing", convertsWithError("61 62")},
      {withAction(2), "hexadecimal", fails("61 EE BF BD E2 98 85 E7 A0 A3 E3 84 B8 E6 88 BB")},
      {withAction(3), "3", convertsWithError("61 62")},
      {withAlternate(0), "reconvert", convertsWithError("61 62")},
      {withAlternate(1252), "reconvert to itself", fails("61 E6 8A 81")},
      {withAction(7), "pass through", convertsWithError("61 EE BF BD E8 84 81 62")},
      {withAction(8), "widen", convertsWithError("61 C2 81 62")},
      {withAction(9), "9", convertsWithError("61 62")},
  };
  expectRows(rows, 1252, 65001, "61 81 62");
}

TEST(ToUtf16FromATable, WritesNoMarkers) {
  const ActionRow rows[] = {
      {withAction(0), "drop", convertsWithError("61 00 62 00")},
      {withSubstitute("3F 00"), "substitute", convertsWithError("61 00 3F 00 62 00")},
      {withAction(2), "hexadecimal", convertsWithError("61 00 '&#x81;' 62 00")},
      {withAlternate(1252), "reconvert to itself", converts("61 00 81 62 00")},
      {withAction(7), "pass through", convertsWithError("61 00 81 62 00")},
      {withAction(8), "widen", convertsWithError("61 00 81 00 62 00")},
  };
  expectRows(rows, 1252, 1200, "61 81 62");
}

TEST(ToATableFromUtf8, CarriesIllFormedTextThroughThePivot) {
  const ActionRow rows[] = {
      {withAction(0), "drop", convertsWithError("61 62")},
      {withSubstitute("3F"), "substitute", convertsWithError("61 3F 62")},
      // Five bytes are announced, six were written: the rest is read as text.
      {withAction(2), "hexadecimal", fails("'a&#x80&#xE688BB;'")},
      {withAction(3), "3", convertsWithError("61 62")},
      {withAlternate(0), "reconvert", convertsWithError("61 62")},
      {withAlternate(65001), "reconvert to itself", fails("61 E6 8A 80")},
      {withAction(7), "pass through", convertsWithError("61 80 62")},
      {withAction(8), "8", convertsWithError("61 62")},
  };
  expectRows(rows, 65001, 1252, "61 80 62");
}

TEST(ToATableFromUtf8, HandlesWhatHasNoPlaceThere) {
  const ActionRow rows[] = {
      {withAction(0), "drop", fails("61 62")},
      {withSubstitute("3F"), "substitute", fails("61 3F 3F 62")},
      {withSubstitute(""), "substitute nothing", fails("61 62")},
      // The nested conversion of the first clears the flags for the second.
      {withAction(2), "hexadecimal", fails("'a&#xE38182;&#x4230;b'")},
      {withAction(3), "3", fails("61 62")},
      {withAlternate(0), "reconvert", fails("61 62")},
      {withAlternate(65001), "reconvert to the source", fails("61 E3 81 82 E3 81 82 62")},
      {withAction(7), "pass through", fails("61 E3 81 82 42 30 62")},
      {withAction(8), "8", fails("61 62")},
  };
  expectRows(rows, 65001, 1252, "61 E3 81 82 E3 81 82 62");
}

TEST(ToATableFromUtf16, HandlesWhatHasNoPlaceThere) {
  const ActionRow rows[] = {
      {withAction(0), "drop", fails("61 62")},
      {withSubstitute("3F"), "substitute", fails("61 3F 62")},
      {withAction(2), "hexadecimal", fails("'a&#x4230;b'")},
      {withAlternate(65001), "reconvert", fails("61 E3 81 82 62")},
      {withAction(7), "pass through", fails("61 42 30 62")},
      {withAction(8), "8", fails("61 62")},
  };
  expectRows(rows, 1200, 1252, "61 00 42 30 62 00");
}

TEST(ToATableFromATable, HandlesWhatHasNoPlaceThere) {
  const ActionRow rows[] = {
      {withAction(0), "drop", fails("61 62")},
      {withSubstitute("3F"), "substitute", fails("61 3F 3F 62")},
      {withAction(2), "hexadecimal", fails("'a&#xE9;&#xE900;b'")},
      {withAction(7), "pass through", fails("61 E9 E9 00 62")},
      {withAction(8), "8", fails("61 62")},
  };
  expectRows(rows, 1252, 932, "61 E9 E9 62");
}

TEST(ToATableFromATable, CarriesUndecodableBytesThroughThePivot) {
  const ActionRow rows[] = {
      {withAction(0), "drop", convertsWithError("61 62")},
      {withSubstitute("3F"), "substitute", convertsWithError("61 3F 62")},
      {withAction(7), "pass through", convertsWithError("61 81 62")},
  };
  expectRows(rows, 1252, 437, "61 81 62");
}

TEST(Preamble, StandsBeforeTextFromATable) {
  EXPECT_EQ(convertWithPreamble(1252, 65001, "E9"), converts("EF BB BF C3 A9"));
  EXPECT_EQ(convertWithPreamble(1252, 1201, "E9"), converts("FE FF 00 E9"));
}

}  // namespace
