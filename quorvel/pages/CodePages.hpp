#pragma once

#include <iterator>

#include "codepages/CodePageRow.hpp"

namespace quorvel {

/// One code page, as far as the tables are concerned.
struct CodePage {
  int number;
  CodePageKind kind;
  TableSource table;

  bool hasTable() const {
    return kind == CodePageKind::SingleByte || kind == CodePageKind::MultiByte;
  }
};

inline constexpr int codePageNumbers[] = {
#define QUORVEL_CODE_PAGE(number, kind, table, title, names) (number),
#include "codepages/CodePages.def"
};

inline constexpr unsigned int codePageCount = std::size(codePageNumbers);

/// The code page at `index`, below `codePageCount`.
const CodePage& codePageAt(unsigned int index);

/// The index of the code page with this number, or `codePageCount` for a number
/// that is not served.
unsigned int indexOfCodePage(int number);

/// Whether conversions take the tables of the code page with this number.
bool isRouted(int number);

}  // namespace quorvel
