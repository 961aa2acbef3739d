#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "quorvel/base/NullLog.h"
#include "quorvel/unicode/Japanese.h"
#include "tests/helpers/Bytes.h"

namespace {

using quorvel::DataBuffer;
using quorvel::Japanese;
using quorvel_test::contentOf;
using std::string_literals::operator""s;

using Conversion = bool (Japanese::*)(const unsigned char*, int, DataBuffer&, quorvel::LogBase&);

// What the conversion appends for `in`. The input is copied to a block of its
// own size, so that a step past its end is seen by the address sanitizer.
std::string run(Conversion conversion, std::string_view in) {
  const std::vector<unsigned char> bytes(in.begin(), in.end());
  DataBuffer out;
  quorvel::NullLog log;
  Japanese japanese;
  EXPECT_TRUE((japanese.*conversion)(bytes.data(), static_cast<int>(bytes.size()), out, log));
  return contentOf(out);
}

std::string read(std::string_view in) { return run(&Japanese::Iso2022ToShiftJis, in); }
std::string write(std::string_view in) { return run(&Japanese::ShiftJisToIso2022, in); }

std::string pairOf(unsigned int code) {
  return {static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
}

// All Shift_JIS codes that rows 1 to 94 have a place for, in the order of rows
// and cells.
std::vector<unsigned int> codesOf94Rows() {
  std::vector<unsigned int> codes;
  for (unsigned int lead = 0x81; lead <= 0xEF; ++lead) {
    if (lead >= 0xA0 && lead <= 0xDF) continue;
    for (unsigned int trail = 0x40; trail <= 0xFC; ++trail) {
      if (trail != 0x7F) codes.push_back(lead << 8 | trail);
    }
  }
  return codes;
}

unsigned int jisOfIndex(std::size_t index) {
  const auto place = static_cast<unsigned int>(index);
  return (place / 94 + 0x21) << 8 | (place % 94 + 0x21);
}

bool isOfLastBlock(std::size_t index) { return index >= 88 * 94 && index < 92 * 94; }

unsigned int lastBlockAt(std::size_t cell) {
  const unsigned char* block = Japanese::GetSjisFrom2022_LastBlock();
  return static_cast<unsigned int>(block[2 * cell] << 8 | block[2 * cell + 1]);
}

// --- Reading ----------------------------------------------------------------

TEST(Iso2022JpReading, TakesTheTextBeforeAnyEscapeForAscii) {
  EXPECT_EQ("Hello\r\n", read("Hello\r\n"));
}

TEST(Iso2022JpReading, ReadsBothEditionsOfTheKanjiSetAlike) {
  EXPECT_EQ("\x88\x9F", read("\x1B$B\x30\x21\x1B(B"));
  EXPECT_EQ("\x88\x9F", read("\x1B$@\x30\x21\x1B(B"));
}

TEST(Iso2022JpReading, ReturnsToAsciiByEitherEscape) {
  EXPECT_EQ("\x82\xA0!0", read("\x1B$B\x24\x22\x1B(B!0"));
  EXPECT_EQ("\x82\xA0\\~", read("\x1B$B\x24\x22\x1B(J\\~"));
}

TEST(Iso2022JpReading, ReadsDesignatedKatakana) {
  EXPECT_EQ("\xB1\xB2\xB3X", read("\x1B(I123\x1B(BX"));
  EXPECT_EQ("\xA1\xDF", read("\x1B(I\x21\x5F"));
}

TEST(Iso2022JpReading, ReadsKatakanaBetweenShiftOutAndShiftIn) {
  EXPECT_EQ("a\xB1\xB2z", read("a\x0E\x31\x32\x0Fz"));
}

TEST(Iso2022JpReading, ComesBackFromTheShiftToTheDesignatedSet) {
  EXPECT_EQ("\x82\xA0\xB1\x82\xA2", read("\x1B$B\x24\x22\x0E\x31\x0F\x24\x24"));
  EXPECT_EQ("\xB1\xB2\xB3", read("\x1B(I1\x0E"
                                 "2\x0F"
                                 "3"));
}

TEST(Iso2022JpReading, LetsAnEscapeUnderTheShiftTakeEffectAfterIt) {
  EXPECT_EQ("\xB1\xA4\xA2\x82\xA0", read("\x0E\x31\x1B$B\x24\x22\x0F\x24\x22"));
}

TEST(Iso2022JpReading, KeepsTheSetAcrossALineEnd) {
  EXPECT_EQ("\x82\xA0\r\n\x82\xA2", read("\x1B$B\x24\x22\r\n\x24\x24"));
  EXPECT_EQ("\xB1\n\xB2", read("\x0E\x31\n\x32"));
}

TEST(Iso2022JpReading, CarriesEveryByteInAscii) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != 0x0E && byte != 0x0F) all += static_cast<char>(byte);
  }
  EXPECT_EQ(all, read(all));
  EXPECT_EQ(all, read("\x1B(J" + all));
}

