// The encodings as they are listed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "cli/Families.h"
#include "cli/Listing.h"

namespace {

using quorvel::text::Encoding;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(Listing, HasEachEncodingOnceUnderItsFamily) {
  std::vector<int> listed;
  std::string family;
  for (const std::string& line : linesOf(qvconv::listByFamily())) {
    if (line.empty()) continue;
    if (line.front() != ' ') {
      family = line;
      continue;
    }
    listed.push_back(std::stoi(line));
    const Encoding encoding = *Encoding::find(listed.back());
    EXPECT_EQ(family, qvconv::familyOf(encoding)) << line;
    EXPECT_THAT(line, HasSubstr(std::string(encoding.name()) + "  ")) << line;
    EXPECT_THAT(line, HasSubstr(std::string(encoding.title()))) << line;
    EXPECT_NE(line.back(), ' ');
  }
  std::vector<int> all;
  for (const Encoding encoding : Encoding::all()) all.push_back(encoding.number());
  EXPECT_THAT(listed, testing::UnorderedElementsAreArray(all));
}

TEST(Listing, BeginsWithUnicodeAndStandsInColumns) {
  const std::string text = qvconv::listByFamily();
  EXPECT_THAT(text, StartsWith("Unicode\n   1200  utf-16    Unicode (UTF-16, little-endian)"));
  EXPECT_THAT(text, HasSubstr("\n\nKOI8\n"
                              "  20866  koi8-r  Cyrillic (KOI8-R)  csKOI8R koi8 koi\n"
                              "  21866  koi8-u  Cyrillic (KOI8-U)  csKOI8U koi8-ru\n\n"));
}

TEST(Listing, IsJsonLineByLine) {
  const std::vector<std::string> lines = linesOf(qvconv::listAsJson());
  ASSERT_EQ(lines.size(), Encoding::all().size());
  EXPECT_EQ(lines.front(),
            R"x({"number":37,"name":"IBM037","title":"EBCDIC (US, Canada)","family":"EBCDIC",)x"
            R"x("aliases":["csIBM037","ebcdic-cp-us","ebcdic-cp-ca","ebcdic-cp-wt",)x"
            R"x("ebcdic-cp-nl","x-IBM037"]})x");
}

}  // namespace
