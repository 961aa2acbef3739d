// The lines and columns of losses, from files and from pipes, against a count that goes
// character by character.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Input.h"
#include "cli/LineCounter.h"
#include "cli/Locator.h"
#include "quorvel/text/Transcoder.h"
#include "quorvel/text/convert.h"
#include "tests/helpers/Command.h"
#include "tests/helpers/Seed.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using namespace quorvel::text;
using quorvel_test::Command;
using qvconv::Input;
using qvconv::LineCounter;
using qvconv::Locator;
using qvconv::Position;

class Places : public Command {};

std::string utf16le(std::string_view utf8) {
  return convert(Encoding::utf8(), Encoding::utf16le(), utf8).text;
}

Position behind(std::string_view utf8, LineCounter::Ends ends = LineCounter::Ends::lfAndCr) {
  LineCounter counter(ends);
  counter.take(utf16le(utf8));
  return counter.position();
}

TEST(LineCounting, BeginsWithOne) { EXPECT_EQ(behind(""), (Position{1, 1})); }

TEST(LineCounting, EndsLinesAtLfCrLfAndCr) {
  EXPECT_EQ(behind("a\nbc"), (Position{2, 3}));
  EXPECT_EQ(behind("a\r\nbc"), (Position{2, 3}));
  EXPECT_EQ(behind("a\rbc"), (Position{2, 3}));
  EXPECT_EQ(behind("\n\r\n\r\r\n\n"), (Position{6, 1}));
}

TEST(LineCounting, EndsLinesAtNelOnlyWhereAsked) {
  EXPECT_EQ(behind("a\xC2\x85"
                   "b"),
            (Position{1, 4}));
  EXPECT_EQ(behind("a\xC2\x85"
                   "b",
                   LineCounter::Ends::lfCrAndNel),
            (Position{2, 2}));
}

TEST(LineCounting, CountsACharacterBeyondUFfffOnce) {
  EXPECT_EQ(behind("\xF0\x9F\x98\x80\xF0\x9F\x98\x80"), (Position{1, 3}));
}

TEST(LineCounting, DoesNotMindHowATextIsCut) {
  const std::string text = utf16le("a\r\nb\xF0\x9F\x98\x80\r\r\n\nc");
  for (std::size_t cut = 0; cut <= text.size(); cut += 2) {
    LineCounter counter(LineCounter::Ends::lfAndCr);
    counter.take(std::string_view(text).substr(0, cut));
    counter.take(std::string_view(text).substr(cut));
    EXPECT_EQ(counter.position(), (Position{5, 2})) << cut;
  }
}

// --- Every loss of a text --------------------------------------------------

struct Place {
  Loss loss;
  Position position;
  bool operator==(const Place&) const = default;
};

std::vector<Loss> lossesOf(Encoding from, Encoding to, std::string_view text) {
  std::vector<Loss> losses;
  Options options;
  options.malformed = options.unmappable = Action::drop;
  options.onLoss = [&](const Loss& loss) -> std::optional<Action> {
    losses.push_back(loss);
    return std::nullopt;
  };
  check(from, to, text, options);
  return losses;
}

// The text up to a loss, converted by a strict call that stops there: what stands in
// front of it has been decoded by then, and no more.
Position slowPosition(Encoding from, Encoding to, std::string_view text, std::size_t index) {
  std::size_t met = 0;
  Options options;
  options.onLoss = [&](const Loss&) -> std::optional<Action> {
    return met++ == index ? Action::stop : Action::substitute;
  };
  options.malformed = options.unmappable = Action::substitute;
  options.substitute = "?";
  const Converted front = convert(from, to, text, options);
  return behind(convert(to, Encoding::utf8(), front.text).text);
}

void expectPlaces(const std::string& file, const char* fromName, const char* toName,
                  const std::string& text) {
  const Encoding from = *Encoding::find(fromName);
  const Encoding to = *Encoding::find(toName);
  std::ofstream(file, std::ios::binary) << text;
  Input input(file);
  while (!input.readBlock().empty()) {
  }
  Locator locator(from, false, input);
  const std::vector<Loss> losses = lossesOf(from, to, text);
  for (std::size_t i = 0; i < losses.size(); ++i) {
    EXPECT_EQ(locator.find(losses[i]), slowPosition(from, to, text, i))
        << fromName << " to " << toName << ", loss " << i << " at " << losses[i].offset;
  }
}

