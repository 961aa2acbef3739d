#pragma once

#include <string>
#include <string_view>
#include <vector>

/// UTF-8 the slow and obvious way: the table of well-formed byte sequences,
/// row by row.
namespace quorvel::reference {

struct Utf8Row {
  unsigned int firstLow, firstHigh;    // the lead byte
  unsigned int secondLow, secondHigh;  // the byte after it; all others are 80 to BF
  unsigned int length;
};

inline constexpr Utf8Row utf8Rows[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

struct Utf8Step {
  bool wellFormed;
  char32_t codePoint;     // 0 for an ill-formed sequence
  unsigned int consumed;  // the length of the character or of the maximal subpart
  unsigned int looked;    // how many bytes settle that
};

/// The first step over `text`, which is not empty.
inline Utf8Step utf8Step(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return static_cast<unsigned int>(static_cast<unsigned char>(text[i]));
  };
  for (const Utf8Row& row : utf8Rows) {
    if (byte(0) < row.firstLow || byte(0) > row.firstHigh) continue;
    constexpr unsigned int leadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t codePoint = byte(0) & leadBits[row.length];
    for (unsigned int i = 1; i < row.length; ++i) {
      const unsigned int low = i == 1 ? row.secondLow : 0x80;
      const unsigned int high = i == 1 ? row.secondHigh : 0xBF;
      if (i == text.size()) return {false, 0, i, i};
      if (byte(i) < low || byte(i) > high) return {false, 0, i, i + 1};
      codePoint = codePoint << 6 | (byte(i) & 0x3F);
    }
    return {true, codePoint, row.length, row.length};
  }
  return {false, 0, 1, 1};
}

struct Utf8Text {
  std::u32string codePoints;  // U+FFFD for each ill-formed subpart
  bool wellFormed = true;
};

inline Utf8Text decodeUtf8(std::string_view text) {
  Utf8Text result;
  while (!text.empty()) {
    const Utf8Step step = utf8Step(text);
    result.codePoints += step.wellFormed ? step.codePoint : U'\uFFFD';
    result.wellFormed = result.wellFormed && step.wellFormed;
    text.remove_prefix(step.consumed);
  }
  return result;
}

inline bool isScalarValue(char32_t value) {
  return value <= 0xD7FF || (value >= 0xE000 && value <= 0x10FFFF);
}

/// The UTF-8 form of a scalar value, digit by digit of base 64.
inline std::string encodeUtf8(char32_t value) {
  const auto low = [&](int digit) {
    return static_cast<char>(0x80 + (value / (1u << (6 * digit))) % 64);
  };
  const auto lead = [&](unsigned int mark, int digit) {
    return static_cast<char>(mark + value / (1u << (6 * digit)));
  };
  if (value < 0x80) return {lead(0, 0)};
  if (value < 0x800) return {lead(0xC0, 1), low(0)};
  if (value < 0x10000) return {lead(0xE0, 2), low(1), low(0)};
  return {lead(0xF0, 3), low(2), low(1), low(0)};
}

/// Every Unicode scalar value, in order.
inline const std::u32string& allScalarValues() {
  static const std::u32string values = [] {
    std::u32string all;
    for (char32_t value = 0; value <= 0x10FFFF; ++value)
      if (isScalarValue(value)) all += value;
    return all;
  }();
  return values;
}

struct IllFormedUtf8 {
  const char* name;
  const char* bytes;  // hexadecimal
  unsigned int subparts;
};

/// One example of each way to be ill-formed, and into how many maximal
/// subparts it falls when no continuation byte follows.
inline constexpr IllFormedUtf8 illFormedUtf8[] = {
    {"a continuation byte alone, lowest", "80", 1},
    {"a continuation byte alone, highest", "BF", 1},
    {"three continuation bytes", "80 9F BF", 3},
    {"C0, which begins nothing", "C0 80", 2},
    {"C1, which begins nothing", "C1 BF", 2},
    {"overlong in three bytes, lowest", "E0 80 80", 3},
    {"overlong in three bytes, highest", "E0 9F BF", 3},
    {"overlong in four bytes, lowest", "F0 80 80 80", 4},
    {"overlong in four bytes, highest", "F0 8F BF BF", 4},
    {"the first surrogate", "ED A0 80", 3},
    {"the last surrogate", "ED BF BF", 3},
    {"a pair of surrogates", "ED A0 BD ED B8 80", 6},
    {"one above the last code point", "F4 90 80 80", 4},
    {"F5, which begins nothing", "F5 80 80 80", 4},
    {"F7, which begins nothing", "F7 BF BF BF", 4},
    {"a form of five bytes", "F8 88 80 80 80", 5},
    {"a form of six bytes", "FC 84 80 80 80 80", 6},
    {"FE", "FE", 1},
    {"FF", "FF", 1},
    {"FE FF", "FE FF", 2},
    {"one byte of two", "C3", 1},
    {"one byte of three", "E2", 1},
    {"two bytes of three", "E2 82", 1},
    {"two bytes of three after E0", "E0 A0", 1},
    {"two bytes of three after ED", "ED 9F", 1},
    {"one byte of four", "F0", 1},
    {"two bytes of four", "F0 9F", 1},
    {"three bytes of four", "F0 9F 98", 1},
    {"three bytes of four after F4", "F4 8F BF", 1},
    {"two cut-off characters of two bytes", "C3 C3", 2},
    {"two cut-off characters of three bytes", "E2 82 E2 82", 2},
    {"a cut-off character of four, then of three", "F0 9F 98 E2 82", 2},
    {"a cut-off character, then an overlong one", "F1 80 C0 AF", 3},
};

}  // namespace quorvel::reference
