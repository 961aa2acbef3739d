#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace pack {

/// What the comment at the head of a mapping file says of its page, in the lines in
/// which it stands, without the number that it begins with.
std::string readPageHead(const std::filesystem::path& file);

/// The heads of all mapping files, by code page, those beyond the tables included.
std::map<int, std::string> readPageHeads(const std::filesystem::path& codepages);

/// A source that defines `headOfPage` of cli/PageHeads.h.
std::string pageHeadsSource(const std::map<int, std::string>& heads);

}  // namespace pack
