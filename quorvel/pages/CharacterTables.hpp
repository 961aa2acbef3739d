#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/pages/PackedExtras.hpp"
#include "quorvel/pages/PageTables.hpp"

namespace quorvel {

// The tables of the text layer. The loops and the packed text are those of the
// registry's tables; what is in them differs. They are read with every code that has
// a meaning, also those that are never written, and written with the characters alone
// that are read back as themselves: no marker, no digits that change, no best fit
// unless it is asked for. Whoever holds one keeps it.

/// How a code page is read.
struct ReadingTable {
  std::unique_ptr<ToUnicodeTable> table;

  /// The bytes that lead a code of several by the structure of the encoding, whatever
  /// is assigned; those that may begin one, which some of a page without structure do
  /// too; and what each of the latter is alone, 0 for nothing. The table's own entry
  /// for it is empty, so that a loop stops there.
  std::array<bool, 256> leads{};
  std::array<bool, 256> mayLead{};
  std::array<unsigned short, 256> leadsAlone{};

  /// The units of the codes 8F A1 A1 to 8F FE FE, 94 for each second byte; empty where
  /// there are none.
  std::vector<unsigned short> threeByte;

  std::span<const FourByteRange> fourByte;  ///< by code
};

/// How a code page is written.
struct WritingTable {
  std::unique_ptr<FromUnicodeTable> table;
  std::span<const FourByteRange> fourByte;  ///< by character
  std::vector<BestFit> bestFits;            ///< by unit

  /// The code of a unit as it is written, the first byte in the low half; 0 for none.
  unsigned int codeOf(unsigned int unit) const;
};

/// The Shift_JIS codes for rows 89 to 92 of ISO-2022-JP, row by row.
struct JisLastBlock {
  std::array<unsigned short, 376> codes;
};

/// The tables of a code page that the text layer serves by a table, built when they
/// are first asked for. They throw std::bad_alloc; any number of threads may ask at any
/// time, also while the tables are released.
std::shared_ptr<const ReadingTable> readingTable(int codePage);
std::shared_ptr<const WritingTable> writingTable(int codePage);
std::shared_ptr<const JisLastBlock> jisLastBlock();

}  // namespace quorvel
