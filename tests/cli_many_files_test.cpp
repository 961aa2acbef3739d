// Many files in one call: in place, into a directory, from directories and lists.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <sstream>
#include <string>

#include "tests/helpers/Command.h"

namespace {

using namespace std::string_literals;
using quorvel_test::Command;
using quorvel_test::Finished;

class ManyFiles : public Command {
 protected:
  void makeTree() const {
    std::filesystem::create_directories(path("tree/sub"));
    write("tree/b.txt", "b\xE9");
    write("tree/a.txt", "a\xE9");
    write("tree/sub/c.txt", "c\xE9");
    write("tree/sub/d.bin", "d\xE9");
    std::filesystem::create_symlink("a.txt", path("tree/link.txt"));
    std::filesystem::create_directory_symlink("..", path("tree/sub/up"));
  }
  std::size_t leftOver() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path("."))) {
      if (entry.path().filename().string().starts_with(".qvconv-")) ++count;
    }
    return count;
  }
};

TEST_F(ManyFiles, AreReplacedByTheirConversions) {
  write("a", "\xE9");
  write("b", "\xE8");
  expectConverted(run("--in-place -f 1252 -t utf-8 a b"), "");
  EXPECT_EQ(read("a"), "\xC3\xA9");
  EXPECT_EQ(read("b"), "\xC3\xA8");
  EXPECT_EQ(fileCount(), 2U);
}

TEST_F(ManyFiles, KeepTheOldOnesUnderAnotherName) {
  write("a", "\xE9");
  write("a.old", "older");
  expectConverted(run("--in-place=.old -f 1252 -t utf-8 a"), "");
  EXPECT_EQ(read("a"), "\xC3\xA9");
  EXPECT_EQ(read("a.old"), "\xE9");
  EXPECT_EQ(fileCount(), 2U);
}

TEST_F(ManyFiles, KeepModeOwnerAndTimes) {
  write("a", "\xE9");
  const std::array times = {timespec{1000000, 123456789}, timespec{2000000, 987654321}};
  ASSERT_EQ(::chmod(path("a").c_str(), 0604), 0);
  const bool isRoot = ::geteuid() == 0;
  ASSERT_TRUE(!isRoot || ::chown(path("a").c_str(), 12345, 54321) == 0);
  ASSERT_EQ(::utimensat(AT_FDCWD, path("a").c_str(), times.data(), 0), 0);
  struct stat before {};
  ASSERT_EQ(::stat(path("a").c_str(), &before), 0);
  expectConverted(run("--in-place -f 1252 -t utf-8 a"), "");
  struct stat after {};
  ASSERT_EQ(::stat(path("a").c_str(), &after), 0);
  EXPECT_EQ(after.st_mode, before.st_mode);
  EXPECT_EQ(after.st_uid, before.st_uid);
  EXPECT_EQ(after.st_gid, before.st_gid);
  EXPECT_EQ(after.st_mtim.tv_sec, 2000000);
  EXPECT_EQ(after.st_mtim.tv_nsec, 987654321);
  EXPECT_EQ(after.st_atim.tv_sec, 1000000);
  EXPECT_EQ(after.st_size, 2);
}

TEST_F(ManyFiles, StayAsTheyWereWhenNotEverythingArrives) {
  write("a", "\xC3\xA9");
  write("bad", "x\xFF");
  write("c", "\xC3\xA8");
  const Finished result = run("--in-place=.old -f utf-8 -t 1252 a bad missing c");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "qvconv: bad:1:2: byte 1: FF is no character in utf-8\n"
            "qvconv: missing: No such file or directory\n");
  EXPECT_EQ(read("a"), "\xE9");
  EXPECT_EQ(read("bad"), "x\xFF");
  EXPECT_EQ(read("c"), "\xE8");
  EXPECT_FALSE(std::filesystem::exists(path("bad.old")));
  EXPECT_EQ(leftOver(), 0U);
}

TEST_F(ManyFiles, AreReplacedWhenTheLossIsAllowed) {
  write("bad", "x\xFF");
  EXPECT_EQ(run("--in-place -c -f utf-8 -t 1252 bad").status, 3);
  EXPECT_EQ(read("bad"), "x");
}

