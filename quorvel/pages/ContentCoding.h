#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"

namespace quorvel {

/// Base64 decoding (RFC 4648, section 4), strict: no line breaks or other
/// foreign characters, padded to a multiple of four, unused bits zero.
class QUORVEL_API ContentCoding {
 public:
  /// Decodes `len` characters and appends the bytes to `out`. Malformed text
  /// or lack of memory yields false and appends nothing.
  static bool decodeBase64ToDb(const char* text, unsigned int len, DataBuffer& out);

  /// Decodes `len` characters into a new array that the caller owns (`delete[]`)
  /// and sets `*outLen` to its length. Null, with `*outLen` 0, for malformed
  /// text or lack of memory.
  unsigned char* decodeBase64(const char* text, unsigned int len, unsigned int* outLen);
};

}  // namespace quorvel
