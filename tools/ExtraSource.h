#pragma once

#include <string>

#include "tools/PackedExtras.h"

namespace pack {

/// A header that declares what is packed of codepages/extra.
std::string extrasHeader();

/// The sources that define it, one for each kind of facts, so that a program
/// links only what it uses.
std::string readOnlySource(const PackedExtras& extras);
std::string bestFitsSource(const PackedExtras& extras);
std::string gb18030Source(const PackedExtras& extras);

}  // namespace pack
