#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/names/Psdk.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::LogBase;
using quorvel::Psdk;
using quorvel::StringBuffer;

constexpr const char* kUnknown = "no-such-charset";

/// A charset name as the operations take it.
class Name : public StringBuffer {
 public:
  explicit Name(const char* text) { append(text); }
};

/// The operations as functions of plain texts; `from` and `to` hold a name or
/// a number, whichever the operation takes.
bool chConvert(EncodingConvert& c, const char* from, const char* to, const unsigned char* p,
               unsigned int n, DataBuffer& out, LogBase& log) {
  Name fromName(from);
  Name toName(to);
  return c.ChConvert(fromName, toName, p, n, out, log, true);
}

bool chConvertUnused(EncodingConvert& c, const char* from, const char* to, const unsigned char* p,
                     unsigned int n, DataBuffer& out, LogBase& log) {
  Name fromName(from);
  Name toName(to);
  return c.ChConvert(fromName, toName, p, n, out, log, false);
}

bool chConvert2(EncodingConvert& c, const char* from, const char* to, const unsigned char* p,
                unsigned int n, DataBuffer& out, LogBase& log) {
  Name fromName(from);
  return c.ChConvert2(fromName, std::stoi(to), p, n, out, log);
}

bool chConvert2p(EncodingConvert& c, const char* from, const char* to, const unsigned char* p,
                 unsigned int n, DataBuffer& out, LogBase& log) {
  return c.ChConvert2p(from, std::stoi(to), p, n, out, log);
}

bool chConvert3(EncodingConvert& c, const char* from, const char* to, const unsigned char* p,
                unsigned int n, DataBuffer& out, LogBase& log) {
  Name toName(to);
  return c.ChConvert3(std::stoi(from), toName, p, n, out, log);
}

bool chConvert3p(EncodingConvert& c, const char* from, const char* to, const unsigned char* p,
                 unsigned int n, DataBuffer& out, LogBase& log) {
  return c.ChConvert3p(std::stoi(from), to, p, n, out, log);
}

bool chConvert3WithPreamble(EncodingConvert& c, const char* from, const char* to,
                            const unsigned char* p, unsigned int n, DataBuffer& out, LogBase& log) {
  Name toName(to);
  return c.ChConvert3_withPreamble(std::stoi(from), toName, p, n, out, log);
}

using Call = bool (*)(EncodingConvert&, const char*, const char*, const unsigned char*,
                      unsigned int, DataBuffer&, LogBase&);

constexpr Call kTwoNames[] = {chConvert, chConvertUnused};
constexpr Call kFromName[] = {chConvert2, chConvert2p};
constexpr Call kToName[] = {chConvert3, chConvert3p};

Outcome byName(Call call, EncodingConvert& converter, const char* from, const char* to,
               std::string_view input, LogBase& log) {
  DataBuffer out = bufferOf("'>'");
  const Bytes data = bytes(input);
  const bool result = call(converter, from, to, data.data(), sizeOf(data), out, log);
  return {result, converter.m_hadError, hex(out)};
}

Outcome byName(Call call, const char* from, const char* to, std::string_view input) {
  RecordingLog log;
  EncodingConvert converter;
  return byName(call, converter, from, to, input, log);
}

TEST(NamedConversion, TakesTwoNames) {
  for (Call call : kTwoNames) {
    EXPECT_EQ(byName(call, "utf-8", "UTF-16LE", "61 C3 A9"), converts("'>' 61 00 E9 00"));
    EXPECT_EQ(byName(call, "UTF-16BE", "utf8", "00 61 00 E9"), converts("'>a' C3 A9"));
    EXPECT_EQ(byName(call, "utf-8", "UTF-8", "80"), converts("'>' 80"));
    EXPECT_EQ(byName(call, "us-ascii", "iso-8859-1", "61"), converts("'>a'"));
    EXPECT_EQ(byName(call, "65001", "1200", "61"), converts("'>' 61 00"));
    EXPECT_EQ(byName(call, "utf-7", "utf-8", "'+AOk-b'"), converts("'>' C3 A9 'b'"));
    EXPECT_EQ(byName(call, "iso-2022-jp", "shift_jis", "1B 24 42 24 22 1B 28 42"),
              converts("'>' 82 A0"));
  }
}

