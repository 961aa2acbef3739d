#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/helpers/Seed.h"
#include "tests/reference/Utf8Reference.h"

/// Text of all kinds of characters, and what breaks it.
namespace quorvel::test_text {

using test_seed::Random;

inline std::size_t below(Random& random, std::size_t limit) { return random() % limit; }

/// The code points from `first` on, `count` of them.
struct Range {
  char32_t first;
  unsigned int count;
};

inline constexpr Range ranges[] = {
    {0x20, 0x5F},        {0x80, 0x780},  {0x800, 0xD000}, {0xE000, 0x1DEF}, {0xFDF0, 0x210},
    {0x10000, 0x100000}, {0x400, 0x100}, {0x3040, 0x60},  {0x1F600, 0x50},  {0x00, 0x80},
    {0x7E, 4},           {0x7FE, 4},     {0xD7FE, 2},     {0xFFFE, 4},      {0x10FFFE, 2},
};

/// Text of a few ranges, each in runs of about the same length.
inline std::u32string randomText(Random& random, std::size_t length) {
  std::vector<Range> palette;
  for (std::size_t i = 1 + below(random, 4); i > 0; --i) {
    palette.push_back(ranges[below(random, std::size(ranges))]);
  }
  const std::size_t longest = 1 + below(random, 40);
  std::u32string text;
  while (text.size() < length) {
    const Range& range = palette[below(random, palette.size())];
    for (std::size_t i = 1 + below(random, longest); i > 0; --i) {
      text += static_cast<char32_t>(range.first + below(random, range.count));
    }
  }
  text.resize(length);
  return text;
}

inline std::string inUtf8(std::u32string_view text) {
  std::string bytes;
  for (const char32_t value : text) bytes += reference::encodeUtf8(value);
  return bytes;
}

/// Replaces, drops or inserts a few of `pieces`, each as long as `unit`.
inline void damage(std::string& text, const std::vector<std::string>& pieces, std::size_t unit,
                   Random& random) {
  for (std::size_t i = 1 + below(random, 3); i > 0 && text.size() >= unit; --i) {
    const std::size_t at = below(random, text.size() / unit) * unit;
    const std::string& piece = pieces[below(random, pieces.size())];
    switch (below(random, 3)) {
      case 0:
        text.replace(at, unit, piece);
        break;
      case 1:
        text.erase(at, unit);
        break;
      default:
        text.insert(at, piece);
    }
  }
}

inline std::vector<std::string> awkwardBytes() {
  std::vector<std::string> pieces;
  for (const int byte :
       {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1,
        0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xF7, 0xF8, 0xFB, 0xFC, 0xFE, 0xFF}) {
    pieces.emplace_back(1, static_cast<char>(byte));
  }
  return pieces;
}

}  // namespace quorvel::test_text
