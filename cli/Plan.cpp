#include "cli/Plan.h"

#include <algorithm>
#include <string_view>

#include "quorvel/base/NullLog.h"
#include "quorvel/base/_qvUtf.h"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/support/EncodingConvert.h"

namespace qvconv {

namespace {

using quorvel::_qvUtf;
using quorvel::DataBuffer;

constexpr int utf16le = 1200;
constexpr int utf16be = 1201;
constexpr int usAscii = 20127;
constexpr int gsm = 55000;
constexpr int utf7 = 65000;
constexpr int utf8 = 65001;

constexpr bool isUtf16(int codePage) { return codePage == utf16le || codePage == utf16be; }

constexpr bool isUtf32(int codePage) {
  return codePage == 12000 || codePage == 12001 || codePage == 65005 || codePage == 65006;
}

int hostUtf16() { return quorvel::qvIsLittleEndian() ? utf16le : utf16be; }

std::string_view viewOf(const DataBuffer& text) {
  return {reinterpret_cast<const char*>(text.getData2()), text.getSize()};
}

// --- The way of one conversion -------------------------------------------

bool byLibrary(int from, int to, const DataBuffer& text, DataBuffer& out) {
  quorvel::EncodingConvert converter;
  quorvel::NullLog log;
  return converter.EncConvert(from, to, text.getData2(), text.getSize(), out, log) &&
         !converter.m_hadError;
}

// The library reads UTF-7 as UTF-16 of the host and then has no way on to
// UTF-16, which its result would report as a failure.
bool utf7ToUtf16(int to, DataBuffer& text, DataBuffer& out) {
  if (to == hostUtf16()) return _qvUtf::Utf7ToUtf16_xe(text, out);
  DataBuffer units;
  const bool wellFormed = _qvUtf::Utf7ToUtf16_xe(text, units);
  const unsigned int size = units.getSize();
  unsigned char* room = out.growBy(size);
  if (!room) return false;
  for (unsigned int i = 0; i + 1 < size; i += 2) {
    room[i] = *units.getDataAt2(i + 1);
    room[i + 1] = *units.getDataAt2(i);
  }
  out.keepWritten(size);
  return wellFormed;
}

bool convert(int from, int to, DataBuffer& text, DataBuffer& out);

bool inTwoSteps(int from, int between, int to, DataBuffer& text, DataBuffer& out) {
  DataBuffer scratch;
  const bool first = convert(from, between, text, scratch);
  return convert(between, to, scratch, out) && first;
}

// The library does not pass on whether GSM text was well-formed, or whether
// all of a text has a place in GSM.
bool fromGsm(int to, const DataBuffer& text, DataBuffer& out) {
  DataBuffer scratch;
  quorvel::NullLog log;
  const bool known = _qvUtf::gsm_to_utf8(text.getData2(), text.getSize(), scratch, log);
  return convert(utf8, to, scratch, out) && known;
}

bool toGsm(int from, DataBuffer& text, DataBuffer& out) {
  if (from != utf8) return inTwoSteps(from, utf8, gsm, text, out);
  const unsigned int mark = viewOf(text).starts_with("\xEF\xBB\xBF") ? 3 : 0;
  quorvel::NullLog log;
  return text.getSize() == mark ||
         _qvUtf::utf8_to_gsm(text.getDataAt2(mark), text.getSize() - mark, out, log);
}

bool convert(int from, int to, DataBuffer& text, DataBuffer& out) {
  if (from == to) return out.append(text);
  if (from == gsm) return fromGsm(to, text, out);
  if (to == gsm) return toGsm(from, text, out);
  if (from == utf7 && isUtf16(to)) return utf7ToUtf16(to, text, out);
  // Exchanging the bytes of each unit is the same both ways; only the way from
  // little-endian to big-endian also has a result that tells of it.
  if (from == utf16be && to == utf16le) return byLibrary(utf16le, utf16be, text, out);
  if (from == utf16be && to == utf7) return inTwoSteps(from, utf16le, to, text, out);
  return byLibrary(from, to, text, out);
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
  if (isUtf16(from)) return losesInUtf8(text, from == utf16be);
  if (from == utf7) {
    DataBuffer units;
    return !_qvUtf::Utf7ToUtf16_xe(text, units) || losesInUtf8(units, hostUtf16() == utf16be);
  }
  // These never are UTF-16 on their way. In all other encodings a zero byte is
  // U+0000.
  if (from == utf8 || from == gsm || from == usAscii || isUtf32(from)) return false;
  return viewOf(text).find('\0') != std::string_view::npos;
}

bool losesSilently(int from, int to, DataBuffer& text) {
  const std::string_view bytes = viewOf(text);
  if (bytes.size() % unitSize(from) != 0) return true;
  if (from == usAscii && std::any_of(bytes.begin(), bytes.end(), [](char c) {
        return static_cast<unsigned char>(c) >= 0x80;
      })) {
    return true;
  }
  const bool throughUtf8 = to == utf8 || to == gsm || isUtf32(to);
  return throughUtf8 && losesOnTheWayThroughUtf8(from, text);
}

// --- What the text says of itself ----------------------------------------

// The byte order of UTF-16 text: its mark goes before what the user says.
int labelledByMark(int codePage, const DataBuffer& text) {
  if (!isUtf16(codePage)) return codePage;
  if (viewOf(text).starts_with("\xFF\xFE")) return utf16le;
  if (viewOf(text).starts_with("\xFE\xFF")) return utf16be;
  return codePage;
}

// The library copies such a document whatever the encodings.
bool isPdf(const DataBuffer& text) {
  return text.getSize() >= 7 && viewOf(text).starts_with("%PDF-1");
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
