#pragma once

#include <vector>

#include "quorvel/pages/CodePages.hpp"

namespace quorvel_test {

/// The numbers of the rows for which `isWanted(row)`, in ascending order.
template <typename Predicate>
std::vector<int> codePagesThat(Predicate isWanted) {
  std::vector<int> numbers;
  for (unsigned int i = 0; i < quorvel::codePageCount; ++i) {
    const quorvel::CodePage& page = quorvel::codePageAt(i);
    if (isWanted(page)) numbers.push_back(page.number);
  }
  return numbers;
}

/// The table-driven pages of one kind that conversions take.
inline std::vector<int> convertedPages(quorvel::CodePageKind kind) {
  return codePagesThat(
      [kind](const quorvel::CodePage& page) { return page.kind == kind && page.table.isRouted; });
}

}  // namespace quorvel_test
