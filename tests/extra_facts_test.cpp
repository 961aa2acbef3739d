// The facts of codepages/extra as they are packed, against the files, which are
// read here a second time, and against figures of the published mappings.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "quorvel/base/NullLog.h"
#include "quorvel/pages/PackedExtras.hpp"
#include "quorvel/pages/TableBuilder.hpp"
#include "tests/helpers/PackedList.h"
#include "tests/helpers/Tables.h"

namespace {

using namespace quorvel_test;
namespace fs = std::filesystem;

const fs::path kDirectory = fs::path(QUORVEL_CODEPAGES_DIR) / "extra";

struct Range {
  unsigned int first;
  unsigned int last;
  unsigned int character;
  bool operator==(const Range&) const = default;
};

unsigned int numberOf(const std::string& text) {
  return static_cast<unsigned int>(std::stoul(text, nullptr, 16));
}

/// The place of a four-byte code among all of them.
unsigned int placeOf(unsigned int code) {
  const auto byte = [code](unsigned int shift) { return code >> shift & 0xFF; };
  return (((byte(24) - 0x81) * 10 + byte(16) - 0x30) * 126 + byte(8) - 0x81) * 10 + byte(0) - 0x30;
}

/// A file, read plainly: it is taken to be in order.
struct ExtraFacts {
  explicit ExtraFacts(const std::string& name) {
    std::ifstream file(kDirectory / name);
    for (std::string line; std::getline(file, line);) {
      std::istringstream words(line);
      std::string label;
      if (line.empty() || line[0] == '#' || !(words >> label)) continue;
      if (label == "same-as") {
        words >> sameAs;
      } else if (label != "lower-half") {
        readCodes(label.substr(0, label.size() - 1), label.back(), words);
      }
    }
  }

  std::vector<Record> bothWays;  // codes and units
  std::vector<Record> readOnly;  // codes and units
  std::vector<Record> bestFits;  // units and codes
  std::vector<Range> reads;
  std::vector<Range> writes;
  std::string sameAs;

