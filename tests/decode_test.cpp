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
using quorvel::UnicodeLookup;

// --- Single bytes, by a lookup made by hand -----------------------------------------

struct Entry {
  unsigned int byte;
  unsigned short unit;
};

std::unique_ptr<UnicodeLookup> lookupOf(std::initializer_list<Entry> entries) {
  std::unique_ptr<UnicodeLookup> lookup(UnicodeLookup::createNewObject());
  for (const Entry& entry : entries) (*lookup)[entry.byte] = entry.unit;
  return lookup;
}

TEST(SingleByteDecoding, WritesEachUnitLowByteFirst) {
  const auto lookup = lookupOf({{0x41, 0x41}, {0x80, 0x20AC}, {0xFF, 0xFEFF}, {0x01, 0x0100}});
  EXPECT_EQ(decode(withAction(0), *lookup, "41 80 FF 01"), converts("41 00 AC 20 FF FE 00 01"));
}

TEST(SingleByteDecoding, TakesAZeroByteForUPlus0000WhateverTheTableSays) {
  const auto lookup = lookupOf({{0x00, 0x1234}, {0x41, 0x61}});
  EXPECT_EQ(decode(withAction(0), *lookup, "00"), converts("00 00"));
  EXPECT_EQ(decode(withAction(2), *lookup, "41 00 00 41"), converts("61 00 00 00 00 00 61 00"));
  for (const int codePage : {37, 1252, 10021, 20127, 28591}) {
    EXPECT_EQ(decode(codePage, "00"), converts("00 00"));
  }
}

TEST(SingleByteDecoding, WritesTwoBytesForEachOf256) {
  const auto lookup = lookupOf({{0x80, 0x20AC}, {0x81, 0x0081}});
  for (const std::size_t count : {1U, 255U, 256U, 257U, 512U, 513U, 16384U, 16385U, 40000U}) {
    const std::string input = hex(repeated(count, {0x80}));
    EXPECT_EQ(decode(withAction(0), *lookup, input),
              (Outcome{true, false, hex(repeated(count, {0xAC, 0x20}))}))
        << count;
    EXPECT_EQ(decode(withAction(7), *lookup, input + " 82 81"),
              (Outcome{true, true, hex(repeated(count, {0xAC, 0x20}) + bytes("82 81 00"))}))
        << count;
  }
}

TEST(SingleByteDecoding, DropsAnUnmappedByteAndStillSucceeds) {
  const auto lookup = lookupOf({{0x41, 0x41}});
  EXPECT_EQ(decode(withAction(0), *lookup, "80"), convertsWithError(""));
  EXPECT_EQ(decode(withAction(0), *lookup, "41 80 41 81"), convertsWithError("41 00 41 00"));
}

struct ActionRow {
  EncodingConvert converter;
  const char* out;
};

TEST(SingleByteDecoding, PutsTheTextOfTheHandlerWhereTheByteStood) {
  const auto lookup = lookupOf({{0x41, 0x41}, {0x42, 0x42}});
  const ActionRow rows[] = {
      {withAction(0), "41 00 42 00"},
      {withSubstitute("3F 00"), "41 00 3F 00 42 00"},
      {withSubstitute("'a'"), "41 00 61 42 00"},
      {withAction(1), "41 00 42 00"},
      {withAction(2), "41 00 '&#x80;' 42 00"},
      {withAction(3), "41 00 42 00"},
      {withAction(4), "41 00 42 00"},
      {withAction(5), "41 00 42 00"},
      {withAction(7), "41 00 80 42 00"},
      {withAction(8), "41 00 80 00 42 00"},
      {withAction(9), "41 00 42 00"},
      {emitting(withSubstitute("3F 00")), "41 00 FD EF 02 3F 00 42 00"},
      {emitting(withAction(1)), "41 00 42 00"},
      {emitting(withAction(2)), "41 00 FD EF 05 '&#x80;' 42 00"},
      {emitting(withAction(7)), "41 00 FD EF 01 80 42 00"},
      {emitting(withAction(8)), "41 00 80 00 42 00"},
      {between(20127, 1200, withAction(6)), "41 00 42 00"},
      {between(1250, 1200, withAction(6)), "41 00 AC 20 42 00"},
      {between(1250, 1200, withAlternate(65001)), "41 00 E2 82 AC 42 00"},
      {between(437, 1200, withAlternate(65001)), "41 00 C3 87 42 00"},
      {honoring(between(437, 1200, withAlternate(65001))), "41 00 42 00"},
  };
  for (const ActionRow& row : rows) {
    const Outcome outcome = decode(row.converter, *lookup, "41 80 42");
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.out, hex(bytes(row.out))) << "action " << row.converter.m_errorAction;
  }
}

