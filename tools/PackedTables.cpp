// Packs the files of codepages. A page that is the same as another is packed with its
// mapping, a list of changes as such a list.

#include "tools/PackedTables.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string_view>

#include "tools/PackedText.h"
#include "tools/TableBytes.h"

namespace pack {

namespace {

// The page that `reference` leads to; it lists its mapping itself.
const MappingFile& follow(const Reference& reference, const MappingFile& from,
                          const Mappings& mappings) {
  const auto place = mappings.find(reference.codePage);
  if (place == mappings.end()) throw InputError(from.path, reference.line, "no such code page");
  const MappingFile& to = place->second;
  if (to.sameAs.codePage || to.changes.codePage) {
    throw InputError(from.path, reference.line, "that page does not list its mapping itself");
  }
  return to;
}

void checkName(const MappingFile& mapping, std::set<std::string>& names) {
  const std::string& name = mapping.table;
  const bool isKind = name.starts_with("_Enc_") || name.starts_with("Get");
  const bool isIdentifier = std::all_of(name.begin(), name.end(), [](unsigned char character) {
    return std::isalnum(character) || character == '_';
  });
  if (!isKind || !isIdentifier) {
    throw InputError(mapping.path, mapping.tableLine, "not a name for a table: " + name);
  }
  if (!names.insert(name).second) {
    throw InputError(mapping.path, mapping.tableLine, "another page has this table: " + name);
  }
}

PackedTable packTable(const MappingFile& mapping, const Mappings& mappings) {
  if (mapping.changes.codePage) follow(mapping.changes, mapping, mappings);
  if (!mapping.sameAs.codePage) {
    return {mapping.codePage, mapping.table, packedText(tableBytes(mapping)), ""};
  }
  const MappingFile& same = follow(mapping.sameAs, mapping, mappings);
  return {mapping.codePage, mapping.table, packedText(tableBytes(same)), same.table};
}

}  // namespace

// Files that are not named after a code page are no mapping files.
Mappings readMappings(const std::filesystem::path& codepages) {
  Mappings mappings;
  for (const auto& entry : std::filesystem::directory_iterator(codepages)) {
    const std::filesystem::path& file = entry.path();
    const int codePage = parseCodePage(file.stem().string());
    if (codePage == 0 || file.extension() != ".txt") continue;
    mappings.emplace(codePage, MappingFile(file));
  }
  return mappings;
}

std::vector<PackedTable> packTables(const std::filesystem::path& codepages) {
  const Mappings mappings = readMappings(codepages);
  std::vector<PackedTable> tables;
  std::set<std::string> names;
  for (const auto& [codePage, mapping] : mappings) {
    if (mapping.table.empty()) {
      follow(mapping.sameAs, mapping, mappings);
      continue;
    }
    checkName(mapping, names);
    tables.push_back(packTable(mapping, mappings));
  }
  return tables;
}

}  // namespace pack
