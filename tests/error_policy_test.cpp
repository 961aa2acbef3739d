#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <string>
#include <type_traits>

#include "tests/helpers/Conversion.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;

/// What a handler call gave: the bytes to skip, the error flag, the output.
struct Handled {
  int skipped;
  bool hadError;
  std::string out;

  bool operator==(const Handled& other) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Handled& handled) {
  return stream << "skipped " << handled.skipped << (handled.hadError ? ", with an error: " : ": ")
                << handled.out;
}

/// Calls one handler; those without a result are shown with the width of
/// what they handle.
Handled singleByte(EncodingConvert& converter, std::string_view input) {
  NullLog log;
  DataBuffer out;
  converter.handleErrorFromSingleByte(bytes(input).data(), out, log);
  return {1, converter.m_hadError, hex(out)};
}

Handled unicode(EncodingConvert& converter, std::string_view input) {
  NullLog log;
  DataBuffer out;
  converter.handleErrorFromUnicode(bytes(input).data(), out, log);
  return {2, converter.m_hadError, hex(out)};
}

Handled utf8(EncodingConvert& converter, std::string_view input) {
  NullLog log;
  DataBuffer out;
  const Bytes data = bytes(input);
  const int skipped =
      converter.handleErrorFromUtf8(data.data(), static_cast<int>(data.size()), out, log);
  return {skipped, converter.m_hadError, hex(out)};
}

Handled unknown(EncodingConvert& converter, std::string_view input) {
  NullLog log;
  DataBuffer out;
  const int skipped = converter.handleErrorFromUnknown(bytes(input).data(), out, log);
  return {skipped, converter.m_hadError, hex(out)};
}

Handled writes(int skipped, std::string_view out) { return {skipped, true, hex(bytes(out))}; }

using Handler = Handled (*)(EncodingConvert&, std::string_view);

/// One action of one handler, with markers off and on.
struct Row {
  int action;
  const char* plain;
  const char* marked;
};

/// Runs the rows with the substitution 3F 00 and the source code page given.
template <std::size_t n>
void expectRows(const Row (&rows)[n], Handler handler, int fromCodePage, std::string_view input,
                int skipped) {
  for (const Row& row : rows) {
    for (bool marked : {false, true}) {
      SCOPED_TRACE("action " + std::to_string(row.action) + (marked ? ", marked" : ""));
      EncodingConvert converter = withSubstitute("3F 00");
      converter.setErrorAction(row.action);
      converter.m_fromCodePage = fromCodePage;
      converter.m_toCodePage = 1200;
      converter.m_emitPassthroughMarkers = marked;
      EXPECT_EQ(handler(converter, input), writes(skipped, marked ? row.marked : row.plain));
      EXPECT_EQ(converter.m_errorAction, row.action);
      EXPECT_EQ(converter.m_emitPassthroughMarkers, marked);
      EXPECT_FALSE(converter.m_honorPassthroughMarkers);
    }
  }
}

constexpr Row kSingleByteRows[] = {
    {0, "", ""},
    {1, "3F 00", "FD EF 02 3F 00"},
    {2, "'&#xA5;'", "FD EF 05 '&#xA5;'"},
    {3, "", ""},
    {4, "", ""},
    {5, "", ""},
    {7, "A5", "FD EF 01 A5"},
    {8, "A5 00", "A5 00"},
    {9, "", ""},
    {10, "", ""},
    {-1, "", ""},
    {256 + 7, "", ""},
    {INT_MAX, "", ""},
    {INT_MIN, "", ""},
};

TEST(SingleByteErrors, FollowEveryAction) {
  expectRows(kSingleByteRows, singleByte, 1252, "A5", 1);
}

TEST(SingleByteErrors, AreHandledAlikeForUnknownSequencesOfOtherThanDoubleBytePages) {
  for (int codePage : {0, 37, 1252, 1361, 10001, 50220, 52936, 65001}) {
    SCOPED_TRACE(codePage);
    expectRows(kSingleByteRows, unknown, codePage, "A5 30", 1);
  }
}

TEST(SingleByteErrors, AreWrittenWithALeadingZeroDigit) {
  EncodingConvert converter = withAction(2);
  EXPECT_EQ(singleByte(converter, "0F"), writes(1, "'&#x0F;'"));
  EXPECT_EQ(singleByte(converter, "00"), writes(1, "'&#x00;'"));
}

