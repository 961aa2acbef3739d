#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/reference/TextFacts.h"

/// Text taken apart into characters and what is none, whole and in one pass.
namespace quorvel::text_reference {

/// A stretch of the source: one character, or bytes that are none.
struct Piece {
  std::size_t offset;
  std::size_t length;
  std::optional<char32_t> character;

  /// Of bytes that are none: the surrogate half that they spell in UTF-8, UTF-16 or
  /// UTF-32.
  std::optional<char32_t> half = std::nullopt;

  bool operator==(const Piece&) const = default;
};

using Pieces = std::vector<Piece>;

/// Which surrogate halves in three bytes are one loss: those that stand for bytes, DC80 to
/// DCFF, or the others.
enum class HalvesInUtf8 { none, ofBytes, others };

struct DecodeRules {
  bool keepsMark = false;
  HalvesInUtf8 halves = HalvesInUtf8::none;
};

inline int byteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : -1;
}

inline bool isWithin(std::int64_t value, std::int64_t first, std::int64_t last) {
  return value >= first && value <= last;
}

inline bool isAscii(int byte) { return isWithin(byte, 0, 0x7F); }
inline bool isHighHalf(char32_t value) { return isWithin(value, 0xD800, 0xDBFF); }
inline bool isLowHalf(char32_t value) { return isWithin(value, 0xDC00, 0xDFFF); }
inline bool isHalf(char32_t value) { return isWithin(value, 0xD800, 0xDFFF); }
inline char32_t joined(char32_t high, char32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

inline Piece character(std::size_t at, std::size_t length, char32_t value) {
  return {at, length, value};
}
inline Piece loss(std::size_t at, std::size_t length) { return {at, length, std::nullopt}; }
inline Piece lostHalf(std::size_t at, std::size_t length, char32_t half) {
  return {at, length, std::nullopt, half};
}

// --- UTF-8, UTF-16, UTF-32 ------------------------------------------------------------

/// The second bytes that a lead byte of UTF-8 allows.
inline std::pair<int, int> secondBytes(int lead) {
  if (lead == 0xE0) return {0xA0, 0xBF};
  if (lead == 0xED) return {0x80, 0x9F};
  if (lead == 0xF0) return {0x90, 0xBF};
  if (lead == 0xF4) return {0x80, 0x8F};
  return {0x80, 0xBF};
}

inline Piece utf8Piece(std::string_view text, std::size_t at, const DecodeRules& rules) {
  const int lead = byteAt(text, at);
  if (isAscii(lead)) return character(at, 1, static_cast<char32_t>(lead));
  const bool isHalfOfByte = isWithin(byteAt(text, at + 1), 0xB2, 0xB3);
  const bool isRead = rules.halves == HalvesInUtf8::ofBytes
                          ? isHalfOfByte
                          : isWithin(byteAt(text, at + 1), 0xA0, 0xBF) && !isHalfOfByte;
  if (rules.halves != HalvesInUtf8::none && lead == 0xED && isRead &&
      isWithin(byteAt(text, at + 2), 0x80, 0xBF)) {
    const int low = (byteAt(text, at + 1) & 0x3F) << 6 | (byteAt(text, at + 2) & 0x3F);
    return lostHalf(at, 3, 0xD000 | static_cast<char32_t>(low));
  }
  std::size_t length = 0;
  if (isWithin(lead, 0xC2, 0xDF)) length = 2;
  if (isWithin(lead, 0xE0, 0xEF)) length = 3;
  if (isWithin(lead, 0xF0, 0xF4)) length = 4;
  if (length == 0) return loss(at, 1);
  auto value = static_cast<char32_t>(lead & (0x7F >> length));
  for (std::size_t i = 1; i < length; ++i) {
    const auto [first, last] = i == 1 ? secondBytes(lead) : std::pair(0x80, 0xBF);
    const int byte = byteAt(text, at + i);
    if (!isWithin(byte, first, last)) return loss(at, i);
    value = value << 6 | static_cast<char32_t>(byte & 0x3F);
  }
  return character(at, length, value);
}

inline char32_t unitAt(std::string_view text, std::size_t at, std::size_t size, bool bigEndian) {
  char32_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t place = bigEndian ? at + i : at + size - 1 - i;
    value = value << 8 | static_cast<char32_t>(byteAt(text, place));
  }
  return value;
}

inline Piece utf16Piece(std::string_view text, std::size_t at, bool bigEndian) {
  if (text.size() - at < 2) return loss(at, 1);
  const char32_t unit = unitAt(text, at, 2, bigEndian);
  if (!isHalf(unit)) return character(at, 2, unit);
  if (isHighHalf(unit) && text.size() - at >= 4) {
    const char32_t next = unitAt(text, at + 2, 2, bigEndian);
    if (isLowHalf(next)) return character(at, 4, joined(unit, next));
  }
  return lostHalf(at, 2, unit);
}

