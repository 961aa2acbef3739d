// UTF-16 to UTF-7, 32 units at a time: what is direct up to the next run is narrowed,
// and twelve units are 32 digits, whatever number of them belongs to the run.

#include <cstddef>

#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf7Avx2.hpp"
#include "quorvel/kernel/Utf7State.hpp"

namespace quorvel::kernel::avx2 {

namespace {

constexpr unsigned int unitsPerBlock = 32;
constexpr unsigned int unitsOfDigits = 12;

// Letters and digits are in both tables; "+" and "/" are base64 only, but "/" is
// direct as punctuation.
constexpr NibbleTable makeDirectHalves() {
  NibbleTable table = makeUpperHalves(utf7::directPunctuation);
  for (unsigned int i = 0; i < 16; ++i) {
    table.rows[i] = static_cast<unsigned char>(table.rows[i] | digitHalves.rows[i]);
  }
  table.rows['+' & 0xF] = static_cast<unsigned char>(table.rows['+' & 0xF] & ~(1U << ('+' >> 4)));
  return table;
}

constexpr NibbleTable directHalves = makeDirectHalves();

constexpr unsigned char offset(char digit, int value) {
  return static_cast<unsigned char>(digit - value);
}

// Units from U+0100 on saturate to bytes that are not direct.
inline __m256i narrow(const unsigned char* p) {
  return _mm256_permute4x64_epi64(_mm256_packus_epi16(load(p), load(p + vectorLength)),
                                  _MM_SHUFFLE(3, 1, 2, 0));
}

// A bit for each of the next 32 units that is not direct.
inline unsigned int othersAmong(const unsigned char* p) {
  return highBits(areNotIn(directHalves, narrow(p)));
}

// Writes the 32 digits of twelve units.
inline void storeDigits(__m256i units, unsigned char* out) {
  // For four digits three bytes, the middle one twice: the highest six bits of the
  // first word and the next six, the same of the second, which is behind by four.
  const __m256i lanes =
      _mm256_permutevar8x32_epi32(units, _mm256_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5));
  const __m128i order = _mm_setr_epi8(0, 1, 3, 0, 5, 2, 4, 5, 6, 7, 9, 6, 11, 8, 10, 11);
  const __m256i words = _mm256_shuffle_epi8(lanes, _mm256_broadcastsi128_si256(order));
  const __m256i first = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)),
                                           _mm256_set1_epi32(0x04000040));
  const __m256i second = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)),
                                            _mm256_set1_epi32(0x01000010));
  const __m256i values = _mm256_or_si256(first, second);

  // 0 for the small letters, 1 to 10 for the figures, then "+" and "/"; 13 for
  // the capitals.
  constexpr NibbleTable offsets = {
      {offset('a', 26), offset('0', 52), offset('0', 52), offset('0', 52), offset('0', 52),
       offset('0', 52), offset('0', 52), offset('0', 52), offset('0', 52), offset('0', 52),
       offset('0', 52), offset('+', 62), offset('/', 63), offset('A', 0)}};
  const __m256i isCapital = _mm256_cmpgt_epi8(everyByte(26), values);
  const __m256i kind = _mm256_or_si256(_mm256_subs_epu8(values, everyByte(51)),
                                       _mm256_and_si256(isCapital, everyByte(13)));
  store(_mm256_add_epi8(values, offsets.at(kind)), out);
}

// Before which direct units a hyphen must end the run.
struct ByteSet {
  bool rows[256];

  bool operator[](unsigned char byte) const { return rows[byte]; }
};

constexpr ByteSet makeHyphenSet() {
  ByteSet set{};
  for (const char digit : base64Digits) set.rows[static_cast<unsigned char>(digit)] = digit != 0;
  set.rows[static_cast<unsigned char>('-')] = true;
  return set;
}

constexpr ByteSet needsHyphen = makeHyphenSet();

// Writes the digits of a run of up to twelve units, and a hyphen if it needs one.
inline unsigned char* putRun(const unsigned char* in, unsigned int numUnits, unsigned char* out) {
  storeDigits(_mm256_and_si256(load(in), firstBytes(2 * numUnits)), out);
  out += (numUnits * 16 + 5) / 6;
  *out = '-';
  return out + (needsHyphen[in[std::size_t{2} * numUnits]] ? 1 : 0);
}

// Takes twelve units of a run, or those up to the direct one that ends it.
inline void takeRunUnits(Position& at, Utf7Writing& run) {
  const unsigned int count = _tzcnt_u32(~othersAmong(at.in));
  if (count >= unitsOfDigits) {
    storeDigits(load(at.in), at.out);
    at = {at.in + std::ptrdiff_t{2} * unitsOfDigits, at.out + vectorLength};
    return;
  }
  at = {at.in + std::ptrdiff_t{2} * count, putRun(at.in, count, at.out)};
  run = {};
}

// Takes the units of a block, or those up to a run that is long or whose end is not
// in it, which it opens. One mask shows all stretches, so that none has to wait for
// those in front of it.
inline void takeBlock(Position& at, Utf7Writing& run) {
  const unsigned int others = othersAmong(at.in);
  for (unsigned int from = 0; from < unitsPerBlock;) {
    store(narrow(at.in + std::ptrdiff_t{2} * from), at.out);
    const unsigned int begin = from + _tzcnt_u32(others >> from);
    if (begin >= unitsPerBlock) {
      at.out += unitsPerBlock - from;
      break;
    }
    at.out += begin - from;
    *at.out++ = '+';
    const unsigned char* first = at.in + std::ptrdiff_t{2} * begin;
    const unsigned int length = _tzcnt_u32(~(others >> begin));
    from = begin + length;
    if (first[0] == '+' && first[1] == 0) {
      *at.out++ = '-';
      from = begin + 1;
    } else if (length > unitsOfDigits || from >= unitsPerBlock) {
      run.isOpen = true;
      at.in = first;
      return;
    } else {
      at.out = putRun(first, length, at.out);
    }
  }
  at.in += std::ptrdiff_t{2} * unitsPerBlock;
}

// A block may be loaded from any unit of another.
constexpr std::ptrdiff_t bytesLookedAt = std::ptrdiff_t{4} * unitsPerBlock;

// An earlier piece of the text may have ended inside of a group of three units.
inline Position finishGroup(Position at, const unsigned char* end, Utf7Writing& run) {
  while (run.bitCount != 0 && end - at.in >= 2) {
    const Progress one = scalar::utf16ToUtf7(at.in, at.in + 2, at.out, run);
    at = {one.in, one.out};
  }
  return at;
}

}  // namespace

Progress utf16ToUtf7(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Writing& run) {
  Position at{in, out};
  if (run.bitCount != 0) at = finishGroup(at, end, run);
  while (end - at.in >= bytesLookedAt) {
    if (run.isOpen) {
      takeRunUnits(at, run);
    } else {
      takeBlock(at, run);
    }
  }
  return scalar::utf16ToUtf7(at.in, end, at.out, run);
}

}  // namespace quorvel::kernel::avx2
