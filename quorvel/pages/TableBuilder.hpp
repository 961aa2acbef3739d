#pragma once

#include "quorvel/base/LogBase.h"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/UnicodeLookup.h"

namespace quorvel {

// Fills the tables that callers build, `HashConvert` and `UnicodeLookup`, from
// packed text (PackedList.hpp). The tables of the registry are not made of these
// but laid flat at once (FlatTables.hpp).

/// Fills `table` from packed text. Text that cannot be unpacked leaves the table
/// as it was. False only when memory runs out; then `table` may lack mappings.
bool buildHash(const char* packed, HashConvert& table, bool fromUnicode, LogBase& log);

/// Fills `table` from the list of mappings, or the list of changes, at `body`,
/// which must end as such a list ends. False as above.
bool buildFromComplete(const unsigned char* body, HashConvert& table, bool fromUnicode,
                       LogBase& log);
bool buildFromDiffs(const unsigned char* body, HashConvert& table, LogBase& log);

/// Flattens the single bytes of a to-Unicode table; returns its lower-ASCII flag.
bool buildSingleByteLookup(HashConvert& hc, UnicodeLookup& lookup, LogBase& log);

}  // namespace quorvel
