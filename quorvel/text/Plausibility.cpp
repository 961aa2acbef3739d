#include "quorvel/text/Plausibility.hpp"

#include <algorithm>
#include <iterator>

namespace quorvel::text {

namespace {

// Which of small letters are capitals after all.
enum class Capitals { no, even, odd };

// What begins at a character and goes on to the next row.
struct Range {
  char32_t first;
  Look look;
  Alphabet alphabet = Alphabet::none;
  Capitals capitals = Capitals::no;
};

using enum Look;
using enum Alphabet;

constexpr Range ranges[] = {
    {0x0000, misplaced},
    {0x0009, blank},
    {0x000E, misplaced},
    {0x001A, blank},  // ends DOS texts
    {0x001B, misplaced},
    {0x0020, blank},
    {0x0021, punctuation},
    {0x0027, joiner},
    {0x0028, punctuation},
    {0x002D, joiner},
    {0x002E, punctuation},
    {0x0030, blank},
    {0x003A, punctuation},
    {0x0041, capital, latin},
    {0x005B, punctuation},
    {0x0061, small, latin},
    {0x007B, punctuation},
    {0x007F, misplaced},
    {0x00A0, blank},
    {0x00A1, punctuation},
    {0x00A2, sign},
    {0x00AA, letter, latin},
    {0x00AB, punctuation},
    {0x00AC, sign},
    {0x00AD, joiner},
    {0x00AE, sign},
    {0x00B7, joiner},
    {0x00B8, sign},
    {0x00BA, letter, latin},
    {0x00BB, punctuation},
    {0x00BC, sign},
    {0x00BF, punctuation},
    {0x00C0, capital, latin},
    {0x00D7, sign},
    {0x00D8, capital, latin},
    {0x00DF, small, latin},
    {0x00F7, sign},
    {0x00F8, small, latin},
    {0x0100, small, latin, Capitals::even},
    {0x0139, small, latin, Capitals::odd},
    {0x0149, small, latin, Capitals::even},
    {0x0178, capital, latin},
    {0x0179, small, latin, Capitals::odd},
    {0x017F, small, latin},
    {0x0180, letter, latin},
    {0x02B0, sign},
    {0x0300, joiner},
    {0x0370, seldom},
    {0x0384, sign},
    {0x0386, capital, greek},
    {0x0390, small, greek},
    {0x0391, capital, greek},
    {0x03AC, small, greek},
    {0x03CF, seldom},
    {0x0400, capital, cyrillic},
    {0x0430, small, cyrillic},
    {0x0460, letter, cyrillic},
    {0x0500, seldom},
    {0x05B0, joiner},
    {0x05D0, letter, hebrew},
    {0x05F3, seldom},
    {0x060C, punctuation},
    {0x060D, seldom},
    {0x061B, punctuation},
    {0x0621, letter, arabic},
    {0x064B, joiner},
    {0x0660, blank},
    {0x066A, sign},
    {0x0670, letter, arabic},
    {0x06D4, punctuation},
    {0x06D5, seldom},
    {0x0E01, letter, thai},
    {0x0E3F, sign},
    {0x0E40, letter, thai},
    {0x0E50, blank},
    {0x0E5A, sign},
    {0x0E5C, seldom},
    {0x1E00, letter, latin},
    {0x1F00, seldom},
    {0x2002, blank},
    {0x200C, joiner},
    {0x2016, punctuation},
    {0x2019, joiner},
    {0x201A, punctuation},
    {0x203C, sign},
    {0x2070, seldom},
    {0x20A0, sign},
    {0x20B0, seldom},
    {0x2100, sign},
    {0x2700, seldom},
    {0x3000, punctuation},
    {0x3005, letter, eastAsian},
    {0x3008, punctuation},
    {0x3020, seldom},
    {0x3041, letter, eastAsian},
    {0x3131, letter, eastAsian},
    {0x318F, seldom},
    {0x3200, sign},
    {0x3400, seldom},
    {0x4E00, letter, eastAsian},
    {0x9FA6, seldom},
    {0xAC00, letter, eastAsian},
    {0xD7A4, seldom},
    {0xE000, misplaced},
    {0xF900, seldom},
    {0xFB50, letter, arabic},
    {0xFE00, seldom},
    {0xFE30, punctuation},
    {0xFE70, letter, arabic},
    {0xFEFF, seldom},
    {0xFF01, punctuation},
    {0xFF10, blank},
    {0xFF1A, punctuation},
    {0xFF21, letter, eastAsian},
    {0xFF3B, punctuation},
    {0xFF41, letter, eastAsian},
    {0xFF5B, punctuation},
    {0xFF61, seldom},  // half-width katakana, which bytes of kanji become
    {0xFFE0, sign},
    {0xFFE7, seldom},
    {0xFFFE, misplaced},
    {0x10000, seldom},
    {0x1F000, sign},
    {0x20000, seldom},
    {0xE0000, misplaced},
};

static_assert(std::ranges::is_sorted(ranges, {}, &Range::first));

constexpr bool isLetter(Look look) { return look == letter || look == small || look == capital; }

}  // namespace

Plausibility::Seen Plausibility::lookAt(char32_t character) {
  const Range* behind =
      std::upper_bound(std::begin(ranges), std::end(ranges), character,
                       [](char32_t wanted, const Range& range) { return wanted < range.first; });
  const Range& range = behind[-1];
  const bool isCapital = range.capitals == (character % 2 == 0 ? Capitals::even : Capitals::odd);
  return {isCapital ? capital : range.look, range.alphabet, character < 0x80};
}

unsigned int Plausibility::faultsAlone(const Seen& seen) {
  return seen.look == misplaced ? 8 : seen.look == seldom ? 4 : 0;
}

unsigned int Plausibility::faultsWithLast(const Seen& seen) const {
  if (!isLetter(seen.look) || (seen.isAscii && m_last.isAscii)) return 0;
  if (isLetter(m_last.look)) {
    if (seen.alphabet != m_last.alphabet) {
      // Names in Latin letters stand in East Asian text without blanks.
      return seen.alphabet == eastAsian || m_last.alphabet == eastAsian ? 0 : 3;
    }
    if (seen.look != capital) return 0;
    return m_last.look == small ? 2 : 1;
  }
  const bool isWithinWord = isLetter(m_lastButOne.look) && !m_last.isAscii &&
                            (m_last.look == sign || m_last.look == punctuation);
  return isWithinWord && seen.alphabet != eastAsian ? 2 : 0;
}

void Plausibility::see(char32_t character) {
  ++m_characters;
  m_hasNull |= character == 0;
  const Seen seen = lookAt(character);
  m_faults += faultsAlone(seen) + faultsWithLast(seen);
  m_lastButOne = m_last;
  m_last = seen;
}

}  // namespace quorvel::text
