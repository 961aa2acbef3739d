#pragma once

#include <algorithm>

namespace quorvel {

/// The bytes that a Unicode text may begin with to tell how it is encoded.
struct ByteOrderMark {
  unsigned char bytes[4];
  unsigned int length;

  constexpr bool startsText(const unsigned char* text, unsigned int numBytes) const {
    return numBytes >= length && std::equal(bytes, bytes + length, text);
  }
};

inline constexpr ByteOrderMark markUtf8{{0xEF, 0xBB, 0xBF}, 3};
inline constexpr ByteOrderMark markUtf16le{{0xFF, 0xFE}, 2};
inline constexpr ByteOrderMark markUtf16be{{0xFE, 0xFF}, 2};
inline constexpr ByteOrderMark markUtf32le{{0xFF, 0xFE, 0x00, 0x00}, 4};
inline constexpr ByteOrderMark markUtf32be{{0x00, 0x00, 0xFE, 0xFF}, 4};

}  // namespace quorvel