inline Piece utf32Piece(std::string_view text, std::size_t at, bool bigEndian) {
  if (text.size() - at < 4) return loss(at, text.size() - at);
  const char32_t value = unitAt(text, at, 4, bigEndian);
  if (isHalf(value)) return lostHalf(at, 4, value);
  return value > 0x10FFFF ? loss(at, 4) : character(at, 4, value);
}

/// What a mark at the start says: how long it is and whether it turns the order.
struct Mark {
  std::size_t length = 0;
  bool turnsOrder = false;
};

inline Mark markOf(std::string_view text, int number) {
  using namespace std::string_view_literals;
  const bool bigEndian = isBigEndian(number);
  const auto markIn = [&](std::string_view little, std::string_view big) -> Mark {
    if (text.starts_with(bigEndian ? big : little)) return {little.size(), false};
    if (text.starts_with(bigEndian ? little : big)) return {little.size(), true};
    return {};
  };
  switch (familyOf(number)) {
    case Family::utf8:
      return text.starts_with("\xEF\xBB\xBF"sv) ? Mark{3, false} : Mark{};
    case Family::utf16:
      return markIn("\xFF\xFE"sv, "\xFE\xFF"sv);
    case Family::utf32:
      return markIn("\xFF\xFE\0\0"sv, "\0\0\xFE\xFF"sv);
    default:
      return {};
  }
}

// --- UTF-7 ----------------------------------------------------------------------------

inline constexpr std::string_view base64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The bits of a run of digits, and what is in them.
class Utf7Run {
 public:
  Utf7Run(std::string_view digits, std::size_t at) : m_at(at) {
    for (const char digit : digits) {
      for (int bit = 5; bit >= 0; --bit) m_bits.push_back((base64.find(digit) >> bit & 1) != 0);
    }
  }

  Pieces pieces() const {
    Pieces found;
    std::size_t bit = 0;
    while (m_bits.size() - bit >= 16) {
      const char32_t unit = value(bit, 16);
      const bool hasNext = m_bits.size() - bit >= 32;
      if (!isHalf(unit)) {
        found.push_back({firstByte(bit), bytes(bit, 16), unit});
      } else if (isHighHalf(unit) && hasNext && isLowHalf(value(bit + 16, 16))) {
        found.push_back({firstByte(bit), bytes(bit, 32), joined(unit, value(bit + 16, 16))});
        bit += 16;
      } else {
        found.push_back({firstByte(bit), bytes(bit, 16), std::nullopt});
      }
      bit += 16;
    }
    const std::size_t left = m_bits.size() - bit;
    if (left >= 6 || value(bit, left) != 0) {
      found.push_back({firstByte(bit), bytes(bit, left), std::nullopt});
    }
    return found;
  }

 private:
  char32_t value(std::size_t bit, std::size_t count) const {
    char32_t result = 0;
    for (std::size_t i = 0; i < count; ++i) result = result << 1 | (m_bits[bit + i] ? 1U : 0U);
    return result;
  }
  std::size_t firstByte(std::size_t bit) const { return m_at + bit / 6; }
  std::size_t bytes(std::size_t bit, std::size_t count) const {
    return (bit + count - 1) / 6 - bit / 6 + 1;
  }

  std::vector<bool> m_bits;
  std::size_t m_at;
};

inline Pieces decodeUtf7(std::string_view text) {
  Pieces pieces;
  std::size_t at = 0;
  while (at < text.size()) {
    const int byte = byteAt(text, at);
    if (byte != '+') {
      const Piece lost = loss(at, 1);
      pieces.push_back(isAscii(byte) ? character(at, 1, static_cast<char32_t>(byte)) : lost);
      at += 1;
      continue;
    }
    const std::size_t start = at + 1;
    std::size_t end = text.find_first_not_of(base64, start);
    if (end == std::string_view::npos) end = text.size();
    const bool isClosed = byteAt(text, end) == '-';
    if (end > start) {
      const Pieces found = Utf7Run(text.substr(start, end - start), start).pieces();
      pieces.insert(pieces.end(), found.begin(), found.end());
    } else {
      pieces.push_back(isClosed ? character(at, 2, U'+') : loss(at, 1));
    }
    at = isClosed ? end + 1 : end;
  }
  return pieces;
}

// --- Pages -----------------------------------------------------------------------------

