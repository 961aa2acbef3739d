#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tests/reference/TextDecoding.h"

/// Characters put together to text, one after the other.
namespace quorvel::text_reference {

inline std::string unitBytes(char32_t unit, std::size_t size, bool bigEndian) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t shift = 8 * (bigEndian ? size - 1 - i : i);
    bytes += static_cast<char>(unit >> shift & 0xFF);
  }
  return bytes;
}

/// Also of surrogate halves, which are no characters.
inline std::string inUtf8(char32_t value) {
  const auto byte = [](char32_t bits) { return std::string(1, static_cast<char>(bits)); };
  const auto trail = [&](int shift) { return byte(0x80 | (value >> shift & 0x3F)); };
  if (value < 0x80) return byte(value);
  if (value < 0x800) return byte(0xC0 | value >> 6) + trail(0);
  if (value < 0x10000) return byte(0xE0 | value >> 12) + trail(6) + trail(0);
  return byte(0xF0 | value >> 18) + trail(12) + trail(6) + trail(0);
}

inline std::string inUtf16(char32_t value, bool bigEndian) {
  if (value < 0x10000) return unitBytes(value, 2, bigEndian);
  const char32_t offset = value - 0x10000;
  return unitBytes(0xD800 + (offset >> 10), 2, bigEndian) +
         unitBytes(0xDC00 + (offset & 0x3FF), 2, bigEndian);
}

/// Likewise.
inline std::string inUnicode(int number, char32_t value) {
  switch (familyOf(number)) {
    case Family::utf8:
      return inUtf8(value);
    case Family::utf16:
      return inUtf16(value, isBigEndian(number));
    default:
      return unitBytes(value, 4, isBigEndian(number));
  }
}

inline std::optional<Code> writtenAs(const Page& page, char32_t value) {
  const auto found = page.writes.find(value);
  if (found == page.writes.end()) return std::nullopt;
  return found->second;
}

inline std::optional<Code> gb18030Code(char32_t value) {
  if (const auto code = writtenAs(gb18030().page, value)) return code;
  for (const FourByteRange& range : gb18030().ranges) {
    const char32_t last = range.character + (range.last - range.first);
    if (range.isWritten && isWithin(value, range.character, last)) {
      return fourBytesAt(range.first + (value - range.character));
    }
  }
  return std::nullopt;
}

/// The two bytes of JIS X 0208 for a Shift_JIS code, if it has them.
inline std::optional<std::string> jisOf(Code code) {
  const auto lead = static_cast<int>(code >> 8);
  const auto trail = static_cast<int>(code & 0xFF);
  int row = 0;
  int cell = 0;
  if (lead >= 0xF0) {
    const auto found = std::find(lastBlock().begin(), lastBlock().end(), code);
    if (found == lastBlock().end()) return std::nullopt;
    const auto place = static_cast<int>(found - lastBlock().begin());
    row = 89 + place / 94;
    cell = 1 + place % 94;
  } else {
    row = 2 * (lead - (lead < 0xA0 ? 0x81 : 0xC1)) + (trail >= 0x9F ? 2 : 1);
    cell = trail >= 0x9F ? trail - 0x9E : trail - (trail < 0x7F ? 0x3F : 0x40);
  }
  return std::string{static_cast<char>(row + 0x20), static_cast<char>(cell + 0x20)};
}

/// Set D of UTF-7 and white space: what is written directly.
inline bool isDirectInUtf7(char32_t value) {
  static constexpr std::u32string_view direct =
      U"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789'(),-./:? \t\r\n";
  return direct.find(value) != std::u32string_view::npos;
}

class Encoder {
 public:
  explicit Encoder(int number) : m_number(number) {}

  /// What was put so far. Behind the header, unless there is no text.
  std::string text() const {
    const bool hasHeader = familyOf(m_number) == Family::iso2022Kr && !m_text.empty();
    return (hasHeader ? "\x1B$)C" : "") + m_text;
  }

  /// False, and nothing is done, for a character that has no place.
  bool put(char32_t value) {
    switch (familyOf(m_number)) {
      case Family::utf7:
        putUtf7(value);
        return true;
      case Family::iso2022Jp:
        return putJapanese(value);
      case Family::iso2022Kr:
        return putKorean(value);
      case Family::gb18030:
        return putCode(gb18030Code(value));
      case Family::gsm:
        return putCode(writtenAs(gsm(), value));
      case Family::page:
        return putCode(writtenAs(pageOf(m_number), value));
      default:
        m_text += inUnicode(m_number, value);
        return true;
    }
  }

