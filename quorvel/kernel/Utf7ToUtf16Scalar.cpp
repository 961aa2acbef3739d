// UTF-7 to UTF-16: direct text eight bytes at a time, and runs by groups of eight
// digits, which are three units; digit by digit where a group is not whole.

#include <array>
#include <cstddef>
#include <cstdint>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Base64Digits.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
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

// How many of the eight bytes at `in` stand for themselves before the first that
// does not: a plus, the only one whose lowest seven bits turn zero, or no ASCII.
std::ptrdiff_t countDirect(const unsigned char* in) {
  constexpr std::uint64_t lowest = 0x7F * inEachByte;
  const std::uint64_t bytes = loadRun(in);
  const std::uint64_t fromPlus = bytes ^ '+' * inEachByte;
  return countBeforeHighBit(bytes | ~((fromPlus & lowest) + lowest));
}

// All that stands for itself.
Position copyDirect(Position at, const unsigned char* end) {
  while (end - at.in >= runLength) {
    const std::ptrdiff_t count = countDirect(at.in);
    for (std::ptrdiff_t i = 0; i < runLength; ++i) putUnit(at.in[i], at.out + 2 * i);
    at = {at.in + count, at.out + 2 * count};
    if (count != runLength) return at;
  }
  while (at.in != end && *at.in != '+' && *at.in < 0x80) at.out = putUnit(*at.in++, at.out);
  return at;
}

constexpr std::ptrdiff_t digitsPerGroup = 8;
constexpr std::ptrdiff_t bytesPerGroup = 6;

// Writes the units of a group, or nothing if not all of it are digits.
bool putGroup(const unsigned char* in, unsigned char* out) {
  std::uint64_t bits = 0;
  unsigned int all = 0;
  for (std::ptrdiff_t i = 0; i < digitsPerGroup; ++i) {
    const unsigned int value = digitValues[in[i]];
    bits = bits << 6 | value;
    all |= value;
  }
  if (all >= noBase64Digit) return false;
  for (int shift = 32; shift >= 0; shift -= 16) {
    out = putUnit(static_cast<unsigned int>(bits >> shift), out);
  }
  return true;
}

// Takes single digits until no bits are left over or no digit follows.
Position takeDigits(Position at, const unsigned char* end, Utf7Reading& run) {
  unsigned int bits = run.bits;
  unsigned int bitCount = run.bitCount;
  const unsigned char* begin = at.in;
  while (at.in != end) {
    const unsigned int value = digitValues[*at.in];
    if (value == noBase64Digit) break;
    ++at.in;
    bits = bits << 6 | value;
    bitCount += 6;
    if (bitCount < 16) continue;
    bitCount -= 16;
    at.out = putUnit(bits >> bitCount, at.out);
    bits &= (1U << bitCount) - 1;
    if (bitCount == 0) break;
  }
  run = {true, run.hasDigits || at.in != begin, bits, bitCount};
  return at;
}

// All digits of a run with no bits left over, and those of an earlier piece.
Position takeRun(Position at, const unsigned char* end, Utf7Reading& run) {
  if (run.bitCount != 0) at = takeDigits(at, end, run);
  const unsigned char* begin = at.in;
  while (end - at.in >= digitsPerGroup && run.bitCount == 0 && putGroup(at.in, at.out)) {
    at = {at.in + digitsPerGroup, at.out + bytesPerGroup};
  }
  run.hasDigits = run.hasDigits || at.in != begin;
  return run.bitCount == 0 ? takeDigits(at, end, run) : at;
}

// Ends the run in front of a byte that is no digit, and takes that if it is the
// hyphen of the run; false where a run must not end so.
bool closeRun(Position& at, Utf7Reading& run) {
  const bool hasHyphen = *at.in == '-';
  if (!run.hasDigits && hasHyphen) {
    at.out = putUnit('+', at.out);
  } else if (!utf7::isWhole(run)) {
    return false;
  }
  if (hasHyphen) ++at.in;
  run = {};
  return true;
}

}  // namespace

Progress utf7ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Reading& run) {
  Position at{in, out};
  while (at.in != end) {
    if (!run.isOpen) {
      at = copyDirect(at, end);
      if (at.in == end) break;
      if (*at.in != '+') return {at.in, at.out, Stop::met};
      run.isOpen = true;
      ++at.in;
    }
    at = takeRun(at, end, run);
    if (at.in == end) break;
    if (!closeRun(at, run)) return {at.in, at.out, Stop::met};
  }
  return {at.in, at.out, Stop::end};
}

}  // namespace quorvel::kernel::scalar
