#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/text/Decoder.hpp"

namespace quorvel::text {

/// Where the output goes: the room of the call, and what waits for room: bytes that
/// are ready, and characters that are still to be encoded.
class Outlet {
 public:
  explicit Outlet(Encoder& encoder) : m_encoder(encoder) {}

  /// Room in [out, outEnd), which the caller moves on as it writes.
  unsigned char* out = nullptr;
  unsigned char* outEnd = nullptr;

  void open(std::span<char> room) {
    out = reinterpret_cast<unsigned char*>(room.data());
    outEnd = out + room.size();
  }

  std::size_t room() const { return static_cast<std::size_t>(outEnd - out); }

  /// Bytes that go in front of the first output, if there is any.
  void setFront(std::span<const unsigned char> front) { m_front = front; }
  bool hasFront() const { return !m_front.empty(); }
  void waitForFront() {
    m_bytesEnd = std::copy(m_front.begin(), m_front.end(), m_bytesEnd);
    m_front = {};
  }

  /// Bytes to be written next, behind those that wait already.
  void wait(std::span<const unsigned char> bytes) {
    if (bytes.empty()) return;
    waitForFront();
    m_bytesEnd = std::copy(bytes.begin(), bytes.end(), m_bytesEnd);
  }

  /// Likewise bytes that are none of the encoder's.
  void waitRaw(std::span<const unsigned char> bytes) {
    if (bytes.empty()) return;
    waitForFront();
    m_bytesEnd = m_encoder.interrupt(m_bytesEnd);
    wait(bytes);
  }

  /// One character to be encoded and written next, if it has a place.
  void waitEncoded(char32_t character) {
    unsigned char bytes[Encoder::mostBytes];
    const unsigned char* end = m_encoder.encodeOne(character, bytes);
    if (end) wait(std::span<const unsigned char>(bytes, end));
  }

  /// Characters to be encoded behind the bytes that wait; those without a place are
  /// left out. They stay where they are until they are written.
  void wait(std::span<const char32_t> characters) {
    m_characters = characters;
    encodeShort();
  }

  /// What brings the text to its end.
  void waitForEnd() { m_bytesEnd = m_encoder.finish(m_bytesEnd); }

  /// Writes what waits; false when the room does not suffice.
  bool drain() {
    for (;;) {
      const std::ptrdiff_t count = std::min(m_bytesEnd - m_next, outEnd - out);
      out = std::copy_n(m_next, count, out);
      m_next += count;
      if (m_next != m_bytesEnd) return false;
      m_next = m_bytesEnd = m_bytes.data();
      if (m_characters.empty()) return true;
      waitEncoded(m_characters.front());
      m_characters = m_characters.subspan(1);
    }
  }

  void clear() {
    m_next = m_bytesEnd = m_bytes.data();
    m_characters = {};
  }

 private:
  // What a few characters become is made at once where all of them have a place.
  void encodeShort() {
    constexpr std::size_t few = 16;
    if (m_characters.empty() || m_characters.size() > few || hasFront()) return;
    unsigned char units[4 * few];
    unsigned char* end = units;
    for (const char32_t character : m_characters) end = putCharacter(character, end);
    const Encoder::State before = m_encoder.state();
    unsigned char* bytesEnd = m_bytes.data() + m_bytes.size() - Encoder::mostBytes;
    const Encoded encoded = m_encoder.encode({units, end, m_bytesEnd, bytesEnd});
    if (encoded.why == EncoderStop::end) {
      m_bytesEnd = encoded.out;
      m_characters = {};
    } else {
      m_encoder.restore(before);
    }
  }

  // A mark, raw bytes of a loss and one character, or what ends the text.
  static constexpr std::size_t mostBytes = 8 * Encoder::mostBytes;

  Encoder& m_encoder;
  std::span<const unsigned char> m_front;
  std::array<unsigned char, mostBytes> m_bytes{};
  unsigned char* m_next = m_bytes.data();
  unsigned char* m_bytesEnd = m_bytes.data();
  std::span<const char32_t> m_characters;
};

}  // namespace quorvel::text
