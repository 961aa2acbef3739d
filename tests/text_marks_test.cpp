// Byte-order marks: taken off, kept, deciding the order, written.

#include <gtest/gtest.h>

#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::byteString;
using quorvel_test::hex;

struct Case {
  int from;
  const char* bytes;
  const char* utf16;  // big-endian
  const char* losses;
};

void expect(const Case& c, bool keepsMark) {
  for (const Door& door : doors) {
    Rules rules = dropping();
    rules.keepsMark = keepsMark;
    EXPECT_EQ(outcomeOf(door, c.from, 1201, byteString(c.bytes), rules),
              (Outcome{c.utf16, c.losses}))
        << c.bytes << " in " << c.from << " by " << door.name;
  }
}

TEST(TextMarks, AreTakenOffUnlessTheyAreKept) {
  constexpr Case cases[] = {
      {65001, "EF BB BF 61", "00 61", ""},
      {65001, "EF BB BF", "", ""},
      {1200, "FF FE 61 00", "00 61", ""},
      {1201, "FE FF 00 61", "00 61", ""},
      {12000, "FF FE 00 00 61 00 00 00", "00 61", ""},
      {65005, "FF FE 00 00 61 00 00 00", "00 61", ""},
      {12001, "00 00 FE FF 00 00 00 61", "00 61", ""},
      {65006, "00 00 FE FF 00 00 00 61", "00 61", ""},
  };
  for (const Case& c : cases) expect(c, false);
}

TEST(TextMarks, AreTakenOffOnceAndOnlyInFront) {
  constexpr Case cases[] = {
      {65001, "EF BB BF EF BB BF 61", "FE FF 00 61", ""},
      {65001, "61 EF BB BF", "00 61 FE FF", ""},
      {1200, "FF FE FF FE 61 00", "FE FF 00 61", ""},
      {1200, "FF FE FE FF 61 00", "FF FE 00 61", ""},
  };
  for (const Case& c : cases) expect(c, false);
}

TEST(TextMarks, OfTheOtherOrderDecideTheOrderAndCountInOffsets) {
  constexpr Case cases[] = {
      {1200, "FE FF 00 61 D8 00 00 62", "00 61 00 62", "4+2"},
      {1201, "FF FE 61 00 00 D8 62 00", "00 61 00 62", "4+2"},
      {12000, "00 00 FE FF 00 00 00 61 00 11 00 00", "00 61", "8+4"},
      {12001, "FF FE 00 00 61 00 00 00 00 D8 00 00", "00 61", "8+4"},
      {65005, "00 00 FE FF 00 00 00 61", "00 61", ""},
      {65006, "FF FE 00 00 61 00 00 00", "00 61", ""},
  };
  for (const Case& c : cases) expect(c, false);
}

TEST(TextMarks, ThatAreKeptAreCharactersAndDecideNothing) {
  constexpr Case cases[] = {
      {65001, "EF BB BF 61", "FE FF 00 61", ""},
      {1200, "FF FE 61 00", "FE FF 00 61", ""},
      {1200, "FE FF 00 61", "FF FE 61 00", ""},
      {1201, "FF FE 61 00", "FF FE 61 00", ""},
      {12001, "FF FE 00 00 00 00 00 61", "00 61", "0+4"},
      {12000, "00 00 FE FF 61 00 00 00", "00 61", "0+4"},
  };
  for (const Case& c : cases) expect(c, true);
}

TEST(TextMarks, ThatAreCutOffAreNone) {
  constexpr Case cases[] = {
      {65001, "EF BB", "", "0+2"},    {1200, "FF", "", "0+1"},        {1201, "FE", "", "0+1"},
      {12000, "FF FE 00", "", "0+3"}, {12001, "00 00 FE", "", "0+3"},
  };
  for (const Case& c : cases) expect(c, false);
}

TEST(TextMarks, AreCharactersInEveryOtherEncoding) {
  constexpr Case cases[] = {
      {65000, "2B 2F 76 38 2D 61", "FE FF 00 61", ""},
      {54936, "84 31 95 33 61", "FE FF 00 61", ""},
      {1252, "EF BB BF", "00 EF 00 BB 00 BF", ""},
  };
  for (const Case& c : cases) expect(c, false);
}

