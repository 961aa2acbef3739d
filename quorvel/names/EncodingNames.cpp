// The encodings of the text layer: every row of CodePages.def, and what only that layer
// serves.

#include "quorvel/names/EncodingNames.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

#include "quorvel/names/LooseName.hpp"

namespace quorvel {

namespace {

constexpr EncodingRow servedEverywhere[] = {
#define QUORVEL_CODE_PAGE(number, kind, table, title, names, ...) \
  {number, CodePageKind::kind, title, names, {__VA_ARGS__}},
#include "codepages/CodePages.def"
};

constexpr EncodingRow servedAsText[] = {
#define QUORVEL_TEXT_PAGE(number, kind, title, names, ...) \
  {number, CodePageKind::kind, title, names, {__VA_ARGS__}},
#include "codepages/TextPages.def"
};

constexpr auto rows = [] {
  std::array<EncodingRow, std::size(servedEverywhere) + std::size(servedAsText)> all{};
  std::ranges::merge(servedEverywhere, servedAsText, all.begin(), {}, &EncodingRow::codePage,
                     &EncodingRow::codePage);
  return all;
}();

int servedAsTextByName(std::string_view name) {
  if (name.size() > names::kLongestName) return 0;
  const names::LooseName wanted = names::loosen(name);
  int found = 0;
  for (const EncodingRow& row : servedAsText) {
    const auto compare = [&](std::string_view other) {
      if (names::loosen(other).view() == wanted.view()) found = row.codePage;
    };
    names::forEachName(row.names, compare);
    const std::string number = std::to_string(row.codePage);
    for (const char* prefix : {"", "cp", "windows"}) compare(prefix + number);
  }
  return found;
}

}  // namespace

const unsigned int encodingCount = std::size(rows);

const EncodingRow& encodingAt(unsigned int row) { return rows[row]; }

unsigned int rowOfEncoding(int codePage) {
  const auto* found = std::ranges::lower_bound(rows, codePage, {}, &EncodingRow::codePage);
  if (found == rows.end() || found->codePage != codePage) return encodingCount;
  return static_cast<unsigned int>(found - rows.begin());
}

int encodingByName(std::string_view name) {
  const int number = names::codePageByName(name);
  return number != 0 ? number : servedAsTextByName(name);
}

}  // namespace quorvel
