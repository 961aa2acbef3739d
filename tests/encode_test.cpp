#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/TableRoutes.h"
#include "tests/helpers/Tables.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::HashConvert;

std::unique_ptr<HashConvert> fromUnicodeTable(int buckets, bool isLowerAscii,
                                              std::initializer_list<Mapping> mappings) {
  auto table = tableOf(buckets, mappings);
  table->m_direction = 1;
  table->put_IsLowerAscii(isLowerAscii);
  return table;
}

/// Lower ASCII, U+20AC as one byte and U+3000 as two.
std::unique_ptr<HashConvert> smallTable() {
  return fromUnicodeTable(7, true, {{"AC 20", "80"}, {"00 30", "81 40"}});
}

// --- Tables made by hand -------------------------------------------------------------

TEST(TableEncoding, WritesOneByteOrTwo) {
  const auto table = smallTable();
  EXPECT_EQ(encode(withAction(0), table.get(), "41 00 AC 20 00 30 7F 00"),
            converts("41 80 81 40 7F"));
}

TEST(TableEncoding, LooksOnlyWhereTheTableHasNotSettledIt) {
  const auto table =
      fromUnicodeTable(1, false, {{"01 30", "80"}, {"02 30", "81 41"}, {"03 30", "82"}});
  HashConvert* t = table.get();
  EXPECT_EQ(encode(withAction(0), t, "03 30 02 30 01 30"), converts("82 81 41 80"));
  const Bytes key = bytes("01 30");
  table->hcRemove(key.data());
  EXPECT_EQ(encode(withAction(0), t, "03 30 02 30"), converts("82 81 41")) << "the slot is empty";
  EXPECT_EQ(encode(withAction(0), t, "01 30"), fails());
}

TEST(TableEncoding, DoesNotTakeAnEmptySlotForTheZeroUnit) {
  const auto table = fromUnicodeTable(7, false, {{"01 30", "80"}});
  EXPECT_EQ(encode(withAction(2), table.get(), "00 00 01 30 00 00"), converts("00 80 00"));
  table->m_hasRemovals = true;
  EXPECT_EQ(encode(withAction(2), table.get(), "00 00 01 30 00 00"), converts("00 80 00"));
  insert(*table, "00 00", "5A");
  EXPECT_EQ(encode(withAction(2), table.get(), "00 00 01 30 00 00"), converts("5A 80 5A"));
  table->put_IsLowerAscii(true);
  EXPECT_EQ(encode(withAction(2), table.get(), "00 00"), converts("00"));
}

TEST(TableEncoding, PassesAsciiWithoutALookUpWhereTheTableIsAscii) {
  const auto table = fromUnicodeTable(7, true, {{"41 00", "5A"}});
  EXPECT_EQ(encode(withAction(0), table.get(), "41 00 42 00 43 00"), converts("'ABC'"));
  table->put_IsLowerAscii(false);
  EXPECT_EQ(encode(withAction(0), table.get(), "41 00 42 00 43 00"), fails("5A"));
}

TEST(TableEncoding, WritesLongAsciiWhole) {
  const auto table = smallTable();
  for (const std::size_t count : {1U, 511U, 512U, 513U, 600U, 8191U, 8192U, 8193U, 20000U}) {
    const std::string input = hex(repeated(count, bytes("41 00")));
    EXPECT_EQ(encode(withAction(0), table.get(), input),
              (Outcome{true, false, hex(repeated(count, {0x41}))}))
        << count;
    EXPECT_EQ(encode(withAction(7), table.get(), input + " E9 00 42 00"),
              (Outcome{false, true, hex(repeated(count, {0x41}) + bytes("E9 00 42"))}))
        << count;
  }
}

TEST(TableEncoding, NeverLooksAtHalfAUnit) {
  const auto table = smallTable();
  HashConvert* t = table.get();
  EXPECT_EQ(encode(withAction(2), t, "41"), failsQuietly());
  EXPECT_EQ(encode(withAction(2), t, "41 00 42"), converts("41"));
  EXPECT_EQ(encode(withAction(2), t, "41 00 AC 20 42"), converts("41 80"));
  EXPECT_EQ(encode(honoring(withAction(2)), t, "41 00 FD EF 01 42 43"), converts("41 42"));
}

