#pragma once

#include <filesystem>
#include <vector>

#include "tools/MappingFile.h"

namespace pack {

/// Consecutive four-byte codes for consecutive characters. Codes are counted in
/// their order: 81308130 is 0.
struct FourByteRange {
  unsigned int first;
  unsigned int count;
  unsigned int character;
  bool isReadOnly;
};

/// What a file of codepages/extra says; its form is described in
/// codepages/README.md.
struct ExtraFile {
  /// Told by the name: NUMBER.read-only.txt, NUMBER.best-fit.txt, NUMBER.txt.
  enum class Kind { ReadOnly, BestFit, WholePage };

  explicit ExtraFile(const std::filesystem::path& file);

  std::filesystem::path path;
  int codePage = 0;
  Kind kind = Kind::WholePage;
  Reference sameAs;                   ///< the page that has the same best fits
  std::vector<Record> records;        ///< both ways, and from Unicode only
  std::vector<Record> readOnly;       ///< codes of two or three bytes
  std::vector<FourByteRange> ranges;  ///< by code
};

}  // namespace pack
