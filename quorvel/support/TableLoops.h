#pragma once

#include "quorvel/base/HashConvert.h"
#include "quorvel/base/Progress.h"
#include "quorvel/base/UnicodeLookup.h"
#include "quorvel/support/TableIndex.h"

namespace quorvel {

// The loops of the table-driven code pages. They know no policy: each stops at
// its end or in front of the first thing that has no mapping. Those that take a
// `HashConvert` read it through its primary slots, as any table can be, one
// filled by hand too; the others take the index of a published table.

/// Single bytes to UTF-16LE, two bytes of room for each. The byte 00 is U+0000
/// whatever the table says.
Progress decodeSingleBytes(const UnicodeLookup& lookup, const unsigned char* in,
                           const unsigned char* end, unsigned char* out);

/// Multibyte text to UTF-16LE, `HashConvert::mostValueBytes` bytes of room for
/// each byte below `stop`. Starts no character at or behind `stop`, but looks at
/// the byte behind a lead byte there, up to `end`. A pair is tried before its
/// first byte alone.
Progress decodeMultiBytes(const HashConvert& table, const unsigned char* in,
                          const unsigned char* stop, const unsigned char* end, unsigned char* out);

/// The same with two bytes of room for each byte.
Progress decodeMultiBytes(const PairIndex& index, const unsigned char* in,
                          const unsigned char* stop, const unsigned char* end, unsigned char* out);

/// UTF-16LE to a code page, `HashConvert::mostValueBytes` bytes of room for each
/// unit; half a unit at the end is not looked at. Stops also in front of the unit
/// that may announce raw bytes. U+0000 without a mapping is the byte 00.
Progress encodeUnits(const HashConvert& table, const unsigned char* in, const unsigned char* end,
                     unsigned char* out);

/// The same with room for two bytes for each unit.
Progress encodeUnits(const CodeIndex& index, const unsigned char* in, const unsigned char* end,
                     unsigned char* out);

/// The same with room for one byte for each unit.
Progress encodeUnits(const ByteIndex& index, const unsigned char* in, const unsigned char* end,
                     unsigned char* out);

/// As `encodeUnits` for the one unit at `in`, whichever it is.
Progress encodeOneUnit(const HashConvert& table, const unsigned char* in, unsigned char* out);

}  // namespace quorvel
