// Builds, publishes and releases the tables that all converters share. From the row of a
// page: its packed text is assembled, unpacked (PackedList.hpp) and laid flat
// (FlatTables.hpp); a slot for each page and direction holds what was made.

#include "quorvel/pages/TableRegistry.hpp"

#include <atomic>
#include <memory>
#include <new>
#include <utility>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/FlatTables.hpp"
#include "quorvel/pages/LastBlock.hpp"
#include "quorvel/pages/PackedList.hpp"

namespace quorvel::tableRegistry {

namespace {

// One slot for each code page and direction, in the order of the code pages. A
// slot goes from null to published once and back only through `release`.
std::atomic<const ToUnicodeTable*> toUnicodeSlots[codePageCount];
std::atomic<const FromUnicodeTable*> fromUnicodeSlots[codePageCount];
std::atomic<void (*)()> releaseOthers;

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

template <typename Table>
std::size_t sizeOf(const std::atomic<const Table*>& slot) {
  const Table* table = slot.load(std::memory_order_acquire);
  return table ? table->size() : 0;
}

Unpacked unpackMappings(const TableSource& source, PackedList& list) {
  if (source.packed) return unpackList(source.packed, list);
  StringBuffer text;
  return source.assemble(text) ? unpackList(text.getString(), list) : Unpacked::outOfMemory;
}

// A list that cannot be unpacked adds nothing.
bool addUnpacked(Unpacked state, const PackedList& list, UnitCodes& codes) {
  if (state == Unpacked::whole) addList(list, codes);
  return state != Unpacked::outOfMemory;
}

// What the page has for each unit; null when memory ran out.
std::unique_ptr<UnitCodes> gatherCodes(const TableSource& source) {
  std::unique_ptr<UnitCodes> codes(new (std::nothrow) UnitCodes);
  if (!codes) return nullptr;
  PackedList list;
  const Unpacked state = unpackMappings(source, list);
  if (!addUnpacked(state, list, *codes)) return nullptr;
  if (source.changes) {
    PackedList changes;
    const Unpacked changed = unpackList(source.changes, changes);
    if (!addUnpacked(changed, changes, *codes)) return nullptr;
  }
  return codes;
}

std::unique_ptr<FromUnicodeTable> buildFromUnicode(const CodePage& page) {
  if (page.kind == CodePageKind::MultiByte) {
    const auto codes = gatherCodes(page.table);
    return codes ? unicodeToPairsOf(*codes) : nullptr;
  }
  PackedList list;
  const Unpacked state = unpackMappings(page.table, list);
  if (state == Unpacked::outOfMemory) return nullptr;
  const PackedList* mappings = state == Unpacked::whole ? &list : nullptr;
  return page.traits.takesAsciiDigits ? unicodeToBytesAndDigitsOf(mappings)
                                      : unicodeToBytesOf(mappings);
}

// A list of changes speaks of units only, so a page that has one is decoded by
// the reverse of what it is encoded with.
//
// contract: its encoding table is published first; callers find both there once
// they have asked for this one.
std::unique_ptr<ToUnicodeTable> buildReverse(const CodePage& page) {
  const auto codes = gatherCodes(page.table);
  if (!codes) return nullptr;
  std::atomic<const FromUnicodeTable*>& slot = fromUnicodeSlots[indexOf(page)];
  if (!slot.load(std::memory_order_acquire)) {
    std::unique_ptr<FromUnicodeTable> table = unicodeToPairsOf(*codes);
    if (!table) return nullptr;
    publish(slot, std::move(table));
  }
  return reverseOf(*codes);
}

std::unique_ptr<ToUnicodeTable> buildToUnicode(const CodePage& page) {
  if (page.table.changes) return buildReverse(page);
  PackedList list;
  const Unpacked state = unpackMappings(page.table, list);
  if (state == Unpacked::outOfMemory) return nullptr;
  const PackedList* mappings = state == Unpacked::whole ? &list : nullptr;
  if (page.kind == CodePageKind::MultiByte) return pairsToUnicodeOf(mappings);
  return bytesToUnicodeOf(mappings);
}

template <typename Table, typename Build>
bool ensure(int codePage, std::atomic<const Table*>* slots, const Build& build, LogBase& log) {
  const unsigned int owner = ownerOf(codePage);
  if (owner == codePageCount || slots[owner].load(std::memory_order_acquire)) return true;
  auto table = build(codePageAt(owner));
  if (!table) {
    log.logError("Out of memory for a mapping.");
    return false;
  }
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

std::size_t size() {
  std::size_t sum = 0;
  for (unsigned int i = 0; i < codePageCount; ++i) {
    sum += sizeOf(fromUnicodeSlots[i]) + sizeOf(toUnicodeSlots[i]);
  }
  return sum;
}

void alsoRelease(void (*others)()) { releaseOthers.store(others, std::memory_order_release); }

void release() {
  releaseLastBlock();
  if (void (*const others)() = releaseOthers.load(std::memory_order_acquire)) others();
  for (unsigned int i = 0; i < codePageCount; ++i) {
    // contract: the tables that no conversion takes stay, for whoever asked for
    // them by hand.
    if (!codePageAt(i).table.isRouted) continue;
    releaseSlot(fromUnicodeSlots[i]);
    releaseSlot(toUnicodeSlots[i]);
  }
}

}  // namespace quorvel::tableRegistry
