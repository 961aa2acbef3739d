#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// UTF-7 (RFC 2152) the slow and obvious way: runs are cut out first, their
/// bits are spelled as text.
namespace quorvel::reference {

inline constexpr std::string_view base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Set D and white space: what is written directly.
inline constexpr std::string_view utf7Direct =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789'(),-./:? \t\r\n";

inline bool isUtf7Direct(char16_t unit) {
  return unit != 0 && unit < 0x80 && utf7Direct.find(static_cast<char>(unit)) != utf7Direct.npos;
}

inline std::string bitsOf(unsigned int value, int count) {
  std::string bits;
  while (count-- > 0) bits += (value >> count & 1) != 0 ? '1' : '0';
  return bits;
}

inline unsigned int valueOf(std::string_view bits) {
  unsigned int value = 0;
  for (const char bit : bits) value = 2 * value + (bit == '1' ? 1 : 0);
  return value;
}

inline std::string encodeUtf7(std::u16string_view text) {
  std::string out;
  while (!text.empty()) {
    if (isUtf7Direct(text[0])) {
      out += static_cast<char>(text[0]);
      text.remove_prefix(1);
      continue;
    }
    if (text[0] == u'+') {
      out += "+-";
      text.remove_prefix(1);
      continue;
    }
    std::string bits;
    while (!text.empty() && !isUtf7Direct(text[0])) {
      bits += bitsOf(text[0], 16);
      text.remove_prefix(1);
    }
    while (bits.size() % 6 != 0) bits += '0';
    out += '+';
    for (std::size_t at = 0; at < bits.size(); at += 6)
      out += base64Digits[valueOf(std::string_view(bits).substr(at, 6))];
    if (text.empty()) break;
    const char next = static_cast<char>(text[0]);
    if (next == '-' || base64Digits.find(next) != base64Digits.npos) out += '-';
  }
  return out;
}

struct Utf7Text {
  std::u16string units;
  bool wellFormed = true;
};

inline Utf7Text decodeUtf7(std::string_view text) {
  Utf7Text result;
  while (!text.empty()) {
    const char first = text[0];
    text.remove_prefix(1);
    if (first != '+') {
      const bool ascii = static_cast<unsigned char>(first) < 0x80;
      result.units += ascii ? static_cast<char16_t>(first) : u'\uFFFD';
      result.wellFormed = result.wellFormed && ascii;
      continue;
    }
    const std::size_t length = std::min(text.find_first_not_of(base64Digits), text.size());
    std::string bits;
    for (const char digit : text.substr(0, length))
      bits += bitsOf(static_cast<unsigned int>(base64Digits.find(digit)), 6);
    text.remove_prefix(length);
    const bool closed = !text.empty() && text[0] == '-';
    if (closed) text.remove_prefix(1);
    if (length == 0) {
      if (closed) result.units += u'+';
      result.wellFormed = result.wellFormed && closed;
      continue;
    }
    for (; bits.size() >= 16; bits.erase(0, 16))
      result.units += static_cast<char16_t>(valueOf(bits.substr(0, 16)));
    if (bits.size() >= 6 || valueOf(bits) != 0) result.wellFormed = false;
  }
  return result;
}

}  // namespace quorvel::reference