TEST(UnicodeErrors, FollowEveryAction) {
  const Row rows[] = {
      {0, "", ""},
      {1, "3F 00", "FD EF 02 3F 00"},
      {2, "'&#xE900;'", "FD EF 06 '&#xE900;'"},
      {3, "", ""},
      {4, "", ""},
      {5, "", ""},
      {7, "E9 00", "FD EF 02 E9 00"},
      {8, "", ""},
      {9, "", ""},
      {-1, "", ""},
      {INT_MAX, "", ""},
      {INT_MIN, "", ""},
  };
  expectRows(rows, unicode, 65001, "E9 00", 2);
}

TEST(Utf8Errors, FollowEveryAction) {
  const Row rows[] = {
      {0, "", ""},
      {1, "3F 00", "FD EF 02 3F 00"},
      {2, "'&#xE688BB;'", "FD EF 07 '&#xE688BB;'"},
      {3, "", ""},
      {4, "", ""},
      {5, "", ""},
      {7, "E6 88 BB", "FD EF 03 E6 88 BB"},
      {8, "", ""},
      {9, "", ""},
      {-1, "", ""},
      {INT_MAX, "", ""},
      {INT_MIN, "", ""},
  };
  expectRows(rows, utf8, 65001, "E6 88 BB 41", 3);
}

TEST(Utf8Errors, CoverWhatTheLeadByteAnnouncesBoundedByWhatIsLeft) {
  const struct {
    const char* input;
    int covered;
    const char* escape;
    const char* count;
  } rows[] = {
      {"80 80", 1, "'&#x80;'", "05"},
      {"BF", 1, "'&#xBF;'", "05"},
      {"C0 80 80", 2, "'&#xC080;'", "06"},
      {"DF 41", 2, "'&#xDF41;'", "06"},
      {"DF", 1, "'&#xDF;'", "05"},
      {"E0 80 41 41", 3, "'&#xE08041;'", "07"},
      {"EF 41", 2, "'&#xEF41;'", "06"},
      {"EF", 1, "'&#xEF;'", "05"},
      {"F0 80 80 41 41", 4, "'&#xF0808041;'", "08"},
      {"F7 41 42", 3, "'&#xF74142;'", "07"},
      {"F8 80 80 80 80", 1, "'&#xF8;'", "05"},
      {"FF FF", 1, "'&#xFF;'", "05"},
      {"41 42", 1, "'&#x41;'", "05"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input);
    EncodingConvert converter = withAction(2);
    EXPECT_EQ(utf8(converter, row.input), writes(row.covered, row.escape));
    converter.m_emitPassthroughMarkers = true;
    EXPECT_EQ(utf8(converter, row.input),
              writes(row.covered, std::string("FD EF ") + row.count + " " + row.escape));
  }
}

TEST(Utf8Errors, AreNoneWhereNothingIsLeft) {
  NullLog log;
  DataBuffer out;
  EncodingConvert converter = withAction(7);
  const Bytes data = bytes("80");
  EXPECT_EQ(converter.handleErrorFromUtf8(data.data(), 0, out, log), 0);
  EXPECT_EQ(converter.handleErrorFromUtf8(nullptr, 1, out, log), 0);
  EXPECT_EQ(out.getSize(), 0U);
  EXPECT_FALSE(converter.m_hadError);
  converter.m_hadError = true;
  EXPECT_EQ(converter.handleErrorFromUtf8(nullptr, 0, out, log), 0);
  EXPECT_TRUE(converter.m_hadError);
}

TEST(Utf8Errors, WriteAnEmptyReferenceForANegativeLength) {
  NullLog log;
  const Bytes data = bytes("80");
  for (bool marked : {false, true}) {
    DataBuffer out;
    EncodingConvert converter = withAction(2);
    converter.m_emitPassthroughMarkers = marked;
    converter.handleErrorFromUtf8(data.data(), -1, out, log);
    EXPECT_EQ(hex(out), hex(bytes(marked ? "FD EF 04 '&#x;'" : "'&#x;'")));
    EXPECT_TRUE(converter.m_hadError);
  }
}

