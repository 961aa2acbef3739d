// Encodings as values: how they are found, what they are called, what they are.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using text::Encoding;
using text::EncodingKind;

int numberFor(std::string_view name) {
  const auto found = Encoding::find(name);
  return found ? found->number() : 0;
}

TEST(TextEncoding, IsFoundByNumberAndByName) {
  EXPECT_EQ(numberFor("shift_jis"), 932);
  EXPECT_EQ(numberFor("932"), 932);
  EXPECT_EQ(numberFor("cp932"), 932);
  EXPECT_EQ(numberFor("windows-1252"), 1252);
  EXPECT_EQ(numberFor("utf-8"), 65001);
  EXPECT_EQ(numberFor("UTF-16LE"), 1200);
  EXPECT_EQ(numberFor("utf-16be"), 1201);
  EXPECT_EQ(numberFor("utf-32"), 12000);
  EXPECT_EQ(numberFor("utf-7"), 65000);
  EXPECT_EQ(numberFor("iso-8859-10"), 28600);
  EXPECT_EQ(numberFor("gb18030"), 54936);
  EXPECT_EQ(Encoding::find(54936)->number(), 54936);
}

TEST(TextEncoding, IsFoundByTheLooseRule) {
  for (const char* name : {"Shift_JIS", "SHIFT-JIS", "shift jis", "shiftjis", "CP932", "cp0932"}) {
    EXPECT_EQ(numberFor(name), 932) << name;
  }
  EXPECT_EQ(numberFor("utf8"), 65001);
  EXPECT_EQ(numberFor("ISO_8859-1:1987"), 28591);
}

TEST(TextEncoding, IsNotFoundWhereThereIsNone) {
  for (const char* name :
       {"", "no such encoding", "utf-9", "1", "28602", "cp", "-", "99999999999", "-1", "0"}) {
    EXPECT_FALSE(Encoding::find(name)) << name;
  }
  for (const int number : {0, -1, 1, 100, 28602, 30000, 65002, 1000000, -932}) {
    EXPECT_FALSE(Encoding::find(number)) << number;
  }
  // The view may hold anything.
  EXPECT_FALSE(Encoding::find(std::string_view("utf-8\0x", 7)));
  EXPECT_FALSE(Encoding::find(std::string(100000, 'x')));
}

TEST(TextEncoding, ComesInARangeOfAllInAscendingOrder) {
  std::vector<int> numbers;
  for (const Encoding encoding : Encoding::all()) numbers.push_back(encoding.number());
  EXPECT_EQ(numbers, text_reference::allNumbers());
  EXPECT_EQ(Encoding::all().size(), numbers.size());
  EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

TEST(TextEncoding, IsFoundAgainByEverythingItIsCalled) {
  for (const Encoding encoding : Encoding::all()) {
    const std::string number = std::to_string(encoding.number());
    EXPECT_EQ(Encoding::find(encoding.number()), encoding) << number;
    EXPECT_EQ(Encoding::find(number), encoding) << number;
    EXPECT_EQ(Encoding::find("cp" + number), encoding) << number;
    EXPECT_EQ(Encoding::find(encoding.name()), encoding) << encoding.name();
    EXPECT_FALSE(encoding.name().empty()) << number;
    EXPECT_FALSE(encoding.title().empty()) << number;
    for (const std::string_view alias : encoding.aliases()) {
      EXPECT_EQ(Encoding::find(alias), encoding) << alias;
      EXPECT_NE(alias, encoding.name());
      EXPECT_FALSE(alias.empty()) << number;
    }
  }
}

TEST(TextEncoding, ListsItsOtherNames) {
  std::vector<std::string_view> names;
  for (const std::string_view name : Encoding::find(51949)->aliases()) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string_view>{"csEUCKR", "x-euc-kr"}));
  EXPECT_TRUE(Encoding::find(65005)->aliases().empty());
  EXPECT_EQ(Encoding::find(932)->name(), "shift_jis");
  EXPECT_EQ(Encoding::find(932)->title(), "Japanese (Shift_JIS)");
}

TEST(TextEncoding, HasShortcutsForUnicode) {
  EXPECT_EQ(Encoding::utf8().number(), 65001);
  EXPECT_EQ(Encoding::utf16le().number(), 1200);
  EXPECT_EQ(Encoding::utf16be().number(), 1201);
  EXPECT_EQ(Encoding::utf32le().number(), 12000);
  EXPECT_EQ(Encoding::utf32be().number(), 12001);
}

TEST(TextEncoding, IsAValueThatIsComparedAndCopied) {
  const Encoding one = *Encoding::find(932);
  Encoding other = *Encoding::find("sjis");
  EXPECT_EQ(one, other);
  other = Encoding::utf8();
  EXPECT_NE(one, other);
  EXPECT_LE(sizeof(Encoding), sizeof(void*));
}

struct Facts {
  int number;
  EncodingKind kind;
  bool keepsState;
  unsigned int leastBytes;
  unsigned int mostBytes;
};

