// UTF-32 to UTF-8: every unit becomes the four bytes that it could need, in fixed
// places, and shuffles drop those that it does not. Four units have sixteen bytes
// of room, what one store writes.

#include <cstddef>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::avx2 {

namespace {

constexpr std::ptrdiff_t vectorLength = 32;
constexpr std::ptrdiff_t asciiLength = 4 * vectorLength;
constexpr std::ptrdiff_t blockLength = 2 * vectorLength;

inline __m256i everyUnit(unsigned int value) { return _mm256_set1_epi32(static_cast<int>(value)); }

inline __m256i masked(__m256i units, unsigned int mask) {
  return _mm256_and_si256(units, everyUnit(mask));
}

// Writes 32 units of ASCII, or nothing if something else is among them.
inline bool narrowUnits(const unsigned char* in, unsigned char* out) {
  const __m256i a = load(in);
  const __m256i b = load(in + vectorLength);
  const __m256i c = load(in + 2 * vectorLength);
  const __m256i d = load(in + 3 * vectorLength);
  const __m256i all = _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
  if (_mm256_testz_si256(all, everyUnit(0xFFFFFF80)) == 0) return false;
  const __m256i lanes = _mm256_packus_epi16(_mm256_packus_epi32(a, b), _mm256_packus_epi32(c, d));
  store(_mm256_permutevar8x32_epi32(lanes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)), out);
  return true;
}

inline __m256i areSurrogates(__m256i units) {
  return _mm256_cmpeq_epi32(masked(units, 0xFFFFF800), everyUnit(0xD800));
}

inline bool areScalarValues(__m256i a, __m256i b) {
  const __m256i most = _mm256_max_epu32(_mm256_max_epu32(a, b), everyUnit(0x10FFFF));
  const __m256i differ = _mm256_xor_si256(most, everyUnit(0x10FFFF));
  const __m256i surrogates = _mm256_or_si256(areSurrogates(a), areSurrogates(b));
  const __m256i faults = _mm256_or_si256(differ, surrogates);
  return _mm256_testz_si256(faults, faults) != 0;
}

// Of four characters in four bytes each: the last one to four. Two bits for each
// character say how many more than one.
constexpr unsigned int moreBytes(unsigned int index, unsigned int unit) {
  return index >> 2 * unit & 3;
}

constexpr Shuffles makeOneToFour() {
  Shuffles shuffles{};
  for (unsigned int index = 0; index < 256; ++index) {
    unsigned int at = 0;
    for (unsigned int unit = 0; unit < 4; ++unit) {
      for (unsigned int i = 3 - moreBytes(index, unit); i < 4; ++i) {
        shuffles.rows[index][at++] = static_cast<unsigned char>(4 * unit + i);
      }
    }
    while (at < 16) shuffles.rows[index][at++] = nothing;
  }
  return shuffles;
}

constexpr Shuffles oneToFour = makeOneToFour();

// Eight characters: their bytes, the last of each in the highest place, and in
// each unit two words for the two bits of how many there are.
struct Encoded {
  __m256i bytes;
  __m256i more;
};

inline Encoded encodeUnits(__m256i units) {
  const __m256i hasTwo = _mm256_cmpgt_epi32(units, everyUnit(0x7F));
  const __m256i hasThree = _mm256_cmpgt_epi32(units, everyUnit(0x7FF));
  const __m256i hasFour = _mm256_cmpgt_epi32(units, everyUnit(0xFFFF));

  const __m256i alone = _mm256_slli_epi32(units, 24);
  const __m256i bits = _mm256_or_si256(
      _mm256_or_si256(_mm256_srli_epi32(units, 18), masked(_mm256_srli_epi32(units, 4), 0x3F00)),
      _mm256_or_si256(masked(_mm256_slli_epi32(units, 10), 0x3F0000), masked(alone, 0x3F000000)));
  // The first of four bytes is marked as such; those of two and of three are
  // what would follow it, and more.
  const __m256i lead = _mm256_andnot_si256(
      hasFour, _mm256_blendv_epi8(everyUnit(0x400000), everyUnit(0x6000), hasThree));
  const __m256i bytes = _mm256_or_si256(_mm256_or_si256(bits, everyUnit(0x808080F0)), lead);

  const __m256i isOdd = _mm256_xor_si256(_mm256_xor_si256(hasTwo, hasThree), hasFour);
  return {_mm256_blendv_epi8(alone, bytes, hasTwo), _mm256_blend_epi16(isOdd, hasThree, 0xAA)};
}

inline unsigned char* storeFour(__m128i bytes, unsigned int more, unsigned char* out) {
  more &= 0xFF;
  store(_mm_shuffle_epi8(bytes, oneToFour[more]), out);
  return out + 4 + _mm_popcnt_u32(more) + _mm_popcnt_u32(more & 0xAA);
}

// Writes sixteen units, or returns null if one of them is no scalar value.
inline unsigned char* encodeBlock(const unsigned char* in, unsigned char* out) {
  const __m256i a = load(in);
  const __m256i b = load(in + vectorLength);
  if (!areScalarValues(a, b)) return nullptr;
  const Encoded first = encodeUnits(a);
  const Encoded second = encodeUnits(b);
  const unsigned int more = highBits(_mm256_packs_epi16(first.more, second.more));
  out = storeFour(lowHalf(first.bytes), more, out);
  out = storeFour(highHalf(first.bytes), more >> 16, out);
  out = storeFour(lowHalf(second.bytes), more >> 8, out);
  return storeFour(highHalf(second.bytes), more >> 24, out);
}

}  // namespace

Progress utf32ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  Position at{in, out};
  while (end - at.in >= blockLength) {
    if (end - at.in >= asciiLength && narrowUnits(at.in, at.out)) {
      at = {at.in + asciiLength, at.out + asciiLength / 4};
      continue;
    }
    unsigned char* written = encodeBlock(at.in, at.out);
    if (!written) break;
    at = {at.in + blockLength, written};
  }
  return scalar::utf32ToUtf8(at.in, end, at.out);
}

}  // namespace quorvel::kernel::avx2
