// What the rows of CodePages.def say beside number, names and tables.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "quorvel/pages/CodePages.hpp"

namespace {

using quorvel::CodePage;
using quorvel::findCodePage;
using quorvel::PageRef;

using Numbers = std::vector<int>;

/// The numbers of the pages that `is` holds for.
template <typename Predicate>
Numbers pagesThat(const Predicate& is) {
  Numbers found;
  for (const int number : quorvel::codePageNumbers) {
    if (is(findCodePage(number))) found.push_back(number);
  }
  return found;
}

std::string behaviourDocument() {
  std::ifstream file(QUORVEL_DOCS_DIR "/behaviour.md");
  return {std::istreambuf_iterator<char>(file), {}};
}

/// "932, 936 and 949".
std::string enumerated(const Numbers& numbers, const std::string& lastJoint) {
  std::string text;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0) text += i + 1 < numbers.size() ? ", " : lastJoint;
    text += std::to_string(numbers[i]);
  }
  return text;
}

bool coversTwoBytes(const CodePage& page) { return page.traits.bytesPerError == 2; }
bool takesAsciiDigits(const CodePage& page) { return page.traits.takesAsciiDigits; }

TEST(CodePageRows, AreFoundByTheirNumbers) {
  for (unsigned int i = 0; i < quorvel::codePageCount; ++i) {
    const int number = quorvel::codePageNumbers[i];
    EXPECT_EQ(findCodePage(number).number, number);
    EXPECT_EQ(quorvel::indexOfCodePage(number), i);
    EXPECT_TRUE(PageRef(number).isServed());
  }
}

TEST(CodePageRows, AreEmptyForEveryOtherNumber) {
  for (int number = -70000; number < 140000; ++number) {
    const CodePage& page = findCodePage(number);
    if (page.number == number && number != 0) continue;
    ASSERT_EQ(page.number, 0) << number;
    ASSERT_EQ(quorvel::indexOf(page), quorvel::codePageCount);
    ASSERT_FALSE(page.hasTable() || page.table.isRouted || page.table.wrapped);
    ASSERT_EQ(page.traits.bytesPerError, 1);
  }
  EXPECT_FALSE(PageRef(28602).isServed());
  EXPECT_EQ(PageRef(28602), 28602);
}

TEST(CodePageRows, SayWhichErrorsCoverTwoBytes) {
  EXPECT_EQ(pagesThat(coversTwoBytes), (Numbers{932, 936, 949, 950, 51932, 51936, 51949}));
}

TEST(CodePageRows, SayWhichPagesTakeAsciiDigits) {
  EXPECT_EQ(pagesThat(takesAsciiDigits), (Numbers{1256, 28596}));
}

TEST(CodePageRows, SayWhereUsAsciiIsCopied) {
  EXPECT_EQ(
      pagesThat([](const CodePage& page) { return page.traits.copiesUsAscii; }),
      (Numbers{1250,  1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258,  28591, 28592, 28593,
               28594, 28595, 28596, 28597, 28598, 28599, 28600, 28601, 28603, 28605, 65001}));
}

TEST(CodePageRows, SayWhichTextIsReordered) {
  EXPECT_EQ(pagesThat([](const CodePage& page) { return page.traits.isInMacArabicOrder; }),
            (Numbers{10004}));
}

TEST(CodePageRows, SayWhatAnIso2022EncodingStandsOn) {
  EXPECT_EQ(pagesThat([](const CodePage& page) { return page.table.wrapped == 932; }),
            (Numbers{50220, 50221, 50222}));
  EXPECT_EQ(pagesThat([](const CodePage& page) { return page.table.wrapped == 949; }),
            (Numbers{50225}));
}

TEST(CodePageRows, AgreeWithWhatTheDocumentSaysOfThem) {
  const std::string document = behaviourDocument();
  const std::string errors = "two in " + enumerated(pagesThat(coversTwoBytes), " and ") + " |";
  EXPECT_NE(document.find(errors), std::string::npos) << errors;
  const std::string digits = "| " + enumerated(pagesThat(takesAsciiDigits), ", ") + " | both sets";
  EXPECT_NE(document.find(digits), std::string::npos) << digits;
}

}  // namespace
