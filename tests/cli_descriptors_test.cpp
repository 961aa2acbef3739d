// The command with standard descriptors that are closed.

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

TEST_F(Command, KeepsItsComplaintsOutOfTheOutputWhenStandardErrorIsClosed) {
  const Finished result = run("-f utf-8 -t utf-8 -o out missing - 2>&-", "a");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(read("out"), "a");
  EXPECT_EQ(run("-f utf-8 -t utf-8 -o out missing - >&- 2>&-", "b").status, 1);
  EXPECT_EQ(read("out"), "b");
}

TEST_F(Command, CannotReadAClosedStandardInput) {
  write("old", "old");
  expectFailed(run("-f utf-8 -t utf-8 -o old <&-"), 1, "", "standard input: Bad file descriptor");
  expectFailed(run("-f utf-8 -t utf-8 <&-"), 1, "", "standard input: Bad file descriptor");
  std::filesystem::create_symlink("/proc/self/fd/0", path("link"));
  expectFailed(run("-f utf-8 -t utf-8 -o old link <&-"), 1, "", "link: Is a directory");
  EXPECT_EQ(read("old"), "old");
  EXPECT_EQ(fileCount(), 2U);
}

TEST_F(Command, CannotWriteToAClosedStandardOutput) {
  const std::string line = "standard output: Bad file descriptor";
  expectFailed(run("-f utf-8 -t utf-8 >&-", "a"), 1, "", line);
  expectFailed(run("-f utf-8 -t utf-8 >&-", ""), 1, "", line);
  expectFailed(run("-f utf-8 -t utf-8 <&- >&-"), 1, "", line);
  expectFailed(run("-l >&-"), 1, "", line);
  // As /dev/stdout does, which a wrong turn here would replace.
  std::filesystem::create_symlink("/proc/self/fd/1", path("link"));
  expectFailed(run("-f utf-8 -t utf-8 -o link >&-", "a"), 1, "", "link: Is a directory");
}

TEST_F(Command, MissesNoDescriptorThatItDoesNotUse) {
  write("a", "a");
  expectConverted(run("-f utf-8 -t utf-16le a <&-"), "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le a 2>&-"), "a\0"s);
  expectConverted(run("-f utf-8 -t utf-16le -o out a <&- >&- 2>&-"), "");
  EXPECT_EQ(read("out"), "a\0"s);
}

}  // namespace
