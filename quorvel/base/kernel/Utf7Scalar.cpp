#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "quorvel/base/Base64Digits.h"
#include "quorvel/base/kernel/AsciiRun.h"
#include "quorvel/base/kernel/Utf7.h"

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

}  // namespace

Progress utf7ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out,
                     Utf7Run& run) {
  Progress at{in, out};
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

}  // namespace quorvel::kernel::scalar
