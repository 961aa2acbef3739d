// Signals, pipes that nobody reads on, and disks that are full.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/helpers/Command.h"
#include "tests/helpers/Seed.h"

namespace {

using quorvel_test::Command;
using quorvel_test::Finished;

class Interrupts : public Command {
 protected:
  // Starts the command in the test's directory, with nothing to say.
  pid_t start(const std::vector<std::string>& arguments) const {
    const pid_t child = ::fork();
    if (child != 0) return child;
    std::vector<char*> argv = {const_cast<char*>("qvconv")};
    for (const std::string& argument : arguments)
      argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const int null = ::open("/dev/null", O_RDWR);
    for (const int standard : {0, 1, 2}) ::dup2(null, standard);
    if (::chdir(path(".").c_str()) == 0) ::execv(QVCONV_PATH, argv.data());
    ::_exit(99);
  }

  // How it ended: its status, or the negative number of a signal.
  static int end(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }

  // Interrupts the command after a random time, again and again, until it has both been
  // interrupted and come to its end; `isSound` looks at what there is each time.
  template <typename Prepare, typename IsSound>
  void tryAtRandomMoments(int signal, const std::vector<std::string>& arguments,
                          const Prepare& prepare, const IsSound& isSound) const {
    quorvel::test_seed::Random random(static_cast<unsigned int>(4711 + signal));
    int interrupted = 0;
    int finished = 0;
    unsigned int longest = 20000;
    for (int round = 0; round < 300 && (interrupted < 12 || finished < 2); ++round) {
      prepare();
      const pid_t child = start(arguments);
      std::this_thread::sleep_for(std::chrono::microseconds(random() % longest));
      ::kill(child, signal);
      const int status = end(child);
      ASSERT_TRUE(status == -signal || status == 0) << status;
      ASSERT_TRUE(isSound(status == 0)) << "round " << round << ", status " << status;
      status == 0 ? ++finished : ++interrupted;
      if (interrupted > 3 * finished + 5) longest *= 2;
    }
    EXPECT_GE(interrupted, 12);
    EXPECT_GE(finished, 2);
  }
};

TEST_F(Interrupts, LeaveTheOldOutputOrTheNewOne) {
  const std::string text(400000, '\xE9');
  std::string converted;
  for (std::size_t i = 0; i < text.size(); ++i) converted += "\xC3\xA9";
  write("in", text);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    tryAtRandomMoments(
        signal, {"-f", "1252", "-t", "utf-8", "-o", "out", "in"}, [&] { write("out", "old"); },
        [&](bool isWhole) {
          const std::string out = read("out");
          return (out == converted || (!isWhole && out == "old")) && fileCount() == 2;
        });
  }
}

TEST_F(Interrupts, LeaveEachFileOldOrNewWithSeveralJobs) {
  std::vector<std::string> arguments = {"-f", "1252", "-t", "utf-8", "--jobs", "4", "--in-place"};
  const int count = 40;
  for (int i = 0; i < count; ++i) arguments.push_back("file" + std::to_string(i));
  const std::string text(20000, '\xE9');
  tryAtRandomMoments(
      SIGINT, arguments,
      [&] {
        for (int i = 0; i < count; ++i) write("file" + std::to_string(i), text);
      },
      [&](bool isWhole) {
        for (int i = 0; i < count; ++i) {
          const std::string found = read("file" + std::to_string(i));
          if (found.size() != 40000 && (isWhole || found != text)) return false;
        }
        return fileCount() == static_cast<std::size_t>(count);
      });
}

TEST_F(Interrupts, DoNotReachACommandThatIgnoresThem) {
  write("in", std::string(2000000, 'x'));
  const Finished result =
      run("--version >/dev/null; trap '' HUP; (sleep 0.05; kill -HUP $$) & exec '" QVCONV_PATH
          "' -f 1252 -t utf-16le -o out in; wait");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(read("out").size(), 4000000U);
}

TEST_F(Interrupts, EndTheCommandWhenNobodyReadsOn) {
  const Finished result = run("--version >/dev/null; (yes | '" QVCONV_PATH
                              "' -f utf-8 -t utf-16le; echo $? >status) | head -c 6");
  EXPECT_EQ(result.out, std::string("y\0\n\0y\0", 6));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(read("status"), std::to_string(128 + SIGPIPE) + "\n");
}

TEST_F(Interrupts, AreNotNeededForOutputToAppear) {
  // Each line has to come out before the next goes in.
  const Finished result = run(
      "--version >/dev/null; mkfifo to; '" QVCONV_PATH
      "' -f 1252 -t utf-8 <to | (exec 3>to; for i in 1 2 3; do echo \"line $i\" >&3; read -r line; "
      "echo \"$line\"; done)");
  EXPECT_EQ(result.out, "line 1\nline 2\nline 3\n");
}

}  // namespace
