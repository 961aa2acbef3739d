// What becomes of text that does not get across: each action for both kinds of
// loss, best fits, the handler, and what is refused.

#include <gtest/gtest.h>

#include "quorvel/base/NullLog.h"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/text/Transcoder.h"
#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::byteString;
using quorvel_test::hex;
using text::EscapeForm;

struct Case {
  int from;
  int to;
  const char* source;
  const char* bytes;
};

void expect(const Case& c, const Rules& rules) {
  for (const Door& door : doors) {
    EXPECT_EQ(hex(door.convert(c.from, c.to, byteString(c.source), rules).text), c.bytes)
        << c.source << " from " << c.from << " to " << c.to << " by " << door.name;
  }
}

Rules bothKinds(Action action) {
  Rules rules;
  rules.malformed = action;
  rules.unmappable = action;
  return rules;
}

// --- Stop -----------------------------------------------------------------------------

TEST(TextActions, StopInFrontOfALossByThemselves) {
  for (const Door& door : doors) {
    const Result malformed = door.convert(65001, 1252,
                                          "ab\xFF"
                                          "cd",
                                          {});
    EXPECT_EQ(malformed.text, "ab") << door.name;
    EXPECT_EQ(toText(malformed.report),
              "read 2, wrote 2, 1 malformed, the first at 2+1 = FF, 0 unmappable, 0 best fits, "
              "stopped")
        << door.name;
    const Result unmappable = door.convert(65001, 1252,
                                           "ab\u3042"
                                           "cd",
                                           {});
    EXPECT_EQ(unmappable.text, "ab") << door.name;
    EXPECT_EQ(toText(unmappable.report),
              "read 2, wrote 2, 0 malformed, 1 unmappable, the first at 2+3:U+3042 = E3 81 82, "
              "0 best fits, stopped")
        << door.name;
  }
}

TEST(TextActions, StopForOneKindAndGoOnForTheOther) {
  Rules rules;
  rules.malformed = Action::drop;
  expect({65001, 20127, "61 FF 62 C3 A9 63", "61 62"}, rules);
  rules.malformed = Action::stop;
  rules.unmappable = Action::drop;
  expect({65001, 20127, "61 C3 A9 62 FF 63", "61 62"}, rules);
}

TEST(TextActions, StopBehindAWholeText) {
  expect({65001, 50220, "E3 81 82 C3 A9", "1B 24 42 24 22 1B 28 42"}, {});
  expect({65001, 50225, "EA B0 80 C3 A9", "1B 24 29 43 0E 30 21 0F"}, {});
  // All bits of U+3042.
  expect({65001, 65000, "E3 81 82 FF", "2B 4D 45 49 2D"}, {});
  expect({65001, 50220, "C3 A9", ""}, {});
  expect({65001, 50225, "C3 A9", ""}, {});
}

// --- Drop -----------------------------------------------------------------------------

TEST(TextActions, DropBothKinds) {
  constexpr Case cases[] = {
      {65001, 20127, "61 FF C3 A9 62", "61 62"},
      {932, 1201, "61 81 22 62", "00 61 00 22 00 62"},
      {65001, 50220, "E3 81 82 C3 A9 61", "1B 24 42 24 22 1B 28 42 61"},
      {65001, 50225, "C3 A9", ""},
  };
  for (const Case& c : cases) expect(c, bothKinds(Action::drop));
}

// --- Substitute -------------------------------------------------------------------------

TEST(TextActions, SubstituteTheReplacementCharacterOrElseAQuestionMark) {
  constexpr Case cases[] = {
      {65001, 1201, "61 FF 62", "00 61 FF FD 00 62"},
      {932, 65001, "81 22", "EF BF BD 22"},
      {65001, 54936, "FF", "84 31 A4 37"},
      {65001, 65000, "FF", "2B 2F 2F 30 2D"},
      {65001, 1252, "61 FF E3 81 82 62", "61 3F 3F 62"},
      {65001, 37, "FF", "6F"},
      {65001, 50220, "E3 81 82 FF E3 81 82", "1B 24 42 24 22 1B 28 42 3F 1B 24 42 24 22 1B 28 42"},
      {65001, 50225, "FF", "1B 24 29 43 3F"},
      {65001, 55000, "FF", "3F"},
  };
  for (const Case& c : cases) expect(c, bothKinds(Action::substitute));
}

