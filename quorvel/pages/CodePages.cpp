// The rows of CodePages.def as data, checked while this is compiled, and the way from a
// number to its row: a perfect hash, also found while this is compiled.

#include "quorvel/pages/CodePages.hpp"

#include <algorithm>
#include <array>
#include <span>

#include "quorvel/pages/PackedTables.hpp"

namespace quorvel {

namespace {

// The rows, and one behind them for all numbers that are not served.
constexpr CodePage codePages[] = {
#define QUORVEL_CODE_PAGE(number, kind, table, title, names, ...) \
  {number, CodePageKind::kind, table, {__VA_ARGS__}},
#include "codepages/CodePages.def"
    {0, CodePageKind::Unicode, noTable(), {}},
};

constexpr std::span rows(codePages, codePageCount);

static_assert(std::ranges::is_sorted(rows, {}, &CodePage::number));

constexpr const CodePage& rowOf(int number) {
  return *std::ranges::find(rows, number, &CodePage::number);
}

// A table is made for its owner, Arabic digits and all.
static_assert(std::ranges::all_of(codePages, [](const CodePage& page) {
  const int owner = page.table.sharedWith;
  return !owner || page.traits.takesAsciiDigits == rowOf(owner).traits.takesAsciiDigits;
}));

static_assert(std::ranges::all_of(codePages, [](const CodePage& page) {
  return page.traits.bytesPerError == 1 || page.traits.bytesPerError == 2;
}));

static_assert(std::ranges::all_of(codePages, [](const CodePage& page) {
  return (page.kind == CodePageKind::Iso2022) == (page.table.wrapped != 0);
}));

// Every conversion asks for two rows or three. The place of a row is what a
// multiplier scatters its number to; the first that scatters no two of them to one
// place is found while this is compiled. A binary search takes 80 instructions more
// for each row, where a text of 16 bytes takes 500 to 1200 in all.
constexpr unsigned int placeBits = 11;

constexpr unsigned int placeOf(int number, unsigned int multiplier) {
  return static_cast<unsigned int>(number) * multiplier >> (32 - placeBits);
}

// For each place the index of its row; that of the row behind all others for none.
struct Places {
  unsigned int multiplier;
  std::array<unsigned char, 1 << placeBits> indexes;

  constexpr bool scatter() {
    static_assert(codePageCount < 256);
    indexes.fill(codePageCount);
    for (unsigned int index = 0; index < codePageCount; ++index) {
      unsigned char& place = indexes[placeOf(codePages[index].number, multiplier)];
      if (place != codePageCount) return false;
      place = static_cast<unsigned char>(index);
    }
    return true;
  }
};

constexpr Places places = [] {
  Places result{0x9E3779B1, {}};
  while (!result.scatter()) result.multiplier += 2;
  return result;
}();

}  // namespace

const CodePage& codePageAt(unsigned int index) { return codePages[index]; }

unsigned int indexOf(const CodePage& page) { return static_cast<unsigned int>(&page - codePages); }

unsigned int indexOfCodePage(int number) { return indexOf(findCodePage(number)); }

const CodePage& findCodePage(int number) {
  const CodePage& page = codePages[places.indexes[placeOf(number, places.multiplier)]];
  return page.number == number ? page : codePages[codePageCount];
}

}  // namespace quorvel
