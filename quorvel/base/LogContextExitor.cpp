// Apart from the header, which programs without exceptions include too.
#include "quorvel/base/LogContextExitor.h"

#include <exception>

namespace quorvel {

LogContextExitor::LogContextExitor(LogBase& log, const char* name, bool verbose)
    : m_log(log), m_uncaught(std::uncaught_exceptions()) {
  m_log.openContext(name, verbose);
}

// Only an exception already under way may make a sink's own one unwelcome; on an
// ordinary exit it passes on to the caller like any other.
LogContextExitor::~LogContextExitor() noexcept(false) {
  if (std::uncaught_exceptions() == m_uncaught) {
    m_log.closeContext();
    return;
  }
  try {
    m_log.closeContext();
  } catch (...) {
  }
}

}  // namespace quorvel
