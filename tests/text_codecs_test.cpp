// What the codecs of the text layer make of bytes: each rule by examples, with the
// exact bytes, offsets and lengths.

#include <gtest/gtest.h>

#include <span>

#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::byteString;
using quorvel_test::hex;

/// Bytes that are read, in hexadecimal, the text in UTF-8, what is lost.
struct Reading {
  const char* bytes;
  std::string_view text;
  const char* losses;
};

/// The same of bytes that are best read as text.
struct PlainReading {
  std::string_view bytes;
  std::string_view text;
  const char* losses;
};

/// A text in UTF-8, the bytes that are written, what is lost.
struct Writing {
  std::string_view text;
  const char* bytes;
  const char* losses;
};

void expectReading(int encoding, std::string_view bytes, std::string_view text,
                   const char* losses) {
  for (const Door& door : doors) {
    EXPECT_EQ(outcomeOf(door, encoding, 65001, bytes, dropping()), (Outcome{hex(text), losses}))
        << hex(bytes) << " in " << encoding << " by " << door.name;
  }
}

void expectReadings(int encoding, std::span<const Reading> readings) {
  for (const Reading& reading : readings) {
    expectReading(encoding, byteString(reading.bytes), reading.text, reading.losses);
  }
}

void expectPlainReadings(int encoding, std::span<const PlainReading> readings) {
  for (const PlainReading& reading : readings) {
    expectReading(encoding, reading.bytes, reading.text, reading.losses);
  }
}

void expectWritings(int encoding, std::span<const Writing> writings) {
  for (const Door& door : doors) {
    for (const Writing& writing : writings) {
      EXPECT_EQ(outcomeOf(door, 65001, encoding, writing.text, dropping()),
                (Outcome{writing.bytes, writing.losses}))
          << writing.text << " to " << encoding << " by " << door.name;
    }
  }
}

// The NUL is part of what a literal with this suffix holds.
using namespace std::string_view_literals;

// --- UTF-8, UTF-16, UTF-32 ----------------------------------------------------------

constexpr Reading utf8[] = {
    {"61 C3 A9 E2 82 AC F0 9F 98 80", "a\u00E9\u20AC\U0001F600", ""},
    {"61 00 62", "a\0b"sv, ""},
    {"80 BF", "", "0+1 1+1"},
    {"C0 80", "", "0+1 1+1"},
    {"C1 BF 61", "a", "0+1 1+1"},
    {"C3", "", "0+1"},
    {"C3 61", "a", "0+1"},
    {"E2 82", "", "0+2"},
    {"E2 82 22", "\"", "0+2"},
    {"E0 80 80", "", "0+1 1+1 2+1"},
    {"ED A0 80", "", "0+1 1+1 2+1"},
    {"ED B2 80", "", "0+1 1+1 2+1"},
    {"ED 9F BF", "\uD7FF", ""},
    {"EE 80 80 EF BF BF", "\uE000\uFFFF", ""},
    {"F0 9F 98", "", "0+3"},
    {"F0 80 80 80", "", "0+1 1+1 2+1 3+1"},
    {"F4 8F BF BF F4 90 80 80", "\U0010FFFF", "4+1 5+1 6+1 7+1"},
    {"F5 80", "", "0+1 1+1"},
    {"F8 FE FF", "", "0+1 1+1 2+1"},
    {"F1 80 E2 82 C3 A9", "\u00E9", "0+2 2+2"},
};

constexpr Reading utf16le[] = {
    {"61 00 AC 20 3D D8 00 DE", "a\u20AC\U0001F600", ""},
    {"61", "", "0+1"},
    {"3D D8", "", "0+2"},
    {"3D D8 61", "", "0+2 2+1"},
    {"3D D8 61 00", "a", "0+2"},
    {"00 DE 61 00", "a", "0+2"},
    {"3D D8 3D D8 00 DE", "\U0001F600", "0+2"},
    {"00 00 FF FF", "\0\uFFFF"sv, ""},
};

constexpr Reading utf16be[] = {
    {"00 61 20 AC D8 3D DE 00", "a\u20AC\U0001F600", ""},
    {"D8 3D 00", "", "0+2 2+1"},
    {"DE 00 D8 3D", "", "0+2 2+2"},
};