TEST(UnknownSequenceErrors, CoverTwoBytesInTheDoubleBytePages) {
  const Row rows[] = {
      {0, "", ""},
      {1, "3F 00", "FD EF 02 3F 00"},
      {2, "'&#x81AD;'", "FD EF 06 '&#x81AD;'"},
      {3, "", ""},
      {4, "", ""},
      {5, "", ""},
      {7, "81 AD", "FD EF 02 81 AD"},
      {8, "", ""},
      {9, "", ""},
      {-1, "", ""},
      {INT_MAX, "", ""},
      {INT_MIN, "", ""},
  };
  for (int codePage : {932, 936, 949, 950, 51932, 51936, 51949}) {
    SCOPED_TRACE(codePage);
    expectRows(rows, unknown, codePage, "81 AD 41", 2);
  }
}

TEST(Substitution, WritesNothingAtAllWithoutBytes) {
  for (Handler handler : {singleByte, unicode, utf8, unknown}) {
    EncodingConvert converter = withAction(1);
    converter.m_emitPassthroughMarkers = true;
    const Handled handled = handler(converter, "E9 00");
    EXPECT_EQ(handled.out, "");
    EXPECT_TRUE(handled.hadError);
  }
}

TEST(Substitution, ReachesAHundredBytes) {
  const Bytes hundred = repeated(100, bytes("2A"));
  for (Handler handler : {singleByte, unicode, utf8, unknown}) {
    EncodingConvert converter = withAction(1);
    converter.setDefBytes(hundred.data(), 100);
    EXPECT_EQ(handler(converter, "E9 00").out, hex(hundred));
    converter.m_emitPassthroughMarkers = true;
    EXPECT_EQ(handler(converter, "E9 00").out, hex(bytes("FD EF 64") + hundred));
  }
}

TEST(ErrorHandlers, AppendToWhatIsThere) {
  NullLog log;
  const Bytes data = bytes("E9 00");
  EncodingConvert converter = withAction(7);
  DataBuffer out = bufferOf("'ab'");
  converter.handleErrorFromSingleByte(data.data(), out, log);
  converter.handleErrorFromUnicode(data.data(), out, log);
  converter.handleErrorFromUtf8(data.data(), 2, out, log);
  converter.handleErrorFromUnknown(data.data(), out, log);
  EXPECT_EQ(hex(out), hex(bytes("'ab' E9 E9 00 E9 00 E9")));
}

TEST(ErrorHandlers, ActAlikeWhileMarkersAreHonoured) {
  for (Handler handler : {singleByte, unicode, utf8, unknown}) {
    for (int action : {0, 1, 2, 3, 4, 5, 7, 8, 9}) {
      EncodingConvert plain = withSubstitute("3F");
      plain.setErrorAction(action);
      EncodingConvert honouring = plain;
      honouring.m_honorPassthroughMarkers = true;
      EXPECT_EQ(handler(honouring, "E9 00"), handler(plain, "E9 00")) << "action " << action;
      EXPECT_TRUE(honouring.m_honorPassthroughMarkers);
    }
  }
}

/// A converter in the middle of a conversion that reconverts what it cannot map.
EncodingConvert reconverting(int fromCodePage, int toCodePage, int alternate) {
  EncodingConvert converter = withAlternate(alternate);
  converter.m_fromCodePage = fromCodePage;
  converter.m_toCodePage = toCodePage;
  return converter;
}

struct Reconversion {
  Handler handler;
  int fromCodePage;
  int toCodePage;
  int alternate;
  const char* input;
  Handled expected;
};

Handled reconverts(int skipped, std::string_view out) { return {skipped, false, hex(bytes(out))}; }

