// UTF-16 and UTF-32 in the other byte order, appended.

#include "quorvel/unicode/ByteOrder.hpp"

namespace quorvel {

bool appendReversed(const unsigned char* data, unsigned int numBytes, unsigned int unitLength,
                    DataBuffer& out) {
  const unsigned int length = numBytes - numBytes % unitLength;
  if (length == 0) return true;
  unsigned char* room = out.growBy(length);
  if (!room) return false;
  if (unitLength == 2) {
    reverseUnits<char16_t>(data, length, room);
  } else {
    reverseUnits<char32_t>(data, length, room);
  }
  out.keepWritten(length);
  return true;
}

}  // namespace quorvel
