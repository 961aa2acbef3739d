// The text layer against its reference on random texts: the same bytes, the same
// report, and every loss the same.

#include <gtest/gtest.h>

#include "tests/helpers/RandomSources.h"
#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::hex;
using text::EscapeForm;

constexpr Action actions[] = {Action::stop, Action::drop,      Action::substitute, Action::escape,
                              Action::pass, Action::reconvert, Action::preserve};

Action randomAction(Random& random) {
  // A stop ends what is compared; rare enough to see what is behind it.
  const std::size_t chosen = below(random, 12);
  return chosen < std::size(actions) ? actions[chosen] : Action::drop;
}

/// Rules that these encodings do not refuse.
Rules randomRules(int from, int to, Random& random) {
  constexpr const char* substitutes[] = {"", "?", "\u20AC?", "\uFFFD", "<\U0001F600>", "\u3042"};
  const std::vector<int>& numbers = text_reference::allNumbers();
  while (true) {
    Rules rules;
    rules.malformed = randomAction(random);
    rules.unmappable = randomAction(random);
    if (below(random, 2) == 0)
      rules.substitute = substitutes[below(random, std::size(substitutes))];
    rules.escape = below(random, 2) == 0 ? EscapeForm::c : EscapeForm::xml;
    rules.reconvert = numbers[below(random, numbers.size())];
    rules.fitsBest = below(random, 2) == 0;
    rules.keepsMark = below(random, 4) == 0;
    rules.writesMark = below(random, 4) == 0;
    if (!text_reference::isRefused(from, to, rules)) return rules;
  }
}

/// What the options are, for whom it fails.
std::string describe(int from, int to, const Rules& rules, std::string_view source) {
  constexpr const char* names[] = {"stop", "drop",      "substitute", "escape",
                                   "pass", "reconvert", "preserve"};
  std::ostringstream text;
  text << from << " to " << to << ", malformed " << names[static_cast<int>(rules.malformed)]
       << ", unmappable " << names[static_cast<int>(rules.unmappable)];
  if (rules.substitute) text << ", substitute \"" << *rules.substitute << '"';
  if (rules.escape == EscapeForm::xml) text << ", as XML";
  if (rules.reconvert) text << ", reconvert " << *rules.reconvert;
  text << (rules.fitsBest ? ", best fits" : "") << (rules.keepsMark ? ", keeps marks" : "")
       << (rules.writesMark ? ", writes a mark" : "");
  text << "\n  of " << source.size() << " bytes " << hex(source.substr(0, 400));
  return text.str();
}

/// A conversion with all that the handler is told.
struct Run {
  Result result;
  std::vector<Loss> losses;
};

/// What the handler of a case does is the same for the same loss.
using Decision = std::optional<Action> (*)(const Loss&);

Run runThrough(const Door& door, int from, int to, std::string_view source, Rules rules,
               Decision decide) {
  Run run;
  rules.onLoss = [&](const Loss& loss) {
    run.losses.push_back(loss);
    return decide(loss);
  };
  run.result = door.convert(from, to, source, rules);
  return run;
}

/// Whether two texts in an encoding are without fault and say the same.
bool sayTheSame(int encoding, std::string_view one, std::string_view other) {
  const Result first = text_reference::convert(encoding, 65001, one);
  const Result second = text_reference::convert(encoding, 65001, other);
  return first.report.isLossless() && second.report.isLossless() && first.text == second.text;
}

/// Between equal encodings with a state the reference writes all anew, where the layer keeps
/// the bytes of what is valid.
bool isSameButForKeptBytes(int encoding, std::string_view source, Result got, Result expected) {
  const bool isKept = !got.report.isLossless() || got.text == source;
  if (!isKept || !sayTheSame(encoding, got.text, expected.text)) return false;
  if (got.report.bytesWritten != got.text.size()) return false;
  got.report.bytesWritten = expected.report.bytesWritten;
  return got.report == expected.report;
}

testing::AssertionResult agree(int from, int to, std::string_view source, const Rules& rules,
                               Decision decide) {
  const Run expected = runThrough(doors[1], from, to, source, rules, decide);
  const Run got = runThrough(doors[0], from, to, source, rules, decide);
  const bool isCopied = from == to && text_reference::keepsState(from);
  const bool isSameResult = isCopied
                                ? isSameButForKeptBytes(from, source, got.result, expected.result)
                                : got.result == expected.result;
  if (isSameResult && got.losses == expected.losses) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << describe(from, to, rules, source) << "\n  " << toText(got.result.report)
         << "\n  should have " << toText(expected.result.report) << "\n  wrote "
         << hex(std::string_view(got.result.text).substr(0, 400)) << "\n  not   "
         << hex(std::string_view(expected.result.text).substr(0, 400)) << "\n  lost "
         << toShort(got.losses) << "\n  not  " << toShort(expected.losses);
}

std::optional<Action> letBe(const Loss&) { return std::nullopt; }

std::optional<Action> dropOrEscapeSome(const Loss& loss) {
  if (loss.offset % 3 == 0) return Action::drop;
  if (loss.offset % 3 == 1) return Action::escape;
  return std::nullopt;
}

std::optional<Action> stopLate(const Loss& loss) {
  return loss.offset > 40 ? Action::stop : Action::substitute;
}

