#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/qvHelpers.h"
#include "tests/helpers/Memory.h"

namespace quorvel {
namespace {

using test_memory::GuardedBytes;

const char* characters(const unsigned char* bytes) { return reinterpret_cast<const char*>(bytes); }

int sign(int value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

TEST(StringLength, CountsUpToTheNul) {
  EXPECT_EQ(qvStrLen(""), 0U);
  EXPECT_EQ(qvStrLen("a"), 1U);
  EXPECT_EQ(qvStrLen("YXWArA=="), 8U);
  EXPECT_EQ(qvStrLen("ab\0cd"), 2U);
  EXPECT_EQ(qvStrLen("\xE9\x80\xFF"), 3U);
}

TEST(StringLength, OfNullIsZero) { EXPECT_EQ(qvStrLen(nullptr), 0U); }

TEST(StringLength, IsFoundWithoutReadingOn) {
  GuardedBytes guarded;
  EXPECT_EQ(qvStrLen(characters(guarded.place(std::string("abc\0", 4)))), 3U);
}

TEST(StringLength, IsTheLargestNumberForALongerText) {
  if (!test_memory::canReadGigabytes) GTEST_SKIP() << "gigabytes take too long here";
  // The block that repeats has no NUL; the one behind the text does.
  constexpr auto size = static_cast<std::size_t>(0x100000000U);
  const test_memory::RepeatedBytes text("abcd", size + 1);
  void* tail =
      mmap(text.data() + size, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
  ASSERT_NE(tail, MAP_FAILED);
  EXPECT_EQ(qvStrLen(characters(text.data())), 0xFFFFFFFFU);
  EXPECT_EQ(qvStrLen(characters(text.data() + 1)), 0xFFFFFFFFU);
  EXPECT_EQ(qvStrLen(characters(text.data() + 2)), 0xFFFFFFFEU);

  StringBuffer buffer;
  buffer.append("a");
  EXPECT_FALSE(buffer.append(characters(text.data())));
  EXPECT_STREQ(buffer.getString(), "a");
}

void expectOrder(const char* a, const char* b, int n, int expected) {
  EXPECT_EQ(sign(qvStrNCmp(a, b, n)), expected) << a << " and " << b << ", " << n;
  EXPECT_EQ(sign(qvStrNCmp(b, a, n)), -expected) << b << " and " << a << ", " << n;
}

TEST(StringComparison, FindsTheMarkOfADocument) {
  expectOrder("%PDF-1.7\n%\xE2", "%PDF-1", 6, 0);
  expectOrder("%PDF-1", "%PDF-1", 6, 0);
}

TEST(StringComparison, FindsADifferenceInAnyOfTheBytes) {
  for (std::size_t i = 0; i < 6; ++i) {
    std::string other = "%PDF-1";
    ++other[i];
    expectOrder(other.c_str(), "%PDF-1", 6, 1);
    other[i] = '\xE9';
    expectOrder(other.c_str(), "%PDF-1", 6, 1);
    other[i] = '\x01';
    expectOrder(other.c_str(), "%PDF-1", 6, -1);
  }
}

TEST(StringComparison, LooksAtTheFirstBytesOnly) {
  expectOrder("abcX", "abcY", 3, 0);
  expectOrder("abcX", "abcY", 4, -1);
  expectOrder("a", "b", 0, 0);
  expectOrder("a", "b", -1, 0);
  expectOrder("a", "b", -2147483647 - 1, 0);
  EXPECT_EQ(qvStrNCmp(nullptr, nullptr, 0), 0);
}

TEST(StringComparison, ComparesUnsignedBytes) { expectOrder("\x80", "\x7F", 1, 1); }

TEST(StringComparison, EndsAtANulInBoth) {
  expectOrder("ab\0x", "ab\0y", 4, 0);
  expectOrder("ab", "abc", 3, -1);
  expectOrder("", "a", 1, -1);
}

TEST(StringComparison, NeverReadsOn) {
  GuardedBytes guarded;
  EXPECT_EQ(qvStrNCmp(characters(guarded.place("%PDF-1")), "%PDF-1x", 6), 0);
  EXPECT_EQ(qvStrNCmp(characters(guarded.place(std::string("ab\0", 3))), "ab", 6), 0);
}

TEST(HostByteOrder, IsThatOfItsMemory) {
  const unsigned short one = 1;
  unsigned char first = 0;
  std::memcpy(&first, &one, 1);
  EXPECT_EQ(qvIsLittleEndian(), first == 1);
  EXPECT_EQ(qvIsBigEndian(), first == 0);
}

// The blocks are written, so that the address sanitizer sees one too small.
TEST(NewBlock, HoldsAsManyBytesAsAskedFor) {
  for (const unsigned int n : {0U, 1U, 7U, 64U, 100000U}) {
    unsigned char* block = qvNewUnsignedChar(n);
    ASSERT_NE(block, nullptr) << n;
    std::memset(block, 0xA5, n);
    delete[] block;
  }
}

TEST(NewBlock, IsNullWithoutMemory) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  const test_memory::MemoryLimit limit(16u << 20);
  EXPECT_EQ(qvNewUnsignedChar(0x80000000U), nullptr);
  EXPECT_EQ(qvNewUnsignedChar(0xFFFFFFFFU), nullptr);
}

}  // namespace
}  // namespace quorvel
