// UTF-8 to UTF-32. Eight positions give at most eight units, the 32 bytes that one
// store writes, so stores stay inside four bytes of room for each byte of input.

#include <cstddef>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf8ToUnitsAvx2.hpp"

namespace quorvel::kernel::avx2 {

namespace {

using namespace utf8_to_units;

// With the byte above the lowest two of each code point.
struct HalfWithPlanes : Half {
  __m256i planes;
};

// The plane is settled at the fourth byte: 1 to 16, else it is overlong or too
// high. A lead of F8 or more gives one that is too high.
inline void makePlanes(__m256i two, __m256i three, HalfWithPlanes& half) {
  const __m256i isFourth = _mm256_cmpeq_epi8(_mm256_max_epu8(three, everyByte(0xF0)), three);
  const __m256i plane = _mm256_or_si256(shiftLeft(three, 2, 0x3C), shiftRight(two, 4, 0x03));
  const __m256i isAccepted =
      _mm256_cmpeq_epi8(masked(_mm256_sub_epi8(plane, everyByte(1)), 0xF0), _mm256_setzero_si256());
  half.planes = _mm256_and_si256(plane, isFourth);
  half.faults = _mm256_or_si256(half.faults, _mm256_andnot_si256(isAccepted, isFourth));
  half.kept &= ~highBits(areAtLeast(two, 0xF0));
}

inline __m256i moveKept(__m128i words, unsigned int kept) {
  return _mm256_cvtepu16_epi32(_mm_shuffle_epi8(words, keepers[kept]));
}

inline unsigned char* storeKept(__m256i units, unsigned int kept, unsigned char* out) {
  store(units, out);
  return out + std::ptrdiff_t{4} * _mm_popcnt_u32(kept);
}

inline unsigned char* storeBasic(__m128i units, unsigned int kept, unsigned char* out) {
  return storeKept(moveKept(units, kept), kept, out);
}

inline unsigned char* storeAny(__m128i lowest, __m128i planes, unsigned int kept,
                               unsigned char* out) {
  kept &= 0xFF;
  const __m256i above = _mm256_slli_epi32(moveKept(planes, kept), 16);
  return storeKept(_mm256_or_si256(moveKept(lowest, kept), above), kept, out);
}

struct ThirtyTwo {
  static constexpr std::ptrdiff_t bytesPerUnit = 4;
  static constexpr std::ptrdiff_t bytesBeforeFourth = 0;
  static constexpr Loop& finish = scalar::utf8ToUtf32;

  template <bool hasFours>
  static auto decodeHalf(const unsigned char* p) {
    if constexpr (hasFours) {
      HalfWithPlanes half{utf8_to_units::decodeHalf<true>(p), {}};
      makePlanes(load(p - 2), load(p - 3), half);
      return half;
    } else {
      return utf8_to_units::decodeHalf<false>(p);
    }
  }

  static unsigned char* storeHalf(const Half& half, unsigned char* out) {
    const __m256i even = _mm256_unpacklo_epi8(half.low, half.high);
    const __m256i odd = _mm256_unpackhi_epi8(half.low, half.high);
    return storeQuarters(even, odd, half.kept, out, storeBasic);
  }

  static unsigned char* storeHalf(const HalfWithPlanes& half, unsigned char* out) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i even = _mm256_unpacklo_epi8(half.low, half.high);
    const __m256i odd = _mm256_unpackhi_epi8(half.low, half.high);
    const __m256i evenPlanes = _mm256_unpacklo_epi8(half.planes, zero);
    const __m256i oddPlanes = _mm256_unpackhi_epi8(half.planes, zero);
    out = storeAny(lowHalf(even), lowHalf(evenPlanes), half.kept, out);
    out = storeAny(lowHalf(odd), lowHalf(oddPlanes), half.kept >> 8, out);
    out = storeAny(highHalf(even), highHalf(evenPlanes), half.kept >> 16, out);
    return storeAny(highHalf(odd), highHalf(oddPlanes), half.kept >> 24, out);
  }

  static void widenBlock(const unsigned char* p, unsigned char* out) {
    for (std::ptrdiff_t i = 0; i < blockLength; i += 8) {
      const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + i));
      store(_mm256_cvtepu8_epi32(bytes), out + 4 * i);
    }
  }
};

}  // namespace

Progress utf8ToUtf32(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return decode<ThirtyTwo>({in, out}, end);
}

}  // namespace quorvel::kernel::avx2
