#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/pages/PackedTables.hpp"
#include "quorvel/pages/SjisLastBlock.hpp"
#include "tests/CodePageFile.h"
#include "tests/helpers/PackedList.h"

namespace {

using namespace quorvel;
using namespace quorvel_test;

std::string textOf(bool (*get)(StringBuffer&)) {
  StringBuffer text;
  EXPECT_TRUE(get(text));
  return text.getString();
}

// --- Single-byte tables -----------------------------------------------------

struct SingleByteTable {
  const char* text;
  char mark;  // of the lower half
  std::size_t records;
};

#define SINGLE_BYTE_TABLE(name, mark, records) \
  {                                            \
#name, { name, mark, records }             \
  }

const std::map<std::string, SingleByteTable> singleByteTables = {
    SINGLE_BYTE_TABLE(_Enc_IBM037, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM437, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM500, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_ASMO_708, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_DOS_720, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_ibm737, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_ibm775, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_ibm850, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_ibm852, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM855, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_ibm857, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM00858, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM860, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_ibm861, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_DOS_862, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM863, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM864, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM865, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_cp866, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_ibm869, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM870, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_windows_874, 'a', 97),
    SINGLE_BYTE_TABLE(_Enc_cp875, 'x', 249),
    SINGLE_BYTE_TABLE(_Enc_IBM1026, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01047, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01140, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01141, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01142, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01143, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01144, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01145, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01146, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01147, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01148, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM01149, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_windows_1250, 'a', 123),
    SINGLE_BYTE_TABLE(_Enc_windows_1251, 'a', 127),
    SINGLE_BYTE_TABLE(_Enc_windows_1252, 'a', 123),
    SINGLE_BYTE_TABLE(_Enc_windows_1253, 'a', 111),
    SINGLE_BYTE_TABLE(_Enc_windows_1254, 'a', 121),
    SINGLE_BYTE_TABLE(_Enc_windows_1255, 'a', 105),
    SINGLE_BYTE_TABLE(_Enc_windows_1256, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_windows_1257, 'a', 116),
    SINGLE_BYTE_TABLE(_Enc_windows_1258, 'a', 119),
    SINGLE_BYTE_TABLE(_Enc_macintosh, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_arabic, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_hebrew, 'a', 127),
    SINGLE_BYTE_TABLE(_Enc_x_mac_greek, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_cyrillic, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_romanian, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_ukrainian, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_thai, 'x', 225),
    SINGLE_BYTE_TABLE(_Enc_x_mac_ce, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_icelandic, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_turkish, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_mac_croatian, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_x_IA5, 'x', 128),
    SINGLE_BYTE_TABLE(_Enc_x_IA5_German, 'x', 128),
    SINGLE_BYTE_TABLE(_Enc_x_IA5_Swedish, 'x', 128),
    SINGLE_BYTE_TABLE(_Enc_x_IA5_Norwegian, 'x', 128),
    SINGLE_BYTE_TABLE(_Enc_us_ascii, 'a', 1),
    SINGLE_BYTE_TABLE(_Enc_x_cp20261, 'x', 243),
    SINGLE_BYTE_TABLE(_Enc_x_cp20269, 'x', 243),
    SINGLE_BYTE_TABLE(_Enc_IBM273, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM277, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM278, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM280, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM284, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM285, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM290, 'x', 228),
    SINGLE_BYTE_TABLE(_Enc_IBM297, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM420, 'x', 247),
    SINGLE_BYTE_TABLE(_Enc_IBM423, 'x', 248),
    SINGLE_BYTE_TABLE(_Enc_IBM424, 'x', 217),
    SINGLE_BYTE_TABLE(_Enc_IBM_Thai, 'x', 250),
    SINGLE_BYTE_TABLE(_Enc_koi8_r, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_IBM871, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM880, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_IBM905, 'x', 248),
    SINGLE_BYTE_TABLE(_Enc_IBM00924, 'x', 254),
    SINGLE_BYTE_TABLE(_Enc_cp1025, 'x', 255),
    SINGLE_BYTE_TABLE(_Enc_koi8_u, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_1, 'a', 123),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_2, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_3, 'a', 121),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_4, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_5, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_6, 'a', 83),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_7, 'a', 125),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_8, 'a', 92),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_9, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_10, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_11, 'a', 120),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_13, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_15, 'a', 128),
    SINGLE_BYTE_TABLE(_Enc_iso_8859_8_i, 'a', 92),
};

