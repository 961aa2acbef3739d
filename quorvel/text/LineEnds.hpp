#pragma once

#include <memory>

#include "quorvel/text/Decoder.hpp"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Options.h"

namespace quorvel::text {

/// The decoder of an encoding, with the line ends of its text rewritten; the same
/// decoder where they are kept.
std::unique_ptr<Decoder> withLineEnds(std::unique_ptr<Decoder> decoder, Encoding encoding,
                                      LineEnds lineEnds);

}  // namespace quorvel::text
