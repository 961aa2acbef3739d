#pragma once

#include <memory>

#include "quorvel/base/HashConvert.h"
#include "quorvel/support/PassthroughMarker.h"

namespace quorvel {

/// The unit that announces raw bytes to the table encoder: the marker's bytes,
/// low byte first.
inline constexpr unsigned int rawBytesUnit = passthroughMarker[0] | passthroughMarker[1] << 8;

// Flat indices over a finished table, for the loops: all that a loop may do
// without asking is in them, and 0 stands for everything else. Read-only once
// made.

/// A multibyte table to Unicode. The units of two-byte codes stand in one array
/// of 128 KiB, of which a text touches the rows of its own lead bytes; where
/// ASCII stands for itself there are no codes with an ASCII lead byte.
class PairIndex {
 public:
  /// Null when memory runs out.
  static std::unique_ptr<PairIndex> of(const HashConvert& toUnicode);

  unsigned int unitOfPair(unsigned int lead, unsigned int trail) const {
    return m_pairs[lead << 8 | trail];
  }
  unsigned int unitOfByte(unsigned int byte) const { return m_bytes[byte]; }
  bool isLowerAscii() const { return m_isLowerAscii; }

 private:
  PairIndex() = default;

  std::unique_ptr<unsigned short[]> m_pairs;
  unsigned short m_bytes[256];
  bool m_isLowerAscii;
};

/// A table from Unicode with codes of one or two bytes: for each unit the code
/// as it is written, the first byte in the low half, in one array of 128 KiB.
/// Rows that share were no smaller where a page has 20 000 units, and slower.
/// U+0000 and the unit that announces raw bytes are not in it.
class CodeIndex {
 public:
  /// Null when memory runs out.
  static std::unique_ptr<CodeIndex> of(const HashConvert& fromUnicode);

  static constexpr unsigned int mostBytes = 2;
  unsigned int codeOf(unsigned int unit) const { return m_codes[unit]; }

 private:
  CodeIndex() = default;

  std::unique_ptr<unsigned short[]> m_codes;
};

/// As `CodeIndex` where every code is one byte: rows of 256 units, of which a
/// page has some three to nine.
class ByteIndex {
 public:
  /// Null when memory runs out.
  static std::unique_ptr<ByteIndex> of(const HashConvert& fromUnicode);

  static constexpr unsigned int mostBytes = 1;
  unsigned int codeOf(unsigned int unit) const { return m_rows[m_rowOf[unit >> 8]][unit & 0xFF]; }

 private:
  ByteIndex() = default;

  unsigned char m_rowOf[256];
  std::unique_ptr<unsigned char[][256]> m_rows;
};

}  // namespace quorvel
