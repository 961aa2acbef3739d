// What a file probably is, as the command shows it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "cli/Detection.h"
#include "quorvel/names/Psdk.h"

namespace {

using quorvel::text::Candidate;
using quorvel::text::Encoding;

std::string sample(const std::string& name) {
  std::ifstream file(QUORVEL_SOURCE_DIR "/samples/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

const std::vector<Candidate> candidates = {
    {*Encoding::find(1252), 0}, {*Encoding::find(932), 1}, {*Encoding::find(1200), 12}};

TEST(Detection, IsListedTheLikeliestFirst) {
  EXPECT_EQ(qvconv::candidatesAsText(candidates, "a.txt"),
            "a.txt\n"
            "  1252  windows-1252  no loss    Western European (Windows)\n"
            "   932  shift_jis     1 loss     Japanese (Shift_JIS)\n"
            "  1200  utf-16        12 losses  Unicode (UTF-16, little-endian)\n");
}

TEST(Detection, IsJsonInOneLine) {
  EXPECT_EQ(qvconv::candidatesAsJson(candidates, "-"),
            R"({"file":"-","candidates":[{"number":1252,"name":"windows-1252","losses":0},)"
            R"({"number":932,"name":"shift_jis","losses":1},)"
            R"({"number":1200,"name":"utf-16","losses":12}]})"
            "\n");
}

TEST(Detection, NeedsNoGuessForAMarkOrUtf8OrAscii) {
  const auto first = [](std::string_view text) {
    return qvconv::detectEncoding(text, false).front().encoding.number();
  };
  EXPECT_EQ(first("plain"), 20127);
  EXPECT_EQ(first("caf\u00E9"), 65001);
  EXPECT_EQ(first("\xEF\xBB\xBF"
                  "a"),
            65001);
  EXPECT_EQ(first(sample("notice.utf-8.txt")), 65001);
}

#ifdef QVCONV_WITH_UCHARDET

TEST(Detection, FindsTheSamplesByTheirGuess) {
  const std::pair<const char*, int> samples[] = {
      {"legacy/russian.koi8-r.txt", 20866},
      {"legacy/russian.cp866.txt", 866},
      {"legacy/russian.windows-1251.txt", 1251},
      {"legacy/japanese.shift_jis.txt", 932},
      {"legacy/japanese.euc-jp.txt", 51932},
      {"legacy/japanese.iso-2022-jp.txt", 50220},
      {"legacy/french.windows-1252.txt", 1252},
      {"legacy/korean.iso-2022-kr.txt", 50225},
      {"legacy/chinese-traditional.big5.txt", 950},
      {"legacy/korean.ks_c_5601-1987.txt", 949},
      {"notice.utf-16le.txt", 1200},
  };
  for (const auto& [name, number] : samples) {
    const auto found = qvconv::detectEncoding(sample(name), false);
    EXPECT_EQ(found.front().encoding.number(), number) << name;
    EXPECT_EQ(found.front().losses, 0U) << name;
  }
}

#else

TEST(Detection, TakesThePageOfTheLocaleWithoutAGuess) {
  quorvel::Psdk::setCodePages(1253, 737);
  const auto found = qvconv::detectEncoding("\xE1\xF9", false);
  quorvel::Psdk::setCodePages(0, 0);
  EXPECT_FALSE(qvconv::guessEncoding("\xE1\xF9"));
  EXPECT_EQ(found.front().encoding.number(), 1253);
}

#endif

}  // namespace