TEST(TextActions, SubstituteWhatIsGivenAndLeaveOutWhatHasNoPlace) {
  Rules rules = bothKinds(Action::substitute);
  rules.substitute = "<\u20AC\u3042>";
  constexpr Case cases[] = {
      {65001, 1252, "61 FF E3 81 82", "61 3C 80 3E 3C 80 3E"},
      {65001, 932, "FF", "3C 82 A0 3E"},
      {65001, 20127, "FF", "3C 3E"},
      {1252, 1201, "81", "00 3C 20 AC 30 42 00 3E"},
  };
  for (const Case& c : cases) expect(c, rules);
  rules.substitute = "";
  expect({65001, 1252, "61 FF E3 81 82", "61"}, rules);
}

TEST(TextActions, CountASubstituteThatHasNoPlaceOnlyOnce) {
  Rules rules = bothKinds(Action::substitute);
  rules.substitute = "\u3042\u3042";
  for (const Door& door : doors) {
    const Report report = door.convert(65001, 1252, "\u3042\xFF", rules).report;
    EXPECT_EQ(report.unmappable, 1U) << door.name;
    EXPECT_EQ(report.malformed, 1U) << door.name;
    EXPECT_EQ(report.bytesWritten, 0U) << door.name;
  }
}

// --- Escape -----------------------------------------------------------------------------

std::string plain(const Door& door, int from, int to, std::string_view source, const Rules& rules) {
  return door.convert(from, to, source, rules).text;
}

TEST(TextActions, EscapeCharactersInOneOfTwoFormsAndBytesAlwaysInOne) {
  Rules c = bothKinds(Action::escape);
  Rules xml = c;
  xml.escape = EscapeForm::xml;
  for (const Door& door : doors) {
    SCOPED_TRACE(door.name);
    const std::string_view source = "a\u20AC\U0001F600\u00E9\x81\xF0\x9F\x98z";
    EXPECT_EQ(plain(door, 65001, 20127, source, c), R"(a\u20AC\U0001F600\u00E9\x81\xF0\x9F\x98z)");
    EXPECT_EQ(plain(door, 65001, 20127, source, xml),
              R"(a&#x20AC;&#x1F600;&#xE9;\x81\xF0\x9F\x98z)");
    EXPECT_EQ(plain(door, 932, 65001, "\x81\xFF", c), R"(\x81\xFF)");
    EXPECT_EQ(plain(door, 65001, 55000, std::string_view("\0", 1), c), "\x1B/u0000");
  }
}

TEST(TextActions, EscapeInTheEncodingOfTheDestinationAndLeaveOutWhatThatLacks) {
  constexpr Case cases[] = {
      {65001, 37, "E3 81 82", "E0 A4 F3 F0 F4 F2"},
      {932, 1201, "81", "00 5C 00 78 00 38 00 31"},
      {65001, 50220, "E3 81 82 C3 A9", "1B 24 42 24 22 1B 28 42 5C 75 30 30 45 39"},
      {932, 65000, "81", "2B 41 46 77 2D 78 38 31"},
      // The German one has no backslash.
      {65001, 20106, "E3 81 82", "75 33 30 34 32"},
  };
  for (const Case& c : cases) expect(c, bothKinds(Action::escape));
}

// --- Pass -------------------------------------------------------------------------------

