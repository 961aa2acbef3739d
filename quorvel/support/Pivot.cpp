// Conversion by way of UTF-16LE: every Unicode source becomes UTF-16LE or UTF-8
// first, then a transcoder, a table, or a table on each side of a pivot buffer
// leads to the destination.

#include <algorithm>
#include <limits>

#include "quorvel/base/InLogContext.hpp"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/support/BlockPivot.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/MarkerFlags.hpp"
#include "quorvel/unicode/ByteOrder.hpp"
#include "quorvel/unicode/GsmText.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

/// The text still to be converted, as the steps leave it.
struct Source {
  int codePage;
  const unsigned char* data;
  unsigned int numBytes;
  bool bigEndian = false;
  DataBuffer normalised = {};  ///< holds the text once it has been rewritten

  void skip(unsigned int count) {
    data += count;
    numBytes -= count;
  }

  void useNormalised(int newCodePage) {
    codePage = newCodePage;
    data = normalised.getData2();
    numBytes = normalised.getSize();
  }
};

template <unsigned int length>
bool skipMark(Source& source, const unsigned char (&mark)[length]) {
  if (source.numBytes < length || !std::equal(mark, mark + length, source.data)) return false;
  source.skip(length);
  return true;
}

// Takes a byte-order mark off and settles the byte order: that of the code page
// unless a mark says otherwise.
void settleByteOrder(Source& source) {
  constexpr unsigned char markUtf8[] = {0xEF, 0xBB, 0xBF};
  constexpr unsigned char markUtf16le[] = {0xFF, 0xFE};
  constexpr unsigned char markUtf16be[] = {0xFE, 0xFF};
  constexpr unsigned char markUtf32le[] = {0xFF, 0xFE, 0x00, 0x00};
  constexpr unsigned char markUtf32be[] = {0x00, 0x00, 0xFE, 0xFF};

  source.bigEndian = isBigEndian(source.codePage);
  if (source.codePage == codePageUtf8) {
    skipMark(source, markUtf8);
  } else if (isUtf16(source.codePage)) {
    if (skipMark(source, markUtf16le)) {
      source.bigEndian = false;
    } else if (skipMark(source, markUtf16be)) {
      source.bigEndian = true;
    }
  } else if (isUtf32(source.codePage)) {
    if (skipMark(source, markUtf32le)) {
      source.bigEndian = false;
    } else if (skipMark(source, markUtf32be)) {
      source.bigEndian = true;
    }
  }
}

// The input of a transform that takes a buffer; only read, and not copied.
void lend(const Source& source, DataBuffer& buffer) {
  buffer.borrowData(const_cast<unsigned char*>(source.data), source.numBytes);
}

enum class Normalised { clean, illFormed, nothingLeft, outOfMemory };

Normalised normaliseUtf7(Source& source) {
  DataBuffer lent;
  lend(source, lent);
  const bool isClean = _qvUtf::Utf7ToUtf16_xe(lent, source.normalised);
  source.useNormalised(codePageUtf16le);
  return isClean ? Normalised::clean : Normalised::illFormed;
}

Normalised normaliseUtf16be(Source& source) {
  if (source.numBytes < 2) return Normalised::nothingLeft;
  if (!appendReversed(source.data, source.numBytes, 2, source.normalised))
    return Normalised::outOfMemory;
  source.useNormalised(codePageUtf16le);
  return Normalised::clean;
}

// Text with the low byte first keeps an incomplete last unit, which then shows
// in the result; with the high byte first the tail goes without a word.
Normalised normaliseUtf32(Source& source) {
  DataBuffer littleEndian;
  if (!source.bigEndian) {
    lend(source, littleEndian);
  } else {
    if (source.numBytes < 4) return Normalised::nothingLeft;
    if (!appendReversed(source.data, source.numBytes, 4, littleEndian))
      return Normalised::outOfMemory;
  }
  const bool isClean = _qvUtf::Utf32ToUtf8(littleEndian, source.normalised);
  source.useNormalised(codePageUtf8);
  return isClean ? Normalised::clean : Normalised::illFormed;
}

// Rewrites a Unicode source as UTF-16LE or UTF-8. UTF-16 that a mark has turned
// into little-endian is left alone under the number that it came with.
Normalised normalise(Source& source) {
  if (source.codePage == codePageUtf7) return normaliseUtf7(source);
  if (isUtf16(source.codePage) && source.bigEndian) return normaliseUtf16be(source);
  if (isUtf32(source.codePage)) return normaliseUtf32(source);
  return Normalised::clean;
}

// Room for `numBytes * halves / 2 + extra` bytes, as far as a buffer can have
// it. Most routes go on without: the room is more than most texts need, and the
// loops ask for what is missing.
bool reserve(DataBuffer& buffer, unsigned int numBytes, unsigned int halves, unsigned int extra) {
  constexpr unsigned long long most = std::numeric_limits<unsigned int>::max();
  const unsigned long long wanted = 1ULL * numBytes * halves / 2 + extra;
  return buffer.ensureBuffer(static_cast<unsigned int>(std::min(wanted, most)));
}

