// UTF-8 to UTF-16 in blocks of 64 bytes that follow each other whatever
// characters they cut: every position works out the unit that it would be if a
// character ended there, from its own byte and those in front of it, and then
// the positions where a unit really ends are kept. Nothing waits for the length
// of a character.
//
// Eight positions give at most eight units, the sixteen bytes that one store
// writes, so stores stay inside two bytes of room for each byte of input.

#include <cstddef>

#include "quorvel/base/kernel/Avx2.h"
#include "quorvel/base/kernel/Utf.h"

namespace quorvel::kernel::avx2 {

namespace {

constexpr std::ptrdiff_t blockLength = 64;
constexpr std::ptrdiff_t halfLength = blockLength / 2;

// The most bytes in front of a position that its unit is made of.
constexpr std::ptrdiff_t bytesBehind = 3;

// For each of 32 positions the bytes of its unit; `kept` has a bit for each
// where a unit ends, `faults` a highest bit where the text is ill-formed.
struct Half {
  __m256i low;
  __m256i high;
  __m256i faults;
  unsigned int kept;
};

// The highest bit says whether the byte is at least `lead`, which is 0xC0 or more.
inline __m256i areAtLeast(__m256i bytes, int lead) {
  return _mm256_subs_epu8(bytes, everyByte(lead - 0x80));
}

inline __m256i areContinuations(__m256i bytes) { return _mm256_cmpgt_epi8(everyByte(0xC0), bytes); }

// Shifts of 16 bits, so what crosses from a byte into its neighbour is cut off.
inline __m256i shiftRight(__m256i bytes, int count, int mask) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, count), everyByte(mask));
}

inline __m256i shiftLeft(__m256i bytes, int count, int mask) {
  return _mm256_and_si256(_mm256_slli_epi16(bytes, count), everyByte(mask));
}

inline __m256i masked(__m256i bytes, int mask) { return _mm256_and_si256(bytes, everyByte(mask)); }

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

template <bool hasFours>
inline Half decodeHalf(const unsigned char* p) {
  const __m256i bytes = load(p);
  const __m256i one = load(p - 1);
  const __m256i two = load(p - 2);
  const __m256i followsTwo = areAtLeast(two, 0xE0);
  const __m256i isContinuation = areContinuations(bytes);

  Half half;
  const __m256i isFirst = areAtLeast(bytes, 0xC0);
  const __m256i isMiddle = areAtLeast(one, 0xE0);
  half.kept = ~highBits(_mm256_or_si256(isFirst, isMiddle));

  // The tag of a lead of two bytes, 110, is zero where it overlaps the others.
  const __m256i fromTwo = _mm256_and_si256(shiftLeft(two, 4, 0xF0), areContinuations(one));
  half.high = _mm256_or_si256(fromTwo, shiftRight(one, 2, 0x0F));
  half.high = _mm256_and_si256(half.high, isContinuation);
  half.low = _mm256_or_si256(masked(bytes, 0x3F), shiftLeft(one, 6, 0xC0));
  half.low = _mm256_blendv_epi8(bytes, half.low, isContinuation);

  __m256i mustContinue = _mm256_or_si256(areAtLeast(one, 0xC0), followsTwo);
  // Of three bytes: U+0000 to U+07FF are overlong, U+D800 to U+DFFF surrogates.
  const __m256i row = masked(half.high, 0xF8);
  const __m256i isRefused = _mm256_or_si256(_mm256_cmpeq_epi8(row, _mm256_setzero_si256()),
                                            _mm256_cmpeq_epi8(row, everyByte(0xD8)));
  __m256i isThirdOfThree = followsTwo;
  if constexpr (hasFours) {
    const __m256i three = load(p - 3);
    mustContinue = _mm256_or_si256(mustContinue, areAtLeast(three, 0xF0));
    isThirdOfThree = _mm256_andnot_si256(areAtLeast(two, 0xF0), followsTwo);
  }
  half.faults = _mm256_or_si256(_mm256_xor_si256(mustContinue, isContinuation),
                                _mm256_and_si256(isRefused, isThirdOfThree));
  // C0 and C1 would be overlong.
  half.faults =
      _mm256_or_si256(half.faults, _mm256_cmpeq_epi8(masked(bytes, 0xFE), everyByte(0xC0)));
  if constexpr (hasFours) makePairs(bytes, one, two, load(p - 3), half);
  return half;
}

