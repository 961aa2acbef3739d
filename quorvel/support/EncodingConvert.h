#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"
#include "quorvel/base/LogBase.h"
#include "quorvel/base/StringBuffer.h"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/UnicodeLookup.h"

namespace quorvel {

/// Converts bytes in one character encoding into bytes in another.
///
/// Encodings are named by Windows-style code page numbers (1252, 932, 1200 for
/// UTF-16LE, 65001 for UTF-8) or by charset names. Every conversion appends to
/// `out`, never clears it, reports into `log`, and returns true on success;
/// afterwards `m_hadError` tells whether the error policy had to act. The input
/// must not lie in `out`, whose storage moves as it grows.
///
/// An object is cheap, holds only its caller's settings and serves any number
/// of conversions, one thread at a time; any number of objects may convert at
/// once.
///
/// Nothing here throws by itself; what a log throws passes through. When memory
/// runs out a conversion returns false at once and what it had appended stays.
/// Three small things go without a word then: a copy between equal code pages,
/// a byte-order mark, and what an error action writes at the very end.
class QUORVEL_API EncodingConvert {
 public:
  EncodingConvert() = default;
  virtual ~EncodingConvert();
  EncodingConvert(const EncodingConvert&) = default;
  EncodingConvert& operator=(const EncodingConvert&) = default;

  // --- Settings ---------------------------------------------------------

  /// What becomes of source text that cannot be converted (default 0):
  ///
  /// | action  | what is written                                            |
  /// |---------|------------------------------------------------------------|
  /// | 0       | nothing                                                    |
  /// | 1       | the bytes of `setDefBytes`                                 |
  /// | 2       | "&#x", the source bytes in hexadecimal, ";"                |
  /// | 3, 4, 5 | nothing                                                    |
  /// | 6       | the text converted to the code page of `setAltDestCodepage`|
  /// | 7       | the source bytes as they are                               |
  /// | 8       | from a single-byte source: the byte and a zero byte        |
  ///
  /// Any other value is stored too and writes nothing.
  void setErrorAction(int action);

  /// The code page that error action 6 converts to; 0 (the default) means the
  /// destination of the conversion. The number is not checked.
  void setAltDestCodepage(int codePage);

  /// The substitution for error action 1, already in the destination encoding:
  /// the first 100 bytes at most. A null pointer keeps the old bytes and
  /// changes only the count; a negative count is taken as 0.
  ///
  /// More than five bytes do not cross a conversion from UTF-8 or a code page to a
  /// code page whole: they are read as UTF-16 on the way, and each unit of them that
  /// has no place there is substituted again (one bad byte becomes up to 5000). Two
  /// bytes or four cross, but an odd number of such errors costs the last character
  /// of the text. One, three or five bytes are safe.
  void setDefBytes(const unsigned char* bytes, int count);

  // --- Conversion by code page number -----------------------------------

  /// Converts `numBytes` bytes at `data`. A code page of 0 means that of the
  /// other side; equal code pages copy; numbers below 100 other than 37 are
  /// refused. Input of 7 bytes or more that begins with "%PDF-1" is copied
  /// whatever the code pages. ISO-2022 text of 2 GiB or more is refused.
  ///
  /// From UTF-8, UTF-32 or a code page to a code page, U+EFFD and what follows it
  /// may become raw bytes of the destination (`m_emitPassthroughMarkers`): look for
  /// what must not be there in the output, not in the source.
  bool EncConvert(int fromCodePage, int toCodePage, const unsigned char* data,
                  unsigned int numBytes, DataBuffer& out, LogBase& log);

  /// As `EncConvert`, after the destination's byte-order mark (UTF-8, UTF-16LE
  /// and UTF-16BE have one here), which is written whatever follows.
  bool EncConvertWithPreamble(int fromCodePage, int toCodePage, const unsigned char* data,
                              unsigned int numBytes, DataBuffer& out, LogBase& log);

  // --- Conversion by charset name or platform code page -----------------

  /// From a charset name to a charset name. False, with nothing logged or
  /// written, when either is unknown. The last argument has no effect.
  bool ChConvert(StringBuffer& fromCharset, StringBuffer& toCharset, const unsigned char* data,
                 unsigned int numBytes, DataBuffer& out, LogBase& log, bool);

