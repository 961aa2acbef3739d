#pragma once

#include <cstddef>
#include <string_view>

#include "tools/InputFile.h"

/// What the lines of mapping files have in common; codepages/README.md describes
/// it. Whatever is not in order ends the packing with the line.
namespace pack {

/// How many codes a row holds.
inline constexpr std::size_t codesPerRow = 16;

/// Stands where a code of a row has no character.
inline constexpr std::string_view nothing = "....";

/// The UTF-16 unit of four digits; never 0 and no surrogate.
unsigned int unitOf(const InputFile& file, const Line& line, std::string_view text);

/// A code page that a file refers to, 0 for none.
struct Reference {
  int codePage = 0;
  unsigned int line = 1;
};

Reference referenceOf(const InputFile& file, const Line& line, std::string_view text);

/// Ends the packing unless `words` are a label and a whole row for codes from
/// `first` on.
void checkRow(const InputFile& file, const Line& line, const std::vector<std::string_view>& words,
              unsigned int first);

}  // namespace pack