TEST_F(ManyFiles, AreReplacedBehindLinks) {
  write("real", "\xE9");
  std::filesystem::create_symlink("real", path("link"));
  expectConverted(run("--in-place -f 1252 -t utf-8 link"), "");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(read("real"), "\xC3\xA9");
}

TEST_F(ManyFiles, AreReplacedOnlyWhereTheyAreRegular) {
  expectFailed(run("--in-place -f 1252 -t utf-8 /dev/null"), 1, "",
               "/dev/null: only a regular file can be replaced");
  expectFailed(run("--in-place -f 1252 -t utf-8 ."), 1, "",
               ".: it is a directory; -r takes what is in it");
  expectFailed(run("--in-place -f 1252 -t utf-8 -", "a"), 1, "",
               "standard input: it has no place of its own");
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  expectFailed(run("--in-place -f 1252 -t utf-8 pipe"), 1, "",
               "pipe: only a regular file can be replaced");
}

TEST_F(ManyFiles, GoIntoADirectory) {
  makeTree();
  write("e", "e");
  expectConverted(run("--output-dir new/there -f 1252 -t utf-8 -r tree e"), "");
  EXPECT_EQ(read("new/there/a.txt"), "a\xC3\xA9");
  EXPECT_EQ(read("new/there/sub/d.bin"), "d\xC3\xA9");
  EXPECT_EQ(read("new/there/e"), "e");
  EXPECT_FALSE(std::filesystem::exists(path("new/there/link.txt")));
  EXPECT_EQ(read("tree/a.txt"), "a\xE9");
  EXPECT_EQ(leftOver(), 0U);
}

TEST_F(ManyFiles, DoNotGoOverTheirInputsOrEachOther) {
  makeTree();
  write("a.txt", "other");
  const Finished result = run("--output-dir . -f 1252 -t utf-8 tree/a.txt a.txt");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "qvconv: a.txt: another input already goes to a.txt\n");
  EXPECT_EQ(read("a.txt"), "a\xC3\xA9");
  expectFailed(run("--output-dir tree -f 1252 -t utf-8 tree/a.txt"), 1, "",
               "tree/a.txt: it is the input itself; --in-place replaces files");
  EXPECT_EQ(read("tree/a.txt"), "a\xE9");
}

TEST_F(ManyFiles, StandInDirectories) {
  makeTree();
  expectConverted(run("-f 1252 -t utf-8 -r tree"),
                  "a\xC3\xA9"
                  "b\xC3\xA9"
                  "c\xC3\xA9"
                  "d\xC3\xA9");
  expectConverted(run("-f 1252 -t utf-8 -r --glob '*.txt' tree"),
                  "a\xC3\xA9"
                  "b\xC3\xA9"
                  "c\xC3\xA9");
  expectConverted(run("-f 1252 -t utf-8 -r tree/link.txt"), "a\xC3\xA9");
  expectFailed(run("-f 1252 -t utf-8 tree"), 1, "", "tree: Is a directory");
  expectFailed(run("-f 1252 -t utf-8 -r missing"), 1, "", "missing: No such file or directory");
}

TEST_F(ManyFiles, StandInLists) {
  makeTree();
  write("lines", "tree/b.txt\n\ntree/a.txt");
  expectConverted(run("-f 1252 -t utf-8 --files-from lines"),
                  "b\xC3\xA9"
                  "a\xC3\xA9");
  write("nul", "tree/b.txt\0tree/a.txt\0"s);
  expectConverted(run("-f 1252 -t utf-8 -0 --files-from=nul"),
                  "b\xC3\xA9"
                  "a\xC3\xA9");
  expectConverted(run("-f 1252 -t utf-8 --files-from -", "tree/a.txt\n"), "a\xC3\xA9");
  write("none", "");
  expectConverted(run("-f 1252 -t utf-8 --files-from none", "not read"), "");
  expectFailed(run("-f 1252 -t utf-8 --files-from missing"), 1, "",
               "missing: No such file or directory");
}

