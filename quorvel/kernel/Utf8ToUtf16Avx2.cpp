// UTF-8 to UTF-16. Eight positions give at most eight units, the sixteen bytes that
// one store writes, so stores stay inside two bytes of room for each byte of input.

#include <cstddef>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf8ToUnitsAvx2.hpp"

namespace quorvel::kernel::avx2 {

namespace {

using namespace utf8_to_units;

// The high surrogate stands at the third byte of four, the low one at the
// fourth; `high` gets 0x3F for the code point's highest bits when they are too
// few, and so leaves D8 to DB, as it does when they are too many.
inline void makePairs(__m256i bytes, __m256i one, __m256i two, __m256i three, Half& half) {
  const __m256i isThird = areAtLeast(two, 0xF0);
  const __m256i isFourth = areAtLeast(three, 0xF0);
  const __m256i lowest = _mm256_or_si256(shiftLeft(one, 2, 0xFC), shiftRight(bytes, 4, 0x03));
  const __m256i borrow = _mm256_cmpeq_epi8(masked(one, 0x30), _mm256_setzero_si256());
  const __m256i highest =
      _mm256_add_epi8(_mm256_add_epi8(masked(two, 0x0F), everyByte(0xD8)), borrow);
  const __m256i isHighSurrogate = _mm256_cmpeq_epi8(masked(highest, 0xFC), everyByte(0xD8));
  half.faults = _mm256_blendv_epi8(
      half.faults, _mm256_or_si256(half.faults, _mm256_xor_si256(isHighSurrogate, everyByte(0xFF))),
      isThird);
  half.low = _mm256_blendv_epi8(half.low, _mm256_sub_epi8(lowest, everyByte(0x40)), isThird);
  half.high = _mm256_blendv_epi8(half.high, highest, isThird);
  half.high = _mm256_blendv_epi8(
      half.high, _mm256_or_si256(masked(half.high, 0x03), everyByte(0xDC)), isFourth);
}

inline unsigned char* storeKept(__m128i units, unsigned int kept, unsigned char* out) {
  store(_mm_shuffle_epi8(units, keepers[kept]), out);
  return out + std::ptrdiff_t{2} * _mm_popcnt_u32(kept);
}

struct Sixteen {
  static constexpr std::ptrdiff_t bytesPerUnit = 2;
  static constexpr std::ptrdiff_t bytesBeforeFourth = 2;  // the high surrogate
  static constexpr Loop& finish = scalar::utf8ToUtf16;

  template <bool hasFours>
  static Half decodeHalf(const unsigned char* p) {
    Half half = utf8_to_units::decodeHalf<hasFours>(p);
    if constexpr (hasFours) makePairs(load(p), load(p - 1), load(p - 2), load(p - 3), half);
    return half;
  }

  static unsigned char* storeHalf(const Half& half, unsigned char* out) {
    const __m256i even = _mm256_unpacklo_epi8(half.low, half.high);
    const __m256i odd = _mm256_unpackhi_epi8(half.low, half.high);
    return storeQuarters(even, odd, half.kept, out, storeKept);
  }

  static void widenBlock(const unsigned char* p, unsigned char* out) {
    for (std::ptrdiff_t i = 0; i < blockLength; i += 16) {
      store(_mm256_cvtepu8_epi16(load16(p + i)), out + 2 * i);
    }
  }
};

}  // namespace

Progress utf8ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return decode<Sixteen>({in, out}, end);
}

}  // namespace quorvel::kernel::avx2