TEST(SingleByteDecoding, OpensAContextUnlessThereIsNothingToDo) {
  const auto lookup = lookupOf({{0x41, 0x41}});
  Lines lines;
  decode(withAction(2), *lookup, "41 80", true, &lines);
  EXPECT_EQ(lines, (Lines{"open convertToUnicodeByLookup verbose=1", "close"}));
  decode(withAction(2), *lookup, "41 80", false, &lines);
  EXPECT_EQ(lines, (Lines{"open convertToUnicodeByLookup verbose=0", "close"}));
  EXPECT_EQ(decode(withAction(2), *lookup, "", true, &lines), converts(""));
  EXPECT_EQ(lines, Lines());

  RecordingLog log(true);
  DataBuffer out;
  EXPECT_TRUE(EncodingConvert().convertToUnicodeByLookup(*lookup, nullptr, 7, out, log));
  EXPECT_EQ(log.lines, Lines());
}

TEST(SingleByteDecoding, OfALowerAsciiPageMapsAsciiToItself) {
  for (const int codePage : {437, 874, 1252, 10000, 20127, 20866, 28599}) {
    EXPECT_EQ(decode(codePage, "41 01 7F 20"), converts("41 00 01 00 7F 00 20 00")) << codePage;
  }
}

TEST(SingleByteDecoding, TellsTheByteApartFromItsPlaceInTheTable) {
  EXPECT_EQ(decode(1252, "63 61 66 E9"), converts("63 00 61 00 66 00 E9 00"));
  EXPECT_EQ(decode(1252, "80"), converts("AC 20"));
  EXPECT_EQ(decode(1252, "41 81 42"), convertsWithError("41 00 42 00"));
  EXPECT_EQ(decode(28591, "80"), converts("AC 20")) << "as in 1252";
  EXPECT_EQ(decode(37, "C1 4B F0"), converts("41 00 2E 00 30 00"));
  EXPECT_EQ(decode(20127, "41 80 FF"), convertsWithError("41 00"));
}

// --- Pairs, by a table made by hand ---------------------------------------------------

std::unique_ptr<HashConvert> asciiTable(int buckets, std::initializer_list<Mapping> pairs) {
  auto table = tableOf(buckets, pairs);
  table->m_direction = 2;
  table->put_IsLowerAscii(true);
  return table;
}

TEST(PairDecoding, TriesAPairBeforeItsFirstByte) {
  const auto table = asciiTable(7, {{"81 40", "00 30"}, {"81 81", "01 30"}});
  table->m_byteToUnicode[0x81] = 0x81;
  table->m_byteToUnicode[0x82] = 0x82;
  HashConvert* t = table.get();
  EXPECT_EQ(decode(withAction(0), t, "81 40"), converts("00 30"));
  EXPECT_EQ(decode(withAction(0), t, "81 81 40"), converts("01 30 40 00"));
  EXPECT_EQ(decode(withAction(0), t, "81 41"), converts("81 00 41 00"));
  EXPECT_EQ(decode(withAction(0), t, "82 81 40"), converts("82 00 00 30"))
      << "a trail byte may begin the next pair";
  EXPECT_EQ(decode(withAction(0), t, "81"), converts("81 00"));
}

TEST(PairDecoding, TriesAPairBeforeItsFirstByteHoweverLongTheText) {
  const auto table = asciiTable(7, {{"81 40", "00 30"}});
  table->m_byteToUnicode[0x81] = 0x81;
  for (std::size_t ascii = 16380; ascii < 16390; ++ascii) {
    const Bytes input = repeated(ascii, {0x41}) + bytes("81 40 81 81 40");
    const Bytes expected = repeated(ascii, bytes("41 00")) + bytes("00 30 81 00 00 30");
    EXPECT_EQ(decode(withAction(0), table.get(), hex(input)), (Outcome{true, false, hex(expected)}))
        << ascii;
  }
}

