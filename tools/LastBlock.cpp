// Packs rows 89 to 92 of ISO-2022-JP: two bytes for each cell, in order.

#include "tools/LastBlock.h"

namespace pack {

namespace {

constexpr unsigned int firstRow = 89;
constexpr std::size_t rows = 4;
constexpr std::size_t cellsPerRow = 94;

// How the cell with this index is labelled, as in "89-01:".
std::string labelOf(std::size_t index) {
  const std::string cell = std::to_string(index % cellsPerRow + 1);
  return std::to_string(firstRow + index / cellsPerRow) + (cell.size() < 2 ? "-0" : "-") + cell +
         ":";
}

bool isShiftJis(int code) {
  const int lead = code >> 8;
  const int trail = code & 0xFF;
  const bool isLead = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
  return isLead && trail >= 0x40 && trail <= 0xFC && trail != 0x7F;
}

}  // namespace

Bytes packLastBlock(const InputFile& file) {
  Bytes block;
  for (const Line& line : file.lines) {
    const std::vector<std::string_view> words = splitWords(line.text);
    const std::string label = labelOf(block.size() / 2);
    if (words.empty() || words[0] != label) file.fail(line, "expected the label " + label);
    for (std::size_t i = 1; i < words.size(); ++i) {
      const int code = parseHex(words[i], 4);
      if (!isShiftJis(code)) {
        file.fail(line, "not a two-byte Shift_JIS code: " + std::string(words[i]));
      }
      if (block.size() == 2 * rows * cellsPerRow) file.fail(line, "more codes than cells");
      block.push_back(static_cast<unsigned char>(code >> 8));
      block.push_back(static_cast<unsigned char>(code & 0xFF));
    }
  }
  if (block.size() < 2 * rows * cellsPerRow) {
    file.failAtEnd("no code for cell " + labelOf(block.size() / 2));
  }
  return block;
}

}  // namespace pack
