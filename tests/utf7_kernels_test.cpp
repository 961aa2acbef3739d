#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quorvel/base/_qvUtf.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/RandomText.h"
#include "tests/helpers/StatefulKernels.h"
#include "tests/reference/Utf7Reference.h"

namespace quorvel {
namespace {

using kernel::Target;
using kernel::Utf7Run;
using test_kernels::Converted;
using test_kernels::targetName;
using test_text::below;
using test_text::Random;

Converted decoded(const unsigned char* in, std::size_t size) {
  DataBuffer source;
  source.borrowData(const_cast<unsigned char*>(in), static_cast<unsigned int>(size));
  DataBuffer out;
  const bool isClean = _qvUtf::Utf7ToUtf16_xe(source, out);
  return {test_bytes::contentOf(out), isClean};
}

Converted expected(std::string_view text) {
  const reference::Utf7Text result = reference::decodeUtf7(text);
  return {test_bytes::hostUnits(result.units), result.wellFormed};
}

constexpr test_kernels::StatefulDirection<Utf7Run> reading{
    "utf7ToUtf16", [](Target target) { return kernel::utf7Of(target).toUtf16; }, 2, decoded,
    expected};

constexpr Utf7Run runs[] = {{false, false}, {true, false}, {true, true}};

class Utf7Kernels : public test_kernels::StatefulKernelTest {
 protected:
  testing::AssertionResult agrees(std::string_view text) const {
    return agreesFrom(runs, reading, text);
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

}  // namespace
}  // namespace quorvel
