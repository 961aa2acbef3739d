// The command line, and what is said of a wrong one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Help.h"
#include "cli/OptionTable.h"
#include "cli/Options.h"
#include "cli/Suggestion.h"
#include "tests/helpers/Command.h"

namespace {

using namespace std::string_literals;
using quorvel_test::Command;
using quorvel_test::Finished;
using qvconv::didYouMean;
using qvconv::nearestName;
using testing::HasSubstr;
using testing::MatchesRegex;

std::vector<std::string_view> someNames() { return {"utf-8", "shift_jis", "koi8-r", "big5"}; }

TEST(Suggestions, AreNamesThatDifferInAFewLetters) {
  EXPECT_EQ(nearestName("shfit_jis", someNames()), "shift_jis");
  EXPECT_EQ(nearestName("SHIFTJS", someNames()), "shift_jis");
  EXPECT_EQ(nearestName("utf9", someNames()), "utf-8");
  EXPECT_EQ(nearestName("koi-8", someNames()), "koi8-r");
  EXPECT_EQ(nearestName("klingon", someNames()), "");
  EXPECT_EQ(nearestName("", someNames()), "");
  EXPECT_EQ(nearestName(std::string(10000, 'u'), someNames()), "");
}

TEST(Suggestions, AreWordsForAMessage) {
  EXPECT_EQ(didYouMean("bgi5", someNames()), ": did you mean big5?");
  EXPECT_EQ(didYouMean("x", someNames()), "");
}

TEST_F(Command, RefusesUnknownEncodings) {
  expectFailed(run("-f klingon -t utf-8"), 2, "",
               "-f: unknown encoding \"klingon\" (-l lists all; --help tells more)");
  expectFailed(run("-f utf-8 -t 99999"), 2, "",
               "-t: unknown encoding \"99999\" (-l lists all; --help tells more)");
  expectFailed(run("-f shfit_jis"), 2, "",
               "-f: unknown encoding \"shfit_jis\": did you mean shift_jis? (-l lists all; --help "
               "tells more)");
  expectFailed(run("-f utf-8//LOSS"), 2, "",
               "-f: unknown suffix \"//LOSS\" (there are //IGNORE and //TRANSLIT; --help tells "
               "more)");
}

TEST_F(Command, SaysEachThingInOneLine) {
  expectFailed(
      run("-f 'utf\n8x' -t utf-8"), 2, "",
      R"(-f: unknown encoding "utf\x0A8x": did you mean utf-8? (-l lists all; --help tells more))");
  expectFailed(run("-f 'utf\n8' -t utf-16le", "\xFF"), 1, "",
               "standard input:1:1: byte 0: FF is no character in utf\\x0A8");
  expectFailed(run("-f utf-8 -t utf-8 'no\tsuch\x1B\x7F\r\nfile'"), 1, "",
               R"(no\x09such\x1B\x7F\x0D\x0Afile: No such file or directory)");
  expectFailed(run("-f utf-8 -t utf-8 -o 'no\n/out'"), 1, "",
               "no\\x0A/out: No such file or directory");
  EXPECT_THAT(run("'--no\nsuch'").err, MatchesRegex("qvconv: [^\n]+\n"));
}

TEST_F(Command, TakesTheEncodingOfTheLocaleForOneThatIsNotGiven) {
  const std::string inUtf8 = "LC_ALL=C.UTF-8 '" QVCONV_PATH "' ";
  expectConverted(runShell(inUtf8 + "-f 1252 >out; cat out", "\xE9"), "\xC3\xA9");
  expectConverted(runShell(inUtf8 + "-t 1252", "\xC3\xA9"), "\xE9");
  expectFailed(runShell("LC_ALL=C '" QVCONV_PATH "' -f 1252", "\xE9"), 1, "",
               "standard input:1:1: byte 0: U+00E9 has no place in ANSI_X3.4-1968");
}

TEST_F(Command, KnowsTheAnsiAndTheOemPageOfTheLocale) {
  const std::string command = "LC_ALL=C '" QVCONV_PATH "' ";
  expectConverted(runShell(command + "-f ansi -t oem", "\xE9"), "\x82");
  expectConverted(runShell(command + "-f OEM -t 65001", "\x82"), "\xC3\xA9");
}

// An empty value is what a script passes whose variable is not set; the next
// argument must not be taken for it.
TEST_F(Command, RefusesAnEmptyValue) {
  write("utf-8", "old");
  expectFailed(run("-f utf-8 --to= utf-8"), 2, "",
               "--to=: it has no value (write one behind the =; --help tells more)");
  expectFailed(run("--from= -t utf-8 utf-8"), 2, "",
               "--from=: it has no value (write one behind the =; --help tells more)");
  expectFailed(run("-f utf-8 -t utf-8 --output= utf-8", "new"), 2, "",
               "--output=: it has no value (write one behind the =; --help tells more)");
  expectFailed(run("-f '' -t utf-8 utf-8"), 2, "", "-f: its value is empty (--help tells more)");
  expectFailed(run("-f utf-8 --to '' utf-8"), 2, "", "-t: its value is empty (--help tells more)");
  expectFailed(run("-f utf-8 -t utf-8 -o ''", "new"), 2, "",
               "-o: its value is empty (--help tells more)");
  EXPECT_EQ(read("utf-8"), "old");
}

TEST_F(Command, ReadsAFileThatIsCalledLikeAnOption) {
  write("--to=", "a");
  expectConverted(run("-f utf-8 -t utf-8 -- --to="), "a");
}

TEST_F(Command, NamesTheOptionAndTheRemedyForEachWrongUse) {
  const auto expectRefused = [&](const std::string& arguments, const std::string& line) {
    expectFailed(run(arguments), 2, "", line + "; --help tells more)");
  };
  expectRefused("--nonesuch", "--nonesuch: unknown option (a file of that name goes behind --");
  expectRefused("--form-code=utf-8",
                "--form-code: unknown option: did you mean --from-code? (a file of that name goes "
                "behind --");
  expectRefused("-x", "-x: unknown option (a file of that name goes behind --");
  expectRefused("-f", "--from-code: its value is missing (write one behind it");
  expectRefused("-f utf-8 -o", "--output: its value is missing (write one behind it");
  expectRefused("-f a -f b -t c", "--from-code: it is given more than once (once is enough");
  expectRefused("--quiet=3", "-q: it takes no value (leave \"3\" out");
  expectRefused("--on-error=dorp",
                "--on-error: \"dorp\" is not known: did you mean drop? (one of stop, drop, "
                "substitute, escape, pass, reconvert");
  expectRefused("--escape=html", "--escape: \"html\" is not known (one of c, xml");
  expectRefused("--bom=", "--bom=: it has no value (write one behind the =");
  expectRefused("-l --version", "-V: cannot go with -l (use one of them");
  expectRefused("--on-error=reconvert",
                "--reconvert-to: missing, so nothing can be reconverted (name an encoding");
  expectRefused("-c --reconvert-to 1252",
                "--reconvert-to: nothing is reconverted (add --on-error=reconvert");
  expectRefused("-c --substitute x",
                "--substitute: nothing is substituted (add --on-error=substitute");
  expectRefused(
      "-f utf-8 -t 1252 --substitute '\xE6\x97\xA5'",
      "--substitute: 1252 has no place for it (choose a text in UTF-8 that it has a place "
      "for");
  expectRefused("-f utf-8 -t utf-16 --on-malformed=pass",
                "the action pass: the bytes of utf-8 cannot be passed to utf-16 (choose another "
                "action");
  expectRefused("-f 1256 -t utf-8 --visual-order",
                "--visual-order: only 10004 is known in visual order (use -f 10004");
}

TEST_F(Command, TouchesNoFileWhenUsedWrongly) {
  write("out", "old");
  EXPECT_EQ(run("-f nonesuch -t utf-8 -o out", "new").status, 2);
  EXPECT_EQ(read("out"), "old");
}

TEST(Help, NamesEveryOptionAndHasAnExampleForEachGroup) {
  const std::string help = qvconv::helpText();
  for (const qvconv::OptionRow& row : qvconv::optionRows()) {
    EXPECT_THAT(help, HasSubstr(std::string(qvconv::shortName(row)))) << row.names;
    EXPECT_THAT(help, HasSubstr(std::string(row.help))) << row.names;
  }
  for (const qvconv::OptionHeading& heading : qvconv::optionHeadings()) {
    EXPECT_THAT(help, HasSubstr("Example: " + std::string(heading.example)));
  }
}

TEST(ManualPage, TellsOfEveryOption) {
  std::ifstream file(QUORVEL_DOCS_DIR "/qvconv.1");
  std::string page{std::istreambuf_iterator<char>(file), {}};
  page.erase(std::remove(page.begin(), page.end(), '\\'), page.end());
  for (const std::string_view name : qvconv::allOptionNames()) {
    const std::string pattern =
        "\\.(TP|BR|B)[^\n]*\n?[^\n]*" + std::string(name == "-?" ? "-\\?" : name) + "[ \n]";
    EXPECT_TRUE(std::regex_search(page, std::regex(pattern))) << name;
  }
}

TEST(Help, FitsOnATerminal) {
  std::istringstream help(qvconv::helpText());
  for (std::string line; std::getline(help, line);) EXPECT_LE(line.size(), 100U) << line;
}

TEST(Help, ShowsExamplesWithOptionsThatThereAre) {
  for (const qvconv::OptionHeading& heading : qvconv::optionHeadings()) {
    std::istringstream words{std::string(heading.example)};
    std::vector<std::string> arguments;
    for (std::string word; words >> word;) arguments.push_back(word);
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    EXPECT_NO_THROW(qvconv::readOptions(static_cast<int>(argv.size()), argv.data()))
        << heading.example;
  }
}

TEST_F(Command, TellsItsVersionAndUse) {
  EXPECT_THAT(run("--version").out, MatchesRegex("qvconv [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  const Finished help = run("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.out, qvconv::helpText());
  EXPECT_EQ(run("-V").out, run("--version").out);
  for (const char* name : {"-h", "'-?'"}) EXPECT_EQ(run(name).out, help.out);
}

}  // namespace
