#pragma once

#include "quorvel/base/Export.h"
#include "quorvel/base/LogBase.h"

namespace quorvel {

/// Opens a named log context and closes it at the end of the scope, whichever
/// way the scope is left.
class QUORVEL_API LogContextExitor {
 public:
  LogContextExitor(LogBase& log, const char* name, bool verbose);

  /// Passes an exception of the sink on, unless the scope is left by another one.
  ~LogContextExitor() noexcept(false);

  LogContextExitor(const LogContextExitor&) = delete;
  LogContextExitor& operator=(const LogContextExitor&) = delete;

 private:
  LogBase& m_log;
  int m_uncaught;  // exceptions under way when the context was opened
};

}  // namespace quorvel
