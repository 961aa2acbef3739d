// Decoding of the table-driven code pages to UTF-16LE: the loops of
// kernel/Loops.hpp map what has a mapping, the steps here decide about the rest.
// The tables come from pages/TableRegistry.hpp; who converts by way of them is told
// in Pivot.cpp and Routes.cpp.

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/InLogContext.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableLoops.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ErrorPolicy.hpp"
#include "quorvel/support/Steps.hpp"
#include "quorvel/support/Utf16Size.hpp"

namespace quorvel {

namespace {

// Decodes multibyte text by `decode`, which makes at most `mostBytes` bytes of a
// character.
//
// contract: a lone byte at the very end is a single-byte error, anything before it
// one of unknown extent, so that action 8 widens the former and, in the pages whose
// errors cover two bytes, writes nothing for the latter. Callers tell a text that was
// cut off by the unit at its end.
template <typename Decode>
const unsigned char* decodeText(EncodingConvert& converter, const Decode& decode,
                                unsigned int mostBytes, const SourcePart& part, DataBuffer& out,
                                LogBase& log) {
  const auto loop = [&](const unsigned char* from, const unsigned char* stop, unsigned char* room) {
    return decode(from, stop, part.end, room);
  };
  const unsigned char* in = part.in;
  bool isPerfect = true;
  for (;;) {
    in = runInBlocks(loop, in, part.stop, 2 * mostBytes, out);
    if (!in) return nullptr;
    if (in >= part.stop) break;
    isPerfect = false;
    converter.m_hadError = true;
    int skipped = 1;
    if (!dropsErrors(converter)) {
      if (part.end - in == 1) {
        converter.handleErrorFromSingleByte(in, out, log);
      } else {
        skipped = converter.handleErrorFromUnknown(in, out, log);
      }
    }
    in += skipped;
  }
  if (!isPerfect && log.m_verboseLogging) {
    log.logError("imperfect conversion in convertToUnicodeHCVar");
  }
  return in;
}

// Decodes single-byte text by `decode`.
template <typename Decode>
const unsigned char* decodeSingleByteText(EncodingConvert& converter, const Decode& decode,
                                          const SourcePart& part, DataBuffer& out, LogBase& log) {
  for (const unsigned char* in = part.in;;) {
    in = runInBlocks(decode, in, part.stop, 4, out);
    if (!in || in == part.stop) return in;
    converter.m_hadError = true;
    if (!dropsErrors(converter)) converter.handleErrorFromSingleByte(in, out, log);
    ++in;
  }
}

const unsigned char* decodeBy(const BytesToUnicode& table, EncodingConvert& converter,
                              const SourcePart& part, DataBuffer& out, LogBase& log) {
  const auto decode = [&loop = kernel::loops().bytesToUnits, &flat = table.flat](auto... text) {
    return loop(flat, text...);
  };
  return decodeSingleByteText(converter, decode, part, out, log);
}

const unsigned char* decodeBy(const PairsToUnicode& table, EncodingConvert& converter,
                              const SourcePart& part, DataBuffer& out, LogBase& log) {
  const auto decode = [&loop = kernel::loops().pairsToUnits, &flat = table.flat](auto... text) {
    return loop(flat, text...);
  };
  return decodeText(converter, decode, 2, part, out, log);
}

}  // namespace

const unsigned char* decodeByTable(EncodingConvert& converter, const ToUnicodeTable& table,
                                   const SourcePart& part, DataBuffer& out, LogBase& log) {
  return visit(table, [&](const auto& kind) { return decodeBy(kind, converter, part, out, log); });
}

const ToUnicodeTable* tableToDecode(const PageRef& page, LogBase& log) {
  const bool isUsed = page.isRouted();
  const ToUnicodeTable* table = isUsed ? tableRegistry::toUnicode(page.row()) : nullptr;
  if (table) return table;
  if (!tableRegistry::ensureToUnicode(page, log)) {
    if (log.m_verboseLogging) log.logError("ensureHashToUnicode failed.");
    return nullptr;
  }
  return isUsed ? tableRegistry::toUnicode(page.row()) : nullptr;
}

bool EncodingConvert::convertToUnicodeHC(int fromCodePage, const unsigned char* in,
                                         unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  return inTableDecoding(PageRef(fromCodePage), inLen, log, [&](const ToUnicodeTable& table) {
    const unsigned char* end = in + inLen;
    return !tableTextIsTooLong(*this, table, in, inLen, out) &&
           decodeByTable(*this, table, {in, end, end}, out, log) != nullptr;
  });
}

bool EncodingConvert::convertToUnicodeByLookup(UnicodeLookup& lookup, const unsigned char* in,
                                               unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  return inLogContext(log, lookupDecodingContext, [&] {
    const unsigned char* end = in + inLen;
    const auto decode = [&](auto... text) {
      return kernel::scalar::bytesToUnits(lookup.m_units, text...);
    };
    return decodeSingleByteText(*this, decode, {in, end, end}, out, log) != nullptr;
  });
}

bool EncodingConvert::convertToUnicodeHCVar(HashConvert* hc, const unsigned char* in,
                                            unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!hc) {
    log.logError("convertToUnicodeHCVar: missing hc");
    return false;
  }
  if (!in || inLen == 0) return true;
  const unsigned char* end = in + inLen;
  const auto decode = [hc](auto... text) { return decodeMultiBytes(*hc, text...); };
  return decodeText(*this, decode, HashConvert::mostValueBytes, {in, end, end}, out, log) !=
         nullptr;
}

}  // namespace quorvel
