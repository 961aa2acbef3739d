// Reports: what they count, what they keep, what they say to people; and the runs
// that give nothing else.

#include <gtest/gtest.h>

#include "tests/helpers/RandomSources.h"
#include "tests/helpers/TextPieces.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::hex;
using text::Encoding;

// --- What is counted --------------------------------------------------------------------

TEST(TextReport, CountsEveryKindAndKeepsTheFirstOfEach) {
  Rules rules = dropping();
  rules.fitsBest = true;
  for (const Door& door : doors) {
    const Report report =
        door.convert(65001, 1252, "\uFF0F\u3042\xFF\u3044\xC3\u0100\uFF0F", rules).report;
    EXPECT_EQ(toText(report),
              "read 16, wrote 3, 2 malformed, the first at 6+1 = FF, 2 unmappable, the first at "
              "3+3:U+3042 = E3 81 82, 3 best fits, the first at 0+3~U+FF0F = EF BC 8F")
        << door.name;
  }
}

TEST(TextReport, IsLosslessForTextThatGotAcross) {
  for (const Door& door : doors) {
    const Report report = door.convert(65001, 932, "a\u3042", {}).report;
    EXPECT_TRUE(report.isLossless()) << door.name;
    EXPECT_EQ(toText(report), "read 4, wrote 3, 0 malformed, 0 unmappable, 0 best fits")
        << door.name;
    EXPECT_TRUE(door.convert(65001, 932, "", {}).report.isLossless()) << door.name;
  }
}

TEST(TextReport, CountsACharacterBeyondTheFirstPlaneOnce) {
  for (const Door& door : doors) {
    for (const int from : {65001, 1200, 12001, 54936, 65000}) {
      text_reference::Encoder source(from);
      source.put(U'\U0001F600');
      source.finish();
      const Report report = door.convert(from, 932, source.text(), dropping()).report;
      EXPECT_EQ(report.unmappable, 1U) << from << " by " << door.name;
      EXPECT_EQ(report.firstUnmappable->character, U'\U0001F600') << from << " by " << door.name;
    }
  }
}

TEST(TextReport, KeepsAllBytesOfALongSequence) {
  for (const Door& door : doors) {
    const Report report = door.convert(65000, 932, "a+2D3eAA-", dropping()).report;
    EXPECT_EQ(toShort(*report.firstUnmappable), "2+6:U+1F600") << door.name;
    const auto bytes = report.firstUnmappable->bytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "2D3eAA") << door.name;
  }
}

// --- Without output ---------------------------------------------------------------------

TEST(TextReport, IsTheSameWithoutOutput) {
  Random random(530);
  const std::vector<int>& numbers = text_reference::allNumbers();
  for (int i = 0; i < 2000; ++i) {
    const int from = numbers[below(random, numbers.size())];
    const int to = numbers[below(random, numbers.size())];
    const std::string source = randomSource(from, to, below(random, 60), random);
    Rules rules = below(random, 4) == 0 ? Rules() : dropping();
    rules.writesMark = below(random, 2) == 0;
    rules.fitsBest = below(random, 2) == 0;
    const text::Options options = optionsOf(rules);
    const text::Converted converted =
        text::convert(encodingOf(from), encodingOf(to), source, options);
    ASSERT_EQ(toText(text::check(encodingOf(from), encodingOf(to), source, options)),
              toText(converted.report))
        << from << " to " << to << ": " << hex(source);
    ASSERT_EQ(converted.report.bytesWritten, converted.text.size());
    ASSERT_LE(converted.text.size(),
              text::mostBytes(encodingOf(from), encodingOf(to), source.size(), options))
        << from << " to " << to << ": " << hex(source);
  }
}

TEST(TextReport, BoundsTheOutputOfEveryAction) {
  Random random(531);
  constexpr int numbers[] = {37,    932,   1200,  1201,  1252,  12000, 20106,
                             50220, 50225, 51932, 54936, 55000, 65000, 65001};
  for (int i = 0; i < 4000; ++i) {
    const int from = numbers[below(random, std::size(numbers))];
    const int to = numbers[below(random, std::size(numbers))];
    Rules rules;
    rules.malformed = static_cast<Action>(below(random, 7));
    rules.unmappable = static_cast<Action>(below(random, 6));
    rules.escape = below(random, 2) == 0 ? text::EscapeForm::c : text::EscapeForm::xml;
    rules.substitute = below(random, 2) == 0 ? "<\u3042\U0001F600>" : "\u00E9";
    rules.reconvert = numbers[below(random, std::size(numbers))];
    rules.writesMark = true;
    if (text_reference::isRefused(from, to, rules)) continue;
    // Short texts come closest to the bound.
    std::string source = validText(from, 65001, below(random, 4), random);
    damageText(source, from, random);
    const text::Options options = optionsOf(rules);
    const std::size_t size =
        text::convert(encodingOf(from), encodingOf(to), source, options).text.size();
    ASSERT_LE(size, text::mostBytes(encodingOf(from), encodingOf(to), source.size(), options))
        << from << " to " << to << ": " << hex(source);
  }
}

TEST(TextReport, BoundsTheOutputClosely) {
  EXPECT_LE(text::mostBytes(Encoding::utf8(), encodingOf(1252), 1000), 1064U);
  EXPECT_GE(text::mostBytes(Encoding::utf8(), encodingOf(1252), 1000), 1000U);
  EXPECT_GE(text::mostBytes(encodingOf(1252), Encoding::utf8(), 1000), 3000U);
  EXPECT_LE(text::mostBytes(encodingOf(1252), Encoding::utf8(), 1000), 4064U);
}

