#pragma once

#include "tools/Base64.h"
#include "tools/MappingFile.h"

namespace pack {

/// The bytes of the packed table that says what `mapping` says: a complete
/// list, or a list of changes where the file is one.
Bytes tableBytes(const MappingFile& mapping);

/// The bytes of the complete list of `records` of one and two bytes, which come
/// from `file`.
Bytes completeList(const std::filesystem::path& file, bool lowerHalfIsAscii,
                   const std::vector<Record>& records);

}  // namespace pack
