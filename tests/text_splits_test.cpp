// Pieces and rooms: however a text is cut, and however little room there is for
// what becomes of it, it gives the same bytes and the same report.

#include <gtest/gtest.h>

#include "tests/helpers/RandomSources.h"
#include "tests/helpers/TextPieces.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::hex;

/// A valid text of about a kibibyte.
std::string oneKibibyte(int from, int to, Random& random) {
  std::size_t characters = 250;
  std::string text = validText(from, to, characters, random);
  for (int i = 0; i < 2; ++i) {
    characters = characters * 1024 / (text.size() + 1);
    text = validText(from, to, characters, random);
  }
  return text;
}

/// A conversion whose pieces are tried, and what the reference makes of it.
struct Split {
  int from;
  int to;
  std::string source;
  Rules rules;
  Result expected;
};

Split splitOf(int from, int to, std::string source, const Rules& rules) {
  Result expected = text_reference::convert(from, to, source, rules);
  return {from, to, std::move(source), rules, std::move(expected)};
}

testing::AssertionResult isSame(const Split& split, const Result& got, std::string_view how) {
  if (got == split.expected) return testing::AssertionSuccess();
  const auto [mine, theirs] = std::mismatch(got.text.begin(), got.text.end(),
                                            split.expected.text.begin(), split.expected.text.end());
  return testing::AssertionFailure()
         << split.from << " to " << split.to << ", " << how << ": " << toText(got.report)
         << "\n  should have " << toText(split.expected.report) << "\n  bytes differ at "
         << mine - got.text.begin() << " of " << split.expected.text.size() << "\n  of "
         << hex(std::string_view(split.source).substr(0, 600));
}

/// A destination for each source, so that all kinds come up.
int destinationFor(std::size_t place) {
  constexpr int destinations[] = {65001, 1200, 65000, 50220, 12001, 932, 50225, 54936, 1252};
  return destinations[place % std::size(destinations)];
}

std::vector<Split> splits(bool isDamaged) {
  Random random(isDamaged ? 541 : 540);
  std::vector<Split> all;
  for (const int from : text_reference::allNumbers()) {
    const int to = destinationFor(all.size());
    std::string source = oneKibibyte(from, to, random);
    if (isDamaged) damageText(source, from, random);
    Rules rules = dropping();
    if (isDamaged) rules.malformed = rules.unmappable = Action::escape;
    all.push_back(splitOf(from, to, source, rules));
  }
  return all;
}

class TextSplits : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(, TextSplits, testing::Bool(), [](const auto& tested) {
  return tested.param ? "OfDamagedText" : "OfValidText";
});

// The hundred pages of single bytes are alike; where nothing is optimised, some of
// their cuts will do.
std::size_t distanceOfCuts(int from) {
#if defined(NDEBUG)
  constexpr std::size_t distance = 1;
#else
  constexpr std::size_t distance = 29;
#endif
  return encodingOf(from).kind() == text::EncodingKind::singleByte ? distance : 1;
}

TEST_P(TextSplits, IntoTwoGiveTheSameAtEveryCut) {
  for (const Split& split : splits(GetParam())) {
    text::Transcoder transcoder = transcoderOf(split.from, split.to, split.rules);
    for (std::size_t cut = 0; cut <= split.source.size(); cut += distanceOfCuts(split.from)) {
      const Result got = convertInRooms(transcoder, cutAt(split.source, cut), {2048});
      ASSERT_TRUE(isSame(split, got, "cut at " + std::to_string(cut)));
      transcoder.reset();
    }
  }
}

TEST_P(TextSplits, IntoSingleBytesGiveTheSame) {
  for (const Split& split : splits(GetParam())) {
    const Pieces pieces = singleBytes(split.source);
    text::Transcoder transcoder = transcoderOf(split.from, split.to, split.rules);
    ASSERT_TRUE(isSame(split, convertPieces(transcoder, pieces), "in single bytes"));
    transcoder.reset();
    ASSERT_TRUE(isSame(split, convertInRooms(transcoder, pieces, {1}), "in and out byte by byte"));
    transcoder.reset();
    Result counted = countPieces(transcoder, pieces);
    counted.text = split.expected.text;
    ASSERT_TRUE(isSame(split, counted, "counted byte by byte"));
  }
}

TEST_P(TextSplits, GiveTheSameInRoomsOfEverySize) {
  for (const Split& split : splits(GetParam())) {
    text::Transcoder transcoder = transcoderOf(split.from, split.to, split.rules);
    for (std::size_t size = 1; size <= 64; ++size) {
      const Result got = convertInRooms(transcoder, {split.source}, {size});
      ASSERT_TRUE(isSame(split, got, "in rooms of " + std::to_string(size)));
      transcoder.reset();
    }
  }
}

