#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <utility>

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/qvHelpers.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"

namespace quorvel {
namespace {

using namespace quorvel_test;
using test_memory::Mapping;
using test_memory::MemoryLimit;

constexpr unsigned int mostBytes = 0xFFFFFFFFU;

unsigned char* mutableBytes(std::string& bytes) {
  return reinterpret_cast<unsigned char*>(bytes.data());
}

unsigned char* newBlock(std::string_view bytes) {
  unsigned char* block = qvNewUnsignedChar(static_cast<unsigned int>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), block);
  return block;
}

// A buffer of `size` bytes none of which can be touched, so that an operation
// that is refused too late ends the test run.
struct Untouchable {
  explicit Untouchable(unsigned int size) : mapping(size) {
    buffer.borrowData(mapping.data(), size);
  }
  Mapping mapping;
  DataBuffer buffer;
};

TEST(DataBuffer, IsEmptyAtFirst) {
  const DataBuffer buffer;
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
  EXPECT_EQ(buffer.getDataAt2(0), nullptr);
}

TEST(DataBuffer, IsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<DataBuffer>);
  EXPECT_FALSE(std::is_copy_assignable_v<DataBuffer>);
}

TEST(DataBuffer, AppendsExactlyTheBytesGiven) {
  DataBuffer buffer;
  EXPECT_TRUE(buffer.append("a\0b", 3));
  EXPECT_TRUE(buffer.appendChar(0xE9));
  EXPECT_TRUE(buffer.appendChar(0x00));
  EXPECT_TRUE(buffer.append("\xFF", 1));
  EXPECT_EQ(hex(buffer), "61 00 62 E9 00 FF");
}

TEST(DataBuffer, AppendsNothingForACountOfZero) {
  DataBuffer buffer;
  EXPECT_TRUE(buffer.append("a", 0));
  EXPECT_TRUE(buffer.append(nullptr, 0));
  EXPECT_EQ(buffer.getData2(), nullptr);
  fill(buffer, "ab");
  EXPECT_TRUE(buffer.append("c", 0));
  EXPECT_TRUE(buffer.append(nullptr, 0));
  EXPECT_TRUE(buffer.append(DataBuffer()));
  EXPECT_EQ(contentOf(buffer), "ab");
}

TEST(DataBuffer, RefusesANullPointerWithACount) {
  DataBuffer buffer;
  fill(buffer, "ab");
  EXPECT_FALSE(buffer.append(nullptr, 1));
  EXPECT_FALSE(buffer.append(nullptr, mostBytes));
  EXPECT_EQ(contentOf(buffer), "ab");
}

TEST(DataBuffer, AppendsAnotherBuffer) {
  DataBuffer buffer;
  DataBuffer other;
  fill(buffer, "ab");
  fill(other, "cd");
  EXPECT_TRUE(buffer.append(other));
  EXPECT_EQ(contentOf(buffer), "abcd");
  EXPECT_EQ(contentOf(other), "cd");
}

TEST(DataBuffer, AppendsItself) {
  DataBuffer buffer;
  EXPECT_TRUE(buffer.append(buffer));
  EXPECT_EQ(buffer.getSize(), 0U);
  std::string model = "abc";
  fill(buffer, model);
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(buffer.append(buffer));
    model += model;
    ASSERT_EQ(contentOf(buffer), model);
  }
}

// Some of these appends move the content to a larger block, others do not.
TEST(DataBuffer, AppendsAnyPartOfItself) {
  for (unsigned int size = 1; size <= 140; ++size) {
    for (const unsigned int from : {0U, size / 2, size - 1}) {
      std::string model;
      for (unsigned int i = 0; i < size; ++i) model += static_cast<char>(i);
      DataBuffer buffer;
      fill(buffer, model);
      for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(buffer.append(buffer.getDataAt2(from), size - from));
        model += model.substr(from, size - from);
        ASSERT_EQ(contentOf(buffer), model) << size << " from " << from;
      }
    }
  }
}

