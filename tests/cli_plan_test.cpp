#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "cli/Plan.h"
#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/NullLog.h"
#include "quorvel/names/CharsetNaming.h"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/Bytes.h"

namespace {

using namespace std::string_view_literals;
using quorvel::DataBuffer;
using quorvel_test::contentOf;
using qvconv::Outcome;

constexpr int shiftJis = quorvel::codePageShiftJis;
constexpr int korean = quorvel::codePageKorean;
constexpr int usAscii = quorvel::codePageUsAscii;
constexpr int utf16le = quorvel::codePageUtf16le;
constexpr int utf16be = quorvel::codePageUtf16be;
constexpr int utf32le = quorvel::codePageUtf32le;
constexpr int utf32be = quorvel::codePageUtf32be;
constexpr int iso2022Jp = quorvel::codePageIso2022JpFirst;
constexpr int iso2022Kr = quorvel::codePageIso2022Kr;
constexpr int gsm = quorvel::codePageGsm;
constexpr int utf7 = quorvel::codePageUtf7;
constexpr int utf8 = quorvel::codePageUtf8;

struct Result {
  Outcome outcome;
  std::string out;
  bool operator==(const Result&) const = default;
};

void PrintTo(const Result& result, std::ostream* stream) {
  static constexpr const char* names[] = {"all", "some", "none"};
  *stream << names[static_cast<int>(result.outcome)] << ' ' << testing::PrintToString(result.out);
}

Result convert(int from, int to, std::string_view text) {
  DataBuffer in;
  DataBuffer out;
  in.append(text.data(), static_cast<unsigned int>(text.size()));
  const Outcome outcome = qvconv::convertText(from, to, in, out);
  return {outcome, contentOf(out)};
}

Result all(std::string_view out) { return {Outcome::all, std::string(out)}; }
Result some(std::string_view out) { return {Outcome::some, std::string(out)}; }
Result none() { return {Outcome::none, ""}; }

TEST(CommandPlan, AppendsToWhatIsThere) {
  DataBuffer in;
  DataBuffer out;
  in.append("b", 1);
  out.append("a", 1);
  EXPECT_EQ(qvconv::convertText(utf8, utf16le, in, out), Outcome::all);
  EXPECT_EQ(out.getSize(), 3U);
}

TEST(CommandPlan, TellsWhetherAllOfAText) {
  EXPECT_EQ(convert(utf8, utf16le, "ab"), all("a\0b\0"sv));
  EXPECT_EQ(convert(utf8, utf16le, "x\xFFy"), some("x\0y\0"sv));
  EXPECT_EQ(convert(utf8, utf16le, "\xFF"), none());
  EXPECT_EQ(convert(utf8, utf16le, ""), all(""));
}

TEST(CommandPlan, CopiesWhenTheEncodingsAreTheSame) {
  EXPECT_EQ(convert(utf8, utf8, "\xEF\xBB\xBFx\xFF"), all("\xEF\xBB\xBFx\xFF"));
  EXPECT_EQ(convert(utf16le, utf16le, "\xFE\xFF\0a"sv), all("\xFE\xFF\0a"sv));
  EXPECT_EQ(convert(utf16be, utf16be, "abc"), all("abc"));
  EXPECT_EQ(convert(gsm, gsm, "\xFF"), all("\xFF"));
  EXPECT_EQ(convert(usAscii, usAscii, "\xFF"), all("\xFF"));
}

TEST(CommandPlan, CopiesAPdfDocumentWhateverTheEncodings) {
  for (const int to : {utf16le, utf16be, utf32le, gsm, utf7, utf8}) {
    for (const int from : {utf16le, utf16be, utf32le, gsm, utf7, utf8, usAscii}) {
      EXPECT_EQ(convert(from, to, "%PDF-1.7\xFF"), all("%PDF-1.7\xFF")) << from << " to " << to;
    }
  }
  EXPECT_EQ(convert(utf8, gsm, "%PDF-1"), all("%PDF-1"));
}

TEST(CommandPlan, ReadsUtf16InTheByteOrderOfItsMark) {
  EXPECT_EQ(convert(utf16le, utf8, "\xFE\xFF\0a"sv), all("a"));
  EXPECT_EQ(convert(utf16be, utf8, "\xFF\xFEx\0"sv), all("x"));
  EXPECT_EQ(convert(utf16le, utf16be, "\xFE\xFF\0a"sv), all("\0a"sv));
  EXPECT_EQ(convert(utf16be, utf16le, "\xFF\xFEx\0"sv), all("x\0"sv));
  EXPECT_EQ(convert(utf16be, utf7, "\xFF\xFEx\0"sv), all("x"));
  EXPECT_EQ(convert(utf16be, gsm, "\xFF\xFE@\0"sv), all("\0"sv));
  EXPECT_EQ(convert(utf16be, utf32be, "\xFF\xFEx\0"sv), all("\0\0\0x"sv));
}

TEST(CommandPlan, ExchangesTheBytesOfUtf16) {
  EXPECT_EQ(convert(utf16be, utf16le, "\0a\x20\xAC"sv), all("a\0\xAC\x20"sv));
  EXPECT_EQ(convert(utf16le, utf16be, "a\0\xAC\x20"sv), all("\0a\x20\xAC"sv));
  EXPECT_EQ(convert(utf16be, utf16le, "\xFE\xFF\0a"sv), all("a\0"sv));
  EXPECT_EQ(convert(utf16le, utf16be, "\xFF\xFEx\0"sv), all("\0x"sv));
}

TEST(CommandPlan, LeavesOnlyTheMarkAwayWhenTheByteOrderIsTheOneAskedFor) {
  EXPECT_EQ(convert(utf16le, utf16be, "\xFE\xFF"), all(""));
  EXPECT_EQ(convert(utf16le, utf16be, "\xFE\xFF\0\0\xD8\0"sv), all("\0\0\xD8\0"sv));
}

TEST(CommandPlan, ReadsUtf7IntoEitherByteOrder) {
  EXPECT_EQ(convert(utf7, utf16le, "a+IKw-"), all("a\0\xAC\x20"sv));
  EXPECT_EQ(convert(utf7, utf16be, "a+IKw-"), all("\0a\x20\xAC"sv));
  EXPECT_EQ(convert(utf7, utf16be, "a\xFF"), some("\0a\xFF\xFD"sv));
  EXPECT_EQ(convert(utf7, utf16le, "a\xFF"), some("a\0\xFD\xFF"sv));
  EXPECT_EQ(convert(utf7, utf16be, ""), all(""));
}

TEST(CommandPlan, WritesUtf7FromEitherByteOrder) {
  EXPECT_EQ(convert(utf16le, utf7, "x\0\xAC\x20y\0"sv), all("x+IKw-y"));
  EXPECT_EQ(convert(utf16be, utf7, "\0a\x20\xAC\0b"sv), all("a+IKw-b"));
}

TEST(CommandPlan, CountsCharactersOutsideGsm) {
  EXPECT_EQ(convert(utf8, gsm, "@\xE2\x82\xAC"), all("\0\33e"sv));
  EXPECT_EQ(convert(utf8, gsm, "a\xE6\xBC\xA2"), some("a?"));
  EXPECT_EQ(convert(utf8, gsm, "\xEF\xBB\xBFx"), all("x"));
  EXPECT_EQ(convert(utf8, gsm, "\xEF\xBB\xBF"), all(""));
  EXPECT_EQ(convert(utf16le, gsm, "a\0\x22\x6F"sv), some("a?"));
  EXPECT_EQ(convert(utf16be, gsm, "\0@"sv), all("\0"sv));
  EXPECT_EQ(convert(utf32le, gsm, "a\0\0\0\0\xD8\0\0"sv), some("a?"));
  EXPECT_EQ(convert(utf7, gsm, "a+IKw-"), all("a\33e"));
  EXPECT_EQ(convert(usAscii, gsm, "a$"), all("a\x02"));
}

TEST(CommandPlan, CountsBytesThatGsmDoesNotDefine) {
  EXPECT_EQ(convert(gsm, utf8, "\0a\33e"sv), all("@a\xE2\x82\xAC"));
  EXPECT_EQ(convert(gsm, utf8, "a\x80"), some("a\xEF\xBF\xBD"));
  EXPECT_EQ(convert(gsm, utf16le, "a\x80"), some("a\0\xFD\xFF"sv));
  EXPECT_EQ(convert(gsm, utf16be, "\0"sv), all("\0@"sv));
  EXPECT_EQ(convert(gsm, utf32be, "a"), all("\0\0\0a"sv));
  EXPECT_EQ(convert(gsm, utf7, "\0a"sv), all("+AEA-a"));
}

TEST(CommandPlan, CountsBytesAboveAscii) {
  EXPECT_EQ(convert(usAscii, utf8, "ab"), all("ab"));
  EXPECT_EQ(convert(usAscii, utf8, "a\x80"), some("a"));
  EXPECT_EQ(convert(usAscii, 1252, "a\x80"), some("a\x80"));
}

TEST(CommandPlan, CountsAnIncompleteLastUnit) {
  EXPECT_EQ(convert(utf16le, utf8, "a\0b"sv), some("a"));
  EXPECT_EQ(convert(utf16be, utf8, "\0ab"sv), some("a"));
  EXPECT_EQ(convert(utf16be, utf16le, "\0ab"sv), some("a\0"sv));
  EXPECT_EQ(convert(utf16le, utf16be, "a\0b"sv), some("\0a"sv));
  EXPECT_EQ(convert(utf16be, utf8, "a"), none());
  EXPECT_EQ(convert(utf32be, utf8, "\0\0\0ab"sv), some("a"));
  EXPECT_EQ(convert(utf32le, utf8, "a\0\0\0b"sv), some("a"));
  EXPECT_EQ(convert(utf32be, utf8, "\0\0a"sv), none());
}

TEST(CommandPlan, CountsWhatUtf8LosesOutOfUtf16) {
  EXPECT_EQ(convert(utf16le, utf8, "a\0\0\0b\0"sv), some("ab"));
  EXPECT_EQ(convert(utf16be, utf32be, "\0a\0\0"sv), some("\0\0\0a"sv));
  EXPECT_EQ(convert(utf7, utf8, "a+AAA-b"), some("ab"));
  EXPECT_EQ(convert(utf16be, utf8, "\xD8\0\xD8\0\xDC\0"sv),
            some("\xED\xA0\x80\xED\xA0\x80\xED\xB0\x80"));
  EXPECT_EQ(convert(utf16be, utf8, "\xDC\0"sv), some("\xED\xB0\x80"));
  EXPECT_EQ(convert(utf16be, utf8, "\xD8\0"sv), some("\xED\xA0\x80"));
  EXPECT_EQ(convert(utf16le, utf8, "\x3D\xD8\0\xDE"sv), all("\xF0\x9F\x98\x80"));
}

TEST(CommandPlan, LetsOtherConversionsKeepNul) {
  EXPECT_EQ(convert(utf8, utf16le, "\0"sv), all("\0\0"sv));
  EXPECT_EQ(convert(utf32le, utf8, "\0\0\0\0"sv), all("\0"sv));
  EXPECT_EQ(convert(utf16le, utf16be, "\0\0"sv), all("\0\0"sv));
  EXPECT_EQ(convert(usAscii, utf8, "\0"sv), all("\0"sv));
}

// --- Table-driven pages -----------------------------------------------------

TEST(CommandPlan, ConvertsTableDrivenPages) {
  EXPECT_EQ(convert(shiftJis, utf8, "\x82\xA0"), all("\xE3\x81\x82"));
  EXPECT_EQ(convert(utf8, 1252, "caf\xC3\xA9"), all("caf\xE9"));
  EXPECT_EQ(convert(1252, shiftJis, "a"), all("a"));
  EXPECT_EQ(convert(1251, 20866, "\xEC\xE8\xF0"), all("\xCD\xC9\xD2"));
  EXPECT_EQ(convert(37, utf16be, "\xC1"), all("\0A"sv));
  EXPECT_EQ(convert(utf32be, 37, "\0\0\0A"sv), all("\xC1"));
  EXPECT_EQ(convert(utf7, 1252, "+AOk-"), all("\xE9"));
  EXPECT_EQ(convert(1252, utf7, "\xE9"), all("+AOk"));
  EXPECT_EQ(convert(1252, gsm, "\xE9"), all("\x05"));
  EXPECT_EQ(convert(gsm, 1252, "\x05"), all("\xE9"));
  EXPECT_EQ(convert(936, 52936, "\xC4\xE3"), all("\xC4\xE3"));
}

TEST(CommandPlan, LeavesTheMarkOutOfATable) {
  EXPECT_EQ(convert(utf16be, 1251, "\xFE\xFF\x04\x16"), all("\xC6"));
  EXPECT_EQ(convert(utf16be, 1251, "\xFF\xFE\x16\x04"), all("\xC6"));
  EXPECT_EQ(convert(utf16le, 1251, "\xFE\xFF\x04\x16"), all("\xC6"));
  EXPECT_EQ(convert(utf8, 1252, "\xEF\xBB\xBFx"), all("x"));
  EXPECT_EQ(convert(utf32le, 1252, "\0\0\xFE\xFF\0\0\0x"sv), all("x"));
  EXPECT_EQ(convert(utf8, 1252, "\xEF\xBB\xBF\xEF\xBB\xBFx"), some("x"));
}

TEST(CommandPlan, CountsWhatATableLacks) {
  EXPECT_EQ(convert(utf8, 1252, "a\xE6\xBC\xA2"), some("a"));
  EXPECT_EQ(convert(shiftJis, utf8, "a\x82"), some("a"));
  EXPECT_EQ(convert(1253, 1252, "a\xE1"), some("a"));
  EXPECT_EQ(convert(1253, utf16be, "\xFF"), none());
  EXPECT_EQ(convert(1253, gsm, "a\xFF"), some("a"));
  EXPECT_EQ(convert(utf16be, 1251, "\x4E\x00"sv), none());
  EXPECT_EQ(convert(utf7, 1252, "a+-\xFF"), some("a+"));
  EXPECT_EQ(convert(28600, utf8, "a"), none());
  EXPECT_EQ(convert(utf8, 28601, "a"), none());
}

TEST(CommandPlan, CountsAnIncompleteLastUnitBeforeATable) {
  EXPECT_EQ(convert(utf16be, 1251, "\0ab"sv), some("a"));
  EXPECT_EQ(convert(utf16le, 1251, "a\0b"sv), some("a"));
  EXPECT_EQ(convert(utf32be, 1251, "\0\0\0ab"sv), some("a"));
}

TEST(CommandPlan, CountsNulOutOfATable) {
  EXPECT_EQ(convert(1252, utf8, "a\0"sv), some("a"));
  EXPECT_EQ(convert(37, utf32le, "\xC1\0"sv), some("A\0\0\0"sv));
  EXPECT_EQ(convert(shiftJis, gsm, "a\0"sv), some("a"));
  EXPECT_EQ(convert(1252, utf16le, "a\0"sv), all("a\0\0\0"sv));
  EXPECT_EQ(convert(1252, 37, "A\0"sv), all("\xC1\0"sv));
  EXPECT_EQ(convert(utf8, shiftJis, "\0"sv), all("\0"sv));
}

TEST(CommandPlan, CountsBytesAboveAsciiBeforeATable) {
  EXPECT_EQ(convert(usAscii, shiftJis, "a\x80"), some("a"));
  EXPECT_EQ(convert(usAscii, 28591, "a\x80"), some("a\x80"));
}

// 834B of 950 is U+EFFD, which marks passed-through bytes inside the library.
TEST(CommandPlan, TakesNoCharacterForAMarker) {
  EXPECT_EQ(convert(utf8, 950, "\xEE\xBF\xBD\1AB"), all("\x83\x4B\1AB"));
  EXPECT_EQ(convert(utf32le, 950, "\xFD\xEF\0\0A\0\0\0"sv), all("\x83\x4B"
                                                                "A"));
  EXPECT_EQ(convert(950, utf8, "\x83\x4B\1AB"), all("\xEE\xBF\xBD\1AB"));
  EXPECT_EQ(convert(950, 1252, "\x83\x4B\1AB"), some("\1AB"));
}

// --- ISO-2022 ---------------------------------------------------------------

TEST(CommandPlan, ConvertsIso2022) {
  EXPECT_EQ(convert(iso2022Jp, utf8, "\x1B$B\x24\x22\x1B(B\n"), all("\xE3\x81\x82\n"));
  EXPECT_EQ(convert(utf8, iso2022Jp, "\xE3\x81\x82\n"), all("\x1B$B\x24\x22\x1B(B\n"));
  EXPECT_EQ(convert(iso2022Jp, shiftJis, "\x1B$B\x24\x22"), all("\x82\xA0"));
  EXPECT_EQ(convert(shiftJis, 50222, "\x82\xA0"), all("\x1B$B\x24\x22\x1B(B"));
  EXPECT_EQ(convert(iso2022Jp, 50221, "\x1B$B\x24\x22"), all("\x1B$B\x24\x22\x1B(B"));
  EXPECT_EQ(convert(iso2022Jp, 51932, "\x1B$B\x24\x22"), all("\xA4\xA2"));
  EXPECT_EQ(convert(iso2022Kr, utf8, "\x1B$)C\x0E\x30\x21\x0F"), all("\xEA\xB0\x80"));
  EXPECT_EQ(convert(utf16be, iso2022Kr, "\xFE\xFF\xAC\x00"sv), all("\x1B$)C\x0E\x30\x21\x0F"));
  EXPECT_EQ(convert(korean, iso2022Kr, "\xB0\xA1"), all("\x1B$)C\x0E\x30\x21\x0F"));
  EXPECT_EQ(convert(iso2022Kr, iso2022Jp, "\x1B$)Ca"), all("a"));
  EXPECT_EQ(convert(iso2022Jp, gsm, "\x1B(J@"), all("\0"sv));
  EXPECT_EQ(convert(iso2022Jp, iso2022Jp, "\x1B$B\x24"), all("\x1B$B\x24"));
}

TEST(CommandPlan, CountsWhatIso2022CannotWrite) {
  EXPECT_EQ(convert(shiftJis, iso2022Jp, "\x82"), some("\x1B$B\x22\x2E\x1B(B"));
  EXPECT_EQ(convert(shiftJis, iso2022Jp, "\xF0\x40"), some("\x1B$B\x22\x2E\x1B(B"));
  EXPECT_EQ(convert(utf8, iso2022Jp, "\xEE\x80\x80"), some("\x1B$B\x22\x2E\x1B(B"));
  EXPECT_EQ(convert(shiftJis, iso2022Jp, "a\x0E"), some("a"));
  EXPECT_EQ(convert(utf8, iso2022Kr, "\x1B"), some("\x1B$)C"));
  EXPECT_EQ(convert(utf8, iso2022Jp, "\xC3\xA9"), none());
}

TEST(CommandPlan, CountsWhatReadingIso2022Drops) {
  EXPECT_EQ(convert(iso2022Jp, shiftJis, "\x1B$B\x24"), none());
  EXPECT_EQ(convert(iso2022Jp, utf8, "a\x1B$B\x24"), some("a"));
  EXPECT_EQ(convert(iso2022Kr, korean, "\x0E\x30"), none());
  EXPECT_EQ(convert(iso2022Kr, korean, "\x1B$)C\x0E\x80\x30\x21"), some("\xB0\xA1"));
  EXPECT_EQ(convert(iso2022Kr, utf8, "\x1B$)A\x0E\x30\x21"), some("\x1B$)A\xEA\xB0\x80"));
}

TEST(CommandPlan, CountsCodesThatIso2022CopiesAndNoCharacterHas) {
  EXPECT_EQ(convert(iso2022Jp, shiftJis, "\x1B$B\x29\x21"), some("\x85\x40"));
  EXPECT_EQ(convert(shiftJis, iso2022Jp, "\x85\x40"), some("\x1B$B\x29\x21\x1B(B"));
  EXPECT_EQ(convert(iso2022Jp, 50221, "\x1B$B\x29\x21"), some("\x1B$B\x29\x21\x1B(B"));
  EXPECT_EQ(convert(korean, iso2022Kr, "a\xA0\x20"), some("\x1B$)Ca\xA0 "));
}

TEST(CommandPlan, CountsNulAndDocumentsOutOfIso2022) {
  EXPECT_EQ(convert(iso2022Jp, utf8, "a\0"sv), some("a"));
  EXPECT_EQ(convert(iso2022Jp, utf16le, "\x1B(B%PDF-1.4"), some("%PDF-1.4"));
}

// --- Beside the library -----------------------------------------------------

std::string byLibrary(int from, int to, const std::string& text) {
  quorvel::EncodingConvert converter;
  quorvel::NullLog log;
  DataBuffer out;
  converter.EncConvert(from, to, reinterpret_cast<const unsigned char*>(text.data()),
                       static_cast<unsigned int>(text.size()), out, log);
  return contentOf(out);
}

std::string anyBytes(std::mt19937& random) {
  std::string text(64, '\0');
  for (char& byte : text) byte = static_cast<char>(random());
  return text;
}

// The command has ways of its own where the library does not tell what was
// lost; the bytes stay the same. Where the library gives nothing at all, for
// UTF-16 with the other mark, UTF-7 to UTF-16 and ill-formed text around GSM,
// the command gives more.
TEST(CommandPlan, WritesWhatTheLibraryWritesFromEveryPage) {
  std::mt19937 random(2022);
  for (unsigned int i = 0; i < quorvel::CharsetNaming::count(); ++i) {
    const int from = quorvel::CharsetNaming::at(i).codePage;
    if (quorvel::isUtf16(from) || from == utf7 || from == gsm) continue;
    for (const int to : {1251, shiftJis, iso2022Jp, iso2022Kr, utf8, utf16be, utf32be}) {
      const std::string text = anyBytes(random);
      EXPECT_EQ(convert(from, to, text).out, byLibrary(from, to, text)) << from << " to " << to;
    }
  }
}

TEST(CommandPlan, WritesWhatTheLibraryWritesToEveryPage) {
  std::mt19937 random(2023);
  for (unsigned int i = 0; i < quorvel::CharsetNaming::count(); ++i) {
    const int to = quorvel::CharsetNaming::at(i).codePage;
    if (to == gsm) continue;
    for (const int from : {1251, shiftJis, iso2022Jp, iso2022Kr, utf8, utf32be}) {
      const std::string text = anyBytes(random);
      EXPECT_EQ(convert(from, to, text).out, byLibrary(from, to, text)) << from << " to " << to;
    }
  }
}

}  // namespace
