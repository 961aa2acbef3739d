#pragma once

#include "quorvel/base/Export.h"

namespace quorvel {

/// A table from a byte to a UTF-16 unit: a single-byte code page decoded.
class QUORVEL_API UnicodeLookup {
 public:
  /// A new table without mappings, or null when memory cannot be had. The
  /// caller owns it and deletes it.
  static UnicodeLookup* createNewObject();

  virtual ~UnicodeLookup();
  UnicodeLookup(const UnicodeLookup&) = delete;
  UnicodeLookup& operator=(const UnicodeLookup&) = delete;

  unsigned short& operator[](unsigned int byte) { return m_units[byte]; }
  unsigned short operator[](unsigned int byte) const { return m_units[byte]; }

  /// The unit of each byte in host order; 0 for a byte without a mapping.
  unsigned short m_units[256] = {};

 protected:
  UnicodeLookup() = default;
};

}  // namespace quorvel
