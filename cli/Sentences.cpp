// What the command says of losses.

#include "cli/Sentences.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace qvconv {

namespace {

using quorvel::text::Loss;
using quorvel::text::LossKind;
using quorvel::text::Report;

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

std::string countsSentence(const Report& report) {
  std::string list;
  const auto add = [&](std::uint64_t count, const char* one, const char* many) {
    if (count == 0) return;
    if (!list.empty()) list += ", ";
    list += std::to_string(count) + ' ' + (count == 1 ? one : many);
  };
  add(report.malformed, "malformed sequence", "malformed sequences");
  add(report.unmappable, "character without a place", "characters without a place");
  add(report.bestFits, "best fit", "best fits");
  return list;
}

std::string convertedSentence(const Report& report, const EncodingNames& names) {
  return std::to_string(report.bytesRead) + " bytes of " + names.from + " became " +
         std::to_string(report.bytesWritten) + " of " + names.to;
}

}  // namespace qvconv