TEST(DataBuffer, AppendsAPartOfWhatItBorrows) {
  std::string lent = "abcdef";
  DataBuffer buffer;
  buffer.borrowData(mutableBytes(lent), 6);
  EXPECT_TRUE(buffer.append(buffer.getDataAt2(2), 3));
  EXPECT_EQ(contentOf(buffer), "abcdefcde");
  EXPECT_EQ(lent, "abcdef");
}

TEST(DataBuffer, HoldsWhatAModelHolds) {
  std::mt19937 random(2);
  DataBuffer buffer;
  std::string model;
  for (int i = 0; i < 5000; ++i) {
    const std::string piece(random() % 50, static_cast<char>(random() % 256));
    switch (random() % 8) {
      case 0:
        buffer.clear();
        model.clear();
        break;
      case 1: {
        const auto size = static_cast<unsigned int>(random() % (model.size() + 10));
        buffer.shorten(size);
        model.resize(std::min<std::size_t>(size, model.size()));
        break;
      }
      case 2:
        ASSERT_TRUE(buffer.ensureBuffer(static_cast<unsigned int>(random() % 2000)));
        break;
      default:
        ASSERT_TRUE(buffer.append(piece.data(), static_cast<unsigned int>(piece.size())));
        model += piece;
    }
    ASSERT_EQ(buffer.getSize(), model.size());
    ASSERT_TRUE(contentOf(buffer) == model);
  }
}

TEST(DataBuffer, GrowsGeometrically) {
  DataBuffer buffer;
  const unsigned char* block = nullptr;
  int moves = 0;
  for (unsigned int i = 0; i < 1000000; ++i) {
    ASSERT_TRUE(buffer.appendChar(static_cast<unsigned char>(i)));
    if (buffer.getData2() != block) ++moves;
    block = buffer.getData2();
  }
  EXPECT_LE(moves, 40);
  for (unsigned int i = 0; i < 1000000; ++i)
    ASSERT_EQ(*buffer.getDataAt2(i), static_cast<unsigned char>(i));
}

TEST(DataBuffer, PointsAtContentOnly) {
  DataBuffer buffer;
  fill(buffer, "abc");
  EXPECT_EQ(buffer.getDataAt2(0), buffer.getData2());
  EXPECT_EQ(*buffer.getDataAt2(2), 'c');
  EXPECT_EQ(buffer.getDataAt2(3), nullptr);
  EXPECT_EQ(buffer.getDataAt2(mostBytes), nullptr);
}

TEST(DataBuffer, PointsAtTheLastOfFourGigabytes) {
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const Untouchable all(mostBytes);
  EXPECT_EQ(all.buffer.getDataAt2(mostBytes - 1), all.mapping.data() + (mostBytes - 1));
  EXPECT_EQ(all.buffer.getDataAt2(mostBytes), nullptr);
}

TEST(DataBuffer, KeepsItsStorageWhenCleared) {
  DataBuffer buffer;
  fill(buffer, "abc");
  const unsigned char* block = buffer.getData2();
  buffer.clear();
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
  EXPECT_EQ(buffer.getDataAt2(0), nullptr);
  fill(buffer, "de");
  EXPECT_EQ(buffer.getData2(), block);
  EXPECT_EQ(contentOf(buffer), "de");
}

TEST(DataBuffer, IsShortenedToASizeButNeverLengthened) {
  DataBuffer buffer;
  fill(buffer, "abcd");
  buffer.shorten(5);
  buffer.shorten(mostBytes);
  EXPECT_EQ(contentOf(buffer), "abcd");
  buffer.shorten(4);
  EXPECT_EQ(contentOf(buffer), "abcd");
  buffer.shorten(1);
  EXPECT_EQ(contentOf(buffer), "a");
  EXPECT_EQ(buffer.getDataAt2(1), nullptr);
  fill(buffer, "xy");
  EXPECT_EQ(contentOf(buffer), "axy");
  buffer.shorten(0);
  EXPECT_EQ(buffer.getData2(), nullptr);
}

