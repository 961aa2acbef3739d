#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/InputFile.h"

/// What the lines of mapping files have in common; codepages/README.md describes
/// it. Whatever is not in order ends the packing with the line.
namespace pack {

/// How many codes a row holds.
inline constexpr std::size_t codesPerRow = 16;

/// Stands where a code of a row has no character.
inline constexpr std::string_view nothing = "....";

/// A code page that a file refers to, 0 for none.
struct Reference {
  int codePage = 0;
  unsigned int line = 1;
};

/// Goes through the lines of a file, one after the other: what stands in the line at
/// hand is in `m_words`, and what is wrong with it goes to `fail`.
class LineReader {
 protected:
  explicit LineReader(const InputFile& file) : m_file(file) {}

  /// Calls `readLine()` for each line that has words.
  template <typename ReadLine>
  void forEachLine(const ReadLine& readLine) {
    for (const Line& line : m_file.lines) {
      m_line = &line;
      m_words = splitWords(line.text);
      if (!m_words.empty()) readLine();
    }
  }

  /// The UTF-16 unit of four digits; never 0 and no surrogate.
  unsigned int unitOf(std::string_view text) const;

  Reference referenceOf(std::string_view text) const;

  /// Fails unless the words are a label and a whole row for codes from `first` on.
  void checkRow(unsigned int first) const;

  [[noreturn]] void fail(const std::string& what) const { m_file.fail(*m_line, what); }

  const InputFile& m_file;
  const Line* m_line = nullptr;
  std::vector<std::string_view> m_words;
};

}  // namespace pack
