#include <cstring>

#include "quorvel/base/BlockRunner.h"
#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/base/_qvUtf.h"

namespace quorvel {

namespace {

void storeUtf32(char32_t value, bool bigEndian, unsigned char* out) {
  for (unsigned int i = 0; i < 4; ++i) {
    out[bigEndian ? 3 - i : i] = static_cast<unsigned char>(value >> 8 * i);
  }
}

// Both clear `isClean` for what they replace.
Progress encode(const unsigned char* in, const unsigned char* end, unsigned char* out,
                bool& isClean) {
  for (; end - in >= 4; in += 4) {
    char32_t value = 0;
    std::memcpy(&value, in, sizeof value);
    if (!isScalarValue(value)) {
      value = replacementCharacter;
      isClean = false;
    }
    out = encodeUtf8(value, out);
  }
  return {in, out};
}

// Starts no character at or behind `stop` and looks at none of the bytes from
// `end` on.
Progress decode(const unsigned char* in, const unsigned char* stop, const unsigned char* end,
                bool bigEndian, unsigned char* out, bool& isClean) {
  while (in < stop) {
    const Utf8Sequence sequence = decodeUtf8(in, static_cast<std::size_t>(end - in));
    if (!sequence.isWellFormed) isClean = false;
    storeUtf32(sequence.isWellFormed ? sequence.codePoint : replacementCharacter, bigEndian, out);
    in += sequence.length;
    out += 4;
  }
  return {in, out};
}

}  // namespace

bool _qvUtf::Utf32ToUtf8(const DataBuffer& in, DataBuffer& out) {
  const bool isWhole = in.getSize() % 4 == 0;
  return utf32ToUtf8(in.getData2(), in.getSize() / 4, out) && isWhole;
}

bool _qvUtf::utf32ToUtf8(const unsigned char* p, unsigned int count, DataBuffer& out) {
  if (count == 0) return true;
  bool isClean = true;
  const auto loop = [&](const unsigned char* in, const unsigned char* stop, unsigned char* room) {
    return encode(in, stop, room, isClean);
  };
  return runInBlocks(loop, p, p + std::size_t{4} * count, 2, out) && isClean;
}

bool _qvUtf::Utf8toUtf32(bool bigEndian, const DataBuffer& in, DataBuffer& out) {
  return utf8toUtf32(bigEndian, in.getData2(), in.getSize(), out);
}

bool _qvUtf::utf8toUtf32(bool bigEndian, const unsigned char* p, unsigned int n, DataBuffer& out) {
  if (n == 0) return true;
  bool isClean = true;
  const unsigned char* end = p + n;
  const auto loop = [&](const unsigned char* in, const unsigned char* stop, unsigned char* room) {
    return decode(in, stop, end, bigEndian, room, isClean);
  };
  return runInBlocks(loop, p, end, 8, out) && isClean;
}

}  // namespace quorvel