constexpr Reading utf32le[] = {
    {"61 00 00 00 00 F6 01 00", "a\U0001F600", ""},
    {"00 D8 00 00 61 00 00 00", "a", "0+4"},
    {"00 00 11 00", "", "0+4"},
    {"FF FF 10 00", "\U0010FFFF", ""},
    {"61 00 00", "", "0+3"},
    {"61", "", "0+1"},
    {"00 00 00 00", "\0"sv, ""},
};

constexpr Reading utf32be[] = {
    {"00 00 00 61 00 01 F6 00", "a\U0001F600", ""},
    {"00 00 DF FF 00 00", "", "0+4 4+2"},
};

TEST(TextCodecs, ReadUtf8ByMaximalSubparts) { expectReadings(65001, utf8); }
TEST(TextCodecs, ReadUtf16UnitByUnitAndTakeHalvesForMalformed) {
  expectReadings(1200, utf16le);
  expectReadings(1201, utf16be);
}
TEST(TextCodecs, ReadUtf32OfScalarValuesOnly) {
  for (const int number : {12000, 65005}) expectReadings(number, utf32le);
  for (const int number : {12001, 65006}) expectReadings(number, utf32be);
}

TEST(TextCodecs, WriteACharacterBeyondTheFirstPlaneAsOne) {
  constexpr Writing utf16[] = {{"a\U0001F600", "61 00 3D D8 00 DE", ""}};
  constexpr Writing utf32[] = {{"a\U0001F600", "00 00 00 61 00 01 F6 00", ""}};
  constexpr Writing latin1[] = {{"a\U0001F600z", "61 7A", "1+4:U+1F600"}};
  expectWritings(1200, utf16);
  expectWritings(12001, utf32);
  expectWritings(28591, latin1);
}

// --- UTF-7 -----------------------------------------------------------------------------

constexpr PlainReading utf7[] = {
    {"a+-b", "a+b", ""},
    {"+AOk-a", "\u00E9a", ""},
    {"+AOk.a", "\u00E9.a", ""},
    {"+AOk", "\u00E9", ""},
    {"+2D3eAA-", "\U0001F600", ""},
    {"~\\\0\x1B\x7F"sv, "~\\\0\x1B\x7F"sv, ""},
    {"a\xE9", "a", "1+1"},
    {"+AOk\xE9z", "\u00E9z", "4+1"},
    // A plus with nothing behind it.
    {"+\"", "\"", "0+1"},
    {"a+", "a", "1+1"},
    // Bits that are left over: six, eight, and two that are not zero.
    {"+A-a", "a", "1+1"},
    {"+AOkA-a", "\u00E9a", "3+2"},
    {"+AOl-a", "\u00E9a", "3+1"},
    // Halves: high, low, one in each of two runs, one between a and b.
    {"+2D0-a", "a", "1+3"},
    {"+3gA-a", "a", "1+3"},
    {"+2D0-+3gA-", "", "1+3 6+3"},
    {"+AGHYPQBi-", "ab", "3+4"},
};

constexpr Writing toUtf7[] = {
    {"a+\u00E9", "61 2B 2D 2B 41 4F 6B 2D", ""},
    {"\u00E9a", "2B 41 4F 6B 2D 61", ""},
    {"\u00E9-", "2B 41 4F 6B 2D 2D", ""},
    {"\u00E9.", "2B 41 4F 6B 2E", ""},
    {"\u00E9+", "2B 41 4F 6B 41 4B 77 2D", ""},
    {"~", "2B 41 48 34 2D", ""},
    {"\0"sv, "2B 41 41 41 2D", ""},
    {"\U0001F600", "2B 32 44 33 65 41 41 2D", ""},
};

TEST(TextCodecs, ReadUtf7AndReportTheBytesThatHoldTheBits) { expectPlainReadings(65000, utf7); }
TEST(TextCodecs, WriteUtf7AndCloseWhatIsOpen) { expectWritings(65000, toUtf7); }

TEST(TextCodecs, PlaceACharacterOfUtf7AtTheByteWithItsFirstBit) {
  for (const Door& door : doors) {
    EXPECT_EQ(outcomeOf(door, 65000, 20127, "+AGEA6QDq-b+2D3eAA-", dropping()),
              (Outcome{"61 62", "3+4:U+00E9 6+3:U+00EA 12+6:U+1F600"}))
        << door.name;
  }
}