TEST(TableEncoding, OfNothingSucceedsUnlessThereIsNoTable) {
  const auto table = smallTable();
  RecordingLog log(true);
  DataBuffer out;
  EncodingConvert converter;
  EXPECT_TRUE(converter.convertFromUnicodeHC2(table.get(), nullptr, 7, out, log));
  EXPECT_TRUE(converter.convertFromUnicodeHC2(table.get(), bytes("41").data(), 0, out, log));
  EXPECT_FALSE(converter.convertFromUnicodeHC2(nullptr, nullptr, 0, out, log));
  EXPECT_FALSE(converter.convertFromUnicodeHC2(nullptr, bytes("41 00").data(), 2, out, log));
  EXPECT_FALSE(converter.m_hadError);
  EXPECT_EQ(log.lines, Lines());
}

TEST(TableEncoding, DropsAnUnmappedUnitAndFails) {
  const auto table = smallTable();
  for (const int action : {0, 3, 4, 5, 8, 9}) {
    EXPECT_EQ(encode(withAction(action), table.get(), "41 00 E9 00 42 00"), fails("41 42"));
    EXPECT_EQ(encode(honoring(withAction(action)), table.get(), "41 00 E9 00 42 00"),
              fails("41 42"));
  }
}

TEST(TableEncoding, TreatsSurrogatesAsUnitsLikeAnyOther) {
  const auto table = fromUnicodeTable(7, true, {{"3D D8", "81 42"}});
  EXPECT_EQ(encode(withAction(2), table.get(), "3D D8 00 DE"), fails("81 42 '&#x00DE;'"));
}

// --- Raw bytes behind a marker ----------------------------------------------------------

TEST(MarkedBytes, AreCopiedAndReadingGoesOnAtAnOddPlace) {
  const auto table = smallTable();
  const auto run = [&](const char* input) {
    return encode(honoring(withAction(0)), table.get(), input);
  };
  EXPECT_EQ(run("FD EF 01 41 42 00"), converts("'AB'"));
  EXPECT_EQ(run("FD EF 02 41 42 43 00 44"), converts("41 42 43"));
  EXPECT_EQ(run("FD EF 00 41 00 42"), converts("41"));
  EXPECT_EQ(run("FD EF 05 01 02 03 04 05 41 00"), converts("01 02 03 04 05 41"));
  EXPECT_EQ(run("FD EF 01 FF FD EF 01 FE"), converts("FF FE"));
  EXPECT_EQ(run("FD EF 00 FD EF 03 61 62 63 41 00 42"), converts("'abcA'"));
  EXPECT_EQ(run("41 00 FD EF 03 80 81 82 42 00 43"), converts("41 80 81 82 42"));
}

TEST(MarkedBytes, BeyondTheEvenLengthAreLeftToTheText) {
  const auto table = smallTable();
  const auto run = [&](const char* input) {
    return encode(honoring(withAction(0)), table.get(), input);
  };
  EXPECT_EQ(run("FD EF 02 41 42"), converts("")) << "one byte is left of the even length";
  EXPECT_EQ(run("FD EF 04 41 00 42"), converts("41"));
  EXPECT_EQ(run("FD EF 05 41 00 42 00"), converts("41"));
  EXPECT_EQ(run("FD EF 01 41"), converts("41"));
}

TEST(MarkedBytes, WithACountAboveFiveLoseOnlyTheMarker) {
  const auto table = smallTable();
  const auto run = [&](const char* input) {
    return encode(honoring(withAction(0)), table.get(), input);
  };
  EXPECT_EQ(run("FD EF 09 00 41 00"), converts("09 41"));
  EXPECT_EQ(run("FD EF 06 00 41 00"), converts("06 41"));
  EXPECT_EQ(run("FD EF FD EF 01 42"), converts("42"));
  EXPECT_EQ(run("FD EF 41 00"), converts("41"));
}

