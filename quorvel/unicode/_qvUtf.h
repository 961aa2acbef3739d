#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"
#include "quorvel/base/LogBase.h"

namespace quorvel {

/// When false, no conversion in the process writes UTF-8 sequences of four
/// bytes out of UTF-16; see `EncodingConvert::m_allow4ByteUtf8`. Set it before
/// the first conversion starts.
QUORVEL_API extern bool g_allow_4byte_utf8;

/// Transforms between the Unicode encoding forms, UTF-7 and the GSM alphabet.
///
/// All functions append to `out`. A transform finishes its input whatever it
/// meets and returns false when something in it was ill-formed or could not be
/// represented, or when memory ran out (only then does it stop early).
///
/// UTF-8 is that of RFC 3629: overlong forms, surrogates and values above
/// U+10FFFF are ill-formed, and each maximal subpart of an ill-formed sequence
/// (Unicode, section 3.9) counts as one error.
class QUORVEL_API _qvUtf {
 public:
  /// UTF-32 in host byte order to UTF-8. A value that is no Unicode scalar
  /// value becomes U+FFFD; an incomplete last unit is left out. Both make the
  /// result false.
  static bool Utf32ToUtf8(const DataBuffer& in, DataBuffer& out);

  /// As `Utf32ToUtf8`, from `count` 32-bit units at `p` (no alignment needed).
  static bool utf32ToUtf8(const unsigned char* p, unsigned int count, DataBuffer& out);

  /// UTF-8 to UTF-32, high byte first when `bigEndian`, else low byte first.
  /// Each ill-formed subpart becomes U+FFFD and makes the result false.
  static bool Utf8toUtf32(bool bigEndian, const DataBuffer& in, DataBuffer& out);

  /// As `Utf8toUtf32`, from `n` bytes at `p`.
  static bool utf8toUtf32(bool bigEndian, const unsigned char* p, unsigned int n, DataBuffer& out);

  /// Decodes UTF-7 (RFC 2152) to UTF-16 in host byte order. Any ASCII
  /// character may stand for itself. A byte above 7F becomes U+FFFD. The
  /// result is false for such a byte, for ill-formed base64 and for bits other
  /// than zero left over at the end of a run.
  static bool Utf7ToUtf16_xe(DataBuffer& in, DataBuffer& out);

  /// Encodes UTF-16 in host byte order as UTF-7 (RFC 2152). Set D and white
  /// space stand for themselves, set O and all others go in base64. Units are
  /// encoded as they stand, unpaired surrogates too; an incomplete last unit
  /// is left out and makes the result false.
  static bool Utf16XEToUtf7(DataBuffer& in, DataBuffer& out);

  /// Decodes the GSM 03.38 default alphabet (3GPP TS 23.038), one septet per
  /// byte, with its extension table, to UTF-8. A byte without a character
  /// becomes U+FFFD and makes the result false; an escape that no character of
  /// the extension table follows is such a byte, and what follows it is
  /// decoded by itself. Nothing is logged.
  static bool gsm_to_utf8(const unsigned char* p, unsigned int n, DataBuffer& out, LogBase& log);

  /// Encodes UTF-8 in the GSM 03.38 default alphabet, one septet per byte. A
  /// character outside the alphabet, and each ill-formed subpart, becomes "?"
  /// and makes the result false. Nothing is logged.
  static bool utf8_to_gsm(const unsigned char* p, unsigned int n, DataBuffer& out, LogBase& log);

  /// The length that the lead byte at `p` announces by its bit pattern (C0-DF
  /// 2, E0-EF 3, F0-F7 4, everything else 1), but no more than `n`; 0 when
  /// `n` is 0 or less.
  static int NumUtf8Bytes(const unsigned char* p, int n);

  /// Decodes the character at `p`: its first UTF-16 unit in the low 16 bits,
  /// the second, if it has one, in the high 16 bits. `consumed` becomes the
  /// length of the character. For ill-formed input the result is 0 and
  /// `consumed` the length of the maximal subpart, at least 1.
  ///
  /// It reads on only while the bytes continue a well-formed sequence, so a
  /// byte that is no continuation byte bounds it; the caller makes sure that
  /// one follows the end of its input.
  static unsigned int utf16FromUtf8(const unsigned char* p, unsigned int& consumed);

  /// Writes the UTF-8 form of `codePoint` to `out` (room for 4 bytes) and its
  /// length to `n`. A value that is no Unicode scalar value yields false, with
  /// `n` 0 and nothing written.
  static bool oneUtf32ToUtf8(unsigned int codePoint, char* out, unsigned int& n);
};

}  // namespace quorvel
