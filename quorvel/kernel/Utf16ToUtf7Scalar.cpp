// UTF-16 to UTF-7: direct units four at a time, those of a run three at a time,
// which are eight digits.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf7Text.hpp"

namespace quorvel::kernel::scalar {

namespace {

// Writes the first digits of 48 bits.
unsigned char* putDigits(std::uint64_t bits, std::ptrdiff_t numDigits, unsigned char* out) {
  for (std::ptrdiff_t i = 0; i < numDigits; ++i, bits <<= 6) *out++ = utf7::digitOf(bits >> 42);
  return out;
}

// Up to three units that belong to a run, and what follows the last of them.
struct Units {
  std::uint64_t bits;  // sixteen for each of the three
  std::ptrdiff_t count;
};

Units loadUnits(const unsigned char* in, const unsigned char* end) {
  Units units{0, 0};
  for (; units.count < 3 && end - in >= 2 && !utf7::isDirect(loadUnit(in));
       ++units.count, in += 2) {
    units.bits |= std::uint64_t{loadUnit(in)} << (32 - 16 * units.count);
  }
  return units;
}

unsigned char* putHyphen(unsigned int direct, unsigned char* out) {
  if (utf7::needsHyphen(direct)) *out++ = '-';
  return out;
}

// An earlier piece of the text may have ended inside of a group of three units: takes
// single ones until no bits are left over or the run ends.
Position finishGroup(Position at, const unsigned char* end, Utf7Writing& run) {
  while (run.bitCount != 0 && end - at.in >= 2) {
    const unsigned int unit = loadUnit(at.in);
    if (utf7::isDirect(unit)) return {at.in, putHyphen(unit, utf7::endRun(run, at.out))};
    at.in += 2;
    run.bits = run.bits << 16 | unit;
    for (run.bitCount += 16; run.bitCount >= 6;) {
      run.bitCount -= 6;
      *at.out++ = utf7::digitOf(run.bits >> run.bitCount);
    }
    run.bits &= (1U << run.bitCount) - 1;
  }
  return at;
}

// Writes the last one or two units of the input; what they leave of a digit is for
// the state.
Position takeLast(Position at, const Units& units, Utf7Writing& run) {
  constexpr unsigned int bitsLeft[] = {0, 4, 2};
  const unsigned int left = bitsLeft[units.count];
  run.bits = static_cast<unsigned int>(units.bits >> (48 - 16 * units.count)) & ((1U << left) - 1);
  run.bitCount = left;
  const std::ptrdiff_t numDigits = 16 * units.count / 6;
  return {at.in + 2 * units.count, putDigits(units.bits, numDigits, at.out)};
}

// Writes units up to the direct one behind the run, or the end.
Position takeRun(Position at, const unsigned char* end, Utf7Writing& run) {
  while (end - at.in >= 2) {
    const Units units = loadUnits(at.in, end);
    const unsigned char* next = at.in + 2 * units.count;
    if (units.count == 3) {
      at = {next, putDigits(units.bits, 8, at.out)};
    } else if (end - next < 2) {
      return takeLast(at, units, run);
    } else {
      run.isOpen = false;
      at.out = putDigits(units.bits, 3 * units.count, at.out);
      return {next, putHyphen(loadUnit(next), at.out)};
    }
  }
  return at;
}

// Direct units, four at a time as long as there are so many.
Position takeDirect(Position at, const unsigned char* end) {
  constexpr std::ptrdiff_t unitsPerRun = runLength / 2;
  while (end - at.in >= runLength && areAsciiUnits(loadRun(at.in))) {
    unsigned char bytes[unitsPerRun];
    bool areDirect = true;
    for (std::ptrdiff_t i = 0; i < unitsPerRun; ++i) {
      bytes[i] = static_cast<unsigned char>(loadUnit(at.in + 2 * i));
      areDirect &= utf7::directUnits[bytes[i]];
    }
    if (!areDirect) break;
    std::memcpy(at.out, bytes, sizeof bytes);
    at = {at.in + runLength, at.out + unitsPerRun};
  }
  for (; end - at.in >= 2 && utf7::isDirect(loadUnit(at.in)); at.in += 2) {
    *at.out++ = static_cast<unsigned char>(loadUnit(at.in));
  }
  return at;
}

}  // namespace

Progress utf16ToUtf7(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Writing& run) {
  Position at{in, out};
  if (run.bitCount != 0) at = finishGroup(at, end, run);
  while (end - at.in >= 2) {
    if (run.isOpen) {
      at = takeRun(at, end, run);
      if (run.isOpen) break;
    }
    at = takeDirect(at, end);
    if (end - at.in < 2) break;
    *at.out++ = '+';
    if (loadUnit(at.in) == '+') {
      *at.out++ = '-';
      at.in += 2;
    } else {
      run.isOpen = true;
    }
  }
  return {at.in, at.out, at.in == end ? Stop::end : Stop::cutOff};
}

}  // namespace quorvel::kernel::scalar
