#pragma once

#include "tools/Base64.h"
#include "tools/MappingFile.h"

namespace pack {

/// The bytes of the packed table that says what `mapping` says: a complete
/// list, or a list of changes where the file is one.
Bytes tableBytes(const MappingFile& mapping);

}  // namespace pack
