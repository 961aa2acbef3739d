// What becomes of what does not get across, as the command line asks for it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "quorvel/text/convert.h"
#include "tests/helpers/Command.h"

namespace {

using namespace std::string_literals;
using quorvel_test::Command;
using quorvel_test::Finished;

class Losses : public Command {
 protected:
  // Damaged in its second character, and with a euro sign in its fourth.
  const std::string text =
      "a\xFF"
      "b\xE2\x82\xAC"
      "c";

  void expectLossy(const std::string& arguments, const std::string& out) const {
    const Finished result = run("-f utf-8 -t latin1 " + arguments, text);
    EXPECT_EQ(result.status, 3) << arguments;
    EXPECT_EQ(result.out, out) << arguments;
    EXPECT_EQ(result.err,
              "qvconv: standard input: 1 malformed sequence, 1 character without a place; the "
              "first is standard input:1:2: byte 1: FF is no character in utf-8\n")
        << arguments;
  }
};

TEST_F(Losses, AreTreatedAsAsked) {
  expectLossy("--on-error=drop", "abc");
  expectLossy("--on-error=substitute", "a?b?c");
  expectLossy("--on-error substitute --substitute '<>'", "a<>b<>c");
  expectLossy("--substitute ''", "abc");
  expectLossy("--substitute '\xC3\xA9'",
              "a\xE9"
              "b\xE9"
              "c");
  expectLossy("--on-error=escape", R"(a\xFFb\u20ACc)");
  expectLossy("--on-error=escape --escape=c", R"(a\xFFb\u20ACc)");
  expectLossy("--on-error=escape --escape xml", R"(a\xFFb&#x20AC;c)");
  expectLossy("--on-error=pass",
              "a\xFF"
              "b\xE2\x82\xAC"
              "c");
  expectLossy("--on-error=reconvert --reconvert-to 1252",
              "a\xFF"
              "b\x80"
              "c");
  expectLossy("--reconvert-to 1252",
              "a\xFF"
              "b\x80"
              "c");
}

TEST_F(Losses, AreTreatedByKind) {
  expectLossy("--on-malformed=drop --on-unmappable=escape", R"(ab\u20ACc)");
  expectLossy("--on-error=escape --on-malformed=substitute", R"(a?b\u20ACc)");
  expectLossy("-c --on-unmappable=substitute", "ab?c");
}

TEST_F(Losses, AreDroppedByTheShortOptionAndTheSuffix) {
  expectLossy("-c", "abc");
  EXPECT_EQ(run("-f utf-8 -t latin1//IGNORE", text).out, "abc");
  EXPECT_EQ(run("-f utf-8//ignore -t latin1", text).status, 3);
  EXPECT_EQ(run("-f utf-8 -t latin1//Translit//Ignore", text).out, "abc");
  EXPECT_EQ(run("-f utf-8 -t latin1// ", "a").status, 0);
}

TEST_F(Losses, StopTheConversionWhereOneKindIsNotAllowed) {
  const Finished first = run("-f utf-8 -t latin1 --on-unmappable=drop", text);
  EXPECT_EQ(first.status, 1);
  EXPECT_EQ(first.err, "qvconv: standard input:1:2: byte 1: FF is no character in utf-8\n");
  const Finished second = run("-f utf-8 -t latin1 --on-malformed=drop", text);
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.out, "ab");
  EXPECT_EQ(second.err, "qvconv: standard input:1:4: byte 3: U+20AC has no place in latin1\n");
}

TEST_F(Losses, AreToldOfQuietlyByTheStatusAlone) {
  for (const char* quiet : {"-q", "--quiet", "-s", "--silent"}) {
    const Finished result = run("-c -f utf-8 -t latin1 "s + quiet, text);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "abc");
    EXPECT_EQ(result.err, "");
  }
  EXPECT_NE(run("-q -f utf-8 -t latin1", text).err, "") << "a stop is no summary";
}

