// UTF-7 and UTF-16, 32 bytes at a time: what is direct up to the next run is widened
// or narrowed, and 32 digits are twelve units, whatever number of them belongs to
// the run. Most runs end within that, so their length makes no branch go wrong.

#include <cstddef>

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Base64Alphabet.hpp"
#include "quorvel/kernel/Utf7Run.hpp"

namespace quorvel::kernel::avx2 {

namespace {

constexpr std::ptrdiff_t vectorLength = 32;

// --- Decoding ---------------------------------------------------------------

struct NibbleTable {
  alignas(16) unsigned char rows[16];

  __m256i at(__m256i nibbles) const {
    const __m128i table = _mm_load_si128(reinterpret_cast<const __m128i*>(rows));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(table), nibbles);
  }
};

// By the lower half of a byte: a bit for each upper half with which it is one of
// the characters.
template <std::size_t size>
constexpr NibbleTable makeUpperHalves(const char (&characters)[size]) {
  NibbleTable table{};
  for (std::size_t i = 0; i + 1 < size; ++i) {
    const auto byte = static_cast<unsigned char>(characters[i]);
    table.rows[byte & 0xF] = static_cast<unsigned char>(table.rows[byte & 0xF] | 1U << (byte >> 4));
  }
  return table;
}

constexpr NibbleTable digitHalves = makeUpperHalves(base64Digits);

// By the upper half: the bit that the table above has for it.
constexpr NibbleTable bitsOfUpperHalf = {{1, 2, 4, 8, 16, 32, 64, 128}};

// What is added to a digit for its value, by its upper half; 1 stands for "/", which
// shares its own with "+".
constexpr unsigned char distance(int value, char digit) {
  return static_cast<unsigned char>(value - digit);
}
constexpr NibbleTable distances = {{0, distance(63, '/'), distance(62, '+'), distance(52, '0'),
                                    distance(0, 'A'), distance(0, 'A'), distance(26, 'a'),
                                    distance(26, 'a')}};

struct Digits {
  __m256i values;       // zero from the first that is none on
  unsigned int length;  // how many bytes in front of that
};

// FF in the first bytes, so many.
inline __m256i firstBytes(unsigned int length) {
  const __m256i places =
      _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                       22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
  return _mm256_cmpgt_epi8(everyByte(static_cast<int>(length)), places);
}

inline __m256i upperHalvesOf(__m256i bytes) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), everyByte(0x0F));
}

inline __m256i areNotIn(const NibbleTable& upperHalves, __m256i bytes) {
  const __m256i lower = _mm256_and_si256(bytes, everyByte(0x0F));
  const __m256i matches =
      _mm256_and_si256(upperHalves.at(lower), bitsOfUpperHalf.at(upperHalvesOf(bytes)));
  return _mm256_cmpeq_epi8(matches, _mm256_setzero_si256());
}

inline Digits loadDigits(const unsigned char* p) {
  const __m256i bytes = load(p);
  const __m256i upper = upperHalvesOf(bytes);
  const __m256i areOthers = areNotIn(digitHalves, bytes);
  const __m256i isSlash = _mm256_cmpeq_epi8(bytes, everyByte('/'));
  const __m256i values = _mm256_add_epi8(bytes, distances.at(_mm256_add_epi8(upper, isSlash)));
  const unsigned int length = _tzcnt_u32(highBits(areOthers));
  return {_mm256_and_si256(values, firstBytes(length)), length};
}

// Writes the twelve units of 32 digits, and eight bytes more.
inline void storeUnits(__m256i values, unsigned char* out) {
  const __m256i twelves = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0140));
  const __m256i twentyFours = _mm256_madd_epi16(twelves, _mm256_set1_epi32(0x00011000));
  // The highest of three bytes comes first in base64, the lower of two in a unit.
  const __m128i order = _mm_setr_epi8(1, 2, 6, 0, 4, 5, 9, 10, 14, 8, 12, 13, -1, -1, -1, -1);
  const __m256i units = _mm256_shuffle_epi8(twentyFours, _mm256_broadcastsi128_si256(order));
  store(_mm256_permutevar8x32_epi32(units, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7)), out);
}

