#pragma once

#include "quorvel/base/DataBuffer.h"

namespace quorvel {

/// Appends the whole units of `unitLength` bytes (2 or 4) among the `numBytes`
/// bytes at `data`, each with its bytes in reverse order. False when memory
/// runs out, with `out` as it was.
bool appendReversed(const unsigned char* data, unsigned int numBytes, unsigned int unitLength,
                    DataBuffer& out);

}  // namespace quorvel
