#include "cli/Glyph.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

#include "quorvel/text/convert.h"

namespace qvconv {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// As far as encodings that have a chart have characters.

constexpr Range wide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},  {0x3041, 0xA4CF}, {0xAC00, 0xD7A3},
                          {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},  {0xFF01, 0xFF60}, {0xFFE0, 0xFFE6},
                          {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};

constexpr Range combining[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05BF},
    {0x05C1, 0x05C2}, {0x05C4, 0x05C5}, {0x064B, 0x065F}, {0x0670, 0x0670},
    {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1DC0, 0x1DFF},
    {0x20D0, 0x20F0}, {0x302A, 0x302D}, {0x3099, 0x309A}, {0xFE20, 0xFE2F}};

constexpr Range shapeless[] = {{0x00AD, 0x00AD}, {0x200B, 0x200F}, {0x2028, 0x202E},
                               {0x2060, 0x206F}, {0x3164, 0x3164}, {0xFEFF, 0xFEFF}};

constexpr Range privateUse[] = {{0xE000, 0xF8FF}, {0xF0000, 0x10FFFF}};

constexpr Range signs[] = {{0x00A0, 0x00A9}, {0x00AB, 0x00B4},  {0x00B6, 0x00B9}, {0x00BB, 0x00BF},
                           {0x00D7, 0x00D7}, {0x00F7, 0x00F7},  {0x02C2, 0x02DF}, {0x0384, 0x0385},
                           {0x060C, 0x061F}, {0x0660, 0x066D},  {0x0E3F, 0x0E3F}, {0x0E4F, 0x0E5B},
                           {0x2000, 0x209F}, {0x20A0, 0x20CF},  {0x2100, 0x2BFF}, {0x3000, 0x3004},
                           {0x3007, 0x3030}, {0x309B, 0x309C},  {0x30FB, 0x30FB}, {0x3200, 0x33FF},
                           {0xFE30, 0xFE6F}, {0xFF01, 0xFF20},  {0xFF3B, 0xFF40}, {0xFF5B, 0xFF65},
                           {0xFFE0, 0xFFEE}, {0x1F000, 0x1FAFF}};

bool isIn(std::span<const Range> ranges, char32_t character) {
  return std::ranges::any_of(ranges, [&](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

std::string utf8Of(char32_t character) {
  using quorvel::text::Encoding;
  std::array<char, 4> bytes{};
  for (unsigned int i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<char>(character >> 8 * i & 0xFF);
  }
  quorvel::text::Options options;
  options.keepsMark = true;
  return quorvel::text::convert(Encoding::utf32le(), Encoding::utf8(), {bytes.data(), bytes.size()},
                                options)
      .text;
}

std::string hexOf(char32_t value, int digits) {
  char text[16];
  static_cast<void>(
      std::snprintf(text, sizeof text, "%0*X", digits, static_cast<unsigned int>(value)));
  return text;
}

}  // namespace

Category categoryOf(char32_t character) {
  if (isControl(character)) return Category::control;
  if (character < 0x80) return Category::ascii;
  if (isIn(privateUse, character)) return Category::privateUse;
  return isIn(signs, character) || isIn(shapeless, character) ? Category::sign : Category::letter;
}

Glyph glyphOf(char32_t character) {
  constexpr char32_t controlPictures = 0x2400;
  constexpr char32_t deletePicture = 0x2421;
  constexpr char32_t openBox = 0x2423;
  constexpr char32_t emptyBox = 0x25A1;
  constexpr char32_t dottedCircle = 0x25CC;
  if (character <= 0x20) return {utf8Of(controlPictures + character), 1};
  if (character == 0x7F) return {utf8Of(deletePicture), 1};
  if (isControl(character)) return {hexOf(character, 2), 2};
  if (character == 0xA0) return {utf8Of(openBox), 1};
  if (isIn(privateUse, character) || isIn(shapeless, character)) return {utf8Of(emptyBox), 1};
  if (isIn(combining, character)) return {utf8Of(dottedCircle) + utf8Of(character), 1};
  return {utf8Of(character), isIn(wide, character) ? 2U : 1U};
}

std::string codePointName(char32_t character) { return "U+" + hexOf(character, 4); }

}  // namespace qvconv
