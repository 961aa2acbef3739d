#pragma once

#include "tools/Base64.h"
#include "tools/InputFile.h"

namespace pack {

/// The codes for rows 89 to 92 of ISO-2022-JP, two bytes each, lead byte first.
/// A line of `file` reads "ROW-CELL: CODE CODE ..." and goes on where the one
/// before ended.
Bytes packLastBlock(const InputFile& file);

}  // namespace pack