TEST(TextReport, BoundsNothingWhereTheBoundIsNotKnownOrDoesNotFit) {
  constexpr auto unbounded = ~std::uint64_t{0};
  EXPECT_EQ(text::mostBytes(encodingOf(1252), encodingOf(12000), unbounded / 2), unbounded);
  EXPECT_EQ(text::mostBytes(encodingOf(1252), encodingOf(12000), unbounded), unbounded);
  text::Options options;
  options.onLoss = [](const Loss&) { return std::nullopt; };
  EXPECT_EQ(text::mostBytes(encodingOf(1252), encodingOf(932), 10, options), unbounded);
}

// --- Far into a text --------------------------------------------------------------------

TEST(TextReport, CountsBytesBeyondFourGigabytes) {
#if !defined(NDEBUG)
  GTEST_SKIP() << "takes too long where nothing is optimised";
#endif
  constexpr std::uint64_t far = std::uint64_t{1} << 32;
  const std::string piece(std::size_t{1} << 20, 'a');
  text::Transcoder transcoder = transcoderOf(65001, 1252, dropping());
  for (std::uint64_t done = 0; done < far; done += piece.size()) {
    ASSERT_TRUE(transcoder.count(piece));
  }
  ASSERT_TRUE(transcoder.count("b\u3042\xFF"));
  ASSERT_TRUE(transcoder.countEnd());
  const Report& report = transcoder.report();
  EXPECT_EQ(report.bytesRead, far + 5);
  EXPECT_EQ(report.bytesWritten, far + 1);
  EXPECT_EQ(report.firstUnmappable->offset, far + 1);
  EXPECT_EQ(report.firstMalformed->offset, far + 4);
}

// --- As units of this machine -----------------------------------------------------------

TEST(TextReport, ComesWithUtf16AndUtf32OfThisMachine) {
  const std::string source = "a\u20AC\U0001F600";
  const auto utf16 = text::toUtf16(Encoding::utf8(), source);
  EXPECT_EQ(utf16.text, u"a\u20AC\U0001F600");
  EXPECT_EQ(toText(utf16.report), "read 8, wrote 8, 0 malformed, 0 unmappable, 0 best fits");
  const auto utf32 = text::toUtf32(Encoding::utf8(), source);
  EXPECT_EQ(utf32.text, U"a\u20AC\U0001F600");
  EXPECT_EQ(toText(utf32.report), "read 8, wrote 12, 0 malformed, 0 unmappable, 0 best fits");
  EXPECT_EQ(text::toUtf16(Encoding::utf8(), "").text, u"");
}

TEST(TextReport, StopsInFrontOfALossInUtf16AndUtf32Too) {
  const auto utf16 = text::toUtf16(encodingOf(932), "ab\x81\xFFz");
  EXPECT_EQ(utf16.text, u"ab");
  EXPECT_TRUE(utf16.report.stopped);
  const auto utf32 = text::toUtf32(encodingOf(932), "ab\x81\xFFz", optionsOf(dropping()));
  EXPECT_EQ(utf32.text, U"abz");
  EXPECT_EQ(utf32.report.malformed, 1U);
}

// --- Sentences --------------------------------------------------------------------------

struct Sentence {
  std::string_view source;
  bool fitsBest;
  const char* sentence;
};

TEST(TextReport, SaysWhatBecameOfATextInASentence) {
  constexpr Sentence rows[] = {
      {"abc", false, "3 bytes from utf-8 to windows-1252: all of it."},
      {"a", false, "1 byte from utf-8 to windows-1252: all of it."},
      {"a\u3042z", false,
       "5 bytes from utf-8 to windows-1252: 1 character without a place; the first at byte 1: "
       "U+3042 has no place in windows-1252."},
      {"\xFFz\u3042\u3042", false,
       "8 bytes from utf-8 to windows-1252: 1 malformed sequence, 2 characters without a place; "
       "the first at byte 0: FF is no character in utf-8."},
      {"\uFF0F", true,
       "3 bytes from utf-8 to windows-1252: 1 best fit; the first at byte 0: U+FF0F became a "
       "character of windows-1252 that looks like it."},
  };
  for (const Sentence& row : rows) {
    Rules rules = dropping();
    rules.fitsBest = row.fitsBest;
    const Report report = convertByLayer(65001, 1252, row.source, rules).report;
    EXPECT_EQ(toSentence(report, Encoding::utf8(), encodingOf(1252)), row.sentence);
  }
}

TEST(TextReport, SaysWhereItStoppedAndWhyItWasRefused) {
  const Encoding to = encodingOf(1252);
  EXPECT_EQ(toSentence(convertByLayer(65001, 1252, "ab\u3042", {}).report, Encoding::utf8(), to),
            "2 bytes from utf-8 to windows-1252, then stopped: 1 character without a place; the "
            "first at byte 2: U+3042 has no place in windows-1252.");
  Report refused;
  refused.refusal = "It cannot be.";
  EXPECT_EQ(toSentence(refused, Encoding::utf8(), to), "It cannot be.");
}

TEST(TextReport, SaysALossInASentence) {
  Loss loss;
  loss.kind = LossKind::unmappable;
  loss.offset = 17;
  loss.character = U'\U0001F600';
  EXPECT_EQ(toSentence(loss, Encoding::utf8(), encodingOf(1251)),
            "byte 17: U+1F600 has no place in windows-1251");
  loss.kind = LossKind::malformed;
  loss.length = 2;
  loss.storage = {0x81, 0xFF};
  EXPECT_EQ(toSentence(loss, encodingOf(932), Encoding::utf8()),
            "byte 17: 81 FF is no character in shift_jis");
}

}  // namespace
}  // namespace quorvel::test_text
