#pragma once

#include <memory>

#include "quorvel/base/HashConvert.h"

namespace quorvel {

/// A flat index over a finished table, for the loops: one read for the high
/// byte's row, one for the low byte's entry. Rows without an entry share one
/// row of zeros, so a page of 23 940 pairs takes about 66 KiB instead of 128.
/// Read-only once made.
class TableIndex {
 public:
  /// Two-byte codes to units: the high byte is the lead byte, 0 means no such
  /// pair. Null when memory runs out.
  static std::unique_ptr<TableIndex> ofPairs(const HashConvert& toUnicode);

  /// Units to codes: a code below 0x100 is a single byte, 0 means unmapped.
  /// Null when memory runs out.
  static std::unique_ptr<TableIndex> ofUnits(const HashConvert& fromUnicode);

  unsigned int entry(unsigned int high, unsigned int low) const { return m_rows[high][low]; }

 private:
  TableIndex() = default;
  template <typename Entries>
  bool fill(const Entries& entries);

  const unsigned short* m_rows[256];
  std::unique_ptr<unsigned short[]> m_storage;
};

}  // namespace quorvel
