#include <gtest/gtest.h>

#include <string>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/names/Psdk.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/ThrowingSink.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::LogBase;
using quorvel::StringBuffer;

/// One conversion through the dispatcher.
struct Route {
  int from;
  int to;
  const char* input;
  int action = 0;
  int alternate = 0;
};

bool run(const Route& route, LogBase& log, DataBuffer& out) {
  EncodingConvert converter = withAlternate(route.alternate);
  converter.setErrorAction(route.action);
  const Bytes data = bytes(route.input);
  return converter.EncConvert(route.from, route.to, data.data(), sizeOf(data), out, log);
}

/// The lines of a conversion, less the contexts of the table drivers, with
/// "+" for the verbosity of every context.
Lines linesOf(const Route& route, bool verbose) {
  RecordingLog log(verbose);
  DataBuffer out;
  run(route, log, out);
  EXPECT_EQ(log.openContexts, 0);
  return log.linesOutsideTableDrivers();
}

std::string open(const char* name, bool verbose) {
  return std::string("open ") + name + " verbose=" + (verbose ? "1" : "0");
}

/// What a route logs: `verbose` in full, "(name" opening a context and ")"
/// closing one; everything else is written only when the log is verbose.
struct Expectation {
  Route route;
  Lines verbose;
};

Lines expectedLines(const Lines& notation, bool verbose) {
  Lines result;
  for (const std::string& line : notation) {
    if (line == ")") {
      result.push_back("close");
    } else if (line[0] == '(') {
      result.push_back(open(line.c_str() + 1, verbose));
    } else if (verbose) {
      result.push_back(line);
    }
  }
  return result;
}

std::string from(int codePage) { return "long fromCodePage=" + std::to_string(codePage); }
std::string to(int codePage) { return "long toCodePage=" + std::to_string(codePage); }

const std::string kToUtf8 = "info: converting from utf-16 to utf-8";
const std::string kToUtf16 = "info: converting from utf-8 to utf-16";
const std::string kFromUtf8ByPivot = "info: Converting from utf-8 using utf-16 as a pivot table...";
const std::string kToUtf8ByPivot = "info: Converting to utf-8 using utf-16 as a pivot table...";
const std::string kByPivot = "info: Converting by using utf-16 as a pivot table...";
const std::string kIso2022 = "info: Converting from iso-2022-*";
const std::string kNotDecoded = "error: convertToUnicodeHC failed.";
const std::string kInvalid = "error: Found invalid utf-8 when trying to convert to utf-16.";

