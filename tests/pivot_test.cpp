#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;

struct Case {
  int from;
  int to;
  const char* input;
  Outcome expected;
};

template <std::size_t n>
void expectCases(const Case (&cases)[n]) {
  for (const Case& row : cases) {
    EXPECT_EQ(pivot(row.from, row.to, row.input), row.expected)
        << row.from << " to " << row.to << ": " << row.input;
  }
}

TEST(PivotOfNothing, IsTrueWithNothingLogged) {
  RecordingLog log(true);
  DataBuffer out = bufferOf("61");
  EncodingConvert converter;
  converter.m_hadError = true;
  const unsigned char byte = 0x41;
  EXPECT_TRUE(converter.convert_a(65001, 1200, nullptr, 4, out, log));
  EXPECT_TRUE(converter.convert_a(kNoTable, 65001, &byte, 0, out, log));
  EXPECT_EQ(hex(out), "61");
  EXPECT_TRUE(converter.m_hadError);
  EXPECT_EQ(log.lines, Lines());
}

TEST(ByteOrderMark, OfUtf8IsSkippedOnce) {
  expectCases({
      {65001, 1200, "EF BB BF", converts("")},
      {65001, 1200, "EF BB BF 61", converts("61 00")},
      {65001, 1200, "EF BB BF EF BB BF 61", converts("FF FE 61 00")},
      {65001, 1200, "61 EF BB BF", converts("61 00 FF FE")},
      {65001, 65001, "EF BB BF 80", converts("80")},
      {65001, 55000, "EF BB BF 61", converts("61")},
      {65001, 12000, "EF BB BF 61", converts("61 00 00 00")},
      {65001, kNoTable, "EF BB BF", converts("")},
      {65001, 65001, "EF BB", converts("EF BB")},
      {65001, 65001, "EF BB BE", converts("EF BB BE")},
      {65001, 65001, "EE BB BF", converts("EE BB BF")},
      {65001, 65001, "EF BA BF", converts("EF BA BF")},
  });
}

TEST(ByteOrderMark, OfUtf16OverridesTheOrderOfTheNumber) {
  expectCases({
      {1200, 65001, "FF FE 41 00", converts("41")},
      {1200, 65001, "FE FF 00 41", converts("41")},
      {1201, 65001, "FE FF 00 41", converts("41")},
      {1200, 65001, "41 00", converts("41")},
      {1201, 65001, "00 41", converts("41")},
      {1200, 65001, "FF FE", converts("")},
      {1200, 65001, "FE FF", converts("")},
      {1201, 65001, "FF FE", converts("")},
      {1201, 65001, "FE FF", converts("")},
      {1200, 65001, "FF FE FF FE 41 00", converts("EF BB BF 41")},
      {1200, 65001, "FE FF FE FF 00 41", converts("EF BB BF 41")},
      {1200, 65001, "FF FE FE FF", converts("EF BF BE")},
      {1200, 65001, "41 00 FF FE", converts("41 EF BB BF")},
      {1200, 65001, "FF 41", converts("E4 87 BF")},
  });
}

TEST(ByteOrderMark, LeavesABigEndianNumberWithoutARoute) {
  expectCases({
      {1201, 65001, "FF FE 41 00", failsQuietly()},
      {1201, 1200, "FF FE 41 00", failsQuietly()},
      {1201, 12000, "FF FE 41 00", failsQuietly()},
      {1201, kNoTable, "FF FE 41 00", failsQuietly()},
      {1201, 1201, "FF FE 41 00", converts("41 00")},
  });
}

