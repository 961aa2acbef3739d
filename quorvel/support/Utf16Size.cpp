// How much UTF-16 a text becomes at least, without decoding it. Each byte has a
// weight: 1 where it becomes a unit of its own; 0 where that is not sure; and minus
// so many where it may take the bytes behind it with it, whatever their weights, be
// it as their lead byte or because an error covers them. The sum is never more than
// the units that are written, and exact for single-byte text and ASCII. Of the UTF-8 text
// 61 62 E3 81 82 it is 1 + 1 - 2 + 0 + 0 = 0, of 61 62 F0 it is 1 + 1 - 3: the error may
// cover the four bytes that F0 announces.

#include "quorvel/support/Utf16Size.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorvel/support/ErrorPolicy.hpp"

namespace quorvel {

namespace {

using Weights = std::array<signed char, 256>;

constexpr Weights utf8Weights = [] {
  Weights weights{};
  std::fill(weights.begin(), weights.begin() + 0x80, 1);
  std::fill(weights.begin() + 0xC0, weights.begin() + 0xE0, -1);
  std::fill(weights.begin() + 0xE0, weights.begin() + 0xF0, -2);
  std::fill(weights.begin() + 0xF0, weights.end(), -3);
  return weights;
}();

Weights weightsOf(const kernel::BytesToUnits& table) {
  Weights weights{};
  for (std::size_t byte = 0; byte < weights.size(); ++byte) {
    weights[byte] = byte == 0 || table.units[byte] != 0 ? 1 : 0;
  }
  return weights;
}

Weights weightsOf(const kernel::PairsToUnits& table) {
  Weights weights{};
  for (std::size_t byte = 0; byte < weights.size(); ++byte) {
    const bool isMapped = (table.isLowerAscii && byte < 0x80) || table.bytes[byte] != 0;
    weights[byte] = isMapped && !table.isLead[byte] ? 1 : -1;
  }
  return weights;
}

constexpr std::size_t stride = 64;

bool isAscii(const unsigned char* data) {
  std::uint64_t words[stride / 8];
  std::memcpy(words, data, sizeof words);
  std::uint64_t all = 0;
  for (const std::uint64_t word : words) all |= word;
  return (all & 0x8080808080808080) == 0;
}

std::int64_t sumOver(const unsigned char* data, std::size_t count, const Weights& weights,
                     bool isAsciiOne) {
  std::int64_t sum = 0;
  for (std::size_t i = 0; i < count;) {
    const std::size_t length = std::min(stride, count - i);
    if (isAsciiOne && length == stride && isAscii(data + i)) {
      sum += stride;
    } else {
      for (std::size_t j = i; j < i + length; ++j) sum += weights[data[j]];
    }
    i += length;
  }
  return sum;
}

bool exceeds(const unsigned char* data, unsigned int numBytes, const Weights& weights,
             unsigned int mostUnits) {
  constexpr std::size_t bytesAtATime = 65536;
  const auto isOne = [](signed char weight) { return weight == 1; };
  if (std::all_of(weights.begin(), weights.end(), isOne)) return numBytes > mostUnits;
  const bool isAsciiOne = std::all_of(weights.begin(), weights.begin() + 0x80, isOne);
  std::int64_t sum = 0;
  for (std::size_t left = numBytes; left > 0;) {
    const std::size_t count = std::min(left, bytesAtATime);
    sum += sumOver(data, count, weights, isAsciiOne);
    data += count;
    left -= count;
    if (sum + static_cast<std::int64_t>(left) <= mostUnits) return false;
  }
  return true;
}

// The action that converts again may run a conversion that takes bytes away from
// what is there (US-ASCII to UTF-8).
bool canTakeBack(const EncodingConvert& converter) {
  return errorActionOf(converter) == ErrorAction::reconvert;
}

}  // namespace

namespace utf16Size {

bool utf8IsTooLong(const EncodingConvert& converter, const unsigned char* data,
                   unsigned int numBytes, unsigned int mostUnits) {
  return !canTakeBack(converter) && exceeds(data, numBytes, utf8Weights, mostUnits);
}

bool tableTextIsTooLong(const EncodingConvert& converter, const ToUnicodeTable& table,
                        const unsigned char* data, unsigned int numBytes, unsigned int mostUnits) {
  const Weights weights = visit(table, [](const auto& kind) { return weightsOf(kind.flat); });
  return !canTakeBack(converter) && exceeds(data, numBytes, weights, mostUnits);
}

}  // namespace utf16Size

}  // namespace quorvel
