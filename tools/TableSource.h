#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pack {

/// A packed table that the library carries under this name.
struct PackedTable {
  int codePage;
  std::string name;
  std::string text;
  std::string sameAs;  ///< the table of the same text that stands for it, if any
};

/// The definition of a text as a constant.
std::string textConstant(const std::string& name, std::string_view text);

/// A header that declares the tables.
std::string tablesHeader(const std::vector<PackedTable>& tables);

/// A source that defines them: short texts as constants, long ones as functions
/// that put them together from pieces.
std::string tablesSource(const std::vector<PackedTable>& tables);

/// A source that defines the base64 text of the last block.
std::string lastBlockSource(const std::string& text);

}  // namespace pack
