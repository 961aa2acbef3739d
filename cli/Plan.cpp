// Which calls convert between two encodings so that their results tell whether all of a
// text arrived. docs/behaviour.md has the table of what the results of the library say;
// where they say nothing, the text is looked at here or goes another way.

#include "cli/Plan.h"

#include <algorithm>
#include <string_view>

#include "cli/Iso2022.h"
#include "quorvel/base/NullLog.h"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/_qvUtf.h"

namespace qvconv {

namespace {

using namespace quorvel;

constexpr std::string_view markUtf8 = "\xEF\xBB\xBF";
constexpr std::string_view markUtf16le = "\xFF\xFE";
constexpr std::string_view markUtf16be = "\xFE\xFF";

constexpr bool isUnicode(int codePage) {
  return isUtf16(codePage) || isUtf32(codePage) || codePage == codePageUtf7 ||
         codePage == codePageUtf8;
}

std::string_view viewOf(const DataBuffer& text) {
  return {reinterpret_cast<const char*>(text.getData2()), text.getSize()};
}

// The library copies such a document whatever the encodings.
bool isPdf(const DataBuffer& text) {
  return text.getSize() >= 7 && viewOf(text).starts_with("%PDF-1");
}

// --- The way of one conversion -------------------------------------------

bool convert(int from, int to, DataBuffer& text, DataBuffer& out);

bool byLibrary(int from, int to, const DataBuffer& text, DataBuffer& out) {
  EncodingConvert converter;
  NullLog log;
  return converter.EncConvert(from, to, text.getData2(), text.getSize(), out, log) &&
         !converter.m_hadError;
}

bool inTwoSteps(int from, int between, int to, DataBuffer& text, DataBuffer& out) {
  DataBuffer scratch;
  const bool isWhole = convert(from, between, text, scratch);
  return convert(between, to, scratch, out) && isWhole;
}

// Exchanging the bytes of each unit is the same both ways; only the way from
// little-endian to big-endian also has a result that tells of it. A mark goes.
bool exchangeBytes(const DataBuffer& text, DataBuffer& out) {
  return byLibrary(codePageUtf16le, codePageUtf16be, text, out);
}

// The library reads UTF-7 as UTF-16 of the host and then has no way on to
// UTF-16, which its result would report as a failure.
bool utf7ToUtf16(int to, DataBuffer& text, DataBuffer& out) {
  if (to == codePageUtf16le) return _qvUtf::Utf7ToUtf16_xe(text, out);
  // With a mark to lose, a first character that looks like one stays.
  DataBuffer units;
  units.append(markUtf16le.data(), static_cast<unsigned int>(markUtf16le.size()));
  const bool isWhole = _qvUtf::Utf7ToUtf16_xe(text, units);
  return exchangeBytes(units, out) && isWhole;
}

// The library does not pass on whether GSM text was well-formed, or whether
// all of a text has a place in GSM.
bool fromGsm(int to, const DataBuffer& text, DataBuffer& out) {
  DataBuffer scratch;
  NullLog log;
  const bool isWhole = _qvUtf::gsm_to_utf8(text.getData2(), text.getSize(), scratch, log);
  return convert(codePageUtf8, to, scratch, out) && isWhole;
}

bool toGsm(int from, DataBuffer& text, DataBuffer& out) {
  if (from != codePageUtf8) return inTwoSteps(from, codePageUtf8, codePageGsm, text, out);
  const auto mark =
      static_cast<unsigned int>(viewOf(text).starts_with(markUtf8) ? markUtf8.size() : 0);
  NullLog log;
  return text.getSize() == mark ||
         _qvUtf::utf8_to_gsm(text.getDataAt2(mark), text.getSize() - mark, out, log);
}

// Between a code page and itself the library copies and looks at nothing, so
// the text is decoded too, for the answer alone.
bool convertOrCheck(int from, int to, DataBuffer& text, DataBuffer& out) {
  if (from != to) return convert(from, to, text, out);
  DataBuffer units;
  return out.append(text) && byLibrary(from, codePageUtf16le, text, units);
}

bool fromIso2022(int from, int to, const DataBuffer& text, DataBuffer& out) {
  DataBuffer scratch;
  // What only looks like a document once it is decoded is copied all the same.
  const bool isWhole = readIso2022(from, text, scratch) && !isPdf(scratch);
  return convertOrCheck(pageBehindIso2022(from), to, scratch, out) && isWhole;
}

bool toIso2022(int from, int to, DataBuffer& text, DataBuffer& out) {
  DataBuffer scratch;
  const bool isWhole = convertOrCheck(from, pageBehindIso2022(to), text, scratch);
  return writeIso2022(to, scratch, out) && isWhole;
}

// On the way from one table to another the library takes U+EFFD for a marker of
// its own and what follows for the marked bytes; out of UTF-16 it does not.
bool toTable(int from, int to, DataBuffer& text, DataBuffer& out) {
  DataBuffer units;
  const bool isWhole = convert(from, codePageUtf16le, text, units);
  EncodingConvert converter;
  NullLog log;
  return converter.convertFromUnicodeHC(to, units.getData2(), units.getSize(), out, log) && isWhole;
}

bool convert(int from, int to, DataBuffer& text, DataBuffer& out) {
  if (from == to) return out.append(text);
  if (from == codePageGsm) return fromGsm(to, text, out);
  if (to == codePageGsm) return toGsm(from, text, out);
  if (isIso2022(from)) return fromIso2022(from, to, text, out);
  if (isIso2022(to)) return toIso2022(from, to, text, out);
  if (from == codePageUtf7 && isUtf16(to)) return utf7ToUtf16(to, text, out);
  if (from == codePageUtf16be && to == codePageUtf16le) return exchangeBytes(text, out);
  if (from == codePageUtf16be && to == codePageUtf7) {
    return inTwoSteps(from, codePageUtf16le, to, text, out);
  }
  if (isUnicode(to) || isUtf16(from) || from == codePageUsAscii) {
    return byLibrary(from, to, text, out);
  }
  return toTable(from, to, text, out);
}

// --- What the library drops or passes without a word ---------------------

unsigned int unitSize(int codePage) { return isUtf16(codePage) ? 2 : isUtf32(codePage) ? 4 : 1; }

// Out of UTF-16, UTF-8 leaves U+0000 away and carries unpaired surrogates in
// three bytes each, which is not well-formed.
bool losesInUtf8(const DataBuffer& text, bool bigEndian) {
  const std::string_view bytes = viewOf(text);
  bool afterHigh = false;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto high = static_cast<unsigned char>(bytes[bigEndian ? i : i + 1]);
    const auto low = static_cast<unsigned char>(bytes[bigEndian ? i + 1 : i]);
    const bool isLowSurrogate = (high & 0xFC) == 0xDC;
    if ((high == 0 && low == 0) || isLowSurrogate != afterHigh) return true;
    afterHigh = (high & 0xFC) == 0xD8;
  }
  return afterHigh;
}

bool losesOnTheWayThroughUtf8(int from, DataBuffer& text) {
  if (isUtf16(from)) return losesInUtf8(text, from == codePageUtf16be);
  if (from == codePageUtf7) {
    DataBuffer units;
    return !_qvUtf::Utf7ToUtf16_xe(text, units) || losesInUtf8(units, false);
  }
  // In all encodings that become UTF-16 on their way a zero byte is U+0000.
  const bool staysOutOfUtf16 =
      from == codePageUtf8 || from == codePageGsm || from == codePageUsAscii || isUtf32(from);
  if (staysOutOfUtf16) return false;
  return viewOf(text).find('\0') != std::string_view::npos;
}

bool losesSilently(int from, int to, DataBuffer& text) {
  const std::string_view bytes = viewOf(text);
  if (bytes.size() % unitSize(from) != 0) return true;
  if (from == codePageUsAscii && std::any_of(bytes.begin(), bytes.end(), [](char c) {
        return static_cast<unsigned char>(c) >= 0x80;
      })) {
    return true;
  }
  const bool throughUtf8 = to == codePageUtf8 || to == codePageGsm || isUtf32(to);
  return throughUtf8 && losesOnTheWayThroughUtf8(from, text);
}

// --- What the text says of itself ----------------------------------------

// The byte order of UTF-16 text: its mark goes before what the user says.
int labelledByMark(int codePage, const DataBuffer& text) {
  if (!isUtf16(codePage)) return codePage;
  if (viewOf(text).starts_with(markUtf16le)) return codePageUtf16le;
  if (viewOf(text).starts_with(markUtf16be)) return codePageUtf16be;
  return codePage;
}

bool convertLabelled(int from, int to, DataBuffer& text, DataBuffer& out) {
  if (from == to || isPdf(text)) return byLibrary(from, to, text, out);
  const int labelled = labelledByMark(from, text);
  // The text already is in the byte order asked for; only its mark goes, as in
  // every other conversion.
  if (labelled == to) {
    return out.append(text.getDataAt2(2), text.getSize() - 2) && text.getSize() % 2 == 0;
  }
  const bool lost = losesSilently(labelled, to, text);
  return convert(labelled, to, text, out) && !lost;
}

}  // namespace

Outcome convertText(int from, int to, DataBuffer& text, DataBuffer& out) {
  const unsigned int before = out.getSize();
  if (convertLabelled(from, to, text, out)) return Outcome::all;
  return out.getSize() > before ? Outcome::some : Outcome::none;
}

}  // namespace qvconv