 private:
  void readCodes(const std::string& label, char mark, std::istringstream& words) {
    std::string word;
    if (const std::size_t dots = label.find(".."); dots != std::string::npos) {
      words >> word;
      reads.push_back({placeOf(numberOf(label.substr(0, dots))),
                       placeOf(numberOf(label.substr(dots + 2))), numberOf(word)});
      if (mark == ':') writes.push_back(reads.back());
      return;
    }
    for (unsigned int number = numberOf(label); words >> word; ++number) {
      if (word == "....") continue;
      if (mark == ':') bothWays.emplace_back(number, numberOf(word));
      if (mark == '<') readOnly.emplace_back(number, numberOf(word));
      if (mark == '>') bestFits.emplace_back(number, numberOf(word));
    }
  }
};

/// 32-bit FNV-1a over the numbers, each as four bytes, low byte first.
unsigned int checksumOf(const std::vector<Record>& records) {
  unsigned int sum = 0x811C9DC5;
  for (const auto& [first, second] : records) {
    for (const unsigned int number : {first, second}) {
      for (int shift = 0; shift < 32; shift += 8) {
        sum = (sum ^ (number >> shift & 0xFF)) * 0x01000193;
      }
    }
  }
  return sum;
}

std::vector<Record> sorted(std::vector<Record> records) {
  std::sort(records.begin(), records.end());
  return records;
}

struct Figures {
  int codePage;
  std::size_t count;
  unsigned int checksum;
};

// --- Codes that are only read -----------------------------------------------

std::map<int, std::vector<Record>> packedReadOnlyCodes() {
  std::map<int, std::vector<Record>> codes;
  for (const quorvel::PackedReadOnly& list : quorvel::packedReadOnly) {
    for (const auto& [code, unit] : readCompleteList(unpack(list.text)).doubles) {
      codes[list.codePage].emplace_back(unsigned{list.lead} << 16 | code, unit);
    }
  }
  for (auto& [codePage, records] : codes) std::sort(records.begin(), records.end());
  return codes;
}

TEST(ReadOnlyCodes, HaveTheFiguresOfThePublishedMappings) {
  const Figures figures[] = {
      {932, 398, 0x0B3869A2}, {950, 10, 0xA9CA3C3E}, {51932, 6077, 0xCDC28C61}};
  const auto codes = packedReadOnlyCodes();
  for (const Figures& expected : figures) {
    SCOPED_TRACE(expected.codePage);
    EXPECT_EQ(codes.at(expected.codePage).size(), expected.count);
    EXPECT_EQ(checksumOf(codes.at(expected.codePage)), expected.checksum);
  }
  EXPECT_EQ(codes.at(54936), (std::vector<Record>{{0xA3A0, 0x3000}}));
  EXPECT_EQ(codes.size(), 4U);
}

TEST(ReadOnlyCodes, AreThoseOfTheFiles) {
  for (const auto& [codePage, records] : packedReadOnlyCodes()) {
    const std::string kind = codePage == 54936 ? ".txt" : ".read-only.txt";
    EXPECT_EQ(records, ExtraFacts(std::to_string(codePage) + kind).readOnly) << codePage;
  }
}

TEST(ReadOnlyCodes, OfThreeBytesStandBehindALeadOfTheirOwn) {
  std::vector<std::pair<int, unsigned int>> lists;
  for (const quorvel::PackedReadOnly& list : quorvel::packedReadOnly) {
    lists.emplace_back(list.codePage, list.lead);
  }
  EXPECT_EQ(lists, (std::vector<std::pair<int, unsigned int>>{
                       {932, 0}, {950, 0}, {51932, 0}, {51932, 0x8F}, {54936, 0}}));
}

TEST(ReadOnlyCodes, AreBuiltIntoTablesLikeAnyOther) {
  quorvel::NullLog log;
  const auto table = emptyTable(4099);
  quorvel::buildHash(quorvel::packedReadOnly[3].text, *table, false, log);
  EXPECT_EQ(lookUp(*table, "A2 AF"), "D8 02");
  EXPECT_EQ(lookUp(*table, "ED E3"), "A5 9F");
  EXPECT_EQ(lookUp(*table, "A2 B0"), "C7 02");
  EXPECT_EQ(lookUp(*table, "A2 A1"), "");
}

// --- Best fits --------------------------------------------------------------

constexpr Figures bestFitFigures[] = {
    {37, 95, 0xEB0C4158},     {437, 472, 0x30926630},   {500, 95, 0xEC38BDFF},
    {708, 131, 0xD9167CFD},   {720, 224, 0x8A8A5A95},   {737, 126, 0x9EA0B24A},
    {775, 367, 0xC15683E2},   {850, 468, 0x7FE199B5},   {852, 429, 0x69F10271},
    {855, 284, 0xE935C19E},   {857, 433, 0x304D1F36},   {858, 469, 0x4D9017B2},
    {860, 380, 0x83C3CCAB},   {861, 380, 0xF473D605},   {862, 471, 0x853DBBF7},
    {863, 379, 0xE483F581},   {864, 35, 0x4AE33BB2},    {865, 380, 0x26D0C1EB},
    {866, 359, 0x7D118834},   {869, 263, 0xFBB8A771},   {870, 94, 0x9E51D010},
    {874, 136, 0x6A2E4DE2},   {875, 95, 0x84761F1D},    {932, 82, 0x86A2A48B},
    {936, 412, 0xE126FE0A},   {949, 394, 0x4D8B8B6C},   {950, 480, 0x0D5B9E53},
    {1026, 95, 0x0515B31A},   {1047, 95, 0xB62A0DBC},   {1140, 95, 0xEB0C4158},
    {1141, 95, 0xF85D400A},   {1142, 95, 0x6ECC4D0D},   {1143, 95, 0x693DD475},
    {1144, 95, 0x52FC0070},   {1145, 95, 0x2E9FB73C},   {1146, 95, 0x0F7E8BF4},
    {1147, 95, 0xFC6854D0},   {1148, 95, 0xEC38BDFF},   {1149, 94, 0xD0635B37},
    {1250, 435, 0x9860465D},  {1251, 383, 0x9A27E13F},  {1252, 441, 0x6D94B07A},
    {1253, 365, 0xB8C690B8},  {1254, 437, 0xFAA1EFF0},  {1255, 95, 0xE8CA19BC},
    {1256, 277, 0x5428D48B},  {1257, 93, 0x78C23C40},   {1258, 93, 0x78C23C40},
    {1361, 147, 0x9C501ACF},  {10004, 131, 0xD9167CFD}, {20105, 371, 0xA843BDF7},
    {20106, 357, 0xBBB9C458}, {20107, 345, 0xC8EE18CE}, {20108, 354, 0xEEFBC5E5},
    {20127, 370, 0x3EEDE537}, {20261, 7, 0x56F15876},   {20269, 7, 0x56F15876},
    {20273, 95, 0xF85D400A},  {20277, 95, 0x6ECC4D0D},  {20278, 95, 0x693DD475},
    {20280, 95, 0x52FC0070},  {20284, 95, 0x2E9FB73C},  {20285, 95, 0x0F7E8BF4},
    {20290, 94, 0xC034F49E},  {20297, 95, 0xFC6854D0},  {20420, 169, 0xE979D3C4},
    {20423, 88, 0x2B35A1CB},  {20424, 93, 0xB989542D},  {20838, 93, 0x6B70C76D},
    {20866, 265, 0xCE6C44A7}, {20871, 94, 0xD0635B37},  {20880, 93, 0x156E5F7B},
    {20905, 93, 0x5E62E1AC},  {20924, 95, 0xB62A0DBC},  {21025, 93, 0x156E5F7B},
    {21866, 265, 0xCE6C44A7}, {28591, 272, 0x65A0C8B0}, {28592, 287, 0x8F257DCF},
    {28593, 294, 0x53A186E5}, {28594, 289, 0xBB151E51}, {28595, 369, 0x889CDFC7},
    {28596, 368, 0x4021B887}, {28597, 359, 0x4B2B7730}, {28598, 356, 0x75BC4561},
    {28599, 292, 0x279CC344}, {28603, 731, 0x561921A8}, {28605, 291, 0xDF7ECDD5},
    {38598, 356, 0x75BC4561}, {51932, 82, 0x37AB69EA},  {51936, 412, 0xE126FE0A},
    {51949, 394, 0x4D8B8B6C}, {52936, 412, 0xE126FE0A},
};

std::vector<Record> recordsOf(const quorvel::BestFits& page) {
  std::vector<Record> records;
  for (const quorvel::BestFit& fit : page.fits) records.emplace_back(fit.unit, fit.code);
  return records;
}

TEST(BestFits, HaveTheFiguresOfThePublishedMappings) {
  ASSERT_EQ(quorvel::packedBestFits.size(), std::size(bestFitFigures));
  for (std::size_t i = 0; i < std::size(bestFitFigures); ++i) {
    const Figures& expected = bestFitFigures[i];
    const quorvel::BestFits& page = quorvel::packedBestFits[i];
    SCOPED_TRACE(expected.codePage);
    EXPECT_EQ(page.codePage, expected.codePage);
    EXPECT_EQ(page.fits.size(), expected.count);
    EXPECT_EQ(checksumOf(recordsOf(page)), expected.checksum);
  }
}

TEST(BestFits, AreThoseOfTheFiles) {
  std::size_t files = 0;
  for (const auto& entry : fs::directory_iterator(kDirectory)) {
    files += entry.path().string().ends_with(".best-fit.txt");
  }
  EXPECT_EQ(quorvel::packedBestFits.size(), files);
  for (const quorvel::BestFits& page : quorvel::packedBestFits) {
    SCOPED_TRACE(page.codePage);
    ExtraFacts facts(std::to_string(page.codePage) + ".best-fit.txt");
    if (!facts.sameAs.empty()) facts = ExtraFacts(facts.sameAs + ".best-fit.txt");
    EXPECT_EQ(recordsOf(page), facts.bestFits);
  }
}

TEST(BestFits, AscendByUnitSoThatOneIsFoundByHalves) {
  for (const quorvel::BestFits& page : quorvel::packedBestFits) {
    for (std::size_t i = 1; i < page.fits.size(); ++i) {
      ASSERT_LT(page.fits[i - 1].unit, page.fits[i].unit) << page.codePage;
    }
  }
  EXPECT_TRUE(std::is_sorted(
      quorvel::packedBestFits.begin(), quorvel::packedBestFits.end(),
      [](const auto& left, const auto& right) { return left.codePage < right.codePage; }));
}

TEST(BestFits, StandOnceWherePagesHaveTheSame) {
  const auto fitsOf = [](int codePage) {
    return std::find_if(quorvel::packedBestFits.begin(), quorvel::packedBestFits.end(),
                        [=](const auto& page) { return page.codePage == codePage; })
        ->fits;
  };
  EXPECT_EQ(fitsOf(51936).data(), fitsOf(936).data());
  EXPECT_EQ(fitsOf(38598).data(), fitsOf(28598).data());
  EXPECT_NE(fitsOf(28591).data(), fitsOf(1252).data());
}

// --- GB 18030 ---------------------------------------------------------------

TEST(Gb18030, HasTheFiguresOfThePublishedIndex) {
  const CompleteList list = readCompleteList(unpack(quorvel::gb18030Text));
  EXPECT_EQ(list.singles.size(), 0U);
  EXPECT_EQ(list.doubles.size(), 23939U + 18U);
  const ExtraFacts facts("54936.txt");
  EXPECT_EQ(facts.bothWays.size(), 23939U);
  EXPECT_EQ(checksumOf(facts.bothWays), 0x114AB807U);
}

TEST(Gb18030, HasTheTwoByteCodesOfTheFile) {
  const ExtraFacts facts("54936.txt");
  std::vector<Record> expected = facts.bothWays;
  for (const auto& [unit, code] : facts.bestFits) expected.emplace_back(code, unit);
  EXPECT_EQ(sorted(readCompleteList(unpack(quorvel::gb18030Text)).doubles), sorted(expected));
}

// In both directions as one builds the tables of a page.
TEST(Gb18030, WritesPrivateUseCharactersAtCodesThatReadAsOthers) {
  quorvel::NullLog log;
  const auto reads = emptyTable(46811);
  const auto writes = emptyTable(46811);
  quorvel::buildHash(quorvel::gb18030Text, *reads, false, log);
  quorvel::buildHash(quorvel::gb18030Text, *writes, true, log);
  EXPECT_TRUE(reads->get_IsLowerAscii());
  const ExtraFacts facts("54936.txt");
  EXPECT_EQ(facts.bestFits.size(), 18U);
  for (const auto& [unit, code] : facts.bestFits) {
    SCOPED_TRACE(unit);
    EXPECT_EQ(lookUp(*writes, lowFirst(unit)), hex(highFirst(code)));
    const auto mapped = std::find_if(facts.bothWays.begin(), facts.bothWays.end(),
                                     [code](const Record& record) { return record.first == code; });
    ASSERT_NE(mapped, facts.bothWays.end());
    EXPECT_EQ(lookUp(*reads, highFirst(code)), hex(lowFirst(mapped->second)));
  }
  EXPECT_EQ(lookUp(*writes, "8D E7"), "A6 D9");
  EXPECT_EQ(lookUp(*reads, "A6 D9"), "10 FE");
  EXPECT_EQ(lookUp(*writes, "00 30"), "A1 A1");
  EXPECT_EQ(lookUp(*reads, "A3 A0"), "");
}

std::vector<Range> rangesOf(std::span<const quorvel::FourByteRange> packed) {
  std::vector<Range> ranges;
  for (const auto& range : packed) {
    ranges.push_back({range.first, range.first + range.count - 1, range.character});
  }
  return ranges;
}

TEST(Gb18030, HasTheFourByteCodesOfTheFile) {
  ExtraFacts facts("54936.txt");
  EXPECT_EQ(rangesOf(quorvel::gb18030Reads), facts.reads);
  std::sort(facts.writes.begin(), facts.writes.end(),
            [](const Range& a, const Range& b) { return a.character < b.character; });
  EXPECT_EQ(rangesOf(quorvel::gb18030Writes), facts.writes);
}

// Codes by place; 0 is the place of U+0080, so that it cannot mean none.
std::map<unsigned int, unsigned int> placesByCharacter(
    std::span<const quorvel::FourByteRange> ranges) {
  std::map<unsigned int, unsigned int> places;
  for (const auto& range : ranges) {
    for (unsigned int i = 0; i < range.count; ++i) {
      EXPECT_TRUE(places.emplace(range.character + i, range.first + i).second);
    }
  }
  return places;
}

TEST(Gb18030, CountsFourByteCodesInTheirOrder) {
  const auto reads = placesByCharacter(quorvel::gb18030Reads);
  EXPECT_EQ(reads.at(0x80), placeOf(0x81308130));
  EXPECT_EQ(reads.at(0x80), 0U);
  EXPECT_EQ(reads.at(0xFFFF), placeOf(0x8431A439));
  EXPECT_EQ(reads.at(0xFFFF), 39419U);
  EXPECT_EQ(reads.at(0xE7C7), placeOf(0x8135F437));
  EXPECT_EQ(reads.at(0xFE10), placeOf(0x84318236));
  EXPECT_EQ(reads.at(0x10000), placeOf(0x90308130));
  EXPECT_EQ(reads.at(0x10000), 189000U);
  EXPECT_EQ(reads.at(0x10FFFF), placeOf(0xE3329A35));
}

TEST(Gb18030, WritesEveryCharacterOnceButForOne) {
  auto places = placesByCharacter(quorvel::gb18030Writes);
  EXPECT_EQ(placesByCharacter(quorvel::gb18030Reads).size(), places.size() + 18);
  std::vector<unsigned int> units;
  for (const auto& [code, unit] : readCompleteList(unpack(quorvel::gb18030Text)).doubles) {
    units.push_back(unit);
  }
  for (const unsigned int unit : units) {
    EXPECT_TRUE(places.emplace(unit, 0).second) << std::hex << unit;
  }
  std::vector<unsigned int> without;
  for (unsigned int character = 0x80; character <= 0x10FFFF; ++character) {
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (places.count(character) == (isSurrogate ? 1 : 0)) without.push_back(character);
  }
  EXPECT_EQ(without, (std::vector<unsigned int>{0xE5E5}));
}

}  // namespace
