#pragma once

#include "quorvel/base/LogBase.h"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/UnicodeLookup.h"

namespace quorvel {

// Unpacks the packed text of a code page into a table. The text is a flag
// ("x" stored, anything else compressed) and base64; the bytes behind it are a
// lower-ASCII mark, a mark for a list of changes, and the list.

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