TEST(TextCodecs, MakeNoPairOfHalvesInTwoRunsOfUtf7HoweverLongTheText) {
  for (const Door& door : doors) {
    for (const std::size_t around : {0U, 20U, 31U, 32U, 100U}) {
      const std::string text(around, 'a');
      const std::string source = text + "+2D0-+3gA-" + text;
      EXPECT_EQ(outcomeOf(door, 65000, 20127, source, dropping()),
                (Outcome{hex(text + text),
                         std::to_string(around + 1) + "+3 " + std::to_string(around + 6) + "+3"}))
          << door.name;
    }
  }
}

// --- GSM -------------------------------------------------------------------------------

constexpr Reading gsm[] = {
    {"00 09 61", "@\u00C7a", ""}, {"1B 65 1B 0A", "\u20AC\f", ""}, {"1B 61", "a", "0+1"},
    {"61 1B", "a", "1+1"},        {"1B 1B 65", "\u20AC", "0+1"},   {"80 61 FF", "a", "0+1 2+1"},
    {"1B 80", "", "0+1 1+1"},
};

constexpr Writing toGsm[] = {
    {"@\u20AC[", "00 1B 65 1B 3C", ""},
    {"a\0b"sv, "61 62", "1+1:U+0000"},
    {"\u00E7`", "", "0+2:U+00E7 2+1:U+0060"},
};

TEST(TextCodecs, ReadTheEscapeOfGsmOnlyBeforeAnExtension) { expectReadings(55000, gsm); }
TEST(TextCodecs, WriteGsmWithItsExtension) { expectWritings(55000, toGsm); }

// --- ISO-2022-JP -----------------------------------------------------------------------

constexpr PlainReading iso2022Jp[] = {
    {"a\x1B$B$\"\x1B(Bz", "a\u3042z", ""},
    {"\x1B$@$\"\x1B(Jz\\~", "\u3042z\\~", ""},
    {"\x1B(I1\x1B(Bz", "\uFF71z", ""},
    {"\x0E"
     "1\x0Fz",
     "\uFF71z", ""},
    {"\x1B$B\x0E"
     "1\x0F$\"",
     "\uFF71\u3042", ""},
    {"\x0E\x1B$B1\x0F$\"", "\uFF71\u3042", ""},
    {"\x1B$B$\"\nz", "\u3042\nz", ""},
    {"\x0E"
     "1\rz",
     "\uFF71\rz", ""},
    {"\x1B$B$\" \t\x7F$\"", "\u3042 \t\x7F\u3042", ""},
    {"\x1B$By!-p", "\u7E8A\u2252", ""},
    // Pairs that are none, and what cuts one off.
    {"\x1B$B)!$\"", "\u3042", "3+2"},
    {"\x1B$B$", "", "3+1"},
    {"\x1B$B$\x1B(Bz", "z", "3+1"},
    {"\x1B$B$\nz", "\nz", "3+1"},
    {"\x1B$B$ $\"", " \u3042", "3+1"},
    {"\x1B$B$\xA2$\"", "\u3042", "3+1 4+1"},
    // Bytes above 7F, and what is no katakana.
    {"\x1B$B\xA4\xA2", "", "3+1 4+1"},
    {"\xA4"
     "a",
     "a", "0+1"},
    {"\x1B(I\xB1"
     "1",
     "\uFF71", "3+1"},
    {"\x1B(I_a1", "\uFF9F\uFF71", "4+1"},
    // Escapes that are none.
    {"a\x1B", "a", "1+1"},
    {"a\x1B$", "a$", "1+1"},
    {"a\x1B(", "a(", "1+1"},
    {"\x1B(Cz", "(Cz", "0+1"},
    {"\x1B$(D0!", "$(D0!", "0+1"},
    {"\x1B$B\x1B(Cz", "", "3+1 4+2 6+1"},
};

constexpr Writing toIso2022Jp[] = {
    {"\u3042a\u3042", "1B 24 42 24 22 1B 28 42 61 1B 24 42 24 22 1B 28 42", ""},
    {"\uFF71\u3042", "1B 28 49 31 1B 24 42 24 22 1B 28 42", ""},
    {"\u3042\n\\~", "1B 24 42 24 22 1B 28 42 0A 5C 7E", ""},
    {"\u7E8A\u2252", "1B 24 42 79 21 22 62 1B 28 42", ""},
    {"a\x0E\x0F\x1Bz", "61 7A", "1+1:U+000E 2+1:U+000F 3+1:U+001B"},
    {"\u00A5\u0080\uE000", "", "0+2:U+00A5 2+2:U+0080 4+3:U+E000"},
    {"\u3042\u00E9\u3042", "1B 24 42 24 22 24 22 1B 28 42", "3+2:U+00E9"},
    {"", "", ""},
};