TEST(TextMarks, ThatAreKeptHaveNoPlaceInMostPages) {
  for (const Door& door : doors) {
    Rules rules = dropping();
    rules.keepsMark = true;
    EXPECT_EQ(outcomeOf(door, 1200, 932, byteString("FF FE 61 00"), rules),
              (Outcome{"61", "0+2:U+FEFF"}))
        << door.name;
  }
}

TEST(TextMarks, AreReadAsBytesOfTheSource) {
  for (const Door& door : doors) {
    const Report report = door.convert(65001, 1252,
                                       "\xEF\xBB\xBF"
                                       "a",
                                       {})
                              .report;
    EXPECT_EQ(report.bytesRead, 4U) << door.name;
    EXPECT_EQ(report.bytesWritten, 1U) << door.name;
    EXPECT_TRUE(report.isLossless()) << door.name;
  }
}

struct Written {
  int to;
  const char* text;
  const char* bytes;
};

TEST(TextMarks, AreWrittenInFrontOfUnicodeWhenThatIsAsked) {
  constexpr Written cases[] = {
      {65001, "a", "EF BB BF 61"},
      {1200, "a", "FF FE 61 00"},
      {1201, "a", "FE FF 00 61"},
      {12000, "a", "FF FE 00 00 61 00 00 00"},
      {65005, "a", "FF FE 00 00 61 00 00 00"},
      {12001, "a", "00 00 FE FF 00 00 00 61"},
      {65006, "a", "00 00 FE FF 00 00 00 61"},
      {65000, "a", "61"},
      {54936, "a", "61"},
      {932, "a", "61"},
      {50225, "a", "1B 24 29 43 61"},
      // No text, no mark; nor for a text of nothing but a mark or a loss.
      {65001, "", ""},
      {1200, "\xEF\xBB\xBF", ""},
      {1200, "\xFF", ""},
      // The mark that came with the text is another one.
      {1200,
       "\xEF\xBB\xBF"
       "a",
       "FF FE 61 00"},
  };
  for (const Door& door : doors) {
    for (const Written& c : cases) {
      Rules rules = dropping();
      rules.writesMark = true;
      const Result result = door.convert(65001, c.to, c.text, rules);
      EXPECT_EQ(hex(result.text), c.bytes) << c.to << " by " << door.name;
      EXPECT_EQ(result.report.bytesWritten, result.text.size()) << c.to << " by " << door.name;
    }
  }
}

TEST(TextMarks, AreWrittenOnceMoreInFrontOfOneThatIsKept) {
  for (const Door& door : doors) {
    Rules rules;
    rules.keepsMark = rules.writesMark = true;
    EXPECT_EQ(hex(door.convert(1200, 65001, byteString("FF FE 61 00"), rules).text),
              "EF BB BF EF BB BF 61")
        << door.name;
  }
}

TEST(TextMarks, OfTheOtherOrderTurnTheSameEncodingRound) {
  for (const Door& door : doors) {
    EXPECT_EQ(hex(door.convert(1200, 1200, byteString("FE FF 00 61"), {}).text), "61 00")
        << door.name;
    EXPECT_EQ(hex(door.convert(12001, 12001, byteString("FF FE 00 00 61 00 00 00"), {}).text),
              "00 00 00 61")
        << door.name;
  }
}

TEST(TextMarks, AreWrittenInFrontOfReplacementsToo) {
  for (const Door& door : doors) {
    Rules rules;
    rules.malformed = Action::substitute;
    rules.writesMark = true;
    EXPECT_EQ(hex(door.convert(932, 1201, byteString("FF 81"), rules).text), "FE FF F8 F3 FF FD")
        << door.name;
    EXPECT_EQ(hex(door.convert(20127, 1201, byteString("81"), rules).text), "FE FF FF FD")
        << door.name;
  }
}

}  // namespace
}  // namespace quorvel::test_text
