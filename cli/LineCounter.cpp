#include "cli/LineCounter.h"

#include <cstddef>
#include <cstring>

namespace qvconv {

namespace {

constexpr char16_t lf = 0x0A;
constexpr char16_t cr = 0x0D;
constexpr char16_t nel = 0x85;

// On the hosts that the library runs on, which have the low byte first.
char16_t unitAt(std::string_view utf16le, std::size_t index) {
  char16_t unit = 0;
  std::memcpy(&unit, utf16le.data() + 2 * index, sizeof unit);
  return unit;
}

// A character beyond U+FFFF counts with the first of its two units.
bool isSecondHalf(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

LineCounter::LineCounter(Ends ends) : m_third(ends == Ends::lfCrAndNel ? nel : lf) {}

bool LineCounter::isLineEnd(char16_t unit) const {
  return unit == lf || unit == cr || unit == m_third;
}

void LineCounter::take(std::string_view utf16le) {
  const std::size_t count = utf16le.size() / 2;
  if (count == 0) return;
  m_position.line += countLineEnds(utf16le, count);
  m_previous = unitAt(utf16le, count - 1);

  std::uint64_t characters = 0;
  std::size_t i = count;
  for (; i > 0 && !isLineEnd(unitAt(utf16le, i - 1)); --i) {
    characters += isSecondHalf(unitAt(utf16le, i - 1)) ? 0 : 1;
  }
  m_position.column = (i > 0 ? 1 : m_position.column) + characters;
}

// Each unit is looked at with the one in front of it, and without a branch, so that the
// compiler can take many at a time.
std::uint64_t LineCounter::countLineEnds(std::string_view utf16le, std::size_t count) const {
  const auto endsWith = [third = m_third](char16_t unit, char16_t before) {
    const unsigned int isEnd =
        unsigned{unit == lf} | unsigned{unit == cr} | unsigned{unit == third};
    const unsigned int isSecondOfTwo = unsigned{unit == lf} & unsigned{before == cr};
    return isEnd & ~isSecondOfTwo;
  };
  constexpr std::size_t mostAtOnce = 1U << 16;
  std::uint64_t lines = endsWith(unitAt(utf16le, 0), m_previous);
  for (std::size_t begin = 1; begin < count; begin += mostAtOnce) {
    const std::size_t end = count - begin > mostAtOnce ? begin + mostAtOnce : count;
    unsigned int some = 0;
    for (std::size_t i = begin; i < end; ++i) {
      some += endsWith(unitAt(utf16le, i), unitAt(utf16le, i - 1));
    }
    lines += some;
  }
  return lines;
}

}  // namespace qvconv
