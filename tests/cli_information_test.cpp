// What there is to say of an encoding.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/Information.h"
#include "cli/PageHeads.h"
#include "quorvel/text/convert.h"

namespace {

using quorvel::text::Encoding;
using testing::HasSubstr;
using testing::Not;

std::string informationOn(int number) { return qvconv::informationOn(*Encoding::find(number)); }

TEST(Information, NamesTheEncodingAndItsSize) {
  EXPECT_EQ(informationOn(20866),
            "20866  koi8-r  Cyrillic (KOI8-R)\n"
            "\n"
            "family               KOI8\n"
            "bytes per character  1\n"
            "characters           256\n"
            "beyond its table     265 best fits when asked for\n"
            "also called          20866, cp20866, csKOI8R, koi8, koi\n"
            "\n"
            "Without bit 7 its text still reads as Latin letters; see 21866 for Ukrainian.\n"
            "\n"
            "Mapping: ICU charset collection, windows-20866-2000 (round trips).\n");
}

TEST(Information, CountsTheCharactersThatAreWritten) {
  EXPECT_THAT(informationOn(20127), HasSubstr("characters           128\n"));
  EXPECT_THAT(informationOn(1252), HasSubstr("characters           251\n"));
  EXPECT_THAT(informationOn(65001), HasSubstr("characters           1,112,064\n"));
  // All but the one whose code reads as something else.
  EXPECT_THAT(informationOn(54936), HasSubstr("characters           1,112,063\n"));
}

TEST(Information, CountsWhatATableDoesNotHave) {
  EXPECT_THAT(informationOn(932), HasSubstr("beyond its table     398 codes that are only read, 84 "
                                            "best fits when asked for\n"));
  // JIS X 0212 behind 8F.
  EXPECT_THAT(informationOn(51932), HasSubstr("beyond its table     6,077 codes that are"));
  EXPECT_THAT(informationOn(65001), Not(HasSubstr("beyond")));
}

TEST(Information, TellsHowManyBytesACharacterTakes) {
  EXPECT_THAT(informationOn(932), HasSubstr("bytes per character  1 to 2\n"));
  EXPECT_THAT(informationOn(12000), HasSubstr("bytes per character  4\n"));
  EXPECT_THAT(informationOn(50220), HasSubstr("1 to 8, switches of the state included\n"));
}

TEST(Information, TellsWhatIsParticularAboutAPage) {
  EXPECT_THAT(informationOn(1252), HasSubstr("\n81, 8D, 8F, 90 and 9D stay unmapped."));
  EXPECT_THAT(informationOn(54936), HasSubstr("\nThe two-byte codes of GBK, and codes of four"));
  EXPECT_THAT(informationOn(65001), Not(HasSubstr("\n\n\n")));
}

TEST(PageHeads, AreThereForEveryEncodingWithATable) {
  for (const Encoding encoding : Encoding::all()) {
    const bool hasTable = encoding.kind() == quorvel::text::EncodingKind::singleByte ||
                          encoding.kind() == quorvel::text::EncodingKind::multiByte;
    EXPECT_EQ(!qvconv::headOfPage(encoding.number()).empty(), hasTable) << encoding.number();
  }
  EXPECT_EQ(qvconv::headOfPage(1), "");
}

}  // namespace
