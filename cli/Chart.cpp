#include "cli/Chart.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <map>

#include "cli/Codes.h"
#include "cli/Glyph.h"

namespace qvconv {

namespace {

using quorvel::text::Encoding;
using quorvel::text::EncodingKind;

// --- Cells ---------------------------------------------------------------------

constexpr unsigned int columnsPerCell = 2;

// Select Graphic Rendition (ECMA-48, 8.3.117).
constexpr std::string_view plain = "\x1B[0m";
constexpr std::string_view grey = "\x1B[100m";
constexpr std::string_view reversed = "\x1B[7m";

std::string_view colourOf(Category category) {
  switch (category) {
    case Category::control:
      return "\x1B[36m";
    case Category::ascii:
      return "";
    case Category::letter:
      return "\x1B[32m";
    case Category::sign:
      return "\x1B[33m";
    case Category::privateUse:
      break;
  }
  return "\x1B[35m";
}

std::string coloured(const std::string& text, std::string_view colour, Colours colours) {
  if (colours == Colours::no || colour.empty()) return text;
  return std::string(colour) + text + std::string(plain);
}

std::string cellOf(char32_t character, Colours colours) {
  const Glyph glyph = glyphOf(character);
  return coloured(glyph.utf8, colourOf(categoryOf(character)), colours) +
         std::string(columnsPerCell - glyph.columns, ' ');
}

std::string hexOf(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    char digits[4];
    static_cast<void>(std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c)));
    text += digits;
  }
  return text;
}

std::string withoutBlanksAtEnd(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

std::string nameOf(Encoding encoding) {
  return std::to_string(encoding.number()) + "  " + std::string(encoding.name()) + "  " +
         std::string(encoding.title());
}

// --- The grid ------------------------------------------------------------------

// What the codes of a grid are: those with one byte more than what leads them.
struct Grid {
  std::array<Codes::Meaning, 256> meanings{};
  std::map<unsigned int, std::uint64_t> codesBehind;  ///< of a byte that leads
};

Grid gridOf(Codes& codes, const std::string& lead) {
  Grid grid;
  for (unsigned int byte = 0; byte < 0x100; ++byte) {
    const std::string code = lead + static_cast<char>(byte);
    grid.meanings[byte] = codes.of(code);
    if (grid.meanings[byte].kind != Codes::Kind::lead) continue;
    const std::uint64_t count = codes.forEachBehind(code, [](const std::string&, char32_t) {});
    if (count == 0) grid.meanings[byte] = codes.atEnd(code);
    if (count != 0) grid.codesBehind[byte] = count;
  }
  return grid;
}

std::string cellOf(const Codes::Meaning& meaning, Colours colours) {
  switch (meaning.kind) {
    case Codes::Kind::character:
      return cellOf(meaning.character, colours);
    case Codes::Kind::lead:
      return coloured(">>", reversed, colours);
    case Codes::Kind::nothing:
      break;
  }
  return coloured("  ", grey, colours);
}

// A line without any code is left out.
std::string drawn(const Grid& grid, const std::string& lead, Colours colours) {
  const std::string name = hexOf(lead);
  std::string text(name.size() + 3, ' ');
  for (unsigned int low = 0; low < 16; ++low) {
    text += std::string(" _") + "0123456789ABCDEF"[low];
  }
  text = withoutBlanksAtEnd(text);
  for (unsigned int high = 0; high < 16; ++high) {
    std::string line = ' ' + name + "0123456789ABCDEF"[high] + "_";
    bool isEmpty = true;
    for (unsigned int low = 0; low < 16; ++low) {
      const Codes::Meaning& meaning = grid.meanings[16 * high + low];
      isEmpty &= meaning.kind == Codes::Kind::nothing;
      line += ' ' + cellOf(meaning, colours);
    }
    if (!isEmpty) text += withoutBlanksAtEnd(line);
  }
  return text;
}

// What each byte that leads leads to: how many codes, and what the first mean.
std::string overview(const Grid& grid, Codes& codes, const std::string& lead, Colours colours) {
  constexpr unsigned int most = 16;
  std::string text;
  for (const auto& [byte, count] : grid.codesBehind) {
    const std::string code = lead + static_cast<char>(byte);
    char number[24];
    static_cast<void>(
        std::snprintf(number, sizeof number, "%7llu", static_cast<unsigned long long>(count)));
    std::string line = ' ' + hexOf(code) + number + " ";
    unsigned int shown = 0;
    codes.forEachBehind(code, [&](const std::string&, char32_t character) {
      if (shown++ < most) line += ' ' + cellOf(character, colours);
    });
    text += withoutBlanksAtEnd(line);
  }
  return text.empty() ? text : "\n lead  codes  the first of them\n" + text;
}

}  // namespace

bool hasChart(Encoding encoding) {
  return encoding.kind() != EncodingKind::unicode && encoding.kind() != EncodingKind::iso2022;
}

std::optional<std::string> chartOf(Encoding encoding, std::string_view lead, Colours colours) {
  Codes codes(encoding);
  const std::string bytes(lead);
  if (!bytes.empty() && codes.of(bytes).kind != Codes::Kind::lead) return std::nullopt;
  const Grid grid = gridOf(codes, bytes);
  const std::string picture = drawn(grid, bytes, colours);
  if (!bytes.empty() && picture.find('\n') + 1 == picture.size()) return std::nullopt;
  return nameOf(encoding) + "\n\n" + picture + overview(grid, codes, bytes, colours);
}

std::string chartOfDifferences(Encoding one, Encoding other, Colours colours) {
  std::map<std::string, std::array<std::optional<char32_t>, 2>> meanings;
  for (unsigned int side = 0; side < 2; ++side) {
    Codes codes(side == 0 ? one : other);
    codes.forEachBehind(
        "", [&](const std::string& code, char32_t character) { meanings[code][side] = character; });
  }
  std::erase_if(meanings, [](const auto& row) { return row.second[0] == row.second[1]; });
  std::string text = nameOf(one) + '\n' + nameOf(other) + "\n\n";
  if (meanings.empty()) return text + "Every code means the same in both.\n";
  for (const auto& [code, characters] : meanings) {
    std::string line = ' ' + hexOf(code) + std::string(10 - 2 * code.size(), ' ');
    for (const std::optional<char32_t>& character : characters) {
      const std::string name = character ? codePointName(*character) : "none";
      line += character ? cellOf(*character, colours) : "  ";
      line += "  " + name + std::string(10 - name.size(), ' ');
    }
    text += withoutBlanksAtEnd(line);
  }
  return text + '\n' + std::to_string(meanings.size()) + " codes differ.\n";
}

}  // namespace qvconv
