#pragma once

#include <array>
#include <cstddef>

namespace quorvel {

/// Whether a byte of Mac Arabic is written from right to left, 1 or 0: an entry
/// for each of the bytes 0x20 to 0xFF.
extern const std::array<int, 224> MacArabicRL;

/// Turns Mac Arabic text from visual into logical order, in place, and gives
/// right-to-left twins of ASCII characters their ASCII codes.
void reorderMacArabic(unsigned char* text, std::size_t n);

}  // namespace quorvel
