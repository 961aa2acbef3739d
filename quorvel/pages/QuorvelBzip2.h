#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"
#include "quorvel/base/LogBase.h"

namespace quorvel {

/// Decompression of a bzip2 stream behind an 8-byte header: the bytes
/// E1 A7 94 B3, then the uncompressed length, 32 bits, low byte first.
class QUORVEL_API QuorvelBzip2 {
 public:
  /// The uncompressed length that the header of `in` announces; 0 when `in` has
  /// no such header.
  static unsigned int announcedLength(const DataBuffer& in);

  /// Appends the decompressed bytes of `in` to `out`. Neither the header nor
  /// the stream is trusted: a wrong magic, a damaged or truncated stream, one
  /// that does not end the input or does not give exactly the announced length
  /// yields false and appends nothing, and memory grows only with what the
  /// stream really gives. `log`, which may be null, receives the reason as an
  /// error line.
  bool unBzipWithHeader(DataBuffer& in, DataBuffer& out, LogBase* log);
};

}  // namespace quorvel
