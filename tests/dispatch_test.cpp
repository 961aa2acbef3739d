#include <gtest/gtest.h>

#include <climits>
#include <utility>

#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;

struct Pair {
  int from;
  int to;
};

constexpr Pair kAnyPairs[] = {{65001, 1200}, {1200, 65001}, {65001, 65001}, {0, 0},
                              {20, 65001},   {65001, 20},   {-1, INT_MIN},  {50220, 65000},
                              {10004, 1201}, {28602, 30000}};

TEST(EmptyInput, ConvertsToNothingWhateverTheCodePages) {
  for (const Pair& pair : kAnyPairs) {
    RecordingLog log(true);
    DataBuffer out = bufferOf("'ab'");
    EncodingConvert converter;
    converter.m_hadError = true;
    EXPECT_TRUE(converter.EncConvert(pair.from, pair.to, nullptr, 5, out, log));
    EXPECT_FALSE(converter.m_hadError);
    converter.m_hadError = true;
    const unsigned char byte = 0x41;
    EXPECT_TRUE(converter.EncConvert(pair.from, pair.to, &byte, 0, out, log));
    EXPECT_FALSE(converter.m_hadError);
    EXPECT_EQ(hex(out), "61 62");
    EXPECT_EQ(log.lines, Lines());
  }
}

TEST(EmptyInput, LeavesEveryOtherFieldAlone) {
  EncodingConvert converter;
  converter.m_fromCodePage = 7;
  converter.m_toCodePage = 8;
  converter.m_honorPassthroughMarkers = true;
  EXPECT_EQ(convert(converter, 65001, 1200, ""), converts(""));
  EXPECT_EQ(converter.m_fromCodePage, 7);
  EXPECT_EQ(converter.m_toCodePage, 8);
  EXPECT_TRUE(converter.m_honorPassthroughMarkers);
}

TEST(PdfDocument, PassesThroughWhateverTheCodePages) {
  for (const Pair& pair : kAnyPairs) {
    EXPECT_EQ(convert(pair.from, pair.to, "'%PDF-1.'"), converts("'%PDF-1.'"));
    EXPECT_EQ(convert(pair.from, pair.to, "'%PDF-1.4' 0A E9 80", "'ab'"),
              converts("'ab%PDF-1.4' 0A E9 80"));
    EXPECT_EQ(convert(pair.from, pair.to, "'%PDF-1' 00"), converts("'%PDF-1' 00"));
  }
}

TEST(PdfDocument, IsNotLoggedAndLeavesEveryOtherFieldAlone) {
  RecordingLog log(true);
  EncodingConvert converter;
  converter.m_hadError = true;
  converter.m_honorPassthroughMarkers = true;
  EXPECT_EQ(run(&EncodingConvert::EncConvert, converter, 65001, 1200, bytes("'%PDF-1.4'"), log, ""),
            converts("'%PDF-1.4'"));
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(converter.m_fromCodePage, 0);
  EXPECT_EQ(converter.m_toCodePage, 0);
  EXPECT_TRUE(converter.m_honorPassthroughMarkers);
}

TEST(PdfDocument, HasSevenBytesAtLeast) {
  EXPECT_EQ(convert(65001, 1201, "'%PDF-1'"), converts("00 25 00 50 00 44 00 46 00 2D 00 31"));
  EXPECT_EQ(convert(65001, 20, "'%PDF-1'"), failsQuietly());
  EXPECT_EQ(convert(65001, 1201, "'%PDF'"), converts("00 25 00 50 00 44 00 46"));
}

TEST(PdfDocument, BeginsWithExactlyThoseSixBytes) {
  EXPECT_EQ(convert(65001, 1200, "'%PDF-2.'"),
            converts("25 00 50 00 44 00 46 00 2D 00 32 00 2E 00"));
  EXPECT_EQ(convert(65001, 20, "' %PDF-1.4'"), failsQuietly());
  const char* others[] = {"'!PDF-1.'", "'%pDF-1.'", "'%PdF-1.'",
                          "'%PDf-1.'", "'%PDF_1.'", "'%PDF-' 00 '.'"};
  for (const char* other : others) EXPECT_EQ(convert(65001, 20, other), failsQuietly()) << other;
}