  /// From a charset name; an unknown one is logged and read as UTF-8.
  bool ChConvert2(StringBuffer& fromCharset, int toCodePage, const unsigned char* data,
                  unsigned int numBytes, DataBuffer& out, LogBase& log);
  bool ChConvert2p(const char* fromCharset, int toCodePage, const unsigned char* data,
                   unsigned int numBytes, DataBuffer& out, LogBase& log);

  /// To a charset name; an unknown one silently becomes UTF-8.
  bool ChConvert3(int fromCodePage, StringBuffer& toCharset, const unsigned char* data,
                  unsigned int numBytes, DataBuffer& out, LogBase& log);
  bool ChConvert3p(int fromCodePage, const char* toCharset, const unsigned char* data,
                   unsigned int numBytes, DataBuffer& out, LogBase& log);
  bool ChConvert3_withPreamble(int fromCodePage, StringBuffer& toCharset, const unsigned char* data,
                               unsigned int numBytes, DataBuffer& out, LogBase& log);

  /// From or to the platform's ANSI or OEM code page (see `Psdk`). A negative
  /// length counts as 0.
  bool AnsiToMultiByte(int toCodePage, const char* data, int numBytes, DataBuffer& out,
                       LogBase& log);
  bool MultiByteToAnsi(int fromCodePage, const unsigned char* data, int numBytes, DataBuffer& out,
                       LogBase& log);
  bool OemToMultiByte(int toCodePage, const char* data, int numBytes, DataBuffer& out,
                      LogBase& log);
  bool MultiByteToOem(int fromCodePage, const unsigned char* data, int numBytes, DataBuffer& out,
                      LogBase& log);

  // --- The steps of a conversion ----------------------------------------

  /// Converts by way of UTF-16LE, both code pages resolved: strips the mark of
  /// a Unicode source, normalises it and takes one of the routes.
  bool convert_a(int fromCodePage, int toCodePage, const unsigned char* data, unsigned int numBytes,
                 DataBuffer& out, LogBase& log);

  /// UTF-8 to UTF-16. Ill-formed input goes through the error action; false
  /// only when memory runs out.
  bool cv_utf8_to_utf16(const unsigned char* data, unsigned int numBytes, DataBuffer& out,
                        LogBase& log);

  /// UTF-16 in host byte order to UTF-8. U+0000 is dropped, unpaired
  /// surrogates are written as three bytes each. False for an odd `numBytes`
  /// (the last byte is ignored) or when memory runs out.
  bool cv_utf16_to_utf8(const unsigned char* data, unsigned int numBytes, DataBuffer& out,
                        LogBase& log);

  /// Decodes a table-driven code page to UTF-16LE. Bytes without a mapping go
  /// through the error action and leave the result true; it is false for a code
  /// page without a table and when memory runs out.
  bool convertToUnicodeHC(int fromCodePage, const unsigned char* in, unsigned int inLen,
                          DataBuffer& out, LogBase& log);

  /// Encodes UTF-16LE in a table-driven code page. The result is false when any
  /// unit had no mapping, whatever the error action wrote for it, for a code
  /// page without a table and when memory runs out. Surrogates are units like
  /// any other; half a unit at the end is ignored.
  bool convertFromUnicodeHC(int toCodePage, const unsigned char* in, unsigned int inLen,
                            DataBuffer& out, LogBase& log);

  /// Decodes single-byte text with a lookup. False only when memory runs out.
  bool convertToUnicodeByLookup(UnicodeLookup& lookup, const unsigned char* in, unsigned int inLen,
                                DataBuffer& out, LogBase& log);

  /// Decodes multibyte text with a to-Unicode table. False when `hc` is null,
  /// which is logged, or memory runs out.
  bool convertToUnicodeHCVar(HashConvert* hc, const unsigned char* in, unsigned int inLen,
                             DataBuffer& out, LogBase& log);

  /// Encodes UTF-16LE with a from-Unicode table; false when that is null.
  bool convertFromUnicodeHC2(HashConvert* table, const unsigned char* in, unsigned int inLen,
                             DataBuffer& out, LogBase& log);

  // --- Tables -----------------------------------------------------------

  /// Make sure that the process-wide table of a code page exists, in the one
  /// direction or the other. It is built on first use and shared by all
  /// converters; any number of threads may ask at once. False only when memory
  /// ran out, which leaves no table: a number without one is fine.
  static bool ensureHashToUnicode(int codePage, LogBase& log);
  static bool ensureHashFromUnicode(int codePage, LogBase& log);

