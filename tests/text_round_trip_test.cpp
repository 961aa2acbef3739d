// There and back: every scalar value through every encoding that holds it, every
// code of every page, U+0000 everywhere.

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "tests/helpers/RandomSources.h"
#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::hex;

constexpr int utf32 = 12001;

std::string inUtf32(const std::u32string& characters) {
  std::string text;
  for (const char32_t character : characters) {
    text += text_reference::unitBytes(character, 4, true);
  }
  return text;
}

/// All scalar values up to a last one.
std::u32string scalarValuesUpTo(char32_t last) {
  std::u32string values;
  for (char32_t value = 0; value <= last; ++value) {
    if (!text_reference::isHalf(value)) values += value;
  }
  return values;
}

/// What has no place is dropped; a mark is a character like others.
Result convertWithout(int from, int to, std::string_view source) {
  Rules rules = dropping();
  rules.keepsMark = true;
  return convertByLayer(from, to, source, rules);
}

// What GB 18030 writes at the codes of the characters that took their place, and so
// reads as those.
constexpr std::u32string_view replacedInGb18030 =
    U"\uE78D\uE78E\uE78F\uE790\uE791\uE792\uE793\uE794\uE795\uE796\uE81E\uE826\uE82B\uE82C\uE832"
    U"\uE843"
    U"\uE854\uE864";

/// The characters that an encoding has a place for, by the reference.
std::u32string heldBy(int number, const std::u32string& characters) {
  std::u32string held;
  for (const char32_t character : characters) {
    if (text_reference::holds(number, character)) held += character;
  }
  return held;
}

template <typename Check>
void forEachEncoding(Check check) {
  for (const int number : text_reference::allNumbers()) {
    SCOPED_TRACE(number);
    check(number);
  }
}

void expectAllCharactersBack(int number) {
  const bool isWhole = text_reference::isUtf81632(number) || number == 65000 || number == 54936;
  const std::u32string all = scalarValuesUpTo(isWhole ? 0x10FFFF : 0xFFFF);
  const std::u32string held = isWhole && number != 54936 ? all : heldBy(number, all);
  const Result there = convertWithout(utf32, number, inUtf32(all));
  EXPECT_EQ(there.report.unmappable, all.size() - held.size());
  EXPECT_EQ(there.report.malformed, 0U);
  const Result back = convertWithout(number, utf32, there.text);
  EXPECT_TRUE(back.report.isLossless()) << toText(back.report);
  EXPECT_EQ(back.report.bytesWritten, 4 * held.size());
  // 18 private characters of GB 18030 come back as others, see below.
  if (number != 54936) {
    EXPECT_TRUE(back.text == inUtf32(held));
  }
}

void expectNothingBeyondTheFirstPlane(int number) {
  if (text_reference::isUtf81632(number) || number == 65000 || number == 54936) return;
  std::u32string beyond;
  for (char32_t value = 0x10000; value <= 0x10FFFF; value += 61) beyond += value;
  const Result there = convertWithout(utf32, number, inUtf32(beyond));
  EXPECT_EQ(there.report.unmappable, beyond.size());
  EXPECT_EQ(there.text, "");
}

void expectAllCodesBack(int number) {
  if (familyOf(number) != Family::page) return;
  const text_reference::Page& page = text_reference::pageOf(number);
  for (const auto& [code, character] : page.reads) {
    const std::string bytes = text_reference::bytesOf(code);
    const Result read = convertWithout(number, utf32, bytes);
    ASSERT_EQ(hex(read.text), hex(text_reference::unitBytes(character, 4, true))) << hex(bytes);
    ASSERT_TRUE(read.report.isLossless()) << hex(bytes);
    const auto written = page.writes.find(character);
    if (written == page.writes.end()) continue;
    const Result back = convertWithout(utf32, number, read.text);
    ASSERT_EQ(hex(back.text), hex(text_reference::bytesOf(written->second))) << hex(bytes);
  }
}