const Reconversion kReconversions[] = {
    // To the alternate page, from the one of the handler.
    {singleByte, 65001, 65001, 1200, "41", reconverts(1, "41 00")},
    {singleByte, 65001, 65001, 1201, "41", reconverts(1, "00 41")},
    {singleByte, 65001, 65001, 12000, "41", reconverts(1, "41 00 00 00")},
    {unicode, 65001, 1252, 65001, "E9 00", reconverts(2, "C3 A9")},
    {unicode, 65001, 1252, 1201, "E9 00", reconverts(2, "00 E9")},
    {unicode, 65001, 1252, 65000, "41 00", reconverts(2, "'A'")},
    {utf8, 1252, 1252, 1200, "C3 A9 41", reconverts(2, "E9 00")},
    {utf8, 1252, 1252, 1201, "E2 82 AC", reconverts(3, "20 AC")},
    {unknown, 65001, 1252, 1200, "41 42", reconverts(1, "41 00")},
    {unknown, 932, 1252, 50220, "82 A0 41", reconverts(2, "1B 24 42 24 22 1B 28 42")},
    // To the destination where no alternate is set.
    {singleByte, 65001, 1200, 0, "41", reconverts(1, "41 00")},
    {unicode, 65001, 1201, 0, "E9 00", reconverts(2, "00 E9")},
    {utf8, 65001, 1200, 0, "C3 A9", reconverts(2, "E9 00")},
    {unknown, 65001, 1200, 0, "41 42", reconverts(1, "41 00")},
    {unknown, 932, 50220, 0, "82 A0", reconverts(2, "1B 24 42 24 22 1B 28 42")},
    // Equal pages, and pages of 0, copy.
    {singleByte, 1252, 1252, 0, "A5", reconverts(1, "A5")},
    {singleByte, 1252, 65001, 1252, "A5", reconverts(1, "A5")},
    {singleByte, 0, 0, 1200, "A5", reconverts(1, "A5")},
    {singleByte, 0, 0, 0, "A5", reconverts(1, "A5")},
    {unicode, 65001, 1252, 1200, "E9 00", reconverts(2, "E9 00")},
    {unicode, 65001, 0, 0, "E9 00", reconverts(2, "E9 00")},
    {utf8, 65001, 1200, 65001, "80 41", reconverts(1, "80")},
    {unknown, 936, 1252, 936, "81 30", reconverts(2, "81 30")},
    // A unit that reads as a byte-order mark goes the way of one.
    {unicode, 65001, 1252, 65001, "FF FE", reconverts(2, "")},
    {unicode, 65001, 1252, 65001, "FE FF", reconverts(2, "")},
    // An error inside is dropped.
    {singleByte, 65001, 65001, 1200, "80", writes(1, "")},
    {utf8, 65001, 1200, 0, "80 41", writes(1, "")},
    // Failure of the inner conversion, with and without a route of its own.
    {singleByte, 65001, 1200, 20, "41", writes(1, "")},
    {unicode, 65001, 1252, 99, "E9 00", writes(2, "")},
    {unicode, 65001, -5, 0, "E9 00", writes(2, "")},
    {utf8, 65001, 1252, -1, "C3 A9", writes(2, "")},
    {unknown, 932, 65001, 20, "82 A0", writes(2, "")},
    {singleByte, 20, 65001, 0, "41", writes(1, "")},
    {singleByte, kNoTable, 65001, 0, "41", writes(1, "")},
    {unicode, 65001, 1252, kNoTable, "E9 00", writes(2, "")},
    {unicode, 65001, 1252, kNoTableEither, "E9 00", writes(2, "")},
};

TEST(Reconversion, WritesWhatTheInnerConversionGives) {
  for (const Reconversion& row : kReconversions) {
    SCOPED_TRACE(std::to_string(row.fromCodePage) + " to " + std::to_string(row.toCodePage) +
                 ", alternate " + std::to_string(row.alternate) + ": " + row.input);
    EncodingConvert converter = reconverting(row.fromCodePage, row.toCodePage, row.alternate);
    EXPECT_EQ(row.handler(converter, row.input), row.expected);
  }
}

TEST(Reconversion, PutsTheActionAndBothCodePagesBack) {
  for (const Reconversion& row : kReconversions) {
    SCOPED_TRACE(std::to_string(row.fromCodePage) + " to " + std::to_string(row.toCodePage) +
                 ", alternate " + std::to_string(row.alternate) + ": " + row.input);
    EncodingConvert converter = reconverting(row.fromCodePage, row.toCodePage, row.alternate);
    row.handler(converter, row.input);
    EXPECT_EQ(converter.m_errorAction, 6);
    EXPECT_EQ(converter.m_altDestCodepage, row.alternate);
    EXPECT_EQ(converter.m_fromCodePage, row.fromCodePage);
    EXPECT_EQ(converter.m_toCodePage, row.toCodePage);
  }
}

