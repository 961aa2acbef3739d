#include "quorvel/pages/TableRegistry.hpp"

#include <atomic>
#include <new>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableBuilder.hpp"
#include "quorvel/pages/TableIndex.hpp"

namespace quorvel::tableRegistry {

namespace {

// One slot for each code page and direction, in the order of the code pages. A
// slot goes from null to published once and back only through `release`.
std::atomic<const ToUnicodeTable*> toUnicodeSlots[codePageCount];
std::atomic<const FromUnicodeTable*> fromUnicodeSlots[codePageCount];

constexpr int singleByteBuckets = 269;
constexpr int transientBuckets = 283;  // of the table that a lookup is made from

// The index of the page that owns the tables of a page; `codePageCount` when
// that has none.
unsigned int ownerOf(const CodePage& page) {
  if (!page.hasTable()) return codePageCount;
  return page.table.sharedWith ? indexOfCodePage(page.table.sharedWith) : indexOf(page);
}

unsigned int ownerOf(int codePage) { return ownerOf(findCodePage(codePage)); }

// The first to publish wins; any later one's table is freed.
template <typename Table>
void publish(std::atomic<const Table*>& slot, std::unique_ptr<Table> table) {
  const Table* none = nullptr;
  const Table* mine = table.release();
  if (!slot.compare_exchange_strong(none, mine, std::memory_order_acq_rel)) delete mine;
}

template <typename Table>
void releaseSlot(std::atomic<const Table*>& slot) {
  delete slot.exchange(nullptr, std::memory_order_acq_rel);
}

std::unique_ptr<HashConvert> buildTable(int codePage, const TableSource& source, int buckets,
                                        bool fromUnicode, LogBase& log) {
  std::unique_ptr<HashConvert> table(HashConvert::createNewObject(codePage));
  if (!table || !table->hcInitialize(buckets)) return nullptr;
  StringBuffer text;
  if (!source.packed && !source.assemble(text)) return nullptr;
  const char* packed = source.packed ? source.packed : text.getString();
  if (!buildHash(packed, *table, fromUnicode, log)) return nullptr;
  if (source.changes && !buildHash(source.changes, *table, fromUnicode, log)) return nullptr;
  return table;
}

std::unique_ptr<FromUnicodeTable> buildFromUnicode(int codePage, const CodePage& owner,
                                                   LogBase& log) {
  std::unique_ptr<FromUnicodeTable> table(new (std::nothrow) FromUnicodeTable);
  if (!table) return nullptr;
  const bool isSingleByte = owner.kind == CodePageKind::SingleByte;
  table->hash = buildTable(codePage, owner.table,
                           isSingleByte ? singleByteBuckets : owner.table.buckets, true, log);
  if (!table->hash) return nullptr;
  if (isSingleByte) {
    table->bytes = unitsToBytesOf(*table->hash);
  } else {
    table->pairs = unitsToPairsOf(*table->hash);
  }
  if (!table->bytes && !table->pairs) return nullptr;
  return table;
}

std::unique_ptr<ToUnicodeTable> buildLookup(int codePage, const CodePage& owner, LogBase& log) {
  std::unique_ptr<ToUnicodeTable> table(new (std::nothrow) ToUnicodeTable);
  if (!table) return nullptr;
  table->lookup.reset(UnicodeLookup::createNewObject());
  const auto transient = buildTable(codePage, owner.table, transientBuckets, false, log);
  if (!table->lookup || !transient) return nullptr;
  buildSingleByteLookup(*transient, *table->lookup, log);
  table->bytes = bytesToUnitsOf(*table->lookup);
  if (!table->bytes) return nullptr;
  return table;
}

// A list of changes speaks of units only, so a page that has one is decoded by
// the reverse of the table that it is encoded with.
std::unique_ptr<HashConvert> reverseOf(int codePage, const CodePage& owner, LogBase& log) {
  if (!ensureFromUnicode(codePage, log)) return nullptr;
  std::unique_ptr<HashConvert> table(HashConvert::createNewObject(codePage));
  if (!table || !table->hcInitialize(owner.table.buckets)) return nullptr;
  if (!fromUnicode(codePage)->hash->hcBuildReverse(*table, log)) return nullptr;
  return table;
}

std::unique_ptr<ToUnicodeTable> buildToUnicode(int codePage, const CodePage& owner, LogBase& log) {
  if (owner.kind == CodePageKind::SingleByte) return buildLookup(codePage, owner, log);
  std::unique_ptr<ToUnicodeTable> table(new (std::nothrow) ToUnicodeTable);
  if (!table) return nullptr;
  table->hash = owner.table.changes
                    ? reverseOf(codePage, owner, log)
                    : buildTable(codePage, owner.table, owner.table.buckets, false, log);
  if (table->hash) table->pairs = pairsToUnitsOf(*table->hash);
  if (!table->pairs) return nullptr;
  return table;
}

template <typename Table, typename Build>
bool ensure(int codePage, std::atomic<const Table*>* slots, const Build& build, LogBase& log) {
  const unsigned int owner = ownerOf(codePage);
  if (owner == codePageCount || slots[owner].load(std::memory_order_acquire)) return true;
  auto table = build(codePage, codePageAt(owner), log);
  if (!table) return false;
  publish(slots[owner], std::move(table));
  return true;
}

template <typename Page, typename Table>
const Table* published(const Page& page, const std::atomic<const Table*>* slots) {
  const unsigned int owner = ownerOf(page);
  return owner == codePageCount ? nullptr : slots[owner].load(std::memory_order_acquire);
}

}  // namespace

bool ensureToUnicode(int codePage, LogBase& log) {
  return ensure(codePage, toUnicodeSlots, buildToUnicode, log);
}

bool ensureFromUnicode(int codePage, LogBase& log) {
  return ensure(codePage, fromUnicodeSlots, buildFromUnicode, log);
}

const ToUnicodeTable* toUnicode(int codePage) { return published(codePage, toUnicodeSlots); }

const FromUnicodeTable* fromUnicode(int codePage) { return published(codePage, fromUnicodeSlots); }

const ToUnicodeTable* toUnicode(const CodePage& page) { return published(page, toUnicodeSlots); }

const FromUnicodeTable* fromUnicode(const CodePage& page) {
  return published(page, fromUnicodeSlots);
}

void release() {
  for (unsigned int i = 0; i < codePageCount; ++i) {
    if (!codePageAt(i).table.isRouted) continue;
    releaseSlot(fromUnicodeSlots[i]);
    releaseSlot(toUnicodeSlots[i]);
  }
}

}  // namespace quorvel::tableRegistry
