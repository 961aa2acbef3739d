// What the command makes of texts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/helpers/Command.h"

namespace {

using namespace std::string_literals;
using quorvel_test::Command;
using quorvel_test::Finished;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

TEST_F(Command, ConvertsStandardInput) {
  expectConverted(run("-f utf-8 -t utf-16le", "a\xE2\x82\xAC"), "a\0\xAC\x20"s);
  expectConverted(run("-f utf-8 -t utf-16le -", "a"), "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le", ""), "");
}

TEST_F(Command, TakesNumbersAndLooseNames) {
  expectConverted(run("-f 65001 -t 1201", "a"), "\0a"s);
  expectConverted(run("--from UTF8 --to=Utf_32_BE", "a"), "\0\0\0a"s);
}

TEST_F(Command, FindsStandardInputAtItsEndTheSecondTime) {
  write("b", "b");
  expectConverted(run("-f utf-8 -t utf-16le - b -", "a"), "a\0b\0"s);
}

TEST_F(Command, ReadsAndWritesEachEncodingByName) {
  expectConverted(run("-f utf-32 -t utf-8", "\xFF\xFE\0\0a\0\0\0"s), "a");
  expectConverted(run("-f utf-32le -t utf-8", "\0\0\xFE\xFF\0\0\0a"s), "a");
  expectConverted(run("-f utf-8 -t utf-32be", "\xEF\xBB\xBFx"), "\0\0\0x"s);
  expectConverted(run("-f utf-8 -t gsm", "\xEF\xBB\xBF@"), "\0"s);
  expectConverted(run("-f utf-16be -t gsm", "\xFF\xFE@\0"s), "\0"s);
  expectConverted(run("-f utf-32be -t gsm-7bit", "\xFF\xFE\0\0@\0\0\0"s), "\0"s);
  expectConverted(run("-f gsm -t utf-32be", "\0"s), "\0\0\0@"s);
  expectConverted(run("-f shift_jis -t utf-8", "\x82\xA0"), "\xE3\x81\x82");
  expectConverted(run("-f utf-8 -t windows-1252", "\xC3\xA9"), "\xE9");
  expectConverted(run("-f utf-16be -t windows-1251", "\xFF\xFE\x16\x04"), "\xC6");
}

TEST_F(Command, ConvertsIso2022) {
  expectConverted(run("-f iso-2022-jp -t utf-8", "\x1B$B\x24\x22\x1B(B"), "\xE3\x81\x82");
  expectConverted(run("-f shift_jis -t iso-2022-jp", "\x82\xA0"), "\x1B$B\x24\x22\x1B(B");
  expectConverted(run("-f iso-2022-kr -t utf-8", "\x1B$)C\x0E\x30\x21\x0F"), "\xEA\xB0\x80");
  expectConverted(run("-f 949 -t iso-2022-kr", "\xB0\xA1"), "\x1B$)C\x0E\x30\x21\x0F");
}

TEST_F(Command, SaysWhatIso2022Loses) {
  expectFailed(run("-f shift_jis -t iso-2022-jp", "\x82\xA0\x82"), 1, "\x1B$B\x24\x22\x1B(B",
               "standard input:1:2: byte 2: 82 is no character in shift_jis");
  expectFailed(run("-f utf-8 -t 50220", "a\xC3\xA9"), 1, "a",
               "standard input:1:2: byte 1: U+00E9 has no place in 50220");
  expectFailed(run("-f shift_jis -t iso-2022-jp",
                   "a\x0E"
                   "b"),
               1, "a", "standard input:1:2: byte 1: U+000E has no place in iso-2022-jp");
  expectFailed(run("-f iso-2022-jp -t shift_jis", "\x1B$B\x24"), 1, "",
               "standard input:1:1: byte 3: 24 is no character in iso-2022-jp");
  expectFailed(run("-f iso-2022-kr -t 949", "\x1B$)C\x0E\x80\x30\x21"), 1, "",
               "standard input:1:1: byte 5: 80 is no character in iso-2022-kr");
}

TEST_F(Command, ConvertsEachFileByItself) {
  write("a", "\xFE\xFF\0a"s);
  write("b",
        "\xFF\xFE"
        "b\0"s);
  expectConverted(run("-f utf-16le -t utf-8 a - b", "c\0"s), "acb");
}

TEST_F(Command, PassesEveryByte) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  for (int i = 0; i < 13; ++i) bytes += bytes;
  write("bytes", bytes);
  expectConverted(run("-f 437 -t 437 bytes"), bytes);
  expectConverted(run("-f 437 -t 437", bytes), bytes);
}

TEST_F(Command, ChecksATextWhoseEncodingsAreTheSame) {
  expectConverted(run("-f utf-8 -t utf-8", "\xE2\x82\xAC"), "\xE2\x82\xAC");
  expectFailed(run("-f utf-8 -t utf-8", "a\xFF"), 1, "a",
               "standard input:1:2: byte 1: FF is no character in utf-8");
  expectFailed(run("-f utf-16be -t utf-16be", "abc"), 1, "ab",
               "standard input:1:2: byte 2: 63 is no character in utf-16be");
  expectFailed(run("-f us-ascii -t us-ascii", "\xFF"), 1, "",
               "standard input:1:1: byte 0: FF is no character in us-ascii");
}