TEST(ByteOrderMark, OfUtf32OverridesTheOrderOfTheNumber) {
  for (int from : {12000, 12001, 65005, 65006}) {
    SCOPED_TRACE(from);
    EXPECT_EQ(pivot(from, 65001, "FF FE 00 00 41 00 00 00"), converts("41"));
    EXPECT_EQ(pivot(from, 65001, "00 00 FE FF 00 00 00 41"), converts("41"));
    EXPECT_EQ(pivot(from, 65001, "FF FE 00 00"), converts(""));
    EXPECT_EQ(pivot(from, 65001, "00 00 FE FF"), converts(""));
    EXPECT_EQ(pivot(from, 65001, "FF FE 00 00 FF FE 00 00"), converts("EF BB BF"));
    EXPECT_EQ(pivot(from, 65001, "00 00 FE FF 00 00 FE FF"), converts("EF BB BF"));
    EXPECT_EQ(pivot(from, from, "FF FE 00 00 41"), converts("41"));
    EXPECT_EQ(pivot(from, from, "00 00 FE FF 41"), converts("41"));
  }
  for (int from : {12000, 65005}) {
    EXPECT_EQ(pivot(from, 65001, "41 00 00 00"), converts("41")) << from;
  }
  for (int from : {12001, 65006}) {
    EXPECT_EQ(pivot(from, 65001, "00 00 00 41"), converts("41")) << from;
  }
}

TEST(ByteOrderMark, IsNotLookedForInOtherEncodings) {
  expectCases({
      {20127, 28591, "EF BB BF 41", converts("EF BB BF 41")},
      {20127, 1252, "FF FE 41", converts("FF FE 41")},
      {932, 932, "EF BB BF", converts("EF BB BF")},
      {65000, 65000, "FF FE 00 00", converts("FF FE 00 00")},
      {1200, 1200, "EF BB BF 41", converts("EF BB BF 41")},
      {65001, 65001, "FF FE 41", converts("FF FE 41")},
      {12000, 12000, "FF FE 41 00", converts("FF FE 41 00")},
      {12001, 12001, "FE FF 00 41", converts("FE FF 00 41")},
  });
}

TEST(EqualPagesAtThePivot, CopyTheTextWithoutItsMark) {
  expectCases({
      {1200, 1200, "FF FE 41 00", converts("41 00")},
      {1200, 1200, "FE FF 00 41", converts("00 41")},
      {1200, 1200, "41", converts("41")},
      {1200, 1200, "FF", converts("FF")},
      {1200, 1200, "41 00 42", converts("41 00 42")},
      {1201, 1201, "FE FF 00 41 42", converts("00 41 42")},
      {1201, 1201, "00", converts("00")},
      {12000, 12000, "00 D8 00 00 01", converts("00 D8 00 00 01")},
      {55000, 55000, "FF", converts("FF")},
      {20127, 20127, "E9", converts("E9")},
      {kNoTable, kNoTable, "E9", converts("E9")},
      {20, 20, "E9", converts("E9")},
  });
}

TEST(ShortInput, OfUtf16IsKeptOrDroppedByItsOrder) {
  expectCases({
      {1200, 65001, "41", failsQuietly()},
      {1200, 65001, "FF", failsQuietly()},
      {1200, 65001, "41 00 42", failsQuietly("41")},
      {1200, 65001, "FF FE 41", failsQuietly()},
      {1201, 65001, "41", converts("")},
      {1201, 65001, "FE", converts("")},
      {1201, 65001, "FE FF 00", converts("")},
      {1200, 65001, "FE FF 00", converts("")},
      {1201, 65001, "00 41 00", converts("41")},
      {1200, 65001, "FE FF 00 41 00", converts("41")},
      {1201, 1200, "41", converts("")},
      {1201, kNoTable, "41", converts("")},
      {1200, kNoTable, "41", failsQuietly()},
  });
}

