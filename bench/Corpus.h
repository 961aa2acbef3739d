#pragma once

#include <cstddef>
#include <string>

namespace quorvel::bench {

/// How text is written down.
enum class Style {
  written,  ///< as in its file
  typed,    ///< as on a typewriter, for pages without typographers' signs
  direct,   ///< with no ASCII but what every writer of UTF-7 leaves as it is
};

/// A language that there is text of.
struct Language {
  const char* name;
  const char* file;   ///< in corpora/, without ".txt"
  const char* joint;  ///< between two sentences of a paragraph
  Style style;
};

/// The language of that name; throws `std::runtime_error` for any other.
const Language& languageNamed(const std::string& name);

/// UTF-8 text of about `numBytes` bytes, whole sentences only, the same at every
/// call: the sentences of the language's file in one shuffled order after the
/// other, in paragraphs of a few, with CR LF behind each paragraph. Where a
/// sentence has a blank ({n} a number, {d} a digit, {y} a year, {h} a time of
/// day, {w} a word as it is written everywhere), every use of it fills another
/// value in. At least one paragraph whatever `numBytes` is.
std::string makeText(const Language& language, std::size_t numBytes);

}  // namespace quorvel::bench
