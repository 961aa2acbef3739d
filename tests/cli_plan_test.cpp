#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "cli/Plan.h"
#include "quorvel/base/DataBuffer.h"

namespace {

using namespace std::string_view_literals;
using quorvel::DataBuffer;
using qvconv::Outcome;

constexpr int usAscii = 20127;
constexpr int utf16le = 1200;
constexpr int utf16be = 1201;
constexpr int utf32le = 12000;
constexpr int utf32be = 12001;
constexpr int gsm = 55000;
constexpr int utf7 = 65000;
constexpr int utf8 = 65001;

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
  return {outcome, {reinterpret_cast<const char*>(out.getData2()), out.getSize()}};
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

}  // namespace
