// The tables are read one entry at a time: the loads go straight into the lanes
// of a vector, and what is done to eight or sixteen entries together is to look
// for one that is missing, to drop bytes that are not wanted and to store. A
// gather takes twice the time here and several times that on machines whose
// gathers have been mended.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/PageTables.hpp"

namespace quorvel::kernel::avx2 {

namespace {

inline unsigned int numberAt(const unsigned char* p) {
  unsigned short number = 0;
  std::memcpy(&number, p, sizeof number);
  return number;
}

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

inline __m128i load16(const unsigned char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// ASCII.

constexpr std::ptrdiff_t asciiLength = 64;

inline bool isAsciiBlock(const unsigned char* p) {
  return highBits(_mm256_or_si256(load(p), load(p + asciiLength / 2))) == 0;
}

inline void widenBlock(const unsigned char* p, unsigned char* out) {
  for (std::ptrdiff_t i = 0; i < asciiLength; i += 16) {
    store(_mm256_cvtepu8_epi16(load16(p + i)), out + 2 * i);
  }
}

inline Progress widenBlocks(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= asciiLength && isAsciiBlock(in)) {
    widenBlock(in, out);
    in += asciiLength;
    out += 2 * asciiLength;
  }
  return {in, out};
}

// Single bytes.

// A shuffle looks the low half of each byte up in one row of sixteen entries;
// the high half then says which row it was, one bit after the other.

inline __m256i entriesInRow(const unsigned char* row, __m256i places) {
  return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(load16(row)), places);
}

// Of two rows, or two results, the second for the bytes that have the bit set.
template <int bit>
inline __m256i choose(__m256i first, __m256i second, __m256i bytes) {
  return _mm256_blendv_epi8(first, second, _mm256_slli_epi16(bytes, 7 - bit));
}

// The entries by 128 bytes that differ in their highest bit from the others.
inline __m256i entriesOfHalf(const unsigned char* rows, __m256i bytes) {
  const __m256i places = _mm256_and_si256(bytes, everyByte(0x0F));
  const auto two = [&](const unsigned char* at) {
    return choose<4>(entriesInRow(at, places), entriesInRow(at + 16, places), bytes);
  };
  const auto four = [&](const unsigned char* at) {
    return choose<5>(two(at), two(at + 32), bytes);
  };
  return choose<6>(four(rows), four(rows + 64), bytes);
}

inline __m256i entriesOf(const unsigned char* rows, __m256i bytes) {
  return choose<7>(entriesOfHalf(rows, bytes), entriesOfHalf(rows + 128, bytes), bytes);
}

// The units of 32 bytes, their low and their high halves.
struct Halves {
  __m256i lows;
  __m256i highs;
};

// The ways to look both up, by what is known of a page.

struct AsciiBelow80 {
  static Halves halvesOf(const BytesToUnits& table, __m256i bytes) {
    const __m256i isAscii = _mm256_cmpgt_epi8(bytes, everyByte(-1));
    return {choose<7>(bytes, entriesOfHalf(table.lows + 128, bytes), bytes),
            _mm256_andnot_si256(isAscii, entriesOfHalf(table.highs + 128, bytes))};
  }
};

struct UnitsBelow100 {
  static Halves halvesOf(const BytesToUnits& table, __m256i bytes) {
    return {entriesOf(table.lows, bytes), _mm256_setzero_si256()};
  }
};

struct AnyUnits {
  static Halves halvesOf(const BytesToUnits& table, __m256i bytes) {
    return {entriesOf(table.lows, bytes), entriesOf(table.highs, bytes)};
  }
};

inline unsigned int missing(const Halves& halves) {
  const __m256i either = _mm256_or_si256(halves.lows, halves.highs);
  return highBits(_mm256_cmpeq_epi8(either, _mm256_setzero_si256()));
}

inline void storeUnits(const Halves& halves, unsigned char* out) {
  const __m256i even = _mm256_unpacklo_epi8(halves.lows, halves.highs);
  const __m256i odd = _mm256_unpackhi_epi8(halves.lows, halves.highs);
  store(_mm256_permute2x128_si256(even, odd, 0x20), out);
  store(_mm256_permute2x128_si256(even, odd, 0x31), out + 32);
}

template <typename Way>
inline Progress decodeBytes(const BytesToUnits& table, const unsigned char* in,
                            const unsigned char* end, unsigned char* out) {
  while (end - in >= 32) {
    const Halves halves = Way::halvesOf(table, load(in));
    if (missing(halves) == 0) {
      storeUnits(halves, out);
      in += 32;
      out += 64;
      continue;
    }
    const Progress progress = scalar::table.bytesToUnits(table, in, in + 32, out);
    if (progress.in != in + 32) return progress;
    in = progress.in;
    out = progress.out;
  }
  return scalar::table.bytesToUnits(table, in, end, out);
}

Progress bytesToUnits(const BytesToUnits& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return table.hasAsciiBelow80   ? decodeBytes<AsciiBelow80>(table, in, end, out)
         : table.hasUnitsFrom100 ? decodeBytes<AnyUnits>(table, in, end, out)
                                 : decodeBytes<UnitsBelow100>(table, in, end, out);
}

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

Progress unitsToBytes(const UnitsToBytes& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  while (end - in >= 32) {
    const __m128i bytes = codesOfUnits(table.codes, in);
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) == 0) {
      store(bytes, out);
      in += 32;
      out += 16;
      continue;
    }
    const Progress progress = scalar::table.unitsToBytes(table, in, in + 32, out);
    if (progress.in != in + 32) return progress;
    in = progress.in;
    out = progress.out;
  }
  return scalar::table.unitsToBytes(table, in, end, out);
}

