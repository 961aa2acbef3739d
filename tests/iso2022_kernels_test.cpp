#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "quorvel/base/NullLog.h"
#include "quorvel/unicode/Japanese.h"
#include "quorvel/unicode/Korean.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/RandomText.h"
#include "tests/helpers/StatefulKernels.h"
#include "tests/reference/Iso2022Reference.h"

namespace quorvel {
namespace {

using kernel::Iso2022JpReading;
using kernel::JapaneseSet;
using kernel::Loops;
using kernel::StatefulLoop;
using test_kernels::Converted;
using test_kernels::targetName;
using test_text::below;
using test_text::Random;

std::string_view lastBlock() {
  return {reinterpret_cast<const char*>(Japanese::GetSjisFrom2022_LastBlock()), 752};
}

Converted converted(const reference::Converted& result) { return {result.bytes, result.hadError}; }

Converted expectedToShiftJis(std::string_view text) {
  return converted(reference::shiftJisOfIso2022Jp(text, lastBlock()));
}

Converted expectedFromShiftJis(std::string_view text) {
  return converted(reference::iso2022JpOfShiftJis(text, lastBlock()));
}

Converted expectedToKsc(std::string_view text) {
  return converted(reference::kscOfIso2022Kr(text));
}

Converted expectedFromKsc(std::string_view text) {
  return converted(reference::iso2022KrOfKsc(text));
}

template <typename Converter, typename Method, typename... More>
Converted convertedBy(Method method, const unsigned char* in, std::size_t size, More&... more) {
  Converter converter;
  DataBuffer out;
  EXPECT_TRUE((converter.*method)(in, static_cast<int>(size), out, more...));
  return {quorvel_test::contentOf(out), converter.m_hadError};
}

Converted toShiftJis(const unsigned char* in, std::size_t size) {
  NullLog log;
  return convertedBy<Japanese>(&Japanese::Iso2022ToShiftJis, in, size, log);
}

Converted fromShiftJis(const unsigned char* in, std::size_t size) {
  NullLog log;
  return convertedBy<Japanese>(&Japanese::ShiftJisToIso2022, in, size, log);
}

Converted toKsc(const unsigned char* in, std::size_t size) {
  return convertedBy<Korean>(&Korean::Iso2022ToKsc, in, size);
}

Converted fromKsc(const unsigned char* in, std::size_t size) {
  return convertedBy<Korean>(&Korean::KscToIso2022, in, size);
}

template <typename State>
using Direction = test_kernels::StatefulDirection<State>;

constexpr Direction<Iso2022JpReading> readJp{
    "iso2022JpToShiftJis",
    [](const Loops& loops) -> StatefulLoop<Iso2022JpReading>& { return loops.iso2022JpToShiftJis; },
    1, toShiftJis, expectedToShiftJis};
constexpr Direction<JapaneseSet> writeJp{
    "shiftJisToIso2022Jp",
    [](const Loops& loops) -> StatefulLoop<JapaneseSet>& { return loops.shiftJisToIso2022Jp; }, 4,
    fromShiftJis, expectedFromShiftJis};
constexpr Direction<bool> readKr{
    "iso2022KrToKsc",
    [](const Loops& loops) -> StatefulLoop<bool>& { return loops.iso2022KrToKsc; }, 1, toKsc,
    expectedToKsc};
constexpr Direction<bool> writeKr{
    "kscToIso2022Kr",
    [](const Loops& loops) -> StatefulLoop<bool>& { return loops.kscToIso2022Kr; }, 2, fromKsc,
    expectedFromKsc};

constexpr JapaneseSet japaneseStates[] = {JapaneseSet::ascii, JapaneseSet::katakana,
                                          JapaneseSet::kanji};
constexpr Iso2022JpReading readingStates[] = {{JapaneseSet::ascii, false},
                                              {JapaneseSet::katakana, false},
                                              {JapaneseSet::kanji, false},
                                              {JapaneseSet::ascii, true},
                                              {JapaneseSet::kanji, true}};
constexpr bool koreanStates[] = {false, true};

class Iso2022Kernels : public test_kernels::StatefulKernelTest {
 protected:
  testing::AssertionResult agrees(const Direction<JapaneseSet>& direction,
                                  std::string_view text) const {
    return agreesFrom(japaneseStates, direction, text);
  }

  testing::AssertionResult agrees(const Direction<Iso2022JpReading>& direction,
                                  std::string_view text) const {
    return agreesFrom(readingStates, direction, text);
  }

