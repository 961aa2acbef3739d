#pragma once

#include <string>

namespace qvconv {

/// What kind of character this is, as far as a chart colours it.
enum class Category { control, ascii, letter, sign, privateUse };

Category categoryOf(char32_t character);

/// A character as it is drawn on a terminal.
struct Glyph {
  std::string utf8;
  unsigned int columns;
};

/// Controls and blanks are drawn as their pictures, or in hexadecimal where there is
/// none; what has no shape or stands on another character gets something to stand on.
Glyph glyphOf(char32_t character);

/// "U+20AC".
std::string codePointName(char32_t character);

}  // namespace qvconv
