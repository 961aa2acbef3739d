#include "quorvel/support/CodePages.h"

#include <algorithm>
#include <iterator>

#include "quorvel/support/PackedTables.h"

namespace quorvel {

namespace {

constexpr CodePage codePages[] = {
#define QUORVEL_CODE_PAGE(number, kind, table, title, names) {number, CodePageKind::kind, table},
#include "quorvel/base/CodePages.def"
};

static_assert(std::ranges::is_sorted(codePages, {}, &CodePage::number));

}  // namespace

const CodePage& codePageAt(unsigned int index) { return codePages[index]; }

unsigned int indexOfCodePage(int number) {
  const auto* found =
      std::lower_bound(std::begin(codePages), std::end(codePages), number,
                       [](const CodePage& page, int wanted) { return page.number < wanted; });
  const bool isServed = found != std::end(codePages) && found->number == number;
  return isServed ? static_cast<unsigned int>(found - codePages) : codePageCount;
}

bool isRouted(int number) {
  const unsigned int index = indexOfCodePage(number);
  return index != codePageCount && codePageAt(index).table.isRouted;
}

}  // namespace quorvel
