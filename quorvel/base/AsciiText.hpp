#pragma once

// Letters and digits of names, which are ASCII whatever the locale says. Not a
// public header.

namespace quorvel::ascii {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr char toLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

constexpr bool isLetter(char c) { return toLower(c) >= 'a' && toLower(c) <= 'z'; }

}  // namespace quorvel::ascii
