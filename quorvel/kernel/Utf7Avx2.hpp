#pragma once

// What both directions of UTF-7 stand on with AVX2: which of 32 bytes are in a set
// of ASCII characters, found by two shuffles. Only the files of AVX2 kernels
// include this.

#include <cstddef>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Base64Alphabet.hpp"

namespace quorvel::kernel::avx2 {

inline constexpr std::ptrdiff_t vectorLength = 32;

// An entry for each half of a byte.
struct NibbleTable {
  alignas(16) unsigned char rows[16];

  __m256i at(__m256i nibbles) const {
    const __m128i table = _mm_load_si128(reinterpret_cast<const __m128i*>(rows));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(table), nibbles);
  }
};

// By the lower half of a byte: a bit for each upper half with which it is one of
// the characters. "A", "a" and "Q" are 41, 61 and 51: in the row of 1 are the bits
// of 4 and 6 and 5, and those of "1" (31) and "q" (71), so that it holds F8 for the
// digits of base64. 21, "!", asks for the bit of 2, which is not in F8.
template <std::size_t size>
inline constexpr NibbleTable makeUpperHalves(const char (&characters)[size]) {
  NibbleTable table{};
  for (std::size_t i = 0; i + 1 < size; ++i) {
    const auto byte = static_cast<unsigned char>(characters[i]);
    table.rows[byte & 0xF] = static_cast<unsigned char>(table.rows[byte & 0xF] | 1U << (byte >> 4));
  }
  return table;
}

inline constexpr NibbleTable digitHalves = makeUpperHalves(base64Digits);

// By the upper half: the bit that the table above has for it.
inline constexpr NibbleTable bitsOfUpperHalf = {{1, 2, 4, 8, 16, 32, 64, 128}};

// FF in the first bytes, so many.
inline __m256i firstBytes(unsigned int length) {
  const __m256i places =
      _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                       22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
  return _mm256_cmpgt_epi8(everyByte(static_cast<int>(length)), places);
}

inline __m256i upperHalvesOf(__m256i bytes) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), everyByte(0x0F));
}

inline __m256i areNotIn(const NibbleTable& upperHalves, __m256i bytes) {
  const __m256i lower = _mm256_and_si256(bytes, everyByte(0x0F));
  const __m256i matches =
      _mm256_and_si256(upperHalves.at(lower), bitsOfUpperHalf.at(upperHalvesOf(bytes)));
  return _mm256_cmpeq_epi8(matches, _mm256_setzero_si256());
}

}  // namespace quorvel::kernel::avx2
