#pragma once

#include <string>
#include <string_view>

#include "cli/LineCounter.h"
#include "quorvel/text/Report.h"

namespace qvconv {

/// How the user calls the two encodings.
struct EncodingNames {
  std::string from;
  std::string to;
};

/// A loss and its place: "FILE:LINE:COLUMN: byte 17: FF is no character in utf-8".
std::string lossSentence(std::string_view file, const Position& position,
                         const quorvel::text::Loss& loss, const EncodingNames& names);

/// The bytes of a loss in hexadecimal with `separator` between two.
std::string bytesOf(const quorvel::text::Loss& loss, std::string_view separator);

/// A character as "U+20AC".
std::string characterName(char32_t character);

}  // namespace qvconv
