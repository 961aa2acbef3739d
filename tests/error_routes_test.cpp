// Every error action on every route: what a single-byte, a multibyte or a
// Unicode source cannot be read as, and what has no place in the destination.

#include <gtest/gtest.h>

#include "tests/helpers/Conversion.h"

namespace {

using namespace quorvel_test;
using quorvel::EncodingConvert;

/// A conversion with something in it that cannot be converted, and what becomes
/// of it under each error action.
struct Route {
  int from;
  int to;
  const char* input;
  const char* substitution;  ///< for action 1
  int alternate;             ///< for action 6, besides the destination itself

  Outcome dropped;        ///< action 0
  Outcome substituted;    ///< action 1
  Outcome shown;          ///< action 2
  Outcome passedOver;     ///< actions 3, 4, 5, 9 and whatever else
  Outcome reconverted;    ///< action 6 to the destination
  Outcome alternated;     ///< action 6 to the alternate
  Outcome passedThrough;  ///< action 7
  Outcome widened;        ///< action 8
};

void expectEveryAction(const Route& route) {
  const auto expect = [&route](EncodingConvert converter, const Outcome& expected) {
    EXPECT_EQ(convert(converter, route.from, route.to, route.input), expected)
        << route.from << " to " << route.to << ": " << route.input << ", action "
        << converter.m_errorAction << ", alternate " << converter.m_altDestCodepage;
  };
  expect(withAction(0), route.dropped);
  expect(withSubstitute(route.substitution), route.substituted);
  expect(withSubstitute(""), route.passedOver);
  expect(withAction(2), route.shown);
  for (int action : {3, 4, 5, 9, 10, -1}) expect(withAction(action), route.passedOver);
  expect(withAlternate(0), route.reconverted);
  expect(withAlternate(route.alternate), route.alternated);
  expect(withAction(7), route.passedThrough);
  expect(withAction(8), route.widened);
}

template <std::size_t count>
void expectEveryAction(const Route (&routes)[count]) {
  for (const Route& route : routes) expectEveryAction(route);
}

// --- Bytes that cannot be read ----------------------------------------------

// 81 stands for nothing in 1252. Reconverted from 1252 to 1252 it is copied,
// which is no error.
TEST(EveryErrorAction, TakesAnUnmappedByteOfASingleBytePage) {
  expectEveryAction({
      {.from = 1252,
       .to = 1200,
       .input = "61 81 62",
       .substitution = "3F 00",
       .alternate = 1252,
       .dropped = convertsWithError("61 00 62 00"),
       .substituted = convertsWithError("61 00 3F 00 62 00"),
       .shown = convertsWithError("61 00 '&#x81;' 62 00"),
       .passedOver = convertsWithError("61 00 62 00"),
       .reconverted = convertsWithError("61 00 62 00"),
       .alternated = converts("61 00 81 62 00"),
       .passedThrough = convertsWithError("61 00 81 62 00"),
       .widened = convertsWithError("61 00 81 00 62 00")},
      // The marker FD EF and its count are characters to the way out to UTF-8,
      // which looks for EF FD.
      {.from = 1252,
       .to = 65001,
       .input = "61 81 62",
       .substitution = "3F",
       .alternate = 1252,
       .dropped = convertsWithError("61 62"),
       .substituted = convertsWithError("61 EE BF BD E3 BC 81 62"),
       .shown = fails("61 EE BF BD E2 98 85 E7 A0 A3 E3 84 B8 E6 88 BB"),
       .passedOver = convertsWithError("61 62"),
       .reconverted = convertsWithError("61 62"),
       .alternated = fails("61 E6 8A 81"),
       .passedThrough = convertsWithError("61 EE BF BD E8 84 81 62"),
       .widened = convertsWithError("61 C2 81 62")},
      // Five bytes are announced for the six of the reference; ";b" is read as
      // U+623B, which has no place in either page. Nor has U+0081 in 437.
      {.from = 1252,
       .to = 437,
       .input = "61 81 62",
       .substitution = "3F",
       .alternate = 1252,
       .dropped = convertsWithError("61 62"),
       .substituted = convertsWithError("61 3F 62"),
       .shown = fails("'a&#x81'"),
       .passedOver = convertsWithError("61 62"),
       .reconverted = convertsWithError("61 62"),
       .alternated = fails("61"),
       .passedThrough = convertsWithError("61 81 62"),
       .widened = fails("61 62")},
  });
}

// 81 20 is no pair of 936, and 81 no character. Dropped, it is one byte; any
// other action takes both.
TEST(EveryErrorAction, TakesAnUnknownPairOfADoubleBytePage) {
  expectEveryAction({
      {.from = 936,
       .to = 1200,
       .input = "61 81 20 62",
       .substitution = "3F 00",
       .alternate = 936,
       .dropped = convertsWithError("61 00 20 00 62 00"),
       .substituted = convertsWithError("61 00 3F 00 62 00"),
       .shown = convertsWithError("61 00 '&#x8120;' 62 00"),
       .passedOver = convertsWithError("61 00 62 00"),
       .reconverted = convertsWithError("61 00 20 00 62 00"),
       .alternated = converts("61 00 81 20 62 00"),
       .passedThrough = convertsWithError("61 00 81 20 62 00"),
       .widened = convertsWithError("61 00 62 00")},
      {.from = 936,
       .to = 65001,
       .input = "61 81 20 62",
       .substitution = "3F",
       .alternate = 936,
       .dropped = convertsWithError("61 20 62"),
       .substituted = convertsWithError("61 EE BF BD E3 BC 81 62"),
       .shown = fails("61 EE BF BD E2 98 86 E7 A0 A3 E3 84 B8 E3 80 B2 E6 88 BB"),
       .passedOver = convertsWithError("61 62"),
       .reconverted = fails("61 E6 88 A0"),
       .alternated = converts("61 E2 82 81 62"),
       .passedThrough = fails("61 EE BF BD E8 84 82 E6 88 A0"),
       .widened = convertsWithError("61 62")},
      // Six is no count of raw bytes: it is read with the "&" as U+2606, which
      // 936 has at A1EE; showing that clears the flags for the rest.
      {.from = 936,
       .to = 1252,
       .input = "61 81 20 62",
       .substitution = "3F",
       .alternate = 936,
       .dropped = convertsWithError("61 20 62"),
       .substituted = convertsWithError("61 3F 62"),
       .shown = fails("'a&#xA1EE;&#x2378;&#x3831;&#x3230;&#x3B62;'"),
       .passedOver = convertsWithError("61 62"),
       .reconverted = fails("61"),
       .alternated = fails("61 62"),
       // Behind the two raw bytes "b" stands at an odd position, and ends
       // behind the last whole unit.
       .passedThrough = convertsWithError("61 81 20"),
       .widened = convertsWithError("61 62")},
  });
}

// The same bytes, and in 1361 84 20: the errors of these two cover one byte.
TEST(EveryErrorAction, TakesOneByteOfOtherMultibytePages) {
  expectEveryAction({
      {.from = 52936,
       .to = 1200,
       .input = "61 81 20 62",
       .substitution = "3F 00",
       .alternate = 52936,
       .dropped = convertsWithError("61 00 20 00 62 00"),
       .substituted = convertsWithError("61 00 3F 00 20 00 62 00"),
       .shown = convertsWithError("61 00 '&#x81;' 20 00 62 00"),
       .passedOver = convertsWithError("61 00 20 00 62 00"),
       .reconverted = convertsWithError("61 00 20 00 62 00"),
       .alternated = converts("61 00 81 20 00 62 00"),
       .passedThrough = convertsWithError("61 00 81 20 00 62 00"),
       .widened = convertsWithError("61 00 81 00 20 00 62 00")},
      {.from = 1361,
       .to = 1200,
       .input = "61 84 20 62",
       .substitution = "3F 00",
       .alternate = 1361,
       .dropped = convertsWithError("61 00 20 00 62 00"),
       .substituted = convertsWithError("61 00 3F 00 20 00 62 00"),
       .shown = convertsWithError("61 00 '&#x84;' 20 00 62 00"),
       .passedOver = convertsWithError("61 00 20 00 62 00"),
       .reconverted = convertsWithError("61 00 20 00 62 00"),
       .alternated = converts("61 00 84 20 00 62 00"),
       .passedThrough = convertsWithError("61 00 84 20 00 62 00"),
       .widened = convertsWithError("61 00 84 00 20 00 62 00")},
  });
}

TEST(EveryErrorAction, TakesALeadByteAtTheVeryEndAsASingleByte) {
  expectEveryAction({
      {.from = 936,
       .to = 1200,
       .input = "61 81",
       .substitution = "3F 00",
       .alternate = 936,
       .dropped = convertsWithError("61 00"),
       .substituted = convertsWithError("61 00 3F 00"),
       .shown = convertsWithError("61 00 '&#x81;'"),
       .passedOver = convertsWithError("61 00"),
       .reconverted = convertsWithError("61 00"),
       .alternated = converts("61 00 81"),
       .passedThrough = convertsWithError("61 00 81"),
       .widened = convertsWithError("61 00 81 00")},
      {.from = 932,
       .to = 65001,
       .input = "61 82",
       .substitution = "3F",
       .alternate = 932,
       .dropped = convertsWithError("61"),
       .substituted = convertsWithError("61 EE BF BD E3 BC 81"),
       .shown = fails("61 EE BF BD E2 98 85 E7 A0 A3 E3 88 B8"),
       .passedOver = convertsWithError("61"),
       .reconverted = convertsWithError("61"),
       .alternated = fails("61"),
       .passedThrough = convertsWithError("61 EE BF BD E8 88 81"),
       .widened = convertsWithError("61 C2 82")},
  });
}

// E3 announces three bytes: every action but 0 takes the letter behind the two
// that are there as well.
TEST(EveryErrorAction, TakesIllFormedUtf8) {
  expectEveryAction({
      {.from = 65001,
       .to = 1200,
       .input = "61 80 62",
       .substitution = "3F 00",
       .alternate = 65001,
       .dropped = convertsWithError("61 00 62 00"),
       .substituted = convertsWithError("61 00 3F 00 62 00"),
       .shown = convertsWithError("61 00 '&#x80;' 62 00"),
       .passedOver = convertsWithError("61 00 62 00"),
       .reconverted = convertsWithError("61 00 62 00"),
       .alternated = converts("61 00 80 62 00"),
       .passedThrough = convertsWithError("61 00 80 62 00"),
       .widened = convertsWithError("61 00 62 00")},
      {.from = 65001,
       .to = 1200,
       .input = "61 E3 81 62 63",
       .substitution = "3F 00",
       .alternate = 65001,
       .dropped = convertsWithError("61 00 62 00 63 00"),
       .substituted = convertsWithError("61 00 3F 00 63 00"),
       .shown = convertsWithError("61 00 '&#xE38162;' 63 00"),
       .passedOver = convertsWithError("61 00 63 00"),
       .reconverted = convertsWithError("61 00 62 00 63 00"),
       .alternated = converts("61 00 E3 81 62 63 00"),
       .passedThrough = convertsWithError("61 00 E3 81 62 63 00"),
       .widened = convertsWithError("61 00 63 00")},
      {.from = 65001,
       .to = 1252,
       .input = "61 80 62",
       .substitution = "3F",
       .alternate = 65001,
       .dropped = convertsWithError("61 62"),
       .substituted = convertsWithError("61 3F 62"),
       .shown = fails("'a&#x80&#xE688BB;'"),
       .passedOver = convertsWithError("61 62"),
       .reconverted = convertsWithError("61 62"),
       .alternated = fails("61 E6 8A 80"),
       .passedThrough = convertsWithError("61 80 62"),
       .widened = convertsWithError("61 62")},
      {.from = 65001,
       .to = 932,
       .input = "61 E3 81 62 63",
       .substitution = "3F",
       .alternate = 65001,
       .dropped = convertsWithError("61 62 63"),
       .substituted = convertsWithError("61 3F 63"),
       // Seven is no count: U+2607 and U+7823, then "E3" as U+3345, "81" as
       // U+3138, "62" as U+3236 and ";c" as U+633B, all without a code.
       .shown = fails("'a&#xE29887;&#x2378;&#x4533;&#x3831;&#x3632;&#x3B63;'"),
       .passedOver = convertsWithError("61 63"),
       .reconverted = fails("61"),
       // U+81E3 has one, U+6362 has not.
       .alternated = fails("61 90 62 E6 8D A2"),
       .passedThrough = convertsWithError("61 E3 81 62 63"),
       .widened = convertsWithError("61 63")},
  });
}

// --- Characters that have no place in the destination -----------------------

// U+00E9 in 932 and U+3042 in 1252, twice each: what actions 2 and 7 do for the
// first clears the flags, and the second is shown as the unit itself.
TEST(EveryErrorAction, TakesACharacterThatTheDestinationLacks) {
  expectEveryAction({
      {.from = 1252,
       .to = 932,
       .input = "61 E9 E9 62",
       .substitution = "3F",
       .alternate = 1252,
       .dropped = fails("61 62"),
       .substituted = fails("61 3F 3F 62"),
       .shown = fails("'a&#xE9;&#xE900;b'"),
       .passedOver = fails("61 62"),
       .reconverted = fails("61 62"),
       .alternated = fails("61 E9 E9 62"),
       .passedThrough = fails("61 E9 E9 00 62"),
       .widened = fails("61 62")},
      {.from = 932,
       .to = 1252,
       .input = "61 82 A0 82 A0 62",
       .substitution = "3F",
       .alternate = 932,
       .dropped = fails("61 62"),
       .substituted = fails("61 3F 3F 62"),
       .shown = fails("'a&#x82A0;&#x4230;b'"),
       .passedOver = fails("61 62"),
       .reconverted = fails("61 62"),
       .alternated = fails("61 82 A0 82 A0 62"),
       .passedThrough = fails("61 82 A0 42 30 62"),
       .widened = fails("61 62")},
      {.from = 65001,
       .to = 1252,
       .input = "61 E3 81 82 E3 81 82 62",
       .substitution = "3F",
       .alternate = 65001,
       .dropped = fails("61 62"),
       .substituted = fails("61 3F 3F 62"),
       .shown = fails("'a&#xE38182;&#x4230;b'"),
       .passedOver = fails("61 62"),
       .reconverted = fails("61 62"),
       .alternated = fails("61 E3 81 82 E3 81 82 62"),
       .passedThrough = fails("61 E3 81 82 42 30 62"),
       .widened = fails("61 62")},
      {.from = 55000,
       .to = 932,
       .input = "61 05 05 62",
       .substitution = "3F",
       .alternate = 1201,
       .dropped = fails("61 62"),
       .substituted = fails("61 3F 3F 62"),
       .shown = fails("'a&#x05;&#xE900;b'"),
       .passedOver = fails("61 62"),
       .reconverted = fails("61 62"),
       .alternated = fails("61 00 E9 00 E9 62"),
       .passedThrough = fails("61 05 E9 00 62"),
       .widened = fails("61 62")},
  });
}

// Without a pivot there is nothing to go back to: the unit is shown as it
// stands, low byte first.
TEST(EveryErrorAction, TakesAUnitThatTheDestinationLacks) {
  const Route rows[] = {
      {.from = 1200,
       .to = 1252,
       .input = "61 00 42 30 42 30 62 00",
       .substitution = "3F",
       .alternate = 65001,
       .dropped = fails("61 62"),
       .substituted = fails("61 3F 3F 62"),
       .shown = fails("'a&#x4230;&#x4230;b'"),
       .passedOver = fails("61 62"),
       .reconverted = fails("61 62"),
       .alternated = fails("61 E3 81 82 E3 81 82 62"),
       .passedThrough = fails("61 42 30 42 30 62"),
       .widened = fails("61 62")},
  };
  expectEveryAction(rows);
  Route other = rows[0];
  other.from = 1201;
  other.input = "00 61 30 42 30 42 00 62";
  expectEveryAction(other);
  other.from = 65000;
  other.input = "'a+MEIwQg-b'";
  expectEveryAction(other);
}

// UTF-32 goes by way of UTF-8 and a pivot, but there is no going back to it:
// the first character disappears where its source is asked for.
TEST(EveryErrorAction, TakesACharacterOfUtf32ThatTheDestinationLacks) {
  Route route = {.from = 12000,
                 .to = 1252,
                 .input = "61 00 00 00 42 30 00 00 42 30 00 00 62 00 00 00",
                 .substitution = "3F",
                 .alternate = 65001,
                 .dropped = fails("61 62"),
                 .substituted = fails("61 3F 3F 62"),
                 .shown = fails("'a&#x4230;b'"),
                 .passedOver = fails("61 62"),
                 .reconverted = fails("61 62"),
                 .alternated = fails("61 E3 81 82 E3 81 82 62"),
                 .passedThrough = fails("61 42 30 62"),
                 .widened = fails("61 62")};
  expectEveryAction(route);
  route.from = 12001;
  route.input = "00 00 00 61 00 00 30 42 00 00 30 42 00 00 00 62";
  expectEveryAction(route);
}

TEST(EveryErrorAction, IsNotAskedByTheUsAsciiShortcut) {
  for (int action = 0; action < 10; ++action) {
    EXPECT_EQ(convert(withAction(action), 20127, 28602, "61 E9 62"), converts("61 E9 62"));
    EXPECT_EQ(convert(withAction(action), 20127, 1252, "61 81 62"), converts("61 81 62"));
    EXPECT_EQ(convert(withAction(action), 20127, 65001, "61 E9 62"), converts("61 62"));
  }
}

// --- Markers ------------------------------------------------------------------

TEST(MarkedBytes, CrossThePivotUpToFiveOfThem) {
  EXPECT_EQ(convert(withSubstitute("'12345'"), 1252, 437, "61 81 62"),
            convertsWithError("'a12345b'"));
  // Six is no count; all that follows is read as four units without a place,
  // each of which is substituted in turn.
  EXPECT_EQ(convert(withSubstitute("'123456'"), 1252, 437, "61 81 62"),
            fails("'a123456123456123456123456'"));
}

TEST(MarkedBytes, AreLostWhereTheyEndBehindTheLastWholeUnit) {
  EXPECT_EQ(convert(withAction(7), 1252, 437, "61 81"), convertsWithError("61 81"));
  EXPECT_EQ(convert(withSubstitute("'12'"), 1252, 437, "61 81"), convertsWithError("61"));
  EXPECT_EQ(convert(withSubstitute("'12'"), 1252, 437, "61 81 81"), convertsWithError("'a1212'"));
}

// Marker, count and two bytes are five bytes: half a unit is over at the end.
TEST(MarkedBytes, CostTheLastCharacterWhereTheirNumberIsEven) {
  EXPECT_EQ(convert(withSubstitute("'[]'"), 65001, 1252, "61 FF 62"), convertsWithError("'a[]'"));
  EXPECT_EQ(convert(withSubstitute("'[]'"), 65001, 1252, "61 FF FF 62"),
            convertsWithError("'a[][]b'"));
  EXPECT_EQ(convert(withSubstitute("'[?]'"), 65001, 1252, "61 FF 62"),
            convertsWithError("'a[?]b'"));
  EXPECT_EQ(convert(withAction(7), 932, 1252, "61 85 40 62"), convertsWithError("61 85 40"));
  EXPECT_EQ(convert(withAction(7), 932, 1252, "61 85 40"), convertsWithError("61"));
}

TEST(MarkedBytes, AreRewrittenWhereTheyLookLikeArabicDigits) {
  // The second pair of them stands at an even position of the pivot.
  EXPECT_EQ(convert(withSubstitute("60 06"), 1252, 1256, "81 81 61"),
            convertsWithError("60 06 30 00 61"));
  EXPECT_EQ(convert(withSubstitute("60 06"), 1252, 1251, "81 81 61"),
            convertsWithError("60 06 60 06 61"));
}

// Nobody has written these markers: they are characters of the source, and what
// follows them becomes bytes of the destination, with no error.
TEST(MarkedBytes, MayBeCharactersOfTheSource) {
  EXPECT_EQ(convert(withAction(0), 65001, 1252, "61 EE BF BD E3 B0 81 62"), converts("'a<b'"));
  EXPECT_EQ(convert(withAction(0), 65001, 932, "61 EE BF BD E3 B0 81 62"), converts("'a<b'"));
  EXPECT_EQ(convert(withAction(0), 65001, 1252, "EE BF BD E3 B0 85 E6 8D B3 E6 A5 B2"),
            converts("'<scri'"));
  EXPECT_EQ(convert(withAction(0), 12000, 1252, "FD EF 00 00 01 3C 00 00"), converts("'<'"));
  EXPECT_EQ(convert(withAction(0), 950, 65001, "83 4B 61"), converts("EE BF BD 61"));
  EXPECT_EQ(convert(withAction(0), 65001, 1200, "EE BF BD E3 B0 81"), converts("FD EF 01 3C"));
  EXPECT_EQ(convert(withAction(0), 1200, 1252, "FD EF 01 3C"), fails(""));
}

// The count and the hundred bytes are read as fifty units without a place.
TEST(MarkedBytes, BecomeFiveThousandOutOfOneWhenAHundredAreNoCount) {
  EncodingConvert converter = withAction(1);
  const Bytes substitute(100, 0xEE);
  converter.setDefBytes(substitute.data(), static_cast<int>(substitute.size()));
  std::string expected;
  for (int i = 0; i < 5000; ++i) expected += "EE ";
  EXPECT_EQ(convert(converter, 65001, 1252, "FF"), fails(expected));
}

// U+EFFD in UTF-8 is the marker to the second half of the pivot, with the "b"
// behind it as a count that is none, as long as the flag is set.
TEST(TheMarkerFlags, AreClearedByANestedConversion) {
  const char* const text = "EE BF BD 61 E3 81 82 EE BF BD 62";
  EXPECT_EQ(convert(withAction(0), 65001, 1252, text), fails("61 62"));
  EXPECT_EQ(convert(withAction(2), 65001, 1252, text), fails("'a&#xE38182;&#xFDEF;b'"));
  EXPECT_EQ(convert(withAction(7), 65001, 1252, text), fails("61 E3 81 82 FD EF 62"));
  EXPECT_EQ(convert(withAlternate(65001), 65001, 1252, text), fails("61 E3 81 82 EE BF BD 62"));
  EXPECT_EQ(convert(withSubstitute("3F"), 65001, 1252, text), fails("61 3F 62"));
}

TEST(TheMarkerFlags, OutliveANestedConversionThatNeedsNone) {
  const char* const text = "61 E3 81 82 EE BF BD 62";
  // A copy, and a refused code page.
  EXPECT_EQ(convert(withAlternate(1200), 65001, 1252, text), fails("61 42 30 62"));
  EXPECT_EQ(convert(withAlternate(20), 65001, 1252, text), fails("61 62"));
}

TEST(TheMarkerFlags, OutliveAUnitThatIsTakenForAByteOrderMark) {
  for (const char* text : {"61 EF BB BF EE BF BD 62", "61 EF BF BE EE BF BD 62"}) {
    EXPECT_EQ(convert(withAction(2), 65001, 1252, text), fails("61 62")) << text;
    EXPECT_EQ(convert(withAction(7), 65001, 1252, text), fails("61 62")) << text;
    // The whole of a conversion, which action 6 asks for, clears them all the same.
    EXPECT_EQ(convert(withAlternate(65001), 65001, 1252, text), fails("61 EE BF BD 62")) << text;
  }
}

TEST(TheMarkerFlags, AreClearedByANestedConversionWhileBytesAreDecodedToo) {
  EncodingConvert converter = withAlternate(437);
  converter.m_fromCodePage = 1252;
  converter.m_emitPassthroughMarkers = true;
  const Bytes text = bytes("61 81");
  quorvel::DataBuffer pivot;
  quorvel::NullLog log;
  EXPECT_TRUE(converter.convertToUnicodeHC(1252, text.data(), sizeOf(text), pivot, log));
  EXPECT_EQ(hex(pivot), "61 00");
  EXPECT_FALSE(converter.m_emitPassthroughMarkers);
}

}  // namespace