TEST_F(Command, ConvertsADocumentAsWhatItIsSaidToBe) {
  expectConverted(run("-f us-ascii -t utf-16be", "%PDF-1"),
                  "\0%\0P\0D\0F\0-\0"
                  "1"s);
  expectFailed(run("-f utf-8 -t gsm", "%PDF-1.7\xFF"), 1, "%PDF-1.7",
               "standard input:1:9: byte 8: FF is no character in utf-8");
}

TEST_F(Command, KeepsNul) {
  expectConverted(run("-f utf-16le -t utf-8", "a\0\0\0b\0"s), "a\0b"s);
  expectConverted(run("-f 1252 -t utf-8", "a\0b"s), "a\0b"s);
  expectConverted(run("-f utf-7 -t utf-8", "a+AAA-b"), "a\0b"s);
  expectConverted(run("-f iso-2022-jp -t utf-8", "a\0b"s), "a\0b"s);
}

TEST_F(Command, ReadsUtf16InTheByteOrderOfItsMark) {
  expectConverted(run("-f utf-16le -t utf-8", "\xFE\xFF\0a"s), "a");
  expectConverted(run("-f utf-16be -t utf-8", "\xFF\xFEx\0"s), "x");
  expectConverted(run("-f utf-16le -t utf-16be", "\xFE\xFF\0a"s), "\0a"s);
  expectConverted(run("-f utf-16be -t utf-16le", "\xFF\xFEx\0"s), "x\0"s);
  expectConverted(run("-f utf-16be -t utf-7", "\xFF\xFEx\0"s), "x");
  expectConverted(run("-f utf-16be -t utf-32be", "\xFF\xFEx\0"s), "\0\0\0x"s);
  expectConverted(run("-f utf-16le -t 1251", "\xFE\xFF\x04\x16"), "\xC6");
}

TEST_F(Command, ConvertsBetweenAllKindsOfEncodings) {
  expectConverted(run("-f 1251 -t koi8-r", "\xEC\xE8\xF0"), "\xCD\xC9\xD2");
  expectConverted(run("-f 37 -t utf-16be", "\xC1"), "\0A"s);
  expectConverted(run("-f utf-32be -t 37", "\0\0\0A"s), "\xC1");
  expectConverted(run("-f utf-7 -t 1252", "+AOk-"), "\xE9");
  expectConverted(run("-f 1252 -t utf-7", "\xE9"), "+AOk-");
  expectConverted(run("-f 1252 -t gsm", "\xE9"), "\x05");
  expectConverted(run("-f utf-7 -t gsm", "a+IKw-"), "a\33e");
  expectConverted(run("-f iso-2022-jp -t euc-jp", "\x1B$B\x24\x22"), "\xA4\xA2");
  expectConverted(run("-f iso-2022-kr -t iso-2022-jp", "\x1B$)Ca"), "a");
  expectConverted(run("-f utf-8 -t 950", "\xEE\xBF\xBD\1AB"), "\x83\x4B\1AB");
  expectConverted(run("-f gb18030 -t utf-8", "\x81\x30\x81\x30"), "\xC2\x80");
  expectConverted(run("-f 28600 -t utf-8", "\xA2"), "\xC4\x92");
}

TEST_F(Command, StopsAtTheFirstLossAndSaysWhereItIs) {
  expectFailed(run("-f utf-8 -t utf-16le",
                   "a\n\xFF"
                   "b"),
               1, "a\0\n\0"s, "standard input:2:1: byte 2: FF is no character in utf-8");
  expectFailed(run("-f UTF8 -t cp1251", "\r\n\xE6\xBC\xA2x"), 1, "\r\n",
               "standard input:2:1: byte 2: U+6F22 has no place in cp1251");
  expectFailed(run("-f gb18030 -t 1200", "\x81\x30\x81"), 1, "",
               "standard input:1:1: byte 0: 81 30 81 are no character in gb18030");
  expectFailed(run("-f big5 -t utf-8", "\xF9\xF9\xA2\xA4\x81\xFF"), 1, "\xE2\x95\x90\xE2\x95\x90",
               "standard input:1:3: byte 4: 81 FF are no character in big5");
}

TEST_F(Command, SaysWhatAnIncompleteCharacterAtTheEndIs) {
  expectFailed(run("-f utf-16le -t utf-8", "a\0b"s), 1, "a",
               "standard input:1:2: byte 2: 62 is no character in utf-16le");
  expectFailed(run("-f utf-32be -t utf-8", "\0\0\0ab\0\0"s), 1, "a",
               "standard input:1:2: byte 4: 62 00 00 are no character in utf-32be");
}

TEST_F(Command, GoesOnAfterAFileThatFails) {
  write("bad", "\xE6\xBC\xA2");
  write("good", "good");
  const Finished result = run("-f utf-8 -t gsm missing bad good");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "good");
  EXPECT_EQ(result.err,
            "qvconv: missing: No such file or directory\n"
            "qvconv: bad:1:1: byte 0: U+6F22 has no place in gsm\n");
}

}  // namespace
