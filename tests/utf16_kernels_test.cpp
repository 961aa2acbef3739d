#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/helpers/Bytes.h"
#include "tests/helpers/Kernels.h"
#include "tests/helpers/RandomText.h"
#include "tests/reference/TranscodeReference.h"

namespace quorvel {
namespace {

using kernel::Loop;
using kernel::Loops;
using kernel::Target;
using reference::allScalarValues;
using reference::Pairs;
using reference::Transcoded;
using reference::utf16Of;
using test_kernels::Direction;
using test_kernels::targetName;
using test_text::awkwardBytes;
using test_text::below;
using test_text::damage;
using test_text::inUtf8;
using test_text::Random;
using test_text::randomText;

using Kernels = test_kernels::KernelTest;

Transcoded joinedToUtf8(std::string_view text) {
  return reference::utf16ToUtf8(text, Pairs::joined);
}

Transcoded leftToUtf8(std::string_view text) { return reference::utf16ToUtf8(text, Pairs::left); }

Transcoded strictlyToUtf8(std::string_view text) {
  return reference::utf16ToUtf8(text, Pairs::strict);
}

bool isJoinedCutOff(std::string_view rest) { return reference::isUtf16CutOff(rest, Pairs::joined); }

bool isLeftCutOff(std::string_view rest) { return reference::isUtf16CutOff(rest, Pairs::left); }

constexpr Direction fromUtf8{"utf8ToUtf16",
                             [](const Loops& loops) -> Loop& { return loops.utf8ToUtf16; },
                             4,
                             reference::utf8ToUtf16,
                             reference::isUtf8CutOff,
                             1};
constexpr Direction toUtf8{"utf16ToUtf8",
                           [](const Loops& loops) -> Loop& { return loops.utf16ToUtf8; },
                           3,
                           joinedToUtf8,
                           isJoinedCutOff,
                           2};
constexpr Direction toUtf8WithoutPairs{
    "utf16ToUtf8WithoutPairs",
    [](const Loops& loops) -> Loop& { return loops.utf16ToUtf8WithoutPairs; },
    3,
    leftToUtf8,
    isLeftCutOff,
    2};
constexpr Direction toUtf8Strictly{
    "utf16ToUtf8Strictly",
    [](const Loops& loops) -> Loop& { return loops.utf16ToUtf8Strictly; },
    3,
    strictlyToUtf8,
    isJoinedCutOff,
    2};

bool isBigEndianCutOff(std::string_view rest) {
  return reference::isUtf16CutOff(reference::exchanged(rest), Pairs::joined);
}

constexpr Direction checked{"utf16ToUtf16",
                            [](const Loops& loops) -> Loop& { return loops.utf16ToUtf16; },
                            2,
                            reference::utf16ToUtf16,
                            isJoinedCutOff,
                            2};
constexpr Direction toBigEndian{"utf16ToUtf16Be",
                                [](const Loops& loops) -> Loop& { return loops.utf16ToUtf16Be; },
                                2,
                                reference::utf16ToUtf16Be,
                                isJoinedCutOff,
                                2};
constexpr Direction fromBigEndian{"utf16BeToUtf16",
                                  [](const Loops& loops) -> Loop& { return loops.utf16BeToUtf16; },
                                  2,
                                  reference::utf16BeToUtf16,
                                  isBigEndianCutOff,
                                  2};

std::string inUtf16(std::u32string_view text) {
  std::string bytes;
  for (const char32_t value : text) bytes += utf16Of(value);
  return bytes;
}

std::vector<std::string> awkwardUnits() {
  std::vector<std::string> pieces;
  for (const unsigned int unit :
       {0x0000U, 0x0001U, 0x007FU, 0x0080U, 0x07FFU, 0x0800U, 0xD7FFU, 0xD800U, 0xDBFFU, 0xDC00U,
        0xDFFFU, 0xE000U, 0xEFFDU, 0xFDEFU, 0xFDEEU, 0xFDF0U, 0xFFFFU, 0x8000U, 0xFF00U}) {
    pieces.push_back(reference::unitBytes(unit));
  }
  return pieces;
}

// The directions out of UTF-16LE that take all characters and nothing else, and the one
// from the other byte order.
class StrictKernels : public test_kernels::KernelTest {
 protected:
  testing::AssertionResult areStrict(std::string_view text) const {
    for (const Direction& direction : {toUtf8Strictly, checked, toBigEndian}) {
      const testing::AssertionResult result = agreesThroughout(direction, text);
      if (!result) return result;
    }
    return agreesThroughout(fromBigEndian, reference::exchanged(text));
  }
};

INSTANTIATE_TEST_SUITE_P(EachTarget, StrictKernels, testing::ValuesIn(kernel::allTargets),
                         targetName);

TEST_P(StrictKernels, TakeEveryCharacter) { EXPECT_TRUE(areStrict(inUtf16(allScalarValues()))); }

TEST_P(StrictKernels, TakeTextOfEachLength) {
  Random random(7);
  for (std::size_t length = 0; length <= 300; ++length) {
    for (int i = 0; i < 12; ++i) {
      ASSERT_TRUE(areStrict(inUtf16(randomText(random, length)).substr(0, 2 * length)));
    }
  }
}

TEST_P(StrictKernels, StopAtEachLoneSurrogate) {
  Random random(8);
  const std::vector<std::string> pieces = awkwardUnits();
  for (int i = 0; i < 5000; ++i) {
    std::string text = inUtf16(randomText(random, below(random, 200)));
    damage(text, pieces, 2, random);
    ASSERT_TRUE(areStrict(text));
  }
}

TEST_P(StrictKernels, TreatEachAwkwardUnitAlikeAtEachPlace) {
  for (const std::string& piece : awkwardUnits()) {
    for (const std::u32string_view filler : {U"a", U"\u3042", U"\U0001F600", U"a\U0001F600"}) {
      for (std::size_t at = 0; at < 70; ++at) {
        std::string text;
        while (text.size() < 200) text += inUtf16(filler);
        text.insert(2 * at, piece);
        ASSERT_TRUE(areStrict(text));
      }
    }
  }
}

TEST_P(StrictKernels, SayWhatTheEndCutsOff) {
  for (std::size_t before = 0; before < 140; ++before) {
    for (std::size_t length = 1; length < 4; ++length) {
      const std::string units = inUtf16(std::u32string(before, U'\u3042'));
      ASSERT_TRUE(areStrict(units + inUtf16(U"\U0001F600").substr(0, length)));
    }
  }
}

TEST_P(StrictKernels, TakeTextInPiecesOfAnyLength) {
  Random random(9);
  const std::vector<std::string> units = awkwardUnits();
  for (int i = 0; i < 3000; ++i) {
    std::string text = inUtf16(randomText(random, below(random, 150)));
    if (i % 2 == 0) damage(text, units, 2, random);
    text.resize(text.size() - below(random, std::min<std::size_t>(text.size() + 1, 4)));
    for (const std::size_t longest : {1, 2, 5, 100}) {
      for (const Direction& direction : {toUtf8Strictly, checked, toBigEndian}) {
        ASSERT_TRUE(agreesInPieces(direction, text, longest, random));
      }
      ASSERT_TRUE(agreesInPieces(fromBigEndian, reference::exchanged(text), longest, random));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EachTarget, Kernels, testing::ValuesIn(kernel::allTargets), targetName);

TEST_P(Kernels, ConvertEveryCodePointBothWays) {
  const std::string eight = inUtf8(allScalarValues());
  EXPECT_TRUE(agrees(fromUtf8, eight));
  EXPECT_TRUE(agreesThroughout(toUtf8, inUtf16(allScalarValues())));
}

TEST_P(Kernels, ConvertTextOfEachLength) {
  Random random(1);
  for (std::size_t length = 0; length <= 300; ++length) {
    for (int i = 0; i < 12; ++i) {
      const std::u32string text = randomText(random, length);
      const std::string eight = inUtf8(text).substr(0, length);
      const std::string sixteen = inUtf16(text).substr(0, 2 * length);
      ASSERT_TRUE(agrees(fromUtf8, eight));
      ASSERT_TRUE(agreesThroughout(toUtf8, sixteen));
      ASSERT_TRUE(agreesThroughout(toUtf8WithoutPairs, sixteen));
    }
  }
}

TEST_P(Kernels, StopAtWhateverIsIllFormedInUtf8) {
  Random random(2);
  const std::vector<std::string> pieces = awkwardBytes();
  for (int i = 0; i < 5000; ++i) {
    std::string text = inUtf8(randomText(random, below(random, 200)));
    damage(text, pieces, 1, random);
    ASSERT_TRUE(agreesThroughout(fromUtf8, text));
  }
}

TEST_P(Kernels, FindEachIllFormedSequenceAtEachPlaceOfABlock) {
  const std::u32string_view fillers[] = {U"a", U"\u0436", U"\u3042", U"\U0001F600",
                                         U"a\u00E9\u3042"};
  const std::string ascii(130, 'z');
  const std::string afters[] = {ascii, inUtf8(U"\u0436\u0436\u0436\u0436") + ascii};
  for (const reference::IllFormedUtf8& row : reference::illFormedUtf8) {
    const std::string bad = quorvel_test::byteString(row.bytes);
    for (const std::u32string_view filler : fillers) {
      std::string before;
      for (int count = 0; count < 150; ++count) {
        for (const std::string& after : afters) {
          ASSERT_TRUE(agreesThroughout(fromUtf8, before + bad + after)) << row.name;
        }
        ASSERT_TRUE(agrees(fromUtf8, before + bad)) << row.name;
        before.insert(0, static_cast<std::size_t>(count % 5), 'x');
        before += inUtf8(filler);
        if (before.size() > 200) break;
      }
    }
  }
}

TEST_P(Kernels, TellEveryThreeBytesWellFormedOrNotInsideABlock) {
  // Leads with each second byte, and a third that is good or bad.
  std::string text;
  for (int lead = 0x80; lead < 0x100; ++lead) {
    for (int second = 0x70; second < 0x100; ++second) {
      for (const int third : {0x41, 0x80}) {
        text.assign(10, 'a');
        for (const int byte : {lead, second, third, 0x80}) text += static_cast<char>(byte);
        text.append(61, 'b');
        ASSERT_TRUE(agreesThroughout(fromUtf8, text));
      }
    }
  }
}

TEST_P(Kernels, StopAtWhatNeedsADecisionInUtf16) {
  Random random(3);
  const std::vector<std::string> pieces = awkwardUnits();
  for (int i = 0; i < 5000; ++i) {
    std::string text = inUtf16(randomText(random, below(random, 200)));
    damage(text, pieces, 2, random);
    ASSERT_TRUE(agreesThroughout(toUtf8, text));
    ASSERT_TRUE(agreesThroughout(toUtf8WithoutPairs, text));
  }
}

TEST_P(Kernels, TreatEachAwkwardUnitAlikeAtEachPlace) {
  const std::u32string_view fillers[] = {U"a", U"\u0436", U"\u3042", U"\U0001F600"};
  for (const std::string& piece : awkwardUnits()) {
    for (const std::u32string_view filler : fillers) {
      for (std::size_t at = 0; at < 70; ++at) {
        std::string text;
        while (text.size() < 200) text += inUtf16(filler);
        text.insert(2 * at, piece);
        ASSERT_TRUE(agreesThroughout(toUtf8, text));
        ASSERT_TRUE(agreesThroughout(toUtf8WithoutPairs, text));
      }
    }
  }
}

TEST_P(Kernels, ConvertTextInPiecesOfAnyLength) {
  Random random(5);
  const std::vector<std::string> pieces = awkwardBytes();
  const std::vector<std::string> units = awkwardUnits();
  for (int i = 0; i < 3000; ++i) {
    const std::u32string text = randomText(random, below(random, 150));
    std::string eight = inUtf8(text);
    std::string sixteen = inUtf16(text);
    if (i % 2 == 0) damage(eight, pieces, 1, random);
    if (i % 2 == 0) damage(sixteen, units, 2, random);
    sixteen.resize(sixteen.size() - below(random, std::min<std::size_t>(sixteen.size() + 1, 4)));
    for (const std::size_t longest : {1, 2, 5, 100}) {
      ASSERT_TRUE(agreesInPieces(fromUtf8, eight, longest, random));
      ASSERT_TRUE(agreesInPieces(toUtf8, sixteen, longest, random));
      ASSERT_TRUE(agreesInPieces(toUtf8WithoutPairs, sixteen, longest, random));
    }
  }
}

TEST_P(Kernels, SayWhatTheEndCutsOff) {
  for (const char32_t value : {0xE9, 0x7FF, 0x800, 0x3042, 0xFFFD, 0x10000, 0x1F600, 0x10FFFF}) {
    const std::string character = inUtf8(std::u32string(1, value));
    for (std::size_t before = 0; before < 140; ++before) {
      for (std::size_t length = 1; length < character.size(); ++length) {
        const std::string text = std::string(before, 'a') + character.substr(0, length);
        ASSERT_TRUE(agrees(fromUtf8, text));
      }
      for (std::size_t length = 1; length < 4; ++length) {
        const std::string units = inUtf16(std::u32string(before, U'\u3042'));
        const std::string text = units + inUtf16(U"\U0001F600").substr(0, length);
        ASSERT_TRUE(agrees(toUtf8, text));
        ASSERT_TRUE(agrees(toUtf8WithoutPairs, text));
      }
    }
  }
}

TEST_P(Kernels, AreThoseOfTheChosenTarget) {
  const kernel::Target before = kernel::currentTarget();
  kernel::setTarget(GetParam());
  EXPECT_EQ(kernel::currentTarget(), GetParam());
  EXPECT_EQ(&kernel::loops(), &kernel::loopsOf(GetParam()));
  kernel::setTarget(before);
}

TEST(Targets, FallBackOnAPlainerOneThatTheMachineCanRun) {
  EXPECT_TRUE(kernel::canRun(Target::scalar));
  EXPECT_EQ(kernel::fallbackOf(Target::scalar), Target::scalar);
  for (const Target target : kernel::allTargets) {
    if (!kernel::canRun(target) || target == Target::scalar) continue;
    EXPECT_LT(kernel::fallbackOf(target), target);
    EXPECT_TRUE(kernel::canRun(kernel::fallbackOf(target)));
  }
}

TEST(Targets, BeginWithOneThatTheMachineCanRun) {
  EXPECT_TRUE(kernel::canRun(kernel::currentTarget()));
}

// A loop that is another target's would be as fast as that, without a word.
TEST(Targets, HaveLoopsOfTheirOwn) {
  const Loops& plain = kernel::loopsOf(Target::scalar);
  for (const Target target : kernel::allTargets) {
    if (target == Target::scalar || !kernel::canRun(target)) continue;
    const Loops& loops = kernel::loopsOf(target);
    EXPECT_NE(&loops.utf8ToUtf16, &plain.utf8ToUtf16);
    EXPECT_NE(&loops.utf16ToUtf8, &plain.utf16ToUtf8);
    EXPECT_NE(&loops.utf16ToUtf8WithoutPairs, &plain.utf16ToUtf8WithoutPairs);
    EXPECT_NE(&loops.utf16ToUtf8Strictly, &plain.utf16ToUtf8Strictly);
    EXPECT_NE(&loops.utf16ToUtf16, &plain.utf16ToUtf16);
    EXPECT_NE(&loops.utf16ToUtf16Be, &plain.utf16ToUtf16Be);
    EXPECT_NE(&loops.utf16BeToUtf16, &plain.utf16BeToUtf16);
    EXPECT_NE(&loops.utf8ToUtf32, &plain.utf8ToUtf32);
    EXPECT_NE(&loops.utf32ToUtf8, &plain.utf32ToUtf8);
    EXPECT_NE(&loops.bytesToUnits, &plain.bytesToUnits);
    EXPECT_NE(&loops.pairsToUnits, &plain.pairsToUnits);
    EXPECT_NE(&loops.unitsToBytes, &plain.unitsToBytes);
    EXPECT_NE(&loops.unitsToPairs, &plain.unitsToPairs);
    EXPECT_NE(&loops.iso2022JpToShiftJis, &plain.iso2022JpToShiftJis);
    EXPECT_NE(&loops.shiftJisToIso2022Jp, &plain.shiftJisToIso2022Jp);
    EXPECT_NE(&loops.iso2022KrToKsc, &plain.iso2022KrToKsc);
    EXPECT_NE(&loops.kscToIso2022Kr, &plain.kscToIso2022Kr);
    EXPECT_NE(&loops.utf7ToUtf16, &plain.utf7ToUtf16);
    EXPECT_NE(&loops.utf16ToUtf7, &plain.utf16ToUtf7);
  }
}

}  // namespace
}  // namespace quorvel
