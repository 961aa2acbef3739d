#pragma once

#include <string>
#include <string_view>

#include "tests/reference/Utf8Reference.h"

/// UTF-8 to UTF-16 or UTF-32 and back one character at a time, up to where a kernel must
/// stop.
namespace quorvel::reference {

struct Transcoded {
  std::string bytes;
  std::size_t consumed;
  bool operator==(const Transcoded&) const = default;
};

inline std::string unitBytes(unsigned int unit) {
  const auto value = static_cast<char16_t>(unit);
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

inline std::string utf16Of(char32_t value) {
  if (value < 0x10000) return unitBytes(value);
  return unitBytes(0xD800 + (value - 0x10000) / 0x400) +
         unitBytes(0xDC00 + (value - 0x10000) % 0x400);
}

inline std::string utf32Of(char32_t value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// `form` gives the bytes of a code point.
inline Transcoded fromUtf8(std::string_view text, std::string (*form)(char32_t)) {
  Transcoded result{};
  while (result.consumed < text.size()) {
    const Utf8Step step = utf8Step(text.substr(result.consumed));
    if (!step.wellFormed) break;
    result.bytes += form(step.codePoint);
    result.consumed += step.consumed;
  }
  return result;
}

inline Transcoded utf8ToUtf16(std::string_view text) { return fromUtf8(text, utf16Of); }
inline Transcoded utf8ToUtf32(std::string_view text) { return fromUtf8(text, utf32Of); }

inline Transcoded utf32ToUtf8(std::string_view text) {
  Transcoded result{};
  while (text.size() - result.consumed >= 4) {
    char32_t value = 0;
    text.copy(reinterpret_cast<char*>(&value), sizeof value, result.consumed);
    if (!isScalarValue(value)) break;
    result.bytes += encodeUtf8(value);
    result.consumed += 4;
  }
  return result;
}

/// What the loops do with pairs; the strict one drops and writes nothing else either.
enum class Pairs { joined, left, strict };

/// Whether what a kernel left is only the beginning of something, in each form.

inline bool isUtf8CutOff(std::string_view rest) {
  const auto lead = static_cast<unsigned char>(rest[0]);
  for (const Utf8Row& row : utf8Rows) {
    if (lead < row.firstLow || lead > row.firstHigh) continue;
    const Utf8Step step = utf8Step(rest);
    return !step.wellFormed && step.consumed == rest.size() && step.looked == rest.size();
  }
  return false;
}

inline bool isUtf32CutOff(std::string_view rest) { return rest.size() < 4; }

/// A high surrogate is only the beginning of something where pairs are joined.
inline bool isUtf16CutOff(std::string_view rest, Pairs pairs) {
  if (rest.size() < 2) return true;
  const bool isHigh = (static_cast<unsigned char>(rest[1]) & 0xFC) == 0xD8;
  return pairs != Pairs::left && isHigh && rest.size() < 4;
}

inline Transcoded utf16ToUtf8(std::string_view text, Pairs pairs) {
  const auto unitAt = [&](std::size_t at) {
    char16_t unit = 0;
    if (at + 2 <= text.size()) text.copy(reinterpret_cast<char*>(&unit), sizeof unit, at);
    return unit;
  };
  const auto isHigh = [](char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; };
  const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
  Transcoded result{};
  while (text.size() - result.consumed >= 2) {
    const char16_t unit = unitAt(result.consumed);
    const bool isStrict = pairs == Pairs::strict;
    if (isStrict ? isLow(unit) : unit == 0xFDEF) break;
    if (isHigh(unit)) {
      const char16_t next = unitAt(result.consumed + 2);
      if (pairs == Pairs::left || !isLow(next)) break;
      result.bytes += encodeUtf8(0x10000 + (unit - 0xD800U) * 0x400 + (next - 0xDC00U));
      result.consumed += 4;
    } else {
      if (isStrict || unit != 0) result.bytes += encodeUtf8(unit);
      result.consumed += 2;
    }
  }
  return result;
}

/// The bytes of each unit in the other order; an odd one at the end stays.
inline std::string exchanged(std::string_view text) {
  std::string result(text);
  for (std::size_t i = 0; i + 1 < result.size(); i += 2) std::swap(result[i], result[i + 1]);
  return result;
}

/// As many characters of UTF-16LE as there are without a surrogate that is no half of a
/// pair, as they stand.
inline Transcoded utf16ToUtf16(std::string_view text) {
  const std::size_t consumed = utf16ToUtf8(text, Pairs::strict).consumed;
  return {std::string(text.substr(0, consumed)), consumed};
}

inline Transcoded utf16ToUtf16Be(std::string_view text) {
  const Transcoded result = utf16ToUtf16(text);
  return {exchanged(result.bytes), result.consumed};
}

inline Transcoded utf16BeToUtf16(std::string_view text) { return utf16ToUtf16(exchanged(text)); }

}  // namespace quorvel::reference