TEST(ShortInput, OfUtf32IsAnErrorInOneOrderAndDroppedInTheOther) {
  for (int from : {12000, 65005}) {
    SCOPED_TRACE(from);
    EXPECT_EQ(pivot(from, 65001, "41"), failsQuietly());
    EXPECT_EQ(pivot(from, 65001, "41 00 00"), failsQuietly());
    EXPECT_EQ(pivot(from, 65001, "41 00 00 00 42"), failsQuietly("41"));
    EXPECT_EQ(pivot(from, 65001, "41 00 00 00 42 00 00"), failsQuietly("41"));
    EXPECT_EQ(pivot(from, 1200, "41 00 00 00 42"), failsQuietly("41 00"));
    EXPECT_EQ(pivot(from, 65001, "FF FE 00 00 41"), failsQuietly());
    EXPECT_EQ(pivot(from, 65001, "00 00 FE FF 00"), converts(""));
  }
  for (int from : {12001, 65006}) {
    SCOPED_TRACE(from);
    EXPECT_EQ(pivot(from, 65001, "00"), converts(""));
    EXPECT_EQ(pivot(from, 65001, "00 00 00"), converts(""));
    EXPECT_EQ(pivot(from, 1200, "00 00 00"), converts(""));
    EXPECT_EQ(pivot(from, kNoTable, "00 00 00"), converts(""));
    EXPECT_EQ(pivot(from, 65001, "00 00 00 41 00"), converts("41"));
    EXPECT_EQ(pivot(from, 65001, "00 00 00 41 00 00 00"), converts("41"));
    EXPECT_EQ(pivot(from, 1200, "00 00 00 41 00 00"), converts("41 00"));
    EXPECT_EQ(pivot(from, 65001, "00 00 FE FF 00 00"), converts(""));
    EXPECT_EQ(pivot(from, 65001, "FF FE 00 00 41"), failsQuietly());
  }
}

TEST(GsmSource, DecodesByWayOfUtf8) {
  expectCases({
      {55000, 65001, "00 05 1B 65 61", converts("40 C3 A9 E2 82 AC 61")},
      {55000, 1200, "00 05 1B 65 61", converts("40 00 E9 00 AC 20 61 00")},
      {55000, 12000, "05", converts("E9 00 00 00")},
      {55000, 65001, "09", converts("C3 87")},
      {55000, kNoTable, "61", failsQuietly()},
  });
}

TEST(GsmSource, ReportsAnUndecodableByteOnlyOnTheWayToUtf8) {
  expectCases({
      {55000, 65001, "61 80 62", failsQuietly("61 EF BF BD 62")},
      {55000, 1200, "61 80 62", converts("61 00 FD FF 62 00")},
      {55000, 12000, "80", converts("FD FF 00 00")},
  });
}

TEST(GsmDestination, IsReachedByWayOfUtf8) {
  expectCases({
      {65001, 55000, "40 C3 A9 E2 82 AC 61", converts("00 05 1B 65 61")},
      {1200, 55000, "E9 00 AC 20", converts("05 1B 65")},
      {1201, 55000, "00 E9 20 AC", converts("05 1B 65")},
      {1201, 55000, "00 61 00", converts("61")},
      {12000, 55000, "AC 20 00 00", converts("1B 65")},
      {12001, 55000, "00 00 20 AC", converts("1B 65")},
      {65000, 55000, "'+IKw-b'", converts("1B 65 62")},
      {20127, 55000, "61 E9 62", converts("61 62")},
  });
}

TEST(GsmDestination, IsTrueWhateverHasNoPlaceInTheAlphabet) {
  expectCases({
      {65001, 55000, "61 E3 81 82 62", converts("61 3F 62")},
      {65001, 55000, "61 80 62", converts("61 3F 62")},
      {1200, 55000, "42 30", converts("3F")},
  });
}

TEST(GsmDestination, GivesTheWayToUtf8ATextThatHasLostItsMark) {
  // What is left is read in the byte order of the number alone.
  expectCases({
      {1200, 55000, "FF FE 41 00", converts("41")},
      {1201, 55000, "FE FF 00 41", converts("41")},
      {1200, 55000, "FE FF 00 41", converts("3F")},
      {1201, 55000, "FF FE 41 00", converts("3F")},
      {1200, 55000, "FE FF FE FF 00 41", converts("41")},
      {12001, 55000, "FF FE 00 00 41 00 00 00", failsQuietly()},
  });
}

