#pragma once

#include <memory>

#include "quorvel/kernel/PageTables.hpp"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/UnicodeLookup.h"

namespace quorvel {

// What a finished table says, laid flat for the loops. U+0000 and the unit that
// announces raw bytes are not among what can be encoded. Each is null when memory
// runs out.

std::unique_ptr<kernel::BytesToUnits> bytesToUnitsOf(const UnicodeLookup& lookup);
std::unique_ptr<kernel::PairsToUnits> pairsToUnitsOf(const HashConvert& toUnicode);
std::unique_ptr<kernel::UnitsToPairs> unitsToPairsOf(const HashConvert& fromUnicode);
std::unique_ptr<kernel::UnitsToBytes> unitsToBytesOf(const HashConvert& fromUnicode);

}  // namespace quorvel
