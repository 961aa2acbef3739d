// Decoding of the table-driven code pages to UTF-16LE: the loops of
// kernel/Table.h map what has a mapping, the members here decide about the rest.

#include "quorvel/base/BlockRunner.h"
#include "quorvel/base/LogContextExitor.h"
#include "quorvel/base/kernel/Target.h"
#include "quorvel/support/CodePages.h"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/TableLoops.h"
#include "quorvel/support/TableRegistry.h"

namespace quorvel {

namespace {

// Decodes multibyte text by `decode`, which makes at most `mostBytes` bytes of a
// character. A lone byte at the very end is a single-byte error, anything before
// it one of unknown extent. The result tells whether memory sufficed.
template <typename Decode>
bool decodeText(EncodingConvert& converter, const Decode& decode, unsigned int mostBytes,
                const unsigned char* in, unsigned int inLen, DataBuffer& out, LogBase& log) {
  const unsigned char* end = in + inLen;
  const auto loop = [&](const unsigned char* from, const unsigned char* stop, unsigned char* room) {
    return decode(from, stop, end, room);
  };
  bool isPerfect = true;
  for (;;) {
    in = runInBlocks(loop, in, end, 2 * mostBytes, out);
    if (!in) return false;
    if (in == end) break;
    isPerfect = false;
    converter.m_hadError = true;
    int skipped = 1;
    if (converter.m_errorAction != 0) {
      if (end - in == 1) {
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
  return true;
}

// Decodes single-byte text by `decode`. The result tells whether memory sufficed.
template <typename Decode>
bool decodeSingleBytes(EncodingConvert& converter, const Decode& decode, const unsigned char* in,
                       unsigned int inLen, DataBuffer& out, LogBase& log) {
  const LogContextExitor context(log, "convertToUnicodeByLookup", log.m_verboseLogging);
  const unsigned char* end = in + inLen;
  for (;;) {
    in = runInBlocks(decode, in, end, 4, out);
    if (!in) return false;
    if (in == end) return true;
    converter.m_hadError = true;
    if (converter.m_errorAction != 0) converter.handleErrorFromSingleByte(in, out, log);
    ++in;
  }
}

}  // namespace

bool EncodingConvert::convertToUnicodeHC(int fromCodePage, const unsigned char* in,
                                         unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  const LogContextExitor context(log, "convertToUnicodeHC", log.m_verboseLogging);
  if (log.m_verboseLogging) {
    log.LogDataLong("fromCodePage", fromCodePage);
    log.LogDataLong("inDataLen", static_cast<long>(inLen));
  }
  if (!ensureHashToUnicode(fromCodePage, log)) {
    if (log.m_verboseLogging) log.logError("ensureHashToUnicode failed.");
    return false;
  }
  const ToUnicodeTable* table =
      isRouted(fromCodePage) ? tableRegistry::toUnicode(fromCodePage) : nullptr;
  if (!table) return false;
  if (table->bytes) {
    const auto decode = [loop = kernel::table().bytesToUnits, table](auto... text) {
      return loop(*table->bytes, text...);
    };
    return decodeSingleBytes(*this, decode, in, inLen, out, log);
  }
  const auto decode = [loop = kernel::table().pairsToUnits, &pairs = *table->pairs](auto... text) {
    return loop(pairs, text...);
  };
  return decodeText(*this, decode, 2, in, inLen, out, log);
}

bool EncodingConvert::convertToUnicodeByLookup(UnicodeLookup& lookup, const unsigned char* in,
                                               unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  const auto decode = [&](auto... text) {
    return kernel::scalar::bytesToUnits(lookup.m_units, text...);
  };
  return decodeSingleBytes(*this, decode, in, inLen, out, log);
}

bool EncodingConvert::convertToUnicodeHCVar(HashConvert* hc, const unsigned char* in,
                                            unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!hc) {
    log.logError("convertToUnicodeHCVar: missing hc");
    return false;
  }
  if (!in || inLen == 0) return true;
  const auto decode = [hc](auto... text) { return decodeMultiBytes(*hc, text...); };
  return decodeText(*this, decode, HashConvert::mostValueBytes, in, inLen, out, log);
}

}  // namespace quorvel