TEST(GsmDestination, FailsWhereTheWayToUtf8Does) {
  expectCases({
      {kNoTable, 55000, "61", failsQuietly()},
      {1200, 55000, "61 00 62", failsQuietly()},
      {12000, 55000, "61 00 00 00 00 D8 00 00", failsQuietly()},
      {65000, 55000, "61 E9", failsQuietly()},
  });
}

TEST(AsciiShortcut, CopiesToTheLatinAndWindowsPages) {
  for (int to = 28591; to <= 28605; ++to) {
    EXPECT_EQ(pivot(20127, to, "61 E9 00 62", "F0"), converts("F0 61 E9 00 62")) << to;
  }
  for (int to = 1250; to <= 1258; ++to) {
    EXPECT_EQ(pivot(20127, to, "61 E9 00 62", "F0"), converts("F0 61 E9 00 62")) << to;
  }
}

TEST(AsciiShortcut, EndsAtThoseRanges) {
  for (int to : {28590, 28606, 1249, 1259, kNoTableEither}) {
    EXPECT_EQ(pivot(20127, to, "61"), failsQuietly()) << to;
  }
}

TEST(AsciiShortcut, ClearsTheWholeOutputOfNonAsciiOnTheWayToUtf8) {
  EXPECT_EQ(pivot(20127, 65001, "61 E9 00 80 62 FF 7F"), converts("61 00 62 7F"));
  EXPECT_EQ(pivot(20127, 65001, "61", "C3 A9 78 FF"), converts("78 61"));
  EXPECT_EQ(pivot(20127, 65001, "80 FF", "C3 A9"), converts(""));
}

TEST(Utf16ToUtf8, IsTheTranscoder) {
  expectCases({
      {1200, 65001, "61 00 E9 00 AC 20 3D D8 00 DE", converts("61 C3 A9 E2 82 AC F0 9F 98 80")},
      {1201, 65001, "00 61 00 E9 20 AC D8 3D DE 00", converts("61 C3 A9 E2 82 AC F0 9F 98 80")},
      {65000, 65001, "'a+AOkgrNg93gA-'", converts("61 C3 A9 E2 82 AC F0 9F 98 80")},
      {1200, 65001, "61 00 00 00 62 00", converts("61 62")},
      {1200, 65001, "00 D8", converts("ED A0 80")},
      {65000, 65001, "'a' E9 'b'", failsQuietly("61 EF BF BD 62")},
  });
}

TEST(Utf8ToUtf16, IsTheTranscoder) {
  expectCases({
      {65001, 1200, "61 C3 A9 E2 82 AC F0 9F 98 80", converts("61 00 E9 00 AC 20 3D D8 00 DE")},
      {65001, 1200, "00", converts("00 00")},
      {65001, 1200, "61 80", convertsWithError("61 00")},
      {12000, 1200, "61 00 00 00 00 F6 01 00", converts("61 00 3D D8 00 DE")},
      {12001, 1200, "00 00 00 61 00 01 F6 00", converts("61 00 3D D8 00 DE")},
      {65005, 1200, "61 00 00 00", converts("61 00")},
      {65006, 1200, "00 00 00 61", converts("61 00")},
      {12000, 1200, "00 D8 00 00", failsQuietly("FD FF")},
      {12001, 1200, "00 11 00 00", failsQuietly("FD FF")},
  });
}

