// What the two kinds of mapping files have in common.

#include "tools/Notation.h"

namespace pack {

unsigned int LineReader::unitOf(std::string_view text) const {
  const int unit = parseHex(text, 4);
  if (unit <= 0) fail("not a character: " + std::string(text));
  if (unit >= 0xD800 && unit <= 0xDFFF) fail("a surrogate: " + std::string(text));
  return static_cast<unsigned int>(unit);
}

Reference LineReader::referenceOf(std::string_view text) const {
  const int number = parseCodePage(text);
  if (number == 0) fail("not the number of a code page: " + std::string(text));
  return {number, m_line->number};
}

void LineReader::checkRow(unsigned int first) const {
  if (first % codesPerRow != 0) fail("a row begins at a multiple of 10");
  if (m_words.size() != 1 + codesPerRow) fail("a row has sixteen columns");
}

}  // namespace pack
