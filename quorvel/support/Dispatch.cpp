// The one operation through which every conversion between two numbered code
// pages passes: it settles the trivial cases, rewrites sources that need it
// before anything else and wraps the destinations that the pivot does not know.

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "quorvel/base/InLogContext.hpp"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/MacArabic.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/ByteOrder.hpp"
#include "quorvel/unicode/Japanese.h"
#include "quorvel/unicode/Korean.h"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

/// One request, as the steps pass it on.
struct Request {
  int fromCodePage;
  int toCodePage;
  const unsigned char* data;
  unsigned int numBytes;
};

bool isPdf(const unsigned char* data, unsigned int numBytes) {
  constexpr char signature[] = "%PDF-1";
  constexpr unsigned int length = sizeof signature - 1;
  // The signature alone is text like any other; only with more behind it is it
  // the beginning of a document.
  return numBytes > length && std::memcmp(data, signature, length) == 0;
}

bool isAccepted(int codePage) { return codePage == codePageEbcdicUs || codePage >= 100; }

// The ISO-2022 converters count in an int; longer text is refused.
bool fitsInt(unsigned int numBytes) {
  return numBytes <= static_cast<unsigned int>(std::numeric_limits<int>::max());
}

bool convertDecoded(EncodingConvert& converter, int codePage, int toCodePage,
                    const DataBuffer& decoded, DataBuffer& out, LogBase& log) {
  return converter.EncConvert(codePage, toCodePage, decoded.getData2(), decoded.getSize(), out,
                              log);
}

bool fromIso2022Jp(EncodingConvert& converter, const Request& request, DataBuffer& out,
                   LogBase& log) {
  if (log.m_verboseLogging) log.logInfo("Converting from iso-2022-*");
  DataBuffer shiftJis;
  if (!fitsInt(request.numBytes) ||
      !Japanese().Iso2022ToShiftJis(request.data, static_cast<int>(request.numBytes), shiftJis,
                                    log)) {
    return false;
  }
  if (shiftJis.getSize() == 0) return true;
  if (request.toCodePage == codePageShiftJis) return out.append(shiftJis);
  return convertDecoded(converter, codePageShiftJis, request.toCodePage, shiftJis, out, log);
}

bool fromIso2022Kr(EncodingConvert& converter, const Request& request, DataBuffer& out,
                   LogBase& log) {
  DataBuffer ksc;
  if (!fitsInt(request.numBytes) ||
      !Korean().Iso2022ToKsc(request.data, static_cast<int>(request.numBytes), ksc)) {
    return false;
  }
  if (ksc.getSize() == 0) return true;
  return convertDecoded(converter, codePageKorean, request.toCodePage, ksc, out, log);
}

bool convertVia(EncodingConvert& converter, int codePage, const Request& request, DataBuffer& out,
                LogBase& log) {
  return converter.convert_a(request.fromCodePage, codePage, request.data, request.numBytes, out,
                             log);
}

bool toUtf7(EncodingConvert& converter, const Request& request, DataBuffer& out, LogBase& log) {
  DataBuffer utf16;
  return convertVia(converter, codePageUtf16le, request, utf16, log) &&
         _qvUtf::Utf16XEToUtf7(utf16, out);
}

bool toUtf32(EncodingConvert& converter, const Request& request, DataBuffer& out, LogBase& log) {
  DataBuffer utf8;
  if (request.fromCodePage == codePageUtf8) {
    // Only read, and not copied; a mark in front of the text stays a character.
    utf8.borrowData(const_cast<unsigned char*>(request.data), request.numBytes);
  } else if (!convertVia(converter, codePageUtf8, request, utf8, log)) {
    return false;
  }
  return _qvUtf::Utf8toUtf32(isBigEndian(request.toCodePage), utf8, out);
}

// The pivot gives the low byte first. What it gave is kept even when it failed: only
// the error flag tells.
bool toUtf16be(EncodingConvert& converter, const Request& request, DataBuffer& out, LogBase& log) {
  converter.m_toCodePage = codePageUtf16le;
  DataBuffer utf16;
  if (!convertVia(converter, codePageUtf16le, request, utf16, log)) converter.m_hadError = true;
  return appendReversed(utf16.getData2(), utf16.getSize(), 2, out);
}