TEST(Reconversion, WritesNoMarker) {
  EncodingConvert converter = reconverting(1252, 1252, 0);
  converter.m_emitPassthroughMarkers = true;
  EXPECT_EQ(singleByte(converter, "A5"), reconverts(1, "A5"));
  EXPECT_TRUE(converter.m_emitPassthroughMarkers);
}

TEST(Reconversion, LeavesTheMarkerFlagsAsTheInnerConversionDoes) {
  // A direct route of the pivot clears both, a copy touches neither.
  EncodingConvert direct = reconverting(65001, 1252, 1200);
  direct.m_emitPassthroughMarkers = true;
  EXPECT_EQ(utf8(direct, "C3 A9"), reconverts(2, "E9 00"));
  EXPECT_FALSE(direct.m_emitPassthroughMarkers);
  EXPECT_FALSE(direct.m_honorPassthroughMarkers);

  // A decoder without a table leaves the pivot in its first half.
  EncodingConvert undecodable = reconverting(kNoTable, 1252, 65001);
  EXPECT_EQ(singleByte(undecodable, "41"), writes(1, ""));
  EXPECT_TRUE(undecodable.m_emitPassthroughMarkers);
  EXPECT_FALSE(undecodable.m_honorPassthroughMarkers);
}

TEST(Reconversion, IsNotDoneWhileMarkersAreHonouredSaveFromUnicode) {
  for (Handler handler : {singleByte, utf8, unknown}) {
    EncodingConvert converter = reconverting(65001, 65001, 1200);
    converter.m_honorPassthroughMarkers = true;
    const Handled handled = handler(converter, "41 42");
    EXPECT_EQ(handled, writes(1, ""));
    EXPECT_TRUE(converter.m_honorPassthroughMarkers);
  }
  EncodingConvert doubleByte = reconverting(932, 65001, 50220);
  doubleByte.m_honorPassthroughMarkers = true;
  EXPECT_EQ(unknown(doubleByte, "82 A0"), writes(2, ""));

  EncodingConvert fromUnicode = reconverting(932, 1252, 65001);
  fromUnicode.m_honorPassthroughMarkers = true;
  EXPECT_EQ(unicode(fromUnicode, "E9 00"), reconverts(2, "C3 A9"));
  EXPECT_FALSE(fromUnicode.m_honorPassthroughMarkers);
}

TEST(Reconversion, KeepsTheHonourFlagWhereTheAlternatePageIsRefused) {
  EncodingConvert converter = reconverting(65001, 1252, 20);
  converter.m_honorPassthroughMarkers = true;
  EXPECT_EQ(unicode(converter, "E9 00"), writes(2, ""));
  EXPECT_TRUE(converter.m_honorPassthroughMarkers);
}

TEST(Settings, StartAsDocumented) {
  const EncodingConvert converter;
  EXPECT_TRUE(converter.m_allow4ByteUtf8);
  EXPECT_EQ(converter.m_errorAction, 0);
  EXPECT_EQ(converter.m_altDestCodepage, 0);
  EXPECT_EQ(converter.m_numDefBytes, 0);
  EXPECT_EQ(hex(converter.m_defBytes, sizeof converter.m_defBytes), hex(Bytes(100, 0)));
  EXPECT_EQ(converter.m_fromCodePage, 0);
  EXPECT_EQ(converter.m_toCodePage, 0);
  EXPECT_FALSE(converter.m_emitPassthroughMarkers);
  EXPECT_FALSE(converter.m_honorPassthroughMarkers);
  EXPECT_FALSE(converter.m_hadError);
}

TEST(Settings, AreDestroyedThroughAVirtualDestructor) {
  EXPECT_TRUE(std::has_virtual_destructor_v<EncodingConvert>);
}

TEST(Settings, AreStoredWithoutValidation) {
  EncodingConvert converter;
  for (int value : {0, 1, 8, 9, -1, 65001, INT_MAX, INT_MIN}) {
    converter.setErrorAction(value);
    EXPECT_EQ(converter.m_errorAction, value);
    converter.setAltDestCodepage(value);
    EXPECT_EQ(converter.m_altDestCodepage, value);
  }
}

