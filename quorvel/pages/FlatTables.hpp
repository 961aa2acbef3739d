#pragma once

#include <memory>

#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/pages/PackedList.hpp"
#include "quorvel/pages/PageTables.hpp"

namespace quorvel {

// Lays what packed lists say flat for the loops. Most tables are filled from their
// list. One from Unicode to pairs is gathered by unit first, so that a list of
// changes can amend another list; what it was gathered in goes again.

/// What a page with pairs has for each unit, lists in the order in which they were
/// added.
struct UnitCodes {
  bool isLowerAscii = false;
  unsigned char lengths[kernel::unitCount] = {};  ///< 0 (none), 1 or 2 bytes
  unsigned short codes[kernel::unitCount] = {};   ///< the first byte in the low half

  /// A unit that has a code keeps it.
  void addByte(unsigned int unit, unsigned char byte);
  void addPair(unsigned int unit, unsigned int firstByte, unsigned int secondByte);
};

/// Adds what a list says, be it complete or a list of changes.
void addList(const PackedList& list, UnitCodes& codes);

// Each is null when memory runs out.

/// The decoding table of a page of single bytes: of bytes that the list has twice
/// the last unit counts. Null for the list, here and below, is one without
/// mappings.
std::unique_ptr<BytesToUnicode> bytesToUnicodeOf(const PackedList* list);

/// That of a page with pairs; of a pair that the list has twice the first counts.
std::unique_ptr<PairsToUnicode> pairsToUnicodeOf(const PackedList* list);

/// The same, turned round: of units that share a code the lowest counts.
std::unique_ptr<PairsToUnicode> reverseOf(const UnitCodes& codes);

/// The encoding table of a page of single bytes, which ends at the last unit that
/// it maps; of a unit that the list has twice the first byte counts.
std::unique_ptr<UnicodeToBytes> unicodeToBytesOf(const PackedList* list);
std::unique_ptr<UnicodeToBytes> unicodeToBytesAndDigitsOf(const PackedList* list);

/// That of a page with pairs.
std::unique_ptr<UnicodeToPairs> unicodeToPairsOf(const UnitCodes& codes);

// The steps in which the decoding tables are laid flat.

/// Lays the units of single bytes flat; `units` has 256 of them.
void layFlat(const unsigned short* units, bool isLowerAscii, kernel::BytesToUnits& flat);

/// Enters a pair, once `isLowerAscii` is settled; a pair that has a unit keeps it.
void enterPair(unsigned int code, unsigned int unit, kernel::PairsToUnits& flat);

/// Settles what the leads are and gives their rows to the other bytes, once all
/// pairs and single bytes are entered.
void completeRows(kernel::PairsToUnits& flat);

}  // namespace quorvel
