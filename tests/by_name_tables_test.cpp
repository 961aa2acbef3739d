#include <gtest/gtest.h>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/names/Psdk.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::Psdk;
using quorvel::StringBuffer;

TEST(NamedTableConversion, ReadsUtf8ForAnUnknownSourceName) {
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out;
  const Bytes data = bytes("61 62 63");
  EXPECT_TRUE(converter.ChConvert2p("no-such-charset", 1252, data.data(), 3, out, log));
  EXPECT_EQ(hex(out), "61 62 63");
  ASSERT_GE(log.lines.size(), 2U);
  EXPECT_EQ(log.lines[0], "error: Unrecognized fromCharset");
  EXPECT_EQ(log.lines[1], "sb charsetName=no-such-charset");
}

TEST(NamedTableConversion, WritesUtf8ForAnUnknownDestinationNameQuietly) {
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out;
  StringBuffer name;
  name.append("no-such-charset");
  const Bytes data = bytes("E9");
  EXPECT_TRUE(converter.ChConvert3(1252, name, data.data(), 1, out, log));
  EXPECT_EQ(hex(out), "C3 A9");
  EXPECT_EQ(log.linesOutsideTableDrivers(),
            (Lines{"open EncConvert verbose=0", "open convert_a verbose=0",
                   "open convertFromUnicode verbose=0", "close", "close", "close"}));
}

TEST(NamedTableConversion, WritesThePreambleOfTheDestinationName) {
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out;
  StringBuffer name;
  name.append("utf-8");
  const Bytes data = bytes("E9");
  EXPECT_TRUE(converter.ChConvert3_withPreamble(1252, name, data.data(), 1, out, log));
  EXPECT_EQ(hex(out), "EF BB BF C3 A9");
}

TEST(NamedTableConversion, TakesTwoNames) {
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out;
  StringBuffer from;
  from.append("windows-1252");
  StringBuffer to;
  to.append("IBM437");
  const Bytes data = bytes("E9");
  EXPECT_TRUE(converter.ChConvert(from, to, data.data(), 1, out, log, false));
  EXPECT_EQ(hex(out), "82");
}

TEST(PlatformConversion, GoesByThePlainLocale) {
  ASSERT_EQ(Psdk::getAnsiCodePage(), 1252);
  ASSERT_EQ(Psdk::getOemCodePage(), 437);
  RecordingLog log;
  EncodingConvert converter;
  DataBuffer out;
  const Bytes utf8 = bytes("C3 A9");
  EXPECT_TRUE(converter.AnsiToMultiByte(65001, "\xE9", 1, out, log));
  EXPECT_TRUE(converter.OemToMultiByte(65001, "\x82", 1, out, log));
  EXPECT_TRUE(converter.MultiByteToAnsi(65001, utf8.data(), 2, out, log));
  EXPECT_TRUE(converter.MultiByteToOem(65001, utf8.data(), 2, out, log));
  EXPECT_EQ(hex(out), "C3 A9 C3 A9 E9 82");
}

}  // namespace
