#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "quorvel/pages/HashConvert.h"
#include "tests/helpers/Memory.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/Tables.h"

namespace {

using namespace quorvel_test;
using quorvel::HashConvert;
using quorvel::NullLog;

const std::string kEmptySlot = "00 00 00 00 00";

std::unique_ptr<HashConvert> newTable(int codePage) {
  return std::unique_ptr<HashConvert>(HashConvert::createNewObject(codePage));
}

TEST(HashConvert, StartsEmptyAndTaggedWithItsCodePage) {
  const auto table = newTable(932);
  EXPECT_EQ(table->codePage(), 932);
  EXPECT_FALSE(table->m_hasRemovals);
  EXPECT_EQ(table->m_direction, 0);
  EXPECT_FALSE(table->get_IsLowerAscii());
  for (const unsigned short unit : table->m_byteToUnicode) EXPECT_EQ(unit, 0);
}

TEST(HashConvert, MakesTheSlotsThatItIsToldTo) {
  const auto table = newTable(1252);
  EXPECT_TRUE(table->hcInitialize(269));
  EXPECT_EQ(table->m_numBuckets, 269U);
  for (unsigned int i = 0; i < 269; ++i) EXPECT_EQ(slotOf(*table, i), kEmptySlot) << i;
}

TEST(HashConvert, KeepsTheLowerAsciiFlag) {
  const auto table = newTable(1252);
  table->put_IsLowerAscii(true);
  EXPECT_TRUE(table->get_IsLowerAscii());
  table->put_IsLowerAscii(false);
  EXPECT_FALSE(table->get_IsLowerAscii());
}

// --- Slots ------------------------------------------------------------------

TEST(HashConvertSlots, HoldKeyValueAndTheOneByteFlag) {
  const auto table = emptyTable(7);
  insert(*table, "AC 20", "80");     // 0x20AC is 6 modulo 7
  insert(*table, "00 30", "81 40");  // 0x3000 is 3 modulo 7
  EXPECT_EQ(slotOf(*table, 6).substr(0, 8), "AC 20 80");
  EXPECT_NE(slotOf(*table, 6).substr(12), "00");
  EXPECT_EQ(slotOf(*table, 3), "00 30 81 40 00");
  for (unsigned int i : {0U, 1U, 2U, 4U, 5U}) EXPECT_EQ(slotOf(*table, i), kEmptySlot) << i;
  EXPECT_FALSE(table->m_hasRemovals);
}

TEST(HashConvertSlots, AreChosenByTheKeyReadLowByteFirst) {
  for (unsigned int buckets : {1U, 2U, 5U, 269U, 283U, 25183U, 46811U, 65536U, 70001U}) {
    for (unsigned int number : {1U, 0xFFU, 0x100U, 0x1234U, 0x3412U, 0xFF00U, 0xFFFFU}) {
      const auto table = emptyTable(static_cast<int>(buckets));
      insert(*table, lowFirst(number), {0x55, 0x66});
      EXPECT_EQ(slotOf(*table, number % buckets), hex(lowFirst(number)) + " 55 66 00");
    }
  }
}

TEST(HashConvertSlots, StayWithTheFirstOfTwoKeysThatCollide) {
  const auto table = tableOf(5, {{"01 00", "AA"}, {"06 00", "BB CC"}, {"0B 00", "DD"}});
  EXPECT_EQ(slotOf(*table, 1).substr(0, 8), "01 00 AA");
  EXPECT_EQ(lookUp(*table, "01 00"), "AA");
  EXPECT_EQ(lookUp(*table, "06 00"), "BB CC");
  EXPECT_EQ(lookUp(*table, "0B 00"), "DD");
  EXPECT_EQ(lookUp(*table, "10 00"), "");
  EXPECT_EQ(probe(*table, "06 00"), "BB CC");
  EXPECT_EQ(probe(*table, "10 00"), "");
  EXPECT_FALSE(table->m_hasRemovals);
}

TEST(HashConvertSlots, AcceptAKeyWithOneByteZero) {
  const auto table = tableOf(269, {{"00 01", "41"}, {"01 00", "42"}});
  EXPECT_EQ(slotOf(*table, 0x100 % 269).substr(0, 8), "00 01 41");
  EXPECT_EQ(slotOf(*table, 1).substr(0, 8), "01 00 42");
  EXPECT_EQ(probe(*table, "00 01"), "41");
  EXPECT_EQ(probe(*table, "01 00"), "42");
}

// --- Look-up ----------------------------------------------------------------

TEST(HashConvertLookup, LeavesLengthAndAreaAloneOnAMiss) {
  const auto table = tableOf(5, {{"01 00", "AA"}});
  Bytes area = bytes("11 22");
  int length = 77;
  table->hcLookup(bytes("02 00").data(), area.data(), length);
  table->hcLookup(bytes("06 00").data(), area.data(), length);
  EXPECT_EQ(length, 77);
  EXPECT_EQ(hex(area), "11 22");
}

TEST(HashConvertLookup, LeavesTheSecondByteAloneForAOneByteValue) {
  const auto table = tableOf(1, {{"01 00", "AA"}, {"02 00", "BB"}});
  EXPECT_EQ(lookUp(*table, "01 00"), "AA");  // in the slot
  EXPECT_EQ(lookUp(*table, "02 00"), "BB");  // behind it
}

TEST(HashConvertLookup, GivesAValueOfZero) {
  const auto table = tableOf(1, {{"01 00", "00"}, {"02 00", "00 00"}, {"03 00", "00"}});
  EXPECT_EQ(lookUp(*table, "01 00"), "00");
  EXPECT_EQ(lookUp(*table, "02 00"), "00 00");
  EXPECT_EQ(lookUp(*table, "03 00"), "00");
}

TEST(HashConvertLookup, MissesTheZeroKeyThoughEmptySlotsLookLikeIt) {
  EXPECT_EQ(lookUp(*emptyTable(5), "00 00"), "");
  EXPECT_EQ(probe(*emptyTable(5), "00 00"), "");
  const auto full = tableOf(1, {{"01 00", "AA"}});
  EXPECT_EQ(lookUp(*full, "00 00"), "");
  auto emptied = tableOf(5, {{"05 00", "AA"}});
  emptied->hcRemove(bytes("05 00").data());
  EXPECT_EQ(lookUp(*emptied, "00 00"), "");
}

// --- Insertion --------------------------------------------------------------

TEST(HashConvertInsertion, LeavesTheFirstMappingOfAKeyStanding) {
  const auto table = tableOf(5, {{"01 00", "AA"}, {"06 00", "BB"}});
  insert(*table, "01 00", "11 22");
  insert(*table, "06 00", "33 44");
  EXPECT_EQ(lookUp(*table, "01 00"), "AA");
  EXPECT_EQ(lookUp(*table, "06 00"), "BB");
}

TEST(HashConvertInsertion, LeavesItStandingThoughItsSlotHasBecomeFree) {
  const auto table = tableOf(5, {{"01 00", "AA"}, {"06 00", "BB"}});
  table->hcRemove(bytes("01 00").data());
  insert(*table, "06 00", "33 44");
  EXPECT_EQ(lookUp(*table, "06 00"), "BB");
  EXPECT_EQ(probe(*table, "06 00"), "BB");
  insert(*table, "0B 00", "CC");
  insert(*table, "06 00", "33 44");
  EXPECT_EQ(probe(*table, "06 00"), "BB");
  EXPECT_EQ(probe(*table, "0B 00"), "CC");
}

TEST(HashConvertInsertion, OfTheZeroKeyKeepsItOutOfTheSlots) {
  for (const int buckets : {1, 5}) {
    const auto table = emptyTable(buckets);
    insert(*table, "00 00", "12 34");
    for (int i = 0; i < buckets; ++i) {
      EXPECT_EQ(slotOf(*table, static_cast<unsigned int>(i)), kEmptySlot);
    }
    EXPECT_EQ(lookUp(*table, "00 00"), "12 34");
    EXPECT_EQ(probe(*table, "00 00"), "12 34");
    insert(*table, "00 00", "56");
    EXPECT_EQ(lookUp(*table, "00 00"), "12 34");
    insert(*table, "05 00", "AA");  // its slot is the one of 00 00
    EXPECT_EQ(probe(*table, "05 00"), "AA");
    EXPECT_EQ(probe(*table, "00 00"), "12 34");
    table->hcRemove(bytes("00 00").data());
    EXPECT_EQ(probe(*table, "00 00"), "");
    EXPECT_EQ(probe(*table, "05 00"), "AA");
  }
}

TEST(HashConvertInsertion, TakesTheTwoLengthCodesOnly) {
  const auto table = emptyTable(5);
  RecordingLog log(true);
  for (const int code : {0, 1, 2, 11, 12, 20, 23, 31, -21}) {
    table->hcInsert(bytes("01 00").data(), bytes("AA BB").data(), code, log);
    EXPECT_EQ(lookUp(*table, "01 00"), "") << code;
  }
  EXPECT_EQ(log.lines, Lines());
}

TEST(HashConvertInsertion, ReadsOneByteOfAOneByteValue) {
  const auto table = emptyTable(5);
  quorvel::test_memory::GuardedBytes value;
  NullLog log;
  table->hcInsert(bytes("01 00").data(), value.place("\xAA"), 21, log);
  table->hcInsert(bytes("06 00").data(), value.place("\xBB"), 21, log);
  EXPECT_EQ(lookUp(*table, "01 00"), "AA");
  EXPECT_EQ(lookUp(*table, "06 00"), "BB");
}

// --- Removal ----------------------------------------------------------------

TEST(HashConvertRemoval, OfAnAbsentKeyIsHarmless) {
  const auto table = tableOf(5, {{"01 00", "AA"}});
  table->hcRemove(bytes("02 00").data());
  table->hcRemove(bytes("06 00").data());
  table->hcRemove(bytes("00 00").data());
  EXPECT_EQ(probe(*table, "01 00"), "AA");
  EXPECT_EQ(slotOf(*table, 2), kEmptySlot);
}

TEST(HashConvertRemoval, LeavesACollidingKeyInReach) {
  const auto table = tableOf(5, {{"01 00", "AA"}, {"06 00", "BB"}});
  table->hcRemove(bytes("01 00").data());
  EXPECT_TRUE(table->m_hasRemovals || slotOf(*table, 1) != kEmptySlot);
  EXPECT_EQ(lookUp(*table, "01 00"), "");
  EXPECT_EQ(probe(*table, "01 00"), "");
  EXPECT_EQ(lookUp(*table, "06 00"), "BB");
  EXPECT_EQ(probe(*table, "06 00"), "BB");
}

TEST(HashConvertRemoval, FindsAKeyBehindTheSlots) {
  const auto table = tableOf(5, {{"01 00", "AA"}, {"06 00", "BB"}, {"0B 00", "CC"}});
  table->hcRemove(bytes("06 00").data());
  EXPECT_EQ(probe(*table, "01 00"), "AA");
  EXPECT_EQ(probe(*table, "06 00"), "");
  EXPECT_EQ(probe(*table, "0B 00"), "CC");
}

TEST(HashConvertRemoval, MakesRoomForAnotherValueOfTheKey) {
  const auto table = tableOf(5, {{"01 00", "AA"}, {"06 00", "BB"}});
  for (const char* key : {"01 00", "06 00"}) {
    table->hcRemove(bytes(key).data());
    insert(*table, key, "12 34");
    EXPECT_EQ(probe(*table, key), "12 34");
  }
  EXPECT_EQ(lookUp(*table, "01 00"), "12 34");
}

// --- The fast path against a plain map --------------------------------------

// Keys from a small range, so that collisions, repetitions and removals of what
// is there are common; the zero key among them.
class RandomTable {
 public:
  RandomTable(unsigned int seed, int buckets) : m_random(seed), m_table(emptyTable(buckets)) {}

