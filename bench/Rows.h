#pragma once

#include <string>
#include <vector>

#include "Corpus.h"

namespace quorvel::bench {

/// What the encodings of a group of rows have in common.
enum class Family { utf16, utf32, singleByte, multibyte, legacy, iso2022, utf7 };

const char* titleOf(Family family);

/// An encoding under its number here and its names elsewhere.
struct Encoding {
  Family family;
  int codePage;
  const char* languages;   ///< what text is measured in it, separated by spaces
  const char* iconvNames;  ///< what glibc calls it
  const char* icuNames;    ///< what ICU calls it
};

/// One line of the table: a conversion of text in a language.
struct Row {
  Family family;
  const Encoding* from;
  const Encoding* to;
  const Language* language;

  /// "932 to 65001, japanese"
  std::string name() const;
};

inline constexpr int utf8 = 65001;
inline constexpr int utf16le = 1200;

/// Every row, in the order of the table.
std::vector<Row> allRows();

/// The encoding of a code page that some row has; throws `std::runtime_error`
/// for any other.
const Encoding& encodingOf(int codePage);

/// The words of a list separated by spaces.
std::vector<std::string> wordsOf(const char* list);

}  // namespace quorvel::bench