// Two bytes.

inline unsigned char* storeCodes(__m128i codes, unsigned char* out) {
  const __m128i areOne = _mm_cmpeq_epi16(_mm_srli_epi16(codes, 8), _mm_setzero_si128());
  const auto isOne =
      static_cast<unsigned int>(_mm_movemask_epi8(_mm_packs_epi16(areOne, _mm_setzero_si128())));
  store(_mm_shuffle_epi8(codes, oneOrTwo[isOne]), out);
  return out + 16 - _mm_popcnt_u32(isOne);
}

Progress unitsToPairs(const UnitsToPairs& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  while (end - in >= 16) {
    const __m128i codes = entriesOfNumbers(table.codes, in);
    if (missing(codes) == 0) {
      out = storeCodes(codes, out);
      in += 16;
      continue;
    }
    const Progress progress = scalar::table.unitsToPairs(table, in, in + 16, out);
    if (progress.in != in + 16) return progress;
    in = progress.in;
    out = progress.out;
  }
  return scalar::table.unitsToPairs(table, in, end, out);
}

// Multibyte text is decoded in two passes over a piece of it. The first finds
// the characters and writes the number of each, its first byte << 8 | its
// second, where its unit belongs; the second turns numbers into units in place.

constexpr std::ptrdiff_t blockLength = 64;
constexpr std::ptrdiff_t mostBlocks = 16;

// A bit for each of 32 bytes that may be a lead.
inline unsigned int mayLead(__m256i bytes, const PairsToUnits::Range& range) {
  const __m256i above = _mm256_sub_epi8(bytes, everyByte(range.first));
  const __m256i within = _mm256_min_epu8(above, everyByte(range.last - range.first));
  return highBits(_mm256_cmpeq_epi8(above, within));
}

inline std::uint64_t mayLead(const PairsToUnits& table, const unsigned char* in) {
  std::uint64_t bits = 0;
  for (const PairsToUnits::Range& range : table.leads) {
    bits |= mayLead(load(in), range) |
            static_cast<std::uint64_t>(mayLead(load(in + blockLength / 2), range)) << 32;
  }
  return bits;
}

inline unsigned char* storeNumbers(__m128i numbers, unsigned int kept, unsigned char* out) {
  kept &= 0xFF;
  store(_mm_shuffle_epi8(numbers, keepers[kept]), out);
  return out + std::ptrdiff_t{2} * _mm_popcnt_u32(kept);
}

