#pragma once

#include <cstring>

#include "quorvel/base/DataBuffer.h"
#include "quorvel/pages/Unpacking.hpp"

namespace quorvel {

// What a packed text says, read without a table: both the tables that callers
// fill and those of the registry are made of these calls.
//
// The text is a flag ("x" stored, anything else compressed) and base64; the bytes
// behind it are a lower-ASCII mark, a mark for a list of changes, and the list.
// For example "x" and the base64 of
//
//   61 75  80 AC 20  00  40 81 00 30  01 00 01 00  00 00
//
// says: ASCII stands for itself, a complete list; the byte 80 is U+20AC; the pair
// 81 40 is U+3000 and 81 41 is U+3001. Numbers have their low byte first and are
// differences to the record before, in each of the two sections anew.

struct PackedList {
  DataBuffer bytes;

  bool isLowerAscii() const { return bytes.getData2()[0] == 'a'; }
  bool isChanges() const { return bytes.getData2()[1] == 'd'; }
  const unsigned char* body() const { return bytes.getData2() + 2; }
};

/// Unpacks `packed`, which may be null. Only a whole list may be read.
Unpacked unpackList(const char* packed, PackedList& list);

inline unsigned int read16(const unsigned char* p) {
  return p[0] | static_cast<unsigned int>(p[1]) << 8;
}

/// Calls `takeByte(byte, unit)` for each single byte of a complete list and
/// `takePair(code, unit)` for each pair, its first byte in the high half of the
/// code, until one returns false; that is then the result.
template <typename TakeByte, typename TakePair>
bool readMappings(const unsigned char* body, const TakeByte& takeByte, const TakePair& takePair) {
  const unsigned char* p = body;
  unsigned int code = 0;
  unsigned int unit = 0;
  for (; *p; p += 3) {
    // The list is in the order of the units, so that the bytes wrap.
    code = (code + *p) & 0xFF;
    unit = (unit + read16(p + 1)) & 0xFFFF;
    if (!takeByte(static_cast<unsigned char>(code), unit)) return false;
  }
  ++p;
  code = 0;
  unit = 0;
  for (; read16(p); p += 4) {
    code = (code + read16(p)) & 0xFFFF;
    unit = (unit + read16(p + 2)) & 0xFFFF;
    if (!takePair(code, unit)) return false;
  }
  return true;
}

/// Likewise for a list of changes, which speaks of units, all of them as they
/// are: `remove(unit)`, then `takeByte` and `takePair` for what is replaced.
template <typename Remove, typename TakeByte, typename TakePair>
bool readChanges(const unsigned char* body, const Remove& remove, const TakeByte& takeByte,
                 const TakePair& takePair) {
  const unsigned char* p = body;
  for (; read16(p); p += 2) remove(read16(p));
  p += 2;
  for (; *p; p += 3) {
    if (!takeByte(*p, read16(p + 1))) return false;
  }
  ++p;
  for (; read16(p); p += 4) {
    const unsigned int code = static_cast<unsigned int>(p[0]) << 8 | p[1];
    if (!takePair(code, read16(p + 2))) return false;
  }
  return true;
}

}  // namespace quorvel