TEST(DataBuffer, EnsuresRoomThatLaterAppendsUse) {
  DataBuffer buffer;
  fill(buffer, "abc");
  ASSERT_TRUE(buffer.ensureBuffer(5000));
  EXPECT_EQ(contentOf(buffer), "abc");
  const unsigned char* block = buffer.getData2();
  for (int i = 0; i < 4997; ++i) ASSERT_TRUE(buffer.appendChar('x'));
  EXPECT_EQ(buffer.getData2(), block);
  EXPECT_EQ(contentOf(buffer), "abc" + std::string(4997, 'x'));
}

TEST(DataBuffer, EnsuresNothingNewForASmallCapacity) {
  DataBuffer buffer;
  EXPECT_TRUE(buffer.ensureBuffer(0));
  fill(buffer, "abc");
  const unsigned char* block = buffer.getData2();
  EXPECT_TRUE(buffer.ensureBuffer(0));
  EXPECT_TRUE(buffer.ensureBuffer(3));
  EXPECT_EQ(buffer.getData2(), block);
  EXPECT_EQ(contentOf(buffer), "abc");
}

TEST(DataBuffer, KeepsAsMuchAsWasWrittenIntoItsRoom) {
  DataBuffer buffer;
  fill(buffer, "ab");
  unsigned char* room = buffer.growBy(10);
  ASSERT_NE(room, nullptr);
  EXPECT_EQ(contentOf(buffer), "ab");
  std::fill(room, room + 10, 'x');
  buffer.keepWritten(3);
  EXPECT_EQ(contentOf(buffer), "abxxx");
  room = buffer.growBy(1);
  ASSERT_NE(room, nullptr);
  *room = 'y';
  buffer.keepWritten(1);
  ASSERT_NE(buffer.growBy(7), nullptr);
  buffer.keepWritten(0);
  fill(buffer, "z");
  EXPECT_EQ(contentOf(buffer), "abxxxyz");
}

TEST(DataBuffer, HasRoomForNothing) {
  DataBuffer buffer;
  EXPECT_NE(buffer.growBy(0), nullptr);
  buffer.keepWritten(0);
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
}

// The whole room is written, so that the address sanitizer sees one too small.
TEST(DataBuffer, HasAllTheRoomItWasAskedFor) {
  for (const unsigned int size : {0U, 1U, 63U, 64U, 65U, 1000U})
    for (const unsigned int count : {1U, 63U, 64U, 65U, 127U, 128U, 129U, 5000U}) {
      DataBuffer buffer;
      fill(buffer, std::string(size, 'a'));
      unsigned char* room = buffer.growBy(count);
      ASSERT_NE(room, nullptr);
      std::fill(room, room + count, 'b');
      buffer.keepWritten(count);
      EXPECT_EQ(contentOf(buffer), std::string(size, 'a') + std::string(count, 'b'));
    }
}

TEST(DataBufferSizes, DoNotWrapOnAppend) {
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  Untouchable full(mostBytes);
  EXPECT_FALSE(full.buffer.appendChar('a'));
  EXPECT_FALSE(full.buffer.append("a", 1));
  EXPECT_FALSE(full.buffer.append(full.buffer));
  EXPECT_FALSE(full.buffer.append(full.mapping.data(), mostBytes));
  EXPECT_TRUE(full.buffer.append("a", 0));
  EXPECT_EQ(full.buffer.getSize(), mostBytes);
  EXPECT_EQ(full.buffer.getData2(), full.mapping.data());

  Untouchable nearlyFull(mostBytes - 15);
  EXPECT_FALSE(nearlyFull.buffer.append("0123456789ABCDEF", 16));
  EXPECT_EQ(nearlyFull.buffer.getSize(), mostBytes - 15);
  EXPECT_EQ(nearlyFull.buffer.getData2(), nearlyFull.mapping.data());
}

TEST(DataBufferSizes, DoNotWrapWhenABufferIsAppendedToItself) {
  Untouchable half(0x80000000U);
  EXPECT_FALSE(half.buffer.append(half.buffer));
  EXPECT_EQ(half.buffer.getSize(), 0x80000000U);
  EXPECT_EQ(half.buffer.getData2(), half.mapping.data());
}

TEST(DataBufferSizes, DoNotWrapWhenAHugeBufferIsAppended) {
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const Untouchable full(mostBytes);
  DataBuffer buffer;
  fill(buffer, "a");
  EXPECT_FALSE(buffer.append(full.buffer));
  EXPECT_EQ(contentOf(buffer), "a");
}

