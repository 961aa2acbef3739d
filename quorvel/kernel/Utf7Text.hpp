#pragma once

#include <array>

#include "quorvel/kernel/Base64Digits.hpp"
#include "quorvel/kernel/Utf7Run.hpp"

/// What stands for itself in UTF-7.
namespace quorvel::utf7 {

inline constexpr std::array<bool, 128> directUnits = [] {
  std::array<bool, 128> isDirect{};
  for (unsigned int unit = 0; unit < isDirect.size(); ++unit) {
    isDirect[unit] = base64DigitValue(unit) < 62;
  }
  for (const char unit : directPunctuation) isDirect[static_cast<unsigned char>(unit)] = unit != 0;
  return isDirect;
}();

inline bool isDirect(unsigned int unit) { return unit < directUnits.size() && directUnits[unit]; }

/// Whether a hyphen must keep a direct unit apart from the run in front of it.
inline bool needsHyphen(unsigned int unit) {
  return unit == '-' || base64DigitValue(unit) != noBase64Digit;
}

}  // namespace quorvel::utf7
