#include <bzlib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/Memory.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/Tables.h"
#include "tools/Base64.h"

namespace {

using namespace quorvel_test;
using quorvel::EncodingConvert;
using quorvel::HashConvert;
using quorvel::NullLog;
using quorvel::test_memory::GuardedBytes;

// --- Packing ----------------------------------------------------------------

std::string stored(const Bytes& table) { return "x" + pack::encodeBase64(table); }

std::string stored(std::string_view table) { return stored(bytes(table)); }

Bytes bzip2(const Bytes& plain) {
  Bytes result(plain.size() + plain.size() / 100 + 600);
  auto size = static_cast<unsigned int>(result.size());
  Bytes source = plain;
  EXPECT_EQ(
      BZ2_bzBuffToBuffCompress(reinterpret_cast<char*>(result.data()), &size,
                               reinterpret_cast<char*>(source.data()), sizeOf(source), 3, 0, 0),
      BZ_OK);
  result.resize(size);
  return result;
}

Bytes header(unsigned int announced) {
  return bytes("E1 A7 94 B3") + lowFirst(announced) + lowFirst(announced >> 16);
}

std::string compressed(const Bytes& table, char flag = 'c') {
  return flag + pack::encodeBase64(header(sizeOf(table)) + bzip2(table));
}

// --- Building ---------------------------------------------------------------

/// Everything that a builder may change, so that one comparison shows it all.
struct State {
  std::map<std::string, std::string> mappings;  // of the slots and behind them
  std::map<unsigned int, unsigned int> direct;  // entries that are not 0
  bool isLowerAscii = false;
  int direction = 0;
  bool hasRemovals = false;