#undef SINGLE_BYTE_TABLE

TEST(PackedTables, HaveTheFiguresOfEachSingleByteTable) {
  for (const auto& [name, expected] : singleByteTables) {
    SCOPED_TRACE(name);
    const Numbers table = unpack(expected.text);
    EXPECT_EQ(expected.mark, static_cast<char>(table.at(0)));
    EXPECT_EQ('u', static_cast<char>(table.at(1)));
    const CompleteList list = readCompleteList(table);
    EXPECT_EQ(expected.records, list.singles.size());
    EXPECT_TRUE(list.doubles.empty());
    EXPECT_EQ(table.size(), list.length);
    EXPECT_EQ(2 + 3 * expected.records + 1 + 2, table.size());
  }
}

TEST(PackedTables, StoreUsAsciiAndCompressEveryOtherTable) {
  EXPECT_STREQ("xYXUgoAAAAAA=", _Enc_us_ascii);
  for (const auto& [name, table] : singleByteTables) {
    EXPECT_EQ(name == "_Enc_us_ascii" ? 'x' : 'c', table.text[0]) << name;
  }
  EXPECT_EQ('c', _Enc_x_mac_japanese[0]);
}

TEST(PackedTables, CompressBehindTheHeaderInBlocksOfThreeHundredThousandBytes) {
  const Numbers block = fromBase64(std::string(_Enc_windows_1252).substr(1));
  const Numbers header(block.begin(), block.begin() + 12);
  EXPECT_EQ((Numbers{0xE1, 0xA7, 0x94, 0xB3, 374 & 0xFF, 374 >> 8, 0, 0, 'B', 'Z', 'h', '3'}),
            header);
}

TEST(PackedTables, ShareOneMappingWherePagesAreTheSame) {
  EXPECT_STREQ(_Enc_windows_1252, _Enc_iso_8859_1);
  EXPECT_STREQ(_Enc_x_cp20269, _Enc_x_cp20261);
  EXPECT_STREQ(_Enc_iso_8859_8, _Enc_iso_8859_8_i);
  EXPECT_EQ(textOf(GetGb2312), textOf(GetEucCN));
}

TEST(PackedTables, WriteANoBreakSpaceAsASpaceInUsAscii) {
  EXPECT_EQ((std::vector<Record>{{0x20, 0xA0}}), readCompleteList(unpack(_Enc_us_ascii)).singles);
}

// The last record of a byte decides what it decodes to, so the best fit on the
// space byte stands before all others and the sums of the next record wrap.
TEST(PackedTables, LetTheSpaceByteDecodeToASpace) {
  const std::vector<std::pair<const char*, unsigned int>> tables = {{_Enc_x_IA5, 0x20},
                                                                    {_Enc_x_IA5_German, 0x20},
                                                                    {_Enc_x_IA5_Swedish, 0x20},
                                                                    {_Enc_x_IA5_Norwegian, 0x20},
                                                                    {_Enc_IBM290, 0x40}};
  for (const auto& [text, space] : tables) {
    const std::vector<Record> records = readCompleteList(unpack(text)).singles;
    EXPECT_EQ(Record(space, 0xA0), records.at(0));
    EXPECT_EQ(Record(0x01, 0x01), records.at(1));
    std::map<unsigned int, unsigned int> last;
    for (const auto& [code, unit] : records) last[code] = unit;
    EXPECT_EQ(0x20U, last[space]);
  }
}

// --- Multibyte tables -------------------------------------------------------

struct MultibyteTable {
  const char* name;
  bool (*get)(StringBuffer&);
  std::size_t pieces;
  std::size_t lastPiece;
  std::size_t textLength;
  std::size_t tableLength;
  std::size_t singles;
  std::size_t doubles;
};