TEST(TextCodecs, ReadIso2022JpAndLoseWhatTheSetInUseLacks) {
  for (const int number : {50220, 50221, 50222}) expectPlainReadings(number, iso2022Jp);
}
TEST(TextCodecs, WriteIso2022JpWithKatakanaByEscapeUnderAllItsNumbers) {
  for (const int number : {50220, 50221, 50222}) expectWritings(number, toIso2022Jp);
}

// --- ISO-2022-KR -----------------------------------------------------------------------

constexpr PlainReading iso2022Kr[] = {
    {"\x1B$)Ca\x0E"
     "0!\x0Fz",
     "a\uAC00z", ""},
    {"\x0E"
     "0!",
     "\uAC00", ""},
    {"\x0E"
     "0!\x1B$)C0!",
     "\uAC00\uAC00", ""},
    {"\x0E"
     "0!\n0!",
     "\uAC00\n0!", ""},
    {"\x0E 0!\x7F", " \uAC00\x7F", ""},
    {"\x0E"
     ".!0!",
     "\uAC00", "1+2"},
    {"\x0E"
     "0",
     "", "1+1"},
    {"\x0E"
     "0\x0Fz",
     "z", "1+1"},
    {"\x0E"
     "0\rz",
     "\rz", "1+1"},
    {"\xB0\xA1", "", "0+1 1+1"},
    {"\x0E\xB0\xA1"
     "0!",
     "\uAC00", "1+1 2+1"},
    {"\x1B$)", "$)", "0+1"},
    {"\x1B$)Dz", "$)Dz", "0+1"},
};

constexpr Writing toIso2022Kr[] = {
    {"a", "1B 24 29 43 61", ""},
    {"\uAC00", "1B 24 29 43 0E 30 21 0F", ""},
    {"\uAC00\n\uAC00", "1B 24 29 43 0E 30 21 0F 0A 0E 30 21 0F", ""},
    {"\uAC02\x0E\x0F\x1B"
     "a",
     "1B 24 29 43 61", "0+3:U+AC02 3+1:U+000E 4+1:U+000F 5+1:U+001B"},
    {"", "", ""},
};

TEST(TextCodecs, ReadIso2022KrAndItsHeaderAnywhere) { expectPlainReadings(50225, iso2022Kr); }
TEST(TextCodecs, WriteIso2022KrWithItsHeader) { expectWritings(50225, toIso2022Kr); }

// --- Pages with codes of two bytes ---------------------------------------------------------

constexpr Reading shiftJis[] = {
    {"81 40 82 A0 B1 61", "\u3000\u3042\uFF71a", ""},
    {"81 22 61", "\"a", "0+1"},
    {"81", "", "0+1"},
    {"81 FF 61", "a", "0+2"},
    {"85 40", "@", "0+1"},
    {"85 9F", "", "0+2"},
    {"FC FC 41", "A", "0+2"},
    {"80 A0 FF", "\u0080\uF8F0\uF8F3", ""},
    {"ED 40 87 90", "\u7E8A\u2252", ""},
    {"00", "\0"sv, ""},
};

constexpr Reading macJapanese[] = {
    {"A0 FD FE 81 40", "\u00A0\u00A9\u2122\u3000", ""},
    {"FF", "", "0+1"},
    {"87 82", "", "0+2"},
    {"86 9B", "\u2116", ""},
    {"81 22", "\"", "0+1"},
    {"ED 40", "@", "0+1"},
};

constexpr Reading eucJp[] = {
    {"A4 A2 8E B1 61", "\u3042\uFF71a", ""},
    {"AD F0", "\u2252", ""},
    {"8F A2 AF 61", "\u02D8a", ""},
    {"8F A2 41", "A", "0+2"},
    {"8F A2", "", "0+2"},
    {"8F 41", "A", "0+1"},
    {"8F", "", "0+1"},
    {"8F A1 A1 61", "a", "0+3"},
    {"8F A1 80 61", "a", "0+3"},
    {"8F 90 A1 61", "a", "0+2 2+1"},
    {"8E 41", "A", "0+1"},
    {"8E E0 41", "A", "0+2"},
    {"8E", "", "0+1"},
    {"A9 A1 61", "a", "0+2"},
    {"A4 22", "\"", "0+1"},
    {"A4", "", "0+1"},
    {"81 90", "", "0+1 1+1"},
    {"80 A0 FF", "\u0080\uF8F0\uF8F3", ""},
    {"FD A1", "\uF8F1", "1+1"},
};

