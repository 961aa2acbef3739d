#include <gtest/gtest.h>

#include <string>

#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/ThrowingSink.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::LogBase;

Lines linesOf(bool verbose, EncodingConvert converter, int from, int to, std::string_view input) {
  RecordingLog log(verbose);
  run(&EncodingConvert::convert_a, converter, from, to, bytes(input), log, "");
  return log.linesOutsideTableDrivers();
}

// The size at the end is that of the whole output, with what it held before.
TEST(PivotToUtf8, LogsInThisOrderWhenVerbose) {
  RecordingLog log(true);
  EncodingConvert converter;
  run(&EncodingConvert::convert_a, converter, 1252, 65001, bytes("61 E9"), log, "'>>>'");
  EXPECT_EQ(
      log.lines,
      (Lines{"open convert_a verbose=1",
             "info: Converting to utf-8 using utf-16 as a pivot table...",
             "open convertToUnicodeHC verbose=1", "long fromCodePage=1252", "long inDataLen=2",
             "open convertToUnicodeByLookup verbose=1", "close", "close", "long szUtf16_inBytes=4",
             "open convertFromUnicode verbose=1", "close", "long szResult_inBytes=6", "close"}));
}

TEST(PivotToUtf8, ReportsAFailedSecondHalfAndTheSizeAllTheSame) {
  // The reference leaves an odd number of bytes in the pivot.
  const Lines lines = linesOf(true, withAction(2), 1252, 65001, "61 81 62");
  EXPECT_EQ(lines,
            (Lines{"open convert_a verbose=1",
                   "info: Converting to utf-8 using utf-16 as a pivot table...",
                   "long szUtf16_inBytes=13", "open convertFromUnicode verbose=1", "close",
                   "error: convertFromUnicode failed.", "long szResult_inBytes=16", "close"}));
}

TEST(PivotToUtf8, LogsOnlyContextsWhenNotVerbose) {
  const Lines lines = {"open convert_a verbose=0", "open convertFromUnicode verbose=0", "close",
                       "close"};
  EXPECT_EQ(linesOf(false, EncodingConvert(), 1252, 65001, "E9"), lines);
  EXPECT_EQ(linesOf(false, withAction(2), 1252, 65001, "61 81 62"), lines);
}

TEST(PivotToUtf8, HasNothingToEncodeWhereNothingWasDecoded) {
  // The second half is handed nothing and opens no context.
  EXPECT_EQ(linesOf(true, EncodingConvert(), 1252, 65001, "81"),
            (Lines{"open convert_a verbose=1",
                   "info: Converting to utf-8 using utf-16 as a pivot table...",
                   "long szUtf16_inBytes=0", "long szResult_inBytes=0", "close"}));
}

TEST(PivotsWithTables, NameTheirRoutesWhenVerbose) {
  EXPECT_EQ(linesOf(true, EncodingConvert(), 65001, 1252, "C3 A9"),
            (Lines{"open convert_a verbose=1",
                   "info: Converting from utf-8 using utf-16 as a pivot table...",
                   "open cv_utf8_to_utf16 verbose=1", "close", "close"}));
  EXPECT_EQ(linesOf(true, EncodingConvert(), 1252, 437, "E9"),
            (Lines{"open convert_a verbose=1",
                   "info: Converting by using utf-16 as a pivot table...", "close"}));
  EXPECT_EQ(linesOf(true, EncodingConvert(), 1252, 1200, "E9"),
            (Lines{"open convert_a verbose=1", "close"}));
  EXPECT_EQ(linesOf(true, EncodingConvert(), 1200, 1252, "E9 00"),
            (Lines{"open convert_a verbose=1", "close"}));
}

/// A sink that notes which marker flags are set as each context opens.
class FlagLog : public RecordingLog {
 public:
  explicit FlagLog(const EncodingConvert& converter) : m_converter(converter) {}

  void openContext(const char* name, bool verbose) override {
    RecordingLog::openContext(name, verbose);
    lines.back() = std::string(name) + (m_converter.m_emitPassthroughMarkers ? " emits" : "") +
                   (m_converter.m_honorPassthroughMarkers ? " honors" : "");
  }

 private:
  const EncodingConvert& m_converter;
};

Lines flagsDuring(int from, int to, std::string_view input) {
  EncodingConvert converter;
  FlagLog log(converter);
  run(&EncodingConvert::convert_a, converter, from, to, bytes(input), log, "");
  return log.lines;
}

TEST(PivotsWithTables, EmitMarkersInTheFirstHalfAndHonourThemInTheSecond) {
  EXPECT_EQ(flagsDuring(65001, 1252, "C3 A9"),
            (Lines{"convert_a", "cv_utf8_to_utf16 emits", "close", "convertFromUnicodeHC honors",
                   "close", "close"}));
  EXPECT_EQ(flagsDuring(1252, 65001, "E9"),
            (Lines{"convert_a", "convertToUnicodeHC emits", "convertToUnicodeByLookup emits",
                   "close", "close", "convertFromUnicode honors", "close", "close"}));
  EXPECT_EQ(flagsDuring(932, 1252, "61"), (Lines{"convert_a", "convertToUnicodeHC emits", "close",
                                                 "convertFromUnicodeHC honors", "close", "close"}));
}

