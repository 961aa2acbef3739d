#pragma once

namespace quorvel {

/// The pages that write both sets of Arabic digits as ASCII digits, whatever
/// their tables say.
constexpr bool takesAsciiDigits(int codePage) { return codePage == 1256 || codePage == 28596; }

inline constexpr unsigned int firstArabicDigits[] = {0x0660, 0x06F0};

constexpr bool isArabicDigit(unsigned int unit) {
  return unit - firstArabicDigits[0] < 10 || unit - firstArabicDigits[1] < 10;
}

constexpr unsigned int asciiDigitOf(unsigned int arabicDigit) {
  return 0x30 | (arabicDigit & 0x0F);
}

}  // namespace quorvel