  testing::AssertionResult agrees(const Direction<bool>& direction, std::string_view text) const {
    return agreesFrom(koreanStates, direction, text);
  }
};

std::string pairOf(std::size_t lead, std::size_t trail) {
  return {static_cast<char>(lead), static_cast<char>(trail)};
}

std::size_t among(Random& random, std::size_t first, std::size_t last) {
  return first + below(random, last - first + 1);
}

std::string asciiRun(Random& random, std::size_t length) {
  std::string text;
  while (text.size() < length) {
    text += below(random, 12) == 0 ? "\r\n"
                                   : std::string(1, static_cast<char>(among(random, 0x20, 0x7F)));
  }
  return text;
}

std::string pairRun(Random& random, std::size_t length, std::size_t first, std::size_t last) {
  std::string text;
  while (length-- > 0) text += pairOf(among(random, first, last), among(random, first, last));
  return text;
}

std::string katakanaRun(Random& random, std::size_t length, std::size_t first) {
  std::string text;
  while (length-- > 0) text += static_cast<char>(first + below(random, 0x3F));
  return text;
}

std::string shiftJisRun(Random& random, std::size_t length) {
  std::string text;
  while (length-- > 0) {
    const std::size_t trail = among(random, 0x40, 0xFB);
    text += pairOf(below(random, 2) ? among(random, 0x81, 0x9F) : among(random, 0xE0, 0xEF),
                   trail < 0x7F ? trail : trail + 1);
  }
  return text;
}

using MakeRun = std::string (*)(Random& random, std::size_t length, unsigned int kind);

// Runs of up to a few lengths, of kinds that are mostly of the first two.
std::string textOfRuns(Random& random, MakeRun makeRun) {
  constexpr std::size_t lengths[] = {1, 3, 8, 40, 100};
  const std::size_t longest = lengths[below(random, std::size(lengths))];
  const unsigned int kinds = below(random, 3) == 0 ? 4 : below(random, 3) == 0 ? 3 : 2;
  const std::size_t size = below(random, 400);
  std::string text;
  while (text.size() < size) {
    text += makeRun(random, 1 + below(random, longest),
                    static_cast<unsigned int>(below(random, kinds)));
  }
  return text;
}

std::string jisRun(Random& random, std::size_t length, unsigned int kind) {
  switch (kind) {
    case 0:
      return "\x1B(B" + asciiRun(random, length);
    case 1:
      return "\x1B$B" + pairRun(random, length, 0x21, below(random, 4) ? 0x78 : 0x7E);
    case 2:
      return "\x1B(I" + katakanaRun(random, length, 0x21);
    default:
      return "\x1B(J" + asciiRun(random, length) + "\x1B$@ \r\n" + pairRun(random, 2, 0x21, 0x7E) +
             "\n\x0E" + katakanaRun(random, 3, 0x21) + "\x0F";
  }
}

std::string shiftJisTextRun(Random& random, std::size_t length, unsigned int kind) {
  switch (kind) {
    case 0:
      return asciiRun(random, length);
    case 1:
      return shiftJisRun(random, length);
    case 2:
      return katakanaRun(random, length, 0xA1);
    default:
      return std::string(lastBlock().substr(2 * below(random, 376), 2));
  }
}

std::string isoKrRun(Random& random, std::size_t length, unsigned int kind) {
  switch (kind) {
    case 0:
      return "\x0F" + asciiRun(random, length);
    case 1:
      return "\x0E" + pairRun(random, length, 0x21, 0x7E);
    case 2:
      return "\x0E\r\n" + pairRun(random, length, 0x21, 0x7E) + " ";
    default:
      return "\x1B$)C\x0F\xC7\x41";
  }
}

std::string kscRun(Random& random, std::size_t length, unsigned int kind) {
  switch (kind) {
    case 0:
      return asciiRun(random, length);
    case 1:
      return pairRun(random, length, 0xA1, 0xFE);
    case 2:
      return pairOf(among(random, 0x81, 0xA0), among(random, 0x81, 0xFE));
    default:
      return pairOf(among(random, 0x81, 0xC6), among(random, 0x41, 0x5A));
  }
}

// Every kind of byte that any of the encodings treats apart.
std::vector<std::string> pieces() {
  std::vector<std::string> all;
  for (const int byte :
       {0x00, 0x0A, 0x0E, 0x0F, 0x1B, 0x20, 0x21, 0x40, 0x5F, 0x60, 0x79, 0x7C, 0x7E, 0x7F,
        0x80, 0x81, 0x9F, 0xA0, 0xA1, 0xDF, 0xE0, 0xEF, 0xF0, 0xFC, 0xFD, 0xFE, 0xFF}) {
    all.emplace_back(1, static_cast<char>(byte));
  }
  for (const char* sequence :
       {"\x1B(B", "\x1B(J", "\x1B(I", "\x1B$B", "\x1B$@", "\x1B$)C", "\x1B[0m", "\x1B$", "\x1B("}) {
    all.emplace_back(sequence);
  }
  return all;
}

template <typename Check>
void tryManyTexts(MakeRun makeRun, unsigned int seed, const Check& check) {
  Random random(seed);
  const std::vector<std::string> awkward = pieces();
  for (int i = 0; i < 6000 && !testing::Test::HasFatalFailure(); ++i) {
    std::string text = textOfRuns(random, makeRun);
    check(text);
    test_text::damage(text, awkward, 1, random);
    check(text);
  }
}

INSTANTIATE_TEST_SUITE_P(EachTarget, Iso2022Kernels, testing::ValuesIn(kernel::allTargets),
                         targetName);

TEST_P(Iso2022Kernels, ReadJapaneseOfAllKinds) {
  tryManyTexts(jisRun, 1, [&](const std::string& text) { ASSERT_TRUE(agrees(readJp, text)); });
}

TEST_P(Iso2022Kernels, WriteJapaneseOfAllKinds) {
  tryManyTexts(shiftJisTextRun, 2,
               [&](const std::string& text) { ASSERT_TRUE(agrees(writeJp, text)); });
}

TEST_P(Iso2022Kernels, ReadKoreanOfAllKinds) {
  tryManyTexts(isoKrRun, 3, [&](const std::string& text) { ASSERT_TRUE(agrees(readKr, text)); });
}

TEST_P(Iso2022Kernels, WriteKoreanOfAllKinds) {
  tryManyTexts(kscRun, 4, [&](const std::string& text) { ASSERT_TRUE(agrees(writeKr, text)); });
}

TEST_P(Iso2022Kernels, ConvertEveryPairOfBytesInsideABlock) {
  const std::string after(70, 'z');
  for (unsigned int lead = 0; lead < 0x100; ++lead) {
    for (unsigned int trail = 0; trail < 0x100; ++trail) {
      const std::string pair = pairOf(lead, trail);
      ASSERT_TRUE(agrees(readJp, "\x1B$B" + pair + "\x30\x21\x1B(B" + after));
      ASSERT_TRUE(agrees(writeJp, "a" + pair + after));
      ASSERT_TRUE(agrees(readKr, "\x0E" + pair + "\x30\x21\x0F" + after));
      ASSERT_TRUE(agrees(writeKr, "a" + pair + after));
    }
  }
}

TEST_P(Iso2022Kernels, TreatEachAwkwardPieceAlikeAtEachPlaceOfABlock) {
  for (const std::string& piece : pieces()) {
    for (std::size_t at = 0; at <= 70; ++at) {
      const std::string before(at, 'a');
      const std::string after(90, 'z');
      std::string kanji = "\x1B$B";
      std::string hangul = "\x0E";
      std::string shiftJis;
      std::string ksc;
      for (std::size_t i = 0; i < 70; ++i) {
        kanji += "\x30\x21";
        hangul += "\x30\x21";
        shiftJis += "\x88\x9F";
        ksc += "\xB0\xA1";
      }
      ASSERT_TRUE(agrees(readJp, before + piece + after));
      ASSERT_TRUE(agrees(readJp, std::string(kanji).insert(3 + at, piece)));
      ASSERT_TRUE(agrees(writeJp, before + piece + after));
      ASSERT_TRUE(agrees(writeJp, std::string(shiftJis).insert(at, piece)));
      ASSERT_TRUE(agrees(readKr, before + piece + after));
      ASSERT_TRUE(agrees(readKr, std::string(hangul).insert(1 + at, piece)));
      ASSERT_TRUE(agrees(writeKr, before + piece + after));
      ASSERT_TRUE(agrees(writeKr, std::string(ksc).insert(at, piece)));
    }
  }
}

// Long texts are worked on in pieces; no pair and no escape may be torn.
TEST_P(Iso2022Kernels, ConvertLongTexts) {
  Random random(5);
  for (int i = 0; i < 8; ++i) {
    std::string jis;
    std::string shiftJis;
    std::string iso;
    std::string ksc;
    while (jis.size() < 60000) jis += textOfRuns(random, jisRun);
    while (shiftJis.size() < 40000) shiftJis += textOfRuns(random, shiftJisTextRun);
    while (iso.size() < 40000) iso += textOfRuns(random, isoKrRun);
    while (ksc.size() < 40000) ksc += textOfRuns(random, kscRun);
    EXPECT_TRUE(agrees(readJp, jis));
    EXPECT_TRUE(agrees(writeJp, shiftJis));
    EXPECT_TRUE(agrees(readKr, iso));
    EXPECT_TRUE(agrees(writeKr, ksc));
  }
}

TEST_P(Iso2022Kernels, ConvertTextInPiecesOfAnyLength) {
  Random random(6);
  const std::vector<std::string> awkward = pieces();
  const auto textBy = [&](MakeRun makeRun) {
    std::string text = textOfRuns(random, makeRun);
    if (below(random, 2) == 0) test_text::damage(text, awkward, 1, random);
    return text;
  };
  for (int i = 0; i < 1500; ++i) {
    for (const std::size_t longest : {1, 2, 5, 150}) {
      ASSERT_TRUE(agreesInPieces(readingStates, readJp, textBy(jisRun), longest, random));
      ASSERT_TRUE(
          agreesInPieces(japaneseStates, writeJp, textBy(shiftJisTextRun), longest, random));
      ASSERT_TRUE(agreesInPieces(koreanStates, readKr, textBy(isoKrRun), longest, random));
      ASSERT_TRUE(agreesInPieces(koreanStates, writeKr, textBy(kscRun), longest, random));
    }
  }
}

struct Cut {
  const char* text;
  const char* left;
  Stop why;
};

// What is left of a text, and whether more could make it whole.
template <typename State>
void expectCuts(kernel::StatefulLoop<State>& loop, std::initializer_list<Cut> cuts) {
  for (const Cut& cut : cuts) {
    const std::string text = quorvel_test::byteString(cut.text);
    std::string room(4 * text.size(), '\0');
    State state{};
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    const Progress progress =
        loop(in, in + text.size(), reinterpret_cast<unsigned char*>(room.data()), state);
    EXPECT_EQ(progress.why, cut.why) << cut.text;
    const auto consumed = static_cast<std::size_t>(progress.in - in);
    EXPECT_EQ(text.substr(consumed), quorvel_test::byteString(cut.left)) << cut.text;
  }
}

TEST_P(Iso2022Kernels, TellWhatIsCutOffFromWhatIsMalformed) {
  const Loops& loops = kernel::loopsOf(GetParam());
  expectCuts<Iso2022JpReading>(loops.iso2022JpToShiftJis, {{"61 1B 24 42 30 21", "", Stop::end},
                                                           {"61 1B", "1B", Stop::cutOff},
                                                           {"61 1B 24", "1B 24", Stop::cutOff},
                                                           {"61 1B 28", "1B 28", Stop::cutOff},
                                                           {"61 1B 5B", "1B 5B", Stop::met},
                                                           {"61 1B 24 29", "1B 24 29", Stop::met},
                                                           {"1B 24 42 30", "30", Stop::cutOff},
                                                           {"1B 24 42 30 0A", "30 0A", Stop::met},
                                                           {"1B 24 42 80", "80", Stop::met},
                                                           {"1B 24 42 79 21", "79 21", Stop::met},
                                                           {"0E 21 80", "80", Stop::met}});
  expectCuts<JapaneseSet>(loops.shiftJisToIso2022Jp, {{"61 88 9F", "", Stop::end},
                                                      {"61 88", "88", Stop::cutOff},
                                                      {"61 FC", "FC", Stop::cutOff},
                                                      {"61 F0 40", "F0 40", Stop::met},
                                                      {"61 88 20", "88 20", Stop::met},
                                                      {"61 80", "80", Stop::met},
                                                      {"61 1B", "1B", Stop::met}});
  expectCuts<bool>(loops.iso2022KrToKsc, {{"1B 24 29 43 0E 30 21", "", Stop::end},
                                          {"1B", "1B", Stop::cutOff},
                                          {"61 1B 24 29", "1B 24 29", Stop::cutOff},
                                          {"1B 24 29 41", "1B 24 29 41", Stop::met},
                                          {"0E 30", "30", Stop::cutOff},
                                          {"0E 30 20", "30 20", Stop::met},
                                          {"0E B0", "B0", Stop::met}});
  expectCuts<bool>(loops.kscToIso2022Kr, {{"61 B0 A1", "", Stop::end},
                                          {"61 B0", "B0", Stop::cutOff},
                                          {"61 81", "81", Stop::cutOff},
                                          {"61 81 41", "81 41", Stop::met},
                                          {"61 80", "80", Stop::met},
                                          {"61 FF", "FF", Stop::met}});
}

}  // namespace
}  // namespace quorvel
