// What becomes of source text that cannot be converted. The loops that move bytes
// only find such text and the steps (Transcode.cpp, Decode.cpp, Encode.cpp) only ask;
// everything that is written in its place is written here, by one switch over the
// actions. Four handlers, the converter's own members, and `handleUnmapped` lead
// to it.

#include "quorvel/support/ErrorPolicy.hpp"

#include <algorithm>
#include <iterator>

#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/support/ByteOrderMark.hpp"
#include "quorvel/support/MarkerFlags.hpp"
#include "quorvel/support/PassthroughMarker.hpp"
#include "quorvel/support/ScopedRestore.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

/// What kind of text cannot be converted, and in which step.
enum class Kind {
  singleByte,  ///< a byte, decoded
  multiByte,   ///< a pair of bytes, decoded
  utf8,        ///< a sequence, decoded
  unit,        ///< a UTF-16 unit, encoded
  pivotUnit,   ///< a unit of a pivot, encoded while markers are honoured
};

/// The source text that a handler was called for.
struct Offender {
  Kind kind;
  const unsigned char* bytes;
  int length;    ///< never negative
  int codePage;  ///< what the bytes are encoded in
};

unsigned char* putHex(const unsigned char* bytes, unsigned int count, unsigned char* out) {
  constexpr char digits[] = "0123456789ABCDEF";
  for (unsigned int i = 0; i < count; ++i) {
    *out++ = static_cast<unsigned char>(digits[bytes[i] >> 4]);
    *out++ = static_cast<unsigned char>(digits[bytes[i] & 0xF]);
  }
  return out;
}

// Appends "&#x", the bytes as hexadecimal digits, ";".
void appendHexReference(const unsigned char* bytes, unsigned int count, DataBuffer& out) {
  constexpr char opening[] = {'&', '#', 'x'};
  constexpr unsigned int around = sizeof opening + 1;
  const unsigned int length = around + 2 * count;
  unsigned char* room = out.growBy(length);
  if (!room) return;
  unsigned char* end =
      putHex(bytes, count, std::copy(std::begin(opening), std::end(opening), room));
  *end = ';';
  out.keepWritten(length);
}

// The marker as the table encoder looks for it (PassthroughMarker.hpp).
void appendMarker(const EncodingConvert& converter, int count, DataBuffer& out) {
  if (!converter.m_emitPassthroughMarkers) return;
  const unsigned char marker[] = {passthroughMarker[0], passthroughMarker[1],
                                  static_cast<unsigned char>(count)};
  out.append(marker, sizeof marker);
}

// How many of the substitution bytes there are to write; the field is open to
// everybody.
int substitutionLength(const EncodingConvert& converter) {
  return std::clamp(converter.m_numDefBytes, 0, static_cast<int>(std::size(converter.m_defBytes)));
}

void substitute(const EncodingConvert& converter, const Offender& offender, DataBuffer& out) {
  const int length = substitutionLength(converter);
  if (length == 0) return;
  if (offender.kind != Kind::pivotUnit) appendMarker(converter, length, out);
  out.append(converter.m_defBytes, static_cast<unsigned int>(length));
}

// contract: the count of the marker announces the source length plus 4, not the
// length that is written, so that what encodes the pivot copies too few bytes and
// goes on in the middle of a unit. Readers of these streams expect that very text.
//
// contract: the digits of a unit are its bytes as they stand, U+00E9 is `&#xE900;`;
// readers turn them round. Those of a pivot's unit are in the code page of the source.
void writeHexReference(const EncodingConvert& converter, const Offender& offender,
                       DataBuffer& out) {
  appendMarker(converter, offender.length + 4, out);
  appendHexReference(offender.bytes, static_cast<unsigned int>(offender.length), out);
}

// contract: once a unit has been written in the code page that the text came from,
// the rest of the text is encoded as if UTF-16 had been the source. Readers of hex
// references rely on it: in `a&#xE9;&#xE900;b` the second E9 is shown as a unit. A
// byte-order mark, or a text that came from 1200, is copied and changes nothing.
void endHonouring(EncodingConvert& converter, const unsigned char* unit) {
  const bool isCopied = converter.m_fromCodePage == codePageUtf16le;
  const bool isMark = markUtf16le.startsText(unit, 2) || markUtf16be.startsText(unit, 2);
  if (!isCopied && !isMark) setMarkers(converter, neither);
}

constexpr int noAction = 0;
static_assert(errorActionOf(noAction) == ErrorAction::drop);

// Writes the unit in the code page that the conversion comes from, with errors on
// the way dropped so that they cannot come back here.
void convertBack(EncodingConvert& converter, const Offender& offender, DataBuffer& out,
                 LogBase& log) {
  {
    const ScopedRestore action(converter.m_errorAction);
    const ScopedRestore from(converter.m_fromCodePage);
    const ScopedRestore to(converter.m_toCodePage);
    const ScopedMarkers markers(converter);
    converter.m_errorAction = noAction;
    converter.convert_a(codePageUtf16le, converter.m_fromCodePage, offender.bytes, 2, out, log);
  }
  endHonouring(converter, offender.bytes);
}