TEST(TextActions, PassTheBytesOfTheSourceAsTheyAre) {
  constexpr Case cases[] = {
      {65001, 1252, "61 E3 81 82 FF 62", "61 E3 81 82 FF 62"},
      {932, 65001, "81 FF 61 81", "81 FF 61 81"},
      {1200, 1252, "61 00 42 30 00 D8", "61 42 30 00 D8"},
      {1252, 932, "E9 81 61", "E9 81 61"},
      {932, 932, "61 81 22", "61 81 22"},
  };
  for (const Case& c : cases) expect(c, bothKinds(Action::pass));
}

// --- Reconvert --------------------------------------------------------------------------

TEST(TextActions, ReconvertCharactersIntoTheOtherEncodingAndBytesOutOfIt) {
  Rules rules = bothKinds(Action::reconvert);
  rules.reconvert = 1252;
  constexpr Case cases[] = {
      // E9 is an e with acute in 1252: read out of it, written in it.
      {65001, 1201, "61 E9 62", "00 61 00 E9 00 62"},
      {65001, 65001, "61 E9 62", "61 C3 A9 62"},
      {65001, 932, "61 C3 A9 62", "61 E9 62"},
      // What fails there is dropped: 81 is nothing in 1252, nor is a kana.
      {65001, 1201, "61 81 62", "00 61 00 62"},
      {65001, 20127, "61 E3 81 82 62", "61 62"},
      // Read, but without a place in the destination.
      {65001, 932, "61 E9 62", "61 62"},
  };
  for (const Case& c : cases) expect(c, rules);
}

TEST(TextActions, CountWhatIsReconvertedAsOneLossEitherWay) {
  Rules rules = bothKinds(Action::reconvert);
  rules.reconvert = 1252;
  for (const Door& door : doors) {
    const Report report = door.convert(65001, 932, "\xE9\u00E9\u3042", rules).report;
    EXPECT_EQ(report.malformed, 1U) << door.name;
    EXPECT_EQ(report.unmappable, 1U) << door.name;
  }
}

// --- Preserve ---------------------------------------------------------------------------

TEST(TextActions, PreserveMalformedBytesInUnicode) {
  Rules rules;
  rules.malformed = Action::preserve;
  constexpr Case cases[] = {
      {65001, 1201, "61 FF 62", "00 61 DC FF 00 62"},
      {65001, 1200, "80", "80 DC"},
      {65001, 12001, "C3", "00 00 DC C3"},
      {932, 65001, "81 FF 61", "ED B2 81 ED B3 BF 61"},
      {65001, 65001, "61 FF ED B3 BF", "61 FF ED B3 BF"},
      // A byte below 80 is the character of that value.
      {1201, 65001, "00 61 62", "61 62"},
      {12001, 65001, "00 11 00 00", "00 11 00 00"},
      {65000, 65001, "2B 41 2D", "41"},
  };
  for (const Case& c : cases) expect(c, rules);
}

TEST(TextActions, PreserveLoneHalvesAndTurnThoseOfBytesIntoBytesAgain) {
  Rules rules;
  rules.malformed = Action::preserve;
  constexpr Case cases[] = {
      {1201, 932, "00 61 DC 81 DC FF 00 62", "61 81 FF 62"},
      {12001, 932, "00 00 DC 81", "81"},
      {65001, 932, "ED B2 81 ED B3 BF 61", "81 FF 61"},
      // Other halves are no bytes.
      {1201, 932, "D8 00 DC 00 DD 00 D8 00", ""},
      {1201, 932, "DC 7F DD 00 D8 00 00 61", "61"},
      // Unicode keeps each as it is.
      {1201, 65001, "D8 00 00 61", "ED A0 80 61"},
      {1201, 1200, "DC 81 D8 00", "81 DC 00 D8"},
      // But in UTF-8 those of bytes are bytes, from there and back.
      {1201, 65001, "DC 81 DC FF 00 61", "81 FF 61"},
      {65001, 1201, "ED B2 81", "DC ED DC B2 DC 81"},
      {12000, 1200, "81 DC 00 00", "81 DC"},
      {65001, 1201, "ED A0 80 ED B1 BF ED B4 80", "D8 00 DC 7F DD 00"},
      {65001, 932, "ED A0 80", "ED A0 80"},
  };
  // D800 and DC00 are a pair, which 932 lacks.
  rules.unmappable = Action::drop;
  for (const Case& c : cases) expect(c, rules);
}

