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

/// How much was lost, kind by kind: "2 malformed sequences, 1 best fit".
std::string countsSentence(const quorvel::text::Report& report);

/// How much was converted: "120 bytes of utf-8 became 240 of utf-16le".
std::string convertedSentence(const quorvel::text::Report& report, const EncodingNames& names);

/// The bytes of a loss in hexadecimal with `separator` between two.
std::string bytesOf(const quorvel::text::Loss& loss, std::string_view separator);

/// A character as "U+20AC".
std::string characterName(char32_t character);

}  // namespace qvconv
