// `--check`: what would be lost, for people and for programs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/helpers/Command.h"

namespace {

using namespace std::string_literals;
using quorvel_test::Command;
using quorvel_test::Finished;

class Checking : public Command {
 protected:
  // A fullwidth slash has a best fit in many pages, the euro sign has none in latin1.
  const std::string text = "a\xFF\nb\xE2\x82\xAC\xEF\xBC\x8F\n";

  void expectFound(const std::string& arguments, const std::string& out) const {
    const Finished result = run(arguments, text);
    EXPECT_EQ(result.status, 1) << arguments;
    EXPECT_EQ(result.out, out) << arguments;
    EXPECT_EQ(result.err, "") << arguments;
  }
};

TEST_F(Checking, FindsNothingInAWholeText) {
  expectConverted(run("--check -f utf-8", "caf\xC3\xA9"), "");
  expectConverted(run("--check -f utf-8 -t latin1", "caf\xC3\xA9"), "");
  expectConverted(run("--check -f utf-16le", ""), "");
}

TEST_F(Checking, ListsWhatIsMalformedInTheSourceAlone) {
  expectFound("--check -f utf-8", "standard input:1:2: byte 1: FF is no character in utf-8\n");
}

TEST_F(Checking, ListsWhatTheDestinationLacks) {
  expectFound("--check -f utf-8 -t latin1",
              "standard input:1:2: byte 1: FF is no character in utf-8\n"
              "standard input:2:2: byte 4: U+20AC has no place in latin1\n"
              "standard input:2:3: byte 7: U+FF0F has no place in latin1\n");
}

TEST_F(Checking, ListsBestFitsWhereTheyAreAllowed) {
  const std::string found =
      "standard input:1:2: byte 1: FF is no character in utf-8\n"
      "standard input:2:2: byte 4: U+20AC has no place in latin1\n"
      "standard input:2:3: byte 7: U+FF0F became a character of latin1 that looks like it\n";
  expectFound("--check -f utf-8 -t latin1 --best-fit", found);
  expectFound("--check -f utf-8 -t latin1//TRANSLIT", found);
}

TEST_F(Checking, TellsByTheStatusAloneWhenQuiet) { expectFound("-q --check -f utf-8", ""); }

TEST_F(Checking, ShowsTheFirstTenOfAFileUnlessAllAreAskedFor) {
  write("bad", std::string(12, '\xFF'));
  std::string ten;
  for (int i = 0; i < 10; ++i) {
    ten += "bad:1:" + std::to_string(i + 1) + ": byte " + std::to_string(i) +
           ": FF is no character in utf-8\n";
  }
  const std::string more =
      "bad:1:11: byte 10: FF is no character in utf-8\n"
      "bad:1:12: byte 11: FF is no character in utf-8\n";
  const std::string total =
      "bad: 12 malformed sequences; the first 10 are shown (--all shows all)\n";
  expectFound("--check -f utf-8 bad", ten + total);
  expectFound("--check -f utf-8 bad bad", ten + total + ten + total);
  expectFound("--check --all -f utf-8 bad", ten + more);
}

TEST_F(Checking, WritesAnObjectALine) {
  expectFound("--check --json -f utf-8 -t latin1 --best-fit",
              R"({"file":"-","offset":1,"length":1,"line":1,"column":2,"kind":"malformed",)"
              R"("bytes":"FF"})"
              "\n"
              R"({"file":"-","offset":4,"length":3,"line":2,"column":2,"kind":"unmappable",)"
              R"("bytes":"E282AC","character":"U+20AC"})"
              "\n"
              R"({"file":"-","offset":7,"length":3,"line":2,"column":3,"kind":"best-fit",)"
              R"("bytes":"EFBC8F","character":"U+FF0F"})"
              "\n"
              R"({"file":"-","read":11,"malformed":1,"unmappable":1,"best-fit":1})"
              "\n");
}

TEST_F(Checking, WritesTheLastObjectOfAFileWithoutLossesToo) {
  write("a \"b\"", "a");
  expectConverted(run("--check --json -f utf-8 'a \"b\"'"),
                  "{\"file\":\"a \\\"b\\\"\",\"read\":1,\"malformed\":0,\"unmappable\":0,"
                  "\"best-fit\":0}\n");
}

TEST_F(Checking, FindsTheSameInAPipe) {
  std::string large;
  for (int i = 0; i < 300000; ++i) large += i % 1000 == 999 ? "\xE2\x82\r\n" : "\xE2\x82\xAC ";
  write("large", large);
  const std::string fromFile = run("--check --all --json -f utf-8 <large").out;
  EXPECT_EQ(runShell("cat large | '" QVCONV_PATH "' --check --all --json -f utf-8").out, fromFile);
  EXPECT_THAT(fromFile, testing::HasSubstr("\"line\":300,\"column\":1999,\"kind\""));
}

TEST_F(Checking, GoesOnAfterAFileThatCannotBeRead) {
  write("good", "good");
  const Finished result = run("--check --json -f utf-8 missing good");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out,
            "{\"file\":\"good\",\"read\":4,\"malformed\":0,\"unmappable\":0,\"best-fit\":0}\n");
  EXPECT_EQ(result.err, "qvconv: missing: No such file or directory\n");
}

TEST_F(Checking, ReportsAFullDisk) {
  expectFailed(run("--check -f utf-8 >/dev/full", text), 1, "",
               "standard output: No space left on device");
}

TEST_F(Checking, IsTheOnlyUseOfItsOptions) {
  expectFailed(run("--all"), 2, "",
               "--all: there is nothing to show all of (add --check; --help tells more)");
  expectFailed(run("--json"), 2, "",
               "--json: there is no result in JSON (--check, --detect, --fits and -l have one; "
               "--help tells more)");
  expectFailed(run("--check -o out"), 2, "",
               "-o: nothing is converted (redirect standard output; --help tells more)");
}

}  // namespace
