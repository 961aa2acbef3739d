// Decoding of the table-driven code pages to UTF-16LE: the loops of
// kernel/Loops.hpp map what has a mapping, the steps here decide about the rest.

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/InLogContext.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableLoops.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/Steps.hpp"

namespace quorvel {

namespace {

// Decodes multibyte text by `decode`, which makes at most `mostBytes` bytes of a
// character. A lone byte at the very end is a single-byte error, anything before
// it one of unknown extent.
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
    if (converter.m_errorAction != 0) {
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
    if (converter.m_errorAction != 0) converter.handleErrorFromSingleByte(in, out, log);
    ++in;
  }
}

}  // namespace

const unsigned char* decodeByTable(EncodingConvert& converter, const ToUnicodeTable& table,
                                   const SourcePart& part, DataBuffer& out, LogBase& log) {
  const kernel::Loops& loops = kernel::loops();
  if (table.bytes) {
    const auto decode = [&loop = loops.bytesToUnits, &bytes = *table.bytes](auto... text) {
      return loop(bytes, text...);
    };
    return decodeSingleByteText(converter, decode, part, out, log);
  }
  const auto decode = [&loop = loops.pairsToUnits, &pairs = *table.pairs](auto... text) {
    return loop(pairs, text...);
  };
  return decodeText(converter, decode, 2, part, out, log);
}

const ToUnicodeTable* tableToDecode(int codePage, LogBase& log) {
  const bool isUsed = isRouted(codePage);
  const ToUnicodeTable* table = isUsed ? tableRegistry::toUnicode(codePage) : nullptr;
  if (table) return table;
  if (!EncodingConvert::ensureHashToUnicode(codePage, log)) {
    if (log.m_verboseLogging) log.logError("ensureHashToUnicode failed.");
    return nullptr;
  }
  return isUsed ? tableRegistry::toUnicode(codePage) : nullptr;
}

bool EncodingConvert::convertToUnicodeHC(int fromCodePage, const unsigned char* in,
                                         unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  return inLogContext(log, tableDecodingContext, [&] {
    if (log.m_verboseLogging) {
      log.LogDataLong("fromCodePage", fromCodePage);
      log.LogDataLong("inDataLen", static_cast<long>(inLen));
    }
    const ToUnicodeTable* table = tableToDecode(fromCodePage, log);
    if (!table) return false;
    const unsigned char* end = in + inLen;
    const auto decode = [&] {
      return decodeByTable(*this, *table, {in, end, end}, out, log) != nullptr;
    };
    return table->lookup ? inLogContext(log, lookupDecodingContext, decode) : decode();
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