TEST(MarkedBytes, NeedACountByteBelowTheEvenLength) {
  const auto table = smallTable();
  EXPECT_EQ(encode(honoring(withSubstitute("3F")), table.get(), "41 00 FD EF"), fails("41 3F"));
  EXPECT_EQ(encode(honoring(withSubstitute("3F")), table.get(), "41 00 FD EF 01"), fails("41 3F"));
}

TEST(MarkedBytes, AreATextLikeAnyOtherWhileMarkersAreNotHonoured) {
  const auto table = smallTable();
  EXPECT_EQ(encode(withSubstitute("3F"), table.get(), "FD EF 01 41 42 00"), fails("3F 3F 42"));
  const auto withMarkerUnit = fromUnicodeTable(7, true, {{"FD EF", "88"}});
  EXPECT_EQ(encode(withAction(0), withMarkerUnit.get(), "FD EF 41 00"), converts("88 41"));
  EXPECT_EQ(encode(honoring(withAction(0)), withMarkerUnit.get(), "FD EF 41 00"), converts("41"))
      << "the escape comes before everything else";
}

// --- Unmapped units ------------------------------------------------------------------------

struct ActionRow {
  EncodingConvert converter;
  const char* out;
};

// "a", U+00E9 and "b" into a table that has no U+00E9; the text came in 1252.
TEST(UnmappedUnits, AreLeftToTheHandlerOutsideAPivot) {
  const auto table = smallTable();
  const auto of1252 = [](EncodingConvert converter) { return between(1252, 932, converter); };
  const ActionRow rows[] = {
      {of1252(withAction(0)), "'ab'"},
      {of1252(withSubstitute("'?!'")), "'a?!b'"},
      {of1252(withAction(1)), "'ab'"},
      {of1252(withAction(2)), "'a&#xE900;b'"},
      {of1252(withAction(3)), "'ab'"},
      {of1252(withAction(6)), "'ab'"},
      {of1252(withAlternate(65001)), "'a' C3 A9 'b'"},
      {of1252(withAction(7)), "'a' E9 00 'b'"},
      {of1252(withAction(8)), "'ab'"},
      {emitting(of1252(withAction(2))), "'a' FD EF 06 '&#xE900;b'"},
      {emitting(of1252(withAction(7))), "'a' FD EF 02 E9 00 'b'"},
      {emitting(of1252(withSubstitute("'?'"))), "'a' FD EF 01 '?b'"},
  };
  for (const ActionRow& row : rows) {
    const Outcome outcome = encode(row.converter, table.get(), "61 00 E9 00 62 00");
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.out, hex(bytes(row.out))) << "action " << row.converter.m_errorAction;
  }
}

TEST(UnmappedUnits, AreShownInTheSourceCodePageInsideAPivot) {
  const auto table = smallTable();
  const auto of1252 = [](EncodingConvert converter) {
    return honoring(between(1252, 932, converter));
  };
  const ActionRow rows[] = {
      {of1252(withAction(0)), "'ab'"},
      {of1252(withSubstitute("'?!'")), "'a?!b'"},
      {of1252(withSubstitute("")), "'ab'"},
      {of1252(withAction(2)), "'a&#xE9;b'"},
      {of1252(withAction(3)), "'ab'"},
      {of1252(withAlternate(65001)), "'a' C3 A9 'b'"},
      {of1252(withAction(7)), "'a' E9 'b'"},
      {of1252(withAction(8)), "'ab'"},
      {emitting(of1252(withSubstitute("'?'"))), "'a?b'"},
      {honoring(between(65001, 932, withAction(2))), "'a&#xC3A9;b'"},
      {honoring(between(1200, 932, withAction(2))), "'a&#xE900;b'"},
      {honoring(between(28597, 932, withAction(2))), "'ab'"},
      {honoring(between(28597, 932, withAction(7))), "'ab'"},
      {honoring(between(30000, 932, withAction(2))), "'ab'"},
  };
  for (const ActionRow& row : rows) {
    const Outcome outcome = encode(row.converter, table.get(), "61 00 E9 00 62 00");
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.out, hex(bytes(row.out)))
        << "action " << row.converter.m_errorAction << " from " << row.converter.m_fromCodePage;
  }
}

