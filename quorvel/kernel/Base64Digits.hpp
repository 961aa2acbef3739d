#pragma once

// What a digit of base64 is worth, for the loops of UTF-7 and the packed tables.

#include "quorvel/kernel/Base64Alphabet.hpp"

namespace quorvel {

inline constexpr unsigned int noBase64Digit = 64;

/// The value of a base64 digit, or `noBase64Digit` for any other byte.
constexpr unsigned int base64DigitValue(unsigned int byte) {
  if (byte >= 'A' && byte <= 'Z') return byte - 'A';
  if (byte >= 'a' && byte <= 'z') return byte - 'a' + 26;
  if (byte >= '0' && byte <= '9') return byte - '0' + 52;
  return byte == '+' ? 62 : byte == '/' ? 63 : noBase64Digit;
}

}  // namespace quorvel
