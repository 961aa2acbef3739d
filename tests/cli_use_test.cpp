// The command line, and what is said of a wrong one.

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

TEST_F(Command, RefusesUnknownEncodings) {
  expectFailed(run("-f nonesuch -t utf-8"), 2, "",
               "unknown encoding \"nonesuch\" (-l lists the known ones)");
  expectFailed(run("-f utf-8 -t 99999"), 2, "",
               "unknown encoding \"99999\" (-l lists the known ones)");
}

TEST_F(Command, SaysEachThingInOneLine) {
  expectFailed(run("-f 'utf\n8x' -t utf-8"), 2, "",
               R"(unknown encoding "utf\x0A8x" (-l lists the known ones))");
  expectFailed(run("-f 'utf\n8' -t utf-16le", "\xFF"), 1, "",
               "standard input:1:1: byte 0: FF is no character in utf\\x0A8");
  expectFailed(run("-f utf-8 -t utf-8 'no\tsuch\x1B\x7F\r\nfile'"), 1, "",
               R"(no\x09such\x1B\x7F\x0D\x0Afile: No such file or directory)");
  expectFailed(run("-f utf-8 -t utf-8 -o 'no\n/out'"), 1, "",
               "no\\x0A/out: No such file or directory");
  EXPECT_THAT(run("'--no\nsuch'").err, MatchesRegex("qvconv: [^\n]+\n"));
}

TEST_F(Command, AsksForBothEncodings) {
  expectFailed(run("-f utf-8"), 2, "", "-t is missing: it names an encoding");
  expectFailed(run("-t utf-8"), 2, "", "-f is missing: it names an encoding");
}

// An empty value is what a script passes whose variable is not set; the next
// argument must not be taken for it.
TEST_F(Command, RefusesAnEmptyValue) {
  write("utf-8", "old");
  expectFailed(run("-f utf-8 --to= utf-8"), 2, "", "--to= has no value");
  expectFailed(run("--from= -t utf-8 utf-8"), 2, "", "--from= has no value");
  expectFailed(run("-f utf-8 -t utf-8 --output= utf-8", "new"), 2, "", "--output= has no value");
  expectFailed(run("-f '' -t utf-8 utf-8"), 2, "", "-f is missing: it names an encoding");
  expectFailed(run("-f utf-8 --to '' utf-8"), 2, "", "-t is missing: it names an encoding");
  expectFailed(run("-f utf-8 -t utf-8 -o ''", "new"), 2, "", "-o is missing: it names a file");
  EXPECT_EQ(read("utf-8"), "old");
}

TEST_F(Command, ReadsAFileThatIsCalledLikeAnOption) {
  write("--to=", "a");
  expectConverted(run("-f utf-8 -t utf-8 -- --to="), "a");
}

TEST_F(Command, RefusesWrongOptionsInOneLine) {
  for (const char* arguments : {"--nonesuch", "-x", "-f", "-f utf-8 -t", "-f a -f b -t c", "-o"}) {
    const Finished result = run(arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_EQ(result.out, "") << arguments;
    EXPECT_THAT(result.err, MatchesRegex("qvconv: [^\n]+\n")) << arguments;
  }
}

TEST_F(Command, TouchesNoFileWhenUsedWrongly) {
  write("out", "old");
  EXPECT_EQ(run("-f nonesuch -t utf-8 -o out", "new").status, 2);
  EXPECT_EQ(read("out"), "old");
}

TEST_F(Command, ListsTheEncodings) {
  const Finished result = run("-l");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out, StartsWith("   37  "));
  EXPECT_THAT(result.out, HasSubstr("\n65001  utf-8  "));
  EXPECT_EQ(run("--list").out, result.out);
}

TEST_F(Command, TellsItsVersionAndUse) {
  EXPECT_THAT(run("--version").out, MatchesRegex("qvconv [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  const Finished help = run("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("--from"));
}

}  // namespace
