#pragma once

// What the bytes of ISO-2022 text are, for the loops and for what they stop at.

#include <cstddef>
#include <span>
#include <string_view>

#include "quorvel/kernel/Iso2022State.hpp"

namespace quorvel::iso2022 {

using Bytes = std::span<const unsigned char>;

/// Whether `byte` is one of the 94 that a 7-bit set assigns characters to.
constexpr bool isGraphic(unsigned char byte) { return byte >= 0x21 && byte <= 0x7E; }

/// Whether `byte` would switch sets for the reader. Such bytes of a source text
/// cannot be carried by an ISO-2022 encoding.
constexpr bool isSwitch(unsigned char byte) {
  return byte == shiftOut || byte == shiftIn || byte == escape;
}

constexpr bool isLineEnd(unsigned char byte) { return byte == '\r' || byte == '\n'; }

/// Whether `text` begins with a sequence that announces a set, known or not: an
/// escape and an intermediate byte (ISO/IEC 2022). Others, such as those that
/// colour a terminal, are text.
constexpr bool announcesSet(Bytes text) {
  return text.size() >= 2 && text[0] == escape && text[1] >= 0x20 && text[1] <= 0x2F;
}

/// Whether `text` begins with all of `start`.
constexpr bool startsWith(Bytes text, std::string_view start) {
  if (text.size() < start.size()) return false;
  for (std::size_t i = 0; i < start.size(); ++i) {
    if (text[i] != static_cast<unsigned char>(start[i])) return false;
  }
  return true;
}

/// Whether `text` is the first part of `sequence`, and not all of it.
constexpr bool isCutOff(Bytes text, std::string_view sequence) {
  if (text.size() >= sequence.size()) return false;
  return startsWith(text, sequence.substr(0, text.size()));
}

/// Announces KS C 5601 as the set that SO brings in.
inline constexpr std::string_view koreanHeader = "\x1B$)C";

}  // namespace quorvel::iso2022
