#pragma once

// UTF-16 and UTF-32 in the other byte order.

#include <climits>
#include <cstddef>
#include <cstring>

#include "quorvel/base/DataBuffer.h"

namespace quorvel {

template <typename Unit>
constexpr Unit reversed(Unit unit) {
  Unit result = 0;
  for (std::size_t i = 0; i < sizeof unit; ++i) {
    result = static_cast<Unit>(result << CHAR_BIT | (unit & UCHAR_MAX));
    unit = static_cast<Unit>(unit >> CHAR_BIT);
  }
  return result;
}

/// Writes the units of `numBytes` bytes at `in` with their bytes in reverse order;
/// `out` may be `in`. With both lengths known to the compiler this becomes vector
/// code.
template <typename Unit>
void reverseUnits(const unsigned char* in, std::size_t numBytes, unsigned char* out) {
  for (std::size_t i = 0; i < numBytes; i += sizeof(Unit)) {
    Unit unit = 0;
    std::memcpy(&unit, in + i, sizeof unit);
    unit = reversed(unit);
    std::memcpy(out + i, &unit, sizeof unit);
  }
}

/// Appends the whole units of `unitLength` bytes (2 or 4) among the `numBytes`
/// bytes at `data`, each with its bytes in reverse order. False when memory
/// runs out, with `out` as it was.
bool appendReversed(const unsigned char* data, unsigned int numBytes, unsigned int unitLength,
                    DataBuffer& out);

}  // namespace quorvel
