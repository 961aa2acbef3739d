#pragma once

#include <memory>

#include "quorvel/text/Decoder.hpp"
#include "quorvel/text/Encoding.h"

namespace quorvel::text {

/// The decoder and the encoder of an encoding, with hold of their tables. Both throw
/// std::bad_alloc.
std::unique_ptr<Decoder> makeDecoder(Encoding encoding);
std::unique_ptr<Encoder> makeEncoder(Encoding encoding);

/// UTF-8, UTF-16 or UTF-32.
bool isTransformation(Encoding encoding);

/// UTF-16 or UTF-32.
bool isWide(Encoding encoding);

/// UTF-32 with the low byte first.
bool isLittleEndianUtf32(Encoding encoding);

}  // namespace quorvel::text
