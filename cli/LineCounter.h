#pragma once

#include <cstdint>
#include <string_view>

namespace qvconv {

/// A place in a text as people count: the first character stands in line 1, column 1.
/// Columns count characters, not bytes and not cells of a screen.
struct Position {
  std::uint64_t line = 1;
  std::uint64_t column = 1;

  bool operator==(const Position&) const = default;
};

/// Counts the lines and columns of a text that comes in pieces. A line ends at LF, CR
/// LF or CR, in text that was EBCDIC also at U+0085.
class LineCounter {
 public:
  enum class Ends { lfAndCr, lfCrAndNel };

  explicit LineCounter(Ends ends) : m_endsAtNel(ends == Ends::lfCrAndNel) {}

  /// Counts some characters in UTF-16LE, none of them cut.
  void take(std::string_view utf16le);

  /// Where the next character stands. A LF behind a CR belongs to the line end and
  /// takes no column.
  Position position() const { return m_position; }

 private:
  bool isLineEnd(char16_t unit) const;

  bool m_endsAtNel;
  char16_t m_previous = 0;
  Position m_position;
};

}  // namespace qvconv