constexpr MultibyteTable multibyteTables[] = {
    {"GetEncShiftJis", GetEncShiftJis, 56, 156, 22157, 37039, 70, 9206},
    {"GetGb2312", GetGb2312, 84, 328, 33529, 95774, 3, 23940},
    {"GetEucCN", GetEucCN, 84, 328, 33529, 95774, 3, 23940},
    {"GetKorean", GetKorean, 74, 88, 29289, 68958, 3, 17236},
    {"GetBig5", GetBig5, 84, 12, 33213, 78854, 3, 19710},
    {"GetEucJP", GetEucJP, 55, 128, 21729, 37102, 7, 9269},
    {"GetEucKR", GetEucKR, 48, 268, 19069, 33670, 3, 8414},
    {"GetJohab", GetJohab, 44, 280, 17481, 69061, 16, 17252},
};

TEST(PackedTables, HaveTheFiguresOfEachMultibyteTable) {
  for (const MultibyteTable& expected : multibyteTables) {
    SCOPED_TRACE(expected.name);
    const std::string text = textOf(expected.get);
    EXPECT_EQ(expected.textLength, text.size());
    EXPECT_EQ('c', text[0]);
    const Numbers table = unpack(text);
    EXPECT_EQ('a', static_cast<char>(table.at(0)));
    EXPECT_EQ('u', static_cast<char>(table.at(1)));
    EXPECT_EQ(expected.tableLength, table.size());
    const CompleteList list = readCompleteList(table);
    EXPECT_EQ(expected.singles, list.singles.size());
    EXPECT_EQ(expected.doubles, list.doubles.size());
    EXPECT_EQ(table.size(), list.length);
  }
}

// The first piece has 401 characters, those after it 400 and the last the rest.
TEST(PackedTables, ComeInPiecesOfFourHundredCharacters) {
  for (const MultibyteTable& expected : multibyteTables) {
    EXPECT_EQ(401 + 400 * (expected.pieces - 2) + expected.lastPiece, textOf(expected.get).size())
        << expected.name;
  }
}

TEST(PackedTables, AppendBehindWhatTheBufferHolds) {
  StringBuffer text;
  text.append("kept");
  EXPECT_TRUE(GetEucKR(text));
  EXPECT_EQ("kept" + textOf(GetEucKR), text.getString());
}

TEST(PackedTables, CarryTheSingleByteRecordsOfShiftJis) {
  std::vector<Record> expected = {{0x80, 0x80},   {0x20, 0xA0},   {0x5C, 0xA5},  {0xA0, 0xF8F0},
                                  {0xFD, 0xF8F1}, {0xFE, 0xF8F2}, {0xFF, 0xF8F3}};
  for (unsigned int byte = 0xA1; byte <= 0xDF; ++byte) {
    expected.emplace_back(byte, 0xFF61 + byte - 0xA1);
  }
  EXPECT_EQ(expected, readCompleteList(unpack(textOf(GetEncShiftJis))).singles);
}

// The first record of a double-byte code decides what it decodes to. Most kanji
// that share a code with a user-defined character come first by their value; the
// four that do not are put before all user-defined characters.
TEST(PackedTables, PutTheKanjiOfEucJpBeforeTheUserDefinedCharactersOfTheSameCode) {
  const std::vector<Record> records = readCompleteList(unpack(textOf(GetEucJP))).doubles;
  std::size_t at = 0;
  while (records.at(at).second != 0xE000) ++at;
  const std::vector<Record> before(records.begin() + static_cast<std::ptrdiff_t>(at - 4),
                                   records.begin() + static_cast<std::ptrdiff_t>(at));
  EXPECT_EQ(
      (std::vector<Record>{{0xF9D4, 0xFA0E}, {0xF9DF, 0xFA0F}, {0xF9E0, 0xFA10}, {0xF9F5, 0xFA11}}),
      before);
  EXPECT_EQ(Record(0xF040, 0xE000), records.at(at));

  std::map<unsigned int, unsigned int> first;
  unsigned int numShared = 0;
  for (const auto& [code, unit] : records) {
    const auto [place, isNew] = first.emplace(code, unit);
    if (isNew) continue;
    ++numShared;
    EXPECT_TRUE(unit >= 0xE000 && unit <= 0xE757) << std::hex << unit;
    EXPECT_FALSE(place->second >= 0xE000 && place->second <= 0xE757) << std::hex << unit;
  }
  EXPECT_EQ(466U, numShared);
}