TEST(PdfDocument, PassesThroughInsideAnIso2022Text) {
  EXPECT_EQ(convert(50220, 65001, "1B 28 42 '%PDF-1.4'"), converts("'%PDF-1.4'"));
  EXPECT_EQ(convert(50222, kNoTable, "1B 28 4A '%PDF-1.4'"), converts("'%PDF-1.4'"));
  EXPECT_EQ(convert(50225, 65001, "1B 24 29 43 '%PDF-1.4'"), converts("'%PDF-1.4'"));
}

TEST(CodePageZero, MeansThatOfTheOtherSide) {
  for (int codePage : {0, 1252, 65001, 1200, 20, -1, 99}) {
    EXPECT_EQ(convert(codePage, 0, "EF BB BF 41 E9"), converts("EF BB BF 41 E9"));
    EXPECT_EQ(convert(0, codePage, "EF BB BF 41 E9"), converts("EF BB BF 41 E9"));
  }
}

TEST(EqualCodePages, CopyTheInputWhateverTheyAre) {
  for (int codePage :
       {1,     20,    37,    99,    100,   932,   1200, 1201,    10004,   12000,   20127,
        50220, 50225, 55000, 65000, 65001, 65005, -1,   INT_MIN, INT_MAX, kNoTable}) {
    EncodingConvert converter;
    converter.m_hadError = true;
    converter.m_honorPassthroughMarkers = true;
    EXPECT_EQ(convert(converter, codePage, codePage, "FF FE 80 B1 B2 00 41", "C3"),
              converts("C3 FF FE 80 B1 B2 00 41"));
    EXPECT_EQ(converter.m_fromCodePage, 0);
    EXPECT_EQ(converter.m_toCodePage, 0);
    EXPECT_TRUE(converter.m_honorPassthroughMarkers);
  }
}

TEST(AcceptanceRule, RefusesNumbersBelowAHundredQuietly) {
  for (int codePage : {1, 2, 20, 36, 38, 42, 99, -1, -37, -65001, INT_MIN}) {
    EXPECT_EQ(convert(codePage, 65001, "41", "'x'"), failsQuietly("'x'"));
    EXPECT_EQ(convert(65001, codePage, "41", "'x'"), failsQuietly("'x'"));
    EXPECT_EQ(convert(codePage, 37, "41"), failsQuietly());
    EXPECT_EQ(convert(50220, codePage, "1B 28 42"), failsQuietly());
  }
}

TEST(AcceptanceRule, LeavesTheFieldsAloneOnRefusal) {
  EncodingConvert converter;
  converter.m_hadError = true;
  converter.m_honorPassthroughMarkers = true;
  EXPECT_EQ(convert(converter, 65001, 99, "41"), failsQuietly());
  EXPECT_EQ(converter.m_fromCodePage, 0);
  EXPECT_EQ(converter.m_toCodePage, 0);
  EXPECT_TRUE(converter.m_honorPassthroughMarkers);
}

TEST(AcceptanceRule, LetsThirtySevenAndAHundredPass) {
  // What passes the rule is recorded as the conversion under way.
  for (const Pair& pair : {Pair{37, 65001}, Pair{65001, 37}, Pair{100, 65001}, Pair{65001, 100},
                           Pair{INT_MAX, 65001}, Pair{65001, INT_MAX}}) {
    EncodingConvert converter;
    convert(converter, pair.from, pair.to, "41");
    EXPECT_EQ(converter.m_fromCodePage, pair.from);
    EXPECT_EQ(converter.m_toCodePage, pair.to);
  }
  EXPECT_EQ(convert(100, 65001, "41"), fails());
  EXPECT_EQ(convert(65001, 100, "41"), fails());
  EXPECT_EQ(convert(INT_MAX, 1200, "41"), fails());
}

TEST(MacArabicSource, IsReorderedOnACopy) {
  NullLog log;
  DataBuffer out;
  EncodingConvert converter;
  const Bytes data = bytes("B1 B2 B3");
  converter.EncConvert(10004, 65001, data.data(), 3, out, log);
  EXPECT_EQ(hex(data), "B1 B2 B3");
  EXPECT_EQ(converter.m_fromCodePage, 10004);
}

TEST(Iso2022JapaneseSource, IsReadAsShiftJis) {
  for (int from : {50220, 50221, 50222}) {
    EXPECT_EQ(convert(from, 932, "'a' 1B 24 42 24 22 1B 28 42 'b'", "'x'"),
              converts("'xa' 82 A0 'b'"));
  }
}