inline bool isLead(int number, int byte) {
  switch (number) {
    case 932:
    case 10001:
      return isWithin(byte, 0x81, 0x9F) || isWithin(byte, 0xE0, 0xFC);
    case 51932:
      return byte == 0x8E || byte == 0x8F || isWithin(byte, 0xA1, 0xFE);
    case 51936:
    case 51949:
      return isWithin(byte, 0xA1, 0xFE);
    case 936:
    case 949:
    case 950:
    case 1361:
    case 52936:
    case 54936:
      return isWithin(byte, 0x81, 0xFE);
    default:
      return false;
  }
}

inline std::optional<char32_t> readAs(const Page& page, Code code) {
  const auto found = page.reads.find(code);
  if (found == page.reads.end()) return std::nullopt;
  return found->second;
}

/// The character of the first `count` bytes at a place, if they are a code.
inline std::optional<char32_t> codeAt(const Page& page, std::string_view text, std::size_t at,
                                      std::size_t count) {
  if (text.size() - at < count) return std::nullopt;
  if (count > 1 && text[at] == '\0') return std::nullopt;
  return readAs(page, unitAt(text, at, count, true));
}

/// A lead byte whose code is none: it alone when what follows is ASCII, which is
/// never swallowed, or nothing.
inline std::size_t lengthOfLostPair(std::string_view text, std::size_t at) {
  const int next = byteAt(text, at + 1);
  return next < 0 || isAscii(next) ? 1 : 2;
}

inline Piece threeBytePiece(const Page& page, std::string_view text, std::size_t at) {
  if (const auto value = codeAt(page, text, at, 3)) return character(at, 3, *value);
  // A second byte that no code has is no part of one.
  if (!isWithin(byteAt(text, at + 1), 0xA1, 0xFE)) return loss(at, lengthOfLostPair(text, at));
  const int third = byteAt(text, at + 2);
  return loss(at, third < 0 || isAscii(third) ? 2 : 3);
}

inline Piece pagePiece(int number, std::string_view text, std::size_t at) {
  const Page& page = pageOf(number);
  const int byte = byteAt(text, at);
  if (number == 51932 && byte == 0x8F) return threeBytePiece(page, text, at);
  for (const std::size_t count : {std::size_t{2}, std::size_t{1}}) {
    if (const auto value = codeAt(page, text, at, count)) return character(at, count, *value);
  }
  return loss(at, isLead(number, byte) ? lengthOfLostPair(text, at) : 1);
}

inline std::optional<char32_t> readFourBytes(Code code) {
  const std::uint32_t place = placeOfFourBytes(code);
  for (const FourByteRange& range : gb18030().ranges) {
    if (isWithin(place, range.first, range.last)) return range.character + place - range.first;
  }
  return std::nullopt;
}

inline Piece gb18030Piece(std::string_view text, std::size_t at) {
  const Page& page = gb18030().page;
  if (isLead(54936, byteAt(text, at)) && isWithin(byteAt(text, at + 1), 0x30, 0x39)) {
    const int third = byteAt(text, at + 2);
    const int fourth = byteAt(text, at + 3);
    if (third < 0) return loss(at, 2);
    if (!isWithin(third, 0x81, 0xFE)) return loss(at, 1);
    if (fourth < 0) return loss(at, 3);
    if (!isWithin(fourth, 0x30, 0x39)) return loss(at, 1);
    const auto value = readFourBytes(unitAt(text, at, 4, true));
    return value ? character(at, 4, *value) : loss(at, 4);
  }
  for (const std::size_t count : {std::size_t{2}, std::size_t{1}}) {
    if (const auto value = codeAt(page, text, at, count)) return character(at, count, *value);
  }
  return loss(at, isLead(54936, byteAt(text, at)) ? lengthOfLostPair(text, at) : 1);
}

inline Piece gsmPiece(std::string_view text, std::size_t at) {
  for (const std::size_t count : {std::size_t{2}, std::size_t{1}}) {
    if (const auto value = codeAt(gsm(), text, at, count)) return character(at, count, *value);
  }
  return loss(at, 1);
}

// --- ISO-2022 ---------------------------------------------------------------------------

inline bool isGraphic(int byte) { return isWithin(byte, 0x21, 0x7E); }

/// The Shift_JIS code of a cell of JIS X 0208.
inline Code shiftJisOf(int first, int second) {
  const int row = first - 0x20;
  const int cell = second - 0x20;
  if (isWithin(row, 89, 92)) {
    return lastBlock().at(static_cast<std::size_t>(94 * (row - 89) + cell - 1));
  }
  const int lead = (row - 1) / 2 + (row <= 62 ? 0x81 : 0xC1);
  const int trail = row % 2 == 0 ? cell + 0x9E : cell + (cell < 64 ? 0x3F : 0x40);
  return static_cast<Code>(lead << 8 | trail);
}

