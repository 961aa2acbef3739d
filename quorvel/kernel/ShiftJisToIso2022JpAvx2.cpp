// ISO-2022-JP and Shift_JIS. Reading goes from escape to escape, 32 bytes of one
// set at a time. Writing converts blocks of 64 bytes at once whatever sets are in
// them, and then copies the stretches between the places where the set changes.

#include <cstring>

#include "quorvel/kernel/Iso2022Avx2.hpp"

namespace quorvel::kernel::avx2 {

namespace {

inline __m256i difference(__m256i bytes, int subtrahend) {
  return _mm256_sub_epi8(bytes, everyByte(subtrahend));
}

inline __m256i choose(__m256i condition, int ifSet, int ifNot) {
  return _mm256_blendv_epi8(everyByte(ifNot), everyByte(ifSet), condition);
}

// --- Reading ----------------------------------------------------------------

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

inline Progress readKanji(Progress at, const unsigned char* end) {
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

inline Progress copyAscii(Progress at, const unsigned char* end) {
  while (end - at.in >= halfLength) {
    const __m256i bytes = load(at.in);
    store(bytes, at.out);
    const std::ptrdiff_t length = bytesBefore(highBits(areSwitches(bytes)));
    at = {at.in + length, at.out + length};
    if (length != halfLength) break;
  }
  return at;
}

constexpr std::ptrdiff_t designationLength = 3;

// Takes the escape that most texts have between Japanese and ASCII.
inline bool takeDesignation(Progress& at, JapaneseSet& set) {
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

// --- Writing ----------------------------------------------------------------

// The bytes of a block as they are when they are the lead of a pair, and as its
// trail; `next` are the bytes behind each.
inline __m256i areTrailsOfEvenRows(__m256i bytes) {
  return _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, everyByte(0x9F)), bytes);
}

inline __m256i jisLeads(__m256i bytes, __m256i next) {
  const __m256i pairOfRows =
      _mm256_sub_epi8(bytes, choose(_mm256_cmpgt_epi8(bytes, everyByte(0x9F)), 0xB0, 0x70));
  const __m256i odd = difference(_mm256_add_epi8(pairOfRows, pairOfRows), 1);
  return _mm256_sub_epi8(odd, areTrailsOfEvenRows(next));
}

inline __m256i jisTrails(__m256i bytes) {
  const __m256i odd = _mm256_sub_epi8(bytes, choose(bytes, 0x20, 0x1F));
  return _mm256_blendv_epi8(odd, difference(bytes, 0x7E), areTrailsOfEvenRows(bytes));
}

inline __m256i jisFromShiftJis(const unsigned char* p, unsigned int leads, unsigned int trails) {
  const __m256i bytes = load(p);
  const __m256i converted = _mm256_blendv_epi8(bytes, jisTrails(bytes), bytesOf(trails));
  return _mm256_blendv_epi8(converted, jisLeads(bytes, load(p + 1)), bytesOf(leads));
}

inline __m256i areLeads(__m256i bytes) {
  return _mm256_or_si256(areBetween(bytes, 0x81, 0x9F), areBetween(bytes, 0xE0, 0xFC));
}

inline __m256i areTrails(__m256i bytes) {
  return _mm256_andnot_si256(areEqual(bytes, 0x7F), areBetween(bytes, 0x40, 0xFC));
}

// A designation and a byte that will be written over; never more than a byte of
// input may become.
inline unsigned char* putDesignation(bool isKanji, unsigned char* out) {
  std::memcpy(out, isKanji ? "\x1B$B" : "\x1B(B", 4);
  return out + designationLength;
}

// Behind the block there is this much more input, so that a whole block can be
// written wherever something in it begins.
constexpr std::ptrdiff_t spareInput = 20;

inline unsigned char* storeStretches(const Block& text, std::uint64_t changes, std::uint64_t kanji,
                                     std::ptrdiff_t length, unsigned char* out) {
  if (changes == 0) {
    storeBlock(text, out);
    return out + length;
  }
  alignas(32) unsigned char bytes[2 * blockLength] = {};
  storeBlock(text, bytes);
  std::ptrdiff_t from = 0;
  for (; changes != 0; changes &= changes - 1) {
    const auto at = static_cast<std::ptrdiff_t>(_tzcnt_u64(changes));
    storeBlock(loadBlock(bytes + from), out);
    out = putDesignation((kanji >> at & 1) != 0, out + (at - from));
    from = at;
  }
  storeBlock(loadBlock(bytes + from), out);
  return out + (length - from);
}

// Takes the block at `at.in`, but for a pair that its end cuts off; or nothing.
inline Progress writeBlock(const Progress& at, JapaneseSet& set) {
  const Block block = loadBlock(at.in);
  const std::uint64_t highs = maskOf(block, [](__m256i bytes) { return bytes; });
  const std::uint64_t leads = leadsOf(maskOf(block, areLeads));
  const std::uint64_t trails = leads << 1;
  const std::uint64_t kanji = leads | trails;
  const std::uint64_t beyond =
      maskOf(block, [](__m256i bytes) { return areBetween(bytes, 0xF0, 0xFF); });
  const std::uint64_t faults = (highs & ~kanji) | (leads & beyond) |
                               (trails & ~maskOf(block, areTrails)) |
                               (maskOf(block, areSwitches) & ~kanji);
  if (faults != 0 || set == JapaneseSet::katakana) return at;

  const Block text = {
      jisFromShiftJis(at.in, static_cast<unsigned int>(leads), static_cast<unsigned int>(trails)),
      jisFromShiftJis(at.in + halfLength, static_cast<unsigned int>(leads >> 32),
                      static_cast<unsigned int>(trails >> 32))};
  const bool isCut = (leads & lastBit) != 0;
  const std::uint64_t before = kanji << 1 | (set == JapaneseSet::kanji ? 1 : 0);
  const std::uint64_t changes = (kanji ^ before) & (isCut ? ~lastBit : ~std::uint64_t{0});
  const std::ptrdiff_t length = blockLength - (isCut ? 1 : 0);
  const bool endsInKanji = ((isCut ? kanji << 1 : kanji) & lastBit) != 0;
  set = endsInKanji ? JapaneseSet::kanji : JapaneseSet::ascii;
  return {at.in + length, storeStretches(text, changes, kanji, length, at.out)};
}

inline Progress readBlocks(Progress at, const unsigned char* end, JapaneseSet& set) {
  while (end - at.in >= blockLength) {
    if (set == JapaneseSet::kanji) at = readKanji(at, end);
    if (set == JapaneseSet::ascii) at = copyAscii(at, end);
    if (end - at.in < designationLength || takeDesignation(at, set)) continue;
    if (end - at.in < halfLength) break;
    const unsigned char* blockEnd = at.in + halfLength;
    at = scalar::jisToShiftJis(at.in, blockEnd, at.out, set);
    // Escapes have three bytes, of which two may have been cut off.
    if (blockEnd - at.in >= designationLength) return at;
  }
  return scalar::jisToShiftJis(at.in, end, at.out, set);
}

inline Progress writeBlocks(Progress at, const unsigned char* end, JapaneseSet& set) {
  while (end - at.in >= blockLength + spareInput) {
    const Progress next = writeBlock(at, set);
    if (next.in != at.in) {
      at = next;
      continue;
    }
    const unsigned char* blockEnd = at.in + blockLength;
    at = scalar::shiftJisToJis(at.in, blockEnd, at.out, set);
    if (!isThrough(at, blockEnd)) return at;
  }
  return scalar::shiftJisToJis(at.in, end, at.out, set);
}

}  // namespace

Progress jisToShiftJis(const unsigned char* in, const unsigned char* end, unsigned char* out,
                       JapaneseSet& set) {
  return readBlocks({in, out}, end, set);
}

Progress shiftJisToJis(const unsigned char* in, const unsigned char* end, unsigned char* out,
                       JapaneseSet& set) {
  return writeBlocks({in, out}, end, set);
}

}  // namespace quorvel::kernel::avx2