TEST(DataBufferSizes, DoNotWrapOnGrowBy) {
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  Untouchable full(mostBytes);
  EXPECT_EQ(full.buffer.growBy(1), nullptr);
  EXPECT_EQ(full.buffer.growBy(mostBytes), nullptr);
  EXPECT_EQ(full.buffer.getSize(), mostBytes);
  EXPECT_EQ(full.buffer.getData2(), full.mapping.data());

  DataBuffer buffer;
  fill(buffer, "abc");
  EXPECT_EQ(buffer.growBy(mostBytes - 2), nullptr);
  EXPECT_EQ(contentOf(buffer), "abc");
}

TEST(DataBufferWithoutMemory, KeepsItsContent) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const Mapping huge(mostBytes);
  DataBuffer buffer;
  fill(buffer, "abc");
  const MemoryLimit limit(16U << 20);
  EXPECT_FALSE(buffer.append(huge.data(), 0x7FFFFFFFU));
  EXPECT_FALSE(buffer.append(huge.data(), mostBytes - 3));
  EXPECT_EQ(buffer.growBy(0x80000000U), nullptr);
  EXPECT_EQ(buffer.growBy(mostBytes - 3), nullptr);
  EXPECT_FALSE(buffer.ensureBuffer(mostBytes));
  EXPECT_FALSE(buffer.ensureBuffer(0x10000000U));
  EXPECT_EQ(contentOf(buffer), "abc");
  EXPECT_TRUE(buffer.append("d", 1));
  EXPECT_EQ(contentOf(buffer), "abcd");
}

TEST(DataBufferWithoutMemory, KeepsWhatItBorrows) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  Untouchable lent(0xF0000000U);
  const MemoryLimit limit(16U << 20);
  EXPECT_FALSE(lent.buffer.appendChar('a'));
  EXPECT_FALSE(lent.buffer.ensureBuffer(1));
  EXPECT_EQ(lent.buffer.growBy(1), nullptr);
  EXPECT_FALSE(lent.buffer.drop_non_usascii());
  EXPECT_EQ(lent.buffer.getSize(), 0xF0000000U);
  EXPECT_EQ(lent.buffer.getData2(), lent.mapping.data());
}

// Twice the size does not fit, what is needed now does.
TEST(DataBufferWithoutMemory, GrowsByWhatIsNeededWhenItCannotGrowAhead) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  constexpr unsigned int megabyte = 1U << 20;
  DataBuffer buffer;
  ASSERT_TRUE(buffer.ensureBuffer(64 * megabyte));
  ASSERT_NE(buffer.growBy(64 * megabyte), nullptr);
  buffer.keepWritten(64 * megabyte);
  const MemoryLimit limit(96U << 20);
  EXPECT_TRUE(buffer.appendChar('z'));
  EXPECT_EQ(buffer.getSize(), 64 * megabyte + 1);
  EXPECT_EQ(*buffer.getDataAt2(64 * megabyte), 'z');
}

// Each move copies all that there is, so that growing by what is needed now, piece
// after piece, takes quadratic time. While it moves the content needs room twice.
TEST(DataBufferWithoutMemory, MovesAFewTimesOnlyBeforeMemoryIsUsedUp) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  constexpr std::size_t megabyte = 1U << 20;
  constexpr unsigned int pieceLength = 16384;
  for (const std::size_t memory : {64U, 80U, 96U, 112U, 128U, 130U, 132U, 134U, 144U, 160U}) {
    DataBuffer buffer;
    const unsigned char* block = nullptr;
    int moves = 0;
    const MemoryLimit limit(memory * megabyte);
    for (unsigned char* room = nullptr; (room = buffer.growBy(pieceLength));) {
      std::memset(room, 0xA5, pieceLength);
      buffer.keepWritten(pieceLength);
      if (buffer.getData2() != block) ++moves;
      block = buffer.getData2();
    }
    EXPECT_LE(moves, 40) << memory;
    EXPECT_GE(buffer.getSize(), memory * megabyte * 3 / 8) << memory;
  }
}

