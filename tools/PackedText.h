#pragma once

#include <string>

#include "tools/Base64.h"

namespace pack {

/// The packed text of a table: "c" and the base64 of its compressed block, or
/// "x" and the base64 of the table itself where it is too short to compress.
std::string packedText(const Bytes& table);

}  // namespace pack
