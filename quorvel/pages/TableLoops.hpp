#pragma once

#include "quorvel/kernel/Progress.hpp"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/PageTables.hpp"

namespace quorvel {

// The loops over a table that a caller has filled: they read it through its
// primary slots, a probe for each character. Published tables are read by those of
// kernel/Loops.hpp, and by the functions at the end here where these stop.

/// Multibyte text to UTF-16LE, `HashConvert::mostValueBytes` bytes of room for
/// each byte below `stop`. Starts no character at or behind `stop`, but looks at
/// the byte behind a lead byte there, up to `end`. A pair is tried before its
/// first byte alone.
Progress decodeMultiBytes(const HashConvert& table, const unsigned char* in,
                          const unsigned char* stop, const unsigned char* end, unsigned char* out);

/// UTF-16LE to a code page, `HashConvert::mostValueBytes` bytes of room for each
/// unit; half a unit at the end is not looked at. Stops also in front of the unit
/// that may announce raw bytes. U+0000 without a mapping is the byte 00.
Progress encodeUnits(const HashConvert& table, const unsigned char* in, const unsigned char* end,
                     unsigned char* out);

/// As `encodeUnits` for the one unit at `in`, whichever it is.
Position encodeOneUnit(const HashConvert& table, const unsigned char* in, unsigned char* out);

/// The same for the unit at `in` at which the loop over a published table has
/// stopped; two bytes of room.
Position encodeWhereStopped(const FromUnicodeTable& table, const unsigned char* in,
                            unsigned char* out);

/// UTF-16LE with the digits that the page itself has, one byte of room for each
/// unit: as the loop otherwise, and `encodeWhereStopped` is for where it stops.
Progress encodeWithOwnDigits(const UnicodeToBytesAndDigits& table, const unsigned char* in,
                             const unsigned char* end, unsigned char* out);

}  // namespace quorvel
