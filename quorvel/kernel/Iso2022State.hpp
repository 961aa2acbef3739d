#pragma once

// The bytes by which ISO-2022 switches sets, and what a text has in force.

namespace quorvel::iso2022 {

inline constexpr unsigned char shiftOut = 0x0E;
inline constexpr unsigned char shiftIn = 0x0F;
inline constexpr unsigned char escape = 0x1B;

}  // namespace quorvel::iso2022

namespace quorvel::kernel {

enum class JapaneseSet { ascii, katakana, kanji };

/// The state of a text in ISO-2022-JP. The two are independent: what is designated
/// while SO has katakana in use comes into use with the next SI.
struct Iso2022JpReading {
  JapaneseSet designated = JapaneseSet::ascii;
  bool isShifted = false;

  JapaneseSet inUse() const { return isShifted ? JapaneseSet::katakana : designated; }
  bool operator==(const Iso2022JpReading&) const = default;
};

}  // namespace quorvel::kernel
