#pragma once

// Blocks of 64 bytes of ISO-2022 text and of what it stands for, with a bit for
// each byte in masks of 64. Only the files of AVX2 kernels include this.

#include <cstddef>
#include <cstdint>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Iso2022State.hpp"

namespace quorvel::kernel::avx2 {

inline constexpr std::ptrdiff_t blockLength = 64;
inline constexpr std::ptrdiff_t halfLength = blockLength / 2;

inline constexpr std::uint64_t lastBit = std::uint64_t{1} << 63;

struct Block {
  __m256i low;
  __m256i high;
};

inline Block loadBlock(const unsigned char* p) { return {load(p), load(p + halfLength)}; }

inline void storeBlock(const Block& block, unsigned char* p) {
  store(block.low, p);
  store(block.high, p + halfLength);
}

inline std::uint64_t join(unsigned int low, unsigned int high) {
  return std::uint64_t{high} << 32 | low;
}

/// A bit for each byte for which `test` gives a highest bit.
template <typename Test>
inline std::uint64_t maskOf(const Block& block, const Test& test) {
  return join(highBits(test(block.low)), highBits(test(block.high)));
}

inline __m256i areBetween(__m256i bytes, int first, int last) {
  const __m256i nearest =
      _mm256_min_epu8(_mm256_max_epu8(bytes, everyByte(first)), everyByte(last));
  return _mm256_cmpeq_epi8(nearest, bytes);
}

inline __m256i areEqual(__m256i bytes, int value) {
  return _mm256_cmpeq_epi8(bytes, everyByte(value));
}

inline __m256i areShifts(__m256i bytes) {
  static_assert((iso2022::shiftOut | 1) == iso2022::shiftIn);
  return areEqual(_mm256_or_si256(bytes, everyByte(1)), iso2022::shiftIn);
}

inline __m256i areSwitches(__m256i bytes) {
  return _mm256_or_si256(areShifts(bytes), areEqual(bytes, iso2022::escape));
}

/// FF in the bytes whose bits are set.
inline __m256i bytesOf(unsigned int mask) {
  const __m256i place =
      _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
  const __m256i bit = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201U));
  const __m256i spread = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(mask)), place);
  return _mm256_cmpeq_epi8(_mm256_and_si256(spread, bit), bit);
}

}  // namespace quorvel::kernel::avx2
