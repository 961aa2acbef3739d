// Code pages to UTF-16 by their tables: single bytes by shuffles, multibyte text by
// finding all characters of a piece first and then their units.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/PageEntriesAvx2.hpp"

namespace quorvel::kernel::avx2 {

namespace {

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

inline Position widenBlocks(Position at, const unsigned char* end) {
  for (; end - at.in >= asciiLength && isAsciiBlock(at.in); at.in += asciiLength) {
    widenBlock(at.in, at.out);
    at.out += 2 * asciiLength;
  }
  return at;
}

// Single bytes.

// A shuffle looks the low half of each byte up in one row of sixteen entries; the
// high half then says which row it was, one bit after the other: a tree of choices
// among all rows. For E6 every row gives its entry 6; bit 4 is 0 and leaves rows 8, A,
// C and E of the upper eight, bit 5 is 1 and leaves A and E, bit 6 is 1 and leaves E,
// and bit 7 is 1 and takes it rather than what the lower eight gave.

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

// One byte alone has a high half: to compare with it takes a fraction of the time that
// looking all of them up takes.
struct OneUnitFrom100 {
  static Halves halvesOf(const BytesToUnits& table, __m256i bytes) {
    const __m256i isIt = _mm256_cmpeq_epi8(bytes, everyByte(table.byteFrom100));
    const __m256i high = everyByte(table.highs[table.byteFrom100]);
    return {entriesOf(table.lows, bytes), _mm256_and_si256(isIt, high)};
  }
};

struct AnyUnits {
  static Halves halvesOf(const BytesToUnits& table, __m256i bytes) {
    return {entriesOf(table.lows, bytes), entriesOf(table.highs, bytes)};
  }
};

inline unsigned int missingUnits(const Halves& halves) {
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
inline Progress decodeBytes(const BytesToUnits& table, Position start, const unsigned char* end) {
  constexpr std::ptrdiff_t length = 32;
  const auto takeBlock = [&](const Position& at) -> Position {
    const Halves halves = Way::halvesOf(table, load(at.in));
    if (missingUnits(halves) != 0) return at;
    storeUnits(halves, at.out);
    return {at.in + length, at.out + 2 * length};
  };
  return takeBlocks(start, end, length, length, takeBlock,
                    [&](auto... text) { return scalar::bytesToUnits(table, text...); });
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

inline unsigned char* storeEight(__m128i numbers, unsigned int kept, unsigned char* out) {
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
  return storeQuarters(even, odd, kept, out, storeEight);
}

// Behind a byte that cannot lead a character always begins, so in each run of
// bytes that can every second one does, the first included.
//
// Takes `blocks` blocks, fewer in front of one that is all ASCII, and with the
// last one's last byte the byte behind it if that byte is a lead.
inline Position findCharacters(const PairsToUnits& table, Position at, std::ptrdiff_t blocks) {
  for (; blocks > 0 && !isAsciiBlock(at.in); --blocks) {
    const std::uint64_t leads = leadsOf(mayLead(table, at.in));
    const std::uint64_t kept = ~(leads << 1);
    at.out = storeNumbers(at.in, static_cast<unsigned int>(kept), at.out);
    at.out = storeNumbers(at.in + blockLength / 2, static_cast<unsigned int>(kept >> 32), at.out);
    at.in += blockLength + static_cast<std::ptrdiff_t>(leads >> 63);
  }
  return at;
}

inline unsigned int numberAt(const unsigned char* p) {
  unsigned short number = 0;
  std::memcpy(&number, p, sizeof number);
  return number;
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

}  // namespace

Progress bytesToUnits(const BytesToUnits& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  const Position start{in, out};
  return table.hasAsciiBelow80    ? decodeBytes<AsciiBelow80>(table, start, end)
         : table.byteFrom100 != 0 ? decodeBytes<OneUnitFrom100>(table, start, end)
         : table.hasUnitsFrom100  ? decodeBytes<AnyUnits>(table, start, end)
                                  : decodeBytes<UnitsBelow100>(table, start, end);
}

Progress pairsToUnits(const PairsToUnits& table, const unsigned char* in, const unsigned char* stop,
                      const unsigned char* end, unsigned char* out) {
  if (!table.isLowerAscii) return scalar::pairsToUnits(table, in, stop, end, out);
  // Each character may take the byte behind it too.
  const unsigned char* const last = stop < end ? stop : end - 1;
  Position at{in, out};
  std::ptrdiff_t blocks = 1;
  while (last - at.in >= blockLength) {
    at = widenBlocks(at, last);
    // A block may take 65 bytes.
    const std::ptrdiff_t whole = (last - at.in) / (blockLength + 1);
    if (whole == 0) break;
    const Position found = findCharacters(table, at, blocks < whole ? blocks : whole);
    const unsigned char* const mapped = mapNumbers(table.units, at.out, found.out);
    if (mapped == found.out) {
      at = found;
      blocks = blocks < mostBlocks ? 2 * blocks : mostBlocks;
      continue;
    }
    const std::ptrdiff_t written = mapped - at.out;
    at = {skipCharacters(table, at.in, written / 2), at.out + written};
    const Progress one = scalar::pairsToUnits(table, at.in, at.in + 1, end, at.out);
    if (one.why != Stop::end) return one;
    at = {one.in, one.out};
    // What is found behind a missing one is found for nothing.
    blocks = 1;
  }
  return scalar::pairsToUnits(table, at.in, stop, end, at.out);
}

}  // namespace quorvel::kernel::avx2
