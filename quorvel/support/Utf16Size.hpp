#pragma once

// Tells of text that is sure to become too much UTF-16 before any of it is decoded.
// Utf16Size.cpp says how.

#include <limits>

#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"

namespace quorvel {

/// The UTF-16 units that `out` can still take at most, whatever the memory.
inline unsigned int mostUnitsIn(const DataBuffer& out) {
  return (std::numeric_limits<unsigned int>::max() - out.getSize()) / 2;
}

namespace utf16Size {
bool utf8IsTooLong(const EncodingConvert& converter, const unsigned char* data,
                   unsigned int numBytes, unsigned int mostUnits);
bool tableTextIsTooLong(const EncodingConvert& converter, const ToUnicodeTable& table,
                        const unsigned char* data, unsigned int numBytes, unsigned int mostUnits);
}  // namespace utf16Size

/// Whether a text surely becomes more UTF-16 than `out` can take: then its
/// conversion can fail at once. What is not sure is for the conversion to find out.
/// Only text that comes near 2 GiB is looked at.
inline bool utf8IsTooLong(const EncodingConvert& converter, const unsigned char* data,
                          unsigned int numBytes, const DataBuffer& out) {
  const unsigned int mostUnits = mostUnitsIn(out);
  return numBytes > mostUnits && utf16Size::utf8IsTooLong(converter, data, numBytes, mostUnits);
}

/// The same for a text that is decoded by `table`.
inline bool tableTextIsTooLong(const EncodingConvert& converter, const ToUnicodeTable& table,
                               const unsigned char* data, unsigned int numBytes,
                               const DataBuffer& out) {
  const unsigned int mostUnits = mostUnitsIn(out);
  return numBytes > mostUnits &&
         utf16Size::tableTextIsTooLong(converter, table, data, numBytes, mostUnits);
}

}  // namespace quorvel
