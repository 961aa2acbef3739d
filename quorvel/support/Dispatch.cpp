// The one operation through which every conversion between two numbered code
// pages passes: it settles the trivial cases, rewrites sources that need it
// before anything else and wraps the destinations that the routes (Routes.cpp) do
// not know.

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "quorvel/base/InLogContext.hpp"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/MacArabic.hpp"
#include "quorvel/support/ByteOrderMark.hpp"
#include "quorvel/support/Conversion.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/ByteOrder.hpp"
#include "quorvel/unicode/Japanese.h"
#include "quorvel/unicode/Korean.h"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

bool isPdf(const unsigned char* data, unsigned int numBytes) {
  constexpr char signature[] = "%PDF-1";
  constexpr unsigned int length = sizeof signature - 1;
  // contract: the signature alone is text like any other; only with more behind it
  // is it the beginning of a document. Mail readers that convert every attachment
  // rely on documents coming through whole, whatever the code pages.
  return numBytes > length && std::memcmp(data, signature, length) == 0;
}

bool isAccepted(int codePage) { return codePage == codePageEbcdicUs || codePage >= 100; }

// The ISO-2022 converters count in an int; longer text is refused.
bool fitsInt(unsigned int numBytes) {
  return numBytes <= static_cast<unsigned int>(std::numeric_limits<int>::max());
}

// The text goes on as that in `decoded`.
bool convertDecoded(const Conversion& text, int codePage, const DataBuffer& decoded) {
  return text.converter.EncConvert(codePage, text.to, decoded.getData2(), decoded.getSize(),
                                   text.out, text.log);
}

bool fromIso2022Jp(const Conversion& text) {
  if (text.log.m_verboseLogging) text.log.logInfo("Converting from iso-2022-*");
  DataBuffer shiftJis;
  if (!fitsInt(text.numBytes) ||
      !Japanese().Iso2022ToShiftJis(text.data, static_cast<int>(text.numBytes), shiftJis,
                                    text.log)) {
    return false;
  }
  if (shiftJis.getSize() == 0) return true;
  if (text.to == codePageShiftJis) return text.out.append(shiftJis);
  return convertDecoded(text, codePageShiftJis, shiftJis);
}

bool fromIso2022Kr(const Conversion& text) {
  DataBuffer ksc;
  if (!fitsInt(text.numBytes) ||
      !Korean().Iso2022ToKsc(text.data, static_cast<int>(text.numBytes), ksc)) {
    return false;
  }
  if (ksc.getSize() == 0) return true;
  return convertDecoded(text, codePageKorean, ksc);
}

bool toUtf7(const Conversion& text) {
  DataBuffer utf16;
  const int hostOrder = qvIsLittleEndian() ? codePageUtf16le : codePageUtf16be;
  return convertByRoute(text.into(hostOrder, utf16)) && _qvUtf::Utf16XEToUtf7(utf16, text.out);
}

bool toUtf32(const Conversion& text) {
  DataBuffer utf8;
  if (text.from == codePageUtf8) {
    // Only read, and not copied; a mark in front of the text stays a character.
    utf8.borrowData(const_cast<unsigned char*>(text.data), text.numBytes);
  } else if (!convertByRoute(text.into(codePageUtf8, utf8))) {
    return false;
  }
  return _qvUtf::Utf8toUtf32(isBigEndian(text.to), utf8, text.out);
}

// The routes always give the low byte first, whatever the host.
//
// contract: what they gave is kept even when they failed, and the result is true:
// only the error flag tells. Callers who want what can be had rely on it.
bool toUtf16be(const Conversion& text) {
  text.converter.m_toCodePage = codePageUtf16le;
  DataBuffer utf16;
  if (!convertByRoute(text.into(codePageUtf16le, utf16))) text.converter.m_hadError = true;
  return appendReversed(utf16.getData2(), utf16.getSize(), 2, text.out);
}

bool toIso2022Jp(const Conversion& text) {
  DataBuffer shiftJis;
  const bool ok = convertByRoute(text.into(codePageShiftJis, shiftJis));
  if (!ok) text.converter.m_hadError = true;
  const unsigned int length = shiftJis.getSize();
  if (length == 0) return ok;
  return fitsInt(length) &&
         Japanese().ShiftJisToIso2022(shiftJis.getData2(), static_cast<int>(length), text.out,
                                      text.log) &&
         ok;
}

bool toIso2022Kr(const Conversion& text) {
  DataBuffer ksc;
  const bool ok = convertByRoute(text.into(codePageKorean, ksc));
  if (!ok) text.converter.m_hadError = true;
  const unsigned int length = ksc.getSize();
  if (length == 0) return ok;
  return fitsInt(length) &&
         Korean().KscToIso2022(ksc.getData2(), static_cast<int>(length), text.out) && ok;
}

bool takeDestinationRoute(const Conversion& text) {
  if (text.to == codePageUtf7) return toUtf7(text);
  if (isUtf32(text.to)) return toUtf32(text);
  if (text.to == codePageUtf16be) return toUtf16be(text);
  if (isIso2022Jp(text.to)) return toIso2022Jp(text);
  if (text.to == codePageIso2022Kr) return toIso2022Kr(text);
  return convertByRoute(text);
}

bool convertOrdered(const Conversion& text) {
  if (isIso2022Jp(text.from)) return fromIso2022Jp(text);
  if (text.from == codePageIso2022Kr) return fromIso2022Kr(text);

  text.converter.m_honorPassthroughMarkers = false;
  text.converter.m_fromCodePage = text.from;
  text.converter.m_toCodePage = text.to;
  return takeDestinationRoute(text);
}

bool convertAccepted(const Conversion& text) {
  if (text.from != codePageMacArabic) return convertOrdered(text);
  const std::unique_ptr<unsigned char[]> logicalOrder(qvNewUnsignedChar(text.numBytes));
  if (!logicalOrder) return false;
  std::copy_n(text.data, text.numBytes, logicalOrder.get());
  reorderMacArabic(logicalOrder.get(), text.numBytes);
  Conversion ordered = text;
  ordered.data = logicalOrder.get();
  return convertOrdered(ordered);
}

struct Preamble {
  int codePage;
  const ByteOrderMark& mark;
};

constexpr Preamble preambles[] = {
    {codePageUtf16le, markUtf16le},
    {codePageUtf16be, markUtf16be},
    {codePageUtf8, markUtf8},
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
    const bool ok = convertAccepted({*this, from, to, data, numBytes, out, log});
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
    if (preamble.codePage == destination) {
      out.append(preamble.mark.bytes, preamble.mark.length);
    }
  }
  return EncConvert(fromCodePage, destination, data, numBytes, out, log);
}

}  // namespace quorvel