// The hexadecimal digits of the unit in the source code page, or nothing where it
// has no place there.
void writeSourceHex(EncodingConvert& converter, const Offender& offender, DataBuffer& out,
                    LogBase& log) {
  DataBuffer source;
  convertBack(converter, offender, source, log);
  if (source.getSize()) appendHexReference(source.getData2(), source.getSize(), out);
}

// contract: while a pivot is encoded, decoded text does not come back here, but a unit
// that has no mapping does: of the four handlers that for units does not ask the
// flag. Callers rely on the units of a pivot reaching the alternate code page.
bool mayReconvert(const EncodingConvert& converter, const Offender& offender) {
  const bool isUnit = offender.kind == Kind::unit || offender.kind == Kind::pivotUnit;
  return isUnit || !converter.m_honorPassthroughMarkers;
}

// Converts the offender to the alternate code page, with errors inside that
// conversion dropped so that they cannot come back here.
//
// contract: the marker flags stay as that conversion leaves them, honouring unset
// unless it copied or refused; and it begins by clearing the error flag, so that
// this then tells of it alone. Callers who ask the flag whether the replacement had
// a place in the alternate code page rely on that.
void reconvert(EncodingConvert& converter, const Offender& offender, DataBuffer& out,
               LogBase& log) {
  const ScopedRestore action(converter.m_errorAction);
  const ScopedRestore from(converter.m_fromCodePage);
  const ScopedRestore to(converter.m_toCodePage);
  converter.m_errorAction = noAction;
  const int alternate = converter.m_altDestCodepage;
  const bool converted =
      converter.EncConvert(offender.codePage, alternate ? alternate : converter.m_toCodePage,
                           offender.bytes, static_cast<unsigned int>(offender.length), out, log);
  // One that refuses the code page leaves the flag cleared.
  if (!converted) converter.m_hadError = true;
}

void passThrough(const EncodingConvert& converter, const Offender& offender, DataBuffer& out) {
  appendMarker(converter, offender.length, out);
  out.append(offender.bytes, static_cast<unsigned int>(offender.length));
}

// Unmarked: it is a unit, and crosses the pivot as one. What `reconvert` writes is
// unmarked too, though it is no unit.
void widen(const Offender& offender, DataBuffer& out) {
  out.appendChar(*offender.bytes);
  out.appendChar(0);
}

void act(EncodingConvert& converter, const Offender& offender, DataBuffer& out, LogBase& log) {
  const bool isOfPivot = offender.kind == Kind::pivotUnit;
  converter.m_hadError = true;
  switch (errorActionOf(converter)) {
    case ErrorAction::substitute:
      return substitute(converter, offender, out);
    case ErrorAction::hexReference:
      return isOfPivot ? writeSourceHex(converter, offender, out, log)
                       : writeHexReference(converter, offender, out);
    case ErrorAction::reconvert:
      if (mayReconvert(converter, offender)) reconvert(converter, offender, out, log);
      return;
    case ErrorAction::passThrough:
      return isOfPivot ? convertBack(converter, offender, out, log)
                       : passThrough(converter, offender, out);
    case ErrorAction::widen:
      // contract: for single bytes alone; callers set it for a source whose bytes
      // are to be Latin-1 where its page says nothing, and no other.
      if (offender.kind == Kind::singleByte) widen(offender, out);
      return;
    case ErrorAction::drop:
    case ErrorAction::skip:
      return;
  }
}

}  // namespace

void EncodingConvert::appendHexData(const unsigned char* bytes, int count, DataBuffer& out) {
  if (!bytes || count <= 0) return;
  const unsigned int length = 2 * static_cast<unsigned int>(count);
  unsigned char* room = out.growBy(length);
  if (!room) return;
  putHex(bytes, static_cast<unsigned int>(count), room);
  out.keepWritten(length);
}

void EncodingConvert::handleErrorFromSingleByte(const unsigned char* p, DataBuffer& out,
                                                LogBase& log) {
  act(*this, {Kind::singleByte, p, 1, m_fromCodePage}, out, log);
}

void EncodingConvert::handleErrorFromUnicode(const unsigned char* p, DataBuffer& out,
                                             LogBase& log) {
  act(*this, {Kind::unit, p, 2, codePageUtf16le}, out, log);
}

int EncodingConvert::handleErrorFromUtf8(const unsigned char* p, int numBytesLeft, DataBuffer& out,
                                         LogBase& log) {
  if (!p || numBytesLeft == 0) return 0;
  const int length = _qvUtf::NumUtf8Bytes(p, numBytesLeft);
  act(*this, {Kind::utf8, p, length, codePageUtf8}, out, log);
  return length;
}

int EncodingConvert::handleErrorFromUnknown(const unsigned char* p, DataBuffer& out, LogBase& log) {
  const int length = findCodePage(m_fromCodePage).traits.bytesPerError;
  const Kind kind = length == 1 ? Kind::singleByte : Kind::multiByte;
  act(*this, {kind, p, length, m_fromCodePage}, out, log);
  return length;
}

void handleUnmapped(EncodingConvert& converter, const unsigned char* unit, DataBuffer& out,
                    LogBase& log) {
  const Kind kind = converter.m_honorPassthroughMarkers ? Kind::pivotUnit : Kind::unit;
  act(converter, {kind, unit, 2, codePageUtf16le}, out, log);
}

}  // namespace quorvel
