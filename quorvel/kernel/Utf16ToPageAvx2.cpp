// UTF-16 to code pages by their tables.

#include <cstddef>
#include <cstdint>

#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/PageEntriesAvx2.hpp"
#include "quorvel/kernel/PageTables.hpp"

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

inline Position takeSixteen(const unsigned char* codes, const Position& at) {
  const __m128i bytes = codesOfUnits(codes, at.in);
  if (_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) != 0) return at;
  store(bytes, at.out);
  return {at.in + 32, at.out + 16};
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
      {in, out}, end, 32, 32, [&](const Position& at) { return takeSixteen(table.codes, at); },
      [&](auto... text) { return scalar::unitsToBytes(table, text...); });
}

Progress unitsToPairs(const UnitsToPairs& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return takeBlocks(
      {in, out}, end, 16, 16, [&](const Position& at) { return takeEight(table.codes, at); },
      [&](auto... text) { return scalar::unitsToPairs(table, text...); });
}

}  // namespace quorvel::kernel::avx2