TEST(NamedConversion, RefusesAnUnknownNameOfTwoQuietly) {
  for (Call call : kTwoNames) {
    for (const auto& [from, to] : {std::pair(kUnknown, "utf-8"), std::pair("utf-8", kUnknown),
                                   std::pair(kUnknown, kUnknown), std::pair("", "utf-8")}) {
      RecordingLog log(true);
      EncodingConvert converter;
      converter.m_hadError = true;
      converter.m_honorPassthroughMarkers = true;
      converter.m_emitPassthroughMarkers = true;
      EXPECT_EQ(byName(call, converter, from, to, "61", log), failsQuietly("'>'"));
      EXPECT_EQ(byName(call, converter, from, to, "'%PDF-1.4'", log), failsQuietly("'>'"));
      EXPECT_EQ(byName(call, converter, from, to, "", log), failsQuietly("'>'"));
      EXPECT_EQ(log.lines, Lines());
      EXPECT_FALSE(converter.m_honorPassthroughMarkers);
      EXPECT_TRUE(converter.m_emitPassthroughMarkers);
    }
  }
}

TEST(NamedConversion, TakesASourceName) {
  for (Call call : kFromName) {
    EXPECT_EQ(byName(call, "utf-16le", "65001", "E9 00"), converts("'>' C3 A9"));
    EXPECT_EQ(byName(call, "utf-8", "1201", "C3 A9"), converts("'>' 00 E9"));
    EXPECT_EQ(byName(call, "utf-8", "0", "80"), converts("'>' 80"));
    EXPECT_EQ(byName(call, "utf-8", "20", "61"), failsQuietly("'>'"));
  }
}

TEST(NamedConversion, LogsAnUnknownSourceNameAndReadsUtf8) {
  for (Call call : kFromName) {
    for (bool verbose : {false, true}) {
      RecordingLog log(verbose);
      EncodingConvert converter;
      EXPECT_EQ(byName(call, converter, kUnknown, "1200", "61 C3 A9", log),
                converts("'>' 61 00 E9 00"));
      EXPECT_EQ(converter.m_fromCodePage, 65001);
      ASSERT_GE(log.lines.size(), 3U);
      EXPECT_EQ(log.lines[0], "error: Unrecognized fromCharset");
      EXPECT_EQ(log.lines[1], "sb charsetName=no-such-charset");
      EXPECT_EQ(log.lines[2], std::string("open EncConvert verbose=") + (verbose ? "1" : "0"));
    }
  }
}

TEST(NamedConversion, LogsAnUnknownSourceNameWhateverTheInput) {
  for (Call call : kFromName) {
    RecordingLog log;
    EncodingConvert converter;
    EXPECT_EQ(byName(call, converter, kUnknown, "1200", "", log), converts("'>'"));
    EXPECT_EQ(log.lines,
              (Lines{"error: Unrecognized fromCharset", "sb charsetName=no-such-charset"}));
  }
}

TEST(NamedConversion, CopiesFromAnUnknownNameToUtf8) {
  for (Call call : kFromName) {
    EXPECT_EQ(byName(call, kUnknown, "65001", "61 80"), converts("'>' 61 80"));
    EXPECT_EQ(byName(call, kUnknown, "20", "61"), failsQuietly("'>'"));
  }
}

TEST(NamedConversion, TakesADestinationName) {
  for (Call call : kToName) {
    EXPECT_EQ(byName(call, "1200", "utf-8", "E9 00"), converts("'>' C3 A9"));
    EXPECT_EQ(byName(call, "65001", "utf-16be", "C3 A9"), converts("'>' 00 E9"));
    EXPECT_EQ(byName(call, "0", "utf-8", "80"), converts("'>' 80"));
    EXPECT_EQ(byName(call, "20", "utf-8", "61"), failsQuietly("'>'"));
  }
}

TEST(NamedConversion, WritesUtf8ForAnUnknownDestinationNameQuietly) {
  for (Call call : {chConvert3, chConvert3p, chConvert3WithPreamble}) {
    RecordingLog log;
    EncodingConvert converter;
    EXPECT_EQ(byName(call, converter, "1200", kUnknown, "E9 00", log),
              converts(call == chConvert3WithPreamble ? "'>' EF BB BF C3 A9" : "'>' C3 A9"));
    EXPECT_EQ(converter.m_toCodePage, 65001);
    EXPECT_EQ(log.lines, (Lines{"open EncConvert verbose=0", "open convert_a verbose=0",
                                "open convertFromUnicode verbose=0", "close", "close", "close"}));
  }
}

TEST(NamedConversion, WritesThePreambleOfTheDestinationName) {
  const Call call = chConvert3WithPreamble;
  EXPECT_EQ(byName(call, "1200", "utf-8", "61 00"), converts("'>' EF BB BF 61"));
  EXPECT_EQ(byName(call, "65001", "utf-16le", "61"), converts("'>' FF FE 61 00"));
  EXPECT_EQ(byName(call, "65001", "utf-16be", "61"), converts("'>' FE FF 00 61"));
  EXPECT_EQ(byName(call, "65001", "utf-7", "61"), converts("'>a'"));
  EXPECT_EQ(byName(call, "65001", "utf-32be", "61"), converts("'>' 00 00 00 61"));
  EXPECT_EQ(byName(call, "65001", "utf-8", ""), converts("'>' EF BB BF"));
  EXPECT_EQ(byName(call, "20", "utf-8", "61"), failsQuietly("'>' EF BB BF"));
  EXPECT_EQ(byName(call, "1200", kUnknown, ""), converts("'>' EF BB BF"));
}

