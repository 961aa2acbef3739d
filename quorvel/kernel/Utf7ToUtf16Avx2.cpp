// UTF-7 to UTF-16, 32 bytes at a time: what is direct up to the next run is widened,
// and 32 digits are twelve units, whatever number of them belongs to the run. Most
// runs end within that, so their length makes no branch go wrong.

#include <cstddef>

#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf7Avx2.hpp"
#include "quorvel/kernel/Utf7State.hpp"

namespace quorvel::kernel::avx2 {

namespace {

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

inline Digits loadDigits(const unsigned char* p) {
  const __m256i bytes = load(p);
  const __m256i upper = upperHalvesOf(bytes);
  const __m256i areOthers = areNotIn(digitHalves, bytes);
  const __m256i isSlash = _mm256_cmpeq_epi8(bytes, everyByte('/'));
  const __m256i values = _mm256_add_epi8(bytes, distances.at(_mm256_add_epi8(upper, isSlash)));
  const unsigned int length = _tzcnt_u32(highBits(areOthers));
  return {_mm256_and_si256(values, firstBytes(length)), length};
}

// Writes the twelve units of 32 digits, and eight bytes more. Two multiplications
// join: of the digits 0, 10, 2, 35 ("AKCj") the first makes 0 * 64 + 10 = 0x00A of
// one pair and 2 * 64 + 35 = 0x0A3 of the other, the second 0x00A * 4096 + 0x0A3 =
// 0x00A0A3, which are the three bytes 00 A0 A3.
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

inline Position behind(const Position& at, unsigned int numDigits) {
  return {at.in + numDigits, at.out + bytesOfUnits(numDigits)};
}

// Takes what the next 32 bytes have of a run with no bits left over; false where
// that must not end so.
inline bool takeDigits(Position& at, Utf7Reading& run) {
  const Digits digits = loadDigits(at.in);
  storeUnits(digits.values, at.out);
  if (digits.length == vectorLength) {
    at = behind(at, digits.length);
    run.hasDigits = true;
    return true;
  }
  const bool hasHyphen = at.in[digits.length] == '-';
  const bool hasDigits = run.hasDigits || digits.length != 0;
  if (!endsWell(digits.length, at.out) || (!hasDigits && !hasHyphen)) return false;
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
    store(_mm256_cvtepu8_epi16(load16(p + i)), out + 2 * i);
  }
}

// Takes what the next 32 bytes have up to a plus, and that; false in front of what
// is no ASCII.
inline bool takeDirect(Position& at, Utf7Reading& run) {
  const __m256i bytes = load(at.in);
  const __m256i stops = _mm256_or_si256(bytes, _mm256_cmpeq_epi8(bytes, everyByte('+')));
  widen(at.in, at.out);
  const auto length = static_cast<std::ptrdiff_t>(_tzcnt_u32(highBits(stops)));
  at = {at.in + length, at.out + 2 * length};
  if (length == vectorLength) return true;
  if (*at.in != '+') return false;
  ++at.in;
  run.isOpen = true;
  return true;
}

// An earlier piece of the text may have ended inside of a group of digits.
inline Position finishGroup(Position at, const unsigned char* end, Utf7Reading& run) {
  while (run.bitCount != 0 && at.in != end) {
    const Progress one = scalar::utf7ToUtf16(at.in, at.in + 1, at.out, run);
    if (one.why == Stop::met) break;
    at = {one.in, one.out};
  }
  return at;
}

}  // namespace

Progress utf7ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Reading& run) {
  Position at{in, out};
  if (run.bitCount != 0) at = finishGroup(at, end, run);
  while (run.bitCount == 0 && end - at.in >= vectorLength) {
    if (!(run.isOpen ? takeDigits(at, run) : takeDirect(at, run))) break;
  }
  return scalar::utf7ToUtf16(at.in, end, at.out, run);
}

}  // namespace quorvel::kernel::avx2
