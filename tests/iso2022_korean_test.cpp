#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/unicode/Korean.h"
#include "tests/helpers/Bytes.h"

namespace {

using quorvel::DataBuffer;
using quorvel::Korean;
using quorvel_test::contentOf;
using std::string_literals::operator""s;

using Conversion = bool (Korean::*)(const unsigned char*, int, DataBuffer&);

// What the conversion appends for `in`, which is copied to a block of its own
// size, so that a step past its end is seen by the address sanitizer.
std::string run(Conversion conversion, std::string_view in) {
  const std::vector<unsigned char> bytes(in.begin(), in.end());
  DataBuffer out;
  Korean korean;
  EXPECT_TRUE((korean.*conversion)(bytes.data(), static_cast<int>(bytes.size()), out));
  return contentOf(out);
}

const std::string header = "\x1B$)C";

std::string read(std::string_view in) { return run(&Korean::Iso2022ToKsc, in); }
std::string write(std::string_view in) { return run(&Korean::KscToIso2022, in); }

std::string pairOf(unsigned int lead, unsigned int trail) {
  return {static_cast<char>(lead), static_cast<char>(trail)};
}

// --- Reading ----------------------------------------------------------------

TEST(Iso2022KrReading, ReadsTheShiftedBytesAsKsc) {
  EXPECT_EQ("a\xB0\xA1\xB0\xA2z\r\n", read(header + "a\x0E\x30\x21\x30\x22\x0Fz\r\n"));
}

TEST(Iso2022KrReading, DropsTheHeaderWhereverItStands) {
  EXPECT_EQ("ab\n\xB0\xA1\xB0\xA2",
            read("a" + header + "b\n" + header + "\x0E\x30\x21" + header + "\x30\x22" + header));
}

TEST(Iso2022KrReading, ReadsTextWithoutAHeaderTheSame) {
  EXPECT_EQ("\xB0\xA1", read("\x0E\x30\x21\x0F"));
}

TEST(Iso2022KrReading, KeepsTheShiftAcrossALineEnd) {
  EXPECT_EQ("\xB0\xA1\r\n\xB0\xA2", read("\x0E\x30\x21\r\n\x30\x22"));
}

TEST(Iso2022KrReading, CarriesEveryByteInAscii) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != 0x0E && byte != 0x0F) all += static_cast<char>(byte);
  }
  EXPECT_EQ(all, read(header + all));
}

TEST(Iso2022KrReading, CarriesAnotherEscapeAloneAndReadsOnBehindIt) {
  EXPECT_EQ("\x1B$)A", read("\x1B$)A"));
  EXPECT_EQ("\x1Bx", read("\x1B" + header + "x"));
  EXPECT_EQ("\x1B\xB0\xA1", read("\x0E\x1B\x30\x21"));
}

TEST(Iso2022KrReading, CarriesAHeaderThatTheEndCutsOff) {
  for (std::size_t length = 1; length < header.size(); ++length) {
    EXPECT_EQ("ab" + header.substr(0, length), read("ab" + header.substr(0, length)));
  }
  EXPECT_EQ("ab", read("ab" + header));
}

TEST(Iso2022KrReading, CarriesWhatIsNoLeadBelow80AndDropsTheRest) {
  EXPECT_EQ("\xB0\xA1 \t\x7F\0\xB0\xA2"s, read("\x0E\x30\x21 \t\x7F\0\x30\x22"s));
  EXPECT_EQ("\xB0\xA1\xB0\xA2", read("\x0E\x30\x21\x80\xB0\xFF\x30\x22"));
}

TEST(Iso2022KrReading, DropsALeadWithoutATrail) {
  EXPECT_EQ("\n\xB0\xA2", read("\x0E\x30\n\x30\x22"));
  EXPECT_EQ("\xB0\xA2", read("\x0E\x30\xA1\x30\x22"));
  EXPECT_EQ("x", read("\x0E\x30\x0Fx"));
  EXPECT_EQ("", read("\x0E\x30"));
}

// --- Writing ----------------------------------------------------------------