bool reserveForUtf16(DataBuffer& out, const Source& source) {
  return reserve(out, source.numBytes, 4, 4);
}

bool reserveForUtf32(DataBuffer& out, const Source& source) {
  return reserve(out, source.numBytes, 8, 0);
}

// Beyond what ASCII needs, the loops look for room for the worst that a block of
// text can become; short text then has it from the start.
bool reserveFromUtf16(DataBuffer& out, unsigned int numBytes) {
  constexpr unsigned int mostExtra = 65536;
  return reserve(out, numBytes, 1, std::min(numBytes, mostExtra) + 4);
}

void logStep(LogBase& log, const char* text) {
  if (log.m_verboseLogging) log.logInfo(text);
}

bool fromGsm(EncodingConvert& converter, int toCodePage, const Source& source, DataBuffer& out,
             LogBase& log) {
  if (toCodePage == codePageUtf8) {
    return gsmToUtf8(source.data, source.numBytes, out) == GsmResult::clean;
  }
  DataBuffer utf8;
  if (gsmToUtf8(source.data, source.numBytes, utf8) == GsmResult::outOfMemory) return false;
  return converter.convert_a(codePageUtf8, toCodePage, utf8.getData2(), utf8.getSize(), out, log);
}

// Characters that the alphabet lacks do not make a conversion to GSM fail.
bool toGsm(EncodingConvert& converter, const Source& source, DataBuffer& out, LogBase& log) {
  if (source.codePage == codePageUtf8) {
    return utf8ToGsm(source.data, source.numBytes, out) != GsmResult::outOfMemory;
  }
  DataBuffer utf8;
  if (!converter.convert_a(source.codePage, codePageUtf8, source.data, source.numBytes, utf8,
                           log)) {
    return false;
  }
  return utf8ToGsm(utf8.getData2(), utf8.getSize(), out) != GsmResult::outOfMemory;
}

bool isAsciiSuperset(int codePage) {
  return isIso8859(codePage) || codePage == codePageUtf8 || isWindows125x(codePage);
}

// US-ASCII is copied; to UTF-8, what is no ASCII goes, and with it all that is
// no ASCII in what the buffer held before.
bool fromUsAscii(int toCodePage, const Source& source, DataBuffer& out) {
  if (!out.append(source.data, source.numBytes)) return false;
  return toCodePage != codePageUtf8 || out.drop_non_usascii();
}

bool pivotFromUtf8(EncodingConvert& converter, int toCodePage, const Source& source,
                   DataBuffer& out, LogBase& log) {
  logStep(log, "Converting from utf-8 using utf-16 as a pivot table...");
  setMarkers(converter, emitting);
  DataBuffer pivot;
  reserveForUtf16(pivot, source);
  if (!converter.cv_utf8_to_utf16(source.data, source.numBytes, pivot, log)) return false;
  setMarkers(converter, honouring);
  reserveFromUtf16(out, pivot.getSize());
  const bool ok =
      converter.convertFromUnicodeHC(toCodePage, pivot.getData2(), pivot.getSize(), out, log);
  setMarkers(converter, neither);
  return ok;
}

bool pivotToUtf8(EncodingConvert& converter, const Source& source, DataBuffer& out, LogBase& log) {
  logStep(log, "Converting to utf-8 using utf-16 as a pivot table...");
  setMarkers(converter, emitting);
  DataBuffer pivot;
  if (!reserveForUtf16(pivot, source)) return false;
  if (!converter.convertToUnicodeHC(source.codePage, source.data, source.numBytes, pivot, log)) {
    if (log.m_verboseLogging) log.logError("convertToUnicodeHC failed.");
    return false;
  }
  if (log.m_verboseLogging) log.LogDataLong("szUtf16_inBytes", pivot.getSize());
  setMarkers(converter, honouring);
  if (!reserveFromUtf16(out, pivot.getSize())) return false;
  const bool ok = converter.cv_utf16_to_utf8(pivot.getData2(), pivot.getSize(), out, log);
  if (log.m_verboseLogging) {
    if (!ok) log.logError("convertFromUnicode failed.");
    log.LogDataLong("szResult_inBytes", out.getSize());
  }
  setMarkers(converter, neither);
  return ok;
}

bool pivotBetweenTables(EncodingConvert& converter, int toCodePage, const Source& source,
                        DataBuffer& out, LogBase& log) {
  logStep(log, "Converting by using utf-16 as a pivot table...");
  setMarkers(converter, emitting);
  DataBuffer pivot;
  if (!reserveForUtf16(pivot, source)) return false;
  if (!converter.convertToUnicodeHC(source.codePage, source.data, source.numBytes, pivot, log)) {
    return false;
  }
  setMarkers(converter, honouring);
  if (!reserveFromUtf16(out, pivot.getSize())) return false;
  const bool ok =
      converter.convertFromUnicodeHC(toCodePage, pivot.getData2(), pivot.getSize(), out, log);
  setMarkers(converter, neither);
  return ok;
}

