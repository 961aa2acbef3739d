#pragma once

#include "quorvel/kernel/Progress.hpp"

namespace quorvel::iso2022 {

inline constexpr unsigned char shiftOut = 0x0E;
inline constexpr unsigned char shiftIn = 0x0F;
inline constexpr unsigned char escape = 0x1B;

}  // namespace quorvel::iso2022

/// The inner loops of ISO-2022-JP and ISO-2022-KR: what whole texts are made of.
/// They go from one set to the other by themselves and keep the one in use; they
/// stop at the end or in front of the first thing that is not named for them, a
/// pair cut off by the end included.
namespace quorvel::kernel {

enum class JapaneseSet { ascii, katakana, kanji };

struct Iso2022 {
  using JapaneseLoop = Progress(const unsigned char* in, const unsigned char* end,
                                unsigned char* out, JapaneseSet& set);
  using KoreanLoop = Progress(const unsigned char* in, const unsigned char* end, unsigned char* out,
                              bool& isShifted);

  /// As much room as input. Takes the designations of ASCII, JIS-Roman, both
  /// editions of the kanji set and katakana; ASCII but SO, SI and other escapes;
  /// whole katakana and kanji outside rows 89 to 92.
  JapaneseLoop* jisToShiftJis;

  /// Four bytes of room for each input byte. Takes ASCII but SO, SI and escapes,
  /// half-width katakana and pairs with leads up to EF.
  JapaneseLoop* shiftJisToJis;

  /// As much room as input. Takes SO and SI, ASCII but escapes, pairs, and any
  /// byte above 7F where no SO is in force.
  KoreanLoop* isoToKsc;

  /// Two bytes of room for each input byte. Takes ASCII but SO, SI and escapes,
  /// and pairs of KS C 5601.
  KoreanLoop* kscToIso;
};

namespace scalar {
Iso2022::JapaneseLoop jisToShiftJis;
Iso2022::JapaneseLoop shiftJisToJis;
Iso2022::KoreanLoop isoToKsc;
Iso2022::KoreanLoop kscToIso;
}  // namespace scalar

namespace avx2 {
Iso2022::JapaneseLoop jisToShiftJis;
Iso2022::JapaneseLoop shiftJisToJis;
Iso2022::KoreanLoop isoToKsc;
Iso2022::KoreanLoop kscToIso;
}  // namespace avx2

}  // namespace quorvel::kernel