TEST_F(Losses, OfBestFitsAreThereOnlyWhenAskedFor) {
  const std::string slash =
      "a\xEF\xBC\x8F"
      "b";
  expectFailed(run("-f utf-8 -t 1252", slash), 1, "a",
               "standard input:1:2: byte 1: U+FF0F has no place in 1252");
  for (const char* options : {"-f utf-8 -t 1252 --best-fit", "-f utf-8 -t 1252//TRANSLIT"}) {
    const Finished result = run(options, slash);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "a/b");
    EXPECT_EQ(result.err,
              "qvconv: standard input: 1 best fit; the first is standard input:1:2: byte 1: U+FF0F "
              "became a character of 1252 that looks like it\n");
  }
  expectFailed(run("-f utf-8 -t 1252//TRANSLIT", "\xE6\x97\xA5"), 1, "",
               "standard input:1:1: byte 0: U+65E5 has no place in 1252");
}

TEST_F(Losses, AreSummedUpForEachFile) {
  write("one", "\xFF\xFF");
  write("two", "fine");
  write("three", "\nx\xE2\x82\xAC");
  const Finished result = run("-c -f utf-8 -t latin1 one two three");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, "fine\nx");
  EXPECT_EQ(result.err,
            "qvconv: one: 2 malformed sequences; the first is one:1:1: byte 0: FF is no character "
            "in utf-8\n"
            "qvconv: three: 1 character without a place; the first is three:2:2: byte 2: U+20AC "
            "has no place in latin1\n");
}

TEST_F(Losses, AsAskedReplaceAnOutput) {
  write("out", "old");
  EXPECT_EQ(run("-c -f utf-8 -t latin1 -o out", text).status, 3);
  EXPECT_EQ(read("out"), "abc");
}

TEST_F(Losses, GiveTheWorseOfTheStatusOfSeveralFiles) {
  write("lossy", "\xE2\x82\xAC");
  write("fine", "fine");
  write("bad", "\xFF");
  EXPECT_EQ(run("--on-unmappable=drop -f utf-8 -t latin1 fine lossy").status, 3);
  EXPECT_EQ(run("--on-unmappable=drop -f utf-8 -t latin1 bad lossy fine").status, 1);
  EXPECT_EQ(run("--on-unmappable=drop -f utf-8 -t latin1 missing lossy").status, 1);
}

TEST_F(Losses, AreToldOfWithWhatWasConverted) {
  write("one", "a");
  EXPECT_EQ(run("-v -f utf-8 -t utf-16le one").err,
            "qvconv: one: 1 bytes of utf-8 became 2 of utf-16le\n");
}

// --- Byte-order marks and visual order --------------------------------------

TEST_F(Command, TreatsByteOrderMarksAsAsked) {
  const std::string marked =
      "\xEF\xBB\xBF"
      "a";
  expectConverted(run("-f utf-8 -t utf-16le", marked), "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le --bom=remove", marked), "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le --bom=keep", marked),
                  "\xFF\xFE"
                  "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le --bom=add", marked),
                  "\xFF\xFE"
                  "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le --bom=add", "a"),
                  "\xFF\xFE"
                  "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le --bom add", ""), "");
  expectConverted(run("-f utf-8-sig -t UTF-8-SIG", marked), marked);
  expectConverted(run("-f utf-8-sig -t utf-8", marked), "a");
  expectConverted(run("-f utf-8 -t utf-8-sig --bom=remove", marked), "a");
  expectFailed(run("-f utf-8 -t latin1 --bom=keep",
                   "\xEF\xBB\xBF"
                   "a"),
               1, "", "standard input:1:1: byte 0: U+FEFF has no place in latin1");
}

TEST_F(Command, WritesOneMarkForSeveralInputs) {
  write("empty", "");
  write("a", "a");
  write("b",
        "\xEF\xBB\xBF"
        "b");
  expectConverted(run("-f utf-8 -t utf-8-sig empty a empty b"),
                  "\xEF\xBB\xBF"
                  "ab");
}

TEST_F(Command, TurnsTextInVisualOrder) {
  using namespace quorvel::text;
  const std::string visual = "\xC1\xA8\xA9\xC2\n\xC7";
  Options options;
  options.visualOrder = true;
  const std::string turned =
      convert(*Encoding::find(10004), Encoding::utf8(), visual, options).text;
  expectConverted(run("-f 10004 -t utf-8 --visual-order", visual), turned);
  EXPECT_NE(run("-f 10004 -t utf-8", visual).out, turned);
  expectFailed(run("-f 10004 -t us-ascii --visual-order", visual), 1, "",
               "standard input:1:1: byte 0: U+0621 has no place in us-ascii");
}

}  // namespace
