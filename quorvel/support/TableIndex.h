#pragma once

#include <memory>

#include "quorvel/base/HashConvert.h"
#include "quorvel/base/UnicodeLookup.h"
#include "quorvel/base/kernel/Table.h"
#include "quorvel/support/PassthroughMarker.h"

namespace quorvel {

/// The unit that announces raw bytes to the table encoder: the marker's bytes,
/// low byte first.
inline constexpr unsigned int rawBytesUnit = passthroughMarker[0] | passthroughMarker[1] << 8;

// What a finished table says, laid flat for the loops. U+0000 and the unit that
// announces raw bytes are not among what can be encoded. Each is null when memory
// runs out.

std::unique_ptr<kernel::BytesToUnits> bytesToUnitsOf(const UnicodeLookup& lookup);
std::unique_ptr<kernel::PairsToUnits> pairsToUnitsOf(const HashConvert& toUnicode);
std::unique_ptr<kernel::UnitsToPairs> unitsToPairsOf(const HashConvert& fromUnicode);
std::unique_ptr<kernel::UnitsToBytes> unitsToBytesOf(const HashConvert& fromUnicode);

}  // namespace quorvel
