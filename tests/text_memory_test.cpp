// Memory: what a Transcoder takes, that pieces take none, and what happens when
// there is none.

#include <gtest/gtest.h>

#include <new>

#include "quorvel/text/Repertoire.h"
#include "quorvel/text/detect.h"
#include "tests/helpers/FailingAllocations.h"
#include "tests/helpers/RandomSources.h"
#include "tests/helpers/TextPieces.h"

namespace quorvel::test_text {
namespace {

using test_memory::allocatedSoFar;
using test_memory::FailingAllocations;
using test_memory::Failures;

/// What is allocated while it lives.
class Count {
 public:
  std::size_t number() const { return allocatedSoFar().number - m_start.number; }
  std::size_t bytes() const { return allocatedSoFar().bytes - m_start.bytes; }

 private:
  test_memory::Allocated m_start = allocatedSoFar();
};

constexpr int particular[] = {37,    932,   949,   950,   1200,  1252,  10001, 12001,
                              50220, 50225, 51932, 54936, 55000, 65000, 65001};

Rules rulesOf(Action action) {
  Rules rules;
  rules.malformed = rules.unmappable = action;
  rules.reconvert = 1252;
  rules.fitsBest = true;
  return rules;
}

TEST(TextMemory, IsNotAllocatedForAPiece) {
  Random random(560);
  for (const int from : particular) {
    for (const int to : particular) {
      for (const Action action : {Action::drop, Action::substitute, Action::escape,
                                  Action::reconvert, Action::pass, Action::stop}) {
        const Rules rules = rulesOf(action);
        if (text_reference::isRefused(from, to, rules)) continue;
        std::string source = validText(from, to, 200, random);
        damageText(source, from, random);
        text::Transcoder transcoder = transcoderOf(from, to, rules);
        char room[256];
        const Count count;
        std::string_view rest = source;
        text::Step step;
        do {
          step = transcoder.push(rest.substr(0, 50), room);
          rest.remove_prefix(step.bytesTaken);
        } while (step.wants == text::Wants::room ||
                 (step.wants == text::Wants::input && !rest.empty()));
        while (step.wants != text::Wants::nothing && step.wants != text::Wants::reset) {
          step = transcoder.finish(room);
        }
        transcoder.reset();
        transcoder.count(source);
        transcoder.countEnd();
        ASSERT_EQ(count.number(), 0U) << from << " to " << to;
      }
    }
  }
}

TEST(TextMemory, OfATranscoderIsUnder40KiB) {
  for (const int from : text_reference::allNumbers()) {
    for (const int to : particular) {
      const Rules rules = rulesOf(Action::reconvert);
      const text::Transcoder first = transcoderOf(from, to, rules);  // builds the tables
      const text::Options options = optionsOf(rules);
      const Count count;
      const auto second = text::Transcoder::make(encodingOf(from), encodingOf(to), options);
      ASSERT_LT(count.bytes() + sizeof(text::Transcoder), 40U * 1024) << from << " to " << to;
    }
  }
}

/// Whether a call came to its end, with so many allocations and no more; false when
/// memory ran out.
template <typename Call>
bool isDone(long allocationsAllowed, Call call) {
  try {
    const FailingAllocations failing(allocationsAllowed + 1, Failures::allFromThereOn);
    call();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

/// Each allocation fails once, and after each of these calls the next is right.
template <typename Call, typename Check>
void failEachAllocation(Call call, Check check) {
  bool done = false;
  for (long allowed = 0; !done; allowed += allowed < 100 ? 1 : 1 + allowed / 8) {
    ASSERT_LT(allowed, 10'000'000) << "never enough";
    text::releaseTables();
    done = isDone(allowed, call);
    check();
    if (testing::Test::HasFailure()) return;
  }
}

TEST(TextMemory, ThatRunsOutComesOutOfConvertAndTheNextCallIsRight) {
  Random random(561);
  constexpr std::pair<int, int> pairs[] = {{932, 65001},   {65001, 1252},  {50220, 51932},
                                           {54936, 10001}, {65000, 50225}, {1252, 20261}};
  for (const auto& [from, to] : pairs) {
    const std::string source = randomSource(from, to, 100, random);
    const Rules rules = rulesOf(Action::reconvert);
    if (text_reference::isRefused(from, to, rules)) continue;
    const Result expected = text_reference::convert(from, to, source, rules);
    const text::Encoding fromEncoding = encodingOf(from);
    const text::Encoding toEncoding = encodingOf(to);
    const text::Options options = optionsOf(rules);
    failEachAllocation([&] { text::convert(fromEncoding, toEncoding, source, options); },
                       [&] { EXPECT_EQ(convertByLayer(from, to, source, rules), expected); });
  }
}

TEST(TextMemory, ThatRunsOutComesOutOfMakingATranscoder) {
  const text::Encoding from = encodingOf(50220);
  const text::Encoding to = encodingOf(54936);
  failEachAllocation([&] { text::Transcoder::make(from, to, {}); },
                     [&] { EXPECT_TRUE(text::Transcoder::make(from, to, {}).has_value()); });
}

TEST(TextMemory, ThatRunsOutComesOutOfDetection) {
  const text::DetectionHints hints{encodingOf(932), std::nullopt, false};
  const std::string source = "\x93\xFA\x96\x7B\x8C\xEA";
  failEachAllocation([&] { text::detect(source, hints); },
                     [&] { EXPECT_EQ(text::detect(source, hints).front().encoding, hints.guess); });
}

TEST(TextMemory, ThatRunsOutComesOutOfAskingWhatHoldsAText) {
  text::Repertoire repertoire(text::Encoding::utf8());
  repertoire.push("\u3042");
  failEachAllocation(
      [&] {
        text::Repertoire other(encodingOf(932));
        repertoire.isHeldBy(encodingOf(51932));
      },
      [&] { EXPECT_TRUE(repertoire.isHeldBy(encodingOf(51932))); });
}

TEST(TextMemory, ThatRunsOutComesOutOfAppendingAndLosesNothing) {
  const std::string source(3000, '\xE9');
  text::Transcoder transcoder = transcoderOf(1252, 65001, {});
  std::string out;
  const auto convertAll = [&] {
    out = std::string();
    transcoder.reset();
    transcoder.push(source, out);
    transcoder.finish(out);
  };
  long allowed = 0;
  while (!isDone(allowed, convertAll)) ++allowed;
  EXPECT_GT(allowed, 0);
  EXPECT_EQ(out.size(), 6000U);
  EXPECT_TRUE(transcoder.report().isLossless());
}

}  // namespace
}  // namespace quorvel::test_text
