#pragma once

#include "quorvel/base/DataBuffer.h"

namespace quorvel {

// The two codings of a packed table as its builder needs them: text that cannot
// be unpacked is one thing and memory that cannot be had another. What is in the
// library's interface, `ContentCoding` and `QuorvelBzip2`, stands on these.

enum class Unpacked { whole, damaged, outOfMemory };

/// Appends what `len` base64 characters stand for; nothing unless all of it.
Unpacked unpackBase64(const char* text, unsigned int len, DataBuffer& out);

/// What became of a compressed block, and the reason if it is not whole.
struct Decompressed {
  Unpacked state;
  const char* fault;
};

/// Appends what the bzip2 stream behind the header of `in` gives; nothing unless
/// it is just what the header announces.
Decompressed decompressBlock(const DataBuffer& in, DataBuffer& out);

}  // namespace quorvel
