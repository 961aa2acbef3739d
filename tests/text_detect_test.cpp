// What a text may be in, and what may hold it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "quorvel/text/Repertoire.h"
#include "quorvel/text/detect.h"
#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::byteString;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;
using text::Candidate;
using text::DetectionHints;
using text::Encoding;

DetectionHints local(int number) {
  DetectionHints hints;
  hints.local = encodingOf(number);
  return hints;
}

DetectionHints guessed(int number) {
  DetectionHints hints;
  hints.guess = encodingOf(number);
  return hints;
}

std::vector<int> numbersOf(const std::vector<Candidate>& candidates) {
  std::vector<int> numbers;
  for (const Candidate& candidate : candidates) numbers.push_back(candidate.encoding.number());
  return numbers;
}

std::vector<int> detected(std::string_view source, const DetectionHints& hints = {}) {
  return numbersOf(text::detect(source, hints));
}

std::string encoded(int to, std::string_view utf8) {
  text::Options options;
  options.unmappable = Action::drop;
  return text::convert(Encoding::utf8(), encodingOf(to), utf8, options).text;
}

std::string decoded(int from, std::string_view source) {
  text::Options options;
  options.malformed = Action::drop;
  return text::convert(encodingOf(from), Encoding::utf8(), source, options).text;
}

