#pragma once

// What the ISO-2022 converters have in common.
//
// Each direction is a small machine. Its `run` is the loop of the kernel, which has
// all of the state and does whatever text is made of. What that stops at is not such
// text, or needs a table: `step` looks at the rest of the input, puts out what its
// beginning shall become and returns how many bytes that used. `hadError` tells
// whether any step left something out or wrote something else for it.

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/DataBuffer.h"
#include "quorvel/kernel/Iso2022Text.hpp"

namespace quorvel::iso2022 {

/// Where a step puts its bytes.
class Output {
 public:
  explicit Output(unsigned char* next) : m_next(next) {}

  void put(unsigned char byte) { *m_next++ = byte; }

  void put(std::string_view bytes) {
    for (const char byte : bytes) put(static_cast<unsigned char>(byte));
  }

  void putPair(unsigned int code) {
    put(static_cast<unsigned char>(code >> 8));
    put(static_cast<unsigned char>(code & 0xFF));
  }

  unsigned char* next() const { return m_next; }

 private:
  unsigned char* m_next;
};

/// Runs `loop(in, end, out)`, and copies the bytes above 7F that it stops at where
/// `isAscii()`: contract: text in ASCII keeps them, whatever they mean.
template <typename Loop, typename IsAscii>
Progress runCopyingAbove7F(const Loop& loop, const IsAscii& isAscii, const unsigned char* in,
                           const unsigned char* end, unsigned char* out) {
  Progress progress = loop(in, end, out);
  while (progress.why == Stop::met && *progress.in >= 0x80 && isAscii()) {
    const unsigned char* stop =
        std::find_if(progress.in, end, [](unsigned char byte) { return byte < 0x80; });
    progress = loop(stop, end, std::copy(progress.in, stop, progress.out));
  }
  return progress;
}

/// Hands `in` to `machine`, to its loop and where that stops to its steps; false
/// when memory runs out. A step uses at least one byte, and neither it nor the
/// loop puts out more than `Machine::mostBytesPerTwo` for two that they use.
template <typename Machine>
bool convert(Bytes in, DataBuffer& out, Machine& machine) {
  const unsigned char* end = in.data() + in.size();
  const auto loop = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
    while (true) {
      const Progress progress = machine.run(p, stop, room);
      const bool isBlockCut = progress.why == Stop::cutOff && stop != end;
      if (progress.why == Stop::end || isBlockCut) return progress;
      Output output(progress.out);
      p = progress.in + machine.step({progress.in, end}, output);
      room = output.next();
      if (p >= stop) return Progress{p, room, Stop::end};
    }
  };
  return runInBlocks(loop, in.data(), end, Machine::mostBytesPerTwo, out) == end;
}

/// The input of a call; a null pointer or a negative length give none.
inline Bytes inputOf(const unsigned char* p, int n) {
  return p && n > 0 ? Bytes(p, static_cast<std::size_t>(n)) : Bytes();
}

}  // namespace quorvel::iso2022
