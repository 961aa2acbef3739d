#pragma once

#include <exception>

#include "quorvel/base/LogBase.h"

namespace quorvel {

/// Opens a named log context and closes it at the end of the scope, whichever
/// way the scope is left.
class LogContextExitor {
 public:
  LogContextExitor(LogBase& log, const char* name, bool verbose) : m_log(log) {
    m_log.openContext(name, verbose);
  }

  // Only an exception already under way may make a sink's own one unwelcome;
  // on an ordinary exit it passes on to the caller like any other.
  ~LogContextExitor() noexcept(false) {
    if (std::uncaught_exceptions() == m_uncaught) {
      m_log.closeContext();
      return;
    }
    try {
      m_log.closeContext();
    } catch (...) {
    }
  }

  LogContextExitor(const LogContextExitor&) = delete;
  LogContextExitor& operator=(const LogContextExitor&) = delete;

 private:
  LogBase& m_log;
  int m_uncaught = std::uncaught_exceptions();
};

}  // namespace quorvel
