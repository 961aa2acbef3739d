#pragma once

// The flat tables of the code pages: all that a loop may do without asking is in
// them, and 0 stands for everything else. `pages/FlatTables.cpp` fills them.

namespace quorvel::kernel {

inline constexpr unsigned int unitCount = 0x10000;

/// The unit that no flat table encodes, whatever the page says of it: the caller
/// may read a marker there.
inline constexpr unsigned int rawBytesUnit = 0xEFFD;

/// How single bytes are decoded.
struct BytesToUnits {
  /// The unit of each byte, 0 for none; that of the byte 00 is U+0000.
  unsigned short units[256];

  // The same for the loops that do many bytes at once.
  unsigned char lows[256];
  unsigned char highs[256];
  bool hasAsciiBelow80;  ///< 01 to 7F are U+0001 to U+007F
  bool hasUnitsFrom100;  ///< some are U+0100 or above

  /// The byte of the one unit that is, where it is one, as in EBCDIC with the euro
  /// sign; else 0.
  unsigned char byteFrom100;
};

/// How multibyte text is decoded. A text touches the rows of its own lead bytes.
struct PairsToUnits {
  /// By first byte << 8 | second byte. A row whose first byte leads no pair has
  /// the unit of that byte alone in every column; where ASCII stands for itself,
  /// such a row has it in column 0 only.
  unsigned short units[unitCount];

  unsigned short bytes[256];  ///< the units of single bytes, those of leads too
  bool isLead[256];           ///< whether any pair begins with a byte

  /// All leads are in these two ranges, and perhaps others between them.
  struct Range {
    unsigned char first;
    unsigned char last;
  } leads[2];

  /// The bytes 00 to 7F are U+0000 to U+007F and lead nothing.
  bool isLowerAscii;
};

/// How UTF-16 is encoded with codes of one or two bytes: for each unit the code
/// as it is written, the first byte in the low half. Rows that share were no
/// smaller where a page has 20 000 units, and slower.
struct UnitsToPairs {
  unsigned short codes[unitCount];
};

/// As `UnitsToPairs` where every code is one byte. What such a page maps ends early,
/// so the codes do too: one for each unit below `count`, of which there is U+0000.
struct UnitsToBytes {
  const unsigned char* codes;
  unsigned int count;
};

}  // namespace quorvel::kernel