TEST(Iso2022JpReading, CarriesAnUnknownEscapeAloneAndReadsOnBehindIt) {
  EXPECT_EQ("\x1B[0m", read("\x1B[0m"));
  EXPECT_EQ("\x1B(K", read("\x1B(K"));
  EXPECT_EQ("\x1B\x82\xA0", read("\x1B\x1B$B\x24\x22"));
  EXPECT_EQ("\x1B\x82\xA0", read("\x1B$B\x1B\x24\x22"));
  EXPECT_EQ("\x1B\xB1", read("\x1B(I\x1B\x31"));
}

TEST(Iso2022JpReading, CarriesAnEscapeSequenceThatTheEndCutsOff) {
  for (const std::string sequence : {"\x1B(B", "\x1B(J", "\x1B(I", "\x1B$@", "\x1B$B"}) {
    EXPECT_EQ("ab", read("ab" + sequence));
    EXPECT_EQ("ab" + sequence.substr(0, 2), read("ab" + sequence.substr(0, 2)));
    EXPECT_EQ("ab" + sequence.substr(0, 1), read("ab" + sequence.substr(0, 1)));
  }
}

TEST(Iso2022JpReading, CarriesWhatIsNoKatakanaBelow80AndDropsTheRest) {
  EXPECT_EQ("\xB1\t \x60~\x7F\xB2\0\xB3"s, read("\x1B(I1\t \x60~\x7F\x32\0\x33"s));
  EXPECT_EQ("\xB1\xB2", read("\x1B(I1\x80\xA1\xFF\x32"));
  EXPECT_EQ("\xB1\x60\xB2", read("\x0E\x31\x60\xC0\x32"));
}

TEST(Iso2022JpReading, CarriesWhatIsNoLeadBelow80AndDropsTheRest) {
  EXPECT_EQ("\x82\xA0 \t\x7F\0\x82\xA2"s, read("\x1B$B\x24\x22 \t\x7F\0\x24\x24"s));
  EXPECT_EQ("\x82\xA0\x82\xA2", read("\x1B$B\x24\x22\x80\xA4\xFF\x24\x24"));
}

TEST(Iso2022JpReading, DropsALeadWithoutATrail) {
  EXPECT_EQ("\n\x82\xA2", read("\x1B$B\x24\n\x24\x24"));
  EXPECT_EQ("\x82\xA2", read("\x1B$B\x24\xA2\x24\x24"));
  EXPECT_EQ("x", read("\x1B$B\x24\x1B(Bx"));
  EXPECT_EQ("\xB1", read("\x1B$B\x24\x0E\x31"));
  EXPECT_EQ("", read("\x1B$B\x24"));
}

TEST(Iso2022JpReading, TakesRows89To92ThroughTheLastBlock) {
  for (unsigned int cell = 0; cell < 4 * 94; ++cell) {
    const unsigned int code = jisOfIndex(88 * 94 + cell);
    EXPECT_EQ(pairOf(lastBlockAt(cell)), read("\x1B$B" + pairOf(code))) << cell;
  }
  EXPECT_EQ("\xFA\x5C", read("\x1B$B\x79\x21"));
  EXPECT_EQ("\xFA\xB9\xFA\xBA", read("\x1B$B\x79\x7D\x79\x7E"));
  EXPECT_EQ("\x81\xCA\xFA\x57", read("\x1B$B\x7C\x7B\x7C\x7E"));
}

TEST(Iso2022JpReading, PlacesTheRowsAroundTheLastBlockByArithmetic) {
  EXPECT_EQ("\xEC\xFC", read("\x1B$B\x78\x7E"));
  EXPECT_EQ("\xEF\x40\xEF\xFC", read("\x1B$B\x7D\x21\x7E\x7E"));
}