TEST(Utf8ToUtf32, IsLittleEndianOnly) {
  expectCases({
      {65001, 12000, "61 F0 9F 98 80", converts("61 00 00 00 00 F6 01 00")},
      {65001, 12000, "61 80", failsQuietly("61 00 00 00 FD FF 00 00")},
      {12001, 12000, "00 00 00 61", converts("61 00 00 00")},
      {65005, 12000, "61 00 00 00", converts("61 00 00 00")},
      {65006, 12000, "00 01 F6 00", converts("00 F6 01 00")},
      {12001, 12000, "00 00 D8 00 00 00 00 61", failsQuietly("FD FF 00 00 61 00 00 00")},
      {65001, 12001, "61", failsQuietly()},
      {65001, 65005, "61", failsQuietly()},
      {65001, 65006, "61", failsQuietly()},
      {12000, 12001, "61 00 00 00", failsQuietly()},
      {12000, 65005, "61 00 00 00", failsQuietly()},
      {65001, 1201, "61", failsQuietly()},
      {65001, 65000, "61", failsQuietly()},
  });
}

TEST(Utf32ToUtf8, IsItsNormalisedForm) {
  for (int from : {12000, 65005}) {
    EXPECT_EQ(pivot(from, 65001, "61 00 00 00 E9 00 00 00 AC 20 00 00 00 F6 01 00 00 00 00 00"),
              converts("61 C3 A9 E2 82 AC F0 9F 98 80 00"));
    EXPECT_EQ(pivot(from, 65001, "FF DF 00 00 00 00 11 00 FF FF 10 00"),
              failsQuietly("EF BF BD EF BF BD F4 8F BF BF"));
  }
  for (int from : {12001, 65006}) {
    EXPECT_EQ(pivot(from, 65001, "00 00 00 61 00 00 00 E9 00 00 20 AC 00 01 F6 00 00 00 00 00"),
              converts("61 C3 A9 E2 82 AC F0 9F 98 80 00"));
    EXPECT_EQ(pivot(from, 65001, "00 00 DF FF 80 00 00 00 00 10 FF FF"),
              failsQuietly("EF BF BD EF BF BD F4 8F BF BF"));
  }
}

TEST(UnicodeToAPageWithoutATable, Fails) {
  for (int to : {12000, 12001, 65005, 1201, 65000, kNoTable, kNoTableEither}) {
    EXPECT_EQ(pivot(1200, to, "61 00", "'x'"), failsQuietly("'x'")) << to;
  }
  expectCases({
      {1201, kNoTable, "00 61", failsQuietly()},
      {65000, kNoTable, "61", failsQuietly()},
      {65000, 12000, "61", failsQuietly()},
      {65001, kNoTable, "61", failsQuietly()},
      {12000, kNoTable, "61 00 00 00", failsQuietly()},
      {12001, kNoTable, "00 00 00 61", failsQuietly()},
  });
}

TEST(APageWithoutATable, ConvertsToNothingAtAll) {
  for (int to : {1200, 12000, 65001, 1201, 55000, 12001, 1252, kNoTableEither}) {
    EXPECT_EQ(pivot(kNoTable, to, "61 62", "'x'"), failsQuietly("'x'")) << to;
  }
}

TEST(BigEndianToLittleEndian, AppendsTheTextAndFails) {
  expectCases({
      {1201, 1200, "00 61 00 62", failsQuietly("61 00 62 00")},
      {1201, 1200, "FE FF 00 61", failsQuietly("61 00")},
      {1201, 1200, "00 61 00", failsQuietly("61 00")},
      {65000, 1200, "'a+AOk-'", failsQuietly("61 00 E9 00")},
      {1201, 1200, "FE FF", converts("")},
  });
}

TEST(PivotOfLongText, GuessesNoMoreRoomThanABadBeginningIsWorth) {
  NullLog log;
  DataBuffer out;
  EncodingConvert converter;
  converter.setErrorAction(2);
  converter.m_fromCodePage = 65001;
  Bytes text(24 << 20, 0x61);
  std::fill(text.begin(), text.begin() + 8192, 0xFF);
  converter.convert_a(65001, 1252, text.data(), sizeOf(text), out, log);
  EXPECT_GT(out.getSize(), 24U << 20);
  EXPECT_EQ(out.roomFor(64 << 20), nullptr);
}

