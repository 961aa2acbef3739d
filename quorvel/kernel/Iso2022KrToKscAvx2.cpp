// ISO-2022-KR to KS C 5601 in its EUC-KR form, in blocks of 64 bytes: the mask of all
// shifts in a block says which set each byte is in, and shuffles take the shifts out,
// eight bytes of text at a time. A block of anything out of the ordinary goes to the
// scalar loop.

#include "quorvel/kernel/Iso2022Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::avx2 {

namespace {

// A bit for each byte that an odd number of the set bits is at or before: each step
// adds what stands twice as far in front. Of shifts at places 1 and 4, read from the
// left, 0100'1000 becomes 0110'1100, then 0111'0111, then 0111'0000: places 1 to 3.
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

inline unsigned char* storeEight(__m128i bytes, unsigned int kept, unsigned char* out) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(bytes, byteKeepers[kept]));
  return out + _mm_popcnt_u32(kept);
}

inline unsigned char* storeKept(__m256i bytes, unsigned int kept, unsigned char* out) {
  const __m256i second = _mm256_unpackhi_epi64(bytes, bytes);
  return storeQuarters(bytes, second, kept, out, storeEight);
}

inline __m256i withHighBits(__m256i bytes, unsigned int mask) {
  return _mm256_or_si256(bytes, _mm256_and_si256(bytesOf(mask), everyByte(0x80)));
}

// CR and LF, SO and SI, and the four controls that have all but the lowest three bits in
// common with them.
inline __m256i haveEndOfLine(__m256i bytes) {
  return areEqual(_mm256_or_si256(bytes, everyByte(7)), 0x0F);
}

// Takes the block at `at.in`, but for a pair that its end cuts off; or nothing.
inline Position takeBlock(const Position& at, bool& isShifted) {
  const Block block = loadBlock(at.in);
  const std::uint64_t highs = maskOf(block, [](__m256i bytes) { return bytes; });
  const std::uint64_t escapes =
      maskOf(block, [](__m256i bytes) { return areEqual(bytes, iso2022::escape); });
  const std::uint64_t shifts = maskOf(block, areShifts);
  const std::uint64_t mayEndLines = maskOf(block, haveEndOfLine) & ~shifts;
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
      escapes | highs | (mayEndLines & shifted) | ((shifted ^ outs) & shifts) | (alone & ~lastBit);
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

}  // namespace

Progress iso2022KrToKsc(const unsigned char* in, const unsigned char* end, unsigned char* out,
                        bool& isShifted) {
  return takeBlocks(
      {in, out}, end, blockLength, blockLength,
      [&](const Position& at) { return takeBlock(at, isShifted); },
      [&](auto... text) { return scalar::iso2022KrToKsc(text..., isShifted); });
}

}  // namespace quorvel::kernel::avx2