constexpr Reading gbk[] = {
    {"81 40 D6 D0 80", "\u4E02\u4E2D\u20AC", ""},
    {"81 22", "\"", "0+1"},
    {"81 FF 61", "a", "0+2"},
    {"A1", "", "0+1"},
    {"FF", "\uF8F5", ""},
};

constexpr Reading eucCn[] = {
    {"D6 D0 81 40", "\u4E2D\u4E02", ""},  // the table of 936
    {"81 7F", "\x7F", "0+1"},             // but 81 leads nothing here
    {"81 FF", "\uF8F5", "0+1"},
    {"A1 FF 61", "a", "0+2"},
};

constexpr Reading uhc[] = {
    {"B0 A1 81 41", "\uAC00\uAC02", ""}, {"81 5B", "[", "0+1"}, {"81 80 61", "a", "0+2"}};

constexpr Reading eucKr[] = {
    {"B0 A1", "\uAC00", ""},
    {"81 41", "A", "0+1"},
    {"81 81", "", "0+1 1+1"},
    {"AD A1 61", "a", "0+2"},
};

constexpr Reading big5[] = {
    {"A4 40 A2 A4 A2 CC", "\u4E00\u2550\u5341", ""}, {"A4 22", "\"", "0+1"}, {"A4 80", "", "0+2"}};

constexpr Reading johab[] = {
    {"88 61 81 D4 FE", "\uAC00\u0081\uF8EC\uF8F5", ""},
    {"84 22", "\"", "0+1"},
    {"84 FF 61", "a", "0+2"},
    {"84", "", "0+1"},
    {"DF 41",
     "\uF8F0"
     "A",
     ""},
};

TEST(TextCodecs, NeverSwallowAsciiBehindALeadByte) {
  expectReadings(932, shiftJis);
  expectReadings(10001, macJapanese);
  expectReadings(936, gbk);
  expectReadings(51936, eucCn);
  expectReadings(949, uhc);
  expectReadings(51949, eucKr);
  expectReadings(950, big5);
  expectReadings(1361, johab);
}

TEST(TextCodecs, ReadTheThreeByteCodesOfEucJp) { expectReadings(51932, eucJp); }

TEST(TextCodecs, ReadCodesThatAreNeverWritten) {
  constexpr Writing toShiftJis[] = {{"\u7E8A\u2252", "FA 5C 81 E0", ""}};
  constexpr Writing toEucJp[] = {{"\u2252\u02D8", "A2 E2", "3+2:U+02D8"}};
  constexpr Writing toBig5[] = {{"\u2550\u5341", "F9 F9 A4 51", ""}};
  expectWritings(932, toShiftJis);
  expectWritings(51932, toEucJp);
  expectWritings(950, toBig5);
}

// --- GB 18030 ------------------------------------------------------------------------------

constexpr Reading gb18030[] = {
    {"61 D6 D0 A2 E3 81 30 81 30", "a\u4E2D\u20AC\u0080", ""},
    {"90 30 81 30 94 39 FC 36 E3 32 9A 35", "\U00010000\U0001F600\U0010FFFF", ""},
    {"84 31 A4 37 84 31 A4 39", "\uFFFD\uFFFF", ""},
    {"A3 A0 A1 A1 81 35 F4 37", "\u3000\u3000\uE7C7", ""},
    {"A6 D9 84 31 82 36", "\uFE10\uFE10", ""},
    {"E3 32 9A 36 61", "a", "0+4"},
    {"84 31 A5 30 61", "a", "0+4"},
    {"81 30 41", "0A", "0+1"},
    {"81 30 81 41", "0\u4E04", "0+1"},
    {"81 30 81 30 81", "\u0080", "4+1"},
    {"81 30", "", "0+2"},
    {"81 30 81", "", "0+3"},
    {"80 61 FF", "a", "0+1 2+1"},
    {"81 22", "\"", "0+1"},
    {"81 FF", "", "0+2"},
    {"81", "", "0+1"},
};

constexpr Writing toGb18030[] = {
    {"\u0080\u20AC\u3000\U0001F600", "81 30 81 30 A2 E3 A1 A1 94 39 FC 36", ""},
    {"\uE78D\uFE10\uE7C7\uFFFD", "A6 D9 A6 D9 81 35 F4 37 84 31 A4 37", ""},
    {"\uE5E5", "", "0+3:U+E5E5"},
};