TEST(NamedConversion, TreatsANullNameAsAnUnknownOne) {
  RecordingLog log;
  EncodingConvert converter;
  EXPECT_EQ(byName(chConvert2p, converter, nullptr, "1200", "61", log), converts("'>' 61 00"));
  ASSERT_GE(log.lines.size(), 2U);
  EXPECT_EQ(log.lines[0], "error: Unrecognized fromCharset");
  EXPECT_EQ(log.lines[1], "sb charsetName=");
  EXPECT_EQ(byName(chConvert3p, "1200", nullptr, "61 00"), converts("'>a'"));
}

TEST(NamedConversion, ClearsTheErrorAndHonourFlagsFirst) {
  for (Call call : {chConvert2, chConvert2p, chConvert3, chConvert3p, chConvert3WithPreamble}) {
    const bool fromName = call == chConvert2 || call == chConvert2p;
    for (const char* name : {"utf-8", kUnknown}) {
      RecordingLog log;
      EncodingConvert converter;
      converter.m_hadError = true;
      converter.m_honorPassthroughMarkers = true;
      converter.m_emitPassthroughMarkers = true;
      byName(call, converter, fromName ? name : "65001", fromName ? "65001" : name, "", log);
      EXPECT_FALSE(converter.m_hadError);
      EXPECT_FALSE(converter.m_honorPassthroughMarkers);
      EXPECT_TRUE(converter.m_emitPassthroughMarkers);
    }
  }
}

TEST(NamedConversion, ReportsTheErrorsOfTheConversion) {
  EXPECT_EQ(byName(chConvert, "utf-8", "utf-16le", "61 80"), convertsWithError("'>' 61 00"));
  EXPECT_EQ(byName(chConvert2p, "utf-8", "1200", "61 80"), convertsWithError("'>' 61 00"));
  EXPECT_EQ(byName(chConvert3, "1200", "utf-8", "61 00 62"), fails("'>a'"));
}

TEST(NamedConversion, KeepsTheNameThatItWasGiven) {
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out;
  Name from(kUnknown);
  Name to("UTF-16LE");
  const Bytes data = bytes("61");
  converter.ChConvert2(from, 1200, data.data(), 1, out, log);
  converter.ChConvert3(65001, to, data.data(), 1, out, log);
  EXPECT_STREQ(from.getString(), kUnknown);
  EXPECT_STREQ(to.getString(), "UTF-16LE");
}

/// Sets the platform code pages for one test.
class PlatformCodePages : public testing::Test {
 protected:
  ~PlatformCodePages() override { Psdk::setCodePages(0, 0); }
};

using FromPlatform = bool (EncodingConvert::*)(int, const char*, int, DataBuffer&, LogBase&);
using ToPlatform = bool (EncodingConvert::*)(int, const unsigned char*, int, DataBuffer&, LogBase&);

Outcome platform(FromPlatform operation, int toCodePage, std::string_view input, int length = -2) {
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out = bufferOf("'>'");
  const Bytes data = bytes(input);
  const bool result =
      (converter.*operation)(toCodePage, reinterpret_cast<const char*>(data.data()),
                             length == -2 ? static_cast<int>(data.size()) : length, out, log);
  return {result, converter.m_hadError, hex(out)};
}

Outcome platform(ToPlatform operation, int fromCodePage, std::string_view input, int length = -2) {
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out = bufferOf("'>'");
  const Bytes data = bytes(input);
  const bool result = (converter.*operation)(
      fromCodePage, data.data(), length == -2 ? static_cast<int>(data.size()) : length, out, log);
  return {result, converter.m_hadError, hex(out)};
}

constexpr FromPlatform kAnsiTo = &EncodingConvert::AnsiToMultiByte;
constexpr FromPlatform kOemTo = &EncodingConvert::OemToMultiByte;
constexpr ToPlatform kToAnsi = &EncodingConvert::MultiByteToAnsi;
constexpr ToPlatform kToOem = &EncodingConvert::MultiByteToOem;