TEST(TextActions, PreserveEveryByteThroughUnicodeAndBack) {
  Rules rules;
  rules.malformed = Action::preserve;
  std::string damaged;
  for (int lead = 0x80; lead < 0x100; ++lead) {
    damaged += {static_cast<char>(lead), ' ', static_cast<char>(lead), '\xFF', 'a'};
  }
  for (const Door& door : doors) {
    for (const int page : {932, 936, 949, 950, 1252, 20127, 51932, 51949, 54936}) {
      for (const int unicode : {65001, 1200, 1201, 12000, 12001}) {
        const Result there = door.convert(page, unicode, damaged, rules);
        EXPECT_GT(there.report.malformed, 0U);
        EXPECT_EQ(hex(door.convert(unicode, page, there.text, rules).text), hex(damaged))
            << page << " by way of " << unicode << " by " << door.name;
      }
    }
  }
}

TEST(TextActions, PreserveWhatIsMalformedInUnicodeThroughOtherUnicodeAndBack) {
  Rules rules;
  rules.malformed = Action::preserve;
  const struct {
    int from;
    int by;
    const char* source;
  } trips[] = {
      {65001, 1200, "61 FF C3 ED A0 80 61 ED B3 BF F4 90 80 80 E3 81"},
      {65001, 12001, "61 FF C3 ED A0 80 61 ED B3 BF F4 90 80 80 E3 81"},
      {1200, 65001, "00 D8 61 00 FF DC 61 00 80 DC 00 DE FF DB"},
      {12000, 65001, "00 D8 00 00 61 00 00 00 FF DC 00 00"},
      {1201, 12000, "D8 00 00 61 DC FF DE 00"},
  };
  for (const Door& door : doors) {
    for (const auto& trip : trips) {
      const Result there = door.convert(trip.from, trip.by, byteString(trip.source), rules);
      EXPECT_EQ(hex(door.convert(trip.by, trip.from, there.text, rules).text), trip.source)
          << trip.from << " by way of " << trip.by << " by " << door.name;
    }
  }
}

TEST(TextActions, PreserveCountsAHalfInUtf8AsOneLossOfThreeBytes) {
  Rules rules;
  rules.malformed = Action::preserve;
  for (const Door& door : doors) {
    EXPECT_EQ(outcomeOf(door, 65001, 1252, "a\xED\xB2\x81z", rules), (Outcome{"61 81 7A", "1+3"}))
        << door.name;
  }
}

// --- Best fits --------------------------------------------------------------------------

TEST(TextActions, FitBestOnlyWhenThatIsAsked) {
  Rules rules = dropping();
  constexpr Case none[] = {
      {65001, 1252, "EF BC 8F C4 80", ""},
      {65001, 932, "C2 A0 C2 A5", ""},
      {65001, 20127, "C2 A0", ""},
  };
  for (const Case& c : none) expect(c, rules);
  rules.fitsBest = true;
  constexpr Case close[] = {
      {65001, 1252, "EF BC 8F C4 80", "2F 41"}, {65001, 932, "C2 A0 C2 A5 C3 80", "20 5C 41"},
      {65001, 20127, "C2 A0 C3 A9", "20 65"},   {65001, 51932, "C2 A5 C3 A9", "5C 65"},
      {65001, 28591, "E2 82 AC C4 80", "41"},
  };
  for (const Case& c : close) expect(c, rules);
}