std::string corpus(const std::string& name) {
  std::ifstream file(QUORVEL_SOURCE_DIR "/bench/corpora/" + name + ".txt", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// --- Without doubt ----------------------------------------------------------------------------

TEST(TextDetection, TakesPlainAsciiForAsciiAlone) {
  EXPECT_THAT(detected(""), ElementsAre(20127));
  EXPECT_THAT(detected("plain, with\ttabs\r\nand\x1A\f"), ElementsAre(20127));
  EXPECT_THAT(detected("plain", guessed(1251)), ElementsAre(20127));
}

TEST(TextDetection, TakesAMarkForWhatItSays) {
  EXPECT_THAT(detected("\xEF\xBB\xBF"
                       "plain"),
              ElementsAre(65001));
  EXPECT_THAT(detected(byteString("FF FE 61 00")), ElementsAre(1200));
  EXPECT_THAT(detected(byteString("FE FF 00 61")), ElementsAre(1201));
  EXPECT_THAT(detected(byteString("FF FE 00 00 61 00 00 00")), ElementsAre(12000));
  EXPECT_THAT(detected(byteString("00 00 FE FF 00 00 00 61")), ElementsAre(12001));
}

TEST(TextDetection, CountsTheLossesBehindAMark) {
  const std::vector<Candidate> found = text::detect(
      "\xEF\xBB\xBF\xFF\xFF"
      "a");
  EXPECT_EQ(found, (std::vector<Candidate>{{Encoding::utf8(), 2}}));
}

TEST(TextDetection, TakesWellFormedUtf8BeyondAsciiForThatAlone) {
  EXPECT_THAT(detected("caf\u00E9", guessed(1252)), ElementsAre(65001));
  EXPECT_THAT(detected("\u043D\u043E\u0447\u044C", local(1251)), ElementsAre(65001));
  EXPECT_THAT(detected("caf\u00E9\xFF"), Not(testing::Contains(65001)));
}

// --- Candidates -------------------------------------------------------------------------------

TEST(TextDetection, TriesThePagesOfTheScriptOfTheGuessAndUtf16) {
  const std::vector<int> found = detected("\xED\xEE\xF7\xFC", guessed(20866));
  EXPECT_THAT(found,
              testing::UnorderedElementsAre(20866, 1251, 21866, 28595, 855, 866, 1200, 1201));
}

TEST(TextDetection, TriesThePagesOfTheScriptOfThePlaceWithoutAGuess) {
  EXPECT_THAT(detected("\xE1", local(1253)),
              testing::UnorderedElementsAre(1253, 28597, 737, 869, 1200, 1201));
  EXPECT_THAT(detected("\xE1", local(932)),
              testing::UnorderedElementsAre(932, 51932, 50220, 1200, 1201));
  EXPECT_THAT(detected("\xE1"), IsSupersetOf({1250, 1252, 1254, 1257, 1258, 28591, 437, 850}));
}

TEST(TextDetection, TriesAGuessOfAnyFamily) {
  EXPECT_THAT(detected("\xE1\xE2", guessed(10007)), testing::Contains(10007));
  EXPECT_THAT(detected("\xE1\xE2", guessed(10007)), testing::Contains(1251));
}

// --- Ranking ----------------------------------------------------------------------------------

TEST(TextDetection, PutsFewestLossesFirst) {
  const std::string source =
      encoded(932, std::string_view(corpus("japanese")).substr(0, 600)) + "\x81\"";
  const std::vector<Candidate> found = text::detect(source, local(932));
  EXPECT_EQ(found.front(), (Candidate{encodingOf(932), 1}));
  EXPECT_THAT(numbersOf(found), ElementsAre(932, 51932, 50220, testing::_, testing::_));
  EXPECT_LT(found[1].losses, found[2].losses);
  text::Options dropping;
  dropping.malformed = Action::drop;
  for (const Candidate& candidate : found) {
    const Report report = text::check(candidate.encoding, Encoding::utf8(), source, dropping);
    EXPECT_EQ(candidate.losses, report.malformed) << candidate.encoding.number();
  }
}

TEST(TextDetection, PutsTheGuessFirstAmongThoseWithoutLoss) {
  EXPECT_EQ(detected("na\xEFve", guessed(1252)).front(), 1252);
  EXPECT_EQ(detected("na\xEFve", guessed(28591)).front(), 28591);
  EXPECT_EQ(detected("na\xEFve", guessed(1257)).front(), 1257);
  // 81 is no character of 1252.
  EXPECT_NE(detected("na\x81ve", guessed(1252)).front(), 1252);
}

/// A language, the page of the place where it is written, and what its texts come in.
struct Language {
  const char* corpus;
  int local;
  std::vector<int> encodings;
};

const Language languages[] = {
    {"russian", 1251, {1251, 20866, 866, 28595, 855, 1200, 1201}},
    {"polish", 1250, {1250, 28592, 852, 1200, 1201}},
    {"french", 1252, {1252, 28591, 28605, 850, 1200, 1201}},
    {"german", 1252, {1252, 28591, 437, 850, 1200, 1201}},
    {"arabic", 1256, {1256, 28596, 720, 1200, 1201}},
    {"thai", 874, {874, 1200, 1201}},
    {"japanese", 932, {932, 51932, 50220, 1200, 1201}},
    {"korean", 949, {949, 51949, 1361, 50225, 1200, 1201}},
    {"chinese_simplified", 936, {936, 51936, 54936, 1200, 1201}},
    {"chinese_traditional", 950, {950, 1200, 1201}},
};

// No guess helps: what the characters look like decides. Encodings that read a text
// alike are all right.
TEST(TextDetection, FindsWhatReadsATextOfItsLanguageRight) {
  for (const Language& language : languages) {
    const std::string whole = corpus(language.corpus);
    for (const int encoding : language.encodings) {
      const std::string source = encoded(encoding, std::string_view(whole).substr(0, 600));
      const std::vector<Candidate> found = text::detect(source, local(language.local));
      EXPECT_EQ(decoded(found.front().encoding.number(), source), decoded(encoding, source))
          << language.corpus << " in " << encoding << ": "
          << testing::PrintToString(numbersOf(found));
      EXPECT_EQ(found.front().losses, 0U) << language.corpus << " in " << encoding;
    }
  }
}

TEST(TextDetection, TellsUtf16FromBytesByItsNulls) {
  const std::string low = encoded(1200, "Dear all,\r\nsee below.\r\n");
  EXPECT_EQ(detected(low, guessed(1252)).front(), 1200);
  EXPECT_EQ(detected(encoded(1201, "Dear all,\r\nsee below.\r\n"), guessed(1252)).front(), 1201);
}

// There hardly are any losses in them.
TEST(TextDetection, PutsUtf16LastWhereItDoesNotLookLikeText) {
  EXPECT_THAT(numbersOf(text::detect("\xE9t\xE9 \x81 \x8D \xE0 No\xEBl", guessed(1252))).back(),
              testing::AnyOf(1200, 1201));
}

TEST(TextDetection, PrefersThePageOfThePlaceWhereNothingTells) {
  EXPECT_EQ(detected("\xE9", local(1250)).front(), 1250);
  EXPECT_EQ(detected("\xE9", local(1252)).front(), 1252);
  EXPECT_EQ(detected("\xE9", local(28605)).front(), 28605);
}

// --- Long texts -------------------------------------------------------------------------------

TEST(TextDetection, LooksAtTheBeginningOfALongText) {
  std::string source(text::mostBytesDetected, 'a');
  source += "\xFF\xFF";
  EXPECT_THAT(detected(source), ElementsAre(20127));
  source[text::mostBytesDetected - 1] = '\xE9';
  EXPECT_THAT(detected(source), testing::Contains(1252));
}

TEST(TextDetection, CountsNoLossForWhatItCutsItself) {
  const std::string beginning(text::mostBytesDetected - 2, '\n');
  EXPECT_THAT(detected("\u00E9" + beginning.substr(1) + "\u3042\u3042"), ElementsAre(65001));
  DetectionHints goesOn;
  goesOn.goesOn = true;
  EXPECT_THAT(detected("caf\u00E9\xE3\x81", goesOn), ElementsAre(65001));
  EXPECT_THAT(detected("caf\u00E9\xE3\x81"), testing::Contains(1252));
}

// --- What holds a text ------------------------------------------------------------------------

std::vector<int> holders(std::string_view source, int from) {
  std::vector<int> numbers;
  for (const Encoding encoding : text::encodingsThatHold(source, encodingOf(from))) {
    numbers.push_back(encoding.number());
  }
  return numbers;
}

TEST(TextRepertoire, IsHeldByEveryEncodingThatConvertsIt) {
  for (const std::string_view utf8 :
       {"", "plain", "caf\u00E9 \u20AC", "\u043D\u043E\u0447\u044C", "\u3042\u6F22", "\u00E9\u0436",
        "\U0001F600", "[~]", "\uE000", "\u0000"}) {
    std::vector<int> expected;
    for (const Encoding encoding : Encoding::all()) {
      if (text::check(Encoding::utf8(), encoding, utf8).isLossless()) {
        expected.push_back(encoding.number());
      }
    }
    EXPECT_EQ(holders(utf8, 65001), expected) << utf8;
    EXPECT_EQ(holders(encoded(1201, utf8), 1201), expected) << utf8;
  }
}

TEST(TextRepertoire, TakesPiecesCutAnywhere) {
  for (const int from : {65001, 932, 50220, 1201, 65000}) {
    const std::string source = encoded(from, "a\u3042\u6F22\u3042b\u30A2");
    for (std::size_t cut = 0; cut <= source.size(); ++cut) {
      text::Repertoire repertoire(encodingOf(from));
      repertoire.push(std::string_view(source).substr(0, cut));
      repertoire.push(std::string_view(source).substr(cut));
      repertoire.finish();
      EXPECT_EQ(repertoire.size(), 5U) << from << " at " << cut;
      EXPECT_TRUE(repertoire.isHeldBy(encodingOf(51932)));
      EXPECT_FALSE(repertoire.isHeldBy(encodingOf(1252)));
      EXPECT_TRUE(repertoire.report().isLossless());
      EXPECT_EQ(repertoire.report().bytesRead, source.size());
    }
  }
}

TEST(TextRepertoire, LeavesOutWhatIsMalformedAndSaysSo) {
  text::Repertoire repertoire(Encoding::utf8());
  repertoire.push("a\xFF\u00E9\xC3");
  repertoire.finish();
  EXPECT_EQ(repertoire.size(), 2U);
  EXPECT_EQ(repertoire.report().malformed, 2U);
  EXPECT_EQ(repertoire.report().firstMalformed->offset, 1U);
  EXPECT_TRUE(repertoire.isHeldBy(encodingOf(1252)));
}

TEST(TextRepertoire, HasEveryCharacterOfALongTextOnce) {
  std::string all;
  text::Repertoire repertoire(Encoding::utf32le());
  for (char32_t character = 0; character < 0x110000; ++character) {
    if (character == 0xD800) character = 0xE000;
    for (int shift = 0; shift < 32; shift += 8) all += static_cast<char>(character >> shift & 0xFF);
  }
  repertoire.push(all);
  repertoire.push(all);
  repertoire.finish();
  EXPECT_EQ(repertoire.size(), 0x110000U - 0x800);
  EXPECT_TRUE(repertoire.isHeldBy(Encoding::utf8()));
  EXPECT_TRUE(repertoire.isHeldBy(encodingOf(65000)));
  EXPECT_FALSE(repertoire.isHeldBy(encodingOf(932)));
}

}  // namespace
}  // namespace quorvel::test_text
