// Conversions of texts whose encoding is found out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/helpers/Command.h"

namespace {

using quorvel_test::Command;
using quorvel_test::Finished;
using testing::HasSubstr;
using testing::MatchesRegex;

// Malformed wherever it stands behind the mark, which leaves no doubt.
constexpr std::string_view damaged = "\xEF\xBB\xBF\xFF";
constexpr const char* complaintOfDamaged =
    ": no encoding is found without loss: utf-8 (1 loss) (-f names one)";

class FoundOut : public Command {
 protected:
  const std::string command = "'" QVCONV_PATH "' -f auto ";
};

TEST_F(FoundOut, IsWhatEachFileIsIn) {
  using namespace std::string_literals;
  write("utf-8", "\u00E9");
  write("utf-16", "\xFF\xFE\xE9\0"s);
  write("ascii", "e");
  expectConverted(run("-f auto -t utf-16be utf-8 utf-16 ascii utf-8"), "\0\xE9\0\xE9\0e\0\xE9"s);
}

TEST_F(FoundOut, IsToldWhenVerbose) {
  const Finished result = run("-v -f auto -t utf-8", "\xFF\xFE\u0061\x01");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "\u0161");
  EXPECT_EQ(result.err,
            "qvconv: standard input: taken for utf-16\n"
            "qvconv: standard input: 4 bytes of utf-16 became 2 of utf-8\n");
}

TEST_F(FoundOut, IsTheSameFromAPipe) {
  std::string text;
  while (text.size() < 3'000'000) text += "caf\u00E9\n";
  write("text", text);
  EXPECT_TRUE(runShell("cat text | " + command + "-t utf-8").out == text);
  EXPECT_TRUE(run("-f auto -t utf-8 text").out == text);
  EXPECT_TRUE(run("-f auto -t utf-8", text).out == text);
}

TEST_F(FoundOut, IsNothingForAnEmptyText) { expectConverted(run("-f auto -t utf-8", ""), ""); }

TEST_F(FoundOut, StopsWhereThereIsNoneWithoutLoss) {
  write("out", "old");
  expectFailed(run("-f auto -t utf-8 -o out", damaged), 1, "",
               std::string("standard input") + complaintOfDamaged);
  EXPECT_EQ(read("out"), "old");
}

// What becomes of losses is for those that are met in an encoding that is settled.
TEST_F(FoundOut, StopsThereWhateverTheActionToo) {
  expectFailed(run("-c -f auto -t utf-8", damaged), 1, "",
               std::string("standard input") + complaintOfDamaged);
}

TEST_F(FoundOut, ListsAllCandidatesInOneLine) {
  write("bad\n", std::string("\xFF\xFE\x00\xD8", 4));
  EXPECT_THAT(run("-f auto -t utf-8 'bad\n'").err,
              MatchesRegex("qvconv: bad.x0A: no encoding is found without loss: utf-16 .1 loss. "
                           "[^\n]*\n"));
}

TEST_F(FoundOut, LeavesAloneTheFilesThatItIsNotFoundOf) {
  write("a", damaged);
  write("b", "\u00E9");
  expectFailed(run("-f auto -t latin1 --in-place a b"), 1, "",
               std::string("a") + complaintOfDamaged);
  EXPECT_EQ(read("a"), damaged);
  EXPECT_EQ(read("b"), "\xE9");
  expectFailed(run("-f auto -t utf-8 --output-dir done a b"), 1, "",
               std::string("a") + complaintOfDamaged);
  EXPECT_FALSE(std::filesystem::exists(path("done/a")));
  EXPECT_TRUE(std::filesystem::exists(path("done/b")));
}

TEST_F(FoundOut, MeetsALossBehindTheBeginningLikeAnyOther) {
  const std::string beginning((1 << 20) - 1, 'a');
  write("text", beginning + "\n\xE9");
  const std::string loss = "2:1: byte 1048576: E9 is no character in us-ascii";
  expectFailed(run("-f auto -t utf-8 text -o out"), 1, "", "text:" + loss);
  const Finished piped = runShell("cat text | " + command + "-t utf-8");
  EXPECT_EQ(piped.status, 1);
  EXPECT_TRUE(piped.out == beginning + "\n");
  EXPECT_EQ(piped.err, "qvconv: standard input:" + loss + "\n");
  EXPECT_EQ(run("-c -q -f auto -t utf-8 text -o out").status, 3);
  EXPECT_TRUE(read("out") == beginning + "\n");
}

TEST_F(FoundOut, TakesSuffixesAndAnyLetterCase) {
  expectConverted(run("-f AUTO//IGNORE -t latin1", "\u00E9"), "\xE9");
  const Finished dropped = run("-q -f auto//IGNORE -t us-ascii", "a\u00E9");
  EXPECT_EQ(dropped.status, 3);
  EXPECT_EQ(dropped.out, "a");
}

#ifdef QVCONV_WITH_UCHARDET

TEST_F(FoundOut, RefusesAnActionThatTheEncodingOfATextDoesNotAllow) {
  const Finished result = run("-f auto -t utf-8 --on-malformed=pass", "\x1B$B$\"\x1B(B\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("taken for iso-2022-jp: The bytes of the source cannot be "
                                    "passed from iso-2022-jp to utf-8."));
}

#endif

TEST_F(FoundOut, IsForConversionsOfTextAlone) {
  const std::string remedy = " (--detect lists what a file may be in; --help tells more)";
  expectFailed(run("--check -f auto"), 2, "", "-f: auto is for conversions" + remedy);
  expectFailed(run("--fits -f auto"), 2, "", "-f: auto is for conversions" + remedy);
  expectFailed(run("-f utf-8 -t auto"), 2, "",
               "-t: unknown encoding \"auto\" (-l lists all; --help tells more)");
  expectFailed(run("-f auto -t utf-8 --visual-order"), 2, "",
               "--visual-order: only 10004 is known in visual order (use -f 10004; --help tells "
               "more)");
}

}  // namespace