  void changeOnce() {
    const unsigned int number = anyKey();
    if (m_random() % 3 == 0) {
      m_table->hcRemove(lowFirst(number).data());
      m_expected.erase(number);
      return;
    }
    Bytes value = lowFirst(static_cast<unsigned int>(m_random() & 0xFFFF));
    if (m_random() % 2) value.resize(1);
    insert(*m_table, lowFirst(number), value);
    m_expected.try_emplace(number, hex(value));
  }

  void expectAgreement() const {
    for (unsigned int number = 0; number < keys; ++number) {
      const auto found = m_expected.find(number);
      const std::string expected = found == m_expected.end() ? "" : found->second;
      ASSERT_EQ(lookUp(*m_table, lowFirst(number)), expected) << number;
      ASSERT_EQ(probe(*m_table, lowFirst(number)), expected) << number;
    }
  }

 private:
  static constexpr unsigned int keys = 300;

  unsigned int anyKey() { return static_cast<unsigned int>(m_random() % keys); }

  std::mt19937 m_random;
  std::unique_ptr<HashConvert> m_table;
  std::map<unsigned int, std::string> m_expected;
};

TEST(HashConvert, AnswersTheProbeAndTheLookupAlikeAfterAnyChanges) {
  for (const int buckets : {1, 2, 3, 29, 269, 283}) {
    for (unsigned int seed = 0; seed < 4; ++seed) {
      SCOPED_TRACE(std::to_string(buckets) + " slots, seed " + std::to_string(seed));
      RandomTable table(seed, buckets);
      for (int round = 0; round < 8; ++round) {
        for (int i = 0; i < 50; ++i) table.changeOnce();
        ASSERT_NO_FATAL_FAILURE(table.expectAgreement());
      }
    }
  }
}

TEST(HashConvert, HoldsEveryKeyThereIs) {
  const auto table = emptyTable(269);
  for (unsigned int number = 0; number < 0x10000; ++number) {
    insert(*table, lowFirst(number), highFirst(number));
  }
  for (unsigned int number = 0; number < 0x10000; number += 31) {
    ASSERT_EQ(probe(*table, lowFirst(number)), hex(highFirst(number)));
  }
}

TEST(HashConvert, VisitsEveryMappingOnce) {
  const auto table = tableOf(
      2,
      {{"01 00", "AA"}, {"03 00", "BB CC"}, {"02 00", "DD EE"}, {"00 00", "11"}, {"05 00", "22"}});
  std::map<std::string, std::string> visited;
  int visits = 0;
  table->forEachMapping([&](const unsigned char* key, const unsigned char* value, int length) {
    visited[hex(key, 2)] = hex(value, static_cast<std::size_t>(length));
    ++visits;
  });
  EXPECT_EQ(visits, 5);
  EXPECT_EQ(visited, (std::map<std::string, std::string>{{"00 00", "11"},
                                                         {"01 00", "AA"},
                                                         {"02 00", "DD EE"},
                                                         {"03 00", "BB CC"},
                                                         {"05 00", "22"}}));
}

// --- The reverse of a table -------------------------------------------------

TEST(HashConvertReverse, SwapsKeysAndValues) {
  const auto table = tableOf(2, {{"00 30", "81 40"}, {"01 30", "81 41"}, {"03 30", "81 42"}});
  NullLog log;
  const auto reverse = emptyTable(5);
  table->hcBuildReverse(*reverse, log);
  EXPECT_EQ(probe(*reverse, "81 40"), "00 30");
  EXPECT_EQ(probe(*reverse, "81 41"), "01 30");
  EXPECT_EQ(probe(*reverse, "81 42"), "03 30");
  EXPECT_EQ(probe(*reverse, "40 81"), "");
  EXPECT_EQ(probe(*table, "00 30"), "81 40");
}

TEST(HashConvertReverse, PutsOneByteCodesIntoTheDirectTable) {
  const auto table = tableOf(2, {{"AC 20", "80"}, {"61 FF", "B1"}, {"62 FF", "B2"}});
  NullLog log;
  const auto reverse = emptyTable(5);
  table->hcBuildReverse(*reverse, log);
  for (unsigned int byte = 0; byte < 256; ++byte) {
    const unsigned int expected = byte == 0x80   ? 0x20AC
                                  : byte == 0xB1 ? 0xFF61
                                  : byte == 0xB2 ? 0xFF62
                                                 : 0;
    EXPECT_EQ(reverse->m_byteToUnicode[byte], expected) << byte;
  }
  for (unsigned int i = 0; i < 5; ++i) EXPECT_EQ(slotOf(*reverse, i), kEmptySlot);
}

TEST(HashConvertReverse, HandsOverTheFlagAndMarksTheDirection) {
  NullLog log;
  for (const bool isLowerAscii : {false, true}) {
    const auto table = emptyTable(5);
    table->m_direction = 1;
    table->put_IsLowerAscii(isLowerAscii);
    const auto reverse = emptyTable(5);
    reverse->put_IsLowerAscii(!isLowerAscii);
    table->hcBuildReverse(*reverse, log);
    EXPECT_EQ(reverse->get_IsLowerAscii(), isLowerAscii);
    EXPECT_EQ(reverse->m_direction, 2);
    EXPECT_EQ(table->m_direction, 1);
  }
}

TEST(HashConvertReverse, LeavesOutWhatWasRemoved) {
  const auto table = tableOf(1, {{"00 30", "81 40"}, {"01 30", "81 41"}, {"02 30", "A1"}});
  table->hcRemove(bytes("00 30").data());
  table->hcRemove(bytes("02 30").data());
  NullLog log;
  const auto reverse = emptyTable(1);
  table->hcBuildReverse(*reverse, log);
  EXPECT_EQ(probe(*reverse, "81 40"), "");
  EXPECT_EQ(probe(*reverse, "81 41"), "01 30");
  EXPECT_EQ(reverse->m_byteToUnicode[0xA1], 0);
}

TEST(HashConvertReverse, DecodesASharedCodeToTheLowestUnit) {
  const std::initializer_list<Mapping> upwards = {
      {"01 30", "81 40"}, {"02 30", "81 40"}, {"03 30", "A1"}, {"04 30", "A1"}};
  const std::initializer_list<Mapping> downwards = {
      {"04 30", "A1"}, {"03 30", "A1"}, {"02 30", "81 40"}, {"01 30", "81 40"}};
  for (const int buckets : {1, 2, 3, 269}) {
    for (const auto& mappings : {upwards, downwards}) {
      NullLog log;
      const auto reverse = emptyTable(buckets);
      tableOf(buckets, mappings)->hcBuildReverse(*reverse, log);
      EXPECT_EQ(probe(*reverse, "81 40"), "01 30");
      EXPECT_EQ(reverse->m_byteToUnicode[0xA1], 0x3003);
    }
  }
}

// --- Tables without slots ---------------------------------------------------

void expectMapsNothing(HashConvert& table) {
  NullLog log;
  for (const char* key : {"00 00", "01 00", "FF FF"}) {
    EXPECT_EQ(probe(table, key), "");
    EXPECT_EQ(lookUp(table, key), "");
    insert(table, key, "AA BB");
    table.hcRemove(bytes(key).data());
    insert(table, key, "AA");
    EXPECT_EQ(probe(table, key), "");
  }
  const auto reverse = emptyTable(5);
  table.hcBuildReverse(*reverse, log);
  int visits = 0;
  table.forEachMapping([&](const unsigned char*, const unsigned char*, int) { ++visits; });
  EXPECT_EQ(visits, 0);
}

TEST(HashConvertWithoutSlots, IsSafeToReadAndTakesNothing) {
  const auto table = newTable(1);
  EXPECT_GT(table->m_numBuckets, 0U);
  expectMapsNothing(*table);
}

TEST(HashConvertWithoutSlots, IsWhatANumberThatIsNoneLeaves) {
  for (const int buckets : {0, -1, -2147483647 - 1}) {
    const auto table = newTable(1);
    EXPECT_FALSE(table->hcInitialize(buckets));
    EXPECT_GT(table->m_numBuckets, 0U);
    expectMapsNothing(*table);
  }
}

TEST(HashConvertWithoutSlots, IsWhatLackOfMemoryLeaves) {
  if (!quorvel::test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  const auto table = newTable(1);
  {
    const quorvel::test_memory::MemoryLimit limit(16U << 20);
    EXPECT_FALSE(table->hcInitialize(2147483647));
  }
  expectMapsNothing(*table);
}

TEST(HashConvertWithoutSlots, MayBeTheDestinationOfAReverse) {
  const auto table = tableOf(5, {{"00 30", "81 40"}, {"AC 20", "80"}});
  const auto reverse = newTable(1);
  NullLog log;
  table->hcBuildReverse(*reverse, log);
  EXPECT_EQ(probe(*reverse, "81 40"), "");
}

}  // namespace