TEST(UnmappedUnits, LeaveTheConverterAsItWasButForTheMarkers) {
  const auto table = smallTable();
  for (const int action : {2, 6, 7}) {
    quorvel::NullLog log;
    DataBuffer out;
    EncodingConvert converter = honoring(between(1252, 932, withAction(action)));
    EXPECT_FALSE(converter.convertFromUnicodeHC2(table.get(), bytes("E9 00").data(), 2, out, log));
    EXPECT_EQ(converter.m_errorAction, action);
    EXPECT_EQ(converter.m_fromCodePage, 1252);
    EXPECT_EQ(converter.m_toCodePage, 932);
    EXPECT_FALSE(converter.m_honorPassthroughMarkers) << "the nested conversion clears it";
  }
}

TEST(UnmappedUnits, LogTheNestedConversion) {
  const auto table = smallTable();
  Lines lines;
  encode(honoring(between(1252, 932, withAction(7))), table.get(), "E9 00", true, &lines);
  EXPECT_EQ(lines, (Lines{"open convert_a verbose=1", "open convertFromUnicodeHC verbose=1",
                          "long toCodePage=1252", "long inDataLen=2", "long isLittleEndian=1",
                          "close", "close"}));
  encode(between(1252, 932, withAction(7)), table.get(), "E9 00", true, &lines);
  EXPECT_EQ(lines, Lines());
}

// A nested conversion clears the flags, so the unit behind it meets the handler.
TEST(UnmappedUnits, AreShownInTheSourceCodePageOnceOnly) {
  EXPECT_EQ(convert(withAction(2), 1252, 932, "61 E9 E9 62"), fails("'a&#xE9;&#xE900;b'"));
  EXPECT_EQ(convert(withAction(7), 1252, 932, "61 E9 E9 62"), fails("61 E9 E9 00 62"));
  EXPECT_EQ(convert(withSubstitute("'?'"), 1252, 932, "61 E9 E9 62"), fails("'a??b'"));
  EXPECT_EQ(convert(withAlternate(65001), 1252, 932, "61 E9 E9 62").out,
            hex(bytes("61 C3 A9 C3 A9 62")));
}

// In a nested conversion the two marks are taken off, so nothing is left to
// convert and the flags stay.
TEST(UnmappedUnits, ThatLookLikeAMarkLeaveTheFlags) {
  const auto table = smallTable();
  for (const char* mark : {"FF FE", "FE FF"}) {
    const std::string input = std::string(mark) + " E9 00 E9 00";
    EXPECT_EQ(encode(honoring(between(1252, 932, withAction(2))), table.get(), input),
              fails("'&#xE9;&#xE900;'"))
        << mark;
    EXPECT_EQ(encode(honoring(between(1252, 932, withAction(7))), table.get(), input),
              fails("E9 E9 00"))
        << mark;
  }
}

TEST(UnmappedUnits, ClearTheFlagThatMarkersNeed) {
  const auto table = smallTable();
  EXPECT_EQ(encode(honoring(between(1252, 932, withAction(7))), table.get(),
                   "FD EF 01 FF E9 00 FD EF 02 41 42"),
            fails("FF E9 FD EF 02 41"));
}

// --- Code pages -------------------------------------------------------------------------------

TEST(TableEncoding, WritesArabicDigitsAsAsciiInTwoPages) {
  for (const int codePage : {1256, 28596}) {
    EXPECT_EQ(encode(codePage, "60 06 63 06 69 06 F0 06 F5 06 F9 06"), converts("'039059'"))
        << codePage;
    EXPECT_EQ(encode(codePage, "41 00 63 06 63"), converts("'A3'")) << codePage;
    EXPECT_EQ(encode(codePage, "63"), failsQuietly());
  }
  EXPECT_EQ(encode(864, "63 06 F3 06"), fails("B3"));
  EXPECT_EQ(encode(1256, "5F 06 6A 06 EF 06 FA 06"), fails());
}

