#include <gtest/gtest.h>
#include <malloc.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/Japanese.h"
#include "tests/helpers/CodePageRows.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/TableRoutes.h"

namespace {

using namespace quorvel_test;
using quorvel::EncodingConvert;
using quorvel::FromUnicodeTable;
using quorvel::ToUnicodeTable;
namespace registry = quorvel::tableRegistry;

/// All pages that have tables of their own.
std::vector<int> pagesWithTables() {
  return codePagesThat(
      [](const quorvel::CodePage& page) { return page.hasTable() && page.table.sharedWith == 0; });
}

bool isMultiByte(int codePage) {
  const auto& page = quorvel::codePageAt(quorvel::indexOfCodePage(codePage));
  return page.kind == quorvel::CodePageKind::MultiByte;
}

bool isBuilt(int codePage) {
  return registry::toUnicode(codePage) || registry::fromUnicode(codePage);
}

/// Asks for a table; nothing may be logged.
bool ensureToUnicode(int codePage) {
  RecordingLog log(true);
  const bool result = EncodingConvert::ensureHashToUnicode(codePage, log);
  EXPECT_EQ(log.lines, Lines());
  return result;
}

bool ensureFromUnicode(int codePage) {
  RecordingLog log(true);
  const bool result = EncodingConvert::ensureHashFromUnicode(codePage, log);
  EXPECT_EQ(log.lines, Lines());
  return result;
}

/// Each test starts without tables, but for those that are never released.
class TableRegistry : public testing::Test {
 protected:
  void SetUp() override { EncodingConvert::cleanupMemory(); }
};

TEST_F(TableRegistry, BuildsEveryPageOnDemandInEitherDirection) {
  for (const int codePage : pagesWithTables()) {
    SCOPED_TRACE(codePage);
    const bool isKept = codePage == 28600 || codePage == 28601;
    EXPECT_TRUE(isKept || !isBuilt(codePage));
    ASSERT_TRUE(ensureFromUnicode(codePage));
    EXPECT_TRUE(isKept || !registry::toUnicode(codePage))
        << "the other direction was not asked for";
    ASSERT_TRUE(ensureToUnicode(codePage));

    const FromUnicodeTable* from = registry::fromUnicode(codePage);
    const ToUnicodeTable* to = registry::toUnicode(codePage);
    ASSERT_TRUE(from && to);
    const bool hasPairs = isMultiByte(codePage);
    const bool takesDigits = codePage == 1256 || codePage == 28596;
    EXPECT_EQ(to->kind, hasPairs ? ToUnicodeTable::Kind::pairs : ToUnicodeTable::Kind::bytes);
    EXPECT_EQ(from->kind, hasPairs      ? FromUnicodeTable::Kind::pairs
                          : takesDigits ? FromUnicodeTable::Kind::bytesAndDigits
                                        : FromUnicodeTable::Kind::bytes);
  }
}

TEST_F(TableRegistry, BuildsATableOnce) {
  for (const int codePage : {37, 500, 1252, 28605, 932, 10001, 28600}) {
    SCOPED_TRACE(codePage);
    ensureToUnicode(codePage);
    ensureFromUnicode(codePage);
    const ToUnicodeTable* to = registry::toUnicode(codePage);
    const FromUnicodeTable* from = registry::fromUnicode(codePage);
    EXPECT_TRUE(ensureToUnicode(codePage));
    EXPECT_TRUE(ensureFromUnicode(codePage));
    convert(codePage, 65001, "41 42 80");
    convert(65001, codePage, "41 42");
    EXPECT_EQ(registry::toUnicode(codePage), to);
    EXPECT_EQ(registry::fromUnicode(codePage), from);
  }
}

TEST_F(TableRegistry, BuildsNothingForAnUnknownNumberAndIsFineWithIt) {
  for (const int codePage : {-1, 0, 36, 99, 1200, 1259, 28602, 28604, 28606, 30000, 50220, 65001}) {
    EXPECT_TRUE(ensureToUnicode(codePage)) << codePage;
    EXPECT_TRUE(ensureFromUnicode(codePage)) << codePage;
    EXPECT_FALSE(isBuilt(codePage)) << codePage;
    EXPECT_EQ(encode(codePage, "41 00"), failsQuietly()) << codePage;
  }
}

TEST_F(TableRegistry, LeavesPagesOfAnotherFamilyAlone) {
  RecordingLog log(true);
  for (const int codePage : {932, 437, 1249, 1259, 28591}) {
    EXPECT_TRUE(EncodingConvert::ensureHashToUnicode1250(codePage, log));
    EXPECT_FALSE(isBuilt(codePage)) << codePage;
  }
  for (const int codePage : {932, 1252, 28590, 28602, 28604, 28606, 38598}) {
    EXPECT_TRUE(EncodingConvert::ensureHashToUnicode8859(codePage, log));
    EXPECT_FALSE(isBuilt(codePage)) << codePage;
  }
  EXPECT_TRUE(EncodingConvert::ensureHashToUnicode1250(1258, log));
  EXPECT_TRUE(EncodingConvert::ensureHashToUnicode8859(28605, log));
  EXPECT_NE(registry::toUnicode(1258), nullptr);
  EXPECT_NE(registry::toUnicode(28605), nullptr);
}

TEST_F(TableRegistry, BuildsEachPageInOneOfTwoHalves) {
  RecordingLog log(true);
  for (const int codePage : {37, 437, 932, 936, 949, 950, 1250, 1258, 1361, 10001, 28591, 28605,
                             51932, 51936, 51949, 52936, 30000}) {
    EXPECT_TRUE(EncodingConvert::ensureHashFromUnicode2(codePage, log));
    EXPECT_FALSE(isBuilt(codePage)) << codePage;
  }
  for (const int codePage : {500, 708, 869, 874, 1026, 1149, 10000, 10082, 20127, 21866, 38598}) {
    EXPECT_TRUE(EncodingConvert::ensureHashFromUnicode2(codePage, log));
    EXPECT_NE(registry::fromUnicode(codePage), nullptr) << codePage;
  }
}

// --- Shared tables ------------------------------------------------------------------------

TEST_F(TableRegistry, Shares936With52936WhicheverComesFirst) {
  for (const auto& [first, second] : {std::pair(936, 52936), std::pair(52936, 936)}) {
    EncodingConvert::cleanupMemory();
    ensureToUnicode(first);
    ensureFromUnicode(first);
    const ToUnicodeTable* to = registry::toUnicode(first);
    const FromUnicodeTable* from = registry::fromUnicode(first);
    ASSERT_TRUE(to && from);
    EXPECT_EQ(registry::toUnicode(second), to);
    EXPECT_TRUE(ensureToUnicode(second));
    EXPECT_TRUE(ensureFromUnicode(second));
    EXPECT_EQ(registry::toUnicode(second), to);
    EXPECT_EQ(registry::fromUnicode(second), from);
    EXPECT_EQ(decode(first, "B0 A1 80"), decode(second, "B0 A1 80"));
    EXPECT_EQ(encode(first, "4A 55 AC 20"), encode(second, "4A 55 AC 20"));
  }
}

TEST_F(TableRegistry, BuildsTheEncodingTableOf10001ToDecodeIt) {
  EXPECT_TRUE(ensureToUnicode(10001));
  const FromUnicodeTable* from = registry::fromUnicode(10001);
  ASSERT_NE(from, nullptr);
  EXPECT_TRUE(ensureFromUnicode(10001));
  EXPECT_EQ(registry::fromUnicode(10001), from);
}

TEST_F(TableRegistry, UsesTheEncodingTableOf10001ThatIsThere) {
  EXPECT_TRUE(ensureFromUnicode(10001));
  const FromUnicodeTable* from = registry::fromUnicode(10001);
  EXPECT_EQ(registry::toUnicode(10001), nullptr);
  EXPECT_TRUE(ensureToUnicode(10001));
  EXPECT_EQ(registry::fromUnicode(10001), from);
  ASSERT_NE(registry::toUnicode(10001), nullptr);
  EXPECT_TRUE(
      static_cast<const quorvel::PairsToUnicode&>(*registry::toUnicode(10001)).flat.isLowerAscii);
  EXPECT_EQ(decode(10001, "41 A0 FD FE 85 40 82 A0"),
            converts("41 00 A0 00 A9 00 22 21 60 24 42 30"));
  EXPECT_EQ(registry::fromUnicode(932), nullptr) << "the page that it amends is not needed";
}

// --- Teardown -----------------------------------------------------------------------------

TEST_F(TableRegistry, ReleasesEveryTableButThoseOfTwoPages) {
  for (const int codePage : pagesWithTables()) {
    ensureToUnicode(codePage);
    ensureFromUnicode(codePage);
  }
  std::map<int, std::pair<const ToUnicodeTable*, const FromUnicodeTable*>> kept;
  for (const int codePage : {28600, 28601}) {
    kept[codePage] = {registry::toUnicode(codePage), registry::fromUnicode(codePage)};
    ASSERT_TRUE(kept[codePage].first && kept[codePage].second);
  }
  for (int time = 0; time < 2; ++time) {
    EncodingConvert::cleanupMemory();
    for (const int codePage : pagesWithTables()) {
      if (kept.count(codePage)) {
        EXPECT_EQ(registry::toUnicode(codePage), kept[codePage].first);
        EXPECT_EQ(registry::fromUnicode(codePage), kept[codePage].second);
      } else {
        EXPECT_EQ(registry::toUnicode(codePage), nullptr) << codePage;
        EXPECT_EQ(registry::fromUnicode(codePage), nullptr) << codePage;
      }
    }
  }
}

TEST_F(TableRegistry, MayBeTornDownTwiceAndWhenNothingWasBuilt) {
  EncodingConvert::cleanupMemory();
  EncodingConvert::cleanupMemory();
  EXPECT_EQ(convert(1252, 932, "63 61 66 82"), fails("'caf'"));
  EncodingConvert::cleanupMemory();
  EncodingConvert::cleanupMemory();
  EXPECT_EQ(convert(1252, 932, "63 61 66 82"), fails("'caf'"));
}

TEST_F(TableRegistry, RebuildsTheSameOnDemand) {
  for (const int codePage : {37, 1252, 28605, 936, 932, 10001, 51932}) {
    Outcome decoded[2];
    Outcome encoded[2];
    for (int time = 0; time < 2; ++time) {
      decoded[time] = convert(codePage, 1200, "41 82 A0 B0 A1 80 5C");
      encoded[time] = convert(1200, codePage, "41 00 42 30 AC 20 4A 55 E9 00");
      EncodingConvert::cleanupMemory();
      EXPECT_FALSE(isBuilt(codePage));
    }
    EXPECT_EQ(decoded[0], decoded[1]) << codePage;
    EXPECT_EQ(encoded[0], encoded[1]) << codePage;
  }
}

TEST_F(TableRegistry, ReleasesTheLastBlockOfIso2022JpToo) {
  const unsigned char* block = quorvel::Japanese::GetSjisFrom2022_LastBlock();
  EXPECT_EQ(quorvel::Japanese::GetSjisFrom2022_LastBlock(), block);
  const std::string content = hex(block, 752);
  EncodingConvert::cleanupMemory();
  EXPECT_EQ(hex(quorvel::Japanese::GetSjisFrom2022_LastBlock(), 752), content);
}

std::size_t bytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

TEST_F(TableRegistry, KeepsNoMoreThan8MebibytesForAllPages) {
  EXPECT_LT(registry::size(), 100'000U) << "only the two pages that stay";
  [[maybe_unused]] const std::size_t before = registry::size();
  [[maybe_unused]] const std::size_t inUse = bytesInUse();
  for (const int codePage : pagesWithTables()) {
    ensureToUnicode(codePage);
    ensureFromUnicode(codePage);
  }
  const std::size_t size = registry::size();
  EXPECT_LE(size, std::size_t{8} << 20);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  // What the tables say of themselves is what was allocated for them.
  EXPECT_NEAR(static_cast<double>(bytesInUse() - inUse), static_cast<double>(size - before),
              0.02 * static_cast<double>(size));
#endif
  EncodingConvert::cleanupMemory();
  EXPECT_LT(registry::size(), 100'000U);
}

// Each table holds an entry for each unit or pair that it could have, but those of
// single bytes from Unicode end at the last unit.
TEST_F(TableRegistry, KeepsOfAPageWhatItsConversionsRead) {
  const auto sizeOfTables = [](int codePage) {
    ensureToUnicode(codePage);
    ensureFromUnicode(codePage);
    return std::pair(registry::toUnicode(codePage)->size(),
                     registry::fromUnicode(codePage)->size());
  };
  EXPECT_LT(sizeOfTables(932).first, 133'000U);
  EXPECT_LT(sizeOfTables(950).second, 132'000U);
  EXPECT_LT(sizeOfTables(1252).first, 1'100U);
  EXPECT_LT(sizeOfTables(1252).second, 0x2123U + 100U) << "the trade mark sign is the last";
}

TEST_F(TableRegistry, GivesAllMemoryBack) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers have allocators of their own";
#else
  const auto inUseAfterARound = [] {
    for (const int codePage : {37, 1252, 28600, 932, 936, 52936, 10001}) {
      ensureToUnicode(codePage);
      ensureFromUnicode(codePage);
    }
    quorvel::Japanese::GetSjisFrom2022_LastBlock();
    EncodingConvert::cleanupMemory();
    return bytesInUse();
  };
  inUseAfterARound();
  const std::size_t before = inUseAfterARound();
  for (int round = 0; round < 3; ++round) EXPECT_EQ(inUseAfterARound(), before);
#endif
}

}  // namespace
