// KS C 5601 in its EUC-KR form to ISO-2022-KR, in blocks of 64 bytes: the mask of all
// pairs in a block says where the set changes, and shuffles put the shifts in, eight
// bytes of text at a time. A block of anything out of the ordinary goes to the scalar
// loop.

#include "quorvel/kernel/Iso2022Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::avx2 {

namespace {

// Of eight bytes of text and eight shifts: each of the first, after the shift of
// its place where the bit is set.
constexpr Shuffles makeInserters() {
  Shuffles inserters{};
  for (unsigned int mask = 0; mask < 256; ++mask) {
    unsigned int at = 0;
    for (unsigned int byte = 0; byte < 8; ++byte) {
      if ((mask >> byte & 1) != 0) {
        inserters.rows[mask][at++] = static_cast<unsigned char>(8 + byte);
      }
      inserters.rows[mask][at++] = static_cast<unsigned char>(byte);
    }
    while (at < 16) inserters.rows[mask][at++] = nothing;
  }
  return inserters;
}

constexpr Shuffles inserters = makeInserters();

inline unsigned char* storeEight(__m128i textAndShifts, unsigned int changes, unsigned char* out) {
  store(_mm_shuffle_epi8(textAndShifts, inserters[changes]), out);
  return out + 8 + _mm_popcnt_u32(changes);
}

inline unsigned char* storeInserted(__m256i bytes, unsigned int changes, unsigned char* out) {
  const __m256i text = _mm256_and_si256(bytes, everyByte(0x7F));
  const __m256i shifts =
      _mm256_blendv_epi8(everyByte(iso2022::shiftIn), everyByte(iso2022::shiftOut), bytes);
  const __m256i even = _mm256_unpacklo_epi64(text, shifts);
  const __m256i odd = _mm256_unpackhi_epi64(text, shifts);
  return storeQuarters(even, odd, changes, out, storeEight);
}

inline Position takeBlock(const Position& at, bool& isShifted) {
  const Block block = loadBlock(at.in);
  const std::uint64_t highs = maskOf(block, [](__m256i bytes) { return bytes; });
  const std::uint64_t hangul =
      maskOf(block, [](__m256i bytes) { return areBetween(bytes, 0xA1, 0xFE); });
  const std::uint64_t alone = leadsOf(highs) & ~(highs >> 1);
  const std::uint64_t faults = (highs ^ hangul) | maskOf(block, areSwitches) | (alone & ~lastBit);
  if (faults != 0) return at;

  const std::uint64_t changes = highs ^ (highs << 1 | (isShifted ? 1 : 0));
  unsigned char* out = storeInserted(block.low, static_cast<unsigned int>(changes), at.out);
  out = storeInserted(block.high, static_cast<unsigned int>(changes >> 32), out);
  if (alone == 0) {
    isShifted = (highs & lastBit) != 0;
    return {at.in + blockLength, out};
  }
  isShifted = (highs << 1 & lastBit) != 0;
  return {at.in + blockLength - 1, out - ((changes & lastBit) != 0 ? 2 : 1)};
}

}  // namespace

Progress kscToIso2022Kr(const unsigned char* in, const unsigned char* end, unsigned char* out,
                        bool& isShifted) {
  return takeBlocks(
      {in, out}, end, blockLength, blockLength,
      [&](const Position& at) { return takeBlock(at, isShifted); },
      [&](auto... text) { return scalar::kscToIso2022Kr(text..., isShifted); });
}

}  // namespace quorvel::kernel::avx2
