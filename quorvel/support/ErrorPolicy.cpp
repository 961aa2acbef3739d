// What becomes of source text that cannot be converted. The loops that move
// bytes only find such text; everything that is written in its place by the
// four handlers is written here.

#include "quorvel/support/ErrorPolicy.hpp"

#include <algorithm>
#include <iterator>

#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/PassthroughMarker.hpp"
#include "quorvel/support/ScopedRestore.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

/// The source text that a handler was called for.
struct Offender {
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

// The marker in the byte order in which the table encoder looks for it in
// UTF-16. The UTF-16 to UTF-8 transcoder looks for the other order; the two
// differ on purpose.
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

void substitute(const EncodingConvert& converter, DataBuffer& out) {
  if (substitutionLength(converter) == 0) return;
  appendMarker(converter, substitutionLength(converter), out);
  appendSubstitution(converter, out);
}

void writeHexReference(const EncodingConvert& converter, const Offender& offender,
                       DataBuffer& out) {
  // The count announces the source length plus 4, not the length that is
  // written: readers of these streams rely on it.
  appendMarker(converter, offender.length + 4, out);
  appendHexReference(offender.bytes, static_cast<unsigned int>(offender.length), out);
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
  converter.m_errorAction = 0;
  const int alternate = converter.m_altDestCodepage;
  const bool converted =
      converter.EncConvert(offender.codePage, alternate ? alternate : converter.m_toCodePage,
                           offender.bytes, static_cast<unsigned int>(offender.length), out, log);
  // The nested conversion starts by clearing the flag; one that then refuses
  // the code page leaves it so.
  if (!converted) converter.m_hadError = true;
}

void passThrough(const EncodingConvert& converter, const Offender& offender, DataBuffer& out) {
  appendMarker(converter, offender.length, out);
  out.append(offender.bytes, static_cast<unsigned int>(offender.length));
}

enum class Reconversion { always, unlessEncodingPivot };

void applyErrorAction(EncodingConvert& converter, const Offender& offender,
                      Reconversion reconversion, DataBuffer& out, LogBase& log) {
  switch (converter.m_errorAction) {
    case actionSubstitute:
      substitute(converter, out);
      break;
    case actionHex:
      writeHexReference(converter, offender, out);
      break;
    case actionReconvert:
      if (reconversion == Reconversion::always || !converter.m_honorPassthroughMarkers) {
        reconvert(converter, offender, out, log);
      }
      break;
    case actionPassThrough:
      passThrough(converter, offender, out);
      break;
    default:
      break;
  }
}

}  // namespace

void appendSubstitution(const EncodingConvert& converter, DataBuffer& out) {
  out.append(converter.m_defBytes, static_cast<unsigned int>(substitutionLength(converter)));
}

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
  m_hadError = true;
  if (m_errorAction == actionWiden) {
    out.appendChar(*p);
    out.appendChar(0);
    return;
  }
  applyErrorAction(*this, {p, 1, m_fromCodePage}, Reconversion::unlessEncodingPivot, out, log);
}

// Alone among the handlers this one converts again even while a pivot is being
// encoded; and its hexadecimal digits show the unit's bytes as they are stored.
void EncodingConvert::handleErrorFromUnicode(const unsigned char* p, DataBuffer& out,
                                             LogBase& log) {
  m_hadError = true;
  applyErrorAction(*this, {p, 2, codePageUtf16le}, Reconversion::always, out, log);
}

int EncodingConvert::handleErrorFromUtf8(const unsigned char* p, int numBytesLeft, DataBuffer& out,
                                         LogBase& log) {
  if (!p || numBytesLeft == 0) return 0;
  m_hadError = true;
  const int length = _qvUtf::NumUtf8Bytes(p, numBytesLeft);
  applyErrorAction(*this, {p, length, codePageUtf8}, Reconversion::unlessEncodingPivot, out, log);
  return length;
}

int EncodingConvert::handleErrorFromUnknown(const unsigned char* p, DataBuffer& out, LogBase& log) {
  m_hadError = true;
  if (findCodePage(m_fromCodePage).traits.bytesPerError == 1) {
    handleErrorFromSingleByte(p, out, log);
    return 1;
  }
  applyErrorAction(*this, {p, 2, m_fromCodePage}, Reconversion::unlessEncodingPivot, out, log);
  return 2;
}

}  // namespace quorvel