// --- Writing ----------------------------------------------------------------

TEST(Iso2022JpWriting, StartsInAsciiWithoutAnEscape) { EXPECT_EQ("Hello\r\n", write("Hello\r\n")); }

TEST(Iso2022JpWriting, WrapsEachRunInItsEscapes) {
  EXPECT_EQ("a\x1B$B\x24\x22\x24\x24\x1B(Bz", write("a\x82\xA0\x82\xA2z"));
  EXPECT_EQ("a\x1B(I\x31\x32\x1B(Bz", write("a\xB1\xB2z"));
  EXPECT_EQ("\x1B(I\x21\x1B$B\x24\x22\x1B(I\x5F\x1B(B", write("\xA1\x82\xA0\xDF"));
}

TEST(Iso2022JpWriting, EndsEveryLineInAscii) {
  EXPECT_EQ("\x1B$B\x24\x22\x1B(B\r\n\x1B$B\x24\x22\x1B(B\n\x1B(I1\x1B(B\r",
            write("\x82\xA0\r\n\x82\xA0\n\xB1\r"));
}

TEST(Iso2022JpWriting, EndsTheTextInAscii) {
  EXPECT_EQ("\x1B$B\x24\x22\x1B(B", write("\x82\xA0"));
  EXPECT_EQ("\x1B(I1\x1B(B", write("\xB1"));
}

TEST(Iso2022JpWriting, DropsTheBytesThatWouldSwitchSets) {
  EXPECT_EQ("ab$Bc", write("a\x0E"
                           "b\x1B$B\x0F"
                           "c"));
  EXPECT_EQ("\x1B$B\x24\x22\x24\x24\x1B(B", write("\x82\xA0\x0E\x1B\x0F\x82\xA2"));
}

TEST(Iso2022JpWriting, CarriesTheOtherBytesBelow80) {
  std::string all;
  for (char byte = 0; byte < 0x7F; ++byte) {
    if (byte != 0x0E && byte != 0x0F && byte != 0x1B) all += byte;
  }
  all += '\x7F';
  EXPECT_EQ(all, write(all));
}

TEST(Iso2022JpWriting, WritesALoneByteAsTheGetaMark) {
  EXPECT_EQ("\x1B$B\x22\x2E\x22\x2E\x22\x2E\x22\x2E\x22\x2E\x1B(B", write("\x80\xA0\xFD\xFE\xFF"));
}

TEST(Iso2022JpWriting, WritesALeadWithoutATrailAsTheGetaMarkAndReadsOnBehindIt) {
  EXPECT_EQ("\x1B$B\x22\x2E\x1B(B", write("\x82"));
  EXPECT_EQ("\x1B$B\x22\x2E\x1B(B 1", write("\x82 1"));
  EXPECT_EQ("\x1B$B\x22\x2E\x1B(B\x7F", write("\x82\x7F"));
  EXPECT_EQ("\x1B$B\x22\x2E\x22\x2E\x1B(B", write("\x82\xFD"));
  EXPECT_EQ("\x1B$B\x22\x2E\x1B(B\r\n", write("\xFC\r\n"));
  EXPECT_EQ("\x1B$B\x22\x2E\x1B(B", write("\x82\x1B"));
}

TEST(Iso2022JpWriting, WritesTheLeadsFromF0ByTheInverseOfTheLastBlock) {
  const std::string geta = "\x1B$B\x22\x2E\x1B(B";
  std::map<unsigned int, std::string> expected;
  for (unsigned int cell = 4 * 94; cell-- > 0;) {
    expected[lastBlockAt(cell)] = "\x1B$B" + pairOf(jisOfIndex(88 * 94 + cell)) + "\x1B(B";
  }
  unsigned int numPlaced = 0;
  for (unsigned int lead = 0xF0; lead <= 0xFC; ++lead) {
    for (unsigned int trail = 0x40; trail <= 0xFC; ++trail) {
      if (trail == 0x7F) continue;
      const auto place = expected.find(lead << 8 | trail);
      EXPECT_EQ(place == expected.end() ? geta : place->second, write(pairOf(lead << 8 | trail)));
      if (place != expected.end()) ++numPlaced;
    }
  }
  EXPECT_EQ(373U, numPlaced);
}