const Expectation kExpectations[] = {
    // Settled by the dispatcher.
    {{65001, 65001, "61"}, {"(EncConvert", from(65001), to(65001), ")"}},
    {{1252, 0, "61"}, {"(EncConvert", from(1252), to(0), ")"}},
    {{0, 1252, "61"}, {"(EncConvert", from(0), to(1252), ")"}},
    {{0, 0, "61"}, {"(EncConvert", from(0), to(0), ")"}},
    {{20, 65001, "61"}, {"(EncConvert", from(20), to(65001), ")"}},
    {{65001, -7, "61"}, {"(EncConvert", from(65001), to(-7), ")"}},
    {{65001, 12000, "61"}, {"(EncConvert", from(65001), to(12000), ")"}},
    {{65001, 65006, "80"}, {"(EncConvert", from(65001), to(65006), ")"}},
    // Straight through the pivot.
    {{65001, 1200, "61"},
     {"(EncConvert", from(65001), to(1200), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", ")", ")",
      ")"}},
    {{1200, 65001, "61 00"},
     {"(EncConvert", from(1200), to(65001), "(convert_a", kToUtf8, "(convertFromUnicode", ")", ")",
      ")"}},
    {{1200, 65001, "61"},
     {"(EncConvert", from(1200), to(65001), "(convert_a", kToUtf8, "(convertFromUnicode", ")", ")",
      ")"}},
    {{12000, 65001, "61 00 00 00"},
     {"(EncConvert", from(12000), to(65001), "(convert_a", ")", ")"}},
    {{12001, 1200, "00 00 00 61"},
     {"(EncConvert", from(12001), to(1200), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", ")", ")",
      ")"}},
    {{65001, 1200, "EF BB BF"}, {"(EncConvert", from(65001), to(1200), "(convert_a", ")", ")"}},
    {{20127, 65001, "61"}, {"(EncConvert", from(20127), to(65001), "(convert_a", ")", ")"}},
    {{1201, 1200, "00 61"},
     {"(EncConvert", from(1201), to(1200), "(convert_a", kByPivot, ")", ")"}},
    {{kNoTable, 65001, "61"},
     {"(EncConvert", from(kNoTable), to(65001), "(convert_a", kToUtf8ByPivot, kNotDecoded, ")",
      ")"}},
    {{kNoTable, 1200, "61"}, {"(EncConvert", from(kNoTable), to(1200), "(convert_a", ")", ")"}},
    {{kNoTable, kNoTableEither, "61"},
     {"(EncConvert", from(kNoTable), to(kNoTableEither), "(convert_a", kByPivot, ")", ")"}},
    {{65001, kNoTable, "61"},
     {"(EncConvert", from(65001), to(kNoTable), "(convert_a", kFromUtf8ByPivot, "(cv_utf8_to_utf16",
      ")", ")", ")"}},
    {{1200, kNoTable, "61 00"}, {"(EncConvert", from(1200), to(kNoTable), "(convert_a", ")", ")"}},
    // GSM, with its second half inside.
    {{55000, 65001, "61"}, {"(EncConvert", from(55000), to(65001), "(convert_a", ")", ")"}},
    {{65001, 55000, "61"}, {"(EncConvert", from(65001), to(55000), "(convert_a", ")", ")"}},
    {{55000, 1200, "61"},
     {"(EncConvert", from(55000), to(1200), "(convert_a", "(convert_a", kToUtf16,
      "(cv_utf8_to_utf16", ")", ")", ")", ")"}},
    {{1200, 55000, "61 00"},
     {"(EncConvert", from(1200), to(55000), "(convert_a", "(convert_a", kToUtf8,
      "(convertFromUnicode", ")", ")", ")", ")"}},
    // Wrapped around the pivot.
    {{65001, 65000, "61"},
     {"(EncConvert", from(65001), to(65000), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", ")", ")",
      ")"}},
    {{1200, 65000, "61 00"}, {"(EncConvert", from(1200), to(65000), "(convert_a", ")", ")"}},
    {{1200, 12001, "61 00"},
     {"(EncConvert", from(1200), to(12001), "(convert_a", kToUtf8, "(convertFromUnicode", ")", ")",
      ")"}},
    {{12000, 12001, "61 00 00 00"},
     {"(EncConvert", from(12000), to(12001), "(convert_a", ")", ")"}},
    {{65001, 1201, "61"},
     {"(EncConvert", from(65001), to(1201), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", ")", ")",
      ")"}},
    {{1200, 1201, "61 00"}, {"(EncConvert", from(1200), to(1201), "(convert_a", ")", ")"}},
    {{932, 50220, "61"}, {"(EncConvert", from(932), to(50220), "(convert_a", ")", ")"}},
    {{949, 50225, "61"}, {"(EncConvert", from(949), to(50225), "(convert_a", ")", ")"}},
    // ISO-2022 sources, converted on by a conversion inside.
    {{50220, 932, "61"}, {"(EncConvert", from(50220), to(932), kIso2022, ")"}},
    {{50221, 65001, "1B 28 42"}, {"(EncConvert", from(50221), to(65001), kIso2022, ")"}},
    {{50222, 50220, "61"},
     {"(EncConvert", from(50222), to(50220), kIso2022, "(EncConvert", from(932), to(50220),
      "(convert_a", ")", ")", ")"}},
    {{50220, 65001, "1B 28 42 '%PDF-1.4'"}, {"(EncConvert", from(50220), to(65001), kIso2022, ")"}},
    {{50225, 949, "61"},
     {"(EncConvert", from(50225), to(949), "(EncConvert", from(949), to(949), ")", ")"}},
    {{50225, 65001, "1B 24 29 43"}, {"(EncConvert", from(50225), to(65001), ")"}},
    {{50225, 65001, "1B 24 29 43 '%PDF-1.4'"}, {"(EncConvert", from(50225), to(65001), ")"}},
    // Errors, and what the actions do about them.
    {{65001, 1200, "80", 0},
     {"(EncConvert", from(65001), to(1200), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", kInvalid,
      "long m_errorAction=0", ")", ")", ")"}},
    {{65001, 1200, "61 80 61 FF", 2},
     {"(EncConvert", from(65001), to(1200), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", kInvalid,
      "long m_errorAction=2", kInvalid, "long m_errorAction=2", ")", ")", ")"}},
    {{65001, 1200, "80", 6, 65001},
     {"(EncConvert", from(65001), to(1200), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", kInvalid,
      "long m_errorAction=6", "(EncConvert", from(65001), to(65001), ")", ")", ")", ")"}},
    {{65001, 1200, "80", 6, 0}, {"(EncConvert", from(65001),
                                 to(1200),      "(convert_a",
                                 kToUtf16,      "(cv_utf8_to_utf16",
                                 kInvalid,      "long m_errorAction=6",
                                 "(EncConvert", from(65001),
                                 to(1200),      "(convert_a",
                                 kToUtf16,      "(cv_utf8_to_utf16",
                                 kInvalid,      "long m_errorAction=0",
                                 ")",           ")",
                                 ")",           ")",
                                 ")",           ")"}},
    {{65001, 1200, "80", 6, 20},
     {"(EncConvert", from(65001), to(1200), "(convert_a", kToUtf16, "(cv_utf8_to_utf16", kInvalid,
      "long m_errorAction=6", "(EncConvert", from(65001), to(20), ")", ")", ")", ")"}},
    {{65001, 1201, "80", 6, 0}, {"(EncConvert", from(65001),
                                 to(1201),      "(convert_a",
                                 kToUtf16,      "(cv_utf8_to_utf16",
                                 kInvalid,      "long m_errorAction=6",
                                 "(EncConvert", from(65001),
                                 to(1200),      "(convert_a",
                                 kToUtf16,      "(cv_utf8_to_utf16",
                                 kInvalid,      "long m_errorAction=0",
                                 ")",           ")",
                                 ")",           ")",
                                 ")",           ")"}},
};

