#pragma once

// What the AVX2 kernels share. Only their files include this, and they include no
// inline function that others use: a copy of it made with AVX2 might be the one
// that the linker keeps for all.

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "quorvel/kernel/Progress.hpp"

namespace quorvel::kernel::avx2 {

/// Shorter texts go to the scalar loops at once: they are done before vectors
/// have been set up.
inline constexpr int leastBytes = 64;

inline __m256i load(const unsigned char* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

inline __m128i load16(const unsigned char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline void store(__m256i bytes, unsigned char* p) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), bytes);
}

inline void store(__m128i bytes, unsigned char* p) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bytes);
}

inline __m128i lowHalf(__m256i bytes) { return _mm256_castsi256_si128(bytes); }
inline __m128i highHalf(__m256i bytes) { return _mm256_extracti128_si256(bytes, 1); }

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
///
/// In 41 88 9F 42 88 9F 82 A0 of Shift_JIS the bytes that may be leads are, read from
/// the left, 0110'1110: runs from place 1 to 2 and from place 4 to 6. The second
/// begins at an even place, and adding its first bit clears it: its leads are 4 and
/// 6. The other began at an odd place, and its lead is 1.
inline std::uint64_t leadsOf(std::uint64_t bits) {
  const std::uint64_t starts = bits & ~(bits << 1);
  const std::uint64_t fromEven = bits & ~(bits + (starts & evenBits));
  return (fromEven & evenBits) | (bits & ~fromEven & ~evenBits);
}

/// Hands 32 items, of which unpacking two vectors left the even and the odd quarters,
/// to `storeEight(items, bits, out)`, eight at a time with their eight of `bits`.
template <typename StoreEight>
inline unsigned char* storeQuarters(__m256i even, __m256i odd, unsigned int bits,
                                    unsigned char* out, const StoreEight& storeEight) {
  out = storeEight(lowHalf(even), bits & 0xFF, out);
  out = storeEight(lowHalf(odd), bits >> 8 & 0xFF, out);
  out = storeEight(highHalf(even), bits >> 16 & 0xFF, out);
  return storeEight(highHalf(odd), bits >> 24, out);
}

/// Takes blocks of `length` bytes while there are `needed`: by `takeBlock`, which
/// returns where it came to or, if it cannot have all of the block, where it was;
/// or else by the scalar loop, `byStep`, until that meets something. The rest, which
/// is no block, is for `byStep` too.
template <typename TakeBlock, typename ByStep>
inline Progress takeBlocks(Position at, const unsigned char* end, std::ptrdiff_t length,
                           std::ptrdiff_t needed, const TakeBlock& takeBlock,
                           const ByStep& byStep) {
  while (end - at.in >= needed) {
    const Position next = takeBlock(at);
    if (next.in != at.in) {
      at = next;
      continue;
    }
    const Progress stepped = byStep(at.in, at.in + length, at.out);
    if (stepped.why == Stop::met) return stepped;
    at = {stepped.in, stepped.out};
  }
  return byStep(at.in, end, at.out);
}

}  // namespace quorvel::kernel::avx2