TEST(DataBufferBorrowing, PresentsTheCallersBytesWithoutACopy) {
  std::string lent = "abc";
  DataBuffer buffer;
  buffer.borrowData(mutableBytes(lent), 3);
  EXPECT_EQ(buffer.getData2(), mutableBytes(lent));
  EXPECT_EQ(buffer.getSize(), 3U);
  EXPECT_EQ(buffer.getDataAt2(3), nullptr);
}

TEST(DataBufferBorrowing, LeavesTheBytesAloneWhenDestroyed) {
  std::string lent = "abc";
  {
    DataBuffer buffer;
    buffer.borrowData(mutableBytes(lent), 3);
  }
  EXPECT_EQ(lent, "abc");
}

// Each change is tried on bytes that can be read but not written.
void expectOwnCopyAfter(void (*change)(DataBuffer&), const char* expected) {
  test_memory::Mapping page(4096, PROT_READ | PROT_WRITE);
  std::copy_n("a\xE9z", 3, page.data());
  ASSERT_EQ(mprotect(page.data(), page.size(), PROT_READ), 0);
  DataBuffer buffer;
  buffer.borrowData(page.data(), 3);
  change(buffer);
  EXPECT_EQ(hex(buffer), expected);
  EXPECT_EQ(hex(std::string(page.data(), page.data() + 4)), "61 E9 7A 00");
}

TEST(DataBufferBorrowing, NeverWritesTheBytes) {
  expectOwnCopyAfter([](DataBuffer& b) { b.appendChar('x'); }, "61 E9 7A 78");
  expectOwnCopyAfter([](DataBuffer& b) { b.append("xy", 2); }, "61 E9 7A 78 79");
  expectOwnCopyAfter([](DataBuffer& b) { b.append(b); }, "61 E9 7A 61 E9 7A");
  expectOwnCopyAfter([](DataBuffer& b) { b.drop_non_usascii(); }, "61 7A");
  expectOwnCopyAfter([](DataBuffer& b) { b.ensureBuffer(1); }, "61 E9 7A");
  expectOwnCopyAfter([](DataBuffer& b) { b.ensureBuffer(100); }, "61 E9 7A");
  expectOwnCopyAfter([](DataBuffer& b) { b.shorten(2); }, "61 E9");
  expectOwnCopyAfter([](DataBuffer& b) { b.clear(); }, "");
}

TEST(DataBufferBorrowing, NeverWritesTheBytesAfterAShorteningOrClearing) {
  expectOwnCopyAfter([](DataBuffer& b) { b.shorten(1), b.appendChar('x'); }, "61 78");
  expectOwnCopyAfter([](DataBuffer& b) { b.shorten(0), b.appendChar('x'); }, "78");
  expectOwnCopyAfter([](DataBuffer& b) { b.clear(), b.appendChar('x'); }, "78");
  expectOwnCopyAfter(
      [](DataBuffer& b) {
        b.clear();
        b.ensureBuffer(1);
        b.appendChar('x');
      },
      "78");
  expectOwnCopyAfter(
      [](DataBuffer& b) {
        *b.growBy(1) = 'x';
        b.keepWritten(1);
      },
      "61 E9 7A 78");
}

TEST(DataBufferBorrowing, FreesWhatTheBufferHeldBefore) {
  std::string lent = "abc";
  DataBuffer buffer;
  fill(buffer, "something else");
  buffer.borrowData(mutableBytes(lent), 2);
  EXPECT_EQ(contentOf(buffer), "ab");
  buffer.borrowData(mutableBytes(lent) + 1, 2);
  EXPECT_EQ(contentOf(buffer), "bc");
  EXPECT_EQ(lent, "abc");
}

TEST(DataBufferBorrowing, OfNothingEmptiesTheBuffer) {
  std::string lent = "abc";
  DataBuffer buffer;
  fill(buffer, "x");
  buffer.borrowData(mutableBytes(lent), 0);
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
  fill(buffer, "y");
  buffer.borrowData(nullptr, 0);
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
  fill(buffer, "z");
  EXPECT_EQ(contentOf(buffer), "z");
  EXPECT_EQ(lent, "abc");
}

