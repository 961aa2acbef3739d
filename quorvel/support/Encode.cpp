// Encoding of UTF-16LE in the table-driven code pages: the loops of
// kernel/Table.h map what has a mapping, the members here decide about the rest.

#include <memory>

#include "quorvel/base/BlockRunner.h"
#include "quorvel/base/LogContextExitor.h"
#include "quorvel/base/kernel/Target.h"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/support/CodePageNumbers.h"
#include "quorvel/support/CodePages.h"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ErrorPolicy.h"
#include "quorvel/support/PassthroughMarker.h"
#include "quorvel/support/ScopedRestore.h"
#include "quorvel/support/TableLoops.h"
#include "quorvel/support/TableRegistry.h"

namespace quorvel {

namespace {

bool isMarker(const unsigned char* in, const unsigned char* end) {
  return end - in >= 3 && in[0] == passthroughMarker[0] && in[1] == passthroughMarker[1];
}

// Writes the unit at `in` in the code page that the conversion comes from, with
// errors on the way dropped so that they cannot come back here.
void convertBack(EncodingConvert& converter, const unsigned char* unit, DataBuffer& out,
                 LogBase& log) {
  const ScopedRestore action(converter.m_errorAction);
  const ScopedRestore from(converter.m_fromCodePage);
  const ScopedRestore to(converter.m_toCodePage);
  converter.m_errorAction = 0;
  converter.convert_a(codePageUtf16le, converter.m_fromCodePage, unit, 2, out, log);
}

// The hexadecimal digits of the unit in the source code page, unlike the
// handler for units, which shows the unit itself.
void writeSourceHex(EncodingConvert& converter, const unsigned char* unit, DataBuffer& out,
                    LogBase& log) {
  DataBuffer source;
  convertBack(converter, unit, source, log);
  if (source.getSize()) appendHexReference(source.getData2(), source.getSize(), out);
}

// The error action for a unit without a mapping. While a pivot is encoded the
// actions that show the source go back to it; outside one, the handler decides.
void handleUnmapped(EncodingConvert& converter, const unsigned char* unit, DataBuffer& out,
                    LogBase& log) {
  if (converter.m_errorAction == 0) return;
  if (!converter.m_honorPassthroughMarkers) {
    converter.handleErrorFromUnicode(unit, out, log);
    return;
  }
  switch (converter.m_errorAction) {
    case actionSubstitute:
      appendSubstitution(converter, out);
      break;
    case actionHex:
      writeSourceHex(converter, unit, out, log);
      break;
    case actionPassThrough:
      convertBack(converter, unit, out, log);
      break;
    default:
      converter.handleErrorFromUnicode(unit, out, log);
      break;
  }
}

// `loop` encodes what `table` maps, a unit in at most `mostBytes` bytes.
template <typename Loop>
bool encodeText(EncodingConvert& converter, const HashConvert& table, const Loop& loop,
                unsigned int mostBytes, const unsigned char* in, unsigned int inLen,
                DataBuffer& out, LogBase& log) {
  if (inLen < 2) return false;
  bool isWhole = true;
  for (const unsigned char* end = in + (inLen & ~1U);;) {
    in = runInBlocks(loop, in, end, mostBytes, out);
    if (!in) return false;
    if (end - in < 2) return isWhole;
    // The flag is asked anew for every unit: a nested conversion may clear it.
    if (converter.m_honorPassthroughMarkers && isMarker(in, end)) {
      in = copyMarkedBytes(in, end, out);
      if (!in) return false;
      continue;
    }
    unsigned char bytes[HashConvert::mostValueBytes];
    const Progress progress = encodeOneUnit(table, in, bytes);
    if (progress.in != in) {
      if (!out.append(bytes, static_cast<unsigned int>(progress.out - bytes))) return false;
    } else {
      converter.m_hadError = true;
      isWhole = false;
      handleUnmapped(converter, in, out, log);
    }
    in += 2;
  }
}

bool isArabicDigit(unsigned char low, unsigned char high) {
  return high == 0x06 && ((low >= 0x60 && low <= 0x69) || (low >= 0xF0 && low <= 0xF9));
}

// Both sets of Arabic digits become ASCII digits, whatever the table says; so
// do raw bytes behind a marker that happen to look like them. Null when memory
// ran out.
std::unique_ptr<unsigned char[]> withAsciiDigits(const unsigned char* in, unsigned int inLen) {
  std::unique_ptr<unsigned char[]> copy(qvNewUnsignedChar(inLen));
  if (!copy) return nullptr;
  std::copy_n(in, inLen, copy.get());
  for (unsigned int i = 0; inLen - i >= 2; i += 2) {
    if (!isArabicDigit(in[i], in[i + 1])) continue;
    copy[i] = static_cast<unsigned char>(0x30 | (in[i] & 0x0F));
    copy[i + 1] = 0;
  }
  return copy;
}

bool takesAsciiDigits(int codePage) { return codePage == 1256 || codePage == 28596; }

}  // namespace

bool EncodingConvert::convertFromUnicodeHC(int toCodePage, const unsigned char* in,
                                           unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  const LogContextExitor context(log, "convertFromUnicodeHC", log.m_verboseLogging);
  if (log.m_verboseLogging) {
    log.LogDataLong("toCodePage", toCodePage);
    log.LogDataLong("inDataLen", static_cast<long>(inLen));
    log.LogDataLong("isLittleEndian", qvIsLittleEndian() ? 1 : 0);
  }
  ensureHashFromUnicode(toCodePage, log);
  const FromUnicodeTable* table =
      isRouted(toCodePage) ? tableRegistry::fromUnicode(toCodePage) : nullptr;
  if (!table) return false;
  std::unique_ptr<unsigned char[]> rewritten;
  if (takesAsciiDigits(toCodePage)) {
    rewritten = withAsciiDigits(in, inLen);
    if (!rewritten) return false;
    in = rewritten.get();
  }
  const auto toBytes = [loop = kernel::table().unitsToBytes, table](auto... text) {
    return loop(*table->bytes, text...);
  };
  const auto toPairs = [loop = kernel::table().unitsToPairs, table](auto... text) {
    return loop(*table->pairs, text...);
  };
  return table->bytes ? encodeText(*this, *table->hash, toBytes, 1, in, inLen, out, log)
                      : encodeText(*this, *table->hash, toPairs, 2, in, inLen, out, log);
}

bool EncodingConvert::convertFromUnicodeHC2(HashConvert* table, const unsigned char* in,
                                            unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!table) return false;
  if (!in || inLen == 0) return true;
  const auto loop = [table](auto... text) { return encodeUnits(*table, text...); };
  return encodeText(*this, *table, loop, HashConvert::mostValueBytes, in, inLen, out, log);
}

}  // namespace quorvel
