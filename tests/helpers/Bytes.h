#pragma once

#include <cstddef>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/base/DataBuffer.h"

/// Bytes as the tests write, build and compare them. A failure shows them as
/// hexadecimal text.
namespace quorvel_test {

/// Bytes to convert. The vector has no spare room, so that the address sanitizer
/// sees a read past its end; text that is put together and taken apart stays in
/// strings.
using Bytes = std::vector<unsigned char>;

/// The value of one hexadecimal digit of either case.
inline unsigned int hexDigit(char c) {
  const std::size_t value = std::string_view("0123456789ABCDEF0123456789abcdef").find(c);
  if (value == std::string_view::npos) throw std::invalid_argument("not a hexadecimal digit");
  return static_cast<unsigned int>(value % 16);
}

/// Bytes written as hexadecimal pairs and quoted ASCII: "EF BB BF 'abc' 00".
inline std::string byteString(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ') {
      ++i;
    } else if (text[i] == '\'') {
      const std::size_t end = text.find('\'', i + 1);
      if (end == std::string_view::npos) throw std::invalid_argument("quote not closed");
      result += text.substr(i + 1, end - i - 1);
      i = end + 1;
    } else {
      if (i + 1 == text.size()) throw std::invalid_argument("half a byte");
      result += static_cast<char>(hexDigit(text[i]) << 4 | hexDigit(text[i + 1]));
      i += 2;
    }
  }
  return result;
}

/// The same, to be converted.
inline Bytes bytes(std::string_view text) {
  const std::string content = byteString(text);
  return {content.begin(), content.end()};
}

/// The bytes as upper-case hexadecimal pairs with spaces between.
inline std::string hex(const unsigned char* p, std::size_t n) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  for (std::size_t i = 0; i < n; ++i) {
    if (i != 0) result += ' ';
    result += digits[p[i] >> 4];
    result += digits[p[i] & 15];
  }
  return result;
}

inline const unsigned char* unsignedBytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

inline std::string hex(std::string_view text) { return hex(unsignedBytes(text), text.size()); }

inline std::string hex(const Bytes& data) { return hex(data.data(), data.size()); }

inline std::string hex(const quorvel::DataBuffer& data) {
  return hex(data.getData2(), data.getSize());
}

/// The length as the converter takes it.
inline unsigned int sizeOf(std::string_view text) { return static_cast<unsigned int>(text.size()); }

inline unsigned int sizeOf(const Bytes& data) { return static_cast<unsigned int>(data.size()); }

inline std::string contentOf(const quorvel::DataBuffer& buffer) {
  const auto* data = reinterpret_cast<const char*>(buffer.getData2());
  return data ? std::string(data, buffer.getSize()) : std::string();
}

inline Bytes bytesOf(const quorvel::DataBuffer& buffer) {
  return Bytes(buffer.getData2(), buffer.getData2() + buffer.getSize());
}

inline void fill(quorvel::DataBuffer& buffer, std::string_view text) {
  buffer.append(text.data(), sizeOf(text));
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

/// `count` copies of `unit`, one after the other.
inline Bytes repeated(std::size_t count, const Bytes& unit) {
  Bytes result;
  result.reserve(count * unit.size());
  for (std::size_t i = 0; i < count; ++i) result.insert(result.end(), unit.begin(), unit.end());
  return result;
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
  std::string result;
  for (int i = 0; i < 4; ++i)
    result += static_cast<char>(unit >> (bigEndian ? 24 - 8 * i : 8 * i) & 0xFF);
  return result;
}

/// What a transform gave: its result and what it wrote.
struct Transformed {
  bool ok;
  std::string bytes;

  bool operator==(const Transformed&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Transformed& transformed) {
  return stream << (transformed.ok ? "true, " : "false, ") << hex(transformed.bytes);
}

}  // namespace quorvel_test