/// Every encoding as the destination.
TEST(TextSplitsInto, EveryEncodingGiveTheSameInRoomsOfEverySize) {
  Random random(542);
  for (const int to : text_reference::allNumbers()) {
    std::string source = oneKibibyte(65001, to, random);
    damageText(source, 65001, random);
    Rules rules;
    rules.malformed = rules.unmappable = Action::substitute;
    rules.substitute = "<\u3042\u00E9\U0001F600>";
    rules.writesMark = true;
    const Split split = splitOf(65001, to, source, rules);
    text::Transcoder transcoder = transcoderOf(65001, to, rules);
    for (std::size_t size = 1; size <= 64; ++size) {
      const Result got = convertInRooms(transcoder, {source}, {size});
      ASSERT_TRUE(isSame(split, got, "in rooms of " + std::to_string(size)));
      transcoder.reset();
    }
  }
}

Rules randomSplitRules(Random& random) {
  Rules rules;
  rules.malformed = static_cast<Action>(below(random, 7));
  rules.unmappable = static_cast<Action>(below(random, 6));
  if (below(random, 3) == 0) rules.substitute = "\u20AC\u3042";
  const std::vector<int>& numbers = text_reference::allNumbers();
  rules.reconvert = numbers[below(random, numbers.size())];
  rules.fitsBest = below(random, 2) == 0;
  rules.keepsMark = below(random, 3) == 0;
  rules.writesMark = below(random, 3) == 0;
  return rules;
}

void tryPiecesOf(const Split& split, Random& random) {
  text::Transcoder transcoder = transcoderOf(split.from, split.to, split.rules);
  for (int i = 0; i < 4; ++i) {
    const Pieces pieces = randomPieces(split.source, random);
    std::vector<std::size_t> rooms;
    for (std::size_t j = 1 + below(random, 4); j > 0; --j) rooms.push_back(below(random, 40));
    rooms.push_back(1 + below(random, 300));
    ASSERT_TRUE(isSame(split, convertPieces(transcoder, pieces), "in random pieces"));
    transcoder.reset();
    ASSERT_TRUE(isSame(split, convertInRooms(transcoder, pieces, rooms), "in random rooms"));
    transcoder.reset();
  }
}

TEST(TextReference, GivesTheSameForRandomPiecesAndRooms) {
  Random random(543);
  const std::vector<int>& numbers = text_reference::allNumbers();
  constexpr int particular[] = {932, 1200, 12001, 50220, 50225, 51932, 54936, 55000, 65000, 65001};
  for (int i = 0; i < 1500; ++i) {
    const bool isParticular = below(random, 2) == 0;
    const int from = isParticular ? particular[below(random, std::size(particular))]
                                  : numbers[below(random, numbers.size())];
    const int to = numbers[below(random, numbers.size())];
    const Rules rules = randomSplitRules(random);
    if (text_reference::isRefused(from, to, rules)) continue;
    const std::string source = randomSource(from, to, below(random, 80), random);
    tryPiecesOf(splitOf(from, to, source, rules), random);
    if (HasFatalFailure()) return;
  }
}

// --- What a step says ------------------------------------------------------------------------

TEST(TextSteps, SayWhatIsWaitedFor) {
  text::Transcoder transcoder = transcoderOf(65001, 1201, {});
  char room[8] = {};
  EXPECT_EQ(transcoder.push("ab", room), (text::Step{2, 4, text::Wants::input}));
  EXPECT_EQ(transcoder.push("", room), (text::Step{0, 0, text::Wants::input}));
  EXPECT_EQ(transcoder.finish(room), (text::Step{0, 0, text::Wants::nothing}));
  EXPECT_EQ(transcoder.finish(room), (text::Step{0, 0, text::Wants::nothing}));
}

TEST(TextSteps, AskForRoomAndGoOnWithWhatTheyDidNotTake) {
  text::Transcoder transcoder = transcoderOf(28591, 1201, {});
  char room[4] = {};
  std::string out;
  std::string_view rest = "abc";
  text::Step step = transcoder.push(rest, room);
  EXPECT_EQ(step.wants, text::Wants::room);
  EXPECT_EQ(step.bytesWritten, 4U);
  out.append(room, step.bytesWritten);
  rest.remove_prefix(step.bytesTaken);
  step = transcoder.push(rest, room);
  EXPECT_EQ(step.wants, text::Wants::input);
  out.append(room, step.bytesWritten);
  EXPECT_EQ(hex(out), "00 61 00 62 00 63");
}

