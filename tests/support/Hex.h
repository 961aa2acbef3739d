#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/base/DataBuffer.h"

namespace quorvel_test {

using Bytes = std::vector<unsigned char>;

/// The value of one hexadecimal digit of either case.
inline unsigned int hexDigit(char c) {
  const std::size_t value = std::string_view("0123456789ABCDEF0123456789abcdef").find(c);
  if (value == std::string_view::npos) throw std::invalid_argument("not a hexadecimal digit");
  return static_cast<unsigned int>(value % 16);
}

/// Bytes written as hexadecimal pairs and quoted ASCII: "EF BB BF 'abc' 00".
/// The vector has no spare room, so that the address sanitizer sees a read
/// past its end.
inline Bytes bytes(std::string_view text) {
  Bytes result;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ') {
      ++i;
    } else if (text[i] == '\'') {
      const std::size_t end = text.find('\'', i + 1);
      if (end == std::string_view::npos) throw std::invalid_argument("quote not closed");
      for (char c : text.substr(i + 1, end - i - 1))
        result.push_back(static_cast<unsigned char>(c));
      i = end + 1;
    } else {
      if (i + 1 == text.size()) throw std::invalid_argument("half a byte");
      const unsigned int value = hexDigit(text[i]) << 4 | hexDigit(text[i + 1]);
      result.push_back(static_cast<unsigned char>(value));
      i += 2;
    }
  }
  result.shrink_to_fit();
  return result;
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

inline std::string hex(const Bytes& data) { return hex(data.data(), data.size()); }

inline std::string hex(const quorvel::DataBuffer& data) {
  return hex(data.getData2(), data.getSize());
}

/// The length as the converter takes it.
inline unsigned int sizeOf(const Bytes& data) { return static_cast<unsigned int>(data.size()); }

inline Bytes contentOf(const quorvel::DataBuffer& data) {
  return Bytes(data.getData2(), data.getData2() + data.getSize());
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

}  // namespace quorvel_test