void expectNoOtherBytes(int number) {
  if (familyOf(number) != Family::page) return;
  const text_reference::Page& page = text_reference::pageOf(number);
  for (text_reference::Code code = 0; code < 0x100; ++code) {
    const std::string byte(1, static_cast<char>(code));
    EXPECT_EQ(convertWithout(number, utf32, byte).report.isLossless(), page.reads.contains(code))
        << hex(byte);
  }
}

void expectNulBack(int number) {
  const std::u32string text = {U'a', U'\0', U'\0', U'b', U'\0'};
  const Result there = convertWithout(utf32, number, inUtf32(text));
  if (number == 55000) {
    EXPECT_EQ(there.text, "ab");
    EXPECT_EQ(there.report.unmappable, 3U);
    return;
  }
  EXPECT_TRUE(there.report.isLossless()) << toText(there.report);
  EXPECT_EQ(hex(convertWithout(number, utf32, there.text).text), hex(inUtf32(text)));
}

TEST(TextRoundTrip, KeepsEveryCharacterThatHasAPlaceAndReportsTheOthers) {
  forEachEncoding(expectAllCharactersBack);
}
TEST(TextRoundTrip, HasNoPlaceForCharactersBeyondTheFirstPlaneInPages) {
  forEachEncoding(expectNothingBeyondTheFirstPlane);
}
TEST(TextRoundTrip, ReadsEveryCodeAndWritesItAgain) { forEachEncoding(expectAllCodesBack); }
TEST(TextRoundTrip, ReadsNoOtherCodes) { forEachEncoding(expectNoOtherBytes); }
TEST(TextRoundTrip, KeepsNulAmongOtherCharacters) { forEachEncoding(expectNulBack); }

TEST(TextRoundTrip, TurnsEighteenPrivateCharactersOfGb18030IntoThoseThatTookTheirPlace) {
  const std::u32string all = scalarValuesUpTo(0xFFFF);
  std::u32string changed;
  for (const char32_t character : heldBy(54936, all)) {
    const Result there = convertWithout(utf32, 54936, inUtf32({character}));
    const Result back = convertWithout(54936, utf32, there.text);
    if (back.text != inUtf32({character})) changed += character;
  }
  EXPECT_EQ(changed, replacedInGb18030);
}

std::u32string heldByBoth(int one, int other) {
  std::u32string common;
  const std::u32string& first = repertoireOf(one);
  const std::u32string& second = repertoireOf(other);
  std::set_intersection(first.begin(), first.end(), second.begin(), second.end(),
                        std::back_inserter(common));
  if (one == 54936) {
    std::erase_if(common, [](char32_t character) {
      return replacedInGb18030.find(character) != std::u32string_view::npos;
    });
  }
  return common;
}

TEST(TextRoundTrip, KeepsEveryCharacterThatTwoEncodingsHold) {
  forEachEncoding([](int from) {
    for (const int to : text_reference::allNumbers()) {
      const std::string common = inUtf32(heldByBoth(from, to));
      const Result got = convertWithout(from, to, convertWithout(utf32, from, common).text);
      const Result expected = convertWithout(utf32, to, common);
      EXPECT_TRUE(expected.report.isLossless()) << to << ": " << toText(expected.report);
      EXPECT_TRUE(got.report.isLossless()) << to << ": " << toText(got.report);
      EXPECT_TRUE(got.text == expected.text) << to;
    }
  });
}

TEST(TextRoundTrip, KeepsNulBetweenEveryTwoEncodings) {
  for (const int from : text_reference::allNumbers()) {
    if (from == 55000) continue;
    for (const int to : {37, 932, 1201, 50220, 50225, 54936, 65000, 65001}) {
      text_reference::Encoder source(from);
      for (const char32_t character : {U'a', U'\0', U'b'}) source.put(character);
      source.finish();
      text_reference::Encoder expected(to);
      for (const char32_t character : {U'a', U'\0', U'b'}) expected.put(character);
      expected.finish();
      EXPECT_EQ(hex(convertWithout(from, to, source.text()).text), hex(expected.text()))
          << from << " to " << to;
    }
  }
}

}  // namespace
}  // namespace quorvel::test_text
