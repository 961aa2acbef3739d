#pragma once

#include <iterator>

#include "quorvel/base/StringBuffer.h"

namespace quorvel {

enum class CodePageKind { Unicode, Gsm, Iso2022, SingleByte, MultiByte };

/// Where the mappings of a code page come from. The rows of CodePages.def are
/// written with the words below.
struct TableSource {
  const char* packed = nullptr;               ///< the packed text of a single-byte page
  bool (*assemble)(StringBuffer&) = nullptr;  ///< or what assembles that of a multibyte page
  const char* changes = nullptr;              ///< a list of changes on top of it
  int buckets = 0;                            ///< slots of a multibyte page's tables
  int sharedWith = 0;                         ///< or the page whose tables this one uses
  bool isRouted = true;                       ///< false: tables are built, but never used
};

constexpr TableSource noTable() { return {.isRouted = false}; }
constexpr TableSource text(const char* packed) { return {.packed = packed}; }
constexpr TableSource unrouted(const char* packed) { return {.packed = packed, .isRouted = false}; }
constexpr TableSource pieces(bool (*assemble)(StringBuffer&), int buckets) {
  return {.assemble = assemble, .buckets = buckets};
}
constexpr TableSource amended(bool (*assemble)(StringBuffer&), const char* changes, int buckets) {
  return {.assemble = assemble, .changes = changes, .buckets = buckets};
}
constexpr TableSource tableOf(int codePage) { return {.sharedWith = codePage}; }

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
#include "quorvel/base/CodePages.def"
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