struct Flags {
  bool emit;
  bool honour;
};

/// The marker flags after `convert_a`, when they were as given before.
std::string flagsAfter(int from, int to, std::string_view input, Flags before) {
  EncodingConvert converter;
  converter.m_emitPassthroughMarkers = before.emit;
  converter.m_honorPassthroughMarkers = before.honour;
  pivot(converter, from, to, input);
  return std::string(converter.m_emitPassthroughMarkers ? "emit" : "-") + " " +
         (converter.m_honorPassthroughMarkers ? "honour" : "-");
}

constexpr Flags kEmit = {true, false};
constexpr Flags kHonour = {false, true};
constexpr Flags kBoth = {true, true};
constexpr Flags kNeither = {false, false};

struct Route {
  int from;
  int to;
  const char* input;
};

TEST(MarkerFlags, AreClearedByTheDirectRoutes) {
  for (const Route& route :
       {Route{1200, 65001, "61 00"}, Route{1200, 65001, "61"}, Route{1201, 65001, "00 61"},
        Route{65000, 65001, "61"}, Route{1200, kNoTable, "61 00"}, Route{65001, 1200, "61"},
        Route{65001, 1200, "80"}, Route{65001, 12000, "61"}, Route{kNoTable, 1200, "61"},
        Route{kNoTable, 12000, "61"}, Route{12000, 1200, "61 00 00 00"},
        Route{1201, 1200, "FF FE 61 00"}, Route{55000, 1200, "61"}, Route{1200, 55000, "61 00"}}) {
    for (const Flags& flags : {kEmit, kHonour, kBoth, kNeither}) {
      EXPECT_EQ(flagsAfter(route.from, route.to, route.input, flags), "- -")
          << route.from << " to " << route.to << ": " << route.input;
    }
  }
}

TEST(MarkerFlags, AreClearedAfterThePivotFromUtf8) {
  for (const Flags& flags : {kEmit, kHonour, kBoth, kNeither}) {
    EXPECT_EQ(flagsAfter(65001, kNoTable, "61", flags), "- -");
    EXPECT_EQ(flagsAfter(65001, kNoTable, "80", flags), "- -");
    EXPECT_EQ(flagsAfter(12000, kNoTable, "61 00 00 00", flags), "- -");
    EXPECT_EQ(flagsAfter(55000, kNoTable, "61", flags), "- -");
  }
}

TEST(MarkerFlags, StayAtTheFirstHalfOfAPivotThatCannotDecode) {
  for (const Flags& flags : {kEmit, kHonour, kBoth, kNeither}) {
    EXPECT_EQ(flagsAfter(kNoTable, 65001, "61", flags), "emit -");
    EXPECT_EQ(flagsAfter(kNoTable, kNoTableEither, "61", flags), "emit -");
    EXPECT_EQ(flagsAfter(kNoTable, 55000, "61", flags), "emit -");
    EXPECT_EQ(flagsAfter(1201, 65001, "FF FE 61 00", flags), "emit -");
    EXPECT_EQ(flagsAfter(1201, 1200, "00 61", flags), "emit -");
    EXPECT_EQ(flagsAfter(65000, 1200, "61", flags), "emit -");
  }
}

TEST(MarkerFlags, AreNotTouchedWhereNoRouteIsTaken) {
  for (const Route& route :
       {Route{65001, 1200, ""}, Route{65001, 1200, "EF BB BF"}, Route{1200, 1200, "61 00"},
        Route{55000, 65001, "61"}, Route{65001, 55000, "61"}, Route{20127, 65001, "61"},
        Route{20127, 1252, "61"}, Route{1201, 65001, "61"}, Route{12001, 65001, "00 00 00"},
        Route{12000, 65001, "61 00 00 00"}, Route{12001, 65001, "00 00 00 61"}}) {
    EXPECT_EQ(flagsAfter(route.from, route.to, route.input, kEmit), "emit -")
        << route.from << " to " << route.to << ": " << route.input;
    EXPECT_EQ(flagsAfter(route.from, route.to, route.input, kHonour), "- honour")
        << route.from << " to " << route.to << ": " << route.input;
  }
}