TEST(DataBufferTaking, AdoptsTheBlockWithoutACopy) {
  unsigned char* block = newBlock("abc");
  DataBuffer buffer;
  buffer.takeData(block, 3);
  EXPECT_EQ(buffer.getData2(), block);
  EXPECT_EQ(contentOf(buffer), "abc");
  fill(buffer, "de");
  EXPECT_EQ(contentOf(buffer), "abcde");
}

TEST(DataBufferTaking, TakesTheFirstBytesOfALargerBlock) {
  DataBuffer buffer;
  buffer.takeData(newBlock("abcdef"), 2);
  EXPECT_EQ(contentOf(buffer), "ab");
  fill(buffer, "xyz");
  EXPECT_EQ(contentOf(buffer), "abxyz");
}

// The address sanitizer sees a block that is kept too long or freed twice.
TEST(DataBufferTaking, FreesWhatTheBufferHeldBefore) {
  std::string lent = "lent";
  DataBuffer buffer;
  fill(buffer, "owned");
  buffer.takeData(newBlock("abc"), 3);
  buffer.takeData(newBlock("def"), 3);
  EXPECT_EQ(contentOf(buffer), "def");
  buffer.borrowData(mutableBytes(lent), 4);
  buffer.takeData(newBlock("ghi"), 3);
  EXPECT_EQ(contentOf(buffer), "ghi");
  EXPECT_EQ(lent, "lent");
}

TEST(DataBufferTaking, OfNothingEmptiesTheBuffer) {
  DataBuffer buffer;
  fill(buffer, "x");
  buffer.takeData(newBlock("abc"), 0);
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
  fill(buffer, "y");
  EXPECT_EQ(contentOf(buffer), "y");
  buffer.takeData(nullptr, 0);
  EXPECT_EQ(buffer.getData2(), nullptr);
}

TEST(DataBuffer, DropsBytesAtTheFront) {
  DataBuffer buffer;
  fill(buffer, "abcdef");
  buffer.dropFront(0);
  EXPECT_EQ(contentOf(buffer), "abcdef");
  buffer.dropFront(2);
  EXPECT_EQ(contentOf(buffer), "cdef");
  buffer.append("g", 1);
  EXPECT_EQ(contentOf(buffer), "cdefg");
  buffer.dropFront(6);
  EXPECT_EQ(buffer.getSize(), 0U);
}

TEST(DataBuffer, DropsBorrowedBytesAtTheFrontWithoutWritingThem) {
  std::string bytes = "abcdef";
  DataBuffer buffer;
  buffer.dropFront(1);
  buffer.borrowData(mutableBytes(bytes), 6);
  buffer.dropFront(4);
  EXPECT_EQ(contentOf(buffer), "ef");
  EXPECT_EQ(buffer.getData2(), mutableBytes(bytes) + 4);
  EXPECT_EQ(bytes, "abcdef");
}

TEST(DataBuffer, HasRoomWithoutGrowingOnlyAsFarAsItsCapacityGoes) {
  DataBuffer buffer;
  EXPECT_EQ(buffer.roomFor(1), nullptr);
  std::string storage(8, '.');
  buffer.lendStorage(mutableBytes(storage), 8);
  buffer.append("abc", 3);
  EXPECT_EQ(buffer.roomFor(5), mutableBytes(storage) + 3);
  EXPECT_EQ(buffer.roomFor(6), nullptr);
  EXPECT_EQ(buffer.roomFor(mostBytes), nullptr);
  buffer.borrowData(mutableBytes(storage), 8);
  EXPECT_EQ(buffer.roomFor(1), nullptr);
}

TEST(DataBufferStorage, IsUsedUntilTheContentOutgrowsIt) {
  std::string storage(4, '.');
  DataBuffer buffer;
  fill(buffer, "before");
  buffer.lendStorage(mutableBytes(storage), 4);
  EXPECT_EQ(buffer.getSize(), 0U);
  buffer.append("abcd", 4);
  EXPECT_EQ(buffer.getData2(), mutableBytes(storage));
  buffer.clear();
  buffer.append("efg", 3);
  EXPECT_EQ(storage, "efgd");
  buffer.append("hi", 2);
  EXPECT_EQ(contentOf(buffer), "efghi");
  EXPECT_EQ(storage, "efgd");
}