TEST_F(ManyFiles, AreToldOfInTheirOrderWhoeverIsFirst) {
  std::string expected;
  std::string found;
  for (int i = 0; i < 200; ++i) {
    const std::string name = "file" + std::to_string(1000 + i);
    const bool isBad = i % 3 == 0;
    write(name,
          std::string(static_cast<std::size_t>((i * 7919) % 50000), 'x') + (isBad ? "\xFF" : ""));
    if (isBad) expected += "qvconv: " + name + ":1:";
  }
  const Finished result = run("--in-place --jobs 16 -f utf-8 -t utf-16le file*");
  EXPECT_EQ(result.status, 1);
  std::istringstream lines(result.err);
  for (std::string line; std::getline(lines, line);) found += line.substr(0, line.find(":1:") + 3);
  EXPECT_EQ(found, expected);
  const Finished check = run("--check -j 8 -f utf-8 file*");
  EXPECT_EQ(check.out, run("--check -f utf-8 file*").out);
  EXPECT_EQ(check.status, 1);
}

TEST_F(ManyFiles, AreAllConvertedBySixteenJobs) {
  for (int i = 0; i < 2000; ++i) write("in" + std::to_string(i), std::to_string(i) + "\xE9");
  expectConverted(run("--output-dir out --jobs=16 -f 1252 -t utf-8 in*"), "");
  for (int i = 0; i < 2000; ++i) {
    ASSERT_EQ(read("out/in" + std::to_string(i)), std::to_string(i) + "\xC3\xA9");
  }
  EXPECT_EQ(leftOver(), 0U);
}

TEST_F(ManyFiles, AreRefusedInWaysThatContradictEachOther) {
  const auto expectRefused = [&](const std::string& arguments, const std::string& line) {
    expectFailed(run(arguments), 2, "", line + "; --help tells more)");
  };
  expectRefused("--in-place -o out a", "--in-place: cannot go with -o (use one of them");
  expectRefused("--in-place --output-dir d a",
                "--in-place: cannot go with --output-dir (use one of them");
  expectRefused("--output-dir d -o out a", "--output-dir: cannot go with -o (use one of them");
  expectRefused("--in-place", "--in-place: no file is named (name files, or directories with -r");
  expectRefused("--check --in-place a", "--in-place: nothing is converted (leave it out");
  expectRefused("--in-place=../x a",
                "--in-place: the suffix has a slash (the old file stays in its directory");
  expectRefused("--glob '*' a", "--glob: no directory is looked into (add -r");
  expectRefused("-0 a", "-0: no names are read (add --files-from");
  for (const char* jobs : {"0", "65", "x", "1x", "-1"}) {
    expectRefused("--jobs="s + jobs, "-j: \""s + jobs + "\" is no number of jobs (1 to 64");
  }
}

// --- A directory that cannot be written -------------------------------------

class UnwritableDirectory : public ManyFiles {
 protected:
  void SetUp() override {
    ManyFiles::SetUp();
    std::filesystem::create_directory(path("there"));
    write("there/out", "old");
    write("new", "new\xC3\xA9");
    std::filesystem::permissions(path("."), std::filesystem::perms::all);
    ASSERT_EQ(::chmod(path("there/out").c_str(), 0666), 0);
    ASSERT_EQ(::chmod(path("there").c_str(), 0555), 0);
  }
  void TearDown() override {
    ::chmod(path("there").c_str(), 0755);
    ManyFiles::TearDown();
  }
  // As somebody whom permissions hold back.
  Finished runPlainly(const std::string& arguments) const {
    const std::string as =
        ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    return run("--version >/dev/null; " + as + "'" QVCONV_PATH "' " + arguments);
  }
};

TEST_F(UnwritableDirectory, HasItsFilesWrittenThrough) {
  const Finished result = runPlainly("-f utf-8 -t 1252 -o there/out new");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err,
            "qvconv: there/out: no file can be made beside it, so it is written through\n");
  EXPECT_EQ(read("there/out"), "new\xE9");
}

TEST_F(UnwritableDirectory, KeepsWhatWouldBeReplacedByAPart) {
  write("new", "new\xFF");
  EXPECT_EQ(runPlainly("-f utf-8 -t 1252 -o there/out new").status, 1);
  EXPECT_EQ(read("there/out"), "old");
}

TEST_F(UnwritableDirectory, HasNothingReplacedInPlace) {
  const Finished result = runPlainly("--in-place -f utf-8 -t 1252 there/out");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "qvconv: there/out: Permission denied\n");
  EXPECT_EQ(read("there/out"), "old");
}

}  // namespace
