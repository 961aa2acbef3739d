#pragma once

// Flat tables are read one entry at a time with AVX2: the loads go straight into the
// lanes of a vector, and what is done to eight or sixteen entries together is to
// look for one that is missing, to drop bytes that are not wanted and to store. A
// gather takes twice the time here and several times that on machines whose gathers
// have been mended. Only the files of AVX2 kernels include this.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "quorvel/kernel/Avx2.hpp"

namespace quorvel::kernel::avx2 {

inline std::uint64_t wordAt(const unsigned char* p) {
  std::uint64_t word = 0;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// The entry for one of the four 16-bit numbers in a word. These loops wait for
// loads: to load each number by itself would take a fifth longer. Signed, as the
// lanes are that it goes into.
template <int index, typename Entry>
inline std::make_signed_t<Entry> entryOf(const Entry* table, std::uint64_t word) {
  return static_cast<std::make_signed_t<Entry>>(table[word >> 16 * index & 0xFFFF]);
}

// The entries for the eight 16-bit numbers at `p`.
inline __m128i entriesOfNumbers(const unsigned short* table, const unsigned char* p) {
  const std::uint64_t first = wordAt(p);
  const std::uint64_t second = wordAt(p + 8);
  __m128i entries = _mm_setzero_si128();
  entries = _mm_insert_epi16(entries, entryOf<0>(table, first), 0);
  entries = _mm_insert_epi16(entries, entryOf<1>(table, first), 1);
  entries = _mm_insert_epi16(entries, entryOf<2>(table, first), 2);
  entries = _mm_insert_epi16(entries, entryOf<3>(table, first), 3);
  entries = _mm_insert_epi16(entries, entryOf<0>(table, second), 4);
  entries = _mm_insert_epi16(entries, entryOf<1>(table, second), 5);
  entries = _mm_insert_epi16(entries, entryOf<2>(table, second), 6);
  return _mm_insert_epi16(entries, entryOf<3>(table, second), 7);
}

// Four bits for each entry that is missing, the first lowest.
inline unsigned int missing(__m128i entries) {
  return static_cast<unsigned int>(
      _mm_movemask_epi8(_mm_cmpeq_epi16(entries, _mm_setzero_si128())));
}

}  // namespace quorvel::kernel::avx2
