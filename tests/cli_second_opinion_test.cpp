// Beside the iconv command: the same bytes, and for damaged text the same place.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "quorvel/text/convert.h"
#include "tests/helpers/Command.h"

namespace {

using namespace quorvel::text;
using quorvel_test::Command;
using quorvel_test::Finished;

class BesideIconv : public Command {
 protected:
  void SetUp() override {
    Command::SetUp();
    // The other one that goes by this name takes other options.
    if (std::system("iconv --version 2>/dev/null | grep -q -e GLIBC -e 'GNU libc'") != 0) {
      GTEST_SKIP() << "there is no iconv of glibc";
    }
  }
  Finished runIconv(const std::string& arguments) const { return runShell("iconv " + arguments); }
};

struct Row {
  const char* name;  // that both know
  const char* text;
};

// A text for each family.
const Row rows[] = {
    {"cp1252", "Zo\xC3\xAB, na\xC3\xAFve\n"},
    {"iso-8859-2", "\xC5\x82\xC3\xB3\xC5\xBC\n"},
    {"koi8-r", "\xD0\xBF\xD0\xB0\xD1\x80\xD0\xBE\xD0\xBC\n"},
    {"cp866", "\xD0\xBF\xD0\xB0\xD1\x80\xD0\xBE\xD0\xBC\n"},
    {"ibm037", "NUMBER 7\n"},
    {"macintosh", "Zo\xC3\xAB\n"},
    {"shift_jis", "\xE6\x97\xA5\xE6\x9C\xAC\xE3\x81\x82\n"},
    {"euc-jp", "\xE6\x97\xA5\xE6\x9C\xAC\xE3\x81\x82\n"},
    {"iso-2022-jp", "\xE6\x97\xA5\xE6\x9C\xAC\xE3\x81\x82\n"},
    {"gbk", "\xE4\xBD\xA0\xE5\xA5\xBD\n"},
    {"gb18030", "\xE4\xBD\xA0\xC3\xBF\xF0\x9F\x98\x80\n"},
    {"big5", "\xE4\xBD\xA0\xE5\xA5\xBD\n"},
    {"euc-kr", "\xEA\xB0\x80\xEB\x82\x98\n"},
    {"johab", "\xEA\xB0\x80\xEB\x82\x98\n"},
    {"iso-2022-kr", "\xEA\xB0\x80\xEB\x82\x98\n"},
    {"utf-16le", "\xE2\x82\xAC\xF0\x9F\x98\x80\n"},
    {"utf-32be", "\xE2\x82\xAC\xF0\x9F\x98\x80\n"},
    {"utf-7", "\xE2\x82\xAC \xF0\x9F\x98\x80\n"},
};

TEST_F(BesideIconv, TheBytesAreTheSame) {
  for (const Row& row : rows) {
    write("utf8", row.text);
    const std::string to = std::string("-f utf-8 -t ") + row.name + " utf8";
    const std::string encoded = runIconv(to).out;
    EXPECT_NE(encoded, "") << row.name;
    expectConverted(run(to), encoded);
    write("encoded", encoded);
    expectConverted(run(std::string("-t utf-8 encoded -f ") + row.name), row.text);
  }
}

TEST_F(BesideIconv, DamageIsFoundAtTheSamePlace) {
  const Row damaged[] = {
      {"utf-8", "\xE2\x82 "}, {"cp1253", "\xFF"},   {"shift_jis", "\x82 "},
      {"gbk", "\x81 "},       {"cp949", "\x81 "},   {"big5", "\xA4 "},
      {"euc-jp", "\xA4 "},    {"gb18030", "\x81 "}, {"utf-16le", "\x01\xDC  "},
  };
  for (const auto& [name, damage] : damaged) {
    const std::string front =
        convert(Encoding::utf8(), *Encoding::find(name), "some text in front of it").text;
    write("bad", front + damage);
    const std::string from = std::string("-t utf-32le bad -f ") + name;
    const Finished other = runIconv(from);
    const Finished ours = run(from);
    EXPECT_EQ(ours.status, 1) << name;
    EXPECT_EQ(ours.out, other.out) << name;
    const std::string place = std::to_string(front.size());
    EXPECT_THAT(other.err, testing::HasSubstr("position " + place + "\n")) << name;
    EXPECT_THAT(ours.err, testing::HasSubstr(": byte " + place + ": ")) << name;
  }
}

}  // namespace
