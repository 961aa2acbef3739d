#pragma once

#include "quorvel/base/Export.h"

namespace quorvel {

class StringBuffer;

/// The sink that an operation reports into. An abstract interface: derive from
/// it, or use `NullLog`, `TextLog` or `StreamLog`.
///
/// A sink is used from the thread of the call it was passed to. It may throw:
/// every context and buffer is released and the exception reaches the caller.
class QUORVEL_API LogBase {
 public:
  LogBase() = default;
  virtual ~LogBase();
  LogBase(const LogBase&) = delete;
  LogBase& operator=(const LogBase&) = delete;

  /// When true, operations also report details and informational lines.
  bool m_verboseLogging = false;

  /// Reports an error as one line of text.
  virtual void logError(const char* text) = 0;

  /// Reports one line of information.
  virtual void logInfo(const char* text) = 0;

  /// Reports a named number.
  virtual void LogDataLong(const char* name, long value) = 0;

  /// Reports a named text.
  virtual void LogDataSb(const char* name, const StringBuffer& value) = 0;

  /// Opens a nested context. `verbose` is the verbosity in force.
  virtual void openContext(const char* name, bool verbose) = 0;

  /// Closes the innermost open context.
  virtual void closeContext() = 0;
};

}  // namespace quorvel
