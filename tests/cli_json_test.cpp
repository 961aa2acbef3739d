// JSON as the command writes it.

#include <gtest/gtest.h>

#include "cli/Json.h"

namespace {

using qvconv::json::Array;
using qvconv::json::Object;
using qvconv::json::quoted;

TEST(Json, QuotesStringsAndEscapesWhatHasTo) {
  EXPECT_EQ(quoted(""), R"("")");
  EXPECT_EQ(quoted("caf\u00E9/a b"), "\"caf\u00E9/a b\"");
  EXPECT_EQ(quoted("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(quoted(std::string_view("\0\t\n\x1F\x7F", 5)), R"("\u0000\u0009\u000A\u001F\u007F")");
}

TEST(Json, StaysUtf8WhateverAFileIsCalled) {
  EXPECT_EQ(quoted("a\xFF"
                   "b\xE3\x81"),
            "\"a\uFFFDb\uFFFD\"");
  EXPECT_EQ(quoted("\uFEFFx"), "\"\uFEFFx\"");
}

TEST(Json, WritesObjectsMemberByMember) {
  EXPECT_EQ(Object().text(), "{}");
  EXPECT_EQ(Object()
                .add("file", "-")
                .add("offset", 12345678901ULL)
                .add("guess", true)
                .add("names", std::string("a\n"))
                .addJson("list", Array().add("x").addJson("1").text())
                .text(),
            R"({"file":"-","offset":12345678901,"guess":true,"names":"a\u000A","list":["x",1]})");
  EXPECT_EQ(Array().text(), "[]");
}

}  // namespace
