// Runs the built command as a shell does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace {

using namespace std::string_literals;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

struct Finished {
  int status;
  std::string out;
  std::string err;
};

// Each test works in a directory of its own, with file names relative to it.
class Command : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "qvconv-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    m_directory = name;
  }
  void TearDown() override { std::filesystem::remove_all(m_directory); }

  void write(const std::string& file, std::string_view content) const {
    std::ofstream(m_directory / file, std::ios::binary) << content;
  }
  std::string read(const std::string& file) const {
    std::ostringstream content;
    content << std::ifstream(m_directory / file, std::ios::binary).rdbuf();
    return content.str();
  }
  std::string path(const std::string& file) const { return (m_directory / file).string(); }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(m_directory), {}));
  }

  // `arguments` as a shell reads them, redirections included.
  Finished run(const std::string& arguments, std::string_view input = "") const {
    write("stdin", input);
    const std::string line = "cd '" + m_directory.string() +
                             "' && exec 0<stdin >stdout 2>stderr; '" + QVCONV_PATH + "' " +
                             arguments;
    const int status = std::system(line.c_str());
    Finished result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, read("stdout"), read("stderr")};
    for (const char* file : {"stdin", "stdout", "stderr"}) {
      std::filesystem::remove(m_directory / file);
    }
    return result;
  }

  void expectConverted(const Finished& run, const std::string& out) const {
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "");
  }
  void expectFailed(const Finished& run, int status, const std::string& out,
                    const std::string& line) const {
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "qvconv: " + line + "\n");
  }

 private:
  std::filesystem::path m_directory;
};

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
  expectConverted(run("-f utf-8 -t utf-32be", "\xEF\xBB\xBF"), "\0\0\xFE\xFF"s);
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
  const std::string geta = "\x1B$B\x22\x2E\x1B(B";
  expectFailed(run("-f shift_jis -t iso-2022-jp", "\x82"), 1, geta,
               "standard input: not all of it could be converted from shift_jis to iso-2022-jp");
  expectFailed(run("-f 932 -t 50220", "\xFA\x4A"), 1, geta,
               "standard input: not all of it could be converted from 932 to 50220");
  expectFailed(run("-f shift_jis -t iso-2022-jp",
                   "a\x0E"
                   "b"),
               1, "ab",
               "standard input: not all of it could be converted from shift_jis to iso-2022-jp");
  expectFailed(run("-f iso-2022-jp -t shift_jis", "\x1B$B\x24"), 1, "",
               "standard input: nothing of it could be converted from iso-2022-jp to shift_jis");
  expectFailed(run("-f iso-2022-kr -t 949", "\x0E\x30"), 1, "",
               "standard input: nothing of it could be converted from iso-2022-kr to 949");
  expectFailed(run("-f iso-2022-kr -t 949", "\x1B$)C\x0E\x80\x30\x21"), 1, "\xB0\xA1",
               "standard input: not all of it could be converted from iso-2022-kr to 949");
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
  expectConverted(run("-f utf-8 -t utf-8 bytes"), bytes);
  expectConverted(run("-f utf-8 -t utf-8", bytes), bytes);
}

TEST_F(Command, WritesWhatItCouldConvertAndSaysSo) {
  expectFailed(run("-f utf-8 -t utf-16le",
                   "a\xFF"
                   "b"),
               1, "a\0b\0"s,
               "standard input: not all of it could be converted from utf-8 to utf-16le");
  expectFailed(run("-f utf-8 -t 1200", "\xFF"), 1, "",
               "standard input: nothing of it could be converted from utf-8 to 1200");
}

TEST_F(Command, GoesOnAfterAFileThatFails) {
  write("bad", "\xE6\xBC\xA2");
  write("good", "good");
  const Finished result = run("-f utf-8 -t gsm missing bad good");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "?good");
  EXPECT_EQ(result.err,
            "qvconv: missing: No such file or directory\n"
            "qvconv: bad: not all of it could be converted from utf-8 to gsm\n");
}

TEST_F(Command, RefusesADirectory) {
  expectFailed(run("-f utf-8 -t utf-16le ."), 1, "", ".: Is a directory");
}

TEST_F(Command, RefusesAFileThatIsTooLarge) {
  write("large", "");
  std::filesystem::resize_file(path("large"), 1ULL << 32);
  expectFailed(run("-f utf-8 -t utf-16le large"), 1, "",
               "large: larger than 4 GiB less one byte, the most that is handled");
  expectFailed(run("-f utf-8 -t utf-16le <large"), 1, "",
               "standard input: larger than 4 GiB less one byte, the most that is handled");
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

TEST_F(Command, LeavesAnOutputAloneWhenNothingCouldBeConverted) {
  write("out", "old");
  expectFailed(run("-f utf-8 -t iso-8859-10 -o out out"), 1, "",
               "out: nothing of it could be converted from utf-8 to iso-8859-10");
  EXPECT_EQ(read("out"), "old");
  EXPECT_EQ(fileCount(), 1U);
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
               "standard input: nothing of it could be converted from utf\\x0A8 to utf-16le");
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
