#pragma once

#include <string>
#include <string_view>

#include "quorvel/base/DataBuffer.h"

/// Byte strings in and out of buffers, and their readable form: tests compare
/// hexadecimal text, so that a failure shows the bytes.
namespace quorvel::test_bytes {

inline std::string contentOf(const DataBuffer& buffer) {
  const auto* data = reinterpret_cast<const char*>(buffer.getData2());
  return data ? std::string(data, buffer.getSize()) : std::string();
}

inline const unsigned char* unsignedBytes(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

inline unsigned int sizeOf(std::string_view bytes) {
  return static_cast<unsigned int>(bytes.size());
}

inline void fill(DataBuffer& buffer, std::string_view bytes) {
  buffer.append(bytes.data(), sizeOf(bytes));
}

/// "4A E9" for the bytes 4A and E9.
inline std::string hex(std::string_view bytes) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    if (!text.empty()) text += ' ';
    text += digits[byte >> 4];
    text += digits[byte & 0xF];
  }
  return text;
}

inline std::string hex(const DataBuffer& buffer) { return hex(contentOf(buffer)); }

/// The bytes of hexadecimal text; spaces are skipped.
inline std::string unhex(std::string_view text) {
  std::string bytes;
  int high = -1;
  for (const char digit : text) {
    if (digit == ' ') continue;
    const int value = digit <= '9' ? digit - '0' : digit - 'A' + 10;
    if (high < 0) {
      high = value;
    } else {
      bytes += static_cast<char>(high << 4 | value);
      high = -1;
    }
  }
  return bytes;
}

/// A 16-bit unit as it stands in the memory of this host.
inline std::string hostUnit(char16_t unit) {
  return {reinterpret_cast<const char*>(&unit), sizeof unit};
}

inline std::string hostUnits(std::u16string_view units) {
  return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

/// A 32-bit unit, high byte first or low byte first.
inline std::string unit32(bool bigEndian, char32_t unit) {
  std::string bytes;
  for (int i = 0; i < 4; ++i)
    bytes += static_cast<char>(unit >> (bigEndian ? 24 - 8 * i : 8 * i) & 0xFF);
  return bytes;
}

}  // namespace quorvel::test_bytes
