// Shift_JIS to ISO-2022-JP: blocks of 64 bytes are converted at once whatever sets
// are in them, and then the stretches between the places where the set changes are
// copied.

#include <cstring>

#include "quorvel/kernel/JisAvx2.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::avx2 {

namespace {

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
inline Position takeBlock(const Position& at, JapaneseSet& set) {
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

}  // namespace

Progress shiftJisToIso2022Jp(const unsigned char* in, const unsigned char* end, unsigned char* out,
                             JapaneseSet& set) {
  return takeBlocks(
      {in, out}, end, blockLength, blockLength + spareInput,
      [&](const Position& at) { return takeBlock(at, set); },
      [&](auto... text) { return scalar::shiftJisToIso2022Jp(text..., set); });
}

}  // namespace quorvel::kernel::avx2
