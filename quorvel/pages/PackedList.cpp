// From packed text to a list that can be read without looking for its end.

#include "quorvel/pages/PackedList.hpp"

#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/QuorvelBzip2.h"

namespace quorvel {

namespace {

// A list that maps every unit and every code once is a quarter of this; a
// longer one is broken, however well it is packed.
constexpr unsigned int mostTableBytes = 1U << 20;

// Behind a list that lacks them, these zero bytes end a record that is cut off
// and every section that is still to come.
constexpr unsigned char terminators[8] = {};

Unpacked appendList(char flag, const DataBuffer& decoded, DataBuffer& list) {
  if (flag == 'x') return list.append(decoded) ? Unpacked::whole : Unpacked::outOfMemory;
  if (QuorvelBzip2::announcedLength(decoded) > mostTableBytes) return Unpacked::damaged;
  return decompressBlock(decoded, list).state;
}

}  // namespace

Unpacked unpackList(const char* packed, PackedList& list) {
  if (!packed || !*packed) return Unpacked::damaged;
  DataBuffer decoded;
  Unpacked state = unpackBase64(packed + 1, qvStrLen(packed + 1), decoded);
  if (state == Unpacked::whole) state = appendList(packed[0], decoded, list.bytes);
  if (state != Unpacked::whole) return state;
  if (list.bytes.getSize() == 0) return Unpacked::damaged;
  return list.bytes.append(terminators, sizeof terminators) ? Unpacked::whole
                                                            : Unpacked::outOfMemory;
}

}  // namespace quorvel
