#pragma once

// What both directions between ISO-2022-JP and Shift_JIS stand on with AVX2. Only
// the files of AVX2 kernels include this.

#include <cstddef>

#include "quorvel/kernel/Iso2022Avx2.hpp"

namespace quorvel::kernel::avx2 {

inline constexpr std::ptrdiff_t designationLength = 3;

inline __m256i difference(__m256i bytes, int subtrahend) {
  return _mm256_sub_epi8(bytes, everyByte(subtrahend));
}

inline __m256i choose(__m256i condition, int ifSet, int ifNot) {
  return _mm256_blendv_epi8(everyByte(ifNot), everyByte(ifSet), condition);
}

}  // namespace quorvel::kernel::avx2
