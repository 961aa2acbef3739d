#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "quorvel/base/BlockRunner.h"
#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/kernel/Iso2022.h"

/// What the ISO-2022 converters have in common. Not installed.
///
/// Each direction is a small machine whose state is the set in use. Its `run`
/// is the inner loop, which does whatever whole texts are made of. Its `step`
/// looks at the rest of the input, puts out what the beginning of it means and
/// returns how many bytes that used. `hadError` tells whether any step left
/// something out or wrote something else for it.
namespace quorvel::iso2022 {

using Bytes = std::span<const unsigned char>;

/// Whether `byte` is one of the 94 that a 7-bit set assigns characters to.
constexpr bool isGraphic(unsigned char byte) { return byte >= 0x21 && byte <= 0x7E; }

/// Whether `byte` would switch sets for the reader. Such bytes of a source text
/// cannot be carried by an ISO-2022 encoding.
constexpr bool isSwitch(unsigned char byte) {
  return byte == shiftOut || byte == shiftIn || byte == escape;
}

/// Whether `text` begins with a sequence that announces a set, known or not: an
/// escape and an intermediate byte (ISO/IEC 2022). Others, such as those that
/// colour a terminal, are text.
constexpr bool announcesSet(Bytes text) {
  return text.size() >= 2 && text[0] == escape && text[1] >= 0x20 && text[1] <= 0x2F;
}

/// Whether `text` begins with all of `start`.
constexpr bool startsWith(Bytes text, std::string_view start) {
  if (text.size() < start.size()) return false;
  for (std::size_t i = 0; i < start.size(); ++i) {
    if (text[i] != static_cast<unsigned char>(start[i])) return false;
  }
  return true;
}

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

/// Hands `in` to `machine`, to its loop and where that stops to its steps; false
/// when memory runs out. A step uses at least one byte, and neither it nor the
/// loop puts out more than `Machine::mostBytesPerTwo` for two that they use.
template <typename Machine>
bool convert(Bytes in, DataBuffer& out, Machine& machine) {
  const unsigned char* end = in.data() + in.size();
  const auto loop = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
    while (true) {
      const Progress progress = machine.run(p, stop, room);
      if (progress.in >= stop) return progress;
      // What the end of the block cuts off is whole for a step.
      Output output(progress.out);
      p = progress.in + machine.step({progress.in, end}, output);
      room = output.next();
      if (p >= stop) return Progress{p, room};
    }
  };
  return runInBlocks(loop, in.data(), end, Machine::mostBytesPerTwo, out) == end;
}

/// The input of a call; a null pointer or a negative length give none.
inline Bytes inputOf(const unsigned char* p, int n) {
  return p && n > 0 ? Bytes(p, static_cast<std::size_t>(n)) : Bytes();
}

}  // namespace quorvel::iso2022