TEST(Iso2022JpWriting, LeavesTheFillersOfTheLastBlockInTheirOwnRows) {
  EXPECT_EQ("\x1B$B\x21\x26\x22\x4C\x1B(B", write("\x81\x45\x81\xCA"));
}

// --- Both -------------------------------------------------------------------

TEST(Iso2022JpRoundTrip, PlacesEachOfThe94RowsWhereItsOrderSays) {
  const std::vector<unsigned int> codes = codesOf94Rows();
  ASSERT_EQ(94U * 94U, codes.size());
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const std::string jis = "\x1B$B" + pairOf(jisOfIndex(i)) + "\x1B(B";
    ASSERT_EQ(jis, write(pairOf(codes[i]))) << i;
    ASSERT_EQ(pairOf(isOfLastBlock(i) ? lastBlockAt(i - 88 * 94) : codes[i]), read(jis)) << i;
  }
}

TEST(Iso2022JpRoundTrip, BringsBackWholeTextsInOneCall) {
  std::string text;
  const std::vector<unsigned int> codes = codesOf94Rows();
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (isOfLastBlock(i)) continue;
    text += pairOf(codes[i]);
    if (i % 7 == 0) text += "\xA1\xB1\xDF";
    if (i % 40 == 0) text += "ascii\r\n";
  }
  for (std::size_t cell = 0; cell < 376; ++cell) text += pairOf(lastBlockAt(cell));
  EXPECT_EQ(text, read(write(text)));
}

TEST(Iso2022JpRoundTrip, AppendsNothingForNothing) {
  DataBuffer out;
  quorvel::NullLog log;
  Japanese japanese;
  const unsigned char byte = 'a';
  EXPECT_TRUE(japanese.Iso2022ToShiftJis(nullptr, 5, out, log));
  EXPECT_TRUE(japanese.Iso2022ToShiftJis(&byte, 0, out, log));
  EXPECT_TRUE(japanese.Iso2022ToShiftJis(&byte, -1, out, log));
  EXPECT_TRUE(japanese.ShiftJisToIso2022(nullptr, 5, out, log));
  EXPECT_TRUE(japanese.ShiftJisToIso2022(&byte, 0, out, log));
  EXPECT_TRUE(japanese.ShiftJisToIso2022(&byte, -1, out, log));
  EXPECT_EQ(0U, out.getSize());
}

TEST(Iso2022JpRoundTrip, AppendsBehindWhatTheBufferHolds) {
  DataBuffer out;
  quorvel::NullLog log;
  out.append("kept ", 5);
  const unsigned char text[] = {0xB1};
  EXPECT_TRUE(Japanese().ShiftJisToIso2022(text, 1, out, log));
  EXPECT_EQ("kept \x1B(I1\x1B(B", contentOf(out));
}

TEST(Iso2022JpRoundTrip, StaysInBoundsOnRandomBytes) {
  std::mt19937 random(2022);
  const std::string frequent = "\x1B\x1B\x1B$$((BJI@\x0E\x0F\x24\x22\x82\xA0\xB1\xFA\r\n";
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    for (std::size_t n = random() % 60; n > 0; --n) {
      text += random() % 2 ? frequent[random() % frequent.size()] : static_cast<char>(random());
    }
    EXPECT_LE(read(text).size(), text.size());
    const std::string written = write(text);
    EXPECT_LE(written.size(), 5 * text.size() + 3);
    EXPECT_TRUE(std::none_of(written.begin(), written.end(), [](char byte) { return byte < 0; }));
    EXPECT_EQ(read(written), read(write(read(written))));
  }
}

// --- The last block ---------------------------------------------------------

TEST(Iso2022JpLastBlock, HoldsTheIbmExtensionsAndThreeOthers) {
  std::map<unsigned int, unsigned int> counts;
  unsigned int numExtensions = 0;
  for (std::size_t cell = 0; cell < 376; ++cell) {
    const unsigned int code = lastBlockAt(cell);
    ++counts[code];
    if (code >= 0xFA40 && code <= 0xFC4B) ++numExtensions;
  }
  EXPECT_EQ(373U, numExtensions);
  EXPECT_EQ(1U, counts[0x81CA]);
  EXPECT_EQ(2U, counts[0x8145]);
  EXPECT_EQ(375U, counts.size());
}

