#pragma once

#include <string>
#include <string_view>

namespace quorvel {

/// `text` with its control bytes written as \xNN, so that it stays within the
/// line that it is written into. Names come from mails and file systems, where
/// anything may stand in them. Not a public header.
inline std::string oneLine(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string line;
  line.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      line += c;
    } else {
      line += {'\\', 'x', digits[byte >> 4], digits[byte & 0xF]};
    }
  }
  return line;
}

}  // namespace quorvel