bool toIso2022Jp(EncodingConvert& converter, const Request& request, DataBuffer& out,
                 LogBase& log) {
  DataBuffer shiftJis;
  const bool ok = convertVia(converter, codePageShiftJis, request, shiftJis, log);
  if (!ok) converter.m_hadError = true;
  const unsigned int length = shiftJis.getSize();
  if (length == 0) return ok;
  return fitsInt(length) &&
         Japanese().ShiftJisToIso2022(shiftJis.getData2(), static_cast<int>(length), out, log) &&
         ok;
}

bool toIso2022Kr(EncodingConvert& converter, const Request& request, DataBuffer& out,
                 LogBase& log) {
  DataBuffer ksc;
  const bool ok = convertVia(converter, codePageKorean, request, ksc, log);
  if (!ok) converter.m_hadError = true;
  const unsigned int length = ksc.getSize();
  if (length == 0) return ok;
  return fitsInt(length) && Korean().KscToIso2022(ksc.getData2(), static_cast<int>(length), out) &&
         ok;
}

bool takeDestinationRoute(EncodingConvert& converter, const Request& request, DataBuffer& out,
                          LogBase& log) {
  const int to = request.toCodePage;
  if (to == codePageUtf7) return toUtf7(converter, request, out, log);
  if (isUtf32(to)) return toUtf32(converter, request, out, log);
  if (to == codePageUtf16be) return toUtf16be(converter, request, out, log);
  if (isIso2022Jp(to)) return toIso2022Jp(converter, request, out, log);
  if (to == codePageIso2022Kr) return toIso2022Kr(converter, request, out, log);
  return convertVia(converter, to, request, out, log);
}

bool convertOrdered(EncodingConvert& converter, const Request& request, DataBuffer& out,
                    LogBase& log) {
  if (isIso2022Jp(request.fromCodePage)) return fromIso2022Jp(converter, request, out, log);
  if (request.fromCodePage == codePageIso2022Kr) return fromIso2022Kr(converter, request, out, log);

  converter.m_honorPassthroughMarkers = false;
  converter.m_fromCodePage = request.fromCodePage;
  converter.m_toCodePage = request.toCodePage;
  return takeDestinationRoute(converter, request, out, log);
}

bool convertAccepted(EncodingConvert& converter, const Request& request, DataBuffer& out,
                     LogBase& log) {
  if (request.fromCodePage != codePageMacArabic) {
    return convertOrdered(converter, request, out, log);
  }
  const std::unique_ptr<unsigned char[]> logicalOrder(qvNewUnsignedChar(request.numBytes));
  if (!logicalOrder) return false;
  std::copy_n(request.data, request.numBytes, logicalOrder.get());
  reorderMacArabic(logicalOrder.get(), request.numBytes);
  Request ordered = request;
  ordered.data = logicalOrder.get();
  return convertOrdered(converter, ordered, out, log);
}

struct Preamble {
  int codePage;
  unsigned char bytes[3];
  unsigned int length;
};

constexpr Preamble preambles[] = {
    {codePageUtf16le, {0xFF, 0xFE}, 2},
    {codePageUtf16be, {0xFE, 0xFF}, 2},
    {codePageUtf8, {0xEF, 0xBB, 0xBF}, 3},
};

}  // namespace

bool EncodingConvert::EncConvert(int fromCodePage, int toCodePage, const unsigned char* data,
                                 unsigned int numBytes, DataBuffer& out, LogBase& log) {
  m_hadError = false;
  if (!data || numBytes == 0) return true;
  if (isPdf(data, numBytes)) return out.append(data, numBytes);

  return inLogContext(log, "EncConvert", [&] {
    if (log.m_verboseLogging) {
      log.LogDataLong("fromCodePage", fromCodePage);
      log.LogDataLong("toCodePage", toCodePage);
    }
    const int from = fromCodePage ? fromCodePage : toCodePage;
    const int to = toCodePage ? toCodePage : fromCodePage;
    if (from == to) {
      out.append(data, numBytes);
      return true;
    }
    if (!isAccepted(from) || !isAccepted(to)) return false;
    const bool ok = convertAccepted(*this, {from, to, data, numBytes}, out, log);
    if (!ok) m_hadError = true;
    return ok;
  });
}

bool EncodingConvert::EncConvertWithPreamble(int fromCodePage, int toCodePage,
                                             const unsigned char* data, unsigned int numBytes,
                                             DataBuffer& out, LogBase& log) {
  m_hadError = false;
  const int destination = toCodePage ? toCodePage : fromCodePage;
  for (const Preamble& preamble : preambles) {
    if (preamble.codePage == destination) out.append(preamble.bytes, preamble.length);
  }
  return EncConvert(fromCodePage, destination, data, numBytes, out, log);
}

}  // namespace quorvel
