#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Base64Digits.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf7Run.hpp"
#include "quorvel/kernel/Utf7Text.hpp"

namespace quorvel::kernel::scalar {

namespace {

constexpr std::array<unsigned char, 256> makeDigitValues() {
  std::array<unsigned char, 256> values{};
  for (unsigned int byte = 0; byte < values.size(); ++byte) {
    values[byte] = static_cast<unsigned char>(base64DigitValue(byte));
  }
  return values;
}

constexpr std::array<unsigned char, 256> digitValues = makeDigitValues();

unsigned char* storeUnit(unsigned int unit, unsigned char* out) {
  const auto value = static_cast<unsigned short>(unit);
  std::memcpy(out, &value, sizeof value);
  return out + sizeof value;
}

// How many of the eight bytes at `in` stand for themselves before the first that
// does not: a plus, the only one whose lowest seven bits turn zero, or no ASCII.
std::ptrdiff_t countDirect(const unsigned char* in) {
  constexpr std::uint64_t lowest = 0x7F * inEachByte;
  const std::uint64_t bytes = loadRun(in);
  const std::uint64_t fromPlus = bytes ^ '+' * inEachByte;
  return countBeforeHighBit(bytes | ~((fromPlus & lowest) + lowest));
}

// All that stands for itself.
Progress copyDirect(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= runLength) {
    const std::ptrdiff_t count = countDirect(in);
    for (std::ptrdiff_t i = 0; i < runLength; ++i) storeUnit(in[i], out + 2 * i);
    in += count;
    out += 2 * count;
    if (count != runLength) return {in, out};
  }
  while (in != end && *in != '+' && *in < 0x80) out = storeUnit(*in++, out);
  return {in, out};
}

// Eight digits are three units.
constexpr std::ptrdiff_t digitsPerGroup = 8;
constexpr std::ptrdiff_t bytesPerGroup = 6;

// Writes the units of a group, or nothing if not all of it are digits.
bool takeGroup(const unsigned char* in, unsigned char* out) {
  std::uint64_t bits = 0;
  unsigned int all = 0;
  for (std::ptrdiff_t i = 0; i < digitsPerGroup; ++i) {
    const unsigned int value = digitValues[in[i]];
    bits = bits << 6 | value;
    all |= value;
  }
  if (all >= noBase64Digit) return false;
  for (int shift = 32; shift >= 0; shift -= 16) {
    out = storeUnit(static_cast<unsigned int>(bits >> shift), out);
  }
  return true;
}

// Takes the last digits of a run, fewer than eight, and the hyphen behind them if
// there is one; or nothing. No digits, three or six end a run, if the bits behind
// the last unit are zero.
bool endRun(Progress& at, const unsigned char* end, Utf7Run& run) {
  unsigned int bits = 0;
  unsigned char* out = at.out;
  const unsigned char* in = at.in;
  for (; in != end && digitValues[*in] < noBase64Digit; ++in) {
    const auto count = in - at.in + 1;
    bits = bits << 6 | digitValues[*in];
    if (count == 3) out = storeUnit(bits >> 2, out);
    if (count == 6) out = storeUnit(bits >> 4, out);
  }
  const auto numDigits = in - at.in;
  if (in == end || numDigits % 3 != 0) return false;
  const unsigned int rest = numDigits == 0 ? 0 : numDigits == 3 ? bits & 0x3 : bits & 0xF;
  if (rest != 0) return false;
  const bool hasDigits = run.hasDigits || numDigits != 0;
  const bool hasHyphen = *in == '-';
  if (!hasDigits && !hasHyphen) return false;
  if (!hasDigits) out = storeUnit('+', out);
  at = {in + (hasHyphen ? 1 : 0), out};
  run = {};
  return true;
}

Progress decode(Progress at, const unsigned char* end, Utf7Run& run) {
  while (at.in != end) {
    if (!run.isOpen) {
      at = copyDirect(at.in, end, at.out);
      if (at.in == end || *at.in != '+') return at;
      run = {true, false};
      ++at.in;
    }
    while (end - at.in >= digitsPerGroup && takeGroup(at.in, at.out)) {
      run.hasDigits = true;
      at = {at.in + digitsPerGroup, at.out + bytesPerGroup};
    }
    if (!endRun(at, end, run)) return at;
  }
  return at;
}

// Writes the first digits of 48 bits.
unsigned char* putDigits(std::uint64_t bits, int numDigits, unsigned char* out) {
  for (int i = 0; i < numDigits; ++i, bits <<= 6) {
    *out++ = static_cast<unsigned char>(base64Digits[bits >> 42 & 0x3F]);
  }
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

// Writes units up to the direct one behind the run, or a multiple of three of them
// if there is none.
Progress encodeRun(Progress at, const unsigned char* end, Utf7Run& run) {
  while (true) {
    const Units units = loadUnits(at.in, end);
    const unsigned char* next = at.in + 2 * units.count;
    if (units.count == 3) {
      at = {next, putDigits(units.bits, digitsPerGroup, at.out)};
    } else if (next == end) {
      return at;
    } else {
      at = {next, putDigits(units.bits, static_cast<int>(3 * units.count), at.out)};
      if (utf7::needsHyphen(loadUnit(next))) *at.out++ = '-';
      run = {};
      return at;
    }
  }
}

// Direct units, four at a time as long as there are so many.
Progress encodeDirect(Progress at, const unsigned char* end) {
  constexpr std::ptrdiff_t unitsPerRun = runLength / 2;
  while (end - at.in >= runLength && (loadRun(at.in) & 0xFF80 * inEachUnit) == 0) {
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
  for (; at.in != end && utf7::isDirect(loadUnit(at.in)); at.in += 2) {
    *at.out++ = static_cast<unsigned char>(loadUnit(at.in));
  }
  return at;
}

Progress encode(Progress at, const unsigned char* end, Utf7Run& run) {
  while (at.in != end) {
    if (run.isOpen) at = encodeRun(at, end, run);
    if (run.isOpen) return at;
    at = encodeDirect(at, end);
    if (at.in == end) return at;
    *at.out++ = '+';
    if (loadUnit(at.in) == '+') {
      *at.out++ = '-';
      at.in += 2;
    } else {
      run.isOpen = true;
    }
  }
  return at;
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

}  // namespace quorvel::kernel::scalar
