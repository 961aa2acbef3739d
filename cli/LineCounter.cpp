#include "cli/LineCounter.h"

#include <cstddef>

namespace qvconv {

namespace {

constexpr char16_t lf = 0x0A;
constexpr char16_t cr = 0x0D;
constexpr char16_t nel = 0x85;

char16_t unitAt(std::string_view utf16le, std::size_t index) {
  const auto low = static_cast<unsigned char>(utf16le[2 * index]);
  const auto high = static_cast<unsigned char>(utf16le[2 * index + 1]);
  return static_cast<char16_t>(high << 8 | low);
}

// A character beyond U+FFFF counts with the first of its two units.
bool isSecondHalf(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

bool LineCounter::isLineEnd(char16_t unit) const {
  return unit == lf || unit == cr || (m_endsAtNel && unit == nel);
}

void LineCounter::take(std::string_view utf16le) {
  const std::size_t count = utf16le.size() / 2;
  if (count == 0) return;

  std::uint64_t lines = 0;
  char16_t previous = m_previous;
  for (std::size_t i = 0; i < count; ++i) {
    const char16_t unit = unitAt(utf16le, i);
    lines += isLineEnd(unit) && !(unit == lf && previous == cr) ? 1 : 0;
    previous = unit;
  }
  m_previous = previous;
  m_position.line += lines;

  std::uint64_t characters = 0;
  std::size_t i = count;
  for (; i > 0 && !isLineEnd(unitAt(utf16le, i - 1)); --i) {
    characters += isSecondHalf(unitAt(utf16le, i - 1)) ? 0 : 1;
  }
  m_position.column = (i > 0 ? 1 : m_position.column) + characters;
}

}  // namespace qvconv
