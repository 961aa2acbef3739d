#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"

namespace quorvel {

/// ISO-2022-KR (RFC 1557) to and from KS C 5601 in its EUC-KR form. Both
/// directions append to `out` and return false only when memory runs out; a
/// negative length counts as 0.
class QUORVEL_API Korean {
 public:
  bool Iso2022ToKsc(const unsigned char* p, int n, DataBuffer& out);
  bool KscToIso2022(const unsigned char* p, int n, DataBuffer& out);

  /// Whether the last call left something out or met a set that it does not
  /// know.
  bool m_hadError = false;
};

}  // namespace quorvel
