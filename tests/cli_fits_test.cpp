// What holds all of a text, as the command shows it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/Fits.h"

namespace {

using quorvel::text::Encoding;
using quorvel::text::Repertoire;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

Repertoire repertoireOf(std::string_view utf8) {
  Repertoire repertoire(Encoding::utf8());
  repertoire.push(utf8);
  repertoire.finish();
  return repertoire;
}

TEST(Fits, AreListedByFamily) {
  const std::string text = qvconv::fitsAsText(repertoireOf("\u043D\u0456\u0447"), "a.txt");
  EXPECT_THAT(text, StartsWith("a.txt: 3 different characters\n\nUnicode\n   1200  utf-16  "));
  EXPECT_THAT(text, HasSubstr("\n\nWindows\n  1251  windows-1251  Cyrillic (Windows)\n\n"));
  EXPECT_THAT(text, HasSubstr("\n\nKOI8\n  21866  koi8-u  Cyrillic (KOI8-U)\n\n"));
  EXPECT_THAT(text, Not(HasSubstr("koi8-r")));
}

TEST(Fits, AreJsonInOneLine) {
  EXPECT_EQ(qvconv::fitsAsJson(repertoireOf("\U0001F600"), "-"),
            R"({"file":"-","characters":1,"encodings":[{"number":1200,"name":"utf-16"},)"
            R"({"number":1201,"name":"utf-16be"},{"number":12000,"name":"utf-32"},)"
            R"({"number":12001,"name":"utf-32be"},{"number":54936,"name":"gb18030"},)"
            R"({"number":65000,"name":"utf-7"},{"number":65001,"name":"utf-8"},)"
            R"({"number":65005,"name":"cp65005"},{"number":65006,"name":"cp65006"}]})"
            "\n");
}

}  // namespace
