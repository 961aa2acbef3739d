#pragma once

#include "quorvel/base/LogBase.h"

namespace quorvel {

/// Runs `body` inside a named log context and returns its result. The context is
/// closed whichever way `body` is left, as by a `LogContextExitor`; but only one
/// that throws pays for it, where the exitor has to ask at both ends whether
/// something is being thrown, which short text takes longer than its conversion.
template <typename Body>
auto inLogContext(LogBase& log, const char* name, const Body& body) {
  log.openContext(name, log.m_verboseLogging);
  const auto result = [&] {
    try {
      return body();
    } catch (...) {
      // The exception under way is the one that the caller gets.
      try {
        log.closeContext();
      } catch (...) {
      }
      throw;
    }
  }();
  log.closeContext();
  return result;
}

}  // namespace quorvel
