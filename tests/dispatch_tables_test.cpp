#include <gtest/gtest.h>

#include "tests/helpers/Conversion.h"

namespace {

using namespace quorvel_test;

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
  EXPECT_EQ(convert(10004, 65001, "41 B1 42"), converts("'A1B'"));
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

TEST(Preamble, StandsBeforeTextFromATable) {
  EXPECT_EQ(convertWithPreamble(1252, 65001, "E9"), converts("EF BB BF C3 A9"));
  EXPECT_EQ(convertWithPreamble(1252, 1201, "E9"), converts("FE FF 00 E9"));
}

}  // namespace