TEST(DataBufferStorage, IsNotFreedWhoeverHasItLast) {
  std::string storage(4, '.');
  DataBuffer last;
  {
    DataBuffer buffer;
    buffer.lendStorage(mutableBytes(storage), 4);
    buffer.append("ab", 2);
    last = std::move(buffer);
    fill(buffer, "its own again");
  }
  EXPECT_EQ(last.getData2(), mutableBytes(storage));
  last.borrowData(nullptr, 0);
  EXPECT_EQ(storage, "ab..");
}

TEST(DataBufferStorage, OfNothingIsNone) {
  DataBuffer buffer;
  buffer.lendStorage(nullptr, 4);
  EXPECT_TRUE(buffer.append("ab", 2));
  EXPECT_EQ(contentOf(buffer), "ab");
}

TEST(DataBufferMoving, HandsTheContentOver) {
  DataBuffer from;
  fill(from, "abc");
  const unsigned char* block = from.getData2();
  DataBuffer to(std::move(from));
  EXPECT_EQ(to.getData2(), block);
  EXPECT_EQ(contentOf(to), "abc");

  DataBuffer assigned;
  fill(assigned, "freed");
  assigned = std::move(to);
  EXPECT_EQ(contentOf(assigned), "abc");
}

TEST(DataBufferMoving, HandsALoanOver) {
  std::string lent = "abc";
  DataBuffer from;
  from.borrowData(mutableBytes(lent), 3);
  DataBuffer to(std::move(from));
  EXPECT_EQ(to.getData2(), mutableBytes(lent));
  fill(to, "d");
  EXPECT_EQ(contentOf(to), "abcd");
  EXPECT_EQ(lent, "abc");
}

TEST(DataBufferMoving, LeavesAUsableBuffer) {
  DataBuffer from;
  fill(from, "abc");
  const DataBuffer to(std::move(from));
  from.clear();
  fill(from, "new");
  EXPECT_EQ(contentOf(from), "new");
  EXPECT_EQ(contentOf(to), "abc");
}

TEST(DataBufferMoving, ToItselfKeepsTheContent) {
  DataBuffer buffer;
  fill(buffer, "abc");
  DataBuffer& same = buffer;
  buffer = std::move(same);
  EXPECT_EQ(contentOf(buffer), "abc");
}

void expectDropped(const char* bytes, const char* expected) {
  DataBuffer buffer;
  fill(buffer, byteString(bytes));
  EXPECT_TRUE(buffer.drop_non_usascii()) << bytes;
  EXPECT_EQ(hex(buffer), expected) << bytes;
}

TEST(DataBufferDropNonUsAscii, KeepsTheOrderOfTheRest) {
  expectDropped("", "");
  expectDropped("61 62", "61 62");
  expectDropped("E9", "");
  expectDropped("E9 61 80 62 FF", "61 62");
  expectDropped("61 E2 82 AC 00 7F 80 62", "61 00 7F 62");
}

TEST(DataBufferDropNonUsAscii, DropsExactlyTheUpperHalf) {
  std::string all;
  for (unsigned int byte = 0; byte <= 0xFF; ++byte) all += static_cast<char>(byte);
  DataBuffer buffer;
  fill(buffer, all);
  EXPECT_TRUE(buffer.drop_non_usascii());
  EXPECT_EQ(hex(buffer), hex(all.substr(0, 0x80)));
}

TEST(DataBufferDropNonUsAscii, LeavesNothingOfUpperBytesOnly) {
  DataBuffer buffer;
  for (unsigned int byte = 0x80; byte <= 0xFF; ++byte)
    buffer.appendChar(static_cast<unsigned char>(byte));
  EXPECT_TRUE(buffer.drop_non_usascii());
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
  fill(buffer, "x");
  EXPECT_EQ(contentOf(buffer), "x");
}

}  // namespace
}  // namespace quorvel
