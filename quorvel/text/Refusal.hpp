#pragma once

#include "quorvel/text/Encoding.h"

namespace quorvel::text {

/// Whether `Action::pass` can be had: bytes of one side mean nothing inside the units
/// of UTF-16 and UTF-32, and anything where a state decides.
bool canPass(Encoding from, Encoding to);

/// Whether `Action::preserve` can be had.
bool canPreserve(Encoding from, Encoding to);

}  // namespace quorvel::text