TEST(Iso2022KrWriting, WritesTheHeaderOnceAtTheStart) {
  EXPECT_EQ(header + "one\ntwo\n", write("one\ntwo\n"));
  EXPECT_EQ(header + "\x0E\x30\x21\x0F", write("\xB0\xA1"));
}

TEST(Iso2022KrWriting, ShiftsAroundEachRun) {
  EXPECT_EQ(header + "a\x0E\x30\x21\x30\x22\x0Fz\x0E\x30\x23\x0F",
            write("a\xB0\xA1\xB0\xA2z\xB0\xA3"));
}

TEST(Iso2022KrWriting, EndsEveryLineInAscii) {
  EXPECT_EQ(header + "\x0E\x30\x21\x0F\r\n\x0E\x30\x22\x0F\n", write("\xB0\xA1\r\n\xB0\xA2\n"));
}

TEST(Iso2022KrWriting, CarriesUnifiedHangulPairsAsTheyStand) {
  EXPECT_EQ(header + "\x81\x41\xC6\x52\xA0\xFE\xA1\x7A", write("\x81\x41\xC6\x52\xA0\xFE\xA1\x7A"));
  EXPECT_EQ(header + "\x0E\x30\x21\x0F\x81\x41\x0E\x30\x22\x0F", write("\xB0\xA1\x81\x41\xB0\xA2"));
}

TEST(Iso2022KrWriting, KeepsAUnifiedHangulPairTogetherBeforeAPair) {
  EXPECT_EQ(header + "\x81\xB0\x0E\x30\x21\x0F", write("\x81\xB0\xB0\xA1"));
}

TEST(Iso2022KrWriting, CarriesLoneBytesAsTheyStand) {
  EXPECT_EQ(header + "\x80", write("\x80"));
  EXPECT_EQ(header + "\xFF\x0E\x30\x21\x0F", write("\xFF\xB0\xA1"));
  EXPECT_EQ(header + "\xB0", write("\xB0"));
  EXPECT_EQ(header + "\xB0\x20\x81\x80\x81\x5B", write("\xB0\x20\x81\x80\x81\x5B"));
  EXPECT_EQ(header + "\x0E\x30\x21\x0F\xB0\r\n", write("\xB0\xA1\xB0\r\n"));
}

TEST(Iso2022KrWriting, DropsTheBytesThatWouldSwitchSets) {
  EXPECT_EQ(header + "ab$)Cc", write("a\x0E"
                                     "b\x1B$)C\x0F"
                                     "c"));
  EXPECT_EQ(header + "\x0E\x30\x21\x30\x22\x0F", write("\xB0\xA1\x0F\x1B\x0E\xB0\xA2"));
  EXPECT_EQ(header, write("\x1B"));
}

// --- Both -------------------------------------------------------------------

TEST(Iso2022KrRoundTrip, CarriesAll94RowsSevenBitsWide) {
  for (unsigned int lead = 0xA1; lead <= 0xFE; ++lead) {
    for (unsigned int trail = 0xA1; trail <= 0xFE; ++trail) {
      const std::string written = header + '\x0E' + pairOf(lead - 0x80, trail - 0x80) + '\x0F';
      ASSERT_EQ(written, write(pairOf(lead, trail)));
      ASSERT_EQ(pairOf(lead, trail), read(written));
    }
  }
}

TEST(Iso2022KrRoundTrip, BringsBackEveryByteAndEveryUnifiedHangulPair) {
  std::string text;
  for (int byte = 0; byte < 0x80; ++byte) {
    if (byte != 0x0E && byte != 0x0F && byte != 0x1B) text += static_cast<char>(byte);
  }
  for (unsigned int lead = 0x81; lead <= 0xFE; ++lead) {
    for (unsigned int trail = 0x41; trail <= 0xFE; ++trail) {
      if (trail <= 0x5A || (trail >= 0x61 && trail <= 0x7A) || trail >= 0x81) {
        text += pairOf(lead, trail);
      }
    }
    text += "\r\n";
  }
  EXPECT_EQ(text, read(write(text)));
}