// The numbers of the characters that begin in 32 bytes; of ASCII without the
// byte behind it.
inline unsigned char* storeNumbers(const unsigned char* in, unsigned int kept, unsigned char* out) {
  const __m256i bytes = load(in);
  const __m256i isAscii = _mm256_cmpgt_epi8(bytes, everyByte(-1));
  const __m256i next = _mm256_andnot_si256(isAscii, load(in + 1));
  const __m256i even = _mm256_unpacklo_epi8(next, bytes);
  const __m256i odd = _mm256_unpackhi_epi8(next, bytes);
  out = storeNumbers(lowHalf(even), kept, out);
  out = storeNumbers(lowHalf(odd), kept >> 8, out);
  out = storeNumbers(highHalf(even), kept >> 16, out);
  return storeNumbers(highHalf(odd), kept >> 24, out);
}

// Behind a byte that cannot lead a character always begins, so in each run of
// bytes that can every second one does, the first included.
//
// Takes `blocks` blocks, fewer in front of one that is all ASCII, and with the
// last one's last byte the byte behind it if that byte is a lead.
inline Progress findCharacters(const PairsToUnits& table, const unsigned char* in,
                               std::ptrdiff_t blocks, unsigned char* out) {
  for (; blocks > 0 && !isAsciiBlock(in); --blocks) {
    const std::uint64_t leads = leadsOf(mayLead(table, in));
    const std::uint64_t kept = ~(leads << 1);
    out = storeNumbers(in, static_cast<unsigned int>(kept), out);
    out = storeNumbers(in + blockLength / 2, static_cast<unsigned int>(kept >> 32), out);
    in += blockLength + static_cast<std::ptrdiff_t>(leads >> 63);
  }
  return {in, out};
}

// Turns numbers into units and returns the first that has none.
inline unsigned char* mapNumbers(const unsigned short* units, unsigned char* p,
                                 const unsigned char* end) {
  for (; end - p >= 16; p += 16) {
    const __m128i found = entriesOfNumbers(units, p);
    if (missing(found) != 0) break;
    store(found, p);
  }
  for (; p != end; p += 2) {
    const unsigned short unit = units[numberAt(p)];
    if (unit == 0) break;
    std::memcpy(p, &unit, sizeof unit);
  }
  return p;
}

inline const unsigned char* skipCharacters(const PairsToUnits& table, const unsigned char* in,
                                           std::ptrdiff_t count) {
  for (; count > 0; --count) in += table.isLead[*in] ? 2 : 1;
  return in;
}

Progress pairsToUnits(const PairsToUnits& table, const unsigned char* in, const unsigned char* stop,
                      const unsigned char* end, unsigned char* out) {
  if (!table.isLowerAscii) return scalar::table.pairsToUnits(table, in, stop, end, out);
  // Each character may take the byte behind it too.
  const unsigned char* const last = stop < end ? stop : end - 1;
  std::ptrdiff_t blocks = 1;
  while (last - in >= blockLength) {
    Progress at = widenBlocks(in, last, out);
    in = at.in;
    out = at.out;
    // A block may take 65 bytes.
    const std::ptrdiff_t whole = (last - in) / (blockLength + 1);
    if (whole == 0) break;
    at = findCharacters(table, in, blocks < whole ? blocks : whole, out);
    const unsigned char* const mapped = mapNumbers(table.units, out, at.out);
    if (mapped == at.out) {
      in = at.in;
      out = at.out;
      blocks = blocks < mostBlocks ? 2 * blocks : mostBlocks;
      continue;
    }
    in = skipCharacters(table, in, (mapped - out) / 2);
    out += mapped - out;
    at = scalar::table.pairsToUnits(table, in, in + 1, end, out);
    if (at.in == in) return at;
    in = at.in;
    out = at.out;
    // What is found behind a missing one is found for nothing.
    blocks = 1;
  }
  return scalar::table.pairsToUnits(table, in, stop, end, out);
}

}  // namespace

const Table table{bytesToUnits, pairsToUnits, unitsToBytes, unitsToPairs};

}  // namespace quorvel::kernel::avx2