TEST_F(Places, AreThoseOfTheCharactersInFront) {
  const std::string file = path("text");
  expectPlaces(file, "utf-8", "utf-8", "a\n\xFF\xE3\x81y\r\n\xE3\x81\xF0\x9F\x98\x80\xFF");
  expectPlaces(file, "utf-8", "us-ascii",
               "\xEF\xBB\xBF"
               "a\xC3\xA9\xC3\xA9\r\xFF\xC3\xA9");
  expectPlaces(file, "utf-16le", "utf-8",
               "\0\xD8\0\xD8"
               "a\0\n\0\0\xDC\xFD\xFF\0\xD8"s);
  expectPlaces(file, "shift_jis", "utf-8", "\x82\xA0\x81\"\n\x85\x40\xFF\x82"s);
  expectPlaces(file, "gb18030", "utf-8",
               "\x84\x31\xA4\x37\x81\x30\x81\xFF\n\x84\x31\xFF"
               "a");
}

TEST_F(Places, AreRightWhereCharactersShareBytes) {
  const std::string file = path("text");
  // Two euro signs, a character that 28591 has, and another euro sign.
  expectPlaces(file, "utf-7", "28591", "a+IKwgrADpIKw-\nb+IKw-c");
  expectPlaces(file, "utf-7", "utf-8", "+2AAAQdgAIKw-\n+2AA-x+A\n+IKx-y\xFF");
  expectPlaces(file, "utf-7", "gsm", "a+AGAAYABhAGA-`b");
}

TEST_F(Places, AreRightBehindEscapes) {
  const std::string file = path("text");
  expectPlaces(file, "iso-2022-jp", "us-ascii", "a\x1B$B\x24\x22\x24\x24\x1B(B\n\x1B$B\x24");
  expectPlaces(file, "iso-2022-jp", "utf-8", "\x1B$X\x1B$\x1B$B\x24\x22\x80\x24\x22\n\xFF\x1B");
  expectPlaces(file, "iso-2022-kr", "us-ascii", "\x1B$)C\x0E\x30\x21\x0F\n\x0E\x30\x21\x30");
}

TEST_F(Places, AreRightInDamagedText) {
  quorvel::test_seed::Random random(7311);
  const std::string file = path("text");
  const char* const names[] = {"utf-8",   "utf-16le", "utf-16be",    "utf-32le", "utf-7", "932",
                               "gb18030", "euc-jp",   "iso-2022-jp", "949",      "gsm",   "1253"};
  const std::string_view pool =
      "ab\r\n\n+-/\x1B$B(J\x0E\x0F\x24\x22\x81\x30\x82\xA0\xE3\x81\x82\xFF\xD8\xDC\x00\x00~"sv;
  for (const char* name : names) {
    for (int round = 0; round < 60; ++round) {
      std::string text;
      for (int i = 0; i < 60; ++i) text += pool[random() % pool.size()];
      expectPlaces(file, name, "utf-16le", text);
    }
  }
}

// --- From the command ------------------------------------------------------

TEST_F(Places, AreTheSameFromAFileAndFromAPipe) {
  std::string text;
  for (int line = 1; line < 40000; ++line) text += "caf\xC3\xA9 " + std::to_string(line) + "\r\n";
  text += "\xC3\xA9\xE2\x82\xAC";
  write("text", text);
  const std::string said =
      "40000:2: byte " + std::to_string(text.size() - 3) + ": U+20AC has no place in latin1";
  EXPECT_EQ(run("-f utf-8 -t latin1 text").err, "qvconv: text:" + said + "\n");
  EXPECT_EQ(run("-f utf-8 -t latin1 <text").err, "qvconv: standard input:" + said + "\n");
  EXPECT_EQ(run("--version >/dev/null; cat text | '" QVCONV_PATH "' -f utf-8 -t latin1").err,
            "qvconv: standard input:" + said + "\n");
}

TEST_F(Places, CountFromWhereAFileIsReadOn) {
  write("text",
        "one\ntwo\nthr\xFF"
        "ee\n");
  EXPECT_EQ(run("--version >/dev/null; (read line; '" QVCONV_PATH "' -f utf-8 -t utf-8) <text").err,
            "qvconv: standard input:2:4: byte 7: FF is no character in utf-8\n");
}

TEST_F(Places, EndLinesOfEbcdicAtU0085) {
  EXPECT_EQ(run("-f 1140 -t 28591", "\xC1\x15\xC1\x25\x9F").err,
            "qvconv: standard input:3:1: byte 4: U+20AC has no place in 28591\n");
}

}  // namespace
