#pragma once

#include <memory>

#include "quorvel/base/LogBase.h"
#include "quorvel/kernel/PageTables.hpp"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/UnicodeLookup.h"

namespace quorvel {

/// What one code page is decoded with: a single-byte page has a lookup, a
/// multibyte page a table, and each has it laid flat for the loops.
struct ToUnicodeTable {
  std::unique_ptr<UnicodeLookup> lookup;
  std::unique_ptr<kernel::BytesToUnits> bytes;
  std::unique_ptr<HashConvert> hash;
  std::unique_ptr<kernel::PairsToUnits> pairs;
};

/// What one code page is encoded with: a table, laid
/// flat in one of two ways.
struct FromUnicodeTable {
  std::unique_ptr<HashConvert> hash;
  std::unique_ptr<kernel::UnitsToBytes> bytes;
  std::unique_ptr<kernel::UnitsToPairs> pairs;
};

/// The process-wide tables. Each is built on first use, by whoever comes first,
/// and then read by all without a lock until `release`: a builder makes a
/// private table and publishes it only if none has been published meanwhile.
namespace tableRegistry {

/// Makes sure that the table of a code page exists. False when memory ran out;
/// true does not mean that there is a table, as a number without one is fine.
bool ensureToUnicode(int codePage, LogBase& log);
bool ensureFromUnicode(int codePage, LogBase& log);

/// The published table of a code page, or null.
const ToUnicodeTable* toUnicode(int codePage);
const FromUnicodeTable* fromUnicode(int codePage);

/// Frees every published table but those of the pages that no conversion takes.
/// No conversion may be in progress.
void release();

}  // namespace tableRegistry

}  // namespace quorvel