  bool hasBestFit(char32_t value) const { return bestFit(value).has_value(); }
  void putBestFit(char32_t value) { putCode(bestFit(value)); }

  /// Bytes as they are, whatever they mean in the destination, whose state is that of
  /// the beginning around them.
  void putRaw(std::string_view bytes) {
    finish();
    m_text += bytes;
  }

  /// What ends the text.
  void finish() {
    switch (familyOf(m_number)) {
      case Family::utf7:
        closeRun(U'-');
        break;
      case Family::iso2022Jp:
        designate("(B");
        break;
      case Family::iso2022Kr:
        shift('\x0F');
        break;
      default:
        break;
    }
  }

 private:
  std::optional<Code> bestFit(char32_t value) const {
    if (familyOf(m_number) != Family::page) return std::nullopt;
    const Page& page = pageOf(m_number);
    const auto found = page.bestFits.find(value);
    if (found == page.bestFits.end()) return std::nullopt;
    return found->second;
  }

  bool putCode(std::optional<Code> code) {
    if (code) m_text += bytesOf(*code);
    return code.has_value();
  }

  // --- ISO-2022 ---

  void designate(const std::string& set) {
    if (set != m_set) m_text += "\x1B" + set;
    m_set = set;
  }

  bool putJapanese(char32_t value) {
    const std::optional<Code> code = writtenAs(pageOf(932), value);
    if (!code || value == 0x0E || value == 0x0F || value == 0x1B) return false;
    if (*code < 0x80) {
      designate("(B");
      m_text += static_cast<char>(*code);
      return true;
    }
    if (isWithin(*code, 0xA1, 0xDF)) {
      designate("(I");
      m_text += static_cast<char>(*code - 0x80);
      return true;
    }
    if (*code < 0x100) return false;
    const std::optional<std::string> jis = jisOf(*code);
    if (!jis) return false;
    designate("$B");
    m_text += *jis;
    return true;
  }

  void shift(char to) {
    if (to != m_shift) m_text += to;
    m_shift = to;
  }

  bool putKorean(char32_t value) {
    const std::optional<Code> code = writtenAs(pageOf(949), value);
    if (!code || value == 0x0E || value == 0x0F || value == 0x1B) return false;
    const bool isAsciiCode = *code < 0x80;
    const bool isPair = isWithin(*code >> 8, 0xA1, 0xFE) && isWithin(*code & 0xFF, 0xA1, 0xFE);
    if (!isAsciiCode && !isPair) return false;
    shift(isPair ? '\x0E' : '\x0F');
    m_text += isPair ? bytesOf(*code - 0x8080) : bytesOf(*code);
    return true;
  }

  // --- UTF-7 ---

  void putUtf7(char32_t value) {
    if (isDirectInUtf7(value)) {
      const auto byte = static_cast<char>(value);
      const bool looksLikeADigit = byte == '-' || base64.find(byte) != std::string_view::npos;
      closeRun(looksLikeADigit ? std::optional(U'-') : std::nullopt);
      m_text += byte;
      return;
    }
    if (value == U'+' && !m_isInRun) {
      m_text += "+-";
      return;
    }
    if (!m_isInRun) m_text += '+';
    m_isInRun = true;
    for (const char byte : inUtf16(value, true)) {
      for (int bit = 7; bit >= 0; --bit) addBit((static_cast<unsigned char>(byte) >> bit & 1) != 0);
    }
  }

  void addBit(bool bit) {
    m_digit = m_digit << 1 | (bit ? 1U : 0U);
    if (++m_digitBits < 6) return;
    m_text += base64[m_digit];
    m_digit = 0;
    m_digitBits = 0;
  }

  void closeRun(std::optional<char32_t> with) {
    if (!m_isInRun) return;
    while (m_digitBits != 0) addBit(false);
    if (with) m_text += static_cast<char>(*with);
    m_isInRun = false;
  }

  int m_number;
  std::string m_text;
  std::string m_set = "(B";
  char m_shift = '\x0F';
  bool m_isInRun = false;
  unsigned int m_digit = 0;
  unsigned int m_digitBits = 0;
};

/// Whether a character has a place, best fits aside.
inline bool holds(int number, char32_t value) { return Encoder(number).put(value); }

}  // namespace quorvel::text_reference
