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

// contract: other numbers below 100 are refused before anything is looked at, with
// nothing logged and the error flag clear. Callers who pass on what a message says
// know by the clear flag that it was no code page at all.
bool isAccepted(int codePage) { return codePage == codePageEbcdicUs || codePage >= 100; }

// The ISO-2022 converters count in an int; longer text is refused.
bool fitsInt(unsigned int numBytes) {
  return numBytes <= static_cast<unsigned int>(std::numeric_limits<int>::max());
}

// contract: what the converters leave out shows neither in the result nor in the
// flag, and the fields tell of the conversion that follows, from the page that the
// encoding stands on. Mail readers, for which half a message is better than none,
// take both for those of the rest; who has to know asks `Japanese` and `Korean`.
//
// contract: Shift_JIS out of ISO-2022-JP is the result as it is, where the Korean
// text goes through a conversion from 949 to itself, which copies it and logs a
// context of its own. Readers of the log know the two by that.
bool fromIso2022(const Conversion& text) {
  const int wrapped = text.from.wrapped();
  const bool isJapanese = wrapped == codePageShiftJis;
  if (isJapanese && text.log.m_verboseLogging) text.log.logInfo("Converting from iso-2022-*");
  if (!fitsInt(text.numBytes)) return false;
  const auto length = static_cast<int>(text.numBytes);
  ScratchBuffer decoded;
  const bool ok = isJapanese ? Japanese().Iso2022ToShiftJis(text.data, length, decoded, text.log)
                             : Korean().Iso2022ToKsc(text.data, length, decoded);
  if (!ok) return false;
  if (decoded.getSize() == 0) return true;
  if (isJapanese && text.to == wrapped) return text.out.append(decoded);
  return text.converter.EncConvert(wrapped, text.to, decoded.getData2(), decoded.getSize(),
                                   text.out, text.log);
}

// contract: a first step that fails ends it, so that there is no way from UTF-16BE,
// for which that step counts as failed whatever it gives (`fromUtf16` in Routes.cpp).
// Callers ask for UTF-16LE first when they find nothing here.
bool toUtf7(const Conversion& text) {
  ScratchBuffer utf16;
  return convertByRoute(text.into(codePageUtf16le, utf16)) &&
         _qvUtf::Utf16XEToUtf7(utf16, text.out);
}

bool toUtf32(const Conversion& text) {
  ScratchBuffer utf8;
  if (text.from == codePageUtf8) {
    // Only read, and not copied.
    //
    // contract: a mark in front of the text stays a character, on this way alone.
    // Readers of UTF-32 tell its byte order by it.
    utf8.borrowData(const_cast<unsigned char*>(text.data), text.numBytes);
  } else if (!convertByRoute(text.into(codePageUtf8, utf8))) {
    return false;
  }
  return _qvUtf::Utf8toUtf32(isBigEndian(text.to), utf8, text.out);
}

// The routes give the low byte first.
//
// contract: what they gave is kept even when they failed, and the result is true:
// only the error flag tells. Callers who want what can be had rely on it.
bool toUtf16be(const Conversion& text) {
  text.converter.m_toCodePage = codePageUtf16le;
  ScratchBuffer utf16;
  if (!convertByRoute(text.into(codePageUtf16le, utf16))) text.converter.m_hadError = true;
  return appendReversed(utf16.getData2(), utf16.getSize(), 2, text.out);
}

// contract: what has no place in ISO-2022 becomes the geta mark, or goes, without a
// word; a first step that failed shows, and what it gave is written all the same.
// Mail writers send what there is.
bool toIso2022(const Conversion& text) {
  const int wrapped = text.to.wrapped();
  ScratchBuffer encoded;
  const bool ok = convertByRoute(text.into(wrapped, encoded));
  if (!ok) text.converter.m_hadError = true;
  if (encoded.getSize() == 0) return ok;
  if (!fitsInt(encoded.getSize())) return false;
  const auto length = static_cast<int>(encoded.getSize());
  const bool isWrapped =
      wrapped == codePageShiftJis
          ? Japanese().ShiftJisToIso2022(encoded.getData2(), length, text.out, text.log)
          : Korean().KscToIso2022(encoded.getData2(), length, text.out);
  return isWrapped && ok;
}

bool takeDestinationRoute(const Conversion& text) {
  if (text.to == codePageUtf7) return toUtf7(text);
  if (isUtf32(text.to)) return toUtf32(text);
  if (text.to == codePageUtf16be) return toUtf16be(text);
  if (text.to.wrapped()) return toIso2022(text);
  return convertByRoute(text);
}

bool convertOrdered(const Conversion& text) {
  if (text.from.wrapped()) return fromIso2022(text);

  text.converter.m_honorPassthroughMarkers = false;
  text.converter.m_fromCodePage = text.from;
  text.converter.m_toCodePage = text.to;
  return takeDestinationRoute(text);
}

// contract: the text of this page is turned into logical order before it is decoded
// and not turned back when it is encoded. Callers who read old documents get text
// that is fit for any display; none writes such documents.
bool convertAccepted(const Conversion& text) {
  if (!text.from.traits().isInMacArabicOrder) return convertOrdered(text);
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
    // contract: between a code page and itself all is copied, a mark and ill-formed
    // text too, and the result is true even when there was no room. Callers who
    // pass a text on as it came rely on nothing being taken from it.
    if (from == to) {
      out.append(data, numBytes);
      return true;
    }
    if (!isAccepted(from) || !isAccepted(to)) return false;
    const bool ok = convertAccepted({*this, PageRef(from), PageRef(to), data, numBytes, out, log});
    if (!ok) m_hadError = true;
    return ok;
  });
}

bool EncodingConvert::EncConvertWithPreamble(int fromCodePage, int toCodePage,
                                             const unsigned char* data, unsigned int numBytes,
                                             DataBuffer& out, LogBase& log) {
  // contract: the mark is written whatever follows, be it nothing or a refusal, and a
  // mark that finds no room goes without a word. Writers of files rely on an empty
  // text being a file that says what it is.
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
