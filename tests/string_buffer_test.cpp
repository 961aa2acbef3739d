#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "quorvel/base/StringBuffer.h"
#include "tests/helpers/Memory.h"

namespace quorvel {
namespace {

using test_memory::GuardedBytes;

// The content by its size, with a check that a NUL stands behind it.
std::string textOf(const StringBuffer& buffer) {
  const char* text = buffer.getString();
  EXPECT_EQ(text[buffer.getSize()], '\0');
  return {text, buffer.getSize()};
}

TEST(StringBuffer, IsTheEmptyStringAtFirst) {
  const StringBuffer buffer;
  EXPECT_STREQ(buffer.getString(), "");
  EXPECT_EQ(buffer.getSize(), 0U);
}

TEST(StringBuffer, AppendsText) {
  StringBuffer buffer;
  EXPECT_TRUE(buffer.append("utf"));
  EXPECT_TRUE(buffer.append(""));
  EXPECT_TRUE(buffer.append("-8"));
  EXPECT_EQ(textOf(buffer), "utf-8");
}

TEST(StringBuffer, AppendsNothingForNull) {
  StringBuffer buffer;
  EXPECT_TRUE(buffer.append(nullptr));
  EXPECT_STREQ(buffer.getString(), "");
  EXPECT_TRUE(buffer.append("a"));
  EXPECT_TRUE(buffer.append(nullptr));
  EXPECT_TRUE(buffer.appendN(nullptr, 0));
  EXPECT_EQ(textOf(buffer), "a");
}

TEST(StringBuffer, AppendsExactlyTheCountGiven) {
  GuardedBytes guarded;
  StringBuffer buffer;
  const auto* text = reinterpret_cast<const char*>(guarded.place("abc"));
  EXPECT_TRUE(buffer.appendN(text, 3));
  EXPECT_TRUE(buffer.appendN(text, 0));
  EXPECT_TRUE(buffer.appendN(text, 2));
  EXPECT_EQ(textOf(buffer), "abcab");
}

TEST(StringBuffer, HoldsANulLikeAnyByte) {
  StringBuffer buffer;
  EXPECT_TRUE(buffer.appendN("a\0b", 3));
  EXPECT_TRUE(buffer.append("c"));
  EXPECT_EQ(textOf(buffer), std::string("a\0bc", 4));
  EXPECT_STREQ(buffer.getString(), "a");
}

TEST(StringBuffer, ReadsUpToTheNulOnly) {
  GuardedBytes guarded;
  StringBuffer buffer;
  EXPECT_TRUE(
      buffer.append(reinterpret_cast<const char*>(guarded.place(std::string("koi8-r\0", 7)))));
  EXPECT_EQ(textOf(buffer), "koi8-r");
}

TEST(StringBuffer, IsClosedByANulAtEveryLength) {
  StringBuffer buffer;
  std::string model;
  for (int i = 0; i < 600; ++i) {
    const char letter[] = {static_cast<char>('a' + i % 26), '\0'};
    ASSERT_TRUE(buffer.append(letter));
    model += letter;
    ASSERT_EQ(textOf(buffer), model);
    ASSERT_STREQ(buffer.getString(), model.c_str());
  }
}

TEST(StringBuffer, AppendsPiecesOfAnyLength) {
  for (unsigned int length = 0; length <= 400; ++length) {
    StringBuffer buffer;
    const std::string piece(length, 'x');
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(buffer.append(piece.c_str()));
    ASSERT_EQ(textOf(buffer), piece + piece + piece);
  }
}

TEST(StringBuffer, KeepsItsStorageWhenCleared) {
  StringBuffer buffer;
  buffer.append("a long name");
  const char* storage = buffer.getString();
  buffer.weakClear();
  EXPECT_STREQ(buffer.getString(), "");
  EXPECT_EQ(buffer.getSize(), 0U);
  buffer.append("short");
  EXPECT_EQ(buffer.getString(), storage);
  EXPECT_EQ(textOf(buffer), "short");
  EXPECT_STREQ(buffer.getString(), "short");
}

TEST(StringBuffer, MovesItsText) {
  StringBuffer from;
  from.append("abc");
  StringBuffer to(std::move(from));
  EXPECT_EQ(textOf(to), "abc");
  to.append("d");
  EXPECT_EQ(textOf(to), "abcd");
}

// The sum of both lengths would wrap, or leave no room for the NUL.
TEST(StringBufferSizes, DoNotWrap) {
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const test_memory::Mapping untouchable(0xFFFFFFFFU);
  const auto* text = reinterpret_cast<const char*>(untouchable.data());
  StringBuffer buffer;
  buffer.append("abc");
  EXPECT_FALSE(buffer.appendN(text, 0xFFFFFFFFU));
  EXPECT_FALSE(buffer.appendN(text, 0xFFFFFFFDU));
  EXPECT_EQ(textOf(buffer), "abc");
  EXPECT_FALSE(buffer.appendN(nullptr, 1));
  EXPECT_EQ(textOf(buffer), "abc");
}

TEST(StringBufferWithoutMemory, KeepsItsText) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const test_memory::Mapping untouchable(0xFFFFFFFFU);
  const auto* text = reinterpret_cast<const char*>(untouchable.data());
  StringBuffer buffer;
  StringBuffer empty;
  buffer.append("abc");
  const test_memory::MemoryLimit limit(16u << 20);
  EXPECT_FALSE(empty.appendN(text, 0x80000000U));
  EXPECT_STREQ(empty.getString(), "");
  EXPECT_FALSE(buffer.appendN(text, 0x80000000U));
  EXPECT_FALSE(buffer.appendN(text, 0xFFFFFFFCU));
  EXPECT_EQ(textOf(buffer), "abc");
  EXPECT_TRUE(buffer.append("d"));
  EXPECT_EQ(textOf(buffer), "abcd");
}

}  // namespace
}  // namespace quorvel
