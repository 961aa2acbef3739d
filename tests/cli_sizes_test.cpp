// Texts of any size in constant memory.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/helpers/Command.h"

namespace {

using quorvel_test::Command;
using quorvel_test::Finished;

#ifdef __SANITIZE_ADDRESS__
constexpr bool isSanitized = true;
#elif defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

class Sizes : public Command {
 protected:
  // The most memory that a command line and what it starts take, in KiB.
  long memoryOf(const std::string& line) const {
    const pid_t child = ::fork();
    if (child == 0) {
      if (::chdir(path(".").c_str()) != 0) ::_exit(99);
      ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
      ::_exit(99);
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    EXPECT_EQ(status, 0) << line;
    return usage.ru_maxrss;
  }
};

constexpr long mostMemory = 16 * 1024;

TEST_F(Sizes, DoNotMatterForTheMemory) {
  if (isSanitized) GTEST_SKIP() << "the sanitizers take memory of their own";
  write("large", "");
  std::filesystem::resize_file(path("large"), 64U << 20);
  const std::string command = "'" QVCONV_PATH "' ";
  EXPECT_LT(memoryOf(command + "-f 932 -t utf-16le large >/dev/null"), mostMemory);
  EXPECT_LT(memoryOf("cat large | " + command + "-f 950 -t iso-2022-jp >/dev/null"), mostMemory);
  EXPECT_LT(memoryOf(command + "--check -f utf-32le -t gb18030 large"), mostMemory);
  EXPECT_LT(memoryOf(command + "-j 16 --output-dir out -f 949 -t 936 large"), mostMemory);
}

TEST_F(Sizes, BeyondFourGibibytesGoThroughAPipe) {
#ifndef NDEBUG
  GTEST_SKIP() << "takes a minute without optimisation";
#endif
  if (isSanitized) GTEST_SKIP() << "takes minutes, and memory of its own";
  write("large", "");
  std::filesystem::resize_file(path("large"), 5ULL << 30);
  const Finished result = runShell("(cat large; printf 'a\\n\\202\\240\\205\\100') | '" QVCONV_PATH
                                   "' -f 932 -t utf-8 | tail -c 5; '" QVCONV_PATH
                                   "' -f utf-16le -t utf-8 <large | wc -c");
  EXPECT_EQ(result.out,
            "a\n\xE3\x81\x82"
            "2684354560\n");
  EXPECT_EQ(result.err, "qvconv: standard input:2:2: byte 5368709124: 85 is no character in 932\n");
  rusage usage{};
  ::getrusage(RUSAGE_CHILDREN, &usage);
  EXPECT_LT(usage.ru_maxrss, mostMemory);
}

}  // namespace