TEST(TextActions, ReportBestFitsAsLosses) {
  Rules rules;
  rules.fitsBest = true;
  for (const Door& door : doors) {
    EXPECT_EQ(outcomeOf(door, 65001, 1252, "a\uFF0F\u0100z", rules),
              (Outcome{"61 2F 41 7A", "1+3~U+FF0F 4+2~U+0100"}))
        << door.name;
    const Report report = door.convert(65001, 1252, "a\uFF0F\u0100z", rules).report;
    EXPECT_EQ(toText(report),
              "read 7, wrote 4, 0 malformed, 0 unmappable, 2 best fits, the first at 1+3~U+FF0F = "
              "EF BC 8F")
        << door.name;
    EXPECT_FALSE(report.isLossless()) << door.name;
  }
}

TEST(TextActions, FitNothingBestWhereThereIsNoSuchList) {
  Rules rules = dropping();
  rules.fitsBest = true;
  constexpr Case cases[] = {
      {65001, 10001, "EF BC 8F C2 A5 C2 A0", "81 5E A0"},
      {65001, 50220, "C2 A5 C2 A0", ""},
      {65001, 50225, "C2 A0 C3 A9", ""},
      {65001, 55000, "C3 A7 C2 A0", ""},
      {65001, 51932, "EE 80 80 EE 9D 97", ""},
  };
  for (const Case& c : cases) expect(c, rules);
}

TEST(TextActions, ShareBestFitsWhereThePageIsShared) {
  Rules rules = dropping();
  rules.fitsBest = true;
  const text_reference::Page& page = text_reference::pageOf(20269);
  ASSERT_FALSE(page.bestFits.empty());
  for (const auto& [character, code] : page.bestFits) {
    for (const Door& door : doors) {
      const std::string text = text_reference::inUtf8(character);
      EXPECT_EQ(hex(door.convert(65001, 20261, text, rules).text),
                hex(text_reference::bytesOf(code)))
          << hex(text) << " by " << door.name;
    }
  }
}

// --- The handler ------------------------------------------------------------------------

TEST(TextActions, AskTheHandlerForEachLossAndGoByTheOptionsWithoutAnAnswer) {
  Rules rules = bothKinds(Action::substitute);
  rules.onLoss = [](const Loss& loss) -> std::optional<Action> {
    if (loss.character == U'\u3042') return Action::escape;
    if (loss.kind == LossKind::malformed) return Action::drop;
    return std::nullopt;
  };
  for (const Door& door : doors) {
    EXPECT_EQ(plain(door, 65001, 20127, "a\u3042\xFF\u00E9z", rules), R"(a\u3042?z)") << door.name;
  }
}

TEST(TextActions, TellTheHandlerWhereEachLossIsAndWhatItWas) {
  for (const Door& door : doors) {
    std::vector<Loss> losses;
    Rules rules = dropping();
    rules.onLoss = [&losses](const Loss& loss) {
      losses.push_back(loss);
      return std::nullopt;
    };
    door.convert(65001, 20127, "a\u3042\xF0\x9Fz", rules);
    ASSERT_EQ(losses.size(), 2U) << door.name;
    Loss character;
    character.kind = LossKind::unmappable;
    character.offset = 1;
    character.length = 3;
    character.character = U'\u3042';
    character.storage = {0xE3, 0x81, 0x82};
    EXPECT_EQ(losses[0], character) << door.name;
    Loss bytes;
    bytes.kind = LossKind::malformed;
    bytes.offset = 4;
    bytes.length = 2;
    bytes.storage = {0xF0, 0x9F};
    EXPECT_EQ(losses[1], bytes) << door.name;
  }
}

TEST(TextActions, LetTheHandlerStop) {
  Rules rules = dropping();
  rules.onLoss = [](const Loss& loss) -> std::optional<Action> {
    if (loss.offset >= 3) return Action::stop;
    return std::nullopt;
  };
  for (const Door& door : doors) {
    const Result result = door.convert(65001, 20127,
                                       "\xFF"
                                       "ab\xFF"
                                       "cd",
                                       rules);
    EXPECT_EQ(result.text, "ab") << door.name;
    EXPECT_TRUE(result.report.stopped) << door.name;
    EXPECT_EQ(result.report.bytesRead, 3U) << door.name;
    EXPECT_EQ(result.report.malformed, 2U) << door.name;
  }
}

