#include "quorvel/pages/CodePages.hpp"

#include <algorithm>
#include <array>
#include <iterator>

#include "quorvel/pages/PackedTables.hpp"

namespace quorvel {

namespace {

constexpr CodePage codePages[] = {
#define QUORVEL_CODE_PAGE(number, kind, table, title, names, ...) \
  {number, CodePageKind::kind, table, {__VA_ARGS__}},
#include "codepages/CodePages.def"
};

static_assert(std::ranges::is_sorted(codePages, {}, &CodePage::number));

constexpr const CodePage& rowOf(int number) {
  return *std::ranges::find(codePages, number, &CodePage::number);
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

// Every conversion asks for the rows of its numbers several times. They are found
// at the place that the number is scattered to or, where that is taken, at the
// next that is free; a place that nothing is at has an index that no row has.
constexpr unsigned int placeBits = 10;

constexpr unsigned int placeOf(int number) {
  return static_cast<unsigned int>(number) * 0x9E3779B1 >> (32 - placeBits);
}

constexpr unsigned int nextPlace(unsigned int place) { return (place + 1) % (1 << placeBits); }

constexpr auto places = [] {
  static_assert(codePageCount < 256);
  std::array<unsigned char, 1 << placeBits> result{};
  result.fill(codePageCount);
  for (unsigned int index = 0; index < codePageCount; ++index) {
    unsigned int place = placeOf(codePageNumbers[index]);
    while (result[place] != codePageCount) place = nextPlace(place);
    result[place] = static_cast<unsigned char>(index);
  }
  return result;
}();

}  // namespace

const CodePage& codePageAt(unsigned int index) { return codePages[index]; }

unsigned int indexOfCodePage(int number) {
  for (unsigned int place = placeOf(number);; place = nextPlace(place)) {
    const unsigned int index = places[place];
    if (index == codePageCount || codePageNumbers[index] == number) return index;
  }
}

unsigned int indexOf(const CodePage& page) { return static_cast<unsigned int>(&page - codePages); }

const CodePage* findCodePage(int number) {
  const unsigned int index = indexOfCodePage(number);
  return index == codePageCount ? nullptr : codePages + index;
}

const CodePageTraits& traitsOf(int number) {
  static constexpr CodePageTraits none;
  const CodePage* page = findCodePage(number);
  return page ? page->traits : none;
}

}  // namespace quorvel
