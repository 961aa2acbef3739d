// Charts of code pages.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/Chart.h"
#include "cli/Codes.h"
#include "cli/Glyph.h"
#include "quorvel/text/convert.h"
#include "tests/helpers/Bytes.h"

namespace {

using quorvel::text::Encoding;
using quorvel_test::byteString;
using qvconv::Category;
using qvconv::Codes;
using qvconv::Colours;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string chartOf(int number, std::string_view lead = "", Colours colours = Colours::no) {
  const auto chart = qvconv::chartOf(*Encoding::find(number), lead, colours);
  return chart ? *chart : "none";
}

TEST(Chart, IsAGridOfSixteenLines) {
  EXPECT_THAT(
      chartOf(1252),
      StartsWith("1252  windows-1252  Western European (Windows)\n"
                 "\n"
                 "    _0 _1 _2 _3 _4 _5 _6 _7 _8 _9 _A _B _C _D _E _F\n"
                 " 0_ \u2400  \u2401  \u2402  \u2403  \u2404  \u2405  \u2406  \u2407  \u2408  "
                 "\u2409  \u240A  \u240B  \u240C  \u240D  \u240E  \u240F\n"));
  EXPECT_THAT(chartOf(1252),
              HasSubstr("\n 2_ \u2420  !  \"  #  $  %  &  '  (  )  *  +  ,  -  .  /\n"));
  // 81 and 8D stand for nothing, A0 is a blank and AD has no shape.
  EXPECT_THAT(chartOf(1252),
              HasSubstr("\n 8_ \u20AC     \u201A  \u0192  \u201E  \u2026  \u2020  \u2021  \u02C6  "
                        "\u2030  \u0160  \u2039  \u0152     \u017D\n"));
  EXPECT_THAT(chartOf(1252), HasSubstr("\n A_ \u2423  \u00A1  "));
  EXPECT_THAT(chartOf(1252), HasSubstr("  \u00AC  \u25A1  \u00AE  "));
  EXPECT_EQ(std::ranges::count(chartOf(1252), '\n'), 2 + 1 + 16);
}

TEST(Chart, DrawsControlsOfTheUpperHalfInHexadecimal) {
  EXPECT_THAT(chartOf(28591), HasSubstr("\n 8_ 80 81 82 "));
}

TEST(Chart, LeavesOutLinesWithoutACode) {
  EXPECT_EQ(std::ranges::count(chartOf(20127), '\n'), 2 + 1 + 8);
}

TEST(Chart, KeepsItsColumnsUnderWideAndCombiningCharacters) {
  EXPECT_THAT(chartOf(932, "\x81"),
              HasSubstr("\n 814_ \u3000 \u3001 \u3002 \uFF0C \uFF0E \u30FB \uFF1A \uFF1B \uFF1F "
                        "\uFF01 \u309B \u309C \u00B4  \uFF40 \u00A8  \uFF3E\n"));
  EXPECT_THAT(chartOf(1255), HasSubstr("\n C_ \u25CC\u05B0  \u25CC\u05B1  "));
  EXPECT_THAT(chartOf(874), HasSubstr("  \u25CC\u0E31  \u0E32  "));
}

TEST(Chart, OfSeveralBytesIsAnOverviewByWhatLeads) {
  const std::string chart = chartOf(932);
  EXPECT_THAT(chart, HasSubstr("\n 8_ 80 >> >> >> >>       >> >>"));
  EXPECT_THAT(chart, HasSubstr("\n lead  codes  the first of them\n 81    147  \u3000 \u3001 "));
  EXPECT_THAT(chart, HasSubstr("\n FC     12  "));
  EXPECT_THAT(chart, Not(HasSubstr("\n 85 ")));
}

TEST(Chart, OfOneLeadIsAGridOfItsCodes) {
  EXPECT_THAT(chartOf(932, "\x81"),
              StartsWith("932  shift_jis  Japanese (Shift_JIS)\n\n      _0 "));
  EXPECT_THAT(chartOf(51932, "\x8F"), HasSubstr("\n 8FA2     21  \u02D8  \u02C7  "));
  EXPECT_THAT(chartOf(51932, "\x8F\xA2"), HasSubstr("\n 8FA2A_ "));
  EXPECT_THAT(chartOf(54936, byteString("81 30 81")),
              EndsWith("\n 8130813_ 80 81 82 83 84 85 86 87 88 89\n"));
  EXPECT_THAT(chartOf(55000, "\x1B"), HasSubstr("\n 1B6_                "));
  EXPECT_THAT(chartOf(55000, "\x1B"), HasSubstr("\u20AC\n"));
}

TEST(Chart, IsNotThereForWhatLeadsNothing) {
  EXPECT_EQ(chartOf(932, "A"), "none");
  EXPECT_EQ(chartOf(932, "\x85"), "none");
  EXPECT_EQ(chartOf(932, "\xA0"), "none");
  EXPECT_EQ(chartOf(932, "\x81\x40"), "none");
  EXPECT_EQ(chartOf(1252, "\x81"), "none");
}

TEST(Chart, IsThereForAllButUnicodeAndIso2022) {
  for (const int number : {37, 932, 1252, 54936, 55000, 20127}) {
    EXPECT_TRUE(qvconv::hasChart(*Encoding::find(number))) << number;
  }
  for (const int number : {65001, 65000, 1200, 12000, 50220, 50225}) {
    EXPECT_FALSE(qvconv::hasChart(*Encoding::find(number))) << number;
  }
}

TEST(Chart, IsColouredOnlyWhenAsked) {
  for (const int number : {1252, 932}) {
    EXPECT_THAT(chartOf(number), Not(HasSubstr("\x1B")));
    EXPECT_THAT(chartOf(number, "", Colours::yes), HasSubstr("\x1B[36m\u2400\x1B[0m  "));
  }
  const std::string chart = chartOf(1252, "", Colours::yes);
  EXPECT_THAT(chart, HasSubstr(" A  B  C "));
  EXPECT_THAT(chart, HasSubstr(" \x1B[33m\u20AC\x1B[0m  \x1B[100m  \x1B[0m "));
  EXPECT_THAT(chart, HasSubstr(" \x1B[32m\u00E9\x1B[0m  "));
  EXPECT_THAT(chartOf(932, "", Colours::yes), HasSubstr("\x1B[35m\u25A1\x1B[0m"));
}

TEST(Chart, OfDifferencesHasALineForEach) {
  const auto differences = [](int one, int other) {
    return qvconv::chartOfDifferences(*Encoding::find(one), *Encoding::find(other), Colours::no);
  };
  const std::string latin = differences(1252, 28591);
  EXPECT_THAT(latin, StartsWith("1252  windows-1252  Western European (Windows)\n"
                                "28591  iso-8859-1  Western European (ISO 8859-1)\n"
                                "\n"
                                " 80        \u20AC   U+20AC    80  U+0080\n"
                                " 81            none      81  U+0081\n"));
  EXPECT_THAT(latin, EndsWith("\n\n32 codes differ.\n"));
  EXPECT_THAT(differences(28591, 28605), EndsWith("\n\n8 codes differ.\n"));
  EXPECT_THAT(differences(936, 52936), EndsWith("\n\nEvery code means the same in both.\n"));
}

// --- Codes -----------------------------------------------------------------------------------

TEST(Codes, AreAllThatTheLayerReads) {
  for (const int number : {37, 874, 932, 949, 950, 1361, 10001, 51932, 55000}) {
    const Encoding encoding = *Encoding::find(number);
    Codes codes(encoding);
    std::uint64_t seen = 0;
    const std::uint64_t count =
        codes.forEachBehind("", [&](const std::string& bytes, char32_t character) {
          ++seen;
          const auto read = quorvel::text::toUtf32(encoding, bytes);
          ASSERT_EQ(read.text, std::u32string(1, character)) << number;
        });
    EXPECT_EQ(count, seen);
    EXPECT_GE(count, 137U) << number;
  }
}

// --- Glyphs ----------------------------------------------------------------------------------

TEST(Glyph, HasACategory) {
  EXPECT_EQ(qvconv::categoryOf(0x0A), Category::control);
  EXPECT_EQ(qvconv::categoryOf(0x85), Category::control);
  EXPECT_EQ(qvconv::categoryOf('~'), Category::ascii);
  EXPECT_EQ(qvconv::categoryOf(0xE9), Category::letter);
  EXPECT_EQ(qvconv::categoryOf(0x3042), Category::letter);
  EXPECT_EQ(qvconv::categoryOf(0x20AC), Category::sign);
  EXPECT_EQ(qvconv::categoryOf(0x2551), Category::sign);
  EXPECT_EQ(qvconv::categoryOf(0xE000), Category::privateUse);
}

TEST(Glyph, IsNamedByItsCodePoint) {
  EXPECT_EQ(qvconv::codePointName(0x41), "U+0041");
  EXPECT_EQ(qvconv::codePointName(0x1F600), "U+1F600");
}

}  // namespace