std::string titleOf(const Route& route) {
  return std::to_string(route.from) + " to " + std::to_string(route.to) + ": " + route.input +
         ", action " + std::to_string(route.action);
}

TEST(LogContexts, HoldTheLinesOfEveryRouteWhenVerbose) {
  for (const Expectation& expectation : kExpectations) {
    EXPECT_EQ(linesOf(expectation.route, true), expectedLines(expectation.verbose, true))
        << titleOf(expectation.route);
  }
}

TEST(LogContexts, AreAllThatIsLoggedWhenNotVerbose) {
  for (const Expectation& expectation : kExpectations) {
    EXPECT_EQ(linesOf(expectation.route, false), expectedLines(expectation.verbose, false))
        << titleOf(expectation.route);
  }
}

TEST(LogContexts, AreNotOpenedForNothing) {
  RecordingLog log(true);
  EncodingConvert converter;
  DataBuffer out;
  StringBuffer name;
  name.append("utf-8");
  const unsigned char byte = 0x61;
  for (const unsigned char* data : {static_cast<const unsigned char*>(nullptr), &byte}) {
    EXPECT_TRUE(converter.EncConvert(65001, 1200, data, 0, out, log));
    EXPECT_TRUE(converter.EncConvertWithPreamble(65001, 1252, data, 0, out, log));
    EXPECT_TRUE(converter.convert_a(65001, 1200, data, 0, out, log));
    EXPECT_TRUE(converter.cv_utf8_to_utf16(data, 0, out, log));
    EXPECT_TRUE(converter.cv_utf16_to_utf8(data, 0, out, log));
    EXPECT_TRUE(converter.convertToUnicodeHC(1252, data, 0, out, log));
    EXPECT_TRUE(converter.convertFromUnicodeHC(1252, data, 0, out, log));
    EXPECT_TRUE(converter.ChConvert(name, name, data, 0, out, log, true));
    EXPECT_TRUE(converter.ChConvert2(name, 1200, data, 0, out, log));
    EXPECT_TRUE(converter.ChConvert3(1200, name, data, 0, out, log));
    EXPECT_TRUE(converter.MultiByteToAnsi(65001, data, 0, out, log));
    EXPECT_TRUE(converter.MultiByteToOem(65001, data, 0, out, log));
    EXPECT_TRUE(converter.AnsiToMultiByte(65001, "a", 0, out, log));
    EXPECT_TRUE(converter.OemToMultiByte(65001, nullptr, 5, out, log));
  }
  EXPECT_EQ(log.lines, Lines());
  EXPECT_EQ(out.getSize(), 0U);
}