TEST(PairDecoding, LooksOnlyWhereTheTableHasNotSettledIt) {
  // One bucket: every pair but the first is found by a look-up.
  const auto table = asciiTable(1, {{"81 40", "00 30"}, {"81 41", "01 30"}, {"82 40", "02 30"}});
  EXPECT_EQ(decode(withAction(0), table.get(), "82 40 81 41 81 40"), converts("02 30 01 30 00 30"));
  const Bytes key = bytes("81 40");
  table->hcRemove(key.data());
  EXPECT_EQ(decode(withAction(0), table.get(), "82 40 81 41"), converts("02 30 01 30"))
      << "the slot is empty now";
  EXPECT_EQ(decode(withAction(0), table.get(), "81 40"), convertsWithError("40 00"));
}

TEST(PairDecoding, TakesAZeroByteAsItselfOnlyAtTheEnd) {
  const auto table = tableOf(7, {{"00 41", "11 30"}, {"81 00", "12 30"}});
  HashConvert* t = table.get();
  EXPECT_EQ(decode(withAction(0), t, "00"), converts("00 00"));
  EXPECT_EQ(decode(withAction(0), t, "00 41"), converts("11 30"));
  EXPECT_EQ(decode(withAction(0), t, "81 00"), converts("12 30"));
  EXPECT_EQ(decode(withAction(2), t, "00 00"), convertsWithError("'&#x00;' 00 00"));
  table->put_IsLowerAscii(true);
  EXPECT_EQ(decode(withAction(0), t, "00 41 00"), converts("00 00 41 00 00 00"));
}

TEST(PairDecoding, WritesAsManyBytesAsTheTableHas) {
  const auto table = asciiTable(7, {{"81 40", "30"}});
  insert(*table, "81 41", "31");
  EXPECT_EQ(decode(withAction(0), table.get(), "81 40 41"), converts("30 41 00"));
}

// What no table that is built ever says: long values and keys to pass over.
class OddTable : public HashConvert {
 public:
  OddTable() : HashConvert(1) {
    hcInitialize(7);
    m_direction = 2;
    m_hasRemovals = true;
  }
  void hcLookup(const unsigned char* key, unsigned char* out, int& outLen) const override {
    outLen = key[0] == 0x81 ? 10 : key[0] == 0x82 ? -1 : 0;
    for (int i = 0; i < outLen; ++i) out[i] = static_cast<unsigned char>(0x30 + i);
  }
};

TEST(PairDecoding, WritesAValueOfTenBytes) {
  OddTable table;
  for (const std::size_t count : {1U, 20U, 21U, 8191U, 8192U, 8193U}) {
    EXPECT_EQ(decode(withAction(0), &table, hex(repeated(count, bytes("81 40")))).out,
              hex(repeated(count, bytes("'0123456789'"))))
        << count;
  }
}

TEST(PairDecoding, PassesOverAKeyWithoutAWord) {
  OddTable table;
  Lines lines;
  EXPECT_EQ(decode(withAction(2), &table, "82 40 82 41", true, &lines), converts(""));
  EXPECT_EQ(lines, Lines());
  EXPECT_EQ(decode(withAction(2), &table, "82 40 81 40 82 FF"), converts("'0123456789'"));
}

TEST(PairDecoding, WithoutATableFailsAndSaysSo) {
  for (const bool verbose : {false, true}) {
    for (const char* input : {"", "41"}) {
      Lines lines;
      EXPECT_EQ(decode(withAction(0), nullptr, input, verbose, &lines), failsQuietly());
      EXPECT_EQ(lines, Lines{"error: convertToUnicodeHCVar: missing hc"});
    }
  }
}

TEST(PairDecoding, OfNothingSucceeds) {
  const auto table = asciiTable(7, {});
  RecordingLog log(true);
  DataBuffer out;
  EncodingConvert converter;
  EXPECT_TRUE(converter.convertToUnicodeHCVar(table.get(), nullptr, 7, out, log));
  EXPECT_TRUE(converter.convertToUnicodeHCVar(table.get(), bytes("41").data(), 0, out, log));
  EXPECT_EQ(out.getSize(), 0U);
  EXPECT_EQ(log.lines, Lines());
}

TEST(PairDecoding, ReportsAnImperfectConversionOnceAndOnlyInDetail) {
  const auto table = asciiTable(7, {});
  const Lines once = {"error: imperfect conversion in convertToUnicodeHCVar"};
  for (const int action : {0, 2, 7}) {
    for (const char* input : {"81", "81 82 83 84", "81 41 81"}) {
      Lines lines;
      decode(withAction(action), table.get(), input, true, &lines);
      EXPECT_EQ(lines, once) << input;
      decode(withAction(action), table.get(), input, false, &lines);
      EXPECT_EQ(lines, Lines()) << input;
    }
    Lines lines;
    decode(withAction(action), table.get(), "41 00", true, &lines);
    EXPECT_EQ(lines, Lines());
  }
}

