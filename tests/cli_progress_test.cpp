// The progress bar: what it says, and when it is there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "cli/Progress.h"
#include "tests/helpers/Command.h"

namespace {

using quorvel_test::Command;
using quorvel_test::Finished;
using qvconv::Progress;
using qvconv::progressLine;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::uint64_t gibibyte = 1ULL << 30;

TEST(ProgressLine, TellsBytesRateTimeLeftAndFiles) {
  EXPECT_EQ(progressLine({gibibyte / 2, 2 * gibibyte, 3, 12, 4}, 79),
            "[###............]  25%  512 MiB of 2.0 GiB  128 MiB/s  0:12 left  3 of 12 files");
}

TEST(ProgressLine, IsNeverWiderThanTheTerminal) {
  const Progress progress{123456789, 9876543210, 1234, 56789, 7};
  for (std::size_t width = 0; width < 300; ++width) {
    EXPECT_LE(progressLine(progress, width).size(), width);
  }
}

TEST(ProgressLine, LeavesOutWhatThereIsNoRoomFor) {
  const Progress progress{gibibyte / 2, 2 * gibibyte, 3, 12, 4};
  EXPECT_EQ(progressLine(progress, 40), "25%  512 MiB of 2.0 GiB  128 MiB/s");
  EXPECT_EQ(progressLine(progress, 3), "25%");
  EXPECT_EQ(progressLine(progress, 0), "");
}

TEST(ProgressLine, HasNoBarWhereTheEndIsNotKnown) {
  EXPECT_EQ(progressLine({1536, {}, 0, 1, 1}, 79), "1.5 KiB  1.5 KiB/s");
  EXPECT_EQ(progressLine({0, {}, 0, 1, 0}, 79), "0 bytes");
}

TEST(ProgressLine, StaysWithinBoundsWhenAFileHasGrown) {
  EXPECT_THAT(progressLine({200, 100, 0, 1, 1}, 79),
              EndsWith("#]  100%  200 bytes of 100 bytes  200 bytes/s  0:00 left"));
  EXPECT_THAT(progressLine({0, 0, 0, 1, 1}, 79), HasSubstr("0%"));
}

TEST(ProgressLine, CountsHours) {
  EXPECT_THAT(progressLine({1, 7300, 0, 1, 1}, 79), HasSubstr("2:01:39 left"));
  EXPECT_THAT(progressLine({1, 1ULL << 60, 0, 1, 1}, 79), HasSubstr("long left"));
}

class ProgressBar : public Command {
 protected:
  // What the command writes to a terminal that is its standard error.
  std::string onTerminal(const std::string& commands) const {
    int terminal = -1;
    const winsize size{24, 60, 0, 0};
    const pid_t child = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
      const std::string line = "cd '" + path(".") + "'; " + commands;
      ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
      ::_exit(99);
    }
    std::string seen;
    char block[4096];
    for (ssize_t count = 0; (count = ::read(terminal, block, sizeof block)) > 0;) {
      seen.append(block, static_cast<std::size_t>(count));
    }
    ::close(terminal);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return seen;
  }
};

TEST_F(ProgressBar, IsShownWhenAskedFor) {
  write("a", "a");
  const Finished result = run("--progress=always -f utf-8 -t utf-16le a");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, StartsWith("\r["));
  EXPECT_THAT(result.err, HasSubstr("100%  1 bytes of 1 bytes"));
  EXPECT_THAT(result.err, EndsWith("\n"));
}

TEST_F(ProgressBar, IsNotShownElsewhereThanOnATerminal) {
  expectConverted(runShell("(sleep 1.2; echo a) | '" QVCONV_PATH "' -f utf-8 -t utf-8"), "a\n");
}

TEST_F(ProgressBar, IsShownOnATerminalWhenWorkTakesLonger) {
  const std::string feed = "(echo a; sleep 1.2; echo b) | '" QVCONV_PATH "' ";
  const std::string seen = onTerminal(feed + "-f utf-8 -t utf-8 -o out");
  EXPECT_THAT(seen, HasSubstr("\r4 bytes"));
  EXPECT_THAT(seen, EndsWith("\r\x1B[K"));
  EXPECT_EQ(read("out"), "a\nb\n");
  EXPECT_EQ(onTerminal(feed + "-f utf-8 -t utf-8 -o out --progress=never"), "");
}

TEST_F(ProgressBar, IsNotShownForWorkThatIsDoneAtOnce) {
  write("a", "a");
  EXPECT_EQ(onTerminal("'" QVCONV_PATH "' -f utf-8 -t utf-8 -o out a"), "");
}

TEST_F(ProgressBar, StandsNotInTheMidstOfTheText) {
  EXPECT_EQ(onTerminal("(echo a; sleep 1.2; echo b) | '" QVCONV_PATH "' -f utf-8 -t utf-8"),
            "a\r\nb\r\n");
}

TEST_F(ProgressBar, MakesRoomForMessages) {
  write("bad", "\xFF");
  write("good", "good");
  const Finished result = run("--progress=always --output-dir out -f utf-8 -t utf-8 good bad");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              HasSubstr("\r\x1B[Kqvconv: bad:1:1: byte 0: FF is no character in utf-8\n"));
}

}  // namespace