TEST_F(PlatformCodePages, AreEachUsedByTheirOperations) {
  Psdk::setCodePages(65001, 1201);
  EXPECT_EQ(platform(kAnsiTo, 1200, "C3 A9"), converts("'>' E9 00"));
  EXPECT_EQ(platform(kToAnsi, 1200, "E9 00"), converts("'>' C3 A9"));
  EXPECT_EQ(platform(kOemTo, 65001, "00 E9"), converts("'>' C3 A9"));
  EXPECT_EQ(platform(kToOem, 65001, "C3 A9"), converts("'>' 00 E9"));
}

TEST_F(PlatformCodePages, CopyToThemselves) {
  Psdk::setCodePages(65001, 1201);
  EXPECT_EQ(platform(kAnsiTo, 65001, "80 FF"), converts("'>' 80 FF"));
  EXPECT_EQ(platform(kToAnsi, 0, "80 FF"), converts("'>' 80 FF"));
  EXPECT_EQ(platform(kOemTo, 0, "80"), converts("'>' 80"));
  EXPECT_EQ(platform(kToOem, 1201, "80"), converts("'>' 80"));
}

TEST_F(PlatformCodePages, BelowAHundredAreRefused) {
  Psdk::setCodePages(20, 99);
  EXPECT_EQ(platform(kAnsiTo, 65001, "61"), failsQuietly("'>'"));
  EXPECT_EQ(platform(kToAnsi, 65001, "61"), failsQuietly("'>'"));
  EXPECT_EQ(platform(kOemTo, 65001, "61"), failsQuietly("'>'"));
  EXPECT_EQ(platform(kToOem, 65001, "61"), failsQuietly("'>'"));
}

TEST_F(PlatformCodePages, ComeBackFromTheLocaleWhenReset) {
  const int ansi = Psdk::getAnsiCodePage();
  const int oem = Psdk::getOemCodePage();
  Psdk::setCodePages(65001, 0);
  EXPECT_EQ(Psdk::getAnsiCodePage(), 65001);
  EXPECT_EQ(Psdk::getOemCodePage(), oem);
  Psdk::setCodePages(0, 65001);
  EXPECT_EQ(Psdk::getAnsiCodePage(), ansi);
  EXPECT_EQ(Psdk::getOemCodePage(), 65001);
  Psdk::setCodePages(0, 0);
  EXPECT_EQ(Psdk::getAnsiCodePage(), ansi);
  EXPECT_EQ(Psdk::getOemCodePage(), oem);
}

TEST_F(PlatformCodePages, AreThoseOfThePlainLocaleHere) {
  EXPECT_EQ(Psdk::getAnsiCodePage(), 1252);
  EXPECT_EQ(Psdk::getOemCodePage(), 437);
  // To 1252 from US-ASCII is a copy; to 437 it is not, and takes a table.
  EXPECT_EQ(platform(kToAnsi, 20127, "61"), converts("'>a'"));
  EXPECT_EQ(platform(kAnsiTo, 1252, "E9"), converts("'>' E9"));
  EXPECT_EQ(platform(kOemTo, 437, "82"), converts("'>' 82"));
}

TEST_F(PlatformCodePages, ConvertNothingForALengthOfZeroOrLess) {
  Psdk::setCodePages(65001, 1201);
  for (int length : {0, -1, INT_MIN}) {
    EXPECT_EQ(platform(kAnsiTo, 1200, "61 62", length), converts("'>'"));
    EXPECT_EQ(platform(kToAnsi, 1200, "61 62", length), converts("'>'"));
    EXPECT_EQ(platform(kOemTo, 65001, "61 62", length), converts("'>'"));
    EXPECT_EQ(platform(kToOem, 65001, "61 62", length), converts("'>'"));
  }
}

TEST_F(PlatformCodePages, OpenNoContextOfTheirOwn) {
  Psdk::setCodePages(65001, 65001);
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out;
  const Bytes data = bytes("61");
  EXPECT_TRUE(converter.AnsiToMultiByte(0, "a", 1, out, log));
  EXPECT_TRUE(converter.OemToMultiByte(0, "a", 1, out, log));
  EXPECT_TRUE(converter.MultiByteToAnsi(0, data.data(), 1, out, log));
  EXPECT_TRUE(converter.MultiByteToOem(0, data.data(), 1, out, log));
  const Lines once = {"open EncConvert verbose=0", "close"};
  Lines expected;
  for (int i = 0; i < 4; ++i) expected.insert(expected.end(), once.begin(), once.end());
  EXPECT_EQ(log.lines, expected);
}

TEST_F(PlatformCodePages, PassPdfDocumentsAndErrorsThrough) {
  Psdk::setCodePages(65001, 20);
  EXPECT_EQ(platform(kAnsiTo, 1200, "61 80"), convertsWithError("'>' 61 00"));
  EXPECT_EQ(platform(kToOem, 1200, "'%PDF-1.4'"), converts("'>%PDF-1.4'"));
}

}  // namespace
