#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/helpers/Bytes.h"
#include "tests/helpers/Kernels.h"
#include "tests/helpers/RandomText.h"
#include "tests/reference/TranscodeReference.h"

namespace quorvel {
namespace {

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

constexpr Direction fromUtf8{"utf8ToUtf16", &kernel::Utf::utf8ToUtf16, 4, reference::utf8ToUtf16,
                             1};
constexpr Direction toUtf8{"utf16ToUtf8", &kernel::Utf::utf16ToUtf8, 3, joinedToUtf8, 2};
constexpr Direction toUtf8WithoutPairs{"utf16ToUtf8WithoutPairs",
                                       &kernel::Utf::utf16ToUtf8WithoutPairs, 3, leftToUtf8, 2};

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

TEST_P(Kernels, AreThoseOfTheChosenTarget) {
  const kernel::Target before = kernel::currentTarget();
  kernel::setTarget(GetParam());
  EXPECT_EQ(kernel::utf().utf8ToUtf16, kernel::utfOf(GetParam()).utf8ToUtf16);
  kernel::setTarget(before);
}

}  // namespace
}  // namespace quorvel
