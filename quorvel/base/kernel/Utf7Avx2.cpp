// UTF-7 to UTF-16, 32 bytes at a time: those up to the next plus are widened, or
// 32 digits become twelve units at once, whatever number of them belongs to the
// run. Most runs end within that, so their length makes no branch go wrong.

#include <cstddef>

#include "quorvel/base/Base64Digits.h"
#include "quorvel/base/kernel/Avx2.h"
#include "quorvel/base/kernel/Utf7.h"

namespace quorvel::kernel::avx2 {

namespace {

constexpr std::ptrdiff_t vectorLength = 32;

struct NibbleTable {
  alignas(16) unsigned char rows[16];

  __m256i at(__m256i nibbles) const {
    const __m128i table = _mm_load_si128(reinterpret_cast<const __m128i*>(rows));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(table), nibbles);
  }
};

// By the lower half of a byte: a bit for each upper half with which it is a digit.
constexpr NibbleTable makeUpperHalves() {
  NibbleTable table{};
  for (unsigned int i = 0; i < 64; ++i) {
    const auto digit = static_cast<unsigned int>(base64Digits[i]);
    table.rows[digit & 0xF] =
        static_cast<unsigned char>(table.rows[digit & 0xF] | 1U << (digit >> 4));
  }
  return table;
}

constexpr NibbleTable upperHalves = makeUpperHalves();

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

inline Digits loadDigits(const unsigned char* p) {
  const __m256i bytes = load(p);
  const __m256i lower = _mm256_and_si256(bytes, everyByte(0x0F));
  const __m256i upper = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), everyByte(0x0F));
  const __m256i matches = _mm256_and_si256(upperHalves.at(lower), bitsOfUpperHalf.at(upper));
  const __m256i areOthers = _mm256_cmpeq_epi8(matches, _mm256_setzero_si256());
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

}  // namespace

Progress utf7ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Run& run) {
  Progress at{in, out};
  while (end - at.in >= vectorLength) {
    if (!(run.isOpen ? takeDigits(at, run) : takeDirect(at, run))) return at;
  }
  return scalar::utf7ToUtf16(at.in, end, at.out, run);
}

}  // namespace quorvel::kernel::avx2
