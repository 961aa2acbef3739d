#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/InputFile.h"
#include "tools/Notation.h"

namespace pack {

/// A code of the code page and the UTF-16 unit that it stands for.
struct Record {
  unsigned int code;
  std::size_t codeLength;  ///< in bytes, 1 or 2
  unsigned int unit;
  bool isBestFit;  ///< used from Unicode only
  unsigned int line;
};

/// What a mapping file says; its form is described in codepages/README.md.
struct MappingFile {
  explicit MappingFile(const std::filesystem::path& file);

  std::filesystem::path path;
  int codePage = 0;
  std::string table;  ///< empty where another page's table serves this one
  unsigned int tableLine = 1;
  Reference sameAs;   ///< the page whose mapping this one has
  Reference changes;  ///< the page that the file lists changes to
  bool lowerHalfIsAscii = false;
  std::vector<Record> records;  ///< in the order of the file
  std::vector<unsigned int> removed;
};

}  // namespace pack