  bool operator==(const State& other) const = default;
};

std::ostream& operator<<(std::ostream& stream, const State& state) {
  for (const auto& [key, value] : state.mappings) stream << key << "->" << value << "; ";
  for (const auto& [byte, unit] : state.direct) stream << "[" << byte << "]=" << unit << "; ";
  return stream << (state.isLowerAscii ? "ascii" : "not ascii") << ", direction " << state.direction
                << (state.hasRemovals ? ", removals" : "");
}

State stateOf(const HashConvert& table) {
  State state;
  table.forEachMapping([&](const unsigned char* key, const unsigned char* value, int length) {
    state.mappings[hex(key, 2)] = hex(value, static_cast<std::size_t>(length));
  });
  for (unsigned int byte = 0; byte < 256; ++byte) {
    if (table.m_byteToUnicode[byte]) state.direct[byte] = table.m_byteToUnicode[byte];
  }
  state.isLowerAscii = table.get_IsLowerAscii();
  state.direction = table.m_direction;
  state.hasRemovals = table.m_hasRemovals;
  return state;
}

/// Builds from a copy of the text behind which nothing can be read.
void build(HashConvert& table, const std::string& text, bool fromUnicode) {
  GuardedBytes guarded(text.size() + 1);
  const auto* packed =
      reinterpret_cast<const char*>(guarded.place(std::string_view(text.c_str(), text.size() + 1)));
  RecordingLog log(true);
  EncodingConvert::buildHash(packed, table, fromUnicode, log);
  EXPECT_EQ(log.lines, Lines());
}

State built(const std::string& text, bool fromUnicode) {
  const auto table = emptyTable(29);
  build(*table, text, fromUnicode);
  return stateOf(*table);
}

State fromUnicode(std::string_view table) { return built(stored(table), true); }
State toUnicode(std::string_view table) { return built(stored(table), false); }

const State kUntouched = {};

// --- The worked example -----------------------------------------------------

const std::string kExample = "61 75  80 AC 20  00  40 81 00 30  01 00 01 00  00 00";

TEST(PackedTable, OfThreeMappingsHasTheseBytes) {
  EXPECT_EQ(stored(kExample), "xYXWArCAAQIEAMAEAAQAAAA==");
}

const State kExampleFromUnicode = {
    {{"AC 20", "80"}, {"00 30", "81 40"}, {"01 30", "81 41"}}, {}, true, 1, false};
const State kExampleToUnicode = {
    {{"81 40", "00 30"}, {"81 41", "01 30"}}, {{0x80, 0x20AC}}, true, 2, false};

TEST(PackedTable, IsBuiltInBothDirections) {
  EXPECT_EQ(built("xYXWArCAAQIEAMAEAAQAAAA==", true), kExampleFromUnicode);
  EXPECT_EQ(built("xYXWArCAAQIEAMAEAAQAAAA==", false), kExampleToUnicode);
}

TEST(PackedTable, IsBuiltFromItsCompressedForm) {
  const Bytes table = bytes(kExample);
  const Bytes block = header(16) + bzip2(table);
  EXPECT_EQ(hex(block.data(), 12), "E1 A7 94 B3 10 00 00 00 42 5A 68 33");
  for (const char flag : {'c', 'C', 'X', 'z', '?', ' '}) {
    EXPECT_EQ(built(compressed(table, flag), true), kExampleFromUnicode) << flag;
    EXPECT_EQ(built(compressed(table, flag), false), kExampleToUnicode) << flag;
  }
}

TEST(PackedTable, FillsTheSlots) {
  const auto table = emptyTable(25183);
  build(*table, stored(kExample), true);
  EXPECT_EQ(slotOf(*table, 0x20AC % 25183).substr(0, 8), "AC 20 80");
  EXPECT_NE(slotOf(*table, 0x20AC % 25183).substr(12), "00");
  EXPECT_EQ(slotOf(*table, 0x3000), "00 30 81 40 00");
  EXPECT_EQ(slotOf(*table, 0x3001), "01 30 81 41 00");
}

// --- Marks ------------------------------------------------------------------

TEST(PackedTable, WithoutMappingsIsBuiltAllTheSame) {
  EXPECT_EQ(fromUnicode("61 75 00 00 00"), (State{{}, {}, true, 1, false}));
  EXPECT_EQ(toUnicode("61 75 00 00 00"), (State{{}, {}, true, 2, false}));
}

TEST(PackedTable, IsLowerAsciiForASmallAOnly) {
  for (const char* mark : {"78", "41", "00", "FF", "75", "64"}) {
    EXPECT_EQ(fromUnicode(std::string(mark) + " 75 00 00 00"), (State{{}, {}, false, 1, false}));
  }
}

TEST(PackedTable, HoldsACompleteListUnlessMarkedWithASmallD) {
  for (const char* mark : {"75", "78", "44", "00", "FF", "61"}) {
    EXPECT_EQ(fromUnicode("61 " + std::string(mark) + " 80 AC 20 00 00 00"),
              (State{{{"AC 20", "80"}}, {}, true, 1, false}));
  }
}

TEST(PackedTable, OverridesTheFlagAndTheDirectionThatTheTableHad) {
  const auto table = emptyTable(29);
  build(*table, stored("61 75 00 00 00"), false);
  build(*table, stored("78 75 00 00 00"), true);
  EXPECT_EQ(stateOf(*table), (State{{}, {}, false, 1, false}));
}

// --- Complete lists ---------------------------------------------------------

TEST(CompleteList, AddsUpTheCodesOfBytesModulo256) {
  // 37, then 37 + F6 = 2D
  const char* list = "78 75  37 04 00  F6 01 00  01 01 00  00 00 00";
  EXPECT_EQ(fromUnicode(list),
            (State{{{"04 00", "37"}, {"05 00", "2D"}, {"06 00", "2E"}}, {}, false, 1, false}));
  EXPECT_EQ(toUnicode(list), (State{{}, {{0x37, 4}, {0x2D, 5}, {0x2E, 6}}, false, 2, false}));
}

TEST(CompleteList, AddsUpTheUnitsOfBytesModulo65536) {
  const char* list = "78 75  41 F0 FF  01 20 00  01 F0 FF  00 00 00";
  EXPECT_EQ(fromUnicode(list),
            (State{{{"F0 FF", "41"}, {"10 00", "42"}, {"00 00", "43"}}, {}, false, 1, true}));
  EXPECT_EQ(toUnicode(list), (State{{}, {{0x41, 0xFFF0}, {0x42, 0x10}}, false, 2, false}));
}

TEST(CompleteList, AddsUpTheCodesAndUnitsOfPairsModulo65536) {
  const char* list = "78 75 00  40 81 00 30  C0 7F 00 D0  41 80 02 00  00 00";
  // 8140, 0100, 8141; U+3000, U+0000, U+0002
  EXPECT_EQ(
      fromUnicode(list),
      (State{{{"00 30", "81 40"}, {"00 00", "01 00"}, {"02 00", "81 41"}}, {}, false, 1, true}));
  EXPECT_EQ(
      toUnicode(list),
      (State{{{"81 40", "00 30"}, {"01 00", "00 00"}, {"81 41", "02 00"}}, {}, false, 2, false}));
}

TEST(CompleteList, StartsTheUnitsOfPairsAtZeroAgain) {
  EXPECT_EQ(fromUnicode("78 75  80 AC 20  00  40 81 01 00  00 00"),
            (State{{{"AC 20", "80"}, {"01 00", "81 40"}}, {}, false, 1, false}));
}

TEST(CompleteList, ReadsADeltaWithALowByteOfZero) {
  EXPECT_EQ(fromUnicode("78 75  00  00 81 00 30  00 01 00 01  00 00"),
            (State{{{"00 30", "81 00"}, {"00 31", "82 00"}}, {}, false, 1, false}));
}

TEST(CompleteList, MayReachTheByteZeroByItsSum) {
  EXPECT_EQ(fromUnicode("78 75  80 01 00  80 01 00  00 00 00"),
            (State{{{"01 00", "80"}, {"02 00", "00"}}, {}, false, 1, false}));
  EXPECT_EQ(toUnicode("78 75  80 01 00  80 01 00  00 00 00"),
            (State{{}, {{0x80, 1}, {0, 2}}, false, 2, false}));
}

TEST(CompleteList, LetsTheLastStoreOfAByteAndTheFirstInsertionOfAKeyStand) {
  const char* bytesTwice = "78 75  20 A0 00  FF 01 00  01 01 00  00 00 00";
  EXPECT_EQ(toUnicode(bytesTwice), (State{{}, {{0x20, 0xA2}, {0x1F, 0xA1}}, false, 2, false}));
  const char* pairTwice = "78 75 00  40 81 00 30  01 00 01 00  FF FF 01 00  00 00";
  EXPECT_EQ(toUnicode(pairTwice),
            (State{{{"81 40", "00 30"}, {"81 41", "01 30"}}, {}, false, 2, false}));
  const char* unitTwice = "78 75  80 AC 20  01 00 00  00  40 81 AC 20  00 00";
  EXPECT_EQ(fromUnicode(unitTwice), (State{{{"AC 20", "80"}}, {}, false, 1, false}));
}

TEST(CompleteList, IsReadNoFurtherThanItsEnd) {
  const std::string bodies[] = {"00 00 00", "80 AC 20 00 00 00", "00 40 81 00 30 00 00",
                                "80 AC 20 00 40 81 00 30 01 00 01 00 00 00"};
  NullLog log;
  for (const std::string& body : bodies) {
    const Bytes list = bytes(body);
    GuardedBytes guarded;
    const unsigned char* placed =
        guarded.place({reinterpret_cast<const char*>(list.data()), list.size()});
    for (const bool isFromUnicode : {false, true}) {
      const auto table = emptyTable(29);
      table->put_IsLowerAscii(true);
      EncodingConvert::buildFromComplete(placed, *table, isFromUnicode, log);
      State expected = built(stored("61 75 " + body), isFromUnicode);
      EXPECT_EQ(stateOf(*table), expected) << body;
    }
  }
}

// --- Lists of changes -------------------------------------------------------

// "a": 80 is U+20AC, 8140 U+3000, 8141 U+3001, 8142 U+0100.
const std::string kBase = "61 75  80 AC 20  00  42 81 00 01  FE FF 00 2F  01 00 01 00  00 00";

State changed(std::string_view changes) {
  const auto table = emptyTable(5);
  build(*table, stored(kBase), true);
  build(*table, stored(changes), true);
  return stateOf(*table);
}

TEST(ListOfChanges, MayBeEmptyAndYetMarksTheTable) {
  EXPECT_EQ(changed("61 64  00 00  00  00 00"),
            (State{{{"AC 20", "80"}, {"00 30", "81 40"}, {"01 30", "81 41"}, {"00 01", "81 42"}},
                   {},
                   true,
                   1,
                   true}));
}

TEST(ListOfChanges, RemovesKeys) {
  EXPECT_EQ(changed("61 64  AC 20  01 30  55 55  00 00  00  00 00"),
            (State{{{"00 30", "81 40"}, {"00 01", "81 42"}}, {}, true, 1, true}));
}

TEST(ListOfChanges, RemovesAKeyWhoseFirstByteIsZero) {
  EXPECT_EQ(changed("61 64  00 01  00 30  00 00  00  00 00"),
            (State{{{"AC 20", "80"}, {"01 30", "81 41"}}, {}, true, 1, true}));
}

TEST(ListOfChanges, ReplacesAndAddsOneByteCodes) {
  EXPECT_EQ(changed("61 64  00 00  A0 AC 20  A1 00 30  A2 05 00  00  00 00"),
            (State{{{"AC 20", "A0"},
                    {"00 30", "A1"},
                    {"05 00", "A2"},
                    {"01 30", "81 41"},
                    {"00 01", "81 42"}},
                   {},
                   true,
                   1,
                   true}));
}

TEST(ListOfChanges, ReplacesAndAddsTwoByteCodes) {
  EXPECT_EQ(changed("61 64  00 00  00  85 01 AC 20  00 02 00 30  86 00 06 00  00 00"),
            (State{{{"AC 20", "85 01"},
                    {"00 30", "00 02"},
                    {"06 00", "86 00"},
                    {"01 30", "81 41"},
                    {"00 01", "81 42"}},
                   {},
                   true,
                   1,
                   true}));
}

TEST(ListOfChanges, TakesTheLastOfTwoChangesOfAKey) {
  EXPECT_EQ(changed("61 64  AC 20  00 00  A0 AC 20  A1 AC 20  00  85 01 AC 20  85 02 AC 20  00 00"),
            (State{{{"AC 20", "85 02"}, {"00 30", "81 40"}, {"01 30", "81 41"}, {"00 01", "81 42"}},
                   {},
                   true,
                   1,
                   true}));
}

TEST(ListOfChanges, AnswersTheProbeOfEveryKey) {
  for (const int buckets : {1, 3, 5, 269}) {
    const auto table = emptyTable(buckets);
    build(*table, stored(kBase), true);
    build(*table, stored("61 64  AC 20  00 00  A1 00 30  00  85 01 01 30  00 00"), true);
    EXPECT_EQ(probe(*table, "AC 20"), "");
    EXPECT_EQ(probe(*table, "00 30"), "A1");
    EXPECT_EQ(probe(*table, "01 30"), "85 01");
    EXPECT_EQ(probe(*table, "00 01"), "81 42");
  }
}

TEST(ListOfChanges, DecidesWhetherTheTableIsLowerAscii) {
  EXPECT_FALSE(changed("78 64  00 00  00  00 00").isLowerAscii);
  EXPECT_TRUE(changed("61 64  00 00  00  00 00").isLowerAscii);
}

TEST(ListOfChanges, ToUnicodeChangesNoEntryButTheMarks) {
  const auto table = emptyTable(29);
  build(*table, stored(kExample), true);
  build(*table, stored("78 64  AC 20  00 00  A1 00 30  00  85 01 01 30  00 00"), false);
  State expected = kExampleFromUnicode;
  expected.isLowerAscii = false;
  expected.direction = 2;
  EXPECT_EQ(stateOf(*table), expected);
}

TEST(ListOfChanges, IsReadNoFurtherThanItsEndAndLeavesTheMarks) {
  const std::string bodies[] = {"00 00 00 00 00", "AC 20 00 00 00 00 00", "00 00 A1 00 30 00 00 00",
                                "00 00 00 85 01 01 30 00 00"};
  NullLog log;
  for (const std::string& body : bodies) {
    const Bytes list = bytes(body);
    GuardedBytes guarded;
    const auto table = emptyTable(5);
    build(*table, stored(kBase), true);
    table->put_IsLowerAscii(false);
    table->m_direction = 7;
    EncodingConvert::buildFromDiffs(
        guarded.place({reinterpret_cast<const char*>(list.data()), list.size()}), *table, log);
    State expected = changed("61 64 " + body);
    expected.isLowerAscii = false;
    expected.direction = 7;
    EXPECT_EQ(stateOf(*table), expected) << body;
  }
}

// --- Texts that are broken --------------------------------------------------

void expectUntouched(const std::string& text) {
  for (const bool isFromUnicode : {false, true}) {
    EXPECT_EQ(built(text, isFromUnicode), kUntouched) << text.substr(0, 80);
  }
  // Nor is anything taken from a table that has been built.
  const auto table = emptyTable(29);
  build(*table, stored(kExample), true);
  build(*table, text, false);
  EXPECT_EQ(stateOf(*table), kExampleFromUnicode) << text.substr(0, 80);
}

TEST(BrokenText, LeavesTheTableUntouchedWhenItIsNoBase64) {
  for (const char* text : {"xYXWArCAAQIEAMAEAAQAAAA=", "xYXWArCAAQIEAMAEAAQAAAA",
                           "x*XWArCAAQIEAMAEAAQAAAA==", "xYXWArCAAQIEAM\nAEAAQAAAA==", "xYXWA====",
                           "x=YXW", "xYXW-", "xYXW_", "x ", "c!", "cAAAAA"}) {
    expectUntouched(text);
  }
}

TEST(BrokenText, LeavesTheTableUntouchedWhenNothingIsInIt) {
  expectUntouched("x");
  expectUntouched("c");
  expectUntouched("");
  const auto table = emptyTable(29);
  NullLog log;
  EncodingConvert::buildHash(nullptr, *table, true, log);
  EXPECT_EQ(stateOf(*table), kUntouched);
}

TEST(BrokenText, LeavesTheTableUntouchedWhenTheBlockHasAnotherHeader) {
  const Bytes block = header(16) + bzip2(bytes(kExample));
  for (std::size_t i = 0; i < 8; ++i) {
    Bytes other = block;
    other[i] ^= 0x10;
    expectUntouched("c" + pack::encodeBase64(other));
  }
  for (unsigned int announced : {0U, 15U, 17U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    expectUntouched("c" + pack::encodeBase64(header(announced) + bzip2(bytes(kExample))));
  }
}

TEST(BrokenText, LeavesTheTableUntouchedWhenTheBlockIsCutOff) {
  const Bytes block = header(16) + bzip2(bytes(kExample));
  for (std::size_t length = 0; length < block.size(); ++length) {
    expectUntouched("c" + pack::encodeBase64(Bytes(
                              block.begin(), block.begin() + static_cast<std::ptrdiff_t>(length))));
  }
}

TEST(BrokenText, IsNotUnpackedBeyondWhatATableCanHold) {
  // 32 MiB of zeros in some 50 bytes, once announced as what they are.
  const Bytes zeros(std::size_t{32} << 20);
  const Bytes bomb = bzip2(zeros);
  std::optional<quorvel::test_memory::MemoryLimit> limit;
  if (quorvel::test_memory::canLimitMemory) limit.emplace(std::size_t{24} << 20);
  for (unsigned int announced : {sizeOf(zeros), 16U, 0xFFFFFFFFU}) {
    const State state = built("c" + pack::encodeBase64(header(announced) + bomb), true);
    EXPECT_EQ(state, kUntouched);
  }
}

TEST(BrokenText, LeavesTheTableUntouchedWhenItIsLongerThanAnyTable) {
  Bytes table = bytes("61 75 80 AC 20 00 00 00");
  table.resize((std::size_t{1} << 20) + 1);
  expectUntouched(compressed(table));
  table.pop_back();
  EXPECT_EQ(built(compressed(table), true), (State{{{"AC 20", "80"}}, {}, true, 1, false}));
}

// Whether the list, less the marks before it, ends as such a list ends; then
// what it says is settled, whatever follows.
bool endsByItself(const Bytes& table) {
  const auto at = [&](std::size_t i) { return i < table.size() ? int{table[i]} : -1; };
  const auto isPair = [&](std::size_t i) { return at(i) > 0 || at(i + 1) > 0; };
  std::size_t i = 2;
  if (table.size() < 2) return false;
  if (at(1) == 'd') {
    while (isPair(i)) i += 2;
    i += 2;
  }
  while (at(i) > 0) i += 3;
  i += 1;
  while (isPair(i)) i += 4;
  return i + 2 <= table.size();
}

// The list read by its description, for one that ends by itself.
State described(const Bytes& table, bool isFromUnicode) {
  State state;
  state.isLowerAscii = table[0] == 'a';
  state.direction = isFromUnicode ? 1 : 2;
  const auto pairAt = [&](std::size_t i) { return table[i] + 256U * table[i + 1]; };
  std::size_t i = 2;
  unsigned int code = 0;
  unsigned int unit = 0;
  for (; table[i]; i += 3) {
    code = (code + table[i]) % 256;
    unit = (unit + pairAt(i + 1)) % 65536;
    if (isFromUnicode) {
      state.mappings.try_emplace(hex(lowFirst(unit)), hex(Bytes{static_cast<unsigned char>(code)}));
    } else {
      state.direct[code] = unit;
    }
  }
  std::erase_if(state.direct, [](const auto& entry) { return entry.second == 0; });
  code = 0;
  unit = 0;
  for (++i; pairAt(i); i += 4) {
    code = (code + pairAt(i)) % 65536;
    unit = (unit + pairAt(i + 2)) % 65536;
    const std::string codeText = hex(highFirst(code));
    const std::string unitText = hex(lowFirst(unit));
    state.mappings.try_emplace(isFromUnicode ? unitText : codeText,
                               isFromUnicode ? codeText : unitText);
  }
  // The zero key has no slot, so that no empty slot may speak for it.
  state.hasRemovals = state.mappings.count("00 00") != 0;
  return state;
}

void expectBounded(const Bytes& table) {
  for (const bool isFromUnicode : {false, true}) {
    const State state = built(stored(table), isFromUnicode);
    EXPECT_LE(state.mappings.size() + state.direct.size(), table.size() / 3 + 1) << hex(table);
    if (table.size() < 2 || table[1] == 'd' || !endsByItself(table)) continue;
    EXPECT_EQ(state, described(table, isFromUnicode)) << hex(table);
  }
}

TEST(BrokenList, ThatIsCutOffKeepsWhatStandsBeforeTheCut) {
  const Bytes table = bytes(kExample);
  for (std::size_t length = 1; length < table.size(); ++length) {
    const Bytes cut(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(length));
    SCOPED_TRACE(hex(cut));
    expectBounded(cut);
    const State state = built(stored(cut), true);
    EXPECT_EQ(state.mappings.count("AC 20"), length >= 5 ? 1U : 0U);
    EXPECT_EQ(state.mappings.count("00 30"), length >= 10 ? 1U : 0U);
    EXPECT_EQ(state.mappings.count("01 30"), length >= 13 ? 1U : 0U);
    EXPECT_EQ(built(compressed(cut), true), state);
  }
}

TEST(BrokenList, OfChangesThatIsCutOffKeepsWhatStandsBeforeTheCut) {
  const Bytes table = bytes("61 64  AC 20  00 01  00 00  A1 00 30  00  85 01 01 30  00 00");
  for (std::size_t length = 2; length <= table.size(); ++length) {
    const Bytes cut(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(length));
    SCOPED_TRACE(hex(cut));
    expectBounded(cut);
    const State state = changed(hex(cut));
    EXPECT_EQ(state.mappings.count("AC 20"), length >= 4 ? 0U : 1U);
    EXPECT_EQ(state.mappings.count("00 01"), length >= 6 ? 0U : 1U);
    if (length <= 8 || length >= 11) {
      EXPECT_EQ(state.mappings.at("00 30"), length >= 11 ? "A1" : "81 40");
    }
    if (length >= 16) {
      EXPECT_EQ(state.mappings.at("01 30"), "85 01");
    }
    EXPECT_LE(state.mappings.size(), 5U);
  }
}

TEST(BrokenList, WithoutAnEndIsReadOnce) {
  for (const char* start : {"61 75", "61 64", "61 75 00", "61 64 00 00", "61 64 00 00 00"}) {
    for (std::size_t length : {1U, 2U, 3U, 4U, 5U, 599U, 600U, 601U, 602U}) {
      const Bytes table = bytes(start) + Bytes(length, 0xFF);
      expectBounded(table);
      EXPECT_EQ(built(compressed(table), true), built(stored(table), true));
    }
  }
}

TEST(BrokenList, OfOneByteOrTwoHoldsNothing) {
  EXPECT_EQ(fromUnicode("61"), (State{{}, {}, true, 1, false}));
  EXPECT_EQ(fromUnicode("61 75"), (State{{}, {}, true, 1, false}));
  EXPECT_EQ(toUnicode("61 75"), (State{{}, {}, true, 2, false}));
  EXPECT_EQ(fromUnicode("61 64"), (State{{}, {}, true, 1, true}));
}

TEST(RandomList, IsReadByItsDescriptionAndWithinItsBounds) {
  std::mt19937 random(20);
  const auto below = [&](std::size_t n) { return static_cast<unsigned int>(random() % n); };
  for (int round = 0; round < 3000; ++round) {
    Bytes table = bytes(below(2) ? "61 75" : "78 64");
    const unsigned int zeros = 2 + below(8);  // the fewer, the longer the sections
    for (unsigned int left = below(90); left; --left) {
      table.push_back(static_cast<unsigned char>(below(zeros) ? below(256) : 0));
    }
    if (below(2)) table.resize(table.size() + 8);
    expectBounded(table);
  }
}

TEST(RandomText, NeverDoesHarm) {
  constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=-*";
  std::mt19937 random(21);
  const Bytes block = header(16) + bzip2(bytes(kExample));
  for (int round = 0; round < 1500; ++round) {
    std::string text(1, "xc"[random() % 2]);
    for (auto left = random() % 40; left; --left) text += digits[random() % (sizeof digits - 1)];
    const State state = built(text, random() % 2 == 0);
    EXPECT_LE(state.mappings.size() + state.direct.size(), text.size());

    Bytes damaged = block;
    damaged[random() % damaged.size()] ^= static_cast<unsigned char>(1U << random() % 8);
    EXPECT_LE(built("c" + pack::encodeBase64(damaged), true).mappings.size(), 6U);
  }
}

}  // namespace
