#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "quorvel/unicode/_qvUtf.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::LogBase;
using quorvel::NullLog;

using Transcoder = bool (EncodingConvert::*)(const unsigned char*, unsigned int, DataBuffer&,
                                             LogBase&);

Outcome transcode(Transcoder transcoder, EncodingConvert& converter, const Bytes& input) {
  NullLog log;
  DataBuffer out;
  const bool result = (converter.*transcoder)(input.data(), sizeOf(input), out, log);
  return {result, converter.m_hadError, hex(out)};
}

Outcome toUtf16(EncodingConvert converter, const Bytes& input) {
  return transcode(&EncodingConvert::cv_utf8_to_utf16, converter, input);
}
Outcome toUtf16(EncodingConvert converter, std::string_view input) {
  return toUtf16(converter, bytes(input));
}
Outcome toUtf16(std::string_view input) { return toUtf16(EncodingConvert(), input); }

Outcome toUtf8(EncodingConvert converter, const Bytes& input) {
  return transcode(&EncodingConvert::cv_utf16_to_utf8, converter, input);
}
Outcome toUtf8(EncodingConvert converter, std::string_view input) {
  return toUtf8(converter, bytes(input));
}
Outcome toUtf8(std::string_view input) { return toUtf8(EncodingConvert(), input); }

EncodingConvert honouring() {
  EncodingConvert converter;
  converter.m_honorPassthroughMarkers = true;
  return converter;
}

EncodingConvert emitting(EncodingConvert converter) {
  converter.m_emitPassthroughMarkers = true;
  return converter;
}

TEST(Utf8ToUtf16, WritesLowByteFirst) {
  EXPECT_EQ(toUtf16("41"), converts("41 00"));
  EXPECT_EQ(toUtf16("00 01 7F"), converts("00 00 01 00 7F 00"));
  EXPECT_EQ(toUtf16("C2 80 DF BF"), converts("80 00 FF 07"));
  EXPECT_EQ(toUtf16("E0 A0 80 ED 9F BF EE 80 80 EF BF BF"), converts("00 08 FF D7 00 E0 FF FF"));
  EXPECT_EQ(toUtf16("F0 90 80 80 F4 8F BF BF"), converts("00 D8 00 DC FF DB FF DF"));
  EXPECT_EQ(toUtf16("EF BB BF 41"), converts("FF FE 41 00"));
}

TEST(Utf8ToUtf16, AppendsAndKeepsTheErrorFlag) {
  NullLog log;
  DataBuffer out = bufferOf("'x'");
  EncodingConvert converter;
  converter.m_hadError = true;
  const Bytes data = bytes("61");
  EXPECT_TRUE(converter.cv_utf8_to_utf16(data.data(), 1, out, log));
  EXPECT_EQ(hex(out), "78 61 00");
  EXPECT_TRUE(converter.m_hadError);
}

TEST(Utf8ToUtf16, OfNothingIsTrueWithNothingLogged) {
  RecordingLog log(true);
  DataBuffer out;
  EncodingConvert converter;
  const unsigned char byte = 0x80;
  EXPECT_TRUE(converter.cv_utf8_to_utf16(nullptr, 3, out, log));
  EXPECT_TRUE(converter.cv_utf8_to_utf16(&byte, 0, out, log));
  EXPECT_EQ(out.getSize(), 0U);
  EXPECT_EQ(log.lines, Lines());
  EXPECT_FALSE(converter.m_hadError);
}

