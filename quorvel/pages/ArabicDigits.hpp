#pragma once

// The two sets of Arabic digits that some pages write as ASCII digits
// (`takesAsciiDigits` in CodePages.def).

namespace quorvel {

/// The first of each set of ten.
inline constexpr unsigned int firstArabicDigits[] = {0x0660, 0x06F0};

constexpr bool isArabicDigit(unsigned int unit) {
  return unit - firstArabicDigits[0] < 10 || unit - firstArabicDigits[1] < 10;
}

constexpr unsigned int asciiDigitOf(unsigned int arabicDigit) {
  return 0x30 | (arabicDigit & 0x0F);
}

}  // namespace quorvel
