#pragma once

#include <string>
#include <string_view>

/// ISO-2022-JP and ISO-2022-KR one character at a time.
namespace quorvel::reference {

struct Converted {
  std::string bytes;
  bool hadError = false;
  bool operator==(const Converted&) const = default;
};

namespace iso2022 {

inline int byteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : -1;
}

inline bool isWithin(int value, int first, int last) { return value >= first && value <= last; }
inline bool isGraphic(int byte) { return isWithin(byte, 0x21, 0x7E); }
inline bool isSwitch(int byte) { return byte == 0x0E || byte == 0x0F || byte == 0x1B; }

inline std::string pair(int lead, int trail) {
  return {static_cast<char>(lead), static_cast<char>(trail)};
}

}  // namespace iso2022

/// Where the two bytes of `code` stand in `codes`, or the size of that.
inline std::size_t placeOf(std::string_view code, std::string_view codes) {
  std::size_t place = 0;
  while (place < codes.size() && codes.substr(place, 2) != code) place += 2;
  return place;
}

/// `lastBlock` has the Shift_JIS codes of rows 89 to 92.
inline Converted shiftJisOfIso2022Jp(std::string_view text, std::string_view lastBlock) {
  using namespace iso2022;
  Converted result;
  char set = 'B';
  bool isShifted = false;
  const auto put = [&](int byte) { result.bytes += static_cast<char>(byte); };
  while (!text.empty()) {
    const int byte = byteAt(text, 0);
    const int next = byteAt(text, 1);
    std::size_t used = 1;
    const std::string_view start = text.substr(0, 3);
    const char current = isShifted ? 'I' : set;
    if (byte == 0x0E || byte == 0x0F) {
      isShifted = byte == 0x0E;
    } else if (start == "\x1B(B" || start == "\x1B(J" || start == "\x1B(I") {
      set = start[2] == 'I' ? 'I' : 'B';
      used = 3;
    } else if (start == "\x1B$@" || start == "\x1B$B") {
      set = '$';
      used = 3;
    } else {
      if (byte == 0x1B && isWithin(next, 0x20, 0x2F)) result.hadError = true;
      if (current == 'B') {
        put(byte);
      } else if (byte >= 0x80 || (current == '$' && isGraphic(byte) && !isGraphic(next))) {
        result.hadError = true;
      } else if (current == 'I' && isWithin(byte, 0x21, 0x5F)) {
        put(byte + 0x80);
      } else if (current == 'I' || !isGraphic(byte)) {
        put(byte);
      } else {
        const int row = byte - 0x20;
        const int cell = next - 0x20;
        used = 2;
        if (isWithin(row, 89, 92)) {
          result.bytes +=
              lastBlock.substr(static_cast<std::size_t>(188 * (row - 89) + 2 * (cell - 1)), 2);
        } else {
          put((row - 1) / 2 + (row <= 62 ? 0x81 : 0xC1));
          put(row % 2 == 0 ? cell + 0x9E : cell < 64 ? cell + 0x3F : cell + 0x40);
        }
      }
    }
    text.remove_prefix(used);
  }
  return result;
}

inline Converted iso2022JpOfShiftJis(std::string_view text, std::string_view lastBlock) {
  using namespace iso2022;
  Converted result;
  std::string set = "(B";
  const auto put = [&](const std::string& wanted, const std::string& bytes) {
    if (wanted != set) result.bytes += "\x1B" + wanted;
    set = wanted;
    result.bytes += bytes;
  };
  while (!text.empty()) {
    const int byte = byteAt(text, 0);
    const int next = byteAt(text, 1);
    std::size_t used = 1;
    if (isSwitch(byte)) {
      result.hadError = true;
    } else if (byte < 0x80) {
      put("(B", std::string(1, text[0]));
    } else if (isWithin(byte, 0xA1, 0xDF)) {
      put("(I", std::string(1, static_cast<char>(byte - 0x80)));
    } else {
      std::string code = pair(0x22, 0x2E);
      const bool isLead = isWithin(byte, 0x81, 0x9F) || isWithin(byte, 0xE0, 0xFC);
      if (isLead && isWithin(next, 0x40, 0xFC) && next != 0x7F) {
        used = 2;
        const std::size_t place = byte < 0xF0 ? 0 : placeOf(text.substr(0, 2), lastBlock);
        if (byte < 0xF0) {
          const int odd = 2 * (byte - (byte < 0xA0 ? 0x81 : 0xC1)) + 1;
          code = next >= 0x9F ? pair(odd + 0x21, next - 0x7E)
                              : pair(odd + 0x20, next - (next < 0x7F ? 0x1F : 0x20));
        } else if (place < lastBlock.size()) {
          const int cell = static_cast<int>(place) / 2;
          code = pair(0x79 + cell / 94, 0x21 + cell % 94);
        } else {
          result.hadError = true;
        }
      } else {
        result.hadError = true;
      }
      put("$B", code);
    }
    text.remove_prefix(used);
  }
  if (set != "(B") result.bytes += "\x1B(B";
  return result;
}

inline Converted kscOfIso2022Kr(std::string_view text) {
  using namespace iso2022;
  Converted result;
  bool isShifted = false;
  while (!text.empty()) {
    const int byte = byteAt(text, 0);
    const int next = byteAt(text, 1);
    std::size_t used = 1;
    if (text.substr(0, 4) == "\x1B$)C") {
      used = 4;
    } else if (byte == 0x0E || byte == 0x0F) {
      isShifted = byte == 0x0E;
    } else {
      if (byte == 0x1B && isWithin(next, 0x20, 0x2F)) result.hadError = true;
      if (!isShifted || (byte < 0x80 && !isGraphic(byte))) {
        result.bytes += text[0];
      } else if (isGraphic(byte) && isGraphic(next)) {
        result.bytes += pair(byte + 0x80, next + 0x80);
        used = 2;
      } else {
        result.hadError = true;
      }
    }
    text.remove_prefix(used);
  }
  return result;
}

inline Converted iso2022KrOfKsc(std::string_view text) {
  using namespace iso2022;
  Converted result;
  if (text.empty()) return result;
  result.bytes = "\x1B$)C";
  char shift = 0x0F;
  const auto put = [&](char wanted, const std::string& bytes) {
    if (wanted != shift) result.bytes += wanted;
    shift = wanted;
    result.bytes += bytes;
  };
  while (!text.empty()) {
    const int byte = byteAt(text, 0);
    const int next = byteAt(text, 1);
    const bool isKscPair = isWithin(byte, 0xA1, 0xFE) && isWithin(next, 0xA1, 0xFE);
    const bool isTrail =
        isWithin(next, 0x41, 0x5A) || isWithin(next, 0x61, 0x7A) || isWithin(next, 0x81, 0xFE);
    std::size_t used = 1;
    if (isKscPair) {
      put(0x0E, pair(byte - 0x80, next - 0x80));
      used = 2;
    } else if (isSwitch(byte)) {
      result.hadError = true;
    } else {
      used = isWithin(byte, 0x81, 0xFE) && isTrail ? 2 : 1;
      put(0x0F, std::string(text.substr(0, used)));
    }
    text.remove_prefix(used);
  }
  if (shift == 0x0E) result.bytes += '\x0F';
  return result;
}

}  // namespace quorvel::reference
