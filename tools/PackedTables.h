#pragma once

#include <filesystem>
#include <map>
#include <vector>

#include "tools/MappingFile.h"
#include "tools/TableSource.h"

namespace pack {

using Mappings = std::map<int, MappingFile>;

/// The mapping files of a directory, by code page.
Mappings readMappings(const std::filesystem::path& codepages);

/// Packs the mapping files of a directory, in the order of the code pages.
std::vector<PackedTable> packTables(const std::filesystem::path& codepages);

}  // namespace pack