TEST(TextCodecs, ReadGb18030WithItsCodesOfFourBytes) { expectReadings(54936, gb18030); }
TEST(TextCodecs, WriteEveryCharacterInGb18030ButOne) { expectWritings(54936, toGb18030); }

// --- Single bytes --------------------------------------------------------------------------

TEST(TextCodecs, ReadAndWriteSingleBytesByTheirTables) {
  constexpr Reading latin1[] = {{"00 7F 80 9F E9", "\0\x7F\u0080\u009F\u00E9"sv, ""}};
  constexpr Reading windows[] = {{"80 81 E9", "\u20AC\u00E9", "1+1"}};
  constexpr Reading nordic[] = {{"A1", "\u0104", ""}};
  constexpr Reading thai[] = {{"A1 DB", "\u0E01", "1+1"}};
  constexpr Reading ascii[] = {{"61 80 FF", "a", "1+1 2+1"}};
  constexpr Reading ebcdic[] = {{"00 C1 4B", "\0A."sv, ""}};
  expectReadings(28591, latin1);
  expectReadings(1252, windows);
  expectReadings(28600, nordic);
  expectReadings(28601, thai);
  expectReadings(20127, ascii);
  expectReadings(37, ebcdic);
}

TEST(TextCodecs, LeaveArabicDigitsAndTheOrderOfBytesAlone) {
  constexpr Writing arabic[] = {{"\u0660\u06F0", "", "0+2:U+0660 2+2:U+06F0"}};
  constexpr Writing isoArabic[] = {
      {"\u0661"
       "a",
       "61", "0+2:U+0661"}};
  constexpr Reading macArabic[] = {{"C7 E4 61",
                                    "\u0627\u0644"
                                    "a",
                                    ""}};
  expectWritings(1256, arabic);
  expectWritings(28596, isoArabic);
  expectReadings(10004, macArabic);
}

// --- The same encoding on both sides ---------------------------------------------------------

TEST(TextCodecs, CheckTheSameEncodingAndKeepTheBytesOfWhatIsValid) {
  struct Case {
    int encoding;
    const char* bytes;
    const char* kept;
    const char* losses;
  };
  constexpr Case cases[] = {
      {932, "ED 40 81 22 87 90", "ED 40 22 87 90", "2+1"},
      {51932, "8F A2 AF AD F0 8F A2 41", "8F A2 AF AD F0 41", "5+2"},
      {54936, "A3 A0 A6 D9 FF", "A3 A0 A6 D9", "4+1"},
      {55000, "1B 65 1B 61", "1B 65 61", "2+1"},
      {1252, "E9 81 00", "E9 00", "1+1"},
      {65001, "C3 A9 C3 00", "C3 A9 00", "2+1"},
      {1200, "61 00 00 D8 62 00", "61 00 62 00", "2+2"},
      {12001, "00 00 00 61 00 11 00 00", "00 00 00 61", "4+4"},
      {65000, "2B 41 4F 6B 2D FF", "2B 41 4F 6B 2D", "5+1"},
      {50220, "1B 24 42 24 22 29 21 1B 28 42", "1B 24 42 24 22 1B 28 42", "5+2"},
  };
  for (const Door& door : doors) {
    for (const Case& c : cases) {
      EXPECT_EQ(outcomeOf(door, c.encoding, c.encoding, byteString(c.bytes), dropping()),
                (Outcome{c.kept, c.losses}))
          << c.encoding << " by " << door.name;
    }
  }
}

// --- Across two encodings ------------------------------------------------------------------

TEST(TextCodecs, FindTheSourceOfACharacterThatHasNoPlaceFarBehindIt) {
  const std::string far(5000, 'a');
  for (const Door& door : doors) {
    EXPECT_EQ(outcomeOf(door, 932, 1252, far + byteString("82 A0 B1 62"), dropping()).losses,
              "5000+2:U+3042 5002+1:U+FF71")
        << door.name;
    EXPECT_EQ(outcomeOf(door, 1201, 949, byteString("D8 3D DE 00 00 61 00 E9"), dropping()),
              (Outcome{"61", "0+4:U+1F600 6+2:U+00E9"}))
        << door.name;
    EXPECT_EQ(outcomeOf(door, 50220, 936, "\x1B$B$\"\x1B(I1\x1B(Bz", dropping()),
              (Outcome{"A4 A2 7A", "8+1:U+FF71"}))
        << door.name;
  }
}

}  // namespace
}  // namespace quorvel::test_text
