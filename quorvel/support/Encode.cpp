// Encoding of UTF-16LE in the table-driven code pages: the loops of
// kernel/Loops.hpp map what has a mapping, the steps here decide about the rest.
// What is written for a unit without a mapping is told in ErrorPolicy.cpp, what a
// marker is in PassthroughMarker.hpp.

#include <algorithm>
#include <cstddef>
#include <memory>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/pages/ArabicDigits.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/PageTables.hpp"
#include "quorvel/pages/TableLoops.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ErrorPolicy.hpp"
#include "quorvel/support/PassthroughMarker.hpp"
#include "quorvel/support/Steps.hpp"

namespace quorvel {

namespace {

bool isMarker(const unsigned char* in) {
  return in[0] == passthroughMarker[0] && in[1] == passthroughMarker[1];
}

// How text is encoded, by the table: `run` is the loop, `one` is for the unit at
// which it stopped, and neither makes more than `mostBytes` bytes of a unit.

struct ByProbing {
  static constexpr unsigned int mostBytes = HashConvert::mostValueBytes;

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) const {
    return encodeUnits(table, in, end, out);
  }
  Position one(const unsigned char* in, unsigned char* out) const {
    return encodeOneUnit(table, in, out);
  }

  const HashConvert& table;
};

struct ToBytes {
  static constexpr unsigned int mostBytes = 1;

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) const {
    return loop(table.flat, in, end, out);
  }
  Position one(const unsigned char* in, unsigned char* out) const {
    return encodeWhereStopped(table, in, out);
  }

  const UnicodeToBytes& table;
  kernel::TableLoop<kernel::UnitsToBytes>& loop = kernel::loops().unitsToBytes;
};

struct ToBytesWithOwnDigits {
  static constexpr unsigned int mostBytes = 1;

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) const {
    return encodeWithOwnDigits(table, in, end, out);
  }
  Position one(const unsigned char* in, unsigned char* out) const {
    return encodeWhereStopped(table, in, out);
  }

  const UnicodeToBytesAndDigits& table;
};

struct ToPairs {
  static constexpr unsigned int mostBytes = 2;

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) const {
    return loop(table.flat, in, end, out);
  }
  Position one(const unsigned char* in, unsigned char* out) const {
    return encodeWhereStopped(table, in, out);
  }

  const UnicodeToPairs& table;
  kernel::TableLoop<kernel::UnitsToPairs>& loop = kernel::loops().unitsToPairs;
};

// The unit at `in`, in front of which a loop has stopped. False when memory ran
// out.
//
// contract: surrogates are units like any others, and a pair that the page lacks is
// two errors. Callers count two substitutions for a character beyond U+FFFF.
template <typename Way>
bool encodeOne(EncodingConvert& converter, const Way& way, const unsigned char* in, bool& isWhole,
               DataBuffer& out, LogBase& log) {
  unsigned char bytes[Way::mostBytes];
  const Position next = way.one(in, bytes);
  if (next.in != in) return out.append(bytes, static_cast<unsigned int>(next.out - bytes));
  converter.m_hadError = true;
  isWhole = false;
  handleUnmapped(converter, in, out, log);
  return true;
}

enum class AtMarker { copyRawBytes, stop };

// Where a marker ends what `way` is good for, the text goes no further.
template <typename Way>
Encoded encodeText(EncodingConvert& converter, const Way& way, AtMarker atMarker,
                   const UnitsPart& part, DataBuffer& out, LogBase& log) {
  const auto loop = [&](auto... text) { return way.run(text...); };
  bool isWhole = true;
  for (const unsigned char* in = part.in;;) {
    in = runInBlocks(loop, in, part.end, Way::mostBytes, out);
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
    if (!encodeOne(converter, way, in, isWhole, out, log)) return {nullptr, false};
    in += 2;
  }
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

// Both sets of Arabic digits become ASCII digits.
//
// contract: so do raw bytes behind a marker that happen to look like them; readers
// take their substitution for text of the page. The flat table knows the digits; but
// from the first marker on the units may be read one byte off while it is still the
// units as they were written that count: from there on the text is rewritten, and
// what then looks like a digit gets the page's own code.
Encoded encodeBy(const UnicodeToBytesAndDigits& table, EncodingConvert& converter,
                 const UnitsPart& part, DataBuffer& out, LogBase& log) {
  const Encoded plain = encodeText(converter, ToBytes{table}, AtMarker::stop, part, out, log);
  if (!plain.in || part.end - plain.in < 2 || !part.isLast) return plain;
  const auto length = static_cast<unsigned int>(part.end - plain.in);
  const auto rewritten = withAsciiDigits(plain.in, length);
  if (!rewritten) return {nullptr, false};
  const UnitsPart rest{rewritten.get(), rewritten.get() + length, true};
  const Encoded marked =
      encodeText(converter, ToBytesWithOwnDigits{table}, AtMarker::copyRawBytes, rest, out, log);
  return {marked.in ? part.end : nullptr, plain.isWhole && marked.isWhole};
}

Encoded encodeBy(const UnicodeToBytes& table, EncodingConvert& converter, const UnitsPart& part,
                 DataBuffer& out, LogBase& log) {
  return encodeText(converter, ToBytes{table}, AtMarker::copyRawBytes, part, out, log);
}

Encoded encodeBy(const UnicodeToPairs& table, EncodingConvert& converter, const UnitsPart& part,
                 DataBuffer& out, LogBase& log) {
  return encodeText(converter, ToPairs{table}, AtMarker::copyRawBytes, part, out, log);
}

// Half a unit at the end is ignored.
UnitsPart wholeText(const unsigned char* in, unsigned int inLen) {
  return {in, in + (inLen & ~1U), true};
}

bool succeeded(const Encoded& encoded) { return encoded.in && encoded.isWhole; }

}  // namespace

Encoded encodeByTable(EncodingConvert& converter, const FromUnicodeTable& table,
                      const UnitsPart& part, DataBuffer& out, LogBase& log) {
  return visit(table, [&](const auto& kind) { return encodeBy(kind, converter, part, out, log); });
}

const FromUnicodeTable* tableToEncode(const PageRef& page, LogBase& log) {
  const bool isUsed = page.isRouted();
  const FromUnicodeTable* table = isUsed ? tableRegistry::fromUnicode(page.row()) : nullptr;
  if (table) return table;
  if (!tableRegistry::ensureFromUnicode(page, log)) return nullptr;
  return isUsed ? tableRegistry::fromUnicode(page.row()) : nullptr;
}

bool EncodingConvert::convertFromUnicodeHC(int toCodePage, const unsigned char* in,
                                           unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!in || inLen == 0) return true;
  const PageRef page(toCodePage);
  return inTableEncoding(page, inLen, log, [&](const FromUnicodeTable& table) {
    return succeeded(encodeByTable(*this, table, wholeText(in, inLen), out, log));
  });
}

bool EncodingConvert::convertFromUnicodeHC2(HashConvert* table, const unsigned char* in,
                                            unsigned int inLen, DataBuffer& out, LogBase& log) {
  if (!table) return false;
  if (!in || inLen == 0) return true;
  if (inLen < 2) return false;
  return succeeded(
      encodeText(*this, ByProbing{*table}, AtMarker::copyRawBytes, wholeText(in, inLen), out, log));
}

}  // namespace quorvel