TEST(Iso2022KrRoundTrip, AppendsNothingForNothing) {
  DataBuffer out;
  Korean korean;
  const unsigned char byte = 'a';
  EXPECT_TRUE(korean.Iso2022ToKsc(nullptr, 5, out));
  EXPECT_TRUE(korean.Iso2022ToKsc(&byte, 0, out));
  EXPECT_TRUE(korean.Iso2022ToKsc(&byte, -1, out));
  EXPECT_TRUE(korean.KscToIso2022(nullptr, 5, out));
  EXPECT_TRUE(korean.KscToIso2022(&byte, 0, out));
  EXPECT_TRUE(korean.KscToIso2022(&byte, -1, out));
  EXPECT_EQ(0U, out.getSize());
}

TEST(Iso2022KrRoundTrip, AppendsBehindWhatTheBufferHolds) {
  DataBuffer out;
  out.append("kept ", 5);
  const unsigned char text[] = {0xB0, 0xA1};
  EXPECT_TRUE(Korean().KscToIso2022(text, 2, out));
  EXPECT_EQ("kept " + header + "\x0E\x30\x21\x0F", contentOf(out));
}

TEST(Iso2022KrRoundTrip, StaysInBoundsOnRandomBytes) {
  std::mt19937 random(2022);
  const std::string frequent = "\x1B\x1B$)C\x0E\x0F\x30\x21\xB0\xA1\x81\xFE\x41\r\n";
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    for (std::size_t n = random() % 60; n > 0; --n) {
      text += random() % 2 ? frequent[random() % frequent.size()] : static_cast<char>(random());
    }
    EXPECT_LE(read(text).size(), text.size());
    const std::string written = write(text);
    EXPECT_LE(written.size(), header.size() + 2 * text.size() + 1);
    std::erase_if(text, [](char byte) { return byte == 0x0E || byte == 0x0F || byte == 0x1B; });
    EXPECT_EQ(text, read(written));
  }
}

// --- What was lost ----------------------------------------------------------

bool tellsError(Conversion conversion, std::string_view in) {
  DataBuffer out;
  Korean korean;
  const auto* bytes = reinterpret_cast<const unsigned char*>(in.data());
  EXPECT_TRUE((korean.*conversion)(bytes, static_cast<int>(in.size()), out));
  return korean.m_hadError;
}

bool readingTells(std::string_view in) { return tellsError(&Korean::Iso2022ToKsc, in); }
bool writingTells(std::string_view in) { return tellsError(&Korean::KscToIso2022, in); }

TEST(Iso2022KrErrors, TellsWhatReadingDrops) {
  EXPECT_TRUE(readingTells("\x0E\x30"));
  EXPECT_TRUE(readingTells("\x0E\x30\n"));
  EXPECT_TRUE(readingTells(header + "\x0E\x80\x30\x21"));
}

TEST(Iso2022KrErrors, TellsOfASetThatIsNotKnown) {
  EXPECT_TRUE(readingTells("\x1B$)A\x0E\x30\x21"));
}

TEST(Iso2022KrErrors, TellsNothingOfTextThatIsReadWhole) {
  EXPECT_FALSE(readingTells(""));
  EXPECT_FALSE(readingTells(header + "a\x0E\x30\x21 \n\x0Fz\xB0\xA1\x1B[0m"));
}

TEST(Iso2022KrErrors, TellsWhatWritingDrops) {
  EXPECT_TRUE(writingTells("a\x0E"));
  EXPECT_TRUE(writingTells("a\x0F"));
  EXPECT_TRUE(writingTells("\xB0\xA1\x1B"));
}

TEST(Iso2022KrErrors, TellsNothingOfTextThatIsWrittenWhole) {
  EXPECT_FALSE(writingTells(""));
  EXPECT_FALSE(writingTells("a\xB0\xA1\x81\x41\r\n"));
}

TEST(Iso2022KrErrors, TellsOfTheLastCallOnly) {
  DataBuffer out;
  Korean korean;
  const unsigned char bad[] = {0x0E, 0x30};
  korean.Iso2022ToKsc(bad, 2, out);
  EXPECT_TRUE(korean.m_hadError);
  korean.KscToIso2022(bad, 0, out);
  EXPECT_FALSE(korean.m_hadError);
}

}  // namespace
