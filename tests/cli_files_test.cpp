// The files that the command reads and writes.

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

TEST_F(Command, RefusesADirectory) {
  expectFailed(run("-f utf-8 -t utf-16le ."), 1, "", ".: Is a directory");
}

TEST_F(Command, ReportsAFullDisk) {
  expectFailed(run("-f utf-8 -t utf-16le >/dev/full", "a"), 1, "",
               "standard output: No space left on device");
  expectFailed(run("-f utf-8 -t utf-16le -o /dev/full", "a"), 1, "",
               "/dev/full: No space left on device");
  expectFailed(run("-l >/dev/full"), 1, "", "standard output: No space left on device");
}

TEST_F(Command, WritesToAFile) {
  expectConverted(run("-f utf-8 -t utf-16le -o out", "a"), "");
  EXPECT_EQ(read("out"), "a\0"s);
  EXPECT_EQ(fileCount(), 1U);
  expectConverted(run("-f utf-8 -t utf-8 --output out", "b"), "");
  EXPECT_EQ(read("out"), "b");
}

TEST_F(Command, MayWriteToAFileThatItReads) {
  write("a", "a");
  write("b", "b");
  expectConverted(run("-f utf-8 -t utf-16le -o a b a"), "");
  EXPECT_EQ(read("a"), "b\0a\0"s);
  EXPECT_EQ(fileCount(), 2U);
}

TEST_F(Command, LeavesAnOutputAloneWhenNoInputCanBeRead) {
  write("out", "old");
  const Finished result = run("-f utf-8 -t utf-16le -o out missing gone");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "qvconv: missing: No such file or directory\n"
            "qvconv: gone: No such file or directory\n");
  EXPECT_EQ(read("out"), "old");
  EXPECT_EQ(fileCount(), 1U);
  expectFailed(run("-f utf-8 -t utf-16le -o new ."), 1, "", ".: Is a directory");
  EXPECT_EQ(fileCount(), 1U);
}

TEST_F(Command, LeavesAnOutputAloneWhenALossStopsTheConversion) {
  write("out", "old");
  write("bad", "new\xFF");
  write("good", "good");
  expectFailed(run("-f utf-8 -t utf-16le -o out bad"), 1, "",
               "bad:1:4: byte 3: FF is no character in utf-8");
  EXPECT_EQ(read("out"), "old");
  expectFailed(run("-f utf-8 -t utf-16le -o out bad good"), 1, "",
               "bad:1:4: byte 3: FF is no character in utf-8");
  EXPECT_EQ(read("out"), "old");
  expectFailed(run("-f utf-8 -t utf-16le -o bad bad"), 1, "",
               "bad:1:4: byte 3: FF is no character in utf-8");
  EXPECT_EQ(read("bad"), "new\xFF");
  EXPECT_EQ(fileCount(), 3U);
}

TEST_F(Command, WritesAnOutputWhenOneInputCanBeRead) {
  write("out", "old");
  write("empty", "");
  EXPECT_EQ(run("-f utf-8 -t utf-16le -o out missing -", "a").status, 1);
  EXPECT_EQ(read("out"), "a\0"s);
  EXPECT_EQ(run("-f utf-8 -t utf-16le -o out missing empty").status, 1);
  EXPECT_EQ(read("out"), "");
}

TEST_F(Command, KeepsThePermissionsOfAFileThatItReplaces) {
  write("out", "old");
  ASSERT_EQ(::chmod(path("out").c_str(), 0640), 0);
  expectConverted(run("-f utf-8 -t utf-8 -o out", "new"), "");
  struct stat status {};
  ASSERT_EQ(::stat(path("out").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(Command, WritesThroughASymbolicLink) {
  write("real", "old");
  std::filesystem::create_symlink("real", path("link"));
  expectConverted(run("-f utf-8 -t utf-8 -o link", "new"), "");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(read("real"), "new");
}

TEST_F(Command, CreatesWhatADanglingLinkNames) {
  std::filesystem::create_directory(path("there"));
  std::filesystem::create_symlink("there/next", path("link"));
  std::filesystem::create_symlink("real", path("there/next"));
  expectConverted(run("-f utf-8 -t utf-8 -o link", "new"), "");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_TRUE(std::filesystem::is_symlink(path("there/next")));
  EXPECT_EQ(read("there/real"), "new");
}

TEST_F(Command, ReportsALinkThatLeadsNowhere) {
  std::filesystem::create_symlink("link", path("link"));
  std::filesystem::create_symlink("missing/real", path("astray"));
  expectFailed(run("-f utf-8 -t utf-8 -o link", "a"), 1, "",
               "link: Too many levels of symbolic links");
  expectFailed(run("-f utf-8 -t utf-8 -o astray", "a"), 1, "", "astray: No such file or directory");
  EXPECT_EQ(fileCount(), 2U);
}

TEST_F(Command, WritesToADeviceWithoutReplacingIt) {
  expectConverted(run("-f utf-8 -t utf-8 -o /dev/null", "a"), "");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(Command, ReportsAnOutputThatCannotBeOpened) {
  expectFailed(run("-f utf-8 -t utf-8 -o missing/out", "a"), 1, "",
               "missing/out: No such file or directory");
}

}  // namespace
