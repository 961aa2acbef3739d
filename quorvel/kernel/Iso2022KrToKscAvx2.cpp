// ISO-2022-KR and KS C 5601 in its EUC-KR form, in blocks of 64 bytes: the masks of
// all shifts in a block say which set each byte is in, and shuffles take the shifts
// out or put them in, eight bytes of text at a time. A block of anything out of the
// ordinary goes to the scalar loops.

#include "quorvel/kernel/Iso2022Avx2.hpp"

namespace quorvel::kernel::avx2 {

namespace {

// A bit for each byte that an odd number of the set bits is at or before.
inline std::uint64_t betweenOddAndEven(std::uint64_t bits) {
  for (int distance = 1; distance < 64; distance *= 2) bits ^= bits << distance;
  return bits;
}

// Moves the bytes whose bits are set to the front.
constexpr Shuffles makeByteKeepers() {
  Shuffles keepers{};
  for (unsigned int mask = 0; mask < 256; ++mask) {
    unsigned int at = 0;
    for (unsigned int byte = 0; byte < 8; ++byte) {
      if ((mask >> byte & 1) != 0) keepers.rows[mask][at++] = static_cast<unsigned char>(byte);
    }
    while (at < 16) keepers.rows[mask][at++] = nothing;
  }
  return keepers;
}

constexpr Shuffles byteKeepers = makeByteKeepers();

inline unsigned char* storeKept(__m128i bytes, unsigned int kept, unsigned char* out) {
  kept &= 0xFF;
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(bytes, byteKeepers[kept]));
  return out + _mm_popcnt_u32(kept);
}

inline unsigned char* storeKept(__m256i bytes, unsigned int kept, unsigned char* out) {
  const __m256i second = _mm256_unpackhi_epi64(bytes, bytes);
  out = storeKept(lowHalf(bytes), kept, out);
  out = storeKept(lowHalf(second), kept >> 8, out);
  out = storeKept(highHalf(bytes), kept >> 16, out);
  return storeKept(highHalf(second), kept >> 24, out);
}

inline __m256i withHighBits(__m256i bytes, unsigned int mask) {
  return _mm256_or_si256(bytes, _mm256_and_si256(bytesOf(mask), everyByte(0x80)));
}

// Takes the block at `at.in`, but for a pair that its end cuts off; or nothing.
inline Progress readBlock(const Progress& at, bool& isShifted) {
  const Block block = loadBlock(at.in);
  const std::uint64_t highs = maskOf(block, [](__m256i bytes) { return bytes; });
  const std::uint64_t escapes =
      maskOf(block, [](__m256i bytes) { return areEqual(bytes, iso2022::escape); });
  const std::uint64_t shifts = maskOf(block, areShifts);
  const std::uint64_t outs =
      maskOf(block, [](__m256i bytes) { return areEqual(bytes, iso2022::shiftOut); });
  const std::uint64_t graphic =
      maskOf(block, [](__m256i bytes) { return areBetween(bytes, 0x21, 0x7E); });

  std::uint64_t shifted = betweenOddAndEven(shifts);
  if (isShifted) shifted = ~shifted;
  const std::uint64_t hangul = shifted & graphic;
  const std::uint64_t alone = leadsOf(hangul) & ~(hangul >> 1);
  // Shifts to the set that is in use anyway are not counted here.
  const std::uint64_t faults =
      escapes | (highs & shifted) | ((shifted ^ outs) & shifts) | (alone & ~lastBit);
  if (faults != 0) return at;

  const std::uint64_t kept = ~shifts;
  const Block text = {withHighBits(block.low, static_cast<unsigned int>(hangul)),
                      withHighBits(block.high, static_cast<unsigned int>(hangul >> 32))};
  unsigned char* out = storeKept(text.low, static_cast<unsigned int>(kept), at.out);
  out = storeKept(text.high, static_cast<unsigned int>(kept >> 32), out);
  isShifted = (shifted & lastBit) != 0;
  const int cut = alone != 0 ? 1 : 0;
  return {at.in + blockLength - cut, out - cut};
}

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

inline unsigned char* storeInserted(__m128i textAndShifts, unsigned int changes,
                                    unsigned char* out) {
  changes &= 0xFF;
  store(_mm_shuffle_epi8(textAndShifts, inserters[changes]), out);
  return out + 8 + _mm_popcnt_u32(changes);
}

inline unsigned char* storeInserted(__m256i bytes, unsigned int changes, unsigned char* out) {
  const __m256i text = _mm256_and_si256(bytes, everyByte(0x7F));
  const __m256i shifts =
      _mm256_blendv_epi8(everyByte(iso2022::shiftIn), everyByte(iso2022::shiftOut), bytes);
  const __m256i even = _mm256_unpacklo_epi64(text, shifts);
  const __m256i odd = _mm256_unpackhi_epi64(text, shifts);
  out = storeInserted(lowHalf(even), changes, out);
  out = storeInserted(lowHalf(odd), changes >> 8, out);
  out = storeInserted(highHalf(even), changes >> 16, out);
  return storeInserted(highHalf(odd), changes >> 24, out);
}

inline Progress writeBlock(const Progress& at, bool& isShifted) {
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

template <typename ConvertBlock>
inline Progress convertBlocks(Progress at, const unsigned char* end, bool& isShifted,
                              const ConvertBlock& convertBlock, Iso2022::KoreanLoop* scalarLoop) {
  while (end - at.in >= blockLength) {
    const Progress next = convertBlock(at, isShifted);
    if (next.in != at.in) {
      at = next;
      continue;
    }
    const unsigned char* blockEnd = at.in + blockLength;
    at = scalarLoop(at.in, blockEnd, at.out, isShifted);
    if (!isThrough(at, blockEnd)) return at;
  }
  return scalarLoop(at.in, end, at.out, isShifted);
}

}  // namespace

Progress isoToKsc(const unsigned char* in, const unsigned char* end, unsigned char* out,
                  bool& isShifted) {
  return convertBlocks({in, out}, end, isShifted, readBlock, scalar::isoToKsc);
}

Progress kscToIso(const unsigned char* in, const unsigned char* end, unsigned char* out,
                  bool& isShifted) {
  return convertBlocks({in, out}, end, isShifted, writeBlock, scalar::kscToIso);
}

}  // namespace quorvel::kernel::avx2
