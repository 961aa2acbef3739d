#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "quorvel/base/BlockRunner.hpp"
#include "tests/helpers/Memory.h"

namespace quorvel {
namespace {

using test_memory::MemoryLimit;
using test_memory::RepeatedBytes;

// What a text can become at most is more than 32 bits can count.
static_assert(mostOutput(0xFFFFFFFFU, 8) == 0x400000000U);
static_assert(Density{1, 3}.expected(0x80000000U) == 0x198000000U);

constexpr unsigned int mebibyte = 1U << 20;
constexpr unsigned int textLength = 60 * mebibyte;

/// Copies its block and notes where the output has moved to.
struct CopyLoop {
  const DataBuffer& out;
  int& moves;
  const unsigned char*& at;

  Progress operator()(const unsigned char* in, const unsigned char* end,
                      unsigned char* room) const {
    const unsigned char* start = room - out.getSize();
    if (start != at) ++moves;
    at = start;
    const auto length = static_cast<std::size_t>(end - in);
    std::memcpy(room, in, length);
    return {end, room + length, quorvel::Stop::end};
  }
};

struct Copied {
  bool isWhole;
  unsigned int size;
  int moves;
};

Copied copyUnder(std::size_t memory) {
  const RepeatedBytes text("0123456789ABCDEF", textLength);
  DataBuffer out;
  Copied copied{};
  const unsigned char* at = nullptr;
  const MemoryLimit limit(memory);
  const unsigned char* end = text.data() + textLength;
  copied.isWhole = runInBlocks(CopyLoop{out, copied.moves, at}, text.data(), end, 2, out) == end;
  copied.size = out.getSize();
  return copied;
}

class BlocksWithLittleMemory : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override {
    if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  }
};

// Each move copies all that there is: moving at each block takes quadratic time.
TEST_P(BlocksWithLittleMemory, MoveTheirOutputAFewTimesOnly) {
  const std::size_t memory = GetParam() * mebibyte;
  const Copied copied = copyUnder(memory);
  EXPECT_LE(copied.moves, 40);
  // While it moves the output needs room twice; the rest is the allocator's.
  EXPECT_TRUE(copied.isWhole || copied.size >= memory / 4) << copied.size;
}

INSTANTIATE_TEST_SUITE_P(Mebibytes, BlocksWithLittleMemory,
                         testing::Values(8, 16, 24, 32, 40, 48, 56, 62, 64, 66, 80, 128));

}  // namespace
}  // namespace quorvel
