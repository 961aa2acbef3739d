#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/CodePageFile.h"
#include "tests/helpers/Bytes.h"

namespace quorvel_test {

using Units = std::vector<unsigned int>;

/// The unit that announces raw bytes while the second half of a pivot runs.
inline constexpr unsigned int kMarkerUnit = 0xEFFD;

inline void putUnit(unsigned int unit, Bytes& out) {
  out.push_back(static_cast<unsigned char>(unit));
  out.push_back(static_cast<unsigned char>(unit >> 8));
}

/// UTF-16LE.
inline Bytes utf16Of(const Units& units) {
  Bytes out;
  out.reserve(2 * units.size());
  for (unsigned int unit : units) putUnit(unit, out);
  return out;
}

/// UTF-8, every unit a character of its own.
inline Bytes utf8Of(const Units& units) {
  Bytes out;
  const auto put = [&out](unsigned int byte) { out.push_back(static_cast<unsigned char>(byte)); };
  for (unsigned int unit : units) {
    if (unit < 0x80) {
      put(unit);
    } else if (unit < 0x800) {
      put(0xC0 | unit >> 6);
      put(0x80 | (unit & 0x3F));
    } else {
      put(0xE0 | unit >> 12);
      put(0x80 | (unit >> 6 & 0x3F));
      put(0x80 | (unit & 0x3F));
    }
  }
  return out;
}

/// What a code page does according to its mapping file, one sequence or unit
/// after the other, with what has no mapping dropped.
class CodePageModel {
 public:
  explicit CodePageModel(int number) : codePage(number) {
    const CodePageFile file(number);
    const CodePageFile whole = file.isChange ? CodePageFile(file.base) : file;
    if (whole.lowerHalf == "ascii") {
      for (unsigned int b = 1; b < 0x80; ++b) m_codes[b] = m_single[b] = b;
    }
    for (const auto& [unit, code] : whole.fromUnicode) m_codes[unit] = numberOf(code);
    if (file.isChange) {
      for (const auto& [unit, code] : file.fromUnicode) m_codes[unit] = numberOf(code);
      for (unsigned int unit : file.removed) m_codes[unit] = 0;
      for (unsigned int unit = 1; unit < 0x10000; ++unit) addReverse(m_codes[unit], unit);
    } else {
      for (const auto& [code, unit] : whole.toUnicode) addReverse(numberOf(code), unit);
      // A code that is nobody's but a best fit's reads as that.
      for (const auto& [unit, code] : whole.fromUnicode) {
        if (unitOf(numberOf(code)) == 0) addReverse(numberOf(code), unit);
      }
    }
  }

  bool isMultiByte() const { return !m_pairs.empty(); }

  /// The unit of a one-byte or a two-byte code; 0 if there is none.
  unsigned int unitOf(unsigned int code) const {
    if (code < 0x100) return m_single[code];
    return isMultiByte() ? m_pairs[code] : 0;
  }

  /// The code of a unit; 0 if there is none.
  unsigned int codeOf(unsigned int unit) const { return m_codes[asEncoded(unit)]; }

  bool isRoundTrip(unsigned int unit) const {
    return unit != 0 && codeOf(unit) != 0 && unitOf(codeOf(unit)) == unit;
  }

  Units decode(const Bytes& text) const {
    Units units;
    units.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
      const unsigned int byte = text[i];
      if (isMultiByte() && i + 1 < text.size() && m_pairs[byte << 8 | text[i + 1]] != 0) {
        units.push_back(m_pairs[byte << 8 | text[++i]]);
      } else if (byte == 0 || m_single[byte] != 0) {
        units.push_back(m_single[byte]);
      }
    }
    return units;
  }

  /// The bytes of the units, and whether all of them have any.
  std::pair<Bytes, bool> encode(const Units& units) const {
    std::pair<Bytes, bool> result{{}, true};
    for (unsigned int unit : units) {
      const unsigned int code = codeOf(unit);
      if (code >= 0x100) result.first.push_back(static_cast<unsigned char>(code >> 8));
      if (code != 0 || unit == 0) result.first.push_back(static_cast<unsigned char>(code));
      if (code == 0 && unit != 0) result.second = false;
    }
    return result;
  }

  const int codePage;

 private:
  static unsigned int numberOf(const std::string& code) {
    return static_cast<unsigned int>(std::stoul(code, nullptr, 16));
  }

  // The two Arabic pages write ASCII digits for both sets of Arabic ones.
  unsigned int asEncoded(unsigned int unit) const {
    const bool isDigit = (unit >= 0x660 && unit <= 0x669) || (unit >= 0x6F0 && unit <= 0x6F9);
    const bool isRewritten = isDigit && (codePage == 1256 || codePage == 28596);
    return isRewritten ? 0x30 | (unit & 0xF) : unit;
  }

  void addReverse(unsigned int code, unsigned int unit) {
    if (code == 0) return;
    if (code < 0x100) {
      m_single[code] = unit;
      return;
    }
    if (m_pairs.empty()) m_pairs.resize(0x10000);
    m_pairs[code] = unit;
  }

  std::array<unsigned int, 0x100> m_single{};
  std::vector<unsigned int> m_pairs;  ///< by code; empty for a single-byte page
  std::vector<unsigned int> m_codes = std::vector<unsigned int>(0x10000);
};

}  // namespace quorvel_test