// --- The multibyte pages -----------------------------------------------------------------

TEST(MultiByteDecoding, HandlesOneByteOfText) {
  for (const int codePage : {932, 936, 949, 950, 1361, 10001, 51932, 51936, 51949, 52936}) {
    EXPECT_EQ(decode(codePage, "41"), converts("41 00")) << codePage;
    EXPECT_EQ(decode(codePage, "00"), converts("00 00")) << codePage;
    EXPECT_EQ(decode(codePage, "E1"), convertsWithError("")) << codePage;
    EXPECT_EQ(decode(between(codePage, 1200, withAction(2)), codePage, "E1"),
              convertsWithError("'&#xE1;'"))
        << codePage;
  }
}

TEST(MultiByteDecoding, KeepsOrderAcrossTheEndsOfBlocks) {
  const Bytes pair = bytes("82 A0");
  for (std::size_t ascii = 95; ascii < 105; ++ascii) {
    const Bytes input = repeated(ascii, {0x41}) + repeated(60, pair) + bytes("85 FF") + pair;
    const Bytes expected = repeated(ascii, bytes("41 00")) + repeated(60, bytes("42 30"));
    EXPECT_EQ(decode(between(932, 1200, withAction(2)), 932, hex(input)),
              (Outcome{true, true, hex(expected + bytes("'&#x85FF;' 42 30"))}));
  }
}

TEST(MultiByteDecoding, DecodesALeadByteAtTheEndAlone) {
  EXPECT_EQ(decode(between(932, 1200, withAction(2)), 932, "82 A0 82"),
            convertsWithError("42 30 '&#x82;'"));
  EXPECT_EQ(decode(932, "82 A0 B1"), converts("42 30 71 FF"));
  EXPECT_EQ(decode(936, "80"), converts("AC 20"));
}

struct SkipRow {
  int codePage;
  const char* hexOut;      // of FF-like trash in front of "A", with action 2
  const char* droppedOut;  // with action 0
};

// The bytes C9 A1 are no pair in any of these, C9 no single byte.
TEST(MultiByteDecoding, SkipsTwoBytesForADoubleBytePageAndElseOne) {
  const SkipRow rows[] = {
      {932, "'&#x8500;'", "00 00"},       {936, "'&#x8500;'", "00 00"},
      {949, "'&#x8500;'", "00 00"},       {950, "'&#x8500;'", "00 00"},
      {51932, "'&#x8500;'", "00 00"},     {51936, "'&#x8500;'", "00 00"},
      {51949, "'&#x8500;'", "00 00"},     {1361, "'&#x85;' 00 00", "00 00"},
      {10001, "'&#x85;' 00 00", "00 00"}, {52936, "'&#x85;' 00 00", "00 00"},
  };
  for (const SkipRow& row : rows) {
    const auto after = [](const char* out) { return std::string(out) + " 41 00"; };
    EXPECT_EQ(decode(between(row.codePage, 1200, withAction(2)), row.codePage, "85 00 41"),
              convertsWithError(after(row.hexOut)))
        << row.codePage;
    EXPECT_EQ(decode(row.codePage, "85 00 41"), convertsWithError(after(row.droppedOut)))
        << row.codePage;
  }
}

TEST(MultiByteDecoding, PutsTheTextOfTheHandlerWhereThePairStood) {
  const auto in932 = [](EncodingConvert converter) { return between(932, 65001, converter); };
  const ActionRow rows[] = {
      {in932(withAction(0)), "42 30 40 00 42 30"},
      {in932(withSubstitute("3F 00")), "42 30 3F 00 42 30"},
      {in932(withAction(1)), "42 30 42 30"},
      {in932(withAction(2)), "42 30 '&#x8540;' 42 30"},
      {in932(withAction(3)), "42 30 42 30"},
      {in932(withAction(6)), "42 30 '@' 42 30"},
      {in932(withAlternate(1201)), "42 30 00 40 42 30"},
      {honoring(in932(withAlternate(1201))), "42 30 42 30"},
      {in932(withAction(7)), "42 30 85 40 42 30"},
      {in932(withAction(8)), "42 30 42 30"},
      {in932(withAction(9)), "42 30 42 30"},
      {emitting(in932(withSubstitute("3F 00"))), "42 30 FD EF 02 3F 00 42 30"},
      {emitting(in932(withAction(2))), "42 30 FD EF 06 '&#x8540;' 42 30"},
      {emitting(in932(withAction(7))), "42 30 FD EF 02 85 40 42 30"},
  };
  for (const ActionRow& row : rows) {
    const Outcome outcome = decode(row.converter, 932, "82 A0 85 40 82 A0");
    EXPECT_EQ(outcome, convertsWithError(row.out)) << "action " << row.converter.m_errorAction;
  }
}

