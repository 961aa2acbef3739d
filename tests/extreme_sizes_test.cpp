#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <span>
#include <string_view>

#include "tests/helpers/Conversion.h"
#include "tests/helpers/Memory.h"

// The sanitizers map more address space than the limit set here leaves.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUORVEL_TESTS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUORVEL_TESTS_SANITIZED 1
#endif
#endif

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;
using quorvel::test_memory::canMapGigabytes;

constexpr unsigned int kSizes[] = {0x80000000, 0x80000001, 0xFFFFFFFC,
                                   0xFFFFFFFD, 0xFFFFFFFE, 0xFFFFFFFF};

/// Four GiB of zero bytes that take no memory until they are written to.
class ZeroBytes {
 public:
  ZeroBytes()
      : m_bytes(mmap(nullptr, kLength, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
    if (m_bytes == MAP_FAILED) std::_Exit(77);
  }
  ~ZeroBytes() { munmap(m_bytes, kLength); }
  ZeroBytes(const ZeroBytes&) = delete;
  ZeroBytes& operator=(const ZeroBytes&) = delete;

  unsigned char* data() const { return static_cast<unsigned char*>(m_bytes); }

 private:
  static constexpr std::size_t kLength = static_cast<std::size_t>(0x100000000);

  void* m_bytes;
};

/// Leaves the process, which is a child of the test's, 4 MiB to grow by.
void limitMemory() {
  std::ifstream statm("/proc/self/statm");
  rlim_t pages = 0;
  statm >> pages;
  if (pages == 0) std::_Exit(77);
  const rlim_t most = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (4U << 20);
  const rlimit limit = {most, most};
  if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(77);
}

/// One pair of code pages, and what becomes of far too much text.
struct Attempt {
  int from;
  int to;
  bool result;
  bool hadError;
  bool mayWriteSome;  ///< what memory allowed stays in the output
};

bool isAsExpected(const Attempt& attempt, const unsigned char* data, unsigned int size) {
  NullLog log;
  DataBuffer out = bufferOf("'ab'");
  EncodingConvert converter;
  const bool result = converter.EncConvert(attempt.from, attempt.to, data, size, out, log);
  const bool outFits = attempt.mayWriteSome ? out.getSize() >= 2 : out.getSize() == 2;
  const bool isIntact = outFits && std::equal(out.getData2(), out.getData2() + 2, "ab");
  if (result == attempt.result && converter.m_hadError == attempt.hadError && isIntact) return true;
  std::fprintf(stderr, "%d to %d of %u bytes: result %d, error flag %d, %u bytes of output\n",
               attempt.from, attempt.to, size, result, converter.m_hadError, out.getSize());
  return false;
}

template <std::size_t n>
[[noreturn]] void attemptAll(const Attempt (&attempts)[n], std::string_view beginning,
                             std::span<const unsigned int> sizes = kSizes) {
  const ZeroBytes zeros;
  std::copy(beginning.begin(), beginning.end(), zeros.data());
  limitMemory();
  bool ok = true;
  for (const Attempt& attempt : attempts) {
    for (unsigned int size : sizes) ok = isAsExpected(attempt, zeros.data(), size) && ok;
  }
  std::_Exit(ok ? 0 : 1);
}

class ExtremeSizes : public testing::Test {
 protected:
  void SetUp() override {
#ifdef QUORVEL_TESTS_SANITIZED
    GTEST_SKIP() << "the sanitizers need more address space";
#endif
    if (!canMapGigabytes) GTEST_SKIP() << "a 32-bit program has not the addresses";
  }
};

using ExtremeSizesDeathTest = ExtremeSizes;

TEST_F(ExtremeSizesDeathTest, FailWholeWhereTheSourceHasToBeCopied) {
  const Attempt attempts[] = {
      {1201, 65001, false, true, false},    {1201, 1200, false, true, false},
      {1201, 12000, false, true, false},    {12001, 65001, false, true, false},
      {12001, 1200, false, true, false},    {65006, 12000, false, true, false},
      {10004, 65001, false, true, false},   {10004, kNoTable, false, true, false},
      {kNoTable, 1200, false, true, false}, {kNoTable, 65001, false, true, false},
  };
  EXPECT_EXIT(attemptAll(attempts, ""), testing::ExitedWithCode(0), "");
}

TEST_F(ExtremeSizesDeathTest, FailForIso2022SourcesThatAnIntCannotCount) {
  const Attempt attempts[] = {
      {50220, 932, false, true, false},   {50221, 65001, false, true, false},
      {50222, 50220, false, true, false}, {50225, 949, false, true, false},
      {50225, 1200, false, true, false},
  };
  EXPECT_EXIT(attemptAll(attempts, ""), testing::ExitedWithCode(0), "");
}

TEST_F(ExtremeSizesDeathTest, FailWithWhatWasWrittenWhereTheTextIsConvertedInPieces) {
  const Attempt attempts[] = {
      {65001, 12000, false, true, true}, {55000, 65001, false, true, true},
      {12000, 65001, false, true, true}, {65001, 55000, false, true, true},
      {55000, 1200, false, true, false},
  };
  EXPECT_EXIT(attemptAll(attempts, ""), testing::ExitedWithCode(0), "");
}

// All of the text is looked at, which takes a while where nothing is optimised.
TEST_F(ExtremeSizesDeathTest, FailWithNothingWrittenWhereAsciiInUtf8IsTooMuchUtf16) {
  const Attempt attempts[] = {
      {65001, 1200, false, true, false},
      {65001, 65000, false, true, false},
      {65001, kNoTable, false, true, false},
  };
  constexpr unsigned int sizes[] = {0x80000000, 0xFFFFFFFF};
  EXPECT_EXIT(attemptAll(attempts, "", sizes), testing::ExitedWithCode(0), "");
}

// Every byte of 437 becomes a unit, so its text need not be looked at.
TEST_F(ExtremeSizesDeathTest, FailWithNothingWrittenWhereTheTextIsSureToBecomeTooMuchUtf16) {
  const Attempt attempts[] = {
      {437, 1200, false, true, false},
      {437, 65001, false, true, false},
      {437, 850, false, true, false},
      {437, 1201, true, true, false},
  };
  NullLog log;
  EncodingConvert::ensureHashToUnicode(437, log);
  EXPECT_EXIT(attemptAll(attempts, ""), testing::ExitedWithCode(0), "");
}

TEST_F(ExtremeSizesDeathTest, CopyNothingBetweenEqualPagesAndSayNothing) {
  const Attempt attempts[] = {
      {1252, 1252, true, false, false}, {5, 5, true, false, false}, {0, 0, true, false, false}};
  EXPECT_EXIT(attemptAll(attempts, ""), testing::ExitedWithCode(0), "");
}

TEST_F(ExtremeSizesDeathTest, RefuseADocumentThatCannotBeCopied) {
  const Attempt attempts[] = {{1252, 65001, false, false, false}, {20, 7, false, false, false}};
  EXPECT_EXIT(attemptAll(attempts, "%PDF-1.4"), testing::ExitedWithCode(0), "");
}

}  // namespace