// The three pivots above say what comes out; where it can be had in blocks that
// stay in the cache, it is.
bool pivot(EncodingConvert& converter, int toCodePage, const Source& source, DataBuffer& out,
           LogBase& log) {
  if (canPivotInBlocks(converter, source.codePage, toCodePage, source.numBytes, log)) {
    return pivotInBlocks(converter, source.codePage, toCodePage, source.data, source.numBytes,
                         sourceBytesPerBlock, out, log);
  }
  if (source.codePage == codePageUtf8) {
    return pivotFromUtf8(converter, toCodePage, source, out, log);
  }
  if (toCodePage == codePageUtf8) return pivotToUtf8(converter, source, out, log);
  return pivotBetweenTables(converter, toCodePage, source, out, log);
}

bool fromUtf16(EncodingConvert& converter, int toCodePage, const Source& source, DataBuffer& out,
               LogBase& log) {
  if (toCodePage == codePageUtf16le) {
    // The swapped text is the whole result, yet the route between two tables is
    // tried after it and, having none for UTF-16, makes the result false.
    setMarkers(converter, neither);
    if (!out.append(source.data, source.numBytes)) return false;
    return pivotBetweenTables(converter, toCodePage, source, out, log);
  }
  setMarkers(converter, neither);
  reserveFromUtf16(out, source.numBytes);
  if (toCodePage == codePageUtf8) {
    logStep(log, "converting from utf-16 to utf-8");
    return converter.cv_utf16_to_utf8(source.data, source.numBytes, out, log);
  }
  return converter.convertFromUnicodeHC(toCodePage, source.data, source.numBytes, out, log);
}

bool toUtf16OrUtf32(EncodingConvert& converter, int toCodePage, const Source& source,
                    DataBuffer& out, LogBase& log) {
  setMarkers(converter, neither);
  if (source.codePage != codePageUtf8) {
    reserveForUtf16(out, source);
    return converter.convertToUnicodeHC(source.codePage, source.data, source.numBytes, out, log);
  }
  if (toCodePage == codePageUtf16le) {
    logStep(log, "converting from utf-8 to utf-16");
    reserveForUtf16(out, source);
    return converter.cv_utf8_to_utf16(source.data, source.numBytes, out, log);
  }
  logStep(log, "converting from utf-8 to utf-32");
  reserveForUtf32(out, source);
  return _qvUtf::utf8toUtf32(false, source.data, source.numBytes, out);
}

// Chooses the way for a normalised source, in which no UTF-32 is left. The
// order of the tests counts: UTF-16 on the source side comes before UTF-16 and
// UTF-32 on the other.
bool takeRoute(EncodingConvert& converter, int toCodePage, const Source& source, DataBuffer& out,
               LogBase& log) {
  if (source.codePage == codePageUtf16le) {
    return fromUtf16(converter, toCodePage, source, out, log);
  }
  if (toCodePage == codePageUtf16le || toCodePage == codePageUtf32le) {
    return toUtf16OrUtf32(converter, toCodePage, source, out, log);
  }
  if (source.codePage == codePageUtf8 && toCodePage == codePageUtf8) {
    return out.append(source.data, source.numBytes);
  }
  return pivot(converter, toCodePage, source, out, log);
}

bool convertText(EncodingConvert& converter, int fromCodePage, int toCodePage,
                 const unsigned char* data, unsigned int numBytes, DataBuffer& out, LogBase& log) {
  Source source{fromCodePage, data, numBytes};
  settleByteOrder(source);
  if (source.numBytes == 0) return true;
  if (fromCodePage == toCodePage) return out.append(source.data, source.numBytes);
  if (fromCodePage == codePageGsm) return fromGsm(converter, toCodePage, source, out, log);
  if (toCodePage == codePageGsm) return toGsm(converter, source, out, log);
  if (fromCodePage == codePageUsAscii && isAsciiSuperset(toCodePage)) {
    return fromUsAscii(toCodePage, source, out);
  }

  const Normalised normalised = normalise(source);
  if (normalised == Normalised::nothingLeft) return true;
  if (normalised == Normalised::outOfMemory) return false;
  // Ill-formed text is converted on as far as it goes.
  const bool ok = takeRoute(converter, toCodePage, source, out, log);
  return ok && normalised == Normalised::clean;
}

}  // namespace

bool EncodingConvert::convert_a(int fromCodePage, int toCodePage, const unsigned char* data,
                                unsigned int numBytes, DataBuffer& out, LogBase& log) {
  if (!data || numBytes == 0) return true;
  return inLogContext(log, "convert_a", [&] {
    return convertText(*this, fromCodePage, toCodePage, data, numBytes, out, log);
  });
}

}  // namespace quorvel