TEST(TextSteps, TakeAnyRoomAlsoNone) {
  text::Transcoder transcoder = transcoderOf(65001, 1201, {});
  const text::Step step = transcoder.push("ab", std::span<char>());
  EXPECT_EQ(step.bytesWritten, 0U);
  EXPECT_EQ(step.wants, text::Wants::room);
  std::string out;
  EXPECT_TRUE(transcoder.push(std::string_view("ab").substr(step.bytesTaken), out));
  EXPECT_TRUE(transcoder.finish(out));
  EXPECT_EQ(hex(out), "00 61 00 62");
}

TEST(TextSteps, WriteWhatEndsTheTextAtTheEnd) {
  text::Transcoder transcoder = transcoderOf(65001, 50220, {});
  std::string out;
  EXPECT_TRUE(transcoder.push("\u3042", out));
  EXPECT_EQ(hex(out), "1B 24 42 24 22");
  EXPECT_TRUE(transcoder.finish(out));
  EXPECT_EQ(hex(out), "1B 24 42 24 22 1B 28 42");
}

TEST(TextSteps, TakeNoMoreAfterAStopUntilReset) {
  text::Transcoder transcoder = transcoderOf(65001, 1252, {});
  std::string out;
  EXPECT_TRUE(transcoder.push("ab", out));
  EXPECT_FALSE(
      transcoder.push("c\xFF"
                      "d",
                      out));
  const Report stopped = transcoder.report();
  EXPECT_EQ(stopped.bytesRead, 3U);
  EXPECT_TRUE(stopped.stopped);
  EXPECT_FALSE(transcoder.push("e", out));
  EXPECT_FALSE(transcoder.finish(out));
  char room[8] = {};
  EXPECT_EQ(transcoder.push("e", room), (text::Step{0, 0, text::Wants::reset}));
  EXPECT_EQ(transcoder.finish(room), (text::Step{0, 0, text::Wants::reset}));
  EXPECT_FALSE(transcoder.count("e"));
  EXPECT_EQ(out, "abc");
  EXPECT_EQ(transcoder.report(), stopped);
  transcoder.reset();
  EXPECT_EQ(transcoder.report(), Report());
  EXPECT_TRUE(transcoder.push("e", out));
  EXPECT_TRUE(transcoder.finish(out));
  EXPECT_EQ(out, "abce");
}

TEST(TextSteps, StopAtTheEndForWhatThatCutsOff) {
  text::Transcoder transcoder = transcoderOf(65001, 1252, {});
  std::string out;
  EXPECT_TRUE(transcoder.push("ab\xC3", out));
  EXPECT_FALSE(transcoder.finish(out));
  EXPECT_EQ(out, "ab");
  EXPECT_EQ(transcoder.report().bytesRead, 2U);
  EXPECT_EQ(toShort(*transcoder.report().firstMalformed), "2+1");
}

TEST(TextSteps, ForgetEverythingWhenReset) {
  for (const int from : {65001, 1200, 50220, 50225, 65000, 932, 54936, 55000}) {
    for (const int to : {65001, 50220, 50225, 65000}) {
      Random random(544);
      text::Transcoder transcoder = transcoderOf(from, to, dropping());
      std::string ignored;
      const std::string before = validText(from, to, 20, random);
      transcoder.push(std::string_view(before).substr(0, before.size() / 2 + 1), ignored);
      transcoder.reset();
      const Split split = splitOf(from, to, randomSource(from, to, 20, random), dropping());
      EXPECT_TRUE(isSame(split, convertPieces(transcoder, {split.source}), "after a reset"));
    }
  }
}

TEST(TextSteps, MoveWithTheTranscoder) {
  text::Transcoder first = transcoderOf(65001, 1201, {});
  std::string out;
  EXPECT_TRUE(first.push("\xC3", out));
  text::Transcoder second = std::move(first);
  EXPECT_TRUE(second.push("\xA9", out));
  first = std::move(second);
  EXPECT_TRUE(first.finish(out));
  EXPECT_EQ(hex(out), "00 E9");
  EXPECT_EQ(first.from().number(), 65001);
  EXPECT_EQ(first.to().number(), 1201);
}

TEST(TextSteps, ReportWhatWasReadSoFar) {
  text::Transcoder transcoder = transcoderOf(65001, 1252, dropping());
  std::string out;
  transcoder.push("ab\u3042", out);
  EXPECT_EQ(transcoder.report().unmappable, 1U);
  EXPECT_EQ(transcoder.report().bytesWritten, 2U);
  EXPECT_EQ(transcoder.report().bytesRead, 5U);
}

}  // namespace
}  // namespace quorvel::test_text