TEST(PivotsWithTables, ClearTheMarkerFlags) {
  const struct {
    int from;
    int to;
    const char* input;
  } rows[] = {{1252, 65001, "E9"},       {1252, 65001, "81"},  {65001, 1252, "C3 A9"},
              {65001, 1252, "E3 81 82"}, {1252, 437, "E9"},    {1252, 932, "E9"},
              {1252, 1200, "E9"},        {1200, 1252, "42 30"}};
  for (const auto& row : rows) {
    for (int action : {0, 2, 6, 7}) {
      EncodingConvert converter = withAction(action);
      converter.m_fromCodePage = row.from;
      converter.m_toCodePage = row.to;
      converter.m_emitPassthroughMarkers = true;
      converter.m_honorPassthroughMarkers = true;
      pivot(converter, row.from, row.to, row.input);
      EXPECT_FALSE(converter.m_emitPassthroughMarkers) << row.from << " to " << row.to;
      EXPECT_FALSE(converter.m_honorPassthroughMarkers) << row.from << " to " << row.to;
    }
  }
}

TEST(PivotsWithTables, EncodeUtf32ByWayOfUtf8) {
  EXPECT_EQ(pivot(1252, 12000, "61 E9"), converts("61 00 E9 00"));
  EXPECT_EQ(pivot(12000, 1252, "E9 00 00 00"), converts("E9"));
  EXPECT_EQ(pivot(12001, 1252, "00 00 00 E9 00"), converts("E9"));
  EXPECT_EQ(pivot(12000, 1252, "E9 00 00 00 00"), failsQuietly("E9"));
}

TEST(ASinkThatThrows, FindsTheSettingsOfANestedConversionTakenBack) {
  // Every handler, the ill-formed or unmapped text in the middle.
  const struct {
    int from;
    int to;
    int alternate;
    const char* input;
  } rows[] = {{1252, 1200, 65001, "61 81 62"},
              {936, 1200, 65001, "61 81 20 62"},
              {65001, 1200, 1252, "61 80 62"},
              {65001, 1252, 65001, "61 E3 81 82 62"},
              {1200, 1252, 65001, "61 00 42 30 62 00"}};
  for (const auto& row : rows) {
    expectBalanceWhereverTheSinkThrows(true, [&row](LogBase& log) {
      EncodingConvert converter = withAlternate(row.alternate);
      converter.m_fromCodePage = row.from;
      converter.m_toCodePage = row.to;
      const Bytes data = bytes(row.input);
      DataBuffer out;
      try {
        converter.EncConvert(row.from, row.to, data.data(), sizeOf(data), out, log);
      } catch (const SinkFailure& failure) {
        EXPECT_EQ(converter.m_errorAction, 6) << row.from << ", call " << failure.call;
        EXPECT_EQ(converter.m_fromCodePage, row.from) << "call " << failure.call;
        EXPECT_EQ(converter.m_toCodePage, row.to) << "call " << failure.call;
        throw;
      }
    });
  }
}

TEST(ASinkThatThrows, FindsTheSettingsOfAStepBackToTheSourceTakenBack) {
  for (int action : {2, 7}) {
    expectBalanceWhereverTheSinkThrows(true, [action](LogBase& log) {
      EncodingConvert converter = withAction(action);
      const Bytes data = bytes("61 E3 81 82 62");
      DataBuffer out;
      try {
        converter.EncConvert(65001, 1252, data.data(), sizeOf(data), out, log);
      } catch (const SinkFailure& failure) {
        EXPECT_EQ(converter.m_errorAction, action) << "call " << failure.call;
        throw;
      }
    });
  }
}

TEST(ASinkThatThrows, FindsTheContextsOfTheTableDriversClosedToo) {
  const struct {
    int from;
    int to;
    const char* input;
    int action;
  } rows[] = {{1252, 65001, "61 81 62", 2},  {65001, 1252, "61 80 62 E3 81 82", 2},
              {1252, 932, "61 E9 E9 62", 7}, {1252, 1201, "61 81", 6},
              {932, 50220, "82 A0 FF", 1},   {1252, 1256, "61 81", 6}};
  for (const auto& row : rows) {
    for (bool verbose : {false, true}) {
      SCOPED_TRACE(std::to_string(row.from) + " to " + std::to_string(row.to));
      expectBalanceWhereverTheSinkThrows(verbose, [&row](LogBase& log) {
        EncodingConvert converter = withAction(row.action);
        const Bytes data = bytes(row.input);
        DataBuffer out;
        converter.EncConvert(row.from, row.to, data.data(), sizeOf(data), out, log);
      });
    }
  }
}

}  // namespace
