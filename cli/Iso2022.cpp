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

}  // namespace

bool isIso2022(int codePage) {
  return isIso2022Jp(codePage) || codePage == quorvel::codePageIso2022Kr;
}

int pageBehindIso2022(int codePage) {
  return isIso2022Jp(codePage) ? quorvel::codePageShiftJis : quorvel::codePageKorean;
}

bool readIso2022(int codePage, const DataBuffer& text, DataBuffer& out) {
  if (isTooLong(text)) return false;
  if (isIso2022Jp(codePage)) {
    Japanese japanese;
    quorvel::NullLog log;
    return japanese.Iso2022ToShiftJis(text.getData2(), sizeOf(text), out, log) &&
           !japanese.m_hadError;
  }
  Korean korean;
  return korean.Iso2022ToKsc(text.getData2(), sizeOf(text), out) && !korean.m_hadError;
}

bool writeIso2022(int codePage, const DataBuffer& text, DataBuffer& out) {
  if (isTooLong(text)) return false;
  if (isIso2022Jp(codePage)) {
    Japanese japanese;
    quorvel::NullLog log;
    return japanese.ShiftJisToIso2022(text.getData2(), sizeOf(text), out, log) &&
           !japanese.m_hadError;
  }
  Korean korean;
  return korean.KscToIso2022(text.getData2(), sizeOf(text), out) && !korean.m_hadError;
}

}  // namespace qvconv