TEST(Iso2022JapaneseSource, LeavesTheFieldsAloneOnTheWayToShiftJis) {
  EncodingConvert converter;
  converter.m_honorPassthroughMarkers = true;
  EXPECT_EQ(convert(converter, 50220, 932, "41"), converts("41"));
  EXPECT_EQ(converter.m_fromCodePage, 0);
  EXPECT_EQ(converter.m_toCodePage, 0);
  EXPECT_TRUE(converter.m_honorPassthroughMarkers);
}

TEST(Iso2022JapaneseSource, ThatDecodesToNothingIsConvertedToNothing) {
  for (int to : {932, 65001, 1200, 1201, 12000, 65000, 50221, 50225, 55000, kNoTable}) {
    EXPECT_EQ(convert(50220, to, "1B 28 42", "'x'"), converts("'x'"));
    EXPECT_EQ(convert(50222, to, "1B 24 42 1B 28 42", "'x'"), converts("'x'"));
  }
}

TEST(Iso2022JapaneseSource, ChangesToAnotherVariantByWayOfShiftJis) {
  EncodingConvert converter;
  EXPECT_EQ(convert(converter, 50221, 50220, "1B 24 40 24 22 1B 28 4A 'b'"),
            converts("1B 24 42 24 22 1B 28 42 'b'"));
  EXPECT_EQ(converter.m_fromCodePage, 932);
  EXPECT_EQ(converter.m_toCodePage, 50220);
  EXPECT_EQ(convert(50220, 50222, "'ab'"), converts("'ab'"));
}

TEST(Iso2022JapaneseSource, FailsWhereShiftJisHasNoRoute) {
  EXPECT_EQ(convert(50220, kNoTableEither, "'ab'"), fails());
}

TEST(Iso2022KoreanSource, IsReadAsKsc) {
  EXPECT_EQ(convert(50225, 949, "1B 24 29 43 'a' 0E 30 21 0F 'b'", "'x'"),
            converts("'xa' B0 A1 'b'"));
}

TEST(Iso2022KoreanSource, ThatDecodesToNothingIsConvertedToNothing) {
  for (int to : {949, 65001, 1201, 12000, 65000, 50220, kNoTable}) {
    EXPECT_EQ(convert(50225, to, "1B 24 29 43", "'x'"), converts("'x'"));
  }
}

TEST(Iso2022KoreanSource, FailsWhereKscHasNoRoute) {
  EXPECT_EQ(convert(50225, kNoTableEither, "'ab'"), fails());
}

TEST(EveryRoute, RecordsTheCodePagesAndClearsTheHonourFlag) {
  for (const Pair& pair :
       {Pair{65001, 1200}, Pair{1200, 65000}, Pair{65001, 12000}, Pair{932, 50220},
        Pair{949, 50225}, Pair{kNoTable, 65001}, Pair{65001, kNoTable}, Pair{55000, 65001}}) {
    EncodingConvert converter;
    converter.m_honorPassthroughMarkers = true;
    convert(converter, pair.from, pair.to, "41 00");
    EXPECT_EQ(converter.m_fromCodePage, pair.from);
    EXPECT_EQ(converter.m_toCodePage, pair.to);
    EXPECT_FALSE(converter.m_honorPassthroughMarkers);
  }
}

TEST(EveryRoute, ForgetsTheErrorOfTheCallBefore) {
  EncodingConvert converter;
  EXPECT_EQ(convert(converter, 65001, 1200, "80"), convertsWithError(""));
  EXPECT_EQ(convert(converter, 65001, 1200, "41"), converts("41 00"));
  EXPECT_EQ(convert(converter, kNoTable, 1200, "41"), fails());
  EXPECT_EQ(convert(converter, 20, 1200, "41"), failsQuietly());
}

TEST(ToUtf7, GoesThroughUtf16) {
  EXPECT_EQ(convert(65001, 65000, "'a' C3 A9 'b'", "'x'"), converts("'xa+AOk-b'"));
  EXPECT_EQ(convert(1200, 65000, "E9 00 62 00"), converts("'+AOk-b'"));
  EXPECT_EQ(convert(12000, 65000, "E9 00 00 00 62 00 00 00"), converts("'+AOk-b'"));
  EXPECT_EQ(convert(12001, 65000, "00 00 00 E9 00 00 00 62"), converts("'+AOk-b'"));
  EXPECT_EQ(convert(65005, 65000, "E9 00 00 00 62 00 00 00"), converts("'+AOk-b'"));
  EXPECT_EQ(convert(65006, 65000, "00 00 00 E9 00 00 00 62"), converts("'+AOk-b'"));
  EXPECT_EQ(convert(55000, 65000, "05 62"), converts("'+AOk-b'"));
}

