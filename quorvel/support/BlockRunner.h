#pragma once

#include <algorithm>
#include <cstddef>

#include "quorvel/base/DataBuffer.h"
#include "quorvel/support/Progress.h"

namespace quorvel {

/// Output is made room for in blocks of this much input, so that neither the
/// room asked for ahead nor its size depends on the length of the text.
inline constexpr std::size_t bytesPerBlock = 16384;

/// Runs `loop(in, blockEnd, out)` block by block until it stops before `end`,
/// and returns where; null when memory ran out. A loop writes at most
/// `outputPerTwoBytes` bytes for each two bytes of its block. It may stop at
/// the end of a block in front of something that goes on behind it, or go a
/// little past it: the next block begins where it stopped. Only a stop at the
/// very start of a block is one for the caller.
template <typename Loop>
const unsigned char* runInBlocks(const Loop& loop, const unsigned char* in,
                                 const unsigned char* end, unsigned int outputPerTwoBytes,
                                 DataBuffer& out) {
  while (in < end) {
    const std::size_t length = std::min(static_cast<std::size_t>(end - in), bytesPerBlock);
    const auto pairs = static_cast<unsigned int>(length / 2 + 1);
    unsigned char* room = out.growBy(pairs * outputPerTwoBytes);
    if (!room) return nullptr;
    const Progress progress = loop(in, in + length, room);
    out.keepWritten(static_cast<unsigned int>(progress.out - room));
    if (progress.in == in) break;
    in = progress.in;
  }
  return in;
}

}  // namespace quorvel
