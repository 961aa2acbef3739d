// UTF-16 to UTF-8: sixteen units at a time become all the bytes that each could
// need, in fixed places, and shuffles drop those that it does not. What only a
// step by step can judge goes to the scalar loops, sixteen units at most.

#include <cstddef>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16ToUtf8Manner.hpp"

namespace quorvel::kernel::avx2 {

namespace {

constexpr std::ptrdiff_t blockLength = 32;

// A shuffle's store writes sixteen bytes where four units promise room for
// twelve; with two more units behind the block there is room for that.
constexpr std::ptrdiff_t spareLength = 4;

inline __m256i everyUnit(unsigned int value) {
  return _mm256_set1_epi16(static_cast<short>(value));
}

inline __m256i masked(__m256i units, unsigned int mask) {
  return _mm256_and_si256(units, everyUnit(mask));
}

inline __m256i areEqual(__m256i units, unsigned int value) {
  return _mm256_cmpeq_epi16(units, everyUnit(value));
}

inline __m256i areBelow0x80(__m256i units) { return areEqual(masked(units, 0xFF80), 0); }
inline __m256i areBelow0x800(__m256i units) { return areEqual(masked(units, 0xF800), 0); }

inline bool haveNone(__m256i units, unsigned int mask) {
  return _mm256_testz_si256(units, everyUnit(mask)) != 0;
}

// In a unit of two bytes, the first in front: bits 6 and up, and below them the
// lowest six as a continuation byte.
inline __m256i lastTwoBytes(__m256i units) {
  const __m256i first = masked(_mm256_srli_epi16(units, 6), 0x003F);
  const __m256i second = masked(_mm256_slli_epi16(units, 8), 0x3F00);
  return _mm256_or_si256(_mm256_or_si256(first, second), everyUnit(0x8080));
}

inline unsigned char* storeShuffled(__m128i bytes, __m128i shuffle, int length,
                                    unsigned char* out) {
  store(_mm_shuffle_epi8(bytes, shuffle), out);
  return out + length;
}

// ASCII alone.

inline unsigned char* narrowBlocks(__m256i first, __m256i second, unsigned char* out) {
  const __m256i lanes = _mm256_packus_epi16(first, second);
  store(_mm256_permute4x64_epi64(lanes, _MM_SHUFFLE(3, 1, 2, 0)), out);
  return out + blockLength;
}

// Units below U+0800.

inline unsigned char* storeOneOrTwo(__m128i bytes, unsigned int isOne, unsigned char* out) {
  return storeShuffled(bytes, oneOrTwo[isOne], 16 - _mm_popcnt_u32(isOne), out);
}

inline unsigned char* encodeBelow0x800(__m256i units, unsigned char* out) {
  const __m256i isAscii = areBelow0x80(units);
  const __m256i pairs = _mm256_or_si256(lastTwoBytes(units), everyUnit(0x0040));
  const __m256i bytes = _mm256_blendv_epi8(pairs, units, isAscii);
  const unsigned int isOne = highBits(_mm256_packs_epi16(isAscii, _mm256_setzero_si256()));
  out = storeOneOrTwo(lowHalf(bytes), isOne & 0xFF, out);
  return storeOneOrTwo(highHalf(bytes), isOne >> 16, out);
}

// Any units.

// Of four characters in four bytes each, the first of them unused: the last one,
// two or three bytes. The low bit of two says that there are at least two, the
// high one that there are three.
constexpr Shuffles makeOneToThree() {
  Shuffles shuffles{};
  for (unsigned int index = 0; index < 256; ++index) {
    unsigned int at = 0;
    for (unsigned int unit = 0; unit < 4; ++unit) {
      const unsigned int more = index >> 2 * unit & 3;
      const unsigned int first = more == 3 ? 1 : more == 0 ? 3 : 2;
      for (unsigned int i = first; i < 4; ++i) {
        shuffles.rows[index][at++] = static_cast<unsigned char>(4 * unit + i);
      }
    }
    while (at < 16) shuffles.rows[index][at++] = nothing;
  }
  return shuffles;
}

constexpr Shuffles oneToThree = makeOneToThree();

inline unsigned char* storeOneToThree(__m128i bytes, unsigned int more, unsigned char* out) {
  return storeShuffled(bytes, oneToThree[more], 4 + _mm_popcnt_u32(more), out);
}

// `lastTwo` are the bytes behind the first of three, `isTwo` says which units
// have no more than two.
inline unsigned char* storeUnits(__m256i units, __m256i lastTwo, __m256i isTwo,
                                 unsigned char* out) {
  const __m256i isOne = areBelow0x80(units);
  const __m256i first =
      _mm256_or_si256(masked(_mm256_srli_epi16(units, 4), 0x0F00), everyUnit(0xE000));
  const __m256i rest = _mm256_blendv_epi8(lastTwo, _mm256_slli_epi16(units, 8), isOne);
  const unsigned int more = ~highBits(_mm256_blendv_epi8(isTwo, isOne, everyUnit(0x00FF)));
  const __m256i even = _mm256_unpacklo_epi16(first, rest);
  const __m256i odd = _mm256_unpackhi_epi16(first, rest);
  return storeQuarters(even, odd, more, out, storeOneToThree);
}

inline __m256i withLeadOfTwo(__m256i lastTwo, __m256i isTwo) {
  return _mm256_or_si256(lastTwo, masked(isTwo, 0x0040));
}

inline unsigned char* encodeBasic(__m256i units, unsigned char* out) {
  const __m256i isTwo = areBelow0x800(units);
  return storeUnits(units, withLeadOfTwo(lastTwoBytes(units), isTwo), isTwo, out);
}

// Of a pair each half has two of the four bytes; two bits of the high surrogate
// are in the low one's first. Takes no more than the pairs that end in the block.
inline Position encodeWithPairs(const unsigned char* in, unsigned char* out) {
  const __m256i units = load(in);
  const __m256i isHigh = areEqual(masked(units, 0xFC00), 0xD800);
  const __m256i isLow = areEqual(masked(units, 0xFC00), 0xDC00);
  const unsigned int highs = highBits(isHigh);
  if (highBits(isLow) != highs << 2) return {in, out};

  const __m256i isTwo = areBelow0x800(units);
  __m256i lastTwo = withLeadOfTwo(lastTwoBytes(units), isTwo);

  const __m256i above = _mm256_add_epi16(masked(units, 0x03FF), everyUnit(0x0040));
  const __m256i ofHigh = _mm256_or_si256(
      _mm256_or_si256(_mm256_srli_epi16(above, 8), masked(_mm256_slli_epi16(above, 6), 0x3F00)),
      everyUnit(0x80F0));
  lastTwo = _mm256_blendv_epi8(lastTwo, ofHigh, isHigh);

  const __m256i before =
      _mm256_alignr_epi8(units, _mm256_permute2x128_si256(units, units, 0x08), 14);
  const __m256i fromHigh = _mm256_slli_epi16(masked(before, 0x0003), 4);
  const __m256i ofLow = _mm256_or_si256(masked(lastTwo, 0xFFCF), fromHigh);
  lastTwo = _mm256_blendv_epi8(lastTwo, ofLow, isLow);

  const __m256i isSurrogate = _mm256_or_si256(isHigh, isLow);
  out = storeUnits(units, lastTwo, _mm256_or_si256(isTwo, isSurrogate), out);
  // A high surrogate at the end is the next block's, as are its two bytes.
  return highs >> 31 != 0 ? Position{in + blockLength - 2, out - 2}
                          : Position{in + blockLength, out};
}

inline __m256i areSurrogates(__m256i units) { return areEqual(masked(units, 0xF800), 0xD800); }

// Surrogates and, but for the strict manner, U+FDEF.
template <Manner manner>
inline __m256i areSpecial(__m256i units) {
  if (manner == Manner::strict) return areSurrogates(units);
  return _mm256_or_si256(areEqual(units, undecidedUnit), areSurrogates(units));
}

// U+0000 that is not to be written.
template <Manner manner>
inline bool haveNul(__m256i units) {
  return manner != Manner::strict && highBits(areEqual(units, 0)) != 0;
}

// What not even the form for pairs can have.
template <Manner manner>
inline bool haveUndecided(__m256i units) {
  return manner == Manner::withoutPairs ||
         (manner == Manner::loose && highBits(areEqual(units, undecidedUnit)) != 0);
}

// Text that mixes lengths changes from block to block, and a branch that goes
// another way than the processor guessed costs more than a block. So one form is
// chosen for four blocks: the shortest that serves them all.
constexpr std::ptrdiff_t stretchLength = 4 * blockLength;

// Writes four blocks, or nothing if something special is among them.
template <Manner manner>
inline unsigned char* encodeStretch(const unsigned char* in, unsigned char* out) {
  const __m256i a = load(in);
  const __m256i b = load(in + blockLength);
  const __m256i c = load(in + 2 * blockLength);
  const __m256i d = load(in + 3 * blockLength);
  if (haveNul<manner>(_mm256_min_epu16(_mm256_min_epu16(a, b), _mm256_min_epu16(c, d)))) {
    return nullptr;
  }
  const __m256i any = _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
  if (haveNone(any, 0xFF80)) return narrowBlocks(c, d, narrowBlocks(a, b, out));
  if (haveNone(any, 0xF800)) {
    out = encodeBelow0x800(b, encodeBelow0x800(a, out));
    return encodeBelow0x800(d, encodeBelow0x800(c, out));
  }
  const __m256i special =
      _mm256_or_si256(_mm256_or_si256(areSpecial<manner>(a), areSpecial<manner>(b)),
                      _mm256_or_si256(areSpecial<manner>(c), areSpecial<manner>(d)));
  if (highBits(special) != 0) return nullptr;
  return encodeBasic(d, encodeBasic(c, encodeBasic(b, encodeBasic(a, out))));
}

// The block at `at.in`, or what can be had of it.
template <Manner manner>
inline Position encodeBlock(const Position& at) {
  const __m256i units = load(at.in);
  if (haveNul<manner>(units)) return at;
  const unsigned char* const next = at.in + blockLength;
  if (haveNone(units, 0xF800)) return {next, encodeBelow0x800(units, at.out)};
  if (highBits(areSpecial<manner>(units)) == 0) return {next, encodeBasic(units, at.out)};
  if (haveUndecided<manner>(units)) return at;
  return encodeWithPairs(at.in, at.out);
}

// Whole blocks up to `stop`, behind which there is room to spare.
template <Manner manner>
inline Progress encodeBlocks(Position at, const unsigned char* stop, Loop& byUnit) {
  while (stop - at.in >= blockLength) {
    const Position next = encodeBlock<manner>(at);
    if (next.in != at.in) {
      at = next;
      continue;
    }
    const Progress stepped = byUnit(at.in, at.in + blockLength, at.out);
    if (stepped.why == Stop::met) return stepped;
    at = {stepped.in, stepped.out};
  }
  return {at.in, at.out, Stop::end};
}

template <Manner manner>
inline Progress encode(const unsigned char* in, const unsigned char* end, unsigned char* out,
                       Loop& byUnit) {
  if (end - in < leastBytes) return byUnit(in, end, out);
  const unsigned char* const last = end - spareLength;
  while (last - in >= stretchLength) {
    if (unsigned char* const written = encodeStretch<manner>(in, out)) {
      in += stretchLength;
      out = written;
      continue;
    }
    const Progress blocks = encodeBlocks<manner>({in, out}, in + stretchLength, byUnit);
    if (blocks.why == Stop::met) return blocks;
    in = blocks.in;
    out = blocks.out;
  }
  const Progress blocks = encodeBlocks<manner>({in, out}, last, byUnit);
  if (blocks.why == Stop::met) return blocks;
  return byUnit(blocks.in, end, blocks.out);
}

}  // namespace

Progress utf16ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return encode<Manner::loose>(in, end, out, scalar::utf16ToUtf8);
}

Progress utf16ToUtf8WithoutPairs(const unsigned char* in, const unsigned char* end,
                                 unsigned char* out) {
  return encode<Manner::withoutPairs>(in, end, out, scalar::utf16ToUtf8WithoutPairs);
}

Progress utf16ToUtf8Strictly(const unsigned char* in, const unsigned char* end,
                             unsigned char* out) {
  return encode<Manner::strict>(in, end, out, scalar::utf16ToUtf8Strictly);
}

}  // namespace quorvel::kernel::avx2
