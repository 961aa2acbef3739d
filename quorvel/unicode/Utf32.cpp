#include <bit>
#include <cstring>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

constexpr unsigned int unitLength = 4;

unsigned char* storeUtf32(char32_t value, unsigned char* out) {
  std::memcpy(out, &value, unitLength);
  return out + unitLength;
}

void reverseUnits(unsigned char* p, const unsigned char* end) {
  for (; p != end; p += unitLength) {
    unsigned int unit = 0;
    std::memcpy(&unit, p, unitLength);
    unit = unit >> 24 | (unit >> 8 & 0xFF00) | (unit & 0xFF00) << 8 | unit << 24;
    std::memcpy(p, &unit, unitLength);
  }
}

// Both clear `isClean` for what they replace.
Progress encode(const unsigned char* in, const unsigned char* end, unsigned char* out,
                bool& isClean) {
  while (true) {
    const Progress progress = kernel::utf().utf32ToUtf8(in, end, out);
    if (end - progress.in < std::ptrdiff_t{unitLength}) return progress;
    in = progress.in + unitLength;
    out = encodeUtf8(replacementCharacter, progress.out);
    isClean = false;
  }
}

// Starts no character at or behind `stop` and looks at none of the bytes from
// `end` on.
Progress decode(const unsigned char* in, const unsigned char* stop, const unsigned char* end,
                unsigned char* out, bool& isClean) {
  while (true) {
    const Progress progress = kernel::utf().utf8ToUtf32(in, stop, out);
    if (progress.in == stop) return progress;
    // Ill-formed, or only cut off by `stop`.
    const Utf8Sequence sequence =
        decodeUtf8(progress.in, static_cast<std::size_t>(end - progress.in));
    if (!sequence.isWellFormed) isClean = false;
    in = progress.in + sequence.length;
    out =
        storeUtf32(sequence.isWellFormed ? sequence.codePoint : replacementCharacter, progress.out);
    if (in >= stop) return {in, out};
  }
}

}  // namespace

bool _qvUtf::Utf32ToUtf8(const DataBuffer& in, DataBuffer& out) {
  const bool isWhole = in.getSize() % unitLength == 0;
  return utf32ToUtf8(in.getData2(), in.getSize() / unitLength, out) && isWhole;
}

bool _qvUtf::utf32ToUtf8(const unsigned char* p, unsigned int count, DataBuffer& out) {
  if (count == 0) return true;
  bool isClean = true;
  const auto loop = [&](const unsigned char* in, const unsigned char* stop, unsigned char* room) {
    return encode(in, stop, room, isClean);
  };
  return runInBlocks(loop, p, p + std::size_t{unitLength} * count, 2, out) && isClean;
}

bool _qvUtf::Utf8toUtf32(bool bigEndian, const DataBuffer& in, DataBuffer& out) {
  return utf8toUtf32(bigEndian, in.getData2(), in.getSize(), out);
}

bool _qvUtf::utf8toUtf32(bool bigEndian, const unsigned char* p, unsigned int n, DataBuffer& out) {
  if (n == 0) return true;
  bool isClean = true;
  const bool isReversed = bigEndian != (std::endian::native == std::endian::big);
  const unsigned char* end = p + n;
  const auto loop = [&](const unsigned char* in, const unsigned char* stop, unsigned char* room) {
    const Progress progress = decode(in, stop, end, room, isClean);
    if (isReversed) reverseUnits(room, progress.out);
    return progress;
  };
  return runInBlocks(loop, p, end, 8, out) && isClean;
}

}  // namespace quorvel