TEST(TextActions, LetTheHandlerRefuseABestFit) {
  Rules rules;
  rules.fitsBest = true;
  rules.onLoss = [](const Loss& loss) -> std::optional<Action> {
    if (loss.character == U'\uFF0F') return Action::escape;
    return std::nullopt;
  };
  for (const Door& door : doors) {
    const Result result = door.convert(65001, 1252, "\uFF0F\u0100", rules);
    EXPECT_EQ(result.text, R"(\uFF0FA)") << door.name;
    EXPECT_EQ(result.report.unmappable, 1U) << door.name;
    EXPECT_EQ(result.report.bestFits, 1U) << door.name;
    EXPECT_EQ(toShort(*result.report.firstUnmappable), "0+3:U+FF0F") << door.name;
    EXPECT_EQ(toShort(*result.report.firstBestFit), "3+2~U+0100") << door.name;
  }
}

TEST(TextActions, WriteNothingWhereTheHandlerChoosesWhatWouldBeRefused) {
  struct Choice {
    Case c;
    Action action;
  };
  constexpr Choice choices[] = {
      {{65001, 1200, "61 FF 7A", "61 00 7A 00"}, Action::pass},
      {{932, 12001, "81 22", "00 00 00 22"}, Action::pass},
      {{50220, 1252, "61 80 7A", "61 7A"}, Action::pass},
      {{65001, 50220, "61 C3 A9 7A", "61 7A"}, Action::pass},
      {{65001, 932, "61 FF C3 A9 7A", "61 7A"}, Action::reconvert},
      {{1252, 932, "61 81 7A", "61 7A"}, Action::preserve},
      {{65001, 932, "61 C3 A9 7A", "61 7A"}, Action::preserve},
  };
  for (const Choice& choice : choices) {
    Rules rules;
    rules.onLoss = [&](const Loss&) { return std::optional(choice.action); };
    expect(choice.c, rules);
  }
}

TEST(TextActions, LetWhatTheHandlerThrowsComeOut) {
  Rules rules;
  rules.onLoss = [](const Loss&) -> std::optional<Action> { throw std::runtime_error("enough"); };
  for (const Door& door : doors) {
    EXPECT_THROW(door.convert(65001, 20127, "a\xFFz", rules), std::runtime_error) << door.name;
    EXPECT_EQ(door.convert(65001, 20127, "az", rules).text, "az") << door.name;
  }
}

// --- What is refused ----------------------------------------------------------------------

struct Refusal {
  int from;
  int to;
  Action malformed;
  Action unmappable;
  bool isRefused;
};

TEST(TextActions, AreRefusedWhereTheyMakeNoSense) {
  constexpr Action stop = Action::stop;
  constexpr Refusal rows[] = {
      {65001, 1200, Action::pass, stop, true},         {65001, 1201, stop, Action::pass, true},
      {65001, 12000, Action::pass, stop, true},        {65001, 65006, Action::pass, stop, true},
      {50220, 932, Action::pass, stop, true},          {932, 50225, stop, Action::pass, true},
      {65000, 65001, Action::pass, stop, true},        {65001, 65000, Action::pass, stop, true},
      {1200, 1252, Action::pass, Action::pass, false}, {932, 65001, Action::pass, stop, false},
      {932, 55000, Action::pass, stop, false},         {932, 1252, Action::preserve, stop, true},
      {65000, 1252, Action::preserve, stop, true},     {54936, 932, Action::preserve, stop, true},
      {65001, 932, Action::preserve, stop, false},     {932, 12000, Action::preserve, stop, false},
      {65001, 932, stop, Action::preserve, true},      {65001, 932, Action::reconvert, stop, true},
      {65001, 932, stop, Action::reconvert, true},     {65001, 1200, stop, stop, false},
  };
  for (const Refusal& row : rows) {
    Rules rules;
    rules.malformed = row.malformed;
    rules.unmappable = row.unmappable;
    const text::Encoding from = encodingOf(row.from);
    const text::Encoding to = encodingOf(row.to);
    const std::string reason = whyRefused(from, to, optionsOf(rules));
    EXPECT_EQ(!reason.empty(), row.isRefused) << row.from << " to " << row.to << ": " << reason;
    EXPECT_EQ(text_reference::isRefused(row.from, row.to, rules), row.isRefused);
    EXPECT_EQ(text::Transcoder::make(from, to, optionsOf(rules)).has_value(), !row.isRefused);
    const text::Converted converted = text::convert(from, to, "a\xFFz", optionsOf(rules));
    EXPECT_EQ(converted.report.refusal, reason);
    if (!row.isRefused) continue;
    EXPECT_EQ(converted.text, "");
    EXPECT_EQ(converted.report.bytesRead, 0U);
    EXPECT_FALSE(converted.report.isLossless());
  }
}

