// The order of Mac Arabic. Some bytes are marked as written from right to left; each run of
// these is reversed, and those that are twins of ASCII become ASCII. In 41 B1 B2 42 the run
// is B1 B2, twins of the digits 1 and 2, and the text becomes 41 32 31 42.

#include "quorvel/pages/MacArabic.hpp"

#include <algorithm>
#include <iterator>

namespace quorvel {

namespace {

constexpr unsigned int firstFlagged = 0x20;

struct ByteRange {
  unsigned int first;
  unsigned int last;
};

constexpr ByteRange rightToLeftRanges[] = {
    {0x81, 0x81}, {0x8C, 0x8C}, {0x93, 0x93}, {0x98, 0x98}, {0x9B, 0x9B}, {0xA0, 0xA4},
    {0xA6, 0xAB}, {0xAD, 0xBA}, {0xBC, 0xBE}, {0xC0, 0xC0}, {0xDB, 0xDF}, {0xFB, 0xFD},
};

constexpr std::array<int, 224> makeFlags() noexcept {
  std::array<int, 224> flags = {};
  for (const ByteRange& range : rightToLeftRanges) {
    for (unsigned int byte = range.first; byte <= range.last; ++byte) {
      flags[byte - firstFlagged] = 1;
    }
  }
  return flags;
}

bool isRightToLeft(unsigned char byte) {
  return byte >= firstFlagged && MacArabicRL[byte - firstFlagged] == 1;
}

// The marked bytes that have an ASCII twin 0x80 below them, and the no-break
// space. Arabic percent sign (A5) and comma (AC) lie among them and have none.
unsigned char remap(unsigned char byte) {
  constexpr unsigned char twins[] = {0xBA, 0xBC, 0xBD, 0xBE, 0xDB, 0xDC,
                                     0xDD, 0xDE, 0xDF, 0xFB, 0xFC, 0xFD};
  if (byte == 0x81) return 0xA0;
  const bool isDigitOrSign = byte >= 0xA0 && byte <= 0xB9 && byte != 0xA5 && byte != 0xAC;
  const bool isTwin = std::find(std::begin(twins), std::end(twins), byte) != std::end(twins);
  return isDigitOrSign || isTwin ? byte ^ 0x80 : byte;
}

}  // namespace

constinit const std::array<int, 224> MacArabicRL = makeFlags();

void reorderMacArabic(unsigned char* text, std::size_t n) {
  bool inRun = false;
  std::size_t runStart = 0;
  const auto reverseRun = [&](std::size_t runEnd) { std::reverse(text + runStart, text + runEnd); };
  for (std::size_t i = 0; i < n; ++i) {
    // The flags speak of the byte as it came, so they are asked before it is
    // remapped. The byte that ends a run is not marked and starts none.
    const bool isMarked = isRightToLeft(text[i]);
    if (!inRun && isMarked) runStart = i;
    if (inRun && !isMarked) reverseRun(i);
    inRun = isMarked;
    text[i] = remap(text[i]);
  }
  if (inRun) reverseRun(n);
}

}  // namespace quorvel