TEST(MultiByteDecoding, DecodesKanjiBeforeUserDefinedCharactersIn51932) {
  EXPECT_EQ(decode(51932, "F9 D4"), converts("0E FA"));
  EXPECT_EQ(decode(51932, "F9 DF"), converts("0F FA"));
  EXPECT_EQ(decode(51932, "F9 E0"), converts("10 FA"));
  EXPECT_EQ(decode(51932, "F9 F5"), converts("11 FA"));
  EXPECT_EQ(decode(51932, "F0 A1"), converts("5D 96"));
  EXPECT_EQ(decode(51932, "F0 40"), converts("00 E0"));
  EXPECT_EQ(encode(51932, "0E FA"), converts("F9 D4"));
}

TEST(MultiByteDecoding, Decodes52936AsItDoes936) {
  for (const char* text : {"41 B0 A1 80", "A1 A1 FE A0", "81 40 FE 50 FF"}) {
    EXPECT_EQ(decode(52936, text), decode(936, text)) << text;
  }
  EXPECT_EQ(decode(52936, "B0 A1"), converts("4A 55"));
}

// --- Routes --------------------------------------------------------------------------------

TEST(TableDecoding, LogsWhatItIsAskedForInDetail) {
  Lines lines;
  decode(withAction(0), 1252, "63 61 66 E9", true, &lines);
  EXPECT_EQ(lines, (Lines{"open convertToUnicodeHC verbose=1", "long fromCodePage=1252",
                          "long inDataLen=4", "open convertToUnicodeByLookup verbose=1", "close",
                          "close"}));
  decode(withAction(0), 932, "82 A0 85", true, &lines);
  EXPECT_EQ(lines,
            (Lines{"open convertToUnicodeHC verbose=1", "long fromCodePage=932", "long inDataLen=3",
                   "error: imperfect conversion in convertToUnicodeHCVar", "close"}));
  decode(withAction(0), 932, "82 A0 85", false, &lines);
  EXPECT_EQ(lines, (Lines{"open convertToUnicodeHC verbose=0", "close"}));
}

TEST(TableDecoding, OfNothingSucceedsWithoutAWord) {
  for (const int codePage : {1252, 932, 28600, 1200, 30000}) {
    Lines lines;
    EXPECT_EQ(decode(withAction(0), codePage, "", true, &lines), converts("")) << codePage;
    EXPECT_EQ(lines, Lines());
    RecordingLog log(true);
    DataBuffer out;
    EXPECT_TRUE(EncodingConvert().convertToUnicodeHC(codePage, nullptr, 7, out, log));
    EXPECT_EQ(log.lines, Lines());
  }
}

TEST(TableDecoding, RefusesAPageThatIsNotRoutedAlthoughItHasATable) {
  for (const int codePage : {28600, 28601}) {
    Lines lines;
    EXPECT_EQ(decode(withAction(7), codePage, "41", true, &lines), failsQuietly()) << codePage;
    EXPECT_EQ(lines, (Lines{"open convertToUnicodeHC verbose=1",
                            "long fromCodePage=" + std::to_string(codePage), "long inDataLen=1",
                            "close"}));
    EXPECT_NE(quorvel::tableRegistry::toUnicode(codePage), nullptr) << codePage;
    EXPECT_EQ(convert(codePage, 65001, "41"), fails());
  }
}

TEST(TableDecoding, RefusesAPageWithoutATable) {
  for (const int codePage :
       {-1, 0, 1, 36, 100, 1200, 1201, 1259, 12000, 28602, 28604, 30000, 50220, 55000, 65001}) {
    EXPECT_EQ(decode(codePage, "41 42"), failsQuietly()) << codePage;
  }
}

}  // namespace
