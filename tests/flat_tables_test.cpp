// What lists become when they are laid flat, where no page shows it.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "quorvel/kernel/Loops.hpp"
#include "quorvel/pages/FlatTables.hpp"
#include "quorvel/pages/TableLoops.hpp"
#include "tests/helpers/Bytes.h"
#include "tools/Base64.h"

namespace {

using namespace quorvel_test;
using namespace quorvel;

/// A list with its marks.
std::unique_ptr<PackedList> listOf(std::string_view content) {
  auto list = std::make_unique<PackedList>();
  const std::string packed = "x" + pack::encodeBase64(bytes(content));
  EXPECT_EQ(unpackList(packed.c_str(), *list), Unpacked::whole);
  return list;
}

std::unique_ptr<UnitCodes> codesOf(std::string_view content, std::string_view changes = "") {
  auto codes = std::make_unique<UnitCodes>();
  addList(*listOf(content), *codes);
  if (!changes.empty()) addList(*listOf(changes), *codes);
  return codes;
}

/// What the loop over a table and the step where it stops make of units: "-" for
/// one without a code.
template <typename Run>
std::string encoded(const FromUnicodeTable& table, const Run& run, std::string_view units) {
  const Bytes text = bytes(units);
  const unsigned char* in = text.data();
  const unsigned char* const end = in + text.size();
  std::string result;
  const auto add = [&](const std::string& more) { result += (result.empty() ? "" : " ") + more; };
  while (end - in >= 2) {
    unsigned char out[100];
    const Progress progress = run(in, end, out);
    if (progress.out != out) add(hex(out, static_cast<std::size_t>(progress.out - out)));
    in = progress.in;
    if (end - in < 2) break;
    const Position next = encodeWhereStopped(table, in, out);
    add(next.in == in ? "-" : hex(out, static_cast<std::size_t>(next.out - out)));
    in += 2;
  }
  return result;
}

std::string encodedBytes(const UnicodeToBytes& table, std::string_view units) {
  return encoded(
      table,
      [&](const unsigned char* in, const unsigned char* end, unsigned char* out) {
        return kernel::scalar::unitsToBytes(table.flat, in, end, out);
      },
      units);
}

std::string encodedPairs(const UnicodeToPairs& table, std::string_view units) {
  return encoded(
      table,
      [&](const unsigned char* in, const unsigned char* end, unsigned char* out) {
        return kernel::scalar::unitsToPairs(table.flat, in, end, out);
      },
      units);
}

std::string encodedWithOwnDigits(const UnicodeToBytesAndDigits& table, std::string_view units) {
  return encoded(
      table,
      [&](const unsigned char* in, const unsigned char* end, unsigned char* out) {
        return encodeWithOwnDigits(table, in, end, out);
      },
      units);
}

TEST(FlatTables, OfBytesEndAtTheLastUnitThatHasACode) {
  EXPECT_EQ(unicodeToBytesOf(listOf("61 75  80 AC 20  00  00 00").get())->flat.count, 0x20ADU);
  EXPECT_EQ(unicodeToBytesOf(listOf("61 75  00  00 00").get())->flat.count, 0x80U);
  EXPECT_EQ(unicodeToBytesOf(listOf("78 75  00  00 00").get())->flat.count, 1U);
  EXPECT_EQ(unicodeToBytesOf(listOf("78 75  80 FF FF  00  00 00").get())->flat.count, 0x10000U);
}

TEST(FlatTables, OfBytesHaveNothingBehindTheirEnd) {
  const auto table = unicodeToBytesOf(listOf("61 75  80 AC 20  00  00 00").get());
  EXPECT_EQ(encodedBytes(*table, "41 00 AC 20 AD 20 FF FF 00 00"), "41 80 - - 00");
  const auto empty = unicodeToBytesOf(listOf("78 75  00  00 00").get());
  EXPECT_EQ(encodedBytes(*empty, "00 00 01 00"), "00 -");
}

TEST(FlatTables, EncodeTheUnitAtWhichLoopsStop) {
  EXPECT_EQ(encodedBytes(*unicodeToBytesOf(listOf("61 75  80 FD EF  00  00 00").get()),
                         "FD EF 41 00 FE EF"),
            "80 41 -");
  EXPECT_EQ(encodedPairs(*unicodeToPairsOf(*codesOf("61 75  00  40 81 FD EF  00 00")),
                         "FD EF 41 00 FE EF"),
            "81 40 41 -");
  EXPECT_EQ(encodedPairs(*unicodeToPairsOf(*codesOf("61 75  80 FD EF  00  00 00")), "FD EF"), "80");
  EXPECT_EQ(encodedBytes(*unicodeToBytesOf(listOf("61 75  00  00 00").get()), "FD EF"), "-");
}

TEST(FlatTables, KnowTheDigitsOfThePageBesideThoseThatBecomeAscii) {
  const auto table = unicodeToBytesAndDigitsOf(
      listOf("61 75  90 61 06  01 96 00  00  00 00").get());  // 90 is U+0661, 91 is U+06F7
  auto& digits = static_cast<UnicodeToBytesAndDigits&>(*table);
  EXPECT_EQ(encodedBytes(*table, "61 06 F7 06 60 06 F9 06 41 00"), "31 37 30 39 41");
  EXPECT_EQ(encodedWithOwnDigits(digits, "61 06 F7 06 60 06 F9 06 41 00 00 00 FD EF"),
            "90 91 - - 41 00 -");
}

TEST(FlatTables, KeepTheFirstCodeOfAUnitAndTheFirstUnitOfACode) {
  const auto list = listOf("78 75  80 AC 20  80 00 00  00  40 81 AC 20  01 00 01 00  00 00");
  auto codes = std::make_unique<UnitCodes>();
  addList(*list, *codes);
  EXPECT_EQ(encodedPairs(*unicodeToPairsOf(*codes), "AC 20 AD 20"), "80 81 41");
  EXPECT_EQ(encodedBytes(*unicodeToBytesOf(listOf("78 75  80 AC 20  01 00 00  00  00 00").get()),
                         "AC 20"),
            "80");
  const auto twice = listOf("78 75  00  40 81 00 30  00 01 01 00  00 FF 01 00  00 00");
  const auto decoded = pairsToUnicodeOf(twice.get());
  EXPECT_EQ(decoded->flat.units[0x8140], 0x3000);
  EXPECT_EQ(decoded->flat.units[0x8240], 0x3001);
}

TEST(FlatTables, TakeChangesAsTheyCome) {
  const std::string_view base = "61 75  80 AC 20  00  40 81 00 30  01 00 01 00  00 00";
  // Off with U+3000; 90 for U+3001; 82 41 for U+20AC.
  const std::string_view changes = "61 64  00 30 00 00  90 01 30 00  82 41 AC 20 00 00";
  const auto codes = codesOf(base, changes);
  EXPECT_EQ(encodedPairs(*unicodeToPairsOf(*codes), "00 30 01 30 AC 20"), "- 90 82 41");
  const auto reversed = reverseOf(*codes);
  EXPECT_EQ(reversed->flat.bytes[0x90], 0x3001);
  EXPECT_EQ(reversed->flat.units[0x8241], 0x20AC);
  EXPECT_EQ(reversed->flat.units[0x8140], 0);
}

TEST(FlatTables, AreReversedToTheLowestUnitOfACode) {
  // 80 for U+0041, which ASCII hides, U+20AC and U+0042; 81 40 for U+3000 and 2FFF.
  const auto codes =
      codesOf("61 75  00  00 00",
              "61 64  00 00  80 AC 20  80 42 00  80 41 00  00  81 40 00 30  81 40 FF 2F"
              "  00 00");
  const auto reversed = reverseOf(*codes);
  EXPECT_EQ(reversed->flat.bytes[0x80], 0x0041);
  EXPECT_EQ(reversed->flat.units[0x8140], 0x2FFF);
  EXPECT_EQ(encodedPairs(*unicodeToPairsOf(*codes), "41 00 AC 20"), "41 80");
}

TEST(FlatTables, AreEmptyWithoutAList) {
  const auto bytesTable = bytesToUnicodeOf(nullptr);
  EXPECT_TRUE(std::ranges::all_of(bytesTable->flat.units, [](int unit) { return unit == 0; }));
  EXPECT_EQ(encodedBytes(*unicodeToBytesOf(nullptr), "00 00 41 00"), "00 -");
  const auto pairsTable = pairsToUnicodeOf(nullptr);
  EXPECT_TRUE(std::ranges::all_of(pairsTable->flat.units, [](int unit) { return unit == 0; }));
}

}  // namespace