/// A place in a set of two-byte codes: `read` gives the character of two bytes.
template <typename Read>
Piece pairPiece(std::string_view text, std::size_t at, Read read) {
  const int first = byteAt(text, at);
  const int second = byteAt(text, at + 1);
  if (!isGraphic(first)) {
    return isAscii(first) ? character(at, 1, static_cast<char32_t>(first)) : loss(at, 1);
  }
  if (!isGraphic(second)) return loss(at, 1);
  const std::optional<char32_t> value = read(first, second);
  return value ? character(at, 2, *value) : loss(at, 2);
}

inline Piece asciiPiece(std::string_view text, std::size_t at) {
  const int byte = byteAt(text, at);
  return isAscii(byte) ? character(at, 1, static_cast<char32_t>(byte)) : loss(at, 1);
}

inline Pieces decodeIso2022Jp(std::string_view text) {
  Pieces pieces;
  enum class Set { ascii, katakana, jis } designated = Set::ascii;
  bool isShifted = false;
  for (std::size_t at = 0; at < text.size();) {
    const int byte = byteAt(text, at);
    const std::string_view escape = text.substr(at, 3);
    const bool isLineEnd = byte == '\r' || byte == '\n';
    if (byte == 0x0E || byte == 0x0F) {
      isShifted = byte == 0x0E;
      at += 1;
      continue;
    }
    if (escape == "\x1B(B" || escape == "\x1B(J" || escape == "\x1B(I" || escape == "\x1B$@" ||
        escape == "\x1B$B") {
      designated = escape[1] == '$' ? Set::jis : Set::ascii;
      if (escape[2] == 'I') designated = Set::katakana;
      at += 3;
      continue;
    }
    if (isLineEnd) {
      designated = Set::ascii;
      isShifted = false;
    }
    const Set set = isShifted ? Set::katakana : designated;
    Piece piece = asciiPiece(text, at);
    if (byte == 0x1B) {
      piece = loss(at, 1);
    } else if (set == Set::katakana && isGraphic(byte)) {
      const auto katakana = static_cast<char32_t>(0xFF61 + byte - 0x21);
      piece = byte <= 0x5F ? character(at, 1, katakana) : loss(at, 1);
    } else if (set == Set::jis) {
      piece = pairPiece(text, at, [](int first, int second) {
        return readAs(pageOf(932), shiftJisOf(first, second));
      });
    }
    pieces.push_back(piece);
    at += piece.length;
  }
  return pieces;
}

inline Pieces decodeIso2022Kr(std::string_view text) {
  Pieces pieces;
  bool isShifted = false;
  for (std::size_t at = 0; at < text.size();) {
    const int byte = byteAt(text, at);
    if (text.substr(at, 4) == "\x1B$)C") {
      at += 4;
      continue;
    }
    if (byte == 0x0E || byte == 0x0F) {
      isShifted = byte == 0x0E;
      at += 1;
      continue;
    }
    if (byte == '\r' || byte == '\n') isShifted = false;
    Piece piece = asciiPiece(text, at);
    if (byte == 0x1B) {
      piece = loss(at, 1);
    } else if (isShifted) {
      piece = pairPiece(text, at, [](int first, int second) {
        return readAs(pageOf(949), static_cast<Code>((first | 0x80) << 8 | second | 0x80));
      });
    }
    pieces.push_back(piece);
    at += piece.length;
  }
  return pieces;
}

// --- All ----------------------------------------------------------------------------------

inline Piece pieceAt(int number, bool bigEndian, std::string_view text, std::size_t at,
                     const DecodeRules& rules) {
  switch (familyOf(number)) {
    case Family::utf8:
      return utf8Piece(text, at, rules);
    case Family::utf16:
      return utf16Piece(text, at, bigEndian);
    case Family::utf32:
      return utf32Piece(text, at, bigEndian);
    case Family::gsm:
      return gsmPiece(text, at);
    case Family::gb18030:
      return gb18030Piece(text, at);
    default:
      return pagePiece(number, text, at);
  }
}

/// The pieces in the order of the text. What only switches the state belongs to
/// none, nor does a mark that is taken off.
inline Pieces decode(int number, std::string_view text, const DecodeRules& rules = {}) {
  switch (familyOf(number)) {
    case Family::utf7:
      return decodeUtf7(text);
    case Family::iso2022Jp:
      return decodeIso2022Jp(text);
    case Family::iso2022Kr:
      return decodeIso2022Kr(text);
    default:
      break;
  }
  const Mark mark = rules.keepsMark ? Mark{} : markOf(text, number);
  const bool bigEndian = isBigEndian(number) != mark.turnsOrder;
  Pieces pieces;
  for (std::size_t at = mark.length; at < text.size(); at += pieces.back().length) {
    pieces.push_back(pieceAt(number, bigEndian, text, at, rules));
  }
  return pieces;
}

}  // namespace quorvel::text_reference