TEST(TableEncoding, RewritesArabicDigitsInRawBytesToo) {
  const char* input = "FD EF 04 AA 63 06 BB 41 00 00";
  EXPECT_EQ(encode(honoring(between(1252, 1256, withAction(0))), 1256, input),
            converts("AA 33 00 BB 41"));
  EXPECT_EQ(encode(honoring(between(1252, 1252, withAction(0))), 1252, input),
            converts("AA 63 06 BB 41"));
}

TEST(TableEncoding, Writes52936AsItDoes936) {
  for (const char* text : {"4A 55 41 00", "00 4E AC 20 42 30", "E9 00 FF FF"}) {
    EXPECT_EQ(encode(52936, text), encode(936, text)) << text;
  }
  EXPECT_EQ(encode(52936, "4A 55"), converts("B0 A1"));
}

TEST(TableEncoding, RefusesAPageThatIsNotRoutedAlthoughItHasATable) {
  for (const int codePage : {28600, 28601}) {
    Lines lines;
    EXPECT_EQ(encode(withAction(7), codePage, "41 00", true, &lines), failsQuietly());
    EXPECT_EQ(lines, (Lines{"open convertFromUnicodeHC verbose=1",
                            "long toCodePage=" + std::to_string(codePage), "long inDataLen=2",
                            "long isLittleEndian=1", "close"}));
    EXPECT_NE(quorvel::tableRegistry::fromUnicode(codePage), nullptr);
  }
}

TEST(TableEncoding, RefusesAPageWithoutATable) {
  for (const int codePage :
       {-1, 0, 1, 36, 100, 1200, 1201, 1259, 12000, 28602, 28604, 30000, 50220, 55000, 65001}) {
    EXPECT_EQ(encode(codePage, "41 00 42 00"), failsQuietly()) << codePage;
  }
}

TEST(TableEncoding, OfNothingIsNotLogged) {
  for (const int codePage : {1252, 932, 1256, 28600, 30000}) {
    Lines lines;
    EXPECT_EQ(encode(withAction(0), codePage, "", true, &lines), converts(""));
    EXPECT_EQ(lines, Lines());
    RecordingLog log(true);
    DataBuffer out;
    EXPECT_TRUE(EncodingConvert().convertFromUnicodeHC(codePage, nullptr, 6, out, log));
    EXPECT_EQ(log.lines, Lines());
  }
}

TEST(TableEncoding, LogsDetailsOnlyWhenAskedTo) {
  Lines lines;
  encode(withAction(0), 1252, "41 00 E9", false, &lines);
  EXPECT_EQ(lines, (Lines{"open convertFromUnicodeHC verbose=0", "close"}));
  encode(withAction(0), 1252, "41 00 E9", true, &lines);
  EXPECT_EQ(lines, (Lines{"open convertFromUnicodeHC verbose=1", "long toCodePage=1252",
                          "long inDataLen=3", "long isLittleEndian=1", "close"}));
}

TEST(TableEncoding, MapsByTheCodePage) {
  EXPECT_EQ(encode(1252, "AC 20 E9 00"), converts("80 E9"));
  EXPECT_EQ(encode(932, "42 30 41 00 71 FF A5 00"), converts("82 A0 41 B1 5C"));
  EXPECT_EQ(encode(37, "41 00 2E 00 00 00"), converts("C1 4B 00"));
  EXPECT_EQ(encode(20127, "A0 00 41 00"), converts("20 41"));
  EXPECT_EQ(encode(20127, "E9 00 41 00"), fails("41"));
  EXPECT_EQ(encode(10001, "A0 00 22 21 A9 00 16 21"), converts("A0 FE FD 86 9B"));
  EXPECT_EQ(encode(10001, "A5 00 11 22 F0 F8"), fails());
  EXPECT_EQ(encode(10001, "41 00"), converts("41"));
}

TEST(TableEncoding, LeavesUsAsciiToItsNeighboursAlone) {
  EXPECT_EQ(convert(20127, 28602, "41 80 FF"), converts("41 80 FF"));
}

}  // namespace
