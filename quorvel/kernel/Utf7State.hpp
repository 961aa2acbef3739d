#pragma once

// What stands for itself in UTF-7, and what a text of it has in force.

namespace quorvel::utf7 {

/// What stands for itself beside letters and digits: the rest of set D of RFC 2152
/// and the white space that its rule 3 adds.
inline constexpr char directPunctuation[] = "'(),-./:? \t\r\n";

}  // namespace quorvel::utf7

namespace quorvel::kernel {

/// The run of base64 that a text stands in while it is read. Of the digits so far,
/// `bits` are those behind the last whole unit, `bitCount` of them.
struct Utf7Reading {
  bool isOpen = false;
  bool hasDigits = false;
  unsigned int bits = 0;
  unsigned int bitCount = 0;
  bool operator==(const Utf7Reading&) const = default;
};

/// The same while it is written: the bits behind the last whole digit.
struct Utf7Writing {
  bool isOpen = false;
  unsigned int bits = 0;
  unsigned int bitCount = 0;
  bool operator==(const Utf7Writing&) const = default;
};

}  // namespace quorvel::kernel