TEST(Settings, OutliveAConversion) {
  EncodingConvert converter = withSubstitute("3F 00");
  converter.setAltDestCodepage(1201);
  converter.m_allow4ByteUtf8 = false;
  EXPECT_EQ(convert(converter, 65001, 1200, "61 80"), convertsWithError("61 00 3F 00"));
  EXPECT_EQ(convert(converter, 20, 1200, "61 80"), failsQuietly());
  EXPECT_EQ(converter.m_errorAction, 1);
  EXPECT_EQ(converter.m_altDestCodepage, 1201);
  EXPECT_EQ(converter.m_numDefBytes, 2);
  EXPECT_EQ(hex(converter.m_defBytes, 2), "3F 00");
  EXPECT_FALSE(converter.m_allow4ByteUtf8);
}

struct Count {
  int given;
  int stored;
};

TEST(SubstitutionBytes, AreAHundredAtMost) {
  Bytes source;
  for (unsigned int i = 0; i < 200; ++i) source.push_back(static_cast<unsigned char>(i + 1));
  for (const Count& count : {Count{1, 1}, Count{99, 99}, Count{100, 100}, Count{101, 100},
                             Count{150, 100}, Count{INT_MAX, 100}}) {
    EncodingConvert converter;
    converter.setDefBytes(source.data(), count.given);
    EXPECT_EQ(converter.m_numDefBytes, count.stored);
    Bytes expected(100, 0);
    for (int i = 0; i < count.stored; ++i) {
      expected[static_cast<std::size_t>(i)] = source[static_cast<std::size_t>(i)];
    }
    EXPECT_EQ(hex(converter.m_defBytes, 100), hex(expected));
  }
}

TEST(SubstitutionBytes, KeepTheirValuesButNotTheirCountForANullPointer) {
  EncodingConvert converter = withSubstitute("01 02 03");
  for (const Count& count : {Count{5, 5}, Count{150, 100}, Count{0, 0}, Count{-3, 0}}) {
    converter.setDefBytes(nullptr, count.given);
    EXPECT_EQ(converter.m_numDefBytes, count.stored);
    EXPECT_EQ(hex(converter.m_defBytes, 5), "01 02 03 00 00");
  }
}

TEST(SubstitutionBytes, KeepTheirValuesForACountOfZeroOrLess) {
  EncodingConvert converter = withSubstitute("01 02 03");
  const Bytes other = bytes("FF");
  for (int count : {0, -1, INT_MIN}) {
    converter.setDefBytes(other.data(), count);
    EXPECT_EQ(converter.m_numDefBytes, 0);
    EXPECT_EQ(hex(converter.m_defBytes, 3), "01 02 03");
  }
}

TEST(SubstitutionBytes, KeepTheTailOfALongerPredecessor) {
  EncodingConvert converter = withSubstitute("01 02 03");
  const Bytes other = bytes("FF");
  converter.setDefBytes(other.data(), 1);
  EXPECT_EQ(converter.m_numDefBytes, 1);
  EXPECT_EQ(hex(converter.m_defBytes, 3), "FF 02 03");
}

TEST(HexData, IsUpperCaseHighDigitFirst) {
  Bytes all;
  std::string expected;
  for (unsigned int b = 0; b < 256; ++b) {
    all.push_back(static_cast<unsigned char>(b));
    expected += "0123456789ABCDEF"[b / 16];
    expected += "0123456789ABCDEF"[b % 16];
  }
  EncodingConvert converter;
  DataBuffer out = bufferOf("'='");
  converter.appendHexData(all.data(), 256, out);
  EXPECT_EQ(hex(out), hex(bytes("'=" + expected + "'")));
  EXPECT_FALSE(converter.m_hadError);
}

TEST(HexData, IsNothingForNullOrACountOfZeroOrLess) {
  const Bytes data = bytes("AB");
  EncodingConvert converter;
  DataBuffer out;
  converter.appendHexData(nullptr, 1, out);
  for (int count : {0, -1, INT_MIN}) converter.appendHexData(data.data(), count, out);
  EXPECT_EQ(out.getSize(), 0U);
}

}  // namespace
