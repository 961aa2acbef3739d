#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"
#include "quorvel/base/LogBase.h"

namespace quorvel {

/// ISO-2022-JP (RFC 1468, with half-width katakana) to and from Shift_JIS.
/// Both directions append to `out`, log nothing and return false only when
/// memory runs out; a negative length counts as 0.
class QUORVEL_API Japanese {
 public:
  bool Iso2022ToShiftJis(const unsigned char* p, int n, DataBuffer& out, LogBase& log);
  bool ShiftJisToIso2022(const unsigned char* p, int n, DataBuffer& out, LogBase& log);

  /// Whether the last call left something out, wrote the geta mark for
  /// something, or met a set that it does not know.
  bool m_hadError = false;

  /// The 376 two-byte Shift_JIS codes (lead byte first) for rows 89 to 92 of
  /// ISO-2022-JP, row by row, 94 cells each. Unpacked on the first call and
  /// shared by all callers until `releaseLastBlock`; null when memory runs
  /// out. Any number of threads may call it.
  static const unsigned char* GetSjisFrom2022_LastBlock();

  /// Frees the block of `GetSjisFrom2022_LastBlock`; the next call unpacks it
  /// again. No conversion may be in progress.
  static void releaseLastBlock();
};

}  // namespace quorvel
