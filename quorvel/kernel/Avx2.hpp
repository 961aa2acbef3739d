#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

/// What the AVX2 kernels share. Only their files include this, and they include
/// no inline function that others use: a copy of it made with AVX2 might be the
/// one that the linker keeps for all.
namespace quorvel::kernel::avx2 {

/// Shorter texts go to the scalar loops at once: they are done before vectors
/// have been set up.
inline constexpr int leastBytes = 64;

inline __m256i load(const unsigned char* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

inline void store(__m256i bytes, unsigned char* p) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), bytes);
}

inline void store(__m128i bytes, unsigned char* p) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bytes);
}

inline __m256i everyByte(int value) { return _mm256_set1_epi8(static_cast<char>(value)); }

/// Bit i is the highest bit of byte i.
inline unsigned int highBits(__m256i bytes) {
  return static_cast<unsigned int>(_mm256_movemask_epi8(bytes));
}

/// Shuffles of 16 bytes, one for each number that eight bits of a mask can be.
struct Shuffles {
  alignas(16) unsigned char rows[256][16];

  __m128i operator[](unsigned int index) const {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(rows[index]));
  }
};

/// In a shuffle: put a zero here.
inline constexpr unsigned char nothing = 0x80;

/// Moves those of eight 16-bit units whose bits are set to the front.
constexpr Shuffles makeKeepers() {
  Shuffles keepers{};
  for (unsigned int mask = 0; mask < 256; ++mask) {
    unsigned int at = 0;
    for (unsigned int unit = 0; unit < 8; ++unit) {
      if ((mask >> unit & 1) == 0) continue;
      keepers.rows[mask][at++] = static_cast<unsigned char>(2 * unit);
      keepers.rows[mask][at++] = static_cast<unsigned char>(2 * unit + 1);
    }
    while (at < 16) keepers.rows[mask][at++] = nothing;
  }
  return keepers;
}

inline constexpr Shuffles keepers = makeKeepers();

/// Of eight 16-bit units those whose bits are set keep only their first byte.
constexpr Shuffles makeOneOrTwo() {
  Shuffles shuffles{};
  for (unsigned int isOne = 0; isOne < 256; ++isOne) {
    unsigned int at = 0;
    for (unsigned int unit = 0; unit < 8; ++unit) {
      shuffles.rows[isOne][at++] = static_cast<unsigned char>(2 * unit);
      if ((isOne >> unit & 1) != 0) continue;
      shuffles.rows[isOne][at++] = static_cast<unsigned char>(2 * unit + 1);
    }
    while (at < 16) shuffles.rows[isOne][at++] = nothing;
  }
  return shuffles;
}

inline constexpr Shuffles oneOrTwo = makeOneOrTwo();

/// The even places of a mask.
inline constexpr std::uint64_t evenBits = 0x5555555555555555U;

/// Every other byte of each run of `bits`, from its first on: where runs are of
/// what may begin a pair, and all that begins outside one is alone, the leads.
/// Adding the beginnings of runs at even places carries through these, and only
/// these.
inline std::uint64_t leadsOf(std::uint64_t bits) {
  const std::uint64_t starts = bits & ~(bits << 1);
  const std::uint64_t fromEven = bits & ~(bits + (starts & evenBits));
  return (fromEven & evenBits) | (bits & ~fromEven & ~evenBits);
}

inline __m128i lowHalf(__m256i bytes) { return _mm256_castsi256_si128(bytes); }
inline __m128i highHalf(__m256i bytes) { return _mm256_extracti128_si256(bytes, 1); }

}  // namespace quorvel::kernel::avx2
