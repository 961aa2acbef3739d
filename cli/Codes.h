#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quorvel/text/Transcoder.h"

namespace qvconv {

/// The codes of an encoding, tried one by one.
class Codes {
 public:
  enum class Kind { character, lead, nothing };

  struct Meaning {
    Kind kind;
    char32_t character = 0;
  };

  explicit Codes(quorvel::text::Encoding encoding);

  /// What these bytes are: a character, the beginning of longer codes, nothing.
  Meaning of(std::string_view bytes);

  /// What they are at the end of a text, where nothing can follow.
  Meaning atEnd(std::string_view bytes);

  /// Calls `see(bytes, character)` for each character whose code begins with `lead` and
  /// is longer, in the order of the codes, and returns how many these are.
  template <typename See>
  std::uint64_t forEachBehind(const std::string& lead, const See& see) {
    std::uint64_t count = 0;
    // The only codes of four bytes, those of GB 18030, are many and end in a digit.
    const bool isLong = lead.size() == 3;
    for (unsigned int byte = isLong ? '0' : 0; byte < (isLong ? '9' + 1U : 0x100U); ++byte) {
      const std::string code = lead + static_cast<char>(byte);
      Meaning meaning = of(code);
      if (meaning.kind == Kind::lead) {
        const std::uint64_t behind = forEachBehind(code, see);
        count += behind;
        if (behind == 0) meaning = atEnd(code);
      }
      if (meaning.kind != Kind::character) continue;
      see(code, meaning.character);
      ++count;
    }
    return count;
  }

 private:
  quorvel::text::Transcoder m_transcoder;
};

}  // namespace qvconv