TEST(TextActions, OfReconvertingTakeAnEncoding) {
  Rules rules = bothKinds(Action::reconvert);
  rules.reconvert = 1252;
  EXPECT_EQ(whyRefused(encodingOf(65001), encodingOf(932), optionsOf(rules)), "");
}

TEST(TextActions, LeaveTheStringAndTheReportCompleteWhenAHandlerThrows) {
  text::Options options;
  options.onLoss = [](const text::Loss&) -> std::optional<Action> {
    throw std::runtime_error("no");
  };
  auto transcoder = *text::Transcoder::make(encodingOf(65001), encodingOf(1252), options);
  std::string out = ">";
  EXPECT_THROW(transcoder.push("ab\xFFz", out), std::runtime_error);
  EXPECT_EQ(out, ">ab");
  EXPECT_EQ(transcoder.report().bytesWritten, 2U);
  EXPECT_EQ(transcoder.report().bytesRead, 2U);
  EXPECT_EQ(transcoder.report().malformed, 1U);
  EXPECT_TRUE(transcoder.report().stopped);
  EXPECT_FALSE(transcoder.report().isLossless());
}

TEST(TextActions, AskForNoMoreRoomThanTwiceWhatThereIsBehindABadBeginning) {
  text::Options options;
  options.malformed = Action::substitute;
  options.substitute = std::string(1 << 16, '?');
  const std::string source = "\xFF" + std::string(1 << 20, 'a');
  const text::Converted result =
      text::convert(encodingOf(65001), encodingOf(1252), source, options);
  EXPECT_EQ(result.text.size(), (1U << 16) + (1U << 20));
  EXPECT_LT(result.text.capacity(), std::size_t{8} << 20);
}

// --- Visual order -------------------------------------------------------------------------

TEST(TextActions, ReadVisualOrderWhenThatIsAskedOfConvertAlone) {
  const text::Encoding macArabic = encodingOf(10004);
  const text::Encoding utf16 = encodingOf(1201);
  text::Options options;
  // Alef, lam, an Arabic digit's twin and a space, which A0 is too.
  const std::string source = byteString("61 C7 E4 A0 BA 62");
  EXPECT_EQ(hex(text::convert(macArabic, utf16, source, options).text),
            hex(text_reference::convert(10004, 1201, source).text));
  options.visualOrder = true;
  EncodingConvert converter;
  NullLog log;
  DataBuffer out;
  ASSERT_TRUE(converter.EncConvert(10004, 1201, quorvel_test::unsignedBytes(source),
                                   quorvel_test::sizeOf(source), out, log));
  EXPECT_EQ(hex(text::convert(macArabic, utf16, source, options).text), hex(out));
  EXPECT_NE(whyRefused(encodingOf(1252), utf16, options), "");
  EXPECT_FALSE(text::Transcoder::make(macArabic, utf16, options).has_value());
}

}  // namespace
}  // namespace quorvel::test_text