constexpr Decision decisions[] = {letBe, letBe, dropOrEscapeSome, stopLate};

/// Ends a test that finds something new at every turn.
class Failures {
 public:
  bool areEnough(const testing::AssertionResult& result) {
    EXPECT_TRUE(result);
    if (!result) ++m_count;
    return m_count >= 2;
  }

 private:
  int m_count = 0;
};

// --- The reference by itself ----------------------------------------------------------

TEST(TextReference, LosesNothingOfValidText) {
  Random random(510);
  for (const int from : text_reference::allNumbers()) {
    const std::string source = validText(from, 65001, 100, random);
    const Result result = text_reference::convert(from, 65001, source);
    EXPECT_TRUE(result.report.isLossless()) << from << ": " << toText(result.report);
    if (familyOf(from) == Family::page && !makeReadOnlyCodes(from).empty()) continue;
    EXPECT_EQ(hex(text_reference::convert(65001, from, result.text).text), hex(source)) << from;
  }
}

TEST(TextReference, TakesTextApartWithoutGaps) {
  Random random(511);
  for (const int from : text_reference::allNumbers()) {
    if (text_reference::keepsState(from)) continue;
    for (int i = 0; i < 20; ++i) {
      std::string source = validText(from, 65001, 30, random);
      damageText(source, from, random);
      std::size_t at = 0;
      for (const auto& piece : text_reference::decode(from, source, {.keepsMark = true})) {
        EXPECT_EQ(piece.offset, at);
        EXPECT_GT(piece.length, 0U);
        at += piece.length;
      }
      EXPECT_EQ(at, source.size());
    }
  }
}

// --- The layer against it -------------------------------------------------------------

TEST(TextReference, GivesTheSameForEveryPairOfEncodings) {
  Random random(500);
  Failures failures;
  for (const int from : text_reference::allNumbers()) {
    for (const int to : text_reference::allNumbers()) {
      const std::string source = randomSource(from, to, below(random, 60), random);
      const Rules rules = randomRules(from, to, random);
      const Decision decide = decisions[below(random, std::size(decisions))];
      if (failures.areEnough(agree(from, to, source, rules, decide))) return;
    }
  }
}

/// The encodings with ways of their own, against each other.
constexpr int particular[] = {37,    932,   936,   949,   950,   1200,  1201,
                              1252,  1361,  10001, 12000, 12001, 20127, 50220,
                              50225, 51932, 51936, 54936, 55000, 65000, 65001};

TEST(TextReference, GivesTheSameForEveryActionBetweenParticularEncodings) {
  Random random(501);
  Failures failures;
  for (const int from : particular) {
    for (const int to : particular) {
      for (int i = 0; i < 12; ++i) {
        const std::string source = randomSource(from, to, below(random, 40), random);
        const Rules rules = randomRules(from, to, random);
        if (failures.areEnough(agree(from, to, source, rules, decisions[below(random, 4)]))) return;
      }
    }
  }
}

TEST(TextReference, GivesTheSameForLongTexts) {
  Random random(502);
  Failures failures;
  for (const int from : particular) {
    for (const int to : particular) {
      const std::string source = randomSource(from, to, 1000 + below(random, 1000), random);
      const Rules rules = randomRules(from, to, random);
      if (failures.areEnough(agree(from, to, source, rules, letBe))) return;
    }
  }
}

TEST(TextReference, GivesTheSameForAnyBytes) {
  Random random(503);
  Failures failures;
  for (const int from : particular) {
    for (const int to : particular) {
      std::string source(below(random, 300), '\0');
      const std::size_t values = below(random, 3) == 0 ? 256 : 128;
      for (char& byte : source) byte = static_cast<char>(256 - values + below(random, values));
      if (failures.areEnough(agree(from, to, source, randomRules(from, to, random), letBe))) return;
    }
  }
}

TEST(TextReference, KeepsWhatIsValidBetweenEqualEncodingsWithAState) {
  Random random(504);
  Failures failures;
  for (const int encoding : {50220, 50221, 50222, 50225, 65000}) {
    for (int i = 0; i < 2000; ++i) {
      const std::string source = randomSource(encoding, encoding, below(random, 80), random);
      Rules rules = randomRules(encoding, encoding, random);
      if (failures.areEnough(agree(encoding, encoding, source, rules, decisions[i % 4]))) return;
    }
  }
}

TEST(TextReference, RefusesTheSameRules) {
  for (const int from : text_reference::allNumbers()) {
    for (const int to : particular) {
      for (const Action malformed : actions) {
        for (const Action unmappable :
             {Action::stop, Action::pass, Action::preserve, Action::reconvert}) {
          for (const bool hasOther : {false, true}) {
            Rules rules;
            rules.malformed = malformed;
            rules.unmappable = unmappable;
            if (hasOther) rules.reconvert = 1252;
            const std::string reason =
                whyRefused(encodingOf(from), encodingOf(to), optionsOf(rules));
            EXPECT_EQ(!reason.empty(), text_reference::isRefused(from, to, rules))
                << describe(from, to, rules, "") << ": " << reason;
            if (testing::Test::HasFailure()) return;
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace quorvel::test_text
