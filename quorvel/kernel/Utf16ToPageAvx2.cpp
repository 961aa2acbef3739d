// UTF-16 to code pages by their tables.

#include <cstddef>
#include <cstdint>

#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/PageEntriesAvx2.hpp"

namespace quorvel::kernel::avx2 {

namespace {

inline __m128i codesOfUnits(const unsigned char* codes, const unsigned char* in) {
  const std::uint64_t first = wordAt(in);
  const std::uint64_t second = wordAt(in + 8);
  const std::uint64_t third = wordAt(in + 16);
  const std::uint64_t fourth = wordAt(in + 24);
  __m128i bytes = _mm_setzero_si128();
  bytes = _mm_insert_epi8(bytes, entryOf<0>(codes, first), 0);
  bytes = _mm_insert_epi8(bytes, entryOf<1>(codes, first), 1);
  bytes = _mm_insert_epi8(bytes, entryOf<2>(codes, first), 2);
  bytes = _mm_insert_epi8(bytes, entryOf<3>(codes, first), 3);
  bytes = _mm_insert_epi8(bytes, entryOf<0>(codes, second), 4);
  bytes = _mm_insert_epi8(bytes, entryOf<1>(codes, second), 5);
  bytes = _mm_insert_epi8(bytes, entryOf<2>(codes, second), 6);
  bytes = _mm_insert_epi8(bytes, entryOf<3>(codes, second), 7);
  bytes = _mm_insert_epi8(bytes, entryOf<0>(codes, third), 8);
  bytes = _mm_insert_epi8(bytes, entryOf<1>(codes, third), 9);
  bytes = _mm_insert_epi8(bytes, entryOf<2>(codes, third), 10);
  bytes = _mm_insert_epi8(bytes, entryOf<3>(codes, third), 11);
  bytes = _mm_insert_epi8(bytes, entryOf<0>(codes, fourth), 12);
  bytes = _mm_insert_epi8(bytes, entryOf<1>(codes, fourth), 13);
  bytes = _mm_insert_epi8(bytes, entryOf<2>(codes, fourth), 14);
  return _mm_insert_epi8(bytes, entryOf<3>(codes, fourth), 15);
}

inline unsigned char* storeCodes(__m128i codes, unsigned char* out) {
  const __m128i areOne = _mm_cmpeq_epi16(_mm_srli_epi16(codes, 8), _mm_setzero_si128());
  const auto isOne =
      static_cast<unsigned int>(_mm_movemask_epi8(_mm_packs_epi16(areOne, _mm_setzero_si128())));
  store(_mm_shuffle_epi8(codes, oneOrTwo[isOne]), out);
  return out + 16 - _mm_popcnt_u32(isOne);
}

// Whether none of the units in `length` bytes at `p`, a number of whole vectors, is
// above `last`: all that is looked up is then in the table.
template <std::ptrdiff_t length>
inline bool areWithin(const unsigned char* p, __m256i last) {
  __m256i highest = load(p);
  for (std::ptrdiff_t i = 32; i < length; i += 32) highest = _mm256_max_epu16(highest, load(p + i));
  const __m256i above = _mm256_subs_epu16(highest, last);
  return _mm256_testz_si256(above, above) != 0;
}

// Sixteen units that are in the table; the same place when one has no code.
inline Position takeSixteen(const unsigned char* codes, const Position& at) {
  const __m128i bytes = codesOfUnits(codes, at.in);
  if (_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) != 0) return at;
  store(bytes, at.out);
  return {at.in + 32, at.out + 16};
}

// As many times sixteen units as have codes. Whether they are in the table is asked
// of 64 at once: a question for each sixteen takes a tenth of the time of the loop.
inline Position takeSixteens(const UnitsToBytes& table, Position at, const unsigned char* end) {
  constexpr std::ptrdiff_t atOnce = 128;
  const __m256i last = _mm256_set1_epi16(static_cast<short>(table.count - 1));
  const unsigned char* const codes = table.codes;
  while (end - at.in >= atOnce && areWithin<atOnce>(at.in, last)) {
    for (const unsigned char* const stop = at.in + atOnce; at.in != stop;) {
      const Position next = takeSixteen(codes, at);
      if (next.in == at.in) return at;
      at = next;
    }
  }
  while (end - at.in >= 32 && areWithin<32>(at.in, last)) {
    const Position next = takeSixteen(codes, at);
    if (next.in == at.in) break;
    at = next;
  }
  return at;
}

inline Position takeEight(const unsigned short* codes, const Position& at) {
  const __m128i found = entriesOfNumbers(codes, at.in);
  if (missing(found) != 0) return at;
  return {at.in + 16, storeCodes(found, at.out)};
}

}  // namespace

Progress unitsToBytes(const UnitsToBytes& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return takeBlocks(
      {in, out}, end, 32, 32, [&](const Position& at) { return takeSixteens(table, at, end); },
      [&](auto... text) { return scalar::unitsToBytes(table, text...); });
}

Progress unitsToPairs(const UnitsToPairs& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return takeBlocks(
      {in, out}, end, 16, 16, [&](const Position& at) { return takeEight(table.codes, at); },
      [&](auto... text) { return scalar::unitsToPairs(table, text...); });
}

}  // namespace quorvel::kernel::avx2
