#pragma once

// The GSM alphabet for the converter, which must tell lost characters from failure.

#include <cstddef>
#include <optional>

#include "quorvel/base/DataBuffer.h"

namespace quorvel {

/// How a transform to or from the GSM alphabet ended: those who do not mind
/// lost characters must still learn that memory ran out.
enum class GsmResult { clean, lossy, outOfMemory };

/// The transforms behind `_qvUtf::gsm_to_utf8` and `_qvUtf::utf8_to_gsm`.
GsmResult gsmToUtf8(const unsigned char* p, unsigned int n, DataBuffer& out);
GsmResult utf8ToGsm(const unsigned char* p, unsigned int n, DataBuffer& out);

inline constexpr unsigned char gsmEscape = 0x1B;

/// What stands at one place of GSM text: a character of one or two septets, or no
/// character, with a length of 1.
struct GsmCharacter {
  std::optional<char16_t> unit;
  unsigned int length;
};

/// The character at `p`, of which `available` bytes, at least one, may be looked at.
GsmCharacter gsmCharacterAt(const unsigned char* p, std::size_t available);

/// What a character is written as; a length of 0 means that it has no place.
struct GsmSeptets {
  unsigned char bytes[2];
  unsigned int length;
};

GsmSeptets gsmSeptetsOf(char32_t character);

}  // namespace quorvel
