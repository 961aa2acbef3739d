#pragma once

#include <filesystem>
#include <vector>

#include "tools/TableSource.h"

namespace pack {

/// Packs the mapping files of a directory, in the order of the code pages.
std::vector<PackedTable> packTables(const std::filesystem::path& codepages);

}  // namespace pack
