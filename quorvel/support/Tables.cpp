// The entry points by which the converter's own tables are made and released.

#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableBuilder.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"

namespace quorvel {

namespace {

// The from-Unicode tables are made by two operations, each by one of them.
bool isInFirstHalf(int codePage) {
  const CodePage& page = findCodePage(codePage);
  return page.kind == CodePageKind::MultiByte || page.traits.isInFirstHalf;
}

}  // namespace

bool EncodingConvert::ensureHashToUnicode(int codePage, LogBase& log) {
  return tableRegistry::ensureToUnicode(codePage, log);
}

bool EncodingConvert::ensureHashToUnicode1250(int codePage, LogBase& log) {
  return !isWindows125x(codePage) || tableRegistry::ensureToUnicode(codePage, log);
}

bool EncodingConvert::ensureHashToUnicode8859(int codePage, LogBase& log) {
  return !isIso8859(codePage) || tableRegistry::ensureToUnicode(codePage, log);
}

bool EncodingConvert::ensureHashFromUnicode(int codePage, LogBase& log) {
  return tableRegistry::ensureFromUnicode(codePage, log);
}

bool EncodingConvert::ensureHashFromUnicode2(int codePage, LogBase& log) {
  return isInFirstHalf(codePage) || tableRegistry::ensureFromUnicode(codePage, log);
}

void EncodingConvert::cleanupMemory() { tableRegistry::release(); }

bool EncodingConvert::buildHash(const char* packed, HashConvert& table, bool fromUnicode,
                                LogBase& log) {
  return quorvel::buildHash(packed, table, fromUnicode, log);
}

bool EncodingConvert::buildFromComplete(const unsigned char* body, HashConvert& table,
                                        bool fromUnicode, LogBase& log) {
  return quorvel::buildFromComplete(body, table, fromUnicode, log);
}

bool EncodingConvert::buildFromDiffs(const unsigned char* body, HashConvert& table, LogBase& log) {
  return quorvel::buildFromDiffs(body, table, log);
}

bool EncodingConvert::buildSingleByteLookup(HashConvert& hc, UnicodeLookup& lookup, LogBase& log) {
  return quorvel::buildSingleByteLookup(hc, lookup, log);
}

}  // namespace quorvel