inline unsigned char* storeKept(__m128i units, unsigned int kept, unsigned char* out) {
  kept &= 0xFF;
  store(_mm_shuffle_epi8(units, keepers[kept]), out);
  return out + std::ptrdiff_t{2} * _mm_popcnt_u32(kept);
}

inline unsigned char* storeHalf(const Half& half, unsigned char* out) {
  const __m256i even = _mm256_unpacklo_epi8(half.low, half.high);
  const __m256i odd = _mm256_unpackhi_epi8(half.low, half.high);
  out = storeKept(lowHalf(even), half.kept, out);
  out = storeKept(lowHalf(odd), half.kept >> 8, out);
  out = storeKept(highHalf(even), half.kept >> 16, out);
  return storeKept(highHalf(odd), half.kept >> 24, out);
}

// Writes the block at `p` unless there is something ill-formed in it.
template <bool hasFours>
inline unsigned char* decodeBlock(const unsigned char* p, unsigned char* out) {
  const Half first = decodeHalf<hasFours>(p);
  const Half second = decodeHalf<hasFours>(p + halfLength);
  if (highBits(_mm256_or_si256(first.faults, second.faults)) != 0) return nullptr;
  return storeHalf(second, storeHalf(first, out));
}

inline bool isAsciiBlock(const unsigned char* p) {
  return highBits(_mm256_or_si256(load(p), load(p + halfLength))) == 0;
}

inline bool mayHaveFours(const unsigned char* p) {
  const __m256i most = _mm256_max_epu8(_mm256_max_epu8(load(p), load(p + halfLength)), load(p - 3));
  return highBits(areAtLeast(most, 0xF0)) != 0;
}

inline void widenBlock(const unsigned char* p, unsigned char* out) {
  for (std::ptrdiff_t i = 0; i < blockLength; i += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    store(_mm256_cvtepu8_epi16(bytes), out + 2 * i);
  }
}

// How many bytes in front of `p` begin a character that goes on behind them.
inline int bytesOpen(const unsigned char* p) {
  if (p[-1] >= 0xC0) return 1;
  if (p[-2] >= 0xE0) return 2;
  return p[-3] >= 0xF0 ? 3 : 0;
}

inline Progress widenBlocks(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= blockLength && isAsciiBlock(in)) {
    widenBlock(in, out);
    in += blockLength;
    out += 2 * blockLength;
  }
  return {in, out};
}

// Goes on from `at`, which has at least three bytes in front of it.
inline Progress decodeBlocks(Progress at, const unsigned char* end) {
  while (end - at.in >= blockLength) {
    if (isAsciiBlock(at.in)) {
      if (at.in[-1] >= 0x80 && bytesOpen(at.in) != 0) break;
      at = widenBlocks(at.in, end, at.out);
      continue;
    }
    unsigned char* written =
        mayHaveFours(at.in) ? decodeBlock<true>(at.in, at.out) : decodeBlock<false>(at.in, at.out);
    if (!written) break;
    at = {at.in + blockLength, written};
  }
  const int open = bytesOpen(at.in);
  // After three bytes of four the high surrogate has been written.
  return {at.in - open, at.out - (open == 3 ? 2 : 0)};
}

}  // namespace

Progress utf8ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  if (end - in < leastBytes) return scalar::utf8ToUtf16(in, end, out);
  Progress at = widenBlocks(in, end, out);
  if (at.in == in) {
    // Whole characters of these bytes are more than three, unless one is ill-formed.
    at = scalar::utf8ToUtf16(in, in + 2 * bytesBehind + 1, out);
    if (at.in - in < bytesBehind) return at;
  }
  at = decodeBlocks(at, end);
  // What the block in question or the end holds: it is done again from the
  // first byte of its first character, and stops where it must.
  return scalar::utf8ToUtf16(at.in, end, at.out);
}

}  // namespace quorvel::kernel::avx2
