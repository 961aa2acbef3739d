#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quorvel/unicode/_qvUtf.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/RandomText.h"
#include "tests/helpers/StatefulKernels.h"
#include "tests/reference/Utf7Reference.h"

namespace quorvel {
namespace {

using kernel::Loops;
using kernel::StatefulLoop;
using kernel::Utf7Reading;
using kernel::Utf7Writing;
using test_kernels::Converted;
using test_kernels::targetName;
using test_text::below;
using test_text::Random;
using test_text::Range;

Converted decoded(const unsigned char* in, std::size_t size) {
  DataBuffer source;
  source.borrowData(const_cast<unsigned char*>(in), static_cast<unsigned int>(size));
  DataBuffer out;
  const bool isClean = _qvUtf::Utf7ToUtf16_xe(source, out);
  return {quorvel_test::contentOf(out), isClean};
}

Converted encoded(const unsigned char* in, std::size_t size) {
  DataBuffer source;
  source.borrowData(const_cast<unsigned char*>(in), static_cast<unsigned int>(size));
  DataBuffer out;
  const bool isWhole = _qvUtf::Utf16XEToUtf7(source, out);
  return {quorvel_test::contentOf(out), isWhole};
}

Converted expected(std::string_view text) {
  const reference::Utf7Text result = reference::decodeUtf7(text);
  return {quorvel_test::hostUnits(result.units), result.wellFormed};
}

constexpr test_kernels::StatefulDirection<Utf7Reading> reading{
    "utf7ToUtf16",
    [](const Loops& loops) -> StatefulLoop<Utf7Reading>& { return loops.utf7ToUtf16; }, 2, decoded,
    expected};

Converted expectedEncoded(std::string_view bytes) {
  std::u16string units(bytes.size() / 2, 0);
  bytes.copy(reinterpret_cast<char*>(units.data()), bytes.size());
  return {reference::encodeUtf7(units), true};
}

constexpr test_kernels::StatefulDirection<Utf7Writing> writing{
    "utf16ToUtf7",
    [](const Loops& loops) -> StatefulLoop<Utf7Writing>& { return loops.utf16ToUtf7; }, 2, encoded,
    expectedEncoded};

// Behind no digit, and behind up to eight.
constexpr Utf7Reading readings[] = {{false, false, 0, 0},    {true, false, 0, 0},
                                    {true, true, 0, 0},      {true, true, 0x3F, 6},
                                    {true, true, 0x800, 12}, {true, true, 0x3, 2},
                                    {true, true, 0x80, 8},   {true, true, 0x1234, 14},
                                    {true, true, 0x0, 4},    {true, true, 0x3FF, 10}};

// Behind no unit, and behind up to three.
constexpr Utf7Writing writings[] = {{false, 0, 0}, {true, 0, 0}, {true, 0xA, 4}, {true, 0x3, 2}};

class Utf7Kernels : public test_kernels::StatefulKernelTest {
 protected:
  testing::AssertionResult agrees(std::string_view text) const {
    return agreesFrom(readings, reading, text);
  }

