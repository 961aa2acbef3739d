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
/// error as "error: text" and an informational line as its text. Control bytes
/// (00 to 1F and 7F) are written as \xNN, so that a charset name out of a mail
/// cannot pretend to be a line of its own.
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
  void write(std::string_view text);

  unsigned int m_depth = 0;
};

}  // namespace quorvel