// Apart from what shares a code, the records of every table ascend.
TEST(PackedTables, AscendByCharacter) {
  for (const MultibyteTable& table : multibyteTables) {
    SCOPED_TRACE(table.name);
    const std::vector<Record> records = readCompleteList(unpack(textOf(table.get))).doubles;
    unsigned int numSteps = 0;
    for (std::size_t i = 1; i < records.size(); ++i) {
      if (records[i].second <= records[i - 1].second) ++numSteps;
    }
    EXPECT_EQ(std::string(table.name) == "GetEucJP" ? 1U : 0U, numSteps);
  }
}

// --- Against the mapping files ----------------------------------------------

// The records of a file, sorted.
std::vector<Record> recordsOf(const CodePageFile& file, std::size_t digits) {
  std::vector<Record> records;
  for (const auto& [unit, code] : file.fromUnicode) {
    if (code.size() == digits) {
      records.emplace_back(static_cast<unsigned int>(std::stoul(code, nullptr, 16)), unit);
    }
  }
  std::sort(records.begin(), records.end());
  return records;
}

std::vector<Record> sorted(std::vector<Record> records) {
  std::sort(records.begin(), records.end());
  return records;
}

TEST(PackedTables, SayWhatTheMappingFilesSay) {
  std::map<std::string, std::string> texts;
  for (const auto& [name, table] : singleByteTables) texts[name] = table.text;
  for (const MultibyteTable& table : multibyteTables) texts[table.name] = textOf(table.get);
  unsigned int numTables = 0;
  for (const int codePage : codePagesWithAFile()) {
    const CodePageFile file(codePage);
    if (file.table.empty() || file.isChange) continue;
    SCOPED_TRACE(codePage);
    ASSERT_EQ(1U, texts.count(file.table)) << "its figures are missing above";
    const Numbers table = unpack(texts[file.table]);
    EXPECT_EQ(file.lowerHalf == "ascii" ? 'a' : 'x', static_cast<char>(table.at(0)));
    const CompleteList list = readCompleteList(table);
    EXPECT_EQ(recordsOf(file, 2), sorted(list.singles));
    EXPECT_EQ(recordsOf(file, 4), sorted(list.doubles));
    ++numTables;
  }
  EXPECT_EQ(texts.size(), numTables);
}

// --- The changes of Mac Japanese --------------------------------------------

TEST(PackedTables, HoldTheChangesOfMacJapanese) {
  const Numbers table = unpack(_Enc_x_mac_japanese);
  ASSERT_EQ(352U, table.size());
  EXPECT_EQ('a', static_cast<char>(table[0]));
  EXPECT_EQ('d', static_cast<char>(table[1]));

  std::size_t at = 2;
  std::vector<unsigned int> removed;
  for (; read16(table, at) != 0; at += 2) removed.push_back(read16(table, at));
  EXPECT_EQ((std::vector<unsigned int>{0x00A5, 0x2211, 0xF8F0, 0xF8F1, 0xF8F2, 0xF8F3}), removed);

  std::vector<Record> singles;
  for (at += 2; table.at(at) != 0; at += 3) singles.emplace_back(table[at], read16(table, at + 1));
  EXPECT_EQ((std::vector<Record>{{0xA0, 0x00A0}, {0xFD, 0x00A9}, {0xFE, 0x2122}}), singles);

  std::vector<Record> doubles;
  for (at += 1; table.at(at) != 0; at += 4) {
    doubles.emplace_back(table[at] << 8 | table.at(at + 1), read16(table, at + 2));
  }
  EXPECT_EQ(81U, doubles.size());
  EXPECT_EQ(Record(0x869B, 0x2116), doubles.front());
  EXPECT_EQ(Record(0x869C, 0x33CD), doubles.back());
  EXPECT_EQ(table.size(), at + 2);
}

// --- The last block of ISO-2022-JP ------------------------------------------

TEST(PackedTables, HoldTheLastBlockInPlainBase64) {
  EXPECT_EQ(1004U, std::string(sjisLastBlockText).size());
  EXPECT_EQ(752U, fromBase64(sjisLastBlockText).size());
}

}  // namespace
