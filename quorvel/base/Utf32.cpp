#include <algorithm>
#include <cstring>

#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/base/_qvUtf.h"

namespace quorvel {

namespace {

// The transforms work in blocks, so that the room asked for ahead stays small
// and its size far from 32 bits whatever the length of the input.
constexpr unsigned int charactersPerBlock = 4096;
constexpr unsigned int mostBytesPerCharacter = 4;

// Both give the position behind what they wrote and clear `isClean` for what
// had to be replaced.
unsigned char* encodeBlock(const unsigned char* in, unsigned int units, unsigned char* out,
                           bool& isClean) {
  for (; units; --units, in += 4) {
    char32_t value = 0;
    std::memcpy(&value, in, sizeof value);
    if (!isScalarValue(value)) {
      value = replacementCharacter;
      isClean = false;
    }
    out = encodeUtf8(value, out);
  }
  return out;
}

void storeUtf32(char32_t value, bool bigEndian, unsigned char* out) {
  for (unsigned int i = 0; i < 4; ++i) {
    out[bigEndian ? 3 - i : i] = static_cast<unsigned char>(value >> 8 * i);
  }
}

}  // namespace

bool _qvUtf::Utf32ToUtf8(const DataBuffer& in, DataBuffer& out) {
  const bool isWhole = in.getSize() % 4 == 0;
  return utf32ToUtf8(in.getData2(), in.getSize() / 4, out) && isWhole;
}

bool _qvUtf::utf32ToUtf8(const unsigned char* p, unsigned int count, DataBuffer& out) {
  bool isClean = true;
  while (count) {
    const unsigned int units = std::min(count, charactersPerBlock);
    unsigned char* room = out.growBy(units * mostBytesPerCharacter);
    if (!room) return false;
    out.keepWritten(static_cast<unsigned int>(encodeBlock(p, units, room, isClean) - room));
    p += std::size_t{4} * units;
    count -= units;
  }
  return isClean;
}

bool _qvUtf::Utf8toUtf32(bool bigEndian, const DataBuffer& in, DataBuffer& out) {
  return utf8toUtf32(bigEndian, in.getData2(), in.getSize(), out);
}

bool _qvUtf::utf8toUtf32(bool bigEndian, const unsigned char* p, unsigned int n, DataBuffer& out) {
  bool isClean = true;
  while (n) {
    const unsigned int mostCharacters = std::min(n, charactersPerBlock);
    unsigned char* room = out.growBy(mostCharacters * mostBytesPerCharacter);
    if (!room) return false;
    unsigned int characters = 0;
    for (; n && characters < mostCharacters; ++characters) {
      const Utf8Sequence sequence = decodeUtf8(p, n);
      isClean = isClean && sequence.isWellFormed;
      storeUtf32(sequence.isWellFormed ? sequence.codePoint : replacementCharacter, bigEndian,
                 room + std::size_t{4} * characters);
      p += sequence.length;
      n -= sequence.length;
    }
    out.keepWritten(characters * mostBytesPerCharacter);
  }
  return isClean;
}

}  // namespace quorvel
