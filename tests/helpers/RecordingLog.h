#pragma once

#include <string>
#include <vector>

#include "quorvel/base/LogBase.h"
#include "quorvel/base/StringBuffer.h"

namespace quorvel_test {

using Lines = std::vector<std::string>;

/// What a sink throws when it is told to.
struct SinkFailure {
  long call;  ///< the number of the call that threw
};

/// A sink that keeps one line per call, such as "open EncConvert verbose=0",
/// "error: text", "info: text", "long fromCodePage=1252", "sb name=text" and
/// "close". It can be told to throw at one of its calls.
class RecordingLog : public quorvel::LogBase {
 public:
  explicit RecordingLog(bool verbose = false) { m_verboseLogging = verbose; }

  void logError(const char* text) override { record(std::string("error: ") + text); }
  void logInfo(const char* text) override { record(std::string("info: ") + text); }
  void LogDataLong(const char* name, long value) override {
    record(std::string("long ") + name + "=" + std::to_string(value));
  }
  void LogDataSb(const char* name, const quorvel::StringBuffer& value) override {
    record(std::string("sb ") + name + "=" + value.getString());
  }
  void openContext(const char* name, bool verbose) override {
    record(std::string("open ") + name + " verbose=" + (verbose ? "1" : "0"));
    ++openContexts;
  }
  void closeContext() override {
    --openContexts;
    record("close");
  }

  /// Tells the sink to throw at its call number `call`, counted from 0.
  void throwAt(long call) { m_throwAt = call; }

  /// The lines, less those of the contexts that the table drivers open: which
  /// of them appear depends on the code pages that have tables.
  Lines linesOutsideTableDrivers() const {
    Lines result;
    int inside = 0;
    for (const std::string& line : lines) {
      const bool opens = line.rfind("open ", 0) == 0;
      if (inside == 0 && (line.rfind("open convertToUnicodeHC ", 0) == 0 ||
                          line.rfind("open convertFromUnicodeHC ", 0) == 0)) {
        inside = 1;
      } else if (inside != 0) {
        inside += opens ? 1 : line == "close" ? -1 : 0;
      } else {
        result.push_back(line);
      }
    }
    return result;
  }

  Lines lines;
  int openContexts = 0;

 private:
  void record(std::string line) {
    const long call = static_cast<long>(lines.size());
    lines.push_back(std::move(line));
    if (call == m_throwAt) throw SinkFailure{call};
  }

  long m_throwAt = -1;
};

}  // namespace quorvel_test
