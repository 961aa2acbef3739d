// What the command says of losses.

#include "cli/Sentences.h"

#include <array>
#include <cstdio>

namespace qvconv {

namespace {

using quorvel::text::Loss;
using quorvel::text::LossKind;

std::string whatIsLost(const Loss& loss, const EncodingNames& names) {
  switch (loss.kind) {
    case LossKind::malformed:
      return bytesOf(loss, " ") + (loss.length > 1 ? " are" : " is") + " no character in " +
             names.from;
    case LossKind::unmappable:
      return characterName(loss.character) + " has no place in " + names.to;
    case LossKind::bestFit:
      break;
  }
  return characterName(loss.character) + " became a character of " + names.to +
         " that looks like it";
}

}  // namespace

std::string bytesOf(const Loss& loss, std::string_view separator) {
  std::string text;
  for (const unsigned char byte : loss.bytes()) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    if (!text.empty()) text += separator;
    text += digits[byte >> 4];
    text += digits[byte & 0xF];
  }
  return text;
}

std::string characterName(char32_t character) {
  std::array<char, 16> text{};
  static_cast<void>(
      std::snprintf(text.data(), text.size(), "U+%04lX", static_cast<unsigned long>(character)));
  return text.data();
}

std::string lossSentence(std::string_view file, const Position& position, const Loss& loss,
                         const EncodingNames& names) {
  return std::string(file) + ':' + std::to_string(position.line) + ':' +
         std::to_string(position.column) + ": byte " + std::to_string(loss.offset) + ": " +
         whatIsLost(loss, names);
}

}  // namespace qvconv
