// ISO-2022-JP to Shift_JIS, from escape to escape, 32 bytes of one set at a time.

#include <cstring>

#include "quorvel/kernel/JisAvx2.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::avx2 {

namespace {

// Pairs of JIS X 0208 as those of Shift_JIS, the lead in the lower byte of each
// unit. Two rows share a lead; the odd one has the lower trails, without 7F.
inline __m256i shiftJisFromPairs(__m256i pairs) {
  const __m256i isLead = _mm256_set1_epi16(0x00FF);
  const __m256i isOddRow = _mm256_cmpeq_epi8(_mm256_and_si256(pairs, everyByte(1)), everyByte(1));
  const __m256i followsOddRow = _mm256_slli_epi16(isOddRow, 8);
  const __m256i leads = _mm256_add_epi8(
      _mm256_and_si256(_mm256_srli_epi16(difference(pairs, -1), 1), everyByte(0x7F)),
      choose(_mm256_cmpgt_epi8(pairs, everyByte(0x5E)), 0xB0, 0x70));
  const __m256i pastGap = _mm256_cmpgt_epi8(pairs, everyByte(0x5F));
  const __m256i oddTrails = _mm256_sub_epi8(_mm256_add_epi8(pairs, everyByte(0x1F)), pastGap);
  const __m256i evenTrails = _mm256_add_epi8(pairs, everyByte(0x7E));
  const __m256i trails = _mm256_blendv_epi8(evenTrails, oddTrails, followsOddRow);
  return _mm256_blendv_epi8(trails, leads, isLead);
}

// How many of 32 bytes stand before the first that is set in `stops`.
inline std::ptrdiff_t bytesBefore(unsigned int stops) {
  return static_cast<std::ptrdiff_t>(_tzcnt_u32(stops));
}

inline Position readKanji(Position at, const unsigned char* end) {
  while (end - at.in >= halfLength) {
    const __m256i bytes = load(at.in);
    const unsigned int graphic = highBits(areBetween(bytes, 0x21, 0x7E));
    const unsigned int lastBlock =
        highBits(areBetween(bytes, 0x79, 0x7C)) & static_cast<unsigned int>(evenBits);
    store(shiftJisFromPairs(bytes), at.out);
    const std::ptrdiff_t length = bytesBefore(~graphic | lastBlock) & ~std::ptrdiff_t{1};
    at = {at.in + length, at.out + length};
    if (length != halfLength) break;
  }
  return at;
}

inline Position copyAscii(Position at, const unsigned char* end) {
  while (end - at.in >= halfLength) {
    const __m256i bytes = load(at.in);
    store(bytes, at.out);
    const std::ptrdiff_t length = bytesBefore(highBits(_mm256_or_si256(bytes, areSwitches(bytes))));
    at = {at.in + length, at.out + length};
    if (length != halfLength) break;
  }
  return at;
}

// Takes the escape that most texts have between Japanese and ASCII.
inline bool takeDesignation(Position& at, JapaneseSet& set) {
  if (std::memcmp(at.in, "\x1B$B", designationLength) == 0) {
    set = JapaneseSet::kanji;
  } else if (std::memcmp(at.in, "\x1B(B", designationLength) == 0) {
    set = JapaneseSet::ascii;
  } else {
    return false;
  }
  at.in += designationLength;
  return true;
}

}  // namespace

Progress iso2022JpToShiftJis(const unsigned char* in, const unsigned char* end, unsigned char* out,
                             Iso2022JpReading& state) {
  Position at{in, out};
  while (end - at.in >= blockLength) {
    if (!state.isShifted) {
      if (state.designated == JapaneseSet::kanji) at = readKanji(at, end);
      if (state.designated == JapaneseSet::ascii) at = copyAscii(at, end);
      if (end - at.in < designationLength || takeDesignation(at, state.designated)) continue;
      if (end - at.in < halfLength) break;
    }
    const Progress stepped = scalar::iso2022JpToShiftJis(at.in, at.in + halfLength, at.out, state);
    if (stepped.why == Stop::met) return stepped;
    at = {stepped.in, stepped.out};
  }
  return scalar::iso2022JpToShiftJis(at.in, end, at.out, state);
}

}  // namespace quorvel::kernel::avx2
