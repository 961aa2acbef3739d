#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/helpers/RandomText.h"
#include "tests/reference/TextEncoding.h"

/// Random texts in any encoding: valid, and damaged in the way that hurts it.
namespace quorvel::test_text {

using text_reference::Family;
using text_reference::familyOf;

/// The characters that an encoding writes, in order; for Unicode some of all.
inline std::u32string makeRepertoire(int number) {
  std::u32string characters;
  const auto take = [&](const text_reference::Page& page) {
    for (const auto& [character, code] : page.writes) characters += character;
  };
  switch (familyOf(number)) {
    case Family::page:
      take(text_reference::pageOf(number));
      break;
    case Family::gsm:
      take(text_reference::gsm());
      break;
    case Family::iso2022Jp:
    case Family::iso2022Kr:
      for (const auto& [character, code] :
           text_reference::pageOf(familyOf(number) == Family::iso2022Jp ? 932 : 949).writes) {
        if (text_reference::holds(number, character)) characters += character;
      }
      break;
    default:
      for (const Range& range : ranges) {
        const unsigned int step = 1 + range.count / 400;
        for (unsigned int i = 0; i < range.count; i += step) characters += range.first + i;
      }
      if (familyOf(number) == Family::gb18030) take(text_reference::gb18030().page);
  }
  std::sort(characters.begin(), characters.end());
  return characters;
}

inline const std::u32string& repertoireOf(int number) {
  static std::map<int, std::u32string> repertoires;
  const auto found = repertoires.find(number);
  if (found != repertoires.end()) return found->second;
  return repertoires.emplace(number, makeRepertoire(number)).first->second;
}

inline char32_t anyOf(const std::u32string& characters, Random& random) {
  return characters[below(random, characters.size())];
}

/// A character that `from` writes and, mostly, `to` too.
inline char32_t characterFor(int from, int to, Random& random) {
  constexpr std::u32string_view common = U" e\r\n+-~\\&Az09\t";
  for (int i = 0; i < 8; ++i) {
    const std::size_t kind = below(random, 8);
    const char32_t character = kind == 0  ? common[below(random, common.size())]
                               : kind < 6 ? anyOf(repertoireOf(to), random)
                                          : anyOf(repertoireOf(from), random);
    if (text_reference::holds(from, character)) return character;
  }
  return U'a';
}

/// The codes of a page that are read and never written are text too.
inline std::vector<text_reference::Code> makeReadOnlyCodes(int number) {
  std::vector<text_reference::Code> codes;
  const text_reference::Page& page = text_reference::pageOf(number);
  for (const auto& [code, character] : page.reads) {
    const auto written = page.writes.find(character);
    if (written == page.writes.end() || written->second != code) codes.push_back(code);
  }
  std::sort(codes.begin(), codes.end());
  return codes;
}

inline std::string readOnlyCodeOf(int number, Random& random) {
  static std::map<int, std::vector<text_reference::Code>> known;
  if (familyOf(number) != Family::page) return "";
  if (!known.contains(number)) known[number] = makeReadOnlyCodes(number);
  const auto& codes = known[number];
  return codes.empty() ? "" : text_reference::bytesOf(codes[below(random, codes.size())]);
}

/// Valid text of about so many characters.
inline std::string validText(int from, int to, std::size_t characters, Random& random) {
  text_reference::Encoder encoder(from);
  const std::size_t longestRun = 1 + below(random, 12);
  while (characters > 0) {
    const char32_t character = characterFor(from, to, random);
    // Runs of neighbours take the loops for many at once.
    for (std::size_t i = 1 + below(random, longestRun); i > 0 && characters > 0; --i) {
      const char32_t neighbour = character + static_cast<char32_t>(below(random, 3));
      const bool isThere = text_reference::holds(from, neighbour) &&
                           !text_reference::isHalf(neighbour) && neighbour <= 0x10FFFF;
      encoder.put(isThere ? neighbour : character);
      --characters;
    }
    if (!text_reference::keepsState(from) && below(random, 8) == 0) {
      encoder.putRaw(readOnlyCodeOf(from, random));
    }
  }
  encoder.finish();
  return encoder.text();
}

/// Bytes that end, begin or break something in the encoding.
inline std::vector<std::string> awkwardPieces(int number) {
  using namespace std::string_literals;
  std::vector<std::string> pieces = awkwardBytes();
  const auto add = [&](std::initializer_list<std::string> more) {
    pieces.insert(pieces.end(), more);
    pieces.insert(pieces.end(), more);
    pieces.insert(pieces.end(), more);
  };
  switch (familyOf(number)) {
    case Family::utf8:
      add({"\xED\xB2\x80", "\xED\xB3\xBF", "\xED\xA0\x80", "\xEF\xBB\xBF", "\xF4\x90\x80\x80",
           "\xE2\x82", "\xF0\x9F\x98"});
      break;
    case Family::utf16:
      add({"\x00\xD8"s, "\xD8\x00"s, "\xDC\x80"s, "\x80\xDC"s, "\xFF\xFE", "\xFE\xFF"});
      break;
    case Family::utf32:
      add({"\x00\xD8\x00\x00"s, "\x00\x00\xD8\x00"s, "\x80\xDC\x00\x00"s, "\x00\x00\xDC\x80"s,
           "\xFF\xFE\x00\x00"s, "\x00\x00\xFE\xFF"s, "\x00\x00\x11\x00"s, "\x00\x11\x00\x00"s});
      break;
    case Family::utf7:
      add({"+", "-", "+-", "+A", "+AA-", "+2D0", "+3gA-", "+AOl", "/", "A", "+2D3eAA-"});
      break;
    case Family::gsm:
      add({"\x1B", "\x1B\x65", "\x1B\x1B", "\x1B"s + '\0'});
      break;
    case Family::iso2022Jp:
      add({"\x1B", "\x1B$B", "\x1B$@", "\x1B(J", "\x1B(B", "\x1B(I", "\x0E", "\x0F", "\x1B$",
           "\x1B(", "\n", "\r", "$", ")!", "y!", "|~", "\x1B$)C"});
      break;
    case Family::iso2022Kr:
      add({"\x1B", "\x1B$)C", "\x1B$)", "\x1B$", "\x0E", "\x0F", "\n", "\r", "0", ".!"});
      break;
    case Family::gb18030:
      add({"\x81\x30\x81\x30", "\x84\x31\xA5\x30", "\xE3\x32\x9A\x36", "\x81\x30", "\x81\x30\x81",
           "\x90\x30\x81\x30", "\x81", "0", "\xA3\xA0"});
      break;
    case Family::page:
      add({"\x81", "\x8E", "\x8F", "\x8F\xA2", "\x8F\xA2\xAF", "\x8F\xFF\xFF", "\xFC\xFC", "\xA1",
           "\x85\x40", "\x81\xFF", "\xFE"});
  }
  return pieces;
}

/// Replaces, drops and inserts a few pieces; at the end it may cut some bytes off.
inline void damageText(std::string& text, int number, Random& random) {
  const std::vector<std::string> pieces = awkwardPieces(number);
  const std::size_t times = 1 + below(random, 1 + text.size() / 16);
  for (std::size_t i = 0; i < times; ++i) {
    const std::string& piece = pieces[below(random, pieces.size())];
    const std::size_t at = below(random, text.size() + 1);
    text.replace(at, below(random, 3), below(random, 4) == 0 ? "" : piece);
  }
  if (below(random, 3) == 0)
    text.resize(text.size() - std::min<std::size_t>(text.size(), below(random, 4)));
}

/// Valid, damaged, or both by turns; now and then with a mark in front.
inline std::string randomSource(int from, int to, std::size_t characters, Random& random) {
  std::string text = validText(from, to, characters, random);
  if (text_reference::isUtf81632(from) && below(random, 6) == 0) {
    const int marked = below(random, 3) != 0 ? from
                       : from == 1200        ? 1201
                       : from == 12000       ? 12001
                                             : from;
    text.insert(0, text_reference::inUnicode(marked, 0xFEFF));
  }
  const std::size_t kind = below(random, 3);
  if (kind == 1) damageText(text, from, random);
  if (kind == 2) text += validText(from, to, characters, random);
  return text;
}

}  // namespace quorvel::test_text