TEST(MarkerFlags, DoNotReachTheDirectRoutes) {
  EncodingConvert emitting = withAction(7);
  emitting.m_emitPassthroughMarkers = true;
  EXPECT_EQ(pivot(emitting, 65001, 1200, "61 80 62"), convertsWithError("61 00 80 62 00"));

  EncodingConvert honouring;
  honouring.m_honorPassthroughMarkers = true;
  EXPECT_EQ(pivot(honouring, 1200, 65001, "EF FD 01 41"), converts("EF B7 AF E4 84 81"));
}

TEST(PivotErrorFlag, IsLeftToTheDispatcher) {
  EncodingConvert converter;
  EXPECT_EQ(pivot(converter, kNoTable, 65001, "61"), failsQuietly());
  converter.m_hadError = true;
  EXPECT_EQ(pivot(converter, 65001, 1200, "61"), convertsWithError("61 00"));
}

TEST(PivotErrorFlag, IsSetByTheTranscoderInside) {
  EXPECT_EQ(pivot(65001, 1200, "80"), convertsWithError(""));
  // The bad byte leaves nothing to encode, and encoding nothing succeeds.
  EXPECT_EQ(pivot(65001, kNoTable, "80"), convertsWithError(""));
  EXPECT_EQ(pivot(65001, kNoTable, "80 61"), fails(""));
}

/// The lines of one conversion, less the contexts of the table drivers.
Lines pivotLines(bool verbose, int from, int to, std::string_view input) {
  RecordingLog log(verbose);
  EncodingConvert converter;
  run(&EncodingConvert::convert_a, converter, from, to, bytes(input), log, "");
  return log.linesOutsideTableDrivers();
}

TEST(PivotLog, NamesTheRouteWhenVerbose) {
  const Lines transcoded = {"open convert_a verbose=1", "info: converting from utf-16 to utf-8",
                            "open convertFromUnicode verbose=1", "close", "close"};
  EXPECT_EQ(pivotLines(true, 1200, 65001, "61 00"), transcoded);
  EXPECT_EQ(pivotLines(true, 1201, 65001, "00 61"), transcoded);
  EXPECT_EQ(pivotLines(true, 65000, 65001, "61"), transcoded);

  const Lines toUtf16 = {"open convert_a verbose=1", "info: converting from utf-8 to utf-16",
                         "open cv_utf8_to_utf16 verbose=1", "close", "close"};
  EXPECT_EQ(pivotLines(true, 65001, 1200, "61"), toUtf16);
  EXPECT_EQ(pivotLines(true, 12000, 1200, "61 00 00 00"), toUtf16);

  const Lines toUtf32 = {"open convert_a verbose=1", "info: converting from utf-8 to utf-32",
                         "close"};
  EXPECT_EQ(pivotLines(true, 65001, 12000, "61"), toUtf32);
  EXPECT_EQ(pivotLines(true, 12001, 12000, "00 00 00 61"), toUtf32);

  const Lines fromUtf8 = {"open convert_a verbose=1",
                          "info: Converting from utf-8 using utf-16 as a pivot table...",
                          "open cv_utf8_to_utf16 verbose=1", "close", "close"};
  EXPECT_EQ(pivotLines(true, 65001, kNoTable, "61"), fromUtf8);
  EXPECT_EQ(pivotLines(true, 12000, kNoTable, "61 00 00 00"), fromUtf8);

  const Lines toUtf8 = {"open convert_a verbose=1",
                        "info: Converting to utf-8 using utf-16 as a pivot table...",
                        "error: convertToUnicodeHC failed.", "close"};
  EXPECT_EQ(pivotLines(true, kNoTable, 65001, "61"), toUtf8);
  EXPECT_EQ(pivotLines(true, 1201, 65001, "FF FE 61 00"), toUtf8);

  const Lines neither = {"open convert_a verbose=1",
                         "info: Converting by using utf-16 as a pivot table...", "close"};
  EXPECT_EQ(pivotLines(true, kNoTable, kNoTableEither, "61"), neither);
  EXPECT_EQ(pivotLines(true, 1201, 1200, "00 61"), neither);
  EXPECT_EQ(pivotLines(true, 65000, 1200, "61"), neither);
}

