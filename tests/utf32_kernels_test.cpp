#include <gtest/gtest.h>

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
using reference::allScalarValues;
using reference::utf32Of;
using test_kernels::Direction;
using test_kernels::targetName;
using test_text::awkwardBytes;
using test_text::below;
using test_text::damage;
using test_text::inUtf8;
using test_text::Random;
using test_text::randomText;

using Utf32Kernels = test_kernels::KernelTest;

constexpr Direction fromUtf8{"utf8ToUtf32",
                             [](const Loops& loops) -> Loop& { return loops.utf8ToUtf32; },
                             8,
                             reference::utf8ToUtf32,
                             reference::isUtf8CutOff,
                             1};
constexpr Direction toUtf8{"utf32ToUtf8",
                           [](const Loops& loops) -> Loop& { return loops.utf32ToUtf8; },
                           2,
                           reference::utf32ToUtf8,
                           reference::isUtf32CutOff,
                           4};

std::string inUtf32(std::u32string_view text) {
  std::string bytes;
  for (const char32_t value : text) bytes += utf32Of(value);
  return bytes;
}

std::vector<std::string> awkwardValues() {
  std::vector<std::string> pieces;
  for (const char32_t value :
       {0x0000U,     0x007FU,     0x0080U,     0x07FFU,     0x0800U,     0xD7FFU,
        0xD800U,     0xDBFFU,     0xDC00U,     0xDFFFU,     0xE000U,     0xFDEFU,
        0xFFFFU,     0x10000U,    0x10FFFFU,   0x110000U,   0x1D800U,    0x1FFFFFU,
        0x01000041U, 0x10000041U, 0x7FFFFFFFU, 0x80000000U, 0x80000041U, 0xFFFFFFFFU}) {
    pieces.push_back(utf32Of(value));
  }
  return pieces;
}

INSTANTIATE_TEST_SUITE_P(EachTarget, Utf32Kernels, testing::ValuesIn(kernel::allTargets),
                         targetName);

TEST_P(Utf32Kernels, ConvertEveryCodePointBothWays) {
  EXPECT_TRUE(agrees(fromUtf8, inUtf8(allScalarValues())));
  EXPECT_TRUE(agrees(toUtf8, inUtf32(allScalarValues())));
}

TEST_P(Utf32Kernels, ConvertTextOfEachLength) {
  Random random(1);
  for (std::size_t length = 0; length <= 300; ++length) {
    for (int i = 0; i < 12; ++i) {
      const std::u32string text = randomText(random, length);
      ASSERT_TRUE(agrees(fromUtf8, inUtf8(text).substr(0, length)));
      ASSERT_TRUE(agrees(toUtf8, inUtf32(text).substr(0, length)));
      ASSERT_TRUE(agrees(toUtf8, inUtf32(text)));
    }
  }
}

TEST_P(Utf32Kernels, StopAtWhateverIsIllFormedInUtf8) {
  Random random(2);
  const std::vector<std::string> pieces = awkwardBytes();
  for (int i = 0; i < 5000; ++i) {
    std::string text = inUtf8(randomText(random, below(random, 200)));
    damage(text, pieces, 1, random);
    ASSERT_TRUE(agreesThroughout(fromUtf8, text));
  }
}

TEST_P(Utf32Kernels, FindEachIllFormedSequenceAtEachPlaceOfABlock) {
  const std::u32string_view fillers[] = {U"a", U"\u0436", U"\u3042", U"\U0001F600",
                                         U"a\u00E9\u3042\U0010FFFF"};
  const std::string after(130, 'z');
  for (const reference::IllFormedUtf8& row : reference::illFormedUtf8) {
    const std::string bad = quorvel_test::byteString(row.bytes);
    for (const std::u32string_view filler : fillers) {
      for (std::string before; before.size() < 200; before += inUtf8(filler)) {
        for (const char* shift : {"", "x", "xx"}) {
          ASSERT_TRUE(agreesThroughout(fromUtf8, shift + before + bad + after)) << row.name;
        }
        ASSERT_TRUE(agrees(fromUtf8, before + bad)) << row.name;
      }
    }
  }
}

TEST_P(Utf32Kernels, TellEveryFourBytesWellFormedOrNotInsideABlock) {
  // Every lead with every second byte, and a third and fourth that are good or bad.
  for (int lead = 0x80; lead < 0x100; ++lead) {
    for (int second = 0x70; second < 0x100; ++second) {
      for (const int third : {0x41, 0x80, 0xBF}) {
        for (const int fourth : {0x41, 0x80}) {
          std::string text(10, 'a');
          for (const int byte : {lead, second, third, fourth}) text += static_cast<char>(byte);
          text.append(61, 'b');
          ASSERT_TRUE(agrees(fromUtf8, text));
        }
      }
    }
  }
}

TEST_P(Utf32Kernels, StopAtWhatIsNoScalarValue) {
  Random random(3);
  const std::vector<std::string> pieces = awkwardValues();
  for (int i = 0; i < 5000; ++i) {
    std::string text = inUtf32(randomText(random, below(random, 200)));
    damage(text, pieces, 4, random);
    ASSERT_TRUE(agreesThroughout(toUtf8, text));
  }
}

TEST_P(Utf32Kernels, TreatEachAwkwardValueAlikeAtEachPlace) {
  for (const std::string& piece : awkwardValues()) {
    for (const char32_t filler : {U'a', U'\u0436', U'\u3042', U'\U0001F600'}) {
      for (std::size_t at = 0; at < 70; ++at) {
        std::string text = inUtf32(std::u32string(100, filler));
        text.insert(4 * at, piece);
        ASSERT_TRUE(agreesThroughout(toUtf8, text));
      }
    }
  }
}

TEST_P(Utf32Kernels, EncodeEachMixOfLengthsOfFour) {
  const char32_t values[] = {U'a', U'\u0436', U'\u3042', U'\U0001F600'};
  for (unsigned int mix = 0; mix < 256; ++mix) {
    std::u32string four;
    for (unsigned int i = 0; i < 4; ++i) four += values[mix >> 2 * i & 3];
    std::u32string text;
    for (int i = 0; i < 9; ++i) text += four;
    ASSERT_TRUE(agrees(toUtf8, inUtf32(text)));
  }
}

TEST_P(Utf32Kernels, ConvertTextInPiecesOfAnyLength) {
  Random random(7);
  const std::vector<std::string> pieces = awkwardBytes();
  for (int i = 0; i < 3000; ++i) {
    const std::u32string text = randomText(random, below(random, 120));
    std::string eight = inUtf8(text);
    std::string thirtyTwo = inUtf32(text);
    if (i % 2 == 0) damage(eight, pieces, 1, random);
    if (i % 2 == 0) damage(thirtyTwo, awkwardValues(), 4, random);
    if (!thirtyTwo.empty()) thirtyTwo.resize(thirtyTwo.size() - below(random, 4));
    for (const std::size_t longest : {1, 3, 7, 200}) {
      ASSERT_TRUE(agreesInPieces(fromUtf8, eight, longest, random));
      ASSERT_TRUE(agreesInPieces(toUtf8, thirtyTwo, longest, random));
    }
  }
}

}  // namespace
}  // namespace quorvel
