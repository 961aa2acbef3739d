#pragma once

#include <cstddef>
#include <memory>

#include "quorvel/kernel/Loops.hpp"
#include "quorvel/text/Decoder.hpp"
#include "quorvel/text/Encoding.h"

namespace quorvel::text {

/// The decoder and the encoder of an encoding, with hold of their tables. Both throw
/// std::bad_alloc.
std::unique_ptr<Decoder> makeDecoder(Encoding encoding);
std::unique_ptr<Encoder> makeEncoder(Encoding encoding);

/// A loop straight from one encoding to another, over well-formed text, and the most
/// bytes that it makes of one.
struct DirectLoop {
  kernel::Loop* loop;
  std::ptrdiff_t mostPerByte;
};

/// The one between two encodings, where there is one; its `loop` is null otherwise. Of
/// the target in use: not to be kept.
DirectLoop directLoop(Encoding from, Encoding to);

/// Whether the encoder stops in front of what is no character, so that it may be given
/// UTF-16LE that nobody has looked at.
bool stopsAtLoneSurrogates(Encoding encoding);

/// UTF-8, UTF-16 or UTF-32.
bool isTransformation(Encoding encoding);

/// UTF-16 or UTF-32.
bool isWide(Encoding encoding);

/// UTF-32 with the low byte first.
bool isLittleEndianUtf32(Encoding encoding);

}  // namespace quorvel::text
