// What the command tells without converting: of encodings, and of what files are in.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "cli/Chart.h"
#include "cli/Information.h"
#include "cli/Listing.h"
#include "tests/helpers/Command.h"

namespace {

using quorvel::text::Encoding;
using quorvel_test::Command;
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

}  // namespace
