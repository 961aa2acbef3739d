#pragma once

// Between the inner loops, which write over raw pointers and know no buffer, and the
// buffer that their output grows in: finds the room for one block after the other.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "quorvel/base/DataBuffer.h"
#include "quorvel/kernel/Progress.hpp"

namespace quorvel {

/// A loop is run over blocks of this much input, so that the room it must find
/// and the size of that do not depend on the length of the text.
inline constexpr std::size_t bytesPerBlock = 16384;

/// What `numBytes` bytes of input can become at most, which a `std::size_t` of 32
/// bits need not hold.
constexpr std::uint64_t mostOutput(std::size_t numBytes, unsigned int outputPerTwoBytes) {
  return (std::uint64_t{numBytes} / 2 + 1) * outputPerTwoBytes;
}

/// How a text has grown or shrunk so far, as a guess at what is to come.
struct Density {
  std::size_t consumed;
  std::size_t written;

  /// A little more than `numBytes` bytes will need if they are like the others.
  constexpr std::uint64_t expected(std::size_t numBytes) const {
    if (consumed == 0) return 0;
    const double growth = static_cast<double>(written) / static_cast<double>(consumed);
    return static_cast<std::uint64_t>(growth * 1.0625 * static_cast<double>(numBytes));
  }
};

/// Room for `wanted` bytes if it can be had, else for `needed` or none.
inline unsigned char* growByEither(std::uint64_t wanted, unsigned int needed, DataBuffer& out) {
  if (wanted > needed && wanted <= std::numeric_limits<unsigned int>::max()) {
    if (unsigned char* room = out.growBy(static_cast<unsigned int>(wanted))) return room;
  }
  return out.growBy(needed);
}

/// Runs `loop(in, blockEnd, out)` block by block until it stops before `end` for
/// another reason than that of the block, and returns where; null when memory ran
/// out. A loop writes at most `outputPerTwoBytes` bytes for each two bytes of its
/// block. It may go a little past the end of that: the next block begins where it
/// stopped, as it does where the end of a block cut something off.
///
/// Where there is not enough room it is asked for by what the text has needed so
/// far: output that outgrows what was reserved moves once, early, and not again
/// and again.
template <typename Loop>
const unsigned char* runInBlocks(const Loop& loop, const unsigned char* in,
                                 const unsigned char* end, unsigned int outputPerTwoBytes,
                                 DataBuffer& out) {
  Density density{};
  while (in < end) {
    const auto left = static_cast<std::size_t>(end - in);
    const std::size_t length = std::min(left, bytesPerBlock);
    const auto needed = static_cast<unsigned int>(mostOutput(length, outputPerTwoBytes));
    unsigned char* room = out.roomFor(needed);
    if (!room) {
      const std::uint64_t wanted =
          std::min(density.expected(left) + needed, mostOutput(left, outputPerTwoBytes));
      room = growByEither(wanted, needed, out);
      if (!room) return nullptr;
    }
    const unsigned char* blockEnd = in + length;
    const Progress progress = loop(in, blockEnd, room);
    const auto written = static_cast<std::size_t>(progress.out - room);
    out.keepWritten(static_cast<unsigned int>(written));
    if (progress.why == Stop::met || progress.in == in) return progress.in;
    density.consumed += static_cast<std::size_t>(progress.in - in);
    density.written += written;
    in = progress.in;
  }
  return in;
}

}  // namespace quorvel
