#pragma once

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

#include "quorvel/base/NullLog.h"
#include "quorvel/base/StringBuffer.h"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/FlatTables.hpp"
#include "quorvel/support/EncodingConvert.h"

/// The tables of the code pages as callers can build them, and such tables laid
/// flat: what the published ones have to agree with.
namespace quorvel_test {

inline const quorvel::TableSource& sourceOf(int codePage) {
  const quorvel::TableSource& source =
      quorvel::codePageAt(quorvel::indexOfCodePage(codePage)).table;
  return source.sharedWith ? sourceOf(source.sharedWith) : source;
}

inline std::unique_ptr<quorvel::HashConvert> newPageTable(int codePage) {
  constexpr int buckets = 32749;
  std::unique_ptr<quorvel::HashConvert> table(quorvel::HashConvert::createNewObject(codePage));
  table->hcInitialize(buckets);
  return table;
}

/// The table of a page that has one, in one direction.
inline std::unique_ptr<quorvel::HashConvert> makePageTable(int codePage, bool fromUnicode) {
  const quorvel::TableSource& source = sourceOf(codePage);
  quorvel::NullLog log;
  auto table = newPageTable(codePage);
  if (source.changes && !fromUnicode) {
    makePageTable(codePage, true)->hcBuildReverse(*table, log);
    return table;
  }
  quorvel::StringBuffer text;
  if (source.assemble) source.assemble(text);
  const char* packed = source.packed ? source.packed : text.getString();
  quorvel::EncodingConvert::buildHash(packed, *table, fromUnicode, log);
  if (source.changes) quorvel::EncodingConvert::buildHash(source.changes, *table, true, log);
  return table;
}

/// The same, made once.
inline const quorvel::HashConvert& pageTable(int codePage, bool fromUnicode) {
  static std::map<std::pair<int, bool>, std::unique_ptr<quorvel::HashConvert>> known;
  auto& table = known[{codePage, fromUnicode}];
  if (!table) table = makePageTable(codePage, fromUnicode);
  return *table;
}

inline std::unique_ptr<quorvel::UnicodeLookup> makePageLookup(int codePage) {
  quorvel::NullLog log;
  std::unique_ptr<quorvel::UnicodeLookup> lookup(quorvel::UnicodeLookup::createNewObject());
  quorvel::EncodingConvert::buildSingleByteLookup(*makePageTable(codePage, false), *lookup, log);
  return lookup;
}

inline const quorvel::UnicodeLookup& pageLookup(int codePage) {
  static std::map<int, std::unique_ptr<quorvel::UnicodeLookup>> known;
  auto& lookup = known[codePage];
  if (!lookup) lookup = makePageLookup(codePage);
  return *lookup;
}

inline std::unique_ptr<quorvel::BytesToUnicode> flatOf(const quorvel::UnicodeLookup& lookup) {
  auto table = std::make_unique<quorvel::BytesToUnicode>();
  quorvel::layFlat(lookup.m_units, false, table->flat);
  return table;
}

inline std::unique_ptr<quorvel::PairsToUnicode> flatToUnicode(const quorvel::HashConvert& hash) {
  auto table = std::make_unique<quorvel::PairsToUnicode>();
  std::copy(std::begin(hash.m_byteToUnicode), std::end(hash.m_byteToUnicode), table->flat.bytes);
  table->flat.isLowerAscii = hash.get_IsLowerAscii();
  hash.forEachMapping([&](const unsigned char* code, const unsigned char* unit, int) {
    quorvel::enterPair(static_cast<unsigned int>(code[0]) << 8 | code[1],
                       unit[0] | static_cast<unsigned int>(unit[1]) << 8, table->flat);
  });
  quorvel::completeRows(table->flat);
  return table;
}

inline std::unique_ptr<quorvel::UnitCodes> unitCodesOf(const quorvel::HashConvert& hash) {
  auto codes = std::make_unique<quorvel::UnitCodes>();
  codes->isLowerAscii = hash.get_IsLowerAscii();
  hash.forEachMapping([&](const unsigned char* key, const unsigned char* code, int length) {
    const unsigned int unit = key[0] | static_cast<unsigned int>(key[1]) << 8;
    if (length == 1) codes->addByte(unit, code[0]);
    if (length == 2) codes->addPair(unit, code[0], code[1]);
  });
  return codes;
}

}  // namespace quorvel_test