TEST(LogContexts, AreNotOpenedForAPreamble) {
  RecordingLog log(true);
  EncodingConvert converter;
  DataBuffer out;
  const Bytes data = bytes("61");
  EXPECT_TRUE(converter.EncConvertWithPreamble(65001, 0, data.data(), 1, out, log));
  // The destination that the mark is for stands in for the 0 that was given.
  EXPECT_EQ(log.lines, (Lines{"open EncConvert verbose=1", from(65001), to(65001), "close"}));
}

TEST(LogContexts, AreNotOpenedByTheErrorHandlers) {
  RecordingLog log(true);
  const Bytes data = bytes("E9 00 61");
  for (int action : {0, 1, 2, 3, 7, 8}) {
    EncodingConvert converter = withSubstitute("3F");
    converter.setErrorAction(action);
    converter.m_fromCodePage = 936;
    DataBuffer out;
    converter.handleErrorFromSingleByte(data.data(), out, log);
    converter.handleErrorFromUnicode(data.data(), out, log);
    converter.handleErrorFromUtf8(data.data(), 3, out, log);
    converter.handleErrorFromUnknown(data.data(), out, log);
  }
  EXPECT_EQ(log.lines, Lines());
}

TEST(ASinkThatThrows, FindsEveryContextClosed) {
  for (const Expectation& expectation : kExpectations) {
    for (bool verbose : {false, true}) {
      SCOPED_TRACE(titleOf(expectation.route));
      expectBalanceWhereverTheSinkThrows(verbose, [&expectation](LogBase& log) {
        DataBuffer out;
        run(expectation.route, log, out);
      });
    }
  }
}

TEST(ASinkThatThrows, IsHeardThroughTheOperationsByName) {
  const Bytes data = bytes("61 80");
  for (bool verbose : {false, true}) {
    expectBalanceWhereverTheSinkThrows(verbose, [&data](LogBase& log) {
      EncodingConvert converter;
      DataBuffer out;
      converter.ChConvert2p("no-such-charset", 1200, data.data(), 2, out, log);
    });
    expectBalanceWhereverTheSinkThrows(verbose, [&data](LogBase& log) {
      EncodingConvert converter;
      DataBuffer out;
      converter.ChConvert3p(65001, "utf-16be", data.data(), 2, out, log);
    });
    expectBalanceWhereverTheSinkThrows(verbose, [&data](LogBase& log) {
      EncodingConvert converter;
      DataBuffer out;
      converter.EncConvertWithPreamble(10004, 65001, data.data(), 2, out, log);
    });
  }
}

TEST(ASinkThatThrows, LeavesTheConverterFitForTheNextConversion) {
  EncodingConvert converter = withSubstitute("3F 00");
  const Bytes data = bytes("61 80");
  RecordingLog log(true);
  log.throwAt(7);
  DataBuffer out;
  EXPECT_THROW(converter.EncConvert(65001, 1200, data.data(), 2, out, log), SinkFailure);
  EXPECT_EQ(convert(converter, 65001, 1200, "61 80"), convertsWithError("61 00 3F 00"));
}

}  // namespace
