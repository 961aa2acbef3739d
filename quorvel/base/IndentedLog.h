#pragma once

#include <string>
#include <string_view>

#include "quorvel/base/LogBase.h"

namespace quorvel {

/// The common form of the text sinks: one line per report, indented by two
/// spaces for each open context.
///
///     EncConvert:
///       fromCodePage: 1252
///       error: Unrecognized fromCharset
///
/// A context is written as its name and a colon, a value as "name: value", an
/// error as "error: text" and an informational line as its text.
class QUORVEL_API IndentedLog : public LogBase {
 public:
  void logError(const char* text) override;
  void logInfo(const char* text) override;
  void LogDataLong(const char* name, long value) override;
  void LogDataSb(const char* name, const StringBuffer& value) override;
  void openContext(const char* name, bool verbose) override;
  void closeContext() override;

 protected:
  /// Takes one finished line, its newline included.
  virtual void writeLine(std::string_view line) = 0;

 private:
  void write(std::string text);

  unsigned int m_depth = 0;
};

}  // namespace quorvel
