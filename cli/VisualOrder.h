#pragma once

#include "cli/Input.h"
#include "quorvel/text/Encoding.h"

namespace qvconv {

/// What is left of `input`, whose text stands in visual order, in logical order. It is
/// read as a whole: where a line goes depends on all of it. Throws `InputError`.
Input inLogicalOrder(Input& input, quorvel::text::Encoding encoding);

}  // namespace qvconv