constexpr unsigned int digitsPerGroup = 8;

inline std::ptrdiff_t bytesOfUnits(unsigned int numDigits) {
  return std::ptrdiff_t{2} * (numDigits * 3 / digitsPerGroup);
}

// Whether so many digits leave no more than their last one's low bits behind the
// last unit, and these are zero; all but whole units at `out` is.
inline bool endsWell(unsigned int numDigits, const unsigned char* out) {
  constexpr unsigned int wellFormed = 1U << 0 | 1U << 3 | 1U << 6;
  const unsigned char* rest = out + bytesOfUnits(numDigits);
  return (wellFormed >> numDigits % digitsPerGroup & 1) != 0 && (rest[0] | rest[1]) == 0;
}

inline Progress behind(const Progress& at, unsigned int numDigits) {
  return {at.in + numDigits, at.out + bytesOfUnits(numDigits)};
}

// Takes what the next 32 bytes have of a run; false where that must not be taken.
inline bool takeDigits(Progress& at, Utf7Run& run) {
  const Digits digits = loadDigits(at.in);
  storeUnits(digits.values, at.out);
  if (digits.length == vectorLength) {
    at = behind(at, digits.length);
    run.hasDigits = true;
    return true;
  }
  const bool hasHyphen = at.in[digits.length] == '-';
  const bool hasDigits = run.hasDigits || digits.length != 0;
  if (!endsWell(digits.length, at.out) || (!hasDigits && !hasHyphen)) {
    const unsigned int whole = digits.length & ~(digitsPerGroup - 1);
    at = behind(at, whole);
    run.hasDigits = run.hasDigits || whole != 0;
    return false;
  }
  at = behind(at, digits.length);
  at.in += hasHyphen ? 1 : 0;
  if (!hasDigits) {
    at.out[0] = '+';
    at.out[1] = 0;
    at.out += 2;
  }
  run = {};
  return true;
}

inline void widen(const unsigned char* p, unsigned char* out) {
  for (std::ptrdiff_t i = 0; i < vectorLength; i += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    store(_mm256_cvtepu8_epi16(bytes), out + 2 * i);
  }
}

// Takes what the next 32 bytes have up to a plus, and that; false in front of what
// is no ASCII.
inline bool takeDirect(Progress& at, Utf7Run& run) {
  const __m256i bytes = load(at.in);
  const __m256i stops = _mm256_or_si256(bytes, _mm256_cmpeq_epi8(bytes, everyByte('+')));
  widen(at.in, at.out);
  const auto length = static_cast<std::ptrdiff_t>(_tzcnt_u32(highBits(stops)));
  at = {at.in + length, at.out + 2 * length};
  if (length == vectorLength) return true;
  if (*at.in != '+') return false;
  ++at.in;
  run = {true, false};
  return true;
}

inline Progress decode(Progress at, const unsigned char* end, Utf7Run& run) {
  while (end - at.in >= vectorLength) {
    if (!(run.isOpen ? takeDigits(at, run) : takeDirect(at, run))) return at;
  }
  return scalar::utf7ToUtf16(at.in, end, at.out, run);
}

// --- Encoding ---------------------------------------------------------------

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
inline void takeRunUnits(Progress& at, Utf7Run& run) {
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
inline void takeBlock(Progress& at, Utf7Run& run) {
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

inline Progress encode(Progress at, const unsigned char* end, Utf7Run& run) {
  while (end - at.in >= bytesLookedAt) {
    if (run.isOpen) {
      takeRunUnits(at, run);
    } else {
      takeBlock(at, run);
    }
  }
  return scalar::utf16ToUtf7(at.in, end, at.out, run);
}

}  // namespace

Progress utf7ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Run& run) {
  return decode({in, out}, end, run);
}

Progress utf16ToUtf7(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Run& run) {
  return encode({in, out}, end, run);
}

}  // namespace quorvel::kernel::avx2
