// What the command tells without converting: of encodings, and of what files are in.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "cli/Chart.h"
#include "cli/Information.h"
#include "cli/Listing.h"
#include "tests/helpers/Command.h"

namespace {

using quorvel::text::Encoding;
using quorvel_test::Command;
using quorvel_test::Finished;
using qvconv::Colours;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST_F(Command, ListsTheEncodingsByFamily) {
  expectConverted(run("-l"), qvconv::listByFamily());
  expectConverted(run("--list"), qvconv::listByFamily());
  EXPECT_THAT(run("-l").out, StartsWith("Unicode\n   1200  utf-16  "));
}

TEST_F(Command, ListsTheEncodingsForPrograms) {
  expectConverted(run("-l --json"), qvconv::listAsJson());
  EXPECT_THAT(run("-l --json").out, StartsWith(R"({"number":37,"name":"IBM037",)"));
}

TEST_F(Command, RefusesWhatListingsHaveNoUseFor) {
  expectFailed(run("-l 932"), 2, "", "FILE: no file is read (leave it out; --help tells more)");
}

TEST_F(Command, FailsWhenAListingCannotBeWritten) {
  expectFailed(run("-l > /dev/full"), 1, "", "standard output: No space left on device");
}

TEST_F(Command, TellsOfAnEncoding) {
  expectConverted(run("--info koi8-r"), qvconv::informationOn(*Encoding::find(20866)));
  EXPECT_THAT(run("--info=932").out, StartsWith("932  shift_jis  Japanese (Shift_JIS)\n\nfamily "));
}

TEST_F(Command, RefusesToTellOfWhatItDoesNotKnow) {
  expectFailed(run("--info klingon"), 2, "",
               "--info: unknown encoding \"klingon\" (-l lists all; --help tells more)");
  expectFailed(run("--info"), 2, "",
               "--info: its value is missing (write one behind it; --help tells more)");
  expectFailed(run("--info ''"), 2, "",
               "--info: no encoding is named (-l lists all; --help tells more)");
  expectFailed(run("--info 932 letter.txt"), 2, "",
               "FILE: no file is read (leave it out; --help tells more)");
}

TEST_F(Command, DrawsCharts) {
  expectConverted(run("--chart 1252"), *qvconv::chartOf(*Encoding::find(1252), "", Colours::no));
  expectConverted(run("--chart=shift_jis:81"),
                  *qvconv::chartOf(*Encoding::find(932), "\x81", Colours::no));
  expectConverted(run("--chart 54936:813081"),
                  *qvconv::chartOf(*Encoding::find(54936), "\x81\x30\x81", Colours::no));
}

TEST_F(Command, ChartsAnEncodingWithAColonInItsName) {
  EXPECT_EQ(run("--chart ISO_8859-1:1987").out, run("--chart 28591").out);
}

TEST_F(Command, ChartsTheDifferencesOfTwoEncodings) {
  expectConverted(
      run("--chart 437,850"),
      qvconv::chartOfDifferences(*Encoding::find(437), *Encoding::find(850), Colours::no));
}

TEST_F(Command, RefusesChartsThatThereAreNone) {
  const auto expectRefused = [&](const std::string& chart, const std::string& line) {
    expectFailed(run("--chart " + chart), 2, "", "--chart: " + line + "; --help tells more)");
  };
  const std::string noChart = " (Unicode and ISO-2022 have none; --info tells of them";
  expectRefused("utf-8", "there is no chart of utf-8" + noChart);
  expectRefused("437,utf-16", "there is no chart of utf-16" + noChart);
  expectRefused("437,", "no encoding is named (-l lists all");
  expectRefused("nonesuch:81", "unknown encoding \"nonesuch\" (-l lists all");
  for (const std::string lead : {"8", "811", "8G", "+8", "0x81"}) {
    expectRefused("932:" + lead, '"' + lead +
                                     "\" is no lead (it is written as pairs of hexadecimal digits, "
                                     "as in 932:81");
  }
  for (const char* const request : {"932:41", "932:FF", "1252:81", "932:8140"}) {
    expectRefused(request,
                  "no code begins with this lead (the chart of the encoding shows what leads");
  }
}

// A terminal of script(1), which shows there what the command writes.
TEST_F(Command, ColoursChartsOnATerminalAlone) {
  const std::string chart = "'" QVCONV_PATH "' --chart 1252";
  const auto onTerminal = [&](const std::string& environment) {
    return runShell("script -qec \"" + environment + " " + chart + "\" /dev/null").out;
  };
  EXPECT_THAT(onTerminal("env -u NO_COLOR"), HasSubstr("\x1B[36m"));
  EXPECT_THAT(onTerminal("env NO_COLOR="), HasSubstr("\x1B[36m"));
  EXPECT_THAT(onTerminal("env NO_COLOR=1"), Not(HasSubstr("\x1B")));
  EXPECT_THAT(onTerminal("env NO_COLOR=1"), HasSubstr("1252  windows-1252"));
  EXPECT_THAT(runShell(chart).out, Not(HasSubstr("\x1B")));
}

// --- Files ------------------------------------------------------------------

TEST_F(Command, DetectsWhatFilesMayBeIn) {
  write("ascii", "plain");
  write("utf-8", "caf\u00E9");
  expectConverted(run("--detect ascii utf-8"),
                  "ascii\n  20127  us-ascii  no loss  US-ASCII (7-bit)\n"
                  "utf-8\n  65001  utf-8  no loss  Unicode (UTF-8)\n");
  expectConverted(run("--detect", "plain"),
                  "standard input\n  20127  us-ascii  no loss  US-ASCII (7-bit)\n");
}

TEST_F(Command, TellsTheLossesOfWhatAFileMayBeIn) {
  write("marked", "\xEF\xBB\xBF\xFF");
  expectConverted(run("--detect marked"), "marked\n  65001  utf-8  1 loss  Unicode (UTF-8)\n");
}

TEST_F(Command, DetectsForPrograms) {
  write("marked", "\xEF\xBB\xBF\xFF");
  expectConverted(run("--detect --json marked -", "a"),
                  R"({"file":"marked","candidates":[{"number":65001,"name":"utf-8","losses":1}]})"
                  "\n"
                  R"({"file":"-","candidates":[{"number":20127,"name":"us-ascii","losses":0}]})"
                  "\n");
}

TEST_F(Command, DetectsByABoundedBeginningWhereACharacterMayBeCut) {
  std::string text((1 << 20) - 1, 'a');
  text.replace(0, 2, "\u00E9");
  write("long", text + "\u00E9\xFF");
  const std::string out = "  65001  utf-8  no loss  Unicode (UTF-8)\n";
  expectConverted(run("--detect long"), "long\n" + out);
  expectConverted(runShell("cat long | '" QVCONV_PATH "' --detect"), "standard input\n" + out);
}

TEST_F(Command, GoesOnBehindAFileThatItCannotLookAt) {
  write("b", "plain");
  const std::string fits = run("--fits -f utf-8 b").out;
  expectFailed(run("--detect a b"), 1, "b\n  20127  us-ascii  no loss  US-ASCII (7-bit)\n",
               "a: No such file or directory");
  expectFailed(run("--fits -f utf-8 a b"), 1, fits, "a: No such file or directory");
}

TEST_F(Command, NamesFilesInOneLine) {
  write("a\nb", "plain");
  EXPECT_THAT(run("--detect 'a\nb'").out, StartsWith("a\\x0Ab\n  20127"));
  EXPECT_THAT(run("--fits -f utf-8 'a\nb'").out, StartsWith("a\\x0Ab: 5 different"));
  EXPECT_THAT(run("--detect --json 'a\nb'").out, StartsWith(R"({"file":"a\u000Ab",)"));
}

TEST_F(Command, ListsTheEncodingsThatHoldATextWhateverItIsIn) {
  write("koi8", "\xCE\xA6\xDE");
  write("utf-8", "\u043D\u0456\u0447");
  const auto linesBehindTheFirst = [](const std::string& text) {
    return text.substr(text.find('\n'));
  };
  const Finished inUtf8 = run("--fits -f utf-8 utf-8");
  EXPECT_EQ(inUtf8.status, 0);
  EXPECT_EQ(inUtf8.err, "");
  EXPECT_THAT(inUtf8.out, StartsWith("utf-8: 3 different characters\n\nUnicode\n"));
  EXPECT_THAT(inUtf8.out, HasSubstr("\n  1251  windows-1251  Cyrillic (Windows)\n"));
  EXPECT_THAT(inUtf8.out, Not(HasSubstr("koi8-r")));
  EXPECT_EQ(linesBehindTheFirst(run("--fits -f koi8-u koi8").out), linesBehindTheFirst(inUtf8.out));
  EXPECT_THAT(run("--fits -f utf-8 --json utf-8").out,
              StartsWith(R"({"file":"utf-8","characters":3,"encodings":[{"number":855,)"));
}

TEST_F(Command, FailsToFitWhatIsMalformed) {
  const Finished result = run("--fits -f utf-8", "a\xFF");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, StartsWith("standard input: 1 different character\n"));
  EXPECT_EQ(result.err,
            "qvconv: standard input: 1 malformed sequence left out (-f names its encoding; "
            "--detect looks for it)\n");
}

TEST_F(Command, LooksAtFilesInDirectoriesAndSeveralAtATime) {
  std::filesystem::create_directory(path("notes"));
  std::string out;
  for (const char name : {'a', 'b', 'c', 'd', 'e'}) {
    const std::string file = std::string("notes/") + name;
    write(file, "plain");
    out += file + "\n  20127  us-ascii  no loss  US-ASCII (7-bit)\n";
  }
  expectConverted(run("--detect -j 4 -r notes"), out);
}

TEST_F(Command, RefusesWhatLookingHasNoUseFor) {
  const auto expectRefused = [&](const std::string& arguments, const std::string& line) {
    expectFailed(run(arguments), 2, "", line + "; --help tells more)");
  };
  expectRefused("--detect -f utf-8",
                "-f: --detect is to find it (leave it out, or ask for --check");
  for (const std::string mode : {"--detect", "--fits"}) {
    expectRefused(mode + " -t utf-8", "-t: nothing is converted (leave it out, or ask for --check");
    expectRefused(mode + " -o out", "-o: nothing is converted (redirect standard output");
    expectRefused(mode + " --check", mode + ": cannot go with --check (use one of them");
  }
}

}  // namespace
