#pragma once

// What stands for itself in UTF-7, and how a run of base64 ends.

#include <array>
#include <cstdint>

#include "quorvel/kernel/Base64Digits.hpp"
#include "quorvel/kernel/Utf7State.hpp"

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

/// Whether a run may end here: it has digits and, behind the last unit, only the
/// zero bits that fill up its last digit.
inline bool isWhole(const kernel::Utf7Reading& run) {
  return run.hasDigits && run.bitCount < 6 && run.bits == 0;
}

/// The digit of the lowest six of `bits`.
inline unsigned char digitOf(std::uint64_t bits) {
  return static_cast<unsigned char>(base64Digits[bits & 0x3F]);
}

/// Writes the bits that are left, filled up to a digit, and ends the run: one byte
/// at the most.
inline unsigned char* endRun(kernel::Utf7Writing& run, unsigned char* out) {
  if (run.bitCount != 0) *out++ = digitOf(run.bits << (6 - run.bitCount));
  run = {};
  return out;
}

}  // namespace quorvel::utf7