TEST(ToUtf7, DropsTheMark) {
  EXPECT_EQ(convert(65001, 65000, "EF BB BF 'a'"), converts("'a'"));
  EXPECT_EQ(convert(1200, 65000, "FF FE 61 00"), converts("'a'"));
}

TEST(ToUtf7, ReadsUtf16WithTheOtherMarkUnswapped) {
  EXPECT_EQ(convert(1200, 65000, "FE FF 00 61 62 00"), converts("'+YQA-b'"));
}

TEST(ToUtf7, FailsWhereTheWayToUtf16Does) {
  // 1201 to 1200 gives the text and false; nothing of it is written here.
  EXPECT_EQ(convert(1201, 65000, "00 61", "'x'"), fails("'x'"));
  EXPECT_EQ(convert(kNoTable, 65000, "61", "'x'"), fails("'x'"));
  EXPECT_EQ(convert(12000, 65000, "00 D8 00 00"), fails());
}

TEST(ToUtf7, FailsAfterAnIncompleteLastUnit) {
  EXPECT_EQ(convert(1200, 65000, "61 00 62"), fails("'a'"));
}

TEST(ToUtf7, AppliesTheErrorActionOnTheWay) {
  EXPECT_EQ(convert(65001, 65000, "'a' 80 'b'"), convertsWithError("'ab'"));
  EXPECT_EQ(convert(withSubstitute("3F 00"), 65001, 65000, "'a' 80 'b'"),
            convertsWithError("'a?b'"));
}

TEST(ToUtf32, FromUtf8KeepsTheMark) {
  EXPECT_EQ(convert(65001, 12000, "EF BB BF 61"), converts("FF FE 00 00 61 00 00 00"));
  EXPECT_EQ(convert(65001, 12001, "EF BB BF 61"), converts("00 00 FE FF 00 00 00 61"));
}

TEST(ToUtf32, WritesTheByteOrderOfTheNumber) {
  const Pair orders[] = {{12000, 0}, {65005, 0}, {12001, 1}, {65006, 1}};
  for (const Pair& order : orders) {
    const int to = order.from;
    const Outcome expected =
        converts(order.to == 0 ? "'x' 61 00 00 00 00 F6 01 00" : "'x' 00 00 00 61 00 01 F6 00");
    EXPECT_EQ(convert(65001, to, "61 F0 9F 98 80", "'x'"), expected) << to;
    EXPECT_EQ(convert(1200, to, "61 00 3D D8 00 DE", "'x'"), expected) << to;
    EXPECT_EQ(convert(1200, to, "FE FF 00 61 D8 3D DE 00", "'x'"), expected) << to;
    EXPECT_EQ(convert(1201, to, "00 61 D8 3D DE 00", "'x'"), expected) << to;
    EXPECT_EQ(convert(65000, to, "'a+2D3eAA-'", "'x'"), expected) << to;
    for (int from : {12000, 65005}) {
      if (from != to) {
        EXPECT_EQ(convert(from, to, "61 00 00 00 00 F6 01 00", "'x'"), expected) << from << to;
      }
    }
    for (int from : {12001, 65006}) {
      if (from != to) {
        EXPECT_EQ(convert(from, to, "00 00 00 61 00 01 F6 00", "'x'"), expected) << from << to;
      }
    }
    EXPECT_EQ(convert(20127, to, "61", "'x'"),
              converts(order.to == 0 ? "'x' 61 00 00 00" : "'x' 00 00 00 61"));
    EXPECT_EQ(convert(55000, to, "61", "'x'"),
              converts(order.to == 0 ? "'x' 61 00 00 00" : "'x' 00 00 00 61"));
  }
}

TEST(ToUtf32, FromElsewhereDropsTheMark) {
  EXPECT_EQ(convert(1200, 12001, "FF FE 61 00"), converts("00 00 00 61"));
  EXPECT_EQ(convert(12000, 12001, "FF FE 00 00 61 00 00 00"), converts("00 00 00 61"));
  EXPECT_EQ(convert(12000, 65005, "FF FE 00 00 61 00 00 00"), converts("61 00 00 00"));
}

