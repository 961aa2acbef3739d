#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "quorvel/base/kernel/Target.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"
#include "tests/reference/TranscodeReference.h"

namespace quorvel {
namespace {

using kernel::Loop;
using kernel::Target;
using reference::allScalarValues;
using reference::encodeUtf8;
using reference::Pairs;
using reference::Transcoded;
using reference::utf16Of;
using test_bytes::hex;

enum class Edge { front, back };
constexpr Edge edges[] = {Edge::front, Edge::back};

// Readable and writable bytes between two pages that are neither: what goes a
// byte past either edge ends the test run, however it is done.
class FencedBytes {
 public:
  explicit FencedBytes(std::size_t most)
      : m_size((most + page - 1) / page * page), m_mapping(m_size + 2 * page) {
    if (mprotect(m_mapping.data() + page, m_size, PROT_READ | PROT_WRITE) != 0) {
      throw std::runtime_error("mprotect");
    }
  }

  unsigned char* at(Edge edge, std::size_t size) const {
    if (size > m_size) throw std::length_error("FencedBytes");
    return m_mapping.data() + page + (edge == Edge::front ? 0 : m_size - size);
  }

 private:
  static constexpr std::size_t page = 65536;  // or a part of that

  std::size_t m_size;
  test_memory::Mapping m_mapping;
};

// One direction: its loop on each target, the room that it is promised, and what
// it must do.
struct Direction {
  const char* name;
  Loop* kernel::Utf::*loop;
  std::size_t roomPerTwoBytes;
  Transcoded (*expected)(std::string_view);
  std::size_t unit;  // the bytes that a text grows and shrinks by
};

Transcoded joinedToUtf8(std::string_view text) {
  return reference::utf16ToUtf8(text, Pairs::joined);
}

Transcoded leftToUtf8(std::string_view text) { return reference::utf16ToUtf8(text, Pairs::left); }

constexpr Direction fromUtf8{"utf8ToUtf16", &kernel::Utf::utf8ToUtf16, 4, reference::utf8ToUtf16,
                             1};
constexpr Direction toUtf8{"utf16ToUtf8", &kernel::Utf::utf16ToUtf8, 3, joinedToUtf8, 2};
constexpr Direction toUtf8WithoutPairs{"utf16ToUtf8WithoutPairs",
                                       &kernel::Utf::utf16ToUtf8WithoutPairs, 3, leftToUtf8, 2};

class Kernels : public testing::TestWithParam<Target> {
 protected:
  void SetUp() override {
    if (!kernel::canRun(GetParam())) GTEST_SKIP() << "not on this machine";
  }

  // Whether the loop does what it must with the bytes at either edge of what
  // it may touch.
  testing::AssertionResult agrees(const Direction& direction, std::string_view text) const {
    const Transcoded expected = direction.expected(text);
    for (const Edge edge : edges) {
      const Transcoded got = run(direction, text, edge);
      if (got == expected) continue;
      return testing::AssertionFailure()
             << direction.name << " of " << hex(text) << "\nstopped at " << got.consumed << ", not "
             << expected.consumed << "\nwrote " << hex(got.bytes) << "\nnot   "
             << hex(expected.bytes);
    }
    return testing::AssertionSuccess();
  }

  // As `agrees`, and again with what stands behind each place where it stops.
  testing::AssertionResult agreesThroughout(const Direction& direction,
                                            std::string_view text) const {
    while (true) {
      testing::AssertionResult result = agrees(direction, text);
      const std::size_t consumed = direction.expected(text).consumed;
      if (!result || consumed == text.size()) return result;
      text.remove_prefix(consumed + direction.unit);
    }
  }

 private:
  Transcoded run(const Direction& direction, std::string_view text, Edge edge) const {
    unsigned char* in = m_in.at(edge, text.size());
    text.copy(reinterpret_cast<char*>(in), text.size());
    unsigned char* out = m_out.at(edge, text.size() * direction.roomPerTwoBytes / 2);
    const Progress progress =
        (kernel::utfOf(GetParam()).*direction.loop)(in, in + text.size(), out);
    return {{reinterpret_cast<char*>(out), static_cast<std::size_t>(progress.out - out)},
            static_cast<std::size_t>(progress.in - in)};
  }

  static constexpr std::size_t most = 5U << 20;
  FencedBytes m_in{most};
  FencedBytes m_out{2 * most};
};

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t limit) { return random() % limit; }

// The code points from `first` on, `count` of them.
struct Range {
  char32_t first;
  unsigned int count;
};

constexpr Range ranges[] = {
    {0x20, 0x5F},        {0x80, 0x780},  {0x800, 0xD000}, {0xE000, 0x1DEF}, {0xFDF0, 0x210},
    {0x10000, 0x100000}, {0x400, 0x100}, {0x3040, 0x60},  {0x1F600, 0x50},  {0x00, 0x80},
    {0x7E, 4},           {0x7FE, 4},     {0xD7FE, 2},     {0xFFFE, 4},      {0x10FFFE, 2},
};

// Text of a few ranges, each in runs of about the same length.
std::u32string randomText(Random& random, std::size_t length) {
  std::vector<Range> palette;
  for (std::size_t i = 1 + below(random, 4); i > 0; --i) {
    palette.push_back(ranges[below(random, std::size(ranges))]);
  }
  const std::size_t longest = 1 + below(random, 40);
  std::u32string text;
  while (text.size() < length) {
    const Range& range = palette[below(random, palette.size())];
    for (std::size_t i = 1 + below(random, longest); i > 0; --i) {
      text += static_cast<char32_t>(range.first + below(random, range.count));
    }
  }
  text.resize(length);
  return text;
}

std::string inUtf8(std::u32string_view text) {
  std::string bytes;
  for (const char32_t value : text) bytes += encodeUtf8(value);
  return bytes;
}

std::string inUtf16(std::u32string_view text) {
  std::string bytes;
  for (const char32_t value : text) bytes += utf16Of(value);
  return bytes;
}

// Replaces, drops or inserts a few of `pieces`, each as long as `unit`.
void damage(std::string& text, const std::vector<std::string>& pieces, std::size_t unit,
            Random& random) {
  for (std::size_t i = 1 + below(random, 3); i > 0 && text.size() >= unit; --i) {
    const std::size_t at = below(random, text.size() / unit) * unit;
    const std::string& piece = pieces[below(random, pieces.size())];
    switch (below(random, 3)) {
      case 0:
        text.replace(at, unit, piece);
        break;
      case 1:
        text.erase(at, unit);
        break;
      default:
        text.insert(at, piece);
    }
  }
}

std::vector<std::string> awkwardBytes() {
  std::vector<std::string> pieces;
  for (const int byte :
       {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1,
        0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xF7, 0xF8, 0xFB, 0xFC, 0xFE, 0xFF}) {
    pieces.emplace_back(1, static_cast<char>(byte));
  }
  return pieces;
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

std::string targetName(const testing::TestParamInfo<Target>& info) {
  return kernel::nameOf(info.param);
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
    const std::string bad = test_bytes::unhex(row.bytes);
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
  const Target before = kernel::currentTarget();
  kernel::setTarget(GetParam());
  EXPECT_EQ(kernel::utf().utf8ToUtf16, kernel::utfOf(GetParam()).utf8ToUtf16);
  kernel::setTarget(before);
}

}  // namespace
}  // namespace quorvel