TEST(TextEncoding, TellsItsKindAndHowManyBytesACharacterTakes) {
  constexpr Facts rows[] = {
      {37, EncodingKind::singleByte, false, 1, 1},
      {932, EncodingKind::multiByte, false, 1, 2},
      {936, EncodingKind::multiByte, false, 1, 2},
      {949, EncodingKind::multiByte, false, 1, 2},
      {950, EncodingKind::multiByte, false, 1, 2},
      {1200, EncodingKind::unicode, false, 2, 4},
      {1201, EncodingKind::unicode, false, 2, 4},
      {1252, EncodingKind::singleByte, false, 1, 1},
      {1361, EncodingKind::multiByte, false, 1, 2},
      {10001, EncodingKind::multiByte, false, 1, 2},
      {12000, EncodingKind::unicode, false, 4, 4},
      {20127, EncodingKind::singleByte, false, 1, 1},
      {28601, EncodingKind::singleByte, false, 1, 1},
      {50220, EncodingKind::iso2022, true, 1, 8},
      {50221, EncodingKind::iso2022, true, 1, 8},
      {50222, EncodingKind::iso2022, true, 1, 8},
      {51932, EncodingKind::multiByte, false, 1, 3},
      {51936, EncodingKind::multiByte, false, 1, 2},
      {54936, EncodingKind::multiByte, false, 1, 4},
      {55000, EncodingKind::gsm, false, 1, 2},
      {65000, EncodingKind::unicode, true, 1, 8},
      {65001, EncodingKind::unicode, false, 1, 4},
      {65006, EncodingKind::unicode, false, 4, 4},
  };
  for (const Facts& row : rows) {
    const Encoding encoding = encodingOf(row.number);
    EXPECT_EQ(encoding.kind(), row.kind) << row.number;
    EXPECT_EQ(encoding.keepsState(), row.keepsState) << row.number;
    EXPECT_EQ(encoding.leastBytes(), row.leastBytes) << row.number;
    EXPECT_EQ(encoding.mostBytes(), row.mostBytes) << row.number;
  }
  EXPECT_EQ(encodingOf(50225).kind(), EncodingKind::iso2022);
  EXPECT_TRUE(encodingOf(50225).keepsState());
  EXPECT_EQ(encodingOf(50225).leastBytes(), 1U);
  // SO, two bytes and SI; the header belongs to the text, unless it is counted.
  EXPECT_GE(encodingOf(50225).mostBytes(), 4U);
  EXPECT_LE(encodingOf(50225).mostBytes(), 8U);
}

TEST(TextEncoding, TellsOfEachWhetherItKeepsState) {
  for (const Encoding encoding : Encoding::all()) {
    EXPECT_EQ(encoding.keepsState(), text_reference::keepsState(encoding.number()))
        << encoding.number();
  }
}

// Its title tells people what its family and its script tell programs.
TEST(TextEncoding, IsOfTheFamilyThatItsTitleNames) {
  const auto says = [](Encoding encoding, std::string_view word) {
    return encoding.title().find(word) != std::string_view::npos;
  };
  using enum text::EncodingFamily;
  for (const Encoding encoding : Encoding::all()) {
    const auto family = encoding.family();
    EXPECT_EQ(family == ebcdic, says(encoding, "EBCDIC")) << encoding.title();
    EXPECT_EQ(family == dos, says(encoding, "DOS")) << encoding.title();
    EXPECT_EQ(family == mac, says(encoding, "(Mac)")) << encoding.title();
    EXPECT_EQ(family == iso8859, says(encoding, "ISO 8859-")) << encoding.title();
    EXPECT_EQ(family == koi8, says(encoding, "KOI8")) << encoding.title();
    EXPECT_EQ(family == unicode, says(encoding, "Unicode")) << encoding.title();
    EXPECT_TRUE(family == windows || !says(encoding, "(Windows)")) << encoding.title();
    EXPECT_TRUE(family == windows || family == eastAsian || family == mac ||
                encoding.kind() != EncodingKind::multiByte)
        << encoding.title();
  }
}

TEST(TextEncoding, WritesTheScriptThatItsTitleNames) {
  using enum text::EncodingScript;
  const std::pair<std::string_view, text::EncodingScript> words[] = {
      {"Cyrillic", cyrillic}, {"Greek", greek},       {"Hebrew", hebrew},   {"Arabic", arabic},
      {"Thai", thai},         {"Japanese", japanese}, {"Chinese", chinese}, {"Korean", korean},
      {"European", latin},    {"Turkish", latin},     {"Baltic", latin},    {"Unicode", any}};
  for (const Encoding encoding : Encoding::all()) {
    for (const auto& [word, script] : words) {
      if (encoding.title().find(word) == std::string_view::npos) continue;
      EXPECT_EQ(encoding.script(), script) << encoding.title();
    }
  }
}

}  // namespace
}  // namespace quorvel::test_text
