#pragma once

#include <span>
#include <string_view>

#include "quorvel/base/DataBuffer.h"

/// What the ISO-2022 converters have in common. Not installed.
///
/// Each direction is a small machine whose state is the set in use. Its `step`
/// looks at the rest of the input, puts out what the beginning of it means and
/// returns how many bytes that used. `hadError` tells whether any step left
/// something out or wrote something else for it.
namespace quorvel::iso2022 {

using Bytes = std::span<const unsigned char>;

constexpr unsigned char shiftOut = 0x0E;
constexpr unsigned char shiftIn = 0x0F;
constexpr unsigned char escape = 0x1B;

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

/// Appends to a buffer through room that it takes there a chunk at a time.
class Output {
 public:
  explicit Output(DataBuffer& out) : m_out(out) {}
  ~Output() { keep(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Makes room for what one step puts out; false when memory runs out.
  bool makeRoom() { return m_room >= mostBytesPerStep || takeChunk(); }

  void put(unsigned char byte) {
    *m_next++ = byte;
    --m_room;
  }

  void put(std::string_view bytes) {
    for (const char byte : bytes) put(static_cast<unsigned char>(byte));
  }

  void putPair(unsigned int code) {
    put(static_cast<unsigned char>(code >> 8));
    put(static_cast<unsigned char>(code & 0xFF));
  }

 private:
  static constexpr unsigned int mostBytesPerStep = 8;
  static constexpr unsigned int chunk = 4096;

  bool takeChunk() {
    keep();
    m_start = m_out.growBy(chunk);
    m_room = m_start ? chunk : 0;
    if (!m_start) {
      // Close to the end of memory, or of 32 bits, a step may still fit.
      m_start = m_out.growBy(mostBytesPerStep);
      m_room = m_start ? mostBytesPerStep : 0;
    }
    m_next = m_start;
    return m_start != nullptr;
  }

  void keep() {
    if (m_start) m_out.keepWritten(static_cast<unsigned int>(m_next - m_start));
    m_start = nullptr;
  }

  DataBuffer& m_out;
  unsigned char* m_start = nullptr;
  unsigned char* m_next = nullptr;
  unsigned int m_room = 0;
};

/// Hands `in` to the steps of `machine`, one after the other; false when memory
/// runs out. A step uses at least one byte and puts out at most eight.
template <typename Machine>
bool convert(Bytes in, DataBuffer& out, Machine& machine) {
  Output output(out);
  while (!in.empty()) {
    if (!output.makeRoom()) return false;
    in = in.subspan(machine.step(in, output));
  }
  return true;
}

/// The input of a call; a null pointer or a negative length give none.
inline Bytes inputOf(const unsigned char* p, int n) {
  return p && n > 0 ? Bytes(p, static_cast<std::size_t>(n)) : Bytes();
}

}  // namespace quorvel::iso2022
