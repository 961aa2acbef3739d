// Encoding of UTF-16LE in the table-driven code pages: the loops of
// kernel/Loops.hpp map what has a mapping, the steps here decide about the rest.

#include <algorithm>
#include <cstddef>
#include <memory>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/InLogContext.hpp"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/pages/ArabicDigits.hpp"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableLoops.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ErrorPolicy.hpp"
#include "quorvel/support/PassthroughMarker.hpp"
#include "quorvel/support/ScopedRestore.hpp"
#include "quorvel/support/Steps.hpp"

namespace quorvel {

namespace {

bool isMarker(const unsigned char* in) {
  return in[0] == passthroughMarker[0] && in[1] == passthroughMarker[1];
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

// The unit at `in`, in front of which a loop has stopped. False when memory ran
// out.
bool encodeOne(EncodingConvert& converter, const HashConvert& table, const unsigned char* in,
               bool& isWhole, DataBuffer& out, LogBase& log) {
  unsigned char bytes[HashConvert::mostValueBytes];
  const Position next = encodeOneUnit(table, in, bytes);
  if (next.in != in) return out.append(bytes, static_cast<unsigned int>(next.out - bytes));
  converter.m_hadError = true;
  isWhole = false;
  handleUnmapped(converter, in, out, log);
  return true;
}

enum class AtMarker { copyRawBytes, stop };

// `loop` encodes what `table` maps, a unit in at most `mostBytes` bytes. Where a
// marker ends what `loop` is good for, the text goes no further.
template <typename Loop>
Encoded encodeText(EncodingConvert& converter, const HashConvert& table, const Loop& loop,
                   unsigned int mostBytes, AtMarker atMarker, const UnitsPart& part,
                   DataBuffer& out, LogBase& log) {
  bool isWhole = true;
  for (const unsigned char* in = part.in;;) {
    in = runInBlocks(loop, in, part.end, mostBytes, out);
    if (!in) return {nullptr, false};
    const std::ptrdiff_t left = part.end - in;
    if (left < 2) return {in, isWhole};
    // The flag is asked anew for every unit: a nested conversion may clear it.
    if (converter.m_honorPassthroughMarkers && isMarker(in)) {
      if (!part.isLast && left < mostMarkedBytes) return {in, isWhole};
      if (left >= 3) {
        if (atMarker == AtMarker::stop) return {in, isWhole};
        in = copyMarkedBytes(in, part.end, out);
        if (!in) return {nullptr, false};
        continue;
      }
    }
    if (!encodeOne(converter, table, in, isWhole, out, log)) return {nullptr, false};
    in += 2;
  }
}

auto probing(const HashConvert& table) {
  return [&table](auto... text) { return encodeUnits(table, text...); };
}

auto toBytes(const FromUnicodeTable& table) {
  return [&loop = kernel::loops().unitsToBytes, &bytes = *table.bytes](auto... text) {
    return loop(bytes, text...);
  };
}

auto toPairs(const FromUnicodeTable& table) {
  return [&loop = kernel::loops().unitsToPairs, &pairs = *table.pairs](auto... text) {
    return loop(pairs, text...);
  };
}

// Rewrites every unit that is an Arabic digit. Null when memory ran out.
std::unique_ptr<unsigned char[]> withAsciiDigits(const unsigned char* in, unsigned int inLen) {
  std::unique_ptr<unsigned char[]> copy(qvNewUnsignedChar(inLen));
  if (!copy) return nullptr;
  std::copy_n(in, inLen, copy.get());
  for (unsigned int i = 0; inLen - i >= 2; i += 2) {
    const unsigned int unit = in[i] | static_cast<unsigned int>(in[i + 1]) << 8;
    if (isArabicDigit(unit)) putUnit(asciiDigitOf(unit), copy.get() + i);
  }
  return copy;
}

// Both sets of Arabic digits become ASCII digits, and so do raw bytes behind a
// marker that happen to look like them. The index knows the digits; but from the
// first marker on the units may be read one byte off while it is still the units
// as they were written that count: from there on the text is rewritten, and read
// through the table, which leaves what then looks like a digit alone.
Encoded encodeWithAsciiDigits(EncodingConvert& converter, const FromUnicodeTable& table,
                              const UnitsPart& part, DataBuffer& out, LogBase& log) {
  const Encoded plain =
      encodeText(converter, *table.hash, toBytes(table), 1, AtMarker::stop, part, out, log);
  if (!plain.in || part.end - plain.in < 2 || !part.isLast) return plain;
  const auto length = static_cast<unsigned int>(part.end - plain.in);
  const auto rewritten = withAsciiDigits(plain.in, length);
  if (!rewritten) return {nullptr, false};
  const UnitsPart rest{rewritten.get(), rewritten.get() + length, true};
  const Encoded marked =
      encodeText(converter, *table.hash, probing(*table.hash), HashConvert::mostValueBytes,
                 AtMarker::copyRawBytes, rest, out, log);
  return {marked.in ? part.end : nullptr, plain.isWhole && marked.isWhole};
}

// Half a unit at the end is ignored.
UnitsPart wholeText(const unsigned char* in, unsigned int inLen) {
  return {in, in + (inLen & ~1U), true};
}

bool succeeded(const Encoded& encoded) { return encoded.in && encoded.isWhole; }

}  // namespace

Encoded encodeByTable(EncodingConvert& converter, const FromUnicodeTable& table,
                      const UnitsPart& part, DataBuffer& out, LogBase& log) {
  if (takesAsciiDigits(table.hash->codePage())) {
    return encodeWithAsciiDigits(converter, table, part, out, log);
  }
  return table.bytes ? encodeText(converter, *table.hash, toBytes(table), 1, AtMarker::copyRawBytes,
                                  part, out, log)
                     : encodeText(converter, *table.hash, toPairs(table), 2, AtMarker::copyRawBytes,
                                  part, out, log);
}

const FromUnicodeTable* tableToEncode(int codePage, LogBase& log) {
  const bool isUsed = isRouted(codePage);
  const FromUnicodeTable* table = isUsed ? tableRegistry::fromUnicode(codePage) : nullptr;
  if (table) return table;
  EncodingConvert::ensureHashFromUnicode(codePage, log);
  return isUsed ? tableRegistry::fromUnicode(codePage) : nullptr;
}

bool EncodingConvert::convertFromUnicodeHC(int toCodePage, const unsigned char* in,
                                           unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  return inLogContext(log, tableEncodingContext, [&] {
    if (log.m_verboseLogging) {
      log.LogDataLong("toCodePage", toCodePage);
      log.LogDataLong("inDataLen", static_cast<long>(inLen));
      log.LogDataLong("isLittleEndian", qvIsLittleEndian() ? 1 : 0);
    }
    const FromUnicodeTable* table = tableToEncode(toCodePage, log);
    if (!table || inLen < 2) return false;
    return succeeded(encodeByTable(*this, *table, wholeText(in, inLen), out, log));
  });
}

bool EncodingConvert::convertFromUnicodeHC2(HashConvert* table, const unsigned char* in,
                                            unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!table) return false;
  if (!in || inLen == 0) return true;
  if (inLen < 2) return false;
  return succeeded(encodeText(*this, *table, probing(*table), HashConvert::mostValueBytes,
                              AtMarker::copyRawBytes, wholeText(in, inLen), out, log));
}

}  // namespace quorvel
