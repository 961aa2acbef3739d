// What the two kinds of mapping files have in common.

#include "tools/Notation.h"

namespace pack {

unsigned int unitOf(const InputFile& file, const Line& line, std::string_view text) {
  const int unit = parseHex(text, 4);
  if (unit <= 0) file.fail(line, "not a character: " + std::string(text));
  if (unit >= 0xD800 && unit <= 0xDFFF) file.fail(line, "a surrogate: " + std::string(text));
  return static_cast<unsigned int>(unit);
}

Reference referenceOf(const InputFile& file, const Line& line, std::string_view text) {
  const int number = parseCodePage(text);
  if (number == 0) file.fail(line, "not the number of a code page: " + std::string(text));
  return {number, line.number};
}

void checkRow(const InputFile& file, const Line& line, const std::vector<std::string_view>& words,
              unsigned int first) {
  if (first % codesPerRow != 0) file.fail(line, "a row begins at a multiple of 10");
  if (words.size() != 1 + codesPerRow) file.fail(line, "a row has sixteen columns");
}

}  // namespace pack