TEST(Utf8ToUtf16, DropsTheMaximalSubpartWithoutAnAction) {
  const struct {
    const char* input;
    const char* out;
  } rows[] = {
      {"80 41", "41 00"},
      {"C0 80 41", "41 00"},
      {"C3 41", "41 00"},
      {"E2 82 41", "41 00"},
      {"E2 41 42", "41 00 42 00"},
      {"E0 80 41", "41 00"},
      {"ED A0 80 41", "41 00"},
      {"F0 9F 98 41", "41 00"},
      {"F0 41 42 43", "41 00 42 00 43 00"},
      {"F4 90 80 80 41", "41 00"},
      {"F8 88 80 80 80 41", "41 00"},
      {"E2 82 C3 A9", "E9 00"},
      {"F0 9F E2 82 AC", "AC 20"},
      {"41 E2 82", "41 00"},
      {"41 F0 9F 98", "41 00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(toUtf16(row.input), convertsWithError(row.out)) << row.input;
  }
}

TEST(Utf8ToUtf16, SkipsWhatTheLeadByteAnnouncesWithAnAction) {
  const struct {
    const char* input;
    const char* escaped;
    const char* substituted;
    const char* raw;
  } rows[] = {
      {"80 41", "'&#x80;' 41 00", "3F 00 41 00", "80 41 00"},
      {"C0 80 41", "'&#xC080;' 41 00", "3F 00 41 00", "C0 80 41 00"},
      {"C3 41 42", "'&#xC341;' 42 00", "3F 00 42 00", "C3 41 42 00"},
      {"E6 88 BB", "3B 62", "3B 62", "3B 62"},
      {"E2 82 41 42", "'&#xE28241;' 42 00", "3F 00 42 00", "E2 82 41 42 00"},
      {"E2 41 42 43", "'&#xE24142;' 43 00", "3F 00 43 00", "E2 41 42 43 00"},
      {"ED A0 80 41", "'&#xEDA080;' 41 00", "3F 00 41 00", "ED A0 80 41 00"},
      {"F0 41 42 43 44", "'&#xF0414243;' 44 00", "3F 00 44 00", "F0 41 42 43 44 00"},
      {"F4 90 80 80 41", "'&#xF4908080;' 41 00", "3F 00 41 00", "F4 90 80 80 41 00"},
      {"F8 88 41", "'&#xF8;&#x88;' 41 00", "3F 00 3F 00 41 00", "F8 88 41 00"},
      {"41 E2 82", "41 00 '&#xE282;'", "41 00 3F 00", "41 00 E2 82"},
      {"41 F0", "41 00 '&#xF0;'", "41 00 3F 00", "41 00 F0"},
      {"41 F0 9F 41", "41 00 '&#xF09F41;'", "41 00 3F 00", "41 00 F0 9F 41"},
  };
  for (const auto& row : rows) {
    const auto expected = [&row](std::string_view out) {
      return row.input == std::string_view("E6 88 BB") ? converts(out) : convertsWithError(out);
    };
    EXPECT_EQ(toUtf16(withAction(2), row.input), expected(row.escaped)) << row.input;
    EXPECT_EQ(toUtf16(withSubstitute("3F 00"), row.input), expected(row.substituted)) << row.input;
    EXPECT_EQ(toUtf16(withAction(7), row.input), expected(row.raw)) << row.input;
  }
}

TEST(Utf8ToUtf16, FollowsEveryAction) {
  const char* input = "61 80 62 E2 82 63";
  const struct {
    int action;
    const char* plain;
    const char* marked;
  } rows[] = {
      {0, "61 00 62 00 63 00", "61 00 62 00 63 00"},
      {1, "61 00 3F 00 62 00 3F 00", "61 00 FD EF 02 3F 00 62 00 FD EF 02 3F 00"},
      {2, "61 00 '&#x80;' 62 00 '&#xE28263;'",
       "61 00 FD EF 05 '&#x80;' 62 00 FD EF 07 '&#xE28263;'"},
      {3, "61 00 62 00", "61 00 62 00"},
      {4, "61 00 62 00", "61 00 62 00"},
      {5, "61 00 62 00", "61 00 62 00"},
      {7, "61 00 80 62 00 E2 82 63", "61 00 FD EF 01 80 62 00 FD EF 03 E2 82 63"},
      {8, "61 00 62 00", "61 00 62 00"},
      {9, "61 00 62 00", "61 00 62 00"},
      {-1, "61 00 62 00", "61 00 62 00"},
  };
  for (const auto& row : rows) {
    EncodingConvert converter = withSubstitute("3F 00");
    converter.setErrorAction(row.action);
    EXPECT_EQ(toUtf16(converter, input), convertsWithError(row.plain)) << row.action;
    EXPECT_EQ(toUtf16(emitting(converter), input), convertsWithError(row.marked)) << row.action;
  }
}

TEST(Utf8ToUtf16, MarksNothingThatANestedConversionWrites) {
  EXPECT_EQ(toUtf16(emitting(withAlternate(1200)), "80 61"), convertsWithError("61 00"));
  EXPECT_EQ(toUtf16(emitting(withAlternate(65001)), "61 80 62"), converts("61 00 80 62 00"));
}

TEST(Utf8ToUtf16, NeverReadsPastTheEnd) {
  // Bytes that would complete the sequence stand right behind the input.
  const Bytes data = bytes("F0 9F 98 80 80");
  for (int action : {0, 2}) {
    for (unsigned int length : {1U, 2U, 3U}) {
      NullLog log;
      DataBuffer out;
      EncodingConvert converter = withAction(action);
      EXPECT_TRUE(converter.cv_utf8_to_utf16(data.data(), length, out, log));
      EXPECT_TRUE(converter.m_hadError);
      const std::string digits = std::string("F09F98").substr(0, 2U * length);
      EXPECT_EQ(hex(out), action == 0 ? "" : hex(bytes("'&#x" + digits + ";'")));
    }
  }
}

/// How far a well-formed sequence, or the maximal subpart of an ill-formed
/// one, reaches from the start of `p`; `wellFormed` tells which.
std::size_t reach(const unsigned char* p, std::size_t n, bool& wellFormed) {
  static constexpr struct {
    unsigned char firstLead, lastLead, lowestSecond, highestSecond;
    std::size_t length;
  } rows[] = {
      {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
      {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
      {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
  };
  for (const auto& row : rows) {
    if (p[0] < row.firstLead || p[0] > row.lastLead) continue;
    std::size_t length = 1;
    while (length < row.length && length < n) {
      const unsigned char low = length == 1 ? row.lowestSecond : 0x80;
      const unsigned char high = length == 1 ? row.highestSecond : 0xBF;
      if (p[length] < low || p[length] > high) break;
      ++length;
    }
    wellFormed = length == row.length;
    return length;
  }
  wellFormed = false;
  return 1;
}

void appendUnit(Bytes& out, unsigned int unit) {
  out.push_back(static_cast<unsigned char>(unit & 0xFF));
  out.push_back(static_cast<unsigned char>(unit >> 8));
}

/// UTF-8 to UTF-16 the slow way, one character after the other.
Bytes slowUtf16(const Bytes& in, int action, const Bytes& substitute) {
  Bytes out;
  for (std::size_t i = 0; i < in.size();) {
    const unsigned char* p = in.data() + i;
    bool wellFormed = false;
    std::size_t length = reach(p, in.size() - i, wellFormed);
    if (wellFormed) {
      unsigned int value = length == 1 ? p[0] : p[0] & (0x7FU >> length);
      for (std::size_t k = 1; k < length; ++k) value = value << 6 | (p[k] & 0x3FU);
      if (value > 0xFFFF) appendUnit(out, 0xD800 + ((value - 0x10000) >> 10));
      appendUnit(out, value > 0xFFFF ? 0xDC00 + (value & 0x3FF) : value);
    } else if (action != 0) {
      const std::size_t announced = p[0] < 0xC0   ? 1
                                    : p[0] < 0xE0 ? 2
                                    : p[0] < 0xF0 ? 3
                                    : p[0] < 0xF8 ? 4
                                                  : 1;
      length = std::min(announced, in.size() - i);
      const Bytes bad(p, p + length);
      if (action == 1) out = out + substitute;
      if (action == 2) {
        std::string digits = hex(bad);
        digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
        out = out + bytes("'&#x" + digits + ";'");
      }
      if (action == 7) out = out + bad;
    }
    i += length;
  }
  return out;
}

/// One or more of every class of ill-formed UTF-8.
constexpr const char* kIllFormed[] = {
    "80",
    "BF",
    "80 80 80",
    "C0",
    "C0 80",
    "C0 AF",
    "C1 BF",
    "C2",
    "C2 C2",
    "C2 41",
    "DF",
    "DF C0",
    "E0",
    "E0 80",
    "E0 80 80",
    "E0 9F BF",
    "E0 A0",
    "E0 A0 C0",
    "E1",
    "E1 80",
    "E1 C3 A9",
    "E1 80 41",
    "ED A0",
    "ED A0 80",
    "ED AF BF",
    "ED B0 80",
    "ED BF BF",
    "ED A0 80 ED B0 80",
    "EF BF",
    "EF BF C0",
    "F0",
    "F0 80",
    "F0 80 80",
    "F0 80 80 80",
    "F0 82 82 AC",
    "F0 8F BF BF",
    "F0 90",
    "F0 90 80",
    "F0 90 80 41",
    "F1 80 C3 A9",
    "F3 BF BF",
    "F4",
    "F4 8F BF",
    "F4 90 80 80",
    "F4 BF BF BF",
    "F5 80 80 80",
    "F7 BF BF BF",
    "F8 88 80 80 80",
    "FB BF BF BF BF",
    "FC 84 80 80 80 80",
    "FD BF BF BF BF BF",
    "FE",
    "FF",
    "FE FF",
    "FE FE FF FF",
};

TEST(Utf8ToUtf16, AgreesWithTheSlowWayForEveryIllFormedClassAtEveryPosition) {
  const Bytes text = bytes("61 C3 A9 62 E2 82 AC 63 F0 9F 98 80 64 EF BF BF 65 F4 8F BF BF 66");
  for (const char* illFormed : kIllFormed) {
    for (std::size_t position = 0; position <= text.size(); ++position) {
      const auto split = text.begin() + static_cast<std::ptrdiff_t>(position);
      const Bytes input = Bytes(text.begin(), split) + bytes(illFormed) + Bytes(split, text.end());
      for (int action : {0, 1, 2, 7}) {
        EncodingConvert converter = withSubstitute("3F 00");
        converter.setErrorAction(action);
        const Outcome expected = {true, true, hex(slowUtf16(input, action, bytes("3F 00")))};
        ASSERT_EQ(toUtf16(converter, input), expected) << "action " << action << ": " << hex(input);
      }
    }
  }
}

TEST(Utf8ToUtf16, AgreesWithTheSlowWayForEveryTruncation) {
  const Bytes text = bytes("61 C3 A9 62 E2 82 AC 63 F0 9F 98 80 F4 8F BF BF");
  for (std::size_t length = 1; length <= text.size(); ++length) {
    const Bytes input(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
    for (int action : {0, 1, 2, 7}) {
      EncodingConvert converter = withSubstitute("3F 00");
      converter.setErrorAction(action);
      EXPECT_EQ(toUtf16(converter, input).out, hex(slowUtf16(input, action, bytes("3F 00"))));
    }
  }
}

TEST(Utf8ToUtf16, AgreesWithTheSlowWayForEveryPairOfBytes) {
  for (unsigned int first = 0; first < 256; ++first) {
    for (unsigned int second = 0; second < 256; ++second) {
      const Bytes input = {static_cast<unsigned char>(first), static_cast<unsigned char>(second)};
      ASSERT_EQ(toUtf16(EncodingConvert(), input).out, hex(slowUtf16(input, 0, {}))) << hex(input);
      ASSERT_EQ(toUtf16(withAction(2), input).out, hex(slowUtf16(input, 2, {}))) << hex(input);
    }
  }
}

/// Numbers of bytes at which a block may end.
constexpr std::size_t kBlocks[] = {512, 4096, 16384};

/// Transcodes `head` and `tail` as one text and expects `out` and `tailOut`.
void expectTranscoded(Transcoder transcoder, EncodingConvert converter, const Bytes& head,
                      const Bytes& tail, const Bytes& out, const Bytes& tailOut) {
  NullLog log;
  DataBuffer written;
  const Bytes input = head + tail;
  EXPECT_TRUE((converter.*transcoder)(input.data(), sizeOf(input), written, log));
  ASSERT_TRUE(bytesOf(written) == out + tailOut) << head.size() << " bytes before " << hex(tail);
}

TEST(Utf8ToUtf16, IsWholeAroundTheEdgesOfItsBlocks) {
  const Bytes tails[] = {
      bytes("61 62"), bytes("C3 A9"),    bytes("E2 82 AC"),    bytes("F0 9F 98 80"),
      bytes("80"),    bytes("E2 82 79"), bytes("F0 9F 98 79"), bytes("F0 9F 98 80 80"),
      bytes("F0 9F")};
  for (std::size_t block : kBlocks) {
    for (std::size_t ascii = block - 5; ascii <= block + 1; ++ascii) {
      const Bytes head = repeated(ascii, bytes("78"));
      const Bytes out = repeated(ascii, bytes("78 00"));
      for (const Bytes& tail : tails) {
        for (int action : {0, 2}) {
          expectTranscoded(&EncodingConvert::cv_utf8_to_utf16, withAction(action), head, tail, out,
                           slowUtf16(tail, action, {}));
        }
      }
    }
  }
}

TEST(Utf8ToUtf16, IsWholeOverManyBlocks) {
  for (const Bytes& unit : {bytes("61"), bytes("C3 A9"), bytes("E2 82 AC"), bytes("F0 9F 98 80"),
                            bytes("61 C3 A9 E2 82 AC F0 9F 98 80")}) {
    const Bytes input = repeated(20000, unit);
    const Outcome expected = {true, false, hex(slowUtf16(input, 0, {}))};
    ASSERT_EQ(toUtf16(EncodingConvert(), input), expected) << hex(unit);
  }
}

TEST(Utf8ToUtf16, HandlesAnErrorAtEveryPlaceOfABlock) {
  const Bytes tail = bytes("80 79 E2 82");
  for (std::size_t before = 0; before <= 520; ++before) {
    for (int action : {0, 2, 7}) {
      expectTranscoded(&EncodingConvert::cv_utf8_to_utf16, withAction(action),
                       repeated(before, bytes("78")), tail, repeated(before, bytes("78 00")),
                       slowUtf16(tail, action, {}));
    }
  }
}

Lines utf8Lines(bool verbose, int action, std::string_view input) {
  RecordingLog log(verbose);
  EncodingConvert converter = withAction(action);
  DataBuffer out;
  const Bytes data = bytes(input);
  converter.cv_utf8_to_utf16(data.data(), sizeOf(data), out, log);
  return log.lines;
}

TEST(Utf8ToUtf16, LogsEachErrorWhenVerbose) {
  const std::string error = "error: Found invalid utf-8 when trying to convert to utf-16.";
  EXPECT_EQ(utf8Lines(true, 0, "61"), (Lines{"open cv_utf8_to_utf16 verbose=1", "close"}));
  EXPECT_EQ(utf8Lines(true, 0, "80 61 E2 82"),
            (Lines{"open cv_utf8_to_utf16 verbose=1", error, "long m_errorAction=0", error,
                   "long m_errorAction=0", "close"}));
  EXPECT_EQ(utf8Lines(true, 7, "ED A0 80"),
            (Lines{"open cv_utf8_to_utf16 verbose=1", error, "long m_errorAction=7", "close"}));
  EXPECT_EQ(utf8Lines(true, -4, "C0"),
            (Lines{"open cv_utf8_to_utf16 verbose=1", error, "long m_errorAction=-4", "close"}));
}

TEST(Utf8ToUtf16, LogsNoErrorWhenNotVerbose) {
  for (int action : {0, 1, 2, 7}) {
    EXPECT_EQ(utf8Lines(false, action, "80 61 E2"),
              (Lines{"open cv_utf8_to_utf16 verbose=0", "close"}));
  }
}

TEST(Utf16ToUtf8, WritesTheShortestForm) {
  EXPECT_EQ(toUtf8("41 00"), converts("41"));
  EXPECT_EQ(toUtf8("01 00 7F 00 80 00 FF 07"), converts("01 7F C2 80 DF BF"));
  EXPECT_EQ(toUtf8("00 08 FF D7 00 E0 FF FF"), converts("E0 A0 80 ED 9F BF EE 80 80 EF BF BF"));
  EXPECT_EQ(toUtf8("00 D8 00 DC FF DB FF DF"), converts("F0 90 80 80 F4 8F BF BF"));
  EXPECT_EQ(toUtf8("FF FE 41 00"), converts("EF BB BF 41"));
}

TEST(Utf16ToUtf8, OfNothingIsTrueWithNothingLogged) {
  RecordingLog log(true);
  DataBuffer out;
  EncodingConvert converter;
  const unsigned char byte = 0x80;
  EXPECT_TRUE(converter.cv_utf16_to_utf8(nullptr, 3, out, log));
  EXPECT_TRUE(converter.cv_utf16_to_utf8(&byte, 0, out, log));
  EXPECT_EQ(out.getSize(), 0U);
  EXPECT_EQ(log.lines, Lines());
}

TEST(Utf16ToUtf8, OpensItsContextBeforeItRefusesASingleByte) {
  for (bool verbose : {false, true}) {
    RecordingLog log(verbose);
    DataBuffer out;
    EncodingConvert converter;
    const unsigned char byte = 0x41;
    EXPECT_FALSE(converter.cv_utf16_to_utf8(&byte, 1, out, log));
    EXPECT_EQ(out.getSize(), 0U);
    EXPECT_FALSE(converter.m_hadError);
    const std::string open = "open convertFromUnicode verbose=";
    EXPECT_EQ(log.lines, (Lines{open + (verbose ? "1" : "0"), "close"}));
  }
}

TEST(Utf16ToUtf8, IgnoresAnOddByteAndIsFalse) {
  EXPECT_EQ(toUtf8("41 00 42"), failsQuietly("41"));
  EXPECT_EQ(toUtf8("00 00 42"), failsQuietly());
  EXPECT_EQ(toUtf8("41 00 3D D8 00"), failsQuietly("41 ED A0 BD"));
  EXPECT_EQ(toUtf8("3D D8 00 DE 42"), failsQuietly("F0 9F 98 80"));
}

TEST(Utf16ToUtf8, DropsTheZeroCharacter) {
  EXPECT_EQ(toUtf8("00 00"), converts(""));
  EXPECT_EQ(toUtf8("00 00 41 00 00 00 00 00 42 00 00 00"), converts("41 42"));
}

TEST(Utf16ToUtf8, WritesUnpairedSurrogatesAsThreeBytes) {
  EXPECT_EQ(toUtf8("00 D8"), converts("ED A0 80"));
  EXPECT_EQ(toUtf8("41 00 FF DB"), converts("41 ED AF BF"));
  EXPECT_EQ(toUtf8("00 DC"), converts("ED B0 80"));
  EXPECT_EQ(toUtf8("FF DF 41 00"), converts("ED BF BF 41"));
  EXPECT_EQ(toUtf8("00 DE 3D D8"), converts("ED B8 80 ED A0 BD"));
}

TEST(Utf16ToUtf8, WritesWhateverFollowsAHighSurrogateAsThreeBytesToo) {
  EXPECT_EQ(toUtf8("00 D8 41 00"), converts("ED A0 80 E0 81 81"));
  EXPECT_EQ(toUtf8("00 D8 00 00 42 00"), converts("ED A0 80 E0 80 80 42"));
  EXPECT_EQ(toUtf8("00 D8 E9 00"), converts("ED A0 80 E0 83 A9"));
  EXPECT_EQ(toUtf8("00 D8 AC 20"), converts("ED A0 80 E2 82 AC"));
  // The second of two high surrogates is spent; its own partner stays alone.
  EXPECT_EQ(toUtf8("3D D8 3D D8 00 DE"), converts("ED A0 BD ED A0 BD ED B8 80"));
  EXPECT_EQ(toUtf8("00 D8 FF FF"), converts("ED A0 80 EF BF BF"));
}

/// Refuses four-byte UTF-8 in the whole process for a while.
class FourByteUtf8Off {
 public:
  FourByteUtf8Off() { quorvel::g_allow_4byte_utf8 = false; }
  ~FourByteUtf8Off() { quorvel::g_allow_4byte_utf8 = true; }
};

TEST(Utf16ToUtf8, WritesAPairAsSixBytesWhereFourAreNotAllowed) {
  EXPECT_TRUE(quorvel::g_allow_4byte_utf8);
  EncodingConvert three;
  three.m_allow4ByteUtf8 = false;
  EXPECT_EQ(toUtf8("3D D8 00 DE"), converts("F0 9F 98 80"));
  EXPECT_EQ(toUtf8(three, "3D D8 00 DE 41 00"), converts("ED A0 BD ED B8 80 41"));
  const FourByteUtf8Off off;
  EXPECT_EQ(toUtf8("3D D8 00 DE 41 00"), converts("ED A0 BD ED B8 80 41"));
  EXPECT_EQ(toUtf8(three, "3D D8 00 DE"), converts("ED A0 BD ED B8 80"));
  EXPECT_EQ(toUtf8("FF DB FF DF"), converts("ED AF BF ED BF BF"));
}

TEST(Utf16ToUtf8, TakesAMarkerForACharacterUnlessHonoured) {
  EXPECT_EQ(toUtf8("EF FD 02 41 42 00"), converts("EF B7 AF E4 84 82 42"));
  EXPECT_EQ(toUtf8(emitting(EncodingConvert()), "EF FD 02 41"), converts("EF B7 AF E4 84 82"));
}

TEST(Utf16ToUtf8, CopiesWhatAMarkerAnnounces) {
  const struct {
    const char* input;
    const char* out;
  } rows[] = {
      {"EF FD 00 41", ""},
      {"EF FD 00 41 00 42", "41"},
      {"EF FD 01 80", "80"},
      {"EF FD 01 80 62 00", "80 62"},
      {"EF FD 02 80 81 62 00 63", "80 81 62"},
      {"EF FD 03 80 81 82", "80 81 82"},
      {"EF FD 03 80 81 82 62 00", "80 81 82 62"},
      {"EF FD 04 80 81 82 83 62 00 63", "80 81 82 83 62"},
      {"EF FD 05 80 81 82 83 84", "80 81 82 83 84"},
      {"EF FD 05 80 81 82 83 84 62 00", "80 81 82 83 84 62"},
      {"61 00 EF FD 01 80 EF FD 01 81 62 00", "61 80 81 62"},
      {"EF FD 02 80 81 EF FD 01 82 63", "80 81 82"},
      {"EF FD 01 00", "00"},
      {"EF FD 03 EF FD 01 41 00", "EF FD 01 41"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(toUtf8(honouring(), row.input), converts(row.out)) << row.input;
  }
}

TEST(Utf16ToUtf8, CopiesMarkedBytesAheadOfAnOddByte) {
  EXPECT_EQ(toUtf8(honouring(), "EF FD 00 41 00"), failsQuietly());
  EXPECT_EQ(toUtf8(honouring(), "EF FD 01 80 62"), failsQuietly("80"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD 01 80 62 00 63"), failsQuietly("80 62"));
  // The odd byte is not there for the marker either.
  EXPECT_EQ(toUtf8(honouring(), "EF FD 02 80 81"), failsQuietly());
}

TEST(Utf16ToUtf8, DecodesOnWhereAMarkerAnnouncesMoreThanIsLeft) {
  const struct {
    const char* input;
    const char* out;
  } rows[] = {
      {"EF FD 02 41", ""},
      {"EF FD 03 41", ""},
      {"EF FD 05 41", ""},
      {"EF FD 04 41 42 43", "E4 89 81"},
      {"EF FD 05 41 00 43", "41"},
      {"EF FD 05 EF FD 01", "EF B7 AF"},
      {"EF FD 00 EF FD 03 41 00", "41"},
      {"EF FD 00 EF FD 05 41 00 42 00", "41 42"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(toUtf8(honouring(), row.input), converts(row.out)) << row.input;
  }
}

TEST(Utf16ToUtf8, DropsAMarkerWithACountAboveFive) {
  EXPECT_EQ(toUtf8(honouring(), "EF FD 06 00"), converts("06"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD 41 00 42 00"), converts("41 42"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD AC 20"), converts("E2 82 AC"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD 3D D8 00 DE"), converts("F0 9F 98 80"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD EF FD 01 80"), converts("80"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD FF FF"), converts("EF BF BF"));
  for (unsigned int count = 6; count < 128; ++count) {
    const Bytes input = bytes("EF FD") + Bytes{static_cast<unsigned char>(count), 0};
    EXPECT_EQ(toUtf8(honouring(), input).out, hex(Bytes{static_cast<unsigned char>(count)}));
  }
}

TEST(Utf16ToUtf8, TakesAMarkerWithoutRoomForItsCountForACharacter) {
  EXPECT_EQ(toUtf8(honouring(), "EF FD"), converts("EF B7 AF"));
  EXPECT_EQ(toUtf8(honouring(), "41 00 EF FD"), converts("41 EF B7 AF"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD 01"), failsQuietly("EF B7 AF"));
}

TEST(Utf16ToUtf8, LooksForNoMarkerBehindAHighSurrogate) {
  EXPECT_EQ(toUtf8(honouring(), "00 D8 EF FD 41 00"), converts("ED A0 80 EF B7 AF 41"));
}

TEST(Utf16ToUtf8, TakesTheMarkerInTheOrderOfTheHandlersForACharacter) {
  EXPECT_EQ(toUtf8(honouring(), "FD EF 01 80"), converts("EE BF BD E8 80 81"));
}

TEST(Utf16ToUtf8, ReadsSurrogatesAtOddPositionsToo) {
  EXPECT_EQ(toUtf8(honouring(), "EF FD 02 80 81 3D D8 00 DE 41"), converts("80 81 F0 9F 98 80"));
  EXPECT_EQ(toUtf8(honouring(), "EF FD 02 80 81 3D D8 00"), converts("80 81 ED A0 BD"));
}

struct Rewritten {
  const char* utf16;
  const char* utf8;
};

constexpr Rewritten kRewritten[] = {{"61 00", "61"},
                                    {"E9 00", "C3 A9"},
                                    {"AC 20", "E2 82 AC"},
                                    {"3D D8 00 DE", "F0 9F 98 80"},
                                    {"00 D8 AC 20", "ED A0 80 E2 82 AC"},
                                    {"00 00", ""},
                                    {"EF FD 03 80 81 82", "80 81 82"}};

TEST(Utf16ToUtf8, IsWholeAroundTheEdgesOfItsBlocks) {
  for (std::size_t units : {256U, 512U, 2048U, 4096U, 8192U, 16384U}) {
    for (std::size_t ascii = units - 5; ascii <= units + 1; ++ascii) {
      const Bytes head = repeated(ascii, bytes("78 00"));
      const Bytes out = repeated(ascii, bytes("78"));
      for (const Rewritten& row : kRewritten) {
        expectTranscoded(&EncodingConvert::cv_utf16_to_utf8, honouring(), head,
                         repeated(2, bytes(row.utf16)), out, repeated(2, bytes(row.utf8)));
      }
    }
  }
}

TEST(Utf16ToUtf8, IsWholeOverManyBlocks) {
  for (const Rewritten& row : kRewritten) {
    const Bytes input = repeated(20000, bytes(row.utf16));
    const Bytes expected = repeated(20000, bytes(row.utf8));
    ASSERT_EQ(toUtf8(honouring(), input), (Outcome{true, false, hex(expected)})) << row.utf16;
  }
}

TEST(Utf16ToUtf8, CopiesMarkedBytesAtEveryPlaceOfABlock) {
  for (std::size_t before = 0; before <= 520; ++before) {
    expectTranscoded(&EncodingConvert::cv_utf16_to_utf8, honouring(),
                     repeated(before, bytes("78 00")), bytes("EF FD 03 80 81 82 79 00"),
                     repeated(before, bytes("78")), bytes("80 81 82 79"));
  }
}

TEST(Utf16ToUtf8, NeitherSetsNorClearsTheErrorFlag) {
  EXPECT_EQ(toUtf8("00 D8 41"), failsQuietly("ED A0 80"));
  EncodingConvert converter;
  converter.m_hadError = true;
  EXPECT_EQ(toUtf8(converter, "41 00"), convertsWithError("41"));
}

TEST(Utf16ToUtf8, LogsNothingButItsContext) {
  RecordingLog log(true);
  DataBuffer out;
  EncodingConvert converter = honouring();
  const Bytes data = bytes("00 D8 41 00 EF FD 09 00 00 00 42");
  EXPECT_FALSE(converter.cv_utf16_to_utf8(data.data(), sizeOf(data), out, log));
  EXPECT_EQ(log.lines, (Lines{"open convertFromUnicode verbose=1", "close"}));
}

}  // namespace
