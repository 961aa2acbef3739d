#pragma once

// Decodes UTF-8 in blocks of 64 bytes that follow each other whatever characters
// they cut: every position works out the unit that it would be if a character
// ended there, from its own byte and those in front of it, and then the positions
// where a unit really ends are kept. Nothing waits for the length of a character.
//
// What becomes of the units is for a `Form`:
//   bytesPerUnit       what a unit takes
//   bytesBeforeFourth  what the first three bytes of four have become already
//   decodeHalf         the units of 32 positions, and whether they are well-formed
//   storeHalf          writes those that are kept
//   widenBlock         writes a block of ASCII
//   finish             the scalar loop, for what is no block and to find a fault
//
// Of 61 E3 81 82 C3 A9, "a", U+3042 and U+00E9, the places 1 and 2 end no unit, being
// a lead and in the middle, and neither does 4. At place 3 the bytes two, one and
// none in front, E3 81 82, give 3 << 12 | 01 << 6 | 02 = 3042; at place 5 C3 A9 gives
// 3 << 6 | 29 = 00E9. Kept are the places 0, 3 and 5.
//
// Only the files of AVX2 kernels include this.

#include <cstddef>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::avx2::utf8_to_units {

inline constexpr std::ptrdiff_t blockLength = 64;
inline constexpr std::ptrdiff_t halfLength = blockLength / 2;

// The most bytes in front of a position that its unit is made of.
inline constexpr std::ptrdiff_t bytesBehind = 3;

// For each of 32 positions the lowest two bytes of its code point; `kept` has a
// bit for each where a unit ends, `faults` a highest bit where the text is
// ill-formed. Of characters of four bytes neither is settled yet: `kept` has the
// third byte too, and whether they are too high or overlong is not looked at.
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
  return half;
}

inline bool isAsciiBlock(const unsigned char* p) {
  return highBits(_mm256_or_si256(load(p), load(p + halfLength))) == 0;
}

inline bool mayHaveFours(const unsigned char* p) {
  const __m256i most = _mm256_max_epu8(_mm256_max_epu8(load(p), load(p + halfLength)), load(p - 3));
  return highBits(areAtLeast(most, 0xF0)) != 0;
}

// How many bytes in front of `p` begin a character that goes on behind them.
inline int bytesOpen(const unsigned char* p) {
  if (p[-1] >= 0xC0) return 1;
  if (p[-2] >= 0xE0) return 2;
  return p[-3] >= 0xF0 ? 3 : 0;
}

template <typename Form>
inline Position widenBlocks(Position at, const unsigned char* end) {
  for (; end - at.in >= blockLength && isAsciiBlock(at.in); at.in += blockLength) {
    Form::widenBlock(at.in, at.out);
    at.out += Form::bytesPerUnit * blockLength;
  }
  return at;
}

// Writes the block at `p` unless there is something ill-formed in it.
template <typename Form, bool hasFours>
inline unsigned char* decodeBlock(const unsigned char* p, unsigned char* out) {
  const auto first = Form::template decodeHalf<hasFours>(p);
  const auto second = Form::template decodeHalf<hasFours>(p + halfLength);
  if (highBits(_mm256_or_si256(first.faults, second.faults)) != 0) return nullptr;
  return Form::storeHalf(second, Form::storeHalf(first, out));
}

// Goes on from `at`, which has at least three bytes in front of it.
template <typename Form>
inline Position decodeBlocks(Position at, const unsigned char* end) {
  while (end - at.in >= blockLength) {
    if (isAsciiBlock(at.in)) {
      if (at.in[-1] >= 0x80 && bytesOpen(at.in) != 0) break;
      at = widenBlocks<Form>(at, end);
      continue;
    }
    unsigned char* written = mayHaveFours(at.in) ? decodeBlock<Form, true>(at.in, at.out)
                                                 : decodeBlock<Form, false>(at.in, at.out);
    if (!written) break;
    at = {at.in + blockLength, written};
  }
  const int open = bytesOpen(at.in);
  return {at.in - open, at.out - (open == 3 ? Form::bytesBeforeFourth : 0)};
}

template <typename Form>
inline Progress decode(Position at, const unsigned char* end) {
  if (end - at.in < leastBytes) return Form::finish(at.in, end, at.out);
  const unsigned char* const begin = at.in;
  at = widenBlocks<Form>(at, end);
  if (at.in == begin) {
    // Whole characters of these bytes are more than three, unless one is ill-formed.
    const Progress first = Form::finish(begin, begin + 2 * bytesBehind + 1, at.out);
    if (first.why == Stop::met) return first;
    at = {first.in, first.out};
  }
  at = decodeBlocks<Form>(at, end);
  // What the block in question or the end holds: it is done again from the
  // first byte of its first character, and stops where it must.
  return Form::finish(at.in, end, at.out);
}

}  // namespace quorvel::kernel::avx2::utf8_to_units
