#include "quorvel/unicode/ByteOrder.hpp"

#include <algorithm>

namespace quorvel {

namespace {

// With the length known to the compiler this becomes vector code.
template <unsigned int unitLength>
void reverseUnits(const unsigned char* in, unsigned int numBytes, unsigned char* out) {
  for (unsigned int i = 0; i < numBytes; i += unitLength) {
    for (unsigned int j = 0; j < unitLength; ++j) out[i + j] = in[i + unitLength - 1 - j];
  }
}

}  // namespace

bool appendReversed(const unsigned char* data, unsigned int numBytes, unsigned int unitLength,
                    DataBuffer& out) {
  const unsigned int length = numBytes - numBytes % unitLength;
  if (length == 0) return true;
  unsigned char* room = out.growBy(length);
  if (!room) return false;
  if (unitLength == 2) {
    reverseUnits<2>(data, length, room);
  } else {
    reverseUnits<4>(data, length, room);
  }
  out.keepWritten(length);
  return true;
}

}  // namespace quorvel