TEST(ToUtf32, FromUtf8NeverAsksThePivot) {
  RecordingLog log;
  EncodingConvert converter;
  EXPECT_EQ(run(&EncodingConvert::EncConvert, converter, 65001, 12001, bytes("61"), log, ""),
            converts("00 00 00 61"));
  EXPECT_EQ(log.lines, (Lines{"open EncConvert verbose=0", "close"}));
}

TEST(ToUtf32, ReplacesIllFormedUtf8WhateverTheErrorAction) {
  for (int action : {0, 1, 2, 6, 7}) {
    EXPECT_EQ(convert(withAction(action), 65001, 12000, "61 80 62"),
              fails("61 00 00 00 FD FF 00 00 62 00 00 00"));
  }
}

TEST(ToUtf32, DropsAnOddByteBehindAMarkOfTheOtherOrder) {
  // With the low byte first it fails, as below.
  EXPECT_EQ(convert(1200, 12000, "FE FF 00 61 00", "'x'"), converts("'x' 61 00 00 00"));
  EXPECT_EQ(convert(1201, 12001, "00 61 00", "'x'"), converts("'x' 00 00 00 61"));
}

TEST(ToUtf32, KeepsTheMarkThatUtf7Encodes) {
  // UTF-7 is no UTF-16 where marks are looked for, and nobody looks again.
  EXPECT_EQ(convert(65000, 12000, "'+/v8-a'"), converts("FF FE 00 00 61 00 00 00"));
}

TEST(ToUtf32, FailsWithNothingWrittenWhereTheWayToUtf8Does) {
  EXPECT_EQ(convert(kNoTable, 12000, "61", "'x'"), fails("'x'"));
  EXPECT_EQ(convert(1200, 12000, "61 00 62", "'x'"), fails("'x'"));
  EXPECT_EQ(convert(12000, 12001, "00 D8 00 00", "'x'"), fails("'x'"));
  EXPECT_EQ(convert(1201, 12000, "FF FE 61 00", "'x'"), fails("'x'"));
  EXPECT_EQ(convert(65000, 12000, "'a' E9", "'x'"), fails("'x'"));
}

TEST(ToUtf32, LosesTheZeroCharacterOfUtf16) {
  EXPECT_EQ(convert(1200, 12000, "61 00 00 00 62 00"), converts("61 00 00 00 62 00 00 00"));
  EXPECT_EQ(convert(1200, 12000, "00 00"), converts(""));
  EXPECT_EQ(convert(65001, 12000, "00"), converts("00 00 00 00"));
}

TEST(ToUtf32, FailsForTheSurrogatesThatUtf8WritesOut) {
  // One replacement for each of the three bytes, none of which can begin a
  // character with the next.
  EXPECT_EQ(convert(1200, 12000, "00 D8"), fails("FD FF 00 00 FD FF 00 00 FD FF 00 00"));
}

TEST(ToUtf16BigEndian, SwapsWhatThePivotGives) {
  EXPECT_EQ(convert(65001, 1201, "61 C3 A9", "'x'"), converts("'x' 00 61 00 E9"));
  EXPECT_EQ(convert(1200, 1201, "61 00 3D D8 00 DE"), converts("00 61 D8 3D DE 00"));
  EXPECT_EQ(convert(12000, 1201, "00 F6 01 00"), converts("D8 3D DE 00"));
  EXPECT_EQ(convert(12001, 1201, "00 01 F6 00"), converts("D8 3D DE 00"));
  EXPECT_EQ(convert(55000, 1201, "1B 65"), converts("20 AC"));
}

TEST(ToUtf16BigEndian, DropsTheMark) {
  EXPECT_EQ(convert(65001, 1201, "EF BB BF 61"), converts("00 61"));
  EXPECT_EQ(convert(1200, 1201, "FF FE 61 00"), converts("00 61"));
  EXPECT_EQ(convert(1200, 1201, "FF FE"), converts(""));
}

TEST(ToUtf16BigEndian, SwapsATextWithTheOtherMarkToo) {
  EXPECT_EQ(convert(1200, 1201, "FE FF 00 61"), converts("61 00"));
}

TEST(ToUtf16BigEndian, DropsAnOddByte) {
  EXPECT_EQ(convert(1200, 1201, "61 00 62"), converts("00 61"));
  EXPECT_EQ(convert(1200, 1201, "61", "'x'"), converts("'x'"));
  EXPECT_EQ(convert(1200, 1201, "FF FE 61", "'x'"), converts("'x'"));
}

