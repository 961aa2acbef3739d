// docs/code-pages.md lists what the library serves, all of it and nothing else.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/names/CharsetNaming.h"
#include "quorvel/pages/CodePages.hpp"

namespace {

using quorvel::CodePageKind;

// Each row of the document behind the heading that it stands under.
std::vector<std::string> documentedRows() {
  std::vector<std::string> rows;
  std::ifstream document(QUORVEL_DOCS_DIR "/code-pages.md");
  std::string heading;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## ")) heading = line.substr(3) + ' ';
    if (line.starts_with("| ") && line[2] >= '0' && line[2] <= '9') {
      rows.push_back(heading + line);
    }
  }
  return rows;
}

std::string_view headingOf(const quorvel::CodePage& page) {
  if (page.hasTable() && !page.table.isRouted) return "Not converted";
  switch (page.kind) {
    case CodePageKind::Unicode:
      return "Unicode";
    case CodePageKind::Gsm:
      return "GSM";
    case CodePageKind::Iso2022:
      return "ISO-2022";
    case CodePageKind::SingleByte:
      return "Single-byte";
    case CodePageKind::MultiByte:
      break;
  }
  return "Multibyte";
}

std::string rowOf(const quorvel::CharsetNaming::Entry& entry) {
  const std::string_view names = entry.names;
  const std::string name(names.substr(0, names.find(' ')));
  const auto& page = quorvel::codePageAt(quorvel::indexOfCodePage(entry.codePage));
  return std::string(headingOf(page)) + " | " + std::to_string(entry.codePage) + " | " +
         entry.title + " | `" + name + "` |";
}

TEST(CodePagesDocument, ListsEachServedCodePageUnderItsKind) {
  std::vector<std::string> expected;
  for (unsigned int i = 0; i < quorvel::CharsetNaming::count(); ++i) {
    expected.push_back(rowOf(quorvel::CharsetNaming::at(i)));
  }
  std::vector<std::string> documented = documentedRows();
  std::sort(expected.begin(), expected.end());
  std::sort(documented.begin(), documented.end());
  EXPECT_EQ(documented, expected);
}

}  // namespace
