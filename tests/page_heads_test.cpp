// What the packer takes over from the heads of the mapping files.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tools/InputFile.h"
#include "tools/PageHead.h"

namespace {

namespace fs = std::filesystem;

std::string headIn(const std::string& text) {
  const fs::path file =
      fs::temp_directory_path() / ("page-head-" + std::to_string(::getpid()) + ".txt");
  std::ofstream(file, std::ios::binary) << text;
  std::string head = pack::readPageHead(file);
  fs::remove(file);
  return head;
}

TEST(PageHead, IsTheCommentThatAMappingFileBeginsWith) {
  EXPECT_EQ(headIn("# 100: made up.\n#\n# More: of it,\n#   indented.\n\n# not this\n80: 20AC\n"),
            "made up.\n\nMore: of it,\n  indented.\n");
  EXPECT_EQ(headIn("# No number: here.\r\n#\r\n80: 20AC\r\n"), "No number: here.\n\n");
  EXPECT_EQ(headIn("80: 20AC\n"), "");
  EXPECT_EQ(headIn(""), "");
}

TEST(PageHead, IsMissedLikeAnyOtherInput) {
  EXPECT_THROW(pack::readPageHead("/nonexistent/100.txt"), pack::InputError);
}

TEST(PageHead, IsQuotedInTheSource) {
  EXPECT_EQ(pack::pageHeadsSource({{7, "say \"\\\"\nb\n"}, {8, ""}}),
            "#include \"cli/PageHeads.h\"\n\n"
            "namespace qvconv {\n\n"
            "std::string_view headOfPage(int codePage) {\n"
            "  switch (codePage) {\n"
            "    case 7:\n"
            "      return\n"
            "             \"say \\\"\\\\\\\"\\n\"\n"
            "             \"b\\n\";\n"
            "    default:\n"
            "      return {};\n"
            "  }\n"
            "}\n\n"
            "}  // namespace qvconv\n");
}

TEST(PageHead, IsReadForThePagesBeyondTheTablesToo) {
  const auto heads = pack::readPageHeads(QUORVEL_CODEPAGES_DIR);
  EXPECT_TRUE(heads.at(54936).starts_with("GB 18030.\n\nThe two-byte codes of GBK"));
  EXPECT_TRUE(heads.at(932).starts_with("Windows, Japanese: Shift_JIS"));
  EXPECT_GT(heads.size(), 100U);
}

}  // namespace