TEST(PivotLog, HasNoLineForTheOtherRoutes) {
  const Lines bare = {"open convert_a verbose=1", "close"};
  for (const Route& route :
       {Route{65001, 1200, "EF BB BF"}, Route{65001, 65001, "61"}, Route{55000, 65001, "61"},
        Route{55000, 65001, "80"}, Route{65001, 55000, "61"}, Route{20127, 65001, "61"},
        Route{20127, 1252, "61"}, Route{1201, 65001, "61"}, Route{12001, 65001, "00 00 00"},
        Route{12000, 65001, "61 00 00 00"}, Route{12001, 65001, "00 00 00 61"},
        Route{1200, kNoTable, "61 00"}, Route{1200, 12000, "61 00"}, Route{kNoTable, 1200, "61"},
        Route{kNoTable, 12000, "61"}}) {
    EXPECT_EQ(pivotLines(true, route.from, route.to, route.input), bare)
        << route.from << " to " << route.to << ": " << route.input;
  }
}

TEST(PivotLog, NestsTheSecondHalfOfAGsmRoute) {
  EXPECT_EQ(pivotLines(true, 55000, 1200, "61"),
            (Lines{"open convert_a verbose=1", "open convert_a verbose=1",
                   "info: converting from utf-8 to utf-16", "open cv_utf8_to_utf16 verbose=1",
                   "close", "close", "close"}));
  EXPECT_EQ(pivotLines(true, 1200, 55000, "61 00"),
            (Lines{"open convert_a verbose=1", "open convert_a verbose=1",
                   "info: converting from utf-16 to utf-8", "open convertFromUnicode verbose=1",
                   "close", "close", "close"}));
  EXPECT_EQ(pivotLines(true, kNoTable, 55000, "61"),
            (Lines{"open convert_a verbose=1", "open convert_a verbose=1",
                   "info: Converting to utf-8 using utf-16 as a pivot table...",
                   "error: convertToUnicodeHC failed.", "close", "close"}));
}

TEST(PivotLog, HasOnlyContextsWhenNotVerbose) {
  EXPECT_EQ(
      pivotLines(false, 1200, 65001, "61 00"),
      (Lines{"open convert_a verbose=0", "open convertFromUnicode verbose=0", "close", "close"}));
  EXPECT_EQ(
      pivotLines(false, 65001, 1200, "61"),
      (Lines{"open convert_a verbose=0", "open cv_utf8_to_utf16 verbose=0", "close", "close"}));
  EXPECT_EQ(
      pivotLines(false, 65001, kNoTable, "61"),
      (Lines{"open convert_a verbose=0", "open cv_utf8_to_utf16 verbose=0", "close", "close"}));
  for (const Route& route :
       {Route{65001, 12000, "61"}, Route{kNoTable, 65001, "61"}, Route{kNoTable, 1200, "61"},
        Route{kNoTable, kNoTableEither, "61"}, Route{1201, 1200, "00 61"}}) {
    EXPECT_EQ(pivotLines(false, route.from, route.to, route.input),
              (Lines{"open convert_a verbose=0", "close"}))
        << route.from << " to " << route.to;
  }
}

}  // namespace
