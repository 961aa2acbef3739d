#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"

namespace quorvel {

/// A growable, NUL-terminated string of 8-bit characters.
///
/// As with `DataBuffer`, an operation that cannot have its memory returns
/// false and leaves the content as it was; nothing here throws.
class QUORVEL_API StringBuffer {
 public:
  StringBuffer() = default;

  /// Appends NUL-terminated text; null appends nothing.
  bool append(const char* text);

  /// Appends exactly `count` bytes, which need not be NUL-terminated.
  bool appendN(const char* text, unsigned int count);

  /// Empties the string and keeps its storage for reuse.
  void weakClear();

  /// The content with a terminating NUL; never null, valid until the next
  /// change.
  const char* getString() const;

  /// Number of bytes before the terminating NUL that closes the content.
  unsigned int getSize() const;

 private:
  DataBuffer m_text;  // a NUL stands behind its content unless that is empty
};

}  // namespace quorvel
