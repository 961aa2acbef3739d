#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tools/ExtraFile.h"

namespace pack {

/// Two-byte codes that a page only reads, packed as a table; behind a lead of
/// three-byte codes where `lead` is not 0.
struct ReadOnlyCodes {
  int codePage;
  unsigned int lead;
  std::string text;
};

/// What a page writes for characters that it lacks, by character.
struct BestFits {
  int codePage;
  int sameAs;  ///< the page whose best fits these are, 0 for none
  std::vector<Record> records;
};

/// What the files of codepages/extra say, but for their codes of four bytes.
struct PackedExtras {
  std::vector<ReadOnlyCodes> readOnly;
  std::vector<BestFits> bestFits;
  std::string gb18030;  ///< the packed table of its one-byte and two-byte codes
  std::vector<FourByteRange> ranges;
};

/// Packs the directory extra of `codepages`, by code page.
PackedExtras packExtras(const std::filesystem::path& codepages);

}  // namespace pack
