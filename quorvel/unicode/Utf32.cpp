// UTF-32 and UTF-8: the loops of the kernel, and U+FFFD for what they stop at.

#include <cstddef>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf32Unit.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/unicode/ByteOrder.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

// Both clear `isClean` for what they replace.
Progress encode(const unsigned char* in, const unsigned char* end, unsigned char* out,
                bool& isClean) {
  while (true) {
    const Progress progress = kernel::loops().utf32ToUtf8(in, end, out);
    if (progress.why != Stop::met) return progress;
    in = progress.in + utf32UnitLength;
    out = encodeUtf8(replacementCharacter, progress.out);
    isClean = false;
  }
}

// Starts no character at or behind `stop` and looks at none of the bytes from
// `end` on.
Progress decode(const unsigned char* in, const unsigned char* stop, const unsigned char* end,
                unsigned char* out, bool& isClean) {
  while (true) {
    const Progress progress = kernel::loops().utf8ToUtf32(in, stop, out);
    if (progress.why == Stop::end) return progress;
    // Ill-formed, or only cut off by `stop`.
    const Utf8Sequence sequence =
        decodeUtf8(progress.in, static_cast<std::size_t>(end - progress.in));
    if (!sequence.isWellFormed) isClean = false;
    in = progress.in + sequence.length;
    out = putUtf32(sequence.isWellFormed ? sequence.codePoint : replacementCharacter, progress.out);
    if (in >= stop) return {in, out, Stop::end};
  }
}

}  // namespace

bool _qvUtf::Utf32ToUtf8(const DataBuffer& in, DataBuffer& out) {
  const bool isWhole = in.getSize() % utf32UnitLength == 0;
  const auto count = static_cast<unsigned int>(in.getSize() / utf32UnitLength);
  return utf32ToUtf8(in.getData2(), count, out) && isWhole;
}

bool _qvUtf::utf32ToUtf8(const unsigned char* p, unsigned int count, DataBuffer& out) {
  if (count == 0) return true;
  bool isClean = true;
  const auto loop = [&](const unsigned char* in, const unsigned char* stop, unsigned char* room) {
    return encode(in, stop, room, isClean);
  };
  return runInBlocks(loop, p, p + utf32UnitLength * static_cast<std::ptrdiff_t>(count), 2, out) &&
         isClean;
}

bool _qvUtf::Utf8toUtf32(bool bigEndian, const DataBuffer& in, DataBuffer& out) {
  return utf8toUtf32(bigEndian, in.getData2(), in.getSize(), out);
}

bool _qvUtf::utf8toUtf32(bool bigEndian, const unsigned char* p, unsigned int n, DataBuffer& out) {
  if (n == 0) return true;
  bool isClean = true;
  const unsigned char* end = p + n;
  const auto loop = [&](const unsigned char* in, const unsigned char* stop, unsigned char* room) {
    const Progress progress = decode(in, stop, end, room, isClean);
    if (bigEndian) {
      reverseUnits<char32_t>(room, static_cast<std::size_t>(progress.out - room), room);
    }
    return progress;
  };
  return runInBlocks(loop, p, end, 8, out) && isClean;
}

}  // namespace quorvel
