// Equal encodings on both sides: the text is checked, and what is valid keeps its bytes.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "quorvel/text/Transcoder.h"
#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::byteString;
using quorvel_test::hex;
using text::Transcoder;

struct Case {
  int encoding;
  const char* source;
  const char* expected;
};

Rules ruleFor(Action malformed) {
  Rules rules;
  rules.malformed = malformed;
  return rules;
}

/// The same whole, byte by byte, and into rooms of every size.
void expect(const Case& c, const Rules& rules) {
  const std::string source = byteString(c.source);
  const std::string expected = hex(byteString(c.expected));
  const Result whole = convertByLayer(c.encoding, c.encoding, source, rules);
  EXPECT_EQ(hex(whole.text), expected) << c.encoding << ": " << c.source;
  const text::Encoding encoding = encodingOf(c.encoding);
  auto transcoder = Transcoder::make(encoding, encoding, optionsOf(rules));
  std::string out;
  for (const char& byte : source) transcoder->push(std::string_view(&byte, 1), out);
  transcoder->finish(out);
  EXPECT_EQ(hex(out), expected) << c.encoding << ", byte by byte: " << c.source;
  EXPECT_EQ(transcoder->report(), whole.report) << c.encoding << ": " << c.source;
}

void expectKept(int encoding, const char* source) {
  expect({encoding, source, source}, {});
  const Result whole = convertByLayer(encoding, encoding, byteString(source), {});
  EXPECT_TRUE(whole.report.isLossless()) << encoding << ": " << source;
}

TEST(TextOfEqualEncodings, KeepsHoweverIso2022JpSwitches) {
  expectKept(50220, "1B 24 40 24 22 1B 28 4A 5C 1B 28 42 7E");  // both editions, Roman
  expectKept(50220, "0E 21 22 0F 41");                          // katakana by a shift
  expectKept(50221, "1B 28 42 1B 28 42 41 1B 24 42 1B 28 42");  // to no purpose
  expectKept(50222, "1B 24 42 0E 21 0F 24 22");                 // kanji behind a shift
  expectKept(50220, "1B 24 42 24 22");                          // left in kanji
  expectKept(50220, "1B 24 42 24 22 0A 41");                    // ended by a line
  expectKept(50222, "41 0E");
}

TEST(TextOfEqualEncodings, KeepsHoweverIso2022KrSwitches) {
  expectKept(50225, "1B 24 29 43 0E 30 21 0F 41");
  expectKept(50225, "0E 30 21 0F 41");  // without a header
  expectKept(50225, "41 1B 24 29 43 1B 24 29 43 0E 0F 0E 30 21");
}

TEST(TextOfEqualEncodings, KeepsHoweverUtf7IsSpelt) {
  expectKept(65000, "2B 41 47 45 2D 62");              // a as a digit run
  expectKept(65000, "2B 41 4B 4D 21 2B 41 4B 4D");     // ended by what follows, by nothing
  expectKept(65000, "2B 2D 2B 41 43 73 2D 7E 5C 00");  // plus twice, direct ones
  expectKept(65000, "2B 41 47 45 2D 2B 41 47 49 2D");  // a run behind a run
  expectKept(65000, "2B 32 44 33 65 41 41 2D");        // U+1F600
  // Digits that are "+", where a run begins and where none does.
  expectKept(65000, "2B 41 50 77 41 2F 41 44 2B 2D");
  expectKept(65000, "2B 41 50 77 41 2F 41 44 2B 41 50 77 2D");
  std::string run = "2B";
  for (int i = 0; i < 40; ++i) {
    run += " 41 50 77 41 2F 41 44 2B";
    expectKept(65000, run.c_str());
    expectKept(65000, (run + " 41 50 77 2D 2B 2D 41").c_str());
    expect({65000, (run + " 41 FF").c_str(), (run + " 2D").c_str()}, ruleFor(Action::drop));
  }
}

TEST(TextOfEqualEncodings, KeepsBytesBehindALossToo) {
  constexpr Case cases[] = {
      {50220, "1B 24 40 24 22 FF 24 24 1B 28 4A 41", "1B 24 40 24 22 24 24 1B 28 4A 41"},
      {50220, "0E 21 FF 22 0F 41", "0E 21 22 0F 41"},
      {50225, "0E 30 21 80 30 22 0F 41", "0E 30 21 30 22 0F 41"},
      {65000, "2B 41 47 45 2D FF 2B 41 47 49 2D", "2B 41 47 45 2D 2B 41 47 49 2D"},
      // The run that the loss ended has to be ended otherwise.
      {65000, "2B 41 47 45 FF 2B 41 47 49 2D", "2B 41 47 45 2D 2B 41 47 49 2D"},
      {65000, "2B 41 47 45 FF 62", "2B 41 47 45 2D 62"},
  };
  for (const Case& c : cases) expect(c, ruleFor(Action::drop));
}

TEST(TextOfEqualEncodings, GoesOnInTheStateOfTheSourceBehindASubstitute) {
  constexpr Case cases[] = {
      {50220, "1B 24 40 24 22 FF 24 24 1B 28 4A 41",
       "1B 24 40 24 22 1B 28 42 3F 1B 24 42 24 24 1B 28 4A 41"},
      {50220, "0E 21 FF 41", "0E 21 0F 3F 0E 41"},
      {50225, "0E 30 21 80 30 22 0F 41", "0E 30 21 0F 3F 0E 30 22 0F 41"},
      {65000, "61 FF 2B 41 47 49 2D", "61 2B 2F 2F 30 2D 2B 41 47 49 2D"},
  };
  for (const Case& c : cases) expect(c, ruleFor(Action::substitute));
}

TEST(TextOfEqualEncodings, WritesWhatARunHasLeftAnew) {
  // U+00A3, a lone DC00, U+00A3: the digit that it shares with the loss is the last one's.
  expect({65000, "2B 41 4B 50 63 41 41 43 6A 2D 61", "2B 41 4B 4D 41 6F 77 2D 61"},
         ruleFor(Action::drop));
  // Nothing stands in the run behind the "+".
  expect({65000, "61 2B 21", "61 21"}, ruleFor(Action::drop));
  expect({65000, "61 2B 41 21", "61 21"}, ruleFor(Action::drop));
}

TEST(TextOfEqualEncodings, TakesTheEndOfARunForWhatItIsHoweverTheTextIsCut) {
  // Behind the end of one run a digit too few in the next.
  expect({65000, "2B 41 50 59 2D 2B 32 33 21", "2B 41 50 59 2D 21"}, ruleFor(Action::drop));
  // Behind a loss in the run a control, and the next run.
  expect({65000, "2B 41 4B 50 63 41 41 43 6A 2D 0E 61", "2B 41 4B 4D 41 6F 77 2D 0E 61"},
         ruleFor(Action::drop));
  expect({65000, "2B 41 4B 50 63 41 41 43 6A 2D 2B 41 47 45 2D",
          "2B 41 4B 4D 41 6F 77 2D 2B 41 47 45 2D"},
         ruleFor(Action::drop));
}

TEST(TextOfEqualEncodings, StopsBehindAWholeText) {
  expect({50220, "1B 24 40 24 22 FF", "1B 24 40 24 22 1B 28 42"}, {});
  expect({50222, "0E 21 FF", "0E 21 0F"}, {});
  expect({65000, "2B 41 4B 50 63 41 41", "2B 41 4B 4D 2D"}, {});
  expect({50220, "FF", ""}, {});
}

}  // namespace
}  // namespace quorvel::test_text