  /// As above, but only for 1250 to 1258, or 28591 to 28605; any other number
  /// is fine and nothing is done for it.
  static bool ensureHashToUnicode1250(int codePage, LogBase& log);
  static bool ensureHashToUnicode8859(int codePage, LogBase& log);

  /// As `ensureHashFromUnicode`, but for none of 37, 437, 1250 to 1258, 28591
  /// to 28605 and the multibyte pages.
  static bool ensureHashFromUnicode2(int codePage, LogBase& log);

  /// Frees the process-wide tables, all but those of 28600 and 28601; they are
  /// built again on demand. No conversion may be in progress.
  static void cleanupMemory();

  /// Fills `table` from packed text: a flag ("x" stored, else compressed) and
  /// base64. Text that cannot be unpacked leaves the table as it was. False only
  /// when memory runs out; then the table may lack mappings.
  static bool buildHash(const char* packed, HashConvert& table, bool fromUnicode, LogBase& log);

  /// Fills `table` from the list of mappings, or the list of changes, at
  /// `body`, which must end as such a list ends. False as above.
  static bool buildFromComplete(const unsigned char* body, HashConvert& table, bool fromUnicode,
                                LogBase& log);
  static bool buildFromDiffs(const unsigned char* body, HashConvert& table, LogBase& log);

  /// Flattens the single bytes of a to-Unicode table; returns its lower-ASCII
  /// flag.
  static bool buildSingleByteLookup(HashConvert& hc, UnicodeLookup& lookup, LogBase& log);

  // --- Error policy -----------------------------------------------------

  /// Appends each of `count` bytes as two upper-case hexadecimal digits; null
  /// or a count of 0 or less appends nothing.
  void appendHexData(const unsigned char* bytes, int count, DataBuffer& out);

  /// Carries out the error action for the one byte at `p`.
  void handleErrorFromSingleByte(const unsigned char* p, DataBuffer& out, LogBase& log);

  /// Carries out the error action for the UTF-16 unit (two bytes) at `p`.
  void handleErrorFromUnicode(const unsigned char* p, DataBuffer& out, LogBase& log);

  /// Carries out the error action for the UTF-8 sequence at `p`, as long as
  /// its lead byte announces and `numBytesLeft` allows. Returns that length,
  /// the number of bytes to skip. For a null pointer or a `numBytesLeft` of 0
  /// nothing is done and the result is 0.
  int handleErrorFromUtf8(const unsigned char* p, int numBytesLeft, DataBuffer& out, LogBase& log);

  /// Carries out the error action for the multibyte sequence at `p`: two bytes
  /// for the double-byte code pages, else one. Returns the number of bytes to
  /// skip.
  int handleErrorFromUnknown(const unsigned char* p, DataBuffer& out, LogBase& log);

  // --- Fields -----------------------------------------------------------

  /// Whether a surrogate pair may become one UTF-8 sequence of four bytes; it
  /// becomes two of three bytes when this or `g_allow_4byte_utf8` is false.
  bool m_allow4ByteUtf8 = true;
  int m_errorAction = 0;               ///< see `setErrorAction`
  int m_altDestCodepage = 0;           ///< see `setAltDestCodepage`
  int m_numDefBytes = 0;               ///< number of substitution bytes, at most 100
  unsigned char m_defBytes[100] = {};  ///< see `setDefBytes`
  int m_fromCodePage = 0;              ///< source of the conversion under way
  int m_toCodePage = 0;                ///< destination of the conversion under way

  /// While the source is decoded into a UTF-16 pivot: substitutions carry a
  /// marker (FD EF and a count byte), so that they cross the pivot unchanged.
  bool m_emitPassthroughMarkers = false;

  /// While the pivot is encoded: marked bytes are copied as they are, and error
  /// action 6 is not carried out for single-byte, UTF-8 and unknown sources.
  bool m_honorPassthroughMarkers = false;

  /// Whether in the last conversion anything had no mapping or was ill-formed,
  /// or, once its code pages were accepted, it failed. What a route drops by
  /// design (U+0000 on the way to UTF-8, half a unit at the end) does not
  /// count. After error action 6 it tells of the nested conversion.
  bool m_hadError = false;
};

}  // namespace quorvel