TEST(ToUtf16BigEndian, IsTrueEvenWhereThePivotFails) {
  EXPECT_EQ(convert(kNoTable, 1201, "61", "'x'"), convertsWithError("'x'"));
  EXPECT_EQ(convert(12000, 1201, "61 00 00 00 00 D8 00 00"), convertsWithError("00 61 FF FD"));
  EXPECT_EQ(convert(12000, 1201, "61 00 00 00 62"), convertsWithError("00 61"));
  EXPECT_EQ(convert(65000, 1201, "'a+AOk-'"), convertsWithError("00 61 00 E9"));
}

TEST(ToUtf16BigEndian, RecordsLittleEndianAsTheDestination) {
  EncodingConvert converter;
  convert(converter, 65001, 1201, "61");
  EXPECT_EQ(converter.m_fromCodePage, 65001);
  EXPECT_EQ(converter.m_toCodePage, 1200);
}

TEST(ToUtf16BigEndian, AppliesTheErrorActionBeforeTheSwap) {
  EXPECT_EQ(convert(65001, 1201, "61 80 62"), convertsWithError("00 61 00 62"));
  EXPECT_EQ(convert(withSubstitute("3F 00"), 65001, 1201, "61 80 62"),
            convertsWithError("00 61 00 3F 00 62"));
  EXPECT_EQ(convert(withAction(2), 65001, 1201, "61 80"),
            convertsWithError("00 61 23 26 38 78 3B 30"));
  // A raw byte shifts what follows by half a unit.
  EXPECT_EQ(convert(withAction(7), 65001, 1201, "61 80 62"), convertsWithError("00 61 62 80"));
  EXPECT_EQ(convert(withAlternate(65001), 65001, 1201, "61 80 62"), converts("00 61 62 80"));
  EXPECT_EQ(convert(withAlternate(1200), 65001, 1201, "61 80 62"),
            convertsWithError("00 61 00 62"));
}

TEST(ToIso2022Japanese, WrapsShiftJis) {
  for (int to : {50220, 50221, 50222}) {
    EXPECT_EQ(convert(932, to, "'a' 82 A0 'b'", "'x'"),
              converts("'xa' 1B 24 42 24 22 1B 28 42 'b'"));
  }
}

TEST(ToIso2022Japanese, FailsWithNothingWrittenWhereThePivotDoes) {
  for (int to : {50220, 50221, 50222}) {
    EXPECT_EQ(convert(kNoTable, to, "61", "'x'"), fails("'x'"));
  }
}

TEST(ToIso2022Korean, WrapsKsc) {
  EXPECT_EQ(convert(949, 50225, "'a' B0 A1 0A 'b'", "'x'"),
            converts("'x' 1B 24 29 43 'a' 0E 30 21 0F 0A 'b'"));
}

TEST(ToIso2022Korean, FailsWithNothingWrittenWhereThePivotDoes) {
  EXPECT_EQ(convert(kNoTable, 50225, "61", "'x'"), fails("'x'"));
}

TEST(ToAnythingElse, IsLeftToThePivot) {
  EXPECT_EQ(convert(65001, 1200, "61 C3 A9", "'x'"), converts("'x' 61 00 E9 00"));
  EXPECT_EQ(convert(1200, 65001, "61 00 E9 00", "'x'"), converts("'xa' C3 A9"));
  EXPECT_EQ(convert(65001, 55000, "61 E2 82 AC", "'x'"), converts("'xa' 1B 65"));
  EXPECT_EQ(convert(kNoTable, kNoTableEither, "61", "'x'"), fails("'x'"));
}

TEST(ToAnythingElse, KeepsWhatAFailedConversionWrote) {
  EXPECT_EQ(convert(1200, 65001, "61 00 62", "'x'"), fails("'xa'"));
  EXPECT_EQ(convert(1201, 1200, "00 61 00 62", "'x'"), fails("'x' 61 00 62 00"));
  EXPECT_EQ(convert(65000, 1200, "'ab'", "'x'"), fails("'x' 61 00 62 00"));
}

TEST(Preamble, IsTheMarkOfTheDestination) {
  EXPECT_EQ(convertWithPreamble(65001, 1200, "61", "'x'"), converts("'x' FF FE 61 00"));
  EXPECT_EQ(convertWithPreamble(65001, 1201, "61", "'x'"), converts("'x' FE FF 00 61"));
  EXPECT_EQ(convertWithPreamble(1200, 65001, "61 00", "'x'"), converts("'x' EF BB BF 61"));
}

