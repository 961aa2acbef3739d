#pragma once

// What conversions know of the code pages. The names are for names/CharsetNaming.h.

#include <iterator>

#include "codepages/CodePageRow.hpp"

namespace quorvel {

/// One code page, as far as conversions are concerned; of a size that makes rows
/// quick to find.
struct alignas(64) CodePage {
  int number;
  CodePageKind kind;
  TableSource table;
  CodePageTraits traits;

  bool hasTable() const {
    return kind == CodePageKind::SingleByte || kind == CodePageKind::MultiByte;
  }
};

inline constexpr int codePageNumbers[] = {
#define QUORVEL_CODE_PAGE(number, kind, table, title, names, ...) (number),
#include "codepages/CodePages.def"
};

inline constexpr unsigned int codePageCount = std::size(codePageNumbers);

/// The code page at `index`, below `codePageCount`.
const CodePage& codePageAt(unsigned int index);

/// The index of the code page with this number, or `codePageCount` for a number
/// that is not served.
unsigned int indexOfCodePage(int number);

/// The index of a row.
unsigned int indexOf(const CodePage& page);

/// The row of the code page with this number. One that is not served has a row of
/// the number 0, without tables and with nothing particular about it.
const CodePage& findCodePage(int number);

/// A code page as a conversion names it: the number, which stands for it, and the
/// row, looked up once.
class PageRef {
 public:
  explicit PageRef(int number) : m_number(number), m_row(&findCodePage(number)) {}

  operator int() const { return m_number; }

  bool isServed() const { return m_row->number != 0; }
  const CodePage& row() const { return *m_row; }
  const CodePageTraits& traits() const { return m_row->traits; }

  /// Whether conversions take its tables.
  bool isRouted() const { return m_row->table.isRouted; }

  /// The code page that this ISO-2022 encoding stands on, 0 for any other page.
  int wrapped() const { return m_row->table.wrapped; }

 private:
  int m_number;
  const CodePage* m_row;
};

}  // namespace quorvel
