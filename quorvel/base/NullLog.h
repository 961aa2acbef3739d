#pragma once

#include "quorvel/base/LogBase.h"

namespace quorvel {

/// A sink that drops everything.
class QUORVEL_API NullLog : public LogBase {
 public:
  void logError(const char*) override {}
  void logInfo(const char*) override {}
  void LogDataLong(const char*, long) override {}
  void LogDataSb(const char*, const StringBuffer&) override {}
  void openContext(const char*, bool) override {}
  void closeContext() override {}
};

}  // namespace quorvel
