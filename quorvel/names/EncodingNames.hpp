#pragma once

#include <string_view>

#include "codepages/CodePageRow.hpp"

namespace quorvel {

/// One encoding that there is, as far as naming and choosing go. All texts are static.
struct EncodingRow {
  int codePage;
  CodePageKind kind;
  const char* title;
  const char* names;  ///< separated by spaces, the preferred one first
  CodePageTraits traits;
};

/// The rows of CodePages.def, and those that only the text layer serves, in ascending
/// order of the numbers.
extern const unsigned int encodingCount;
const EncodingRow& encodingAt(unsigned int row);

/// The row of a number, `encodingCount` when it is not served.
unsigned int rowOfEncoding(int codePage);

/// The number of a name, 0 when it is unknown.
int encodingByName(std::string_view name);

}  // namespace quorvel