TEST(Preamble, IsNothingForAllOthers) {
  for (int to : {12000, 65005}) {
    EXPECT_EQ(convertWithPreamble(65001, to, "61"), converts("61 00 00 00"));
  }
  for (int to : {12001, 65006}) {
    EXPECT_EQ(convertWithPreamble(65001, to, "61"), converts("00 00 00 61"));
  }
  for (int to : {55000, 65000}) EXPECT_EQ(convertWithPreamble(65001, to, "61"), converts("61"));
  EXPECT_EQ(convertWithPreamble(20127, 1252, "61"), converts("61"));
  EXPECT_EQ(convertWithPreamble(932, 50220, "61"), converts("61"));
  for (int to : {37, 932, 1202, 20, kNoTable, -1}) {
    EXPECT_EQ(convertWithPreamble(65001, to, ""), converts(""));
  }
}

TEST(Preamble, IsWrittenWhateverFollows) {
  const struct {
    int to;
    const char* mark;
  } rows[] = {{1200, "FF FE"}, {1201, "FE FF"}, {65001, "EF BB BF"}};
  for (const auto& row : rows) {
    const std::string mark = std::string(row.mark) + " ";
    EXPECT_EQ(convertWithPreamble(55000, row.to, ""), converts(mark));
    EXPECT_EQ(convertWithPreamble(20, row.to, "61"), failsQuietly(mark));
    EXPECT_EQ(convertWithPreamble(20, row.to, "'%PDF-1.4'"), converts(mark + "'%PDF-1.4'"));
    EXPECT_EQ(convertWithPreamble(row.to, row.to, mark + "61"), converts(mark + mark + "61"));
    EXPECT_EQ(convertWithPreamble(row.to, 0, mark + "61"), converts(mark + mark + "61"));
    EXPECT_EQ(convertWithPreamble(0, row.to, "61"), converts(mark + "61"));
  }
  EXPECT_EQ(convertWithPreamble(kNoTable, 1200, "61"), fails("FF FE"));
  EXPECT_EQ(convertWithPreamble(kNoTable, 1201, "61"), convertsWithError("FE FF"));
  EXPECT_EQ(convertWithPreamble(kNoTable, 65001, "61"), fails("EF BB BF"));
}

TEST(Preamble, IsWrittenForNoInputAtAll) {
  NullLog log;
  DataBuffer out;
  EncodingConvert converter;
  converter.m_hadError = true;
  EXPECT_TRUE(converter.EncConvertWithPreamble(65001, 1200, nullptr, 3, out, log));
  EXPECT_EQ(hex(out), "FF FE");
  EXPECT_FALSE(converter.m_hadError);
}

TEST(Preamble, IsNothingForTwoPagesOfZero) {
  EXPECT_EQ(convertWithPreamble(0, 0, "61"), converts("61"));
}

TEST(Preamble, OfUtf8FallsToTheClearingOfNonAscii) {
  EXPECT_EQ(convertWithPreamble(20127, 65001, "61 E9"), converts("61"));
}

TEST(Preamble, StandsBesideTheErrorsOfTheText) {
  EXPECT_EQ(convertWithPreamble(withSubstitute("3F 00"), 65001, 1200, "61 80"),
            convertsWithError("FF FE 61 00 3F 00"));
}

TEST(Reconversion, DecidesTheErrorFlagOfTheConversionAround) {
  // Copied as it stands: nothing was lost, says the inner conversion.
  EXPECT_EQ(convert(withAlternate(65001), 65001, 1200, "61 80 62"), converts("61 00 80 62 00"));
  EXPECT_EQ(convert(withAlternate(1200), 65001, 1200, "61 80 62"),
            convertsWithError("61 00 62 00"));
  EXPECT_EQ(convert(withAlternate(0), 65001, 1200, "61 80 62"), convertsWithError("61 00 62 00"));
  EXPECT_EQ(convert(withAlternate(20), 65001, 1200, "61 80 62"), convertsWithError("61 00 62 00"));
  EXPECT_EQ(convert(withAlternate(kNoTable), 65001, 1200, "61 80 62 FF"),
            convertsWithError("61 00 62 00"));
  EXPECT_EQ(convert(withAlternate(12000), 65001, 1200, "61 80 62"),
            convertsWithError("61 00 FD FF 00 00 62 00"));
}

}  // namespace