TEST(Iso2022JpLastBlock, IsTheSameOnEveryCall) {
  const unsigned char* block = Japanese::GetSjisFrom2022_LastBlock();
  ASSERT_NE(nullptr, block);
  EXPECT_EQ(block, Japanese::GetSjisFrom2022_LastBlock());
  read("\x1B$B\x79\x21");
  EXPECT_EQ(block, Japanese::GetSjisFrom2022_LastBlock());
}

TEST(Iso2022JpLastBlock, ComesBackAfterItsRelease) {
  Japanese::GetSjisFrom2022_LastBlock();
  Japanese::releaseLastBlock();
  Japanese::releaseLastBlock();
  EXPECT_EQ("\xFA\x5C", read("\x1B$B\x79\x21"));
}

TEST(Iso2022JpLastBlock, IsSharedByThreadsThatUseItFirstTogether) {
  for (int round = 0; round < 50; ++round) {
    Japanese::releaseLastBlock();
    std::vector<const unsigned char*> seen(8);
    std::vector<std::thread> threads;
    for (const unsigned char*& block : seen) {
      threads.emplace_back([&block] { block = Japanese::GetSjisFrom2022_LastBlock(); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(8, std::count(seen.begin(), seen.end(), Japanese::GetSjisFrom2022_LastBlock()));
  }
}

// --- What was lost ----------------------------------------------------------

bool tellsError(Conversion conversion, std::string_view in) {
  DataBuffer out;
  quorvel::NullLog log;
  Japanese japanese;
  const auto* bytes = reinterpret_cast<const unsigned char*>(in.data());
  EXPECT_TRUE((japanese.*conversion)(bytes, static_cast<int>(in.size()), out, log));
  return japanese.m_hadError;
}

bool readingTells(std::string_view in) { return tellsError(&Japanese::Iso2022ToShiftJis, in); }
bool writingTells(std::string_view in) { return tellsError(&Japanese::ShiftJisToIso2022, in); }

TEST(Iso2022JpErrors, TellsWhatReadingDrops) {
  EXPECT_TRUE(readingTells("\x1B$B\x24"));
  EXPECT_TRUE(readingTells("\x1B$B\x24\n"));
  EXPECT_TRUE(readingTells("\x1B$B\xA4\x22"));
  EXPECT_TRUE(readingTells("\x0E\x80"));
}

TEST(Iso2022JpErrors, TellsOfASetThatIsNotKnown) {
  EXPECT_TRUE(readingTells("\x1B$(D\x30\x21\x1B(B"));
  EXPECT_TRUE(readingTells("\x1B.A"));
}

TEST(Iso2022JpErrors, TellsNothingOfTextThatIsReadWhole) {
  EXPECT_FALSE(readingTells(""));
  EXPECT_FALSE(readingTells("a\x1B$B\x24\x22 \x22\x2E\n\x1B(I\x31\x1B(Jz\x0E\x31\x0F"));
  EXPECT_FALSE(readingTells("\x1B[31mred\x1B[0m \x82\xA0"));
}

TEST(Iso2022JpErrors, TellsWhatWritingReplacesOrDrops) {
  EXPECT_TRUE(writingTells("\x82"));
  EXPECT_TRUE(writingTells("\x82\x20"));
  EXPECT_TRUE(writingTells("\xA0"));
  EXPECT_TRUE(writingTells("\xF0\x40"));
  EXPECT_TRUE(writingTells("a\x0E"));
  EXPECT_TRUE(writingTells("a\x0F"));
  EXPECT_TRUE(writingTells("a\x1B"));
}

TEST(Iso2022JpErrors, TellsNothingOfTextThatIsWrittenWhole) {
  EXPECT_FALSE(writingTells(""));
  EXPECT_FALSE(writingTells("a\x82\xA0\x81\xAC\xB1\xFA\x5C\xED\x40\r\n"));
}

TEST(Iso2022JpErrors, TellsOfTheLastCallOnly) {
  DataBuffer out;
  quorvel::NullLog log;
  Japanese japanese;
  const unsigned char bad[] = {0x82};
  japanese.ShiftJisToIso2022(bad, 1, out, log);
  EXPECT_TRUE(japanese.m_hadError);
  japanese.Iso2022ToShiftJis(bad, 0, out, log);
  EXPECT_FALSE(japanese.m_hadError);
}

}  // namespace
