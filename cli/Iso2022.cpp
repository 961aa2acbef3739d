// ISO-2022 by the converters themselves, which tell what they left out; conversions of the
// library do not.

#include "cli/Iso2022.h"

#include <limits>

#include "quorvel/base/NullLog.h"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/unicode/Japanese.h"
#include "quorvel/unicode/Korean.h"

namespace qvconv {

namespace {

using quorvel::DataBuffer;
using quorvel::isIso2022Jp;
using quorvel::Japanese;
using quorvel::Korean;

// The converters count in an int.
bool isTooLong(const DataBuffer& text) {
  return text.getSize() > static_cast<unsigned int>(std::numeric_limits<int>::max());
}

int sizeOf(const DataBuffer& text) { return static_cast<int>(text.getSize()); }

using JapaneseWay = bool (Japanese::*)(const unsigned char*, int, DataBuffer&, quorvel::LogBase&);
using KoreanWay = bool (Korean::*)(const unsigned char*, int, DataBuffer&);

// Goes the way of the encoding. True when nothing was left out.
bool convert(int codePage, JapaneseWay japaneseWay, KoreanWay koreanWay, const DataBuffer& text,
             DataBuffer& out) {
  if (isTooLong(text)) return false;
  if (isIso2022Jp(codePage)) {
    Japanese japanese;
    quorvel::NullLog log;
    return (japanese.*japaneseWay)(text.getData2(), sizeOf(text), out, log) && !japanese.m_hadError;
  }
  Korean korean;
  return (korean.*koreanWay)(text.getData2(), sizeOf(text), out) && !korean.m_hadError;
}

}  // namespace

bool isIso2022(int codePage) {
  return isIso2022Jp(codePage) || codePage == quorvel::codePageIso2022Kr;
}

int pageBehindIso2022(int codePage) {
  return isIso2022Jp(codePage) ? quorvel::codePageShiftJis : quorvel::codePageKorean;
}

bool readIso2022(int codePage, const DataBuffer& text, DataBuffer& out) {
  return convert(codePage, &Japanese::Iso2022ToShiftJis, &Korean::Iso2022ToKsc, text, out);
}

bool writeIso2022(int codePage, const DataBuffer& text, DataBuffer& out) {
  return convert(codePage, &Japanese::ShiftJisToIso2022, &Korean::KscToIso2022, text, out);
}

}  // namespace qvconv