  testing::AssertionResult agreesEncoding(std::u16string_view units) const {
    return agreesFrom(writings, writing, quorvel_test::hostUnits(units));
  }
};

// Direct text and runs of up to a few lengths, whole or not.
std::string randomUtf7(Random& random) {
  constexpr std::size_t lengths[] = {1, 3, 8, 12, 40, 100};
  const std::size_t longest = lengths[below(random, std::size(lengths))];
  const std::size_t size = below(random, 300);
  const bool isWhole = below(random, 3) != 0;
  std::string text;
  while (text.size() < size) {
    std::u16string units;
    const auto first = static_cast<char16_t>(below(random, 2) ? 0x20 : 0xAC00);
    for (std::size_t i = below(random, longest + 1); i > 0; --i) {
      units += static_cast<char16_t>(first + below(random, first == 0x20 ? 0x60 : 0x2000));
    }
    std::string piece = reference::encodeUtf7(units);
    if (!isWhole && !piece.empty()) piece.pop_back();
    text += piece + (below(random, 2) ? "-" : " ");
  }
  return text;
}

std::vector<std::string> awkwardPieces() {
  std::vector<std::string> pieces;
  for (int byte = 0; byte < 0x100; ++byte) pieces.emplace_back(1, static_cast<char>(byte));
  for (const char* piece : {"+", "-", "+-", "++", "+A-", "+AK-", "+AKM-", "+AKN-", "+AKMA-",
                            "+AKMAo-", "+AKMAow-", "+AKMAox-", "+AKMAowCjAKM"}) {
    pieces.emplace_back(piece);
  }
  return pieces;
}

INSTANTIATE_TEST_SUITE_P(EachTarget, Utf7Kernels, testing::ValuesIn(kernel::allTargets),
                         targetName);

TEST_P(Utf7Kernels, DecodeTextOfAllKindsWholeOrDamaged) {
  Random random(1);
  const std::vector<std::string> pieces = awkwardPieces();
  for (int i = 0; i < 6000; ++i) {
    std::string text = randomUtf7(random);
    ASSERT_TRUE(agrees(text));
    test_text::damage(text, pieces, 1, random);
    ASSERT_TRUE(agrees(text));
  }
}

TEST_P(Utf7Kernels, DecodeRunsOfEachLengthWithEachByteBehind) {
  const std::string after(40, 'z');
  for (std::size_t length = 0; length <= 70; ++length) {
    for (const char digit : {'A', '/'}) {
      for (int byte = 0; byte < 0x100; ++byte) {
        const std::string run = "a+" + std::string(length, digit) + static_cast<char>(byte);
        ASSERT_TRUE(agrees(run + after));
      }
      ASSERT_TRUE(agrees("a+" + std::string(length, digit)));
    }
  }
}

TEST_P(Utf7Kernels, DecodeEachDigitAtEachPlaceOfARun) {
  for (std::size_t at = 0; at < 40; ++at) {
    for (int byte = 0; byte < 0x100; ++byte) {
      std::string digits(48, 'A');
      digits[at] = static_cast<char>(byte);
      ASSERT_TRUE(agrees("+" + digits + "- and direct text behind it, for as long as a vector"));
    }
  }
}

TEST_P(Utf7Kernels, MeetWhatIsNotDirectAtEachPlace) {
  for (const std::string& piece : awkwardPieces()) {
    for (std::size_t at = 0; at <= 66; ++at) {
      ASSERT_TRUE(agrees(std::string(at, 'a') + piece + std::string(66, 'b')));
    }
  }
}

// Long texts are worked on in pieces; a run goes on from one to the next.
TEST_P(Utf7Kernels, DecodeLongTexts) {
  Random random(2);
  for (int i = 0; i < 8; ++i) {
    std::string text(below(random, 20), 'a');
    while (text.size() < 40000) text += randomUtf7(random);
    EXPECT_TRUE(agrees(text));
    EXPECT_TRUE(agrees(std::string(below(random, 20), 'a') + "+" + std::string(50000, 'A')));
  }
}

// Direct units and others, in runs of up to a few lengths.
std::u16string randomUnits(Random& random, std::size_t length) {
  constexpr std::size_t lengths[] = {1, 3, 8, 20, 60};
  const std::size_t longest = lengths[below(random, std::size(lengths))];
  constexpr Range ranges[] = {{u'a', 26},     {0x20, 0x60}, {0x80, 0x80}, {0xAC00, 0x2000},
                              {0x400, 0x100}, {0, 0x10000}, {u'+', 1}};
  std::u16string units;
  while (units.size() < length) {
    const Range& range = ranges[below(random, std::size(ranges))];
    for (std::size_t i = 1 + below(random, longest); i > 0; --i) {
      units += static_cast<char16_t>(range.first + below(random, range.count));
    }
  }
  units.resize(length);
  return units;
}

TEST_P(Utf7Kernels, EncodeTextOfEachLength) {
  Random random(3);
  for (std::size_t length = 0; length <= 150; ++length) {
    for (int i = 0; i < 40; ++i) ASSERT_TRUE(agreesEncoding(randomUnits(random, length)));
  }
}

TEST_P(Utf7Kernels, EncodeEveryUnitBesideDirectOnesAndInARun) {
  const std::u16string after(20, u'z');
  const std::u16string more(20, u'\u3042');
  for (unsigned int unit = 0; unit < 0x10000; unit += unit < 0x180 ? 1 : 0x55) {
    const auto middle = static_cast<char16_t>(unit);
    for (const char16_t* before : {u"", u"a", u"\u3042", u"\u3042\u3042", u"\u3042\u3042\u3042"}) {
      ASSERT_TRUE(agreesEncoding(before + (middle + after)));
      ASSERT_TRUE(agreesEncoding(before + (middle + more)));
    }
  }
}

TEST_P(Utf7Kernels, EncodeEachDigit) {
  for (unsigned int value = 0; value < 64; ++value) {
    const auto unit = static_cast<char16_t>(0x8000 | value << 4 | value >> 2);
    for (std::size_t count = 1; count < 20; ++count) {
      ASSERT_TRUE(agreesEncoding(std::u16string(count, unit) + u" and direct text"));
    }
  }
}

TEST_P(Utf7Kernels, EncodeLongTexts) {
  Random random(4);
  for (int i = 0; i < 8; ++i) {
    EXPECT_TRUE(agreesEncoding(randomUnits(random, 20000)));
    EXPECT_TRUE(agreesEncoding(u"a" + std::u16string(20000 + below(random, 3), u'\u3042')));
  }
}

TEST_P(Utf7Kernels, ConvertTextInPiecesOfAnyLength) {
  Random random(5);
  const std::vector<std::string> pieces = awkwardPieces();
  for (int i = 0; i < 2000; ++i) {
    std::string text = randomUtf7(random);
    if (i % 2 == 0) test_text::damage(text, pieces, 1, random);
    std::string units = quorvel_test::hostUnits(randomUnits(random, below(random, 150)));
    if (!units.empty()) units.resize(units.size() - below(random, 2));
    for (const std::size_t longest : {1, 2, 9, 90}) {
      ASSERT_TRUE(agreesInPieces(readings, reading, text, longest, random));
      ASSERT_TRUE(agreesInPieces(writings, writing, units, longest, random));
    }
  }
}

}  // namespace
}  // namespace quorvel
