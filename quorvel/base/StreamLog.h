#pragma once

#include <iosfwd>

#include "quorvel/base/IndentedLog.h"

namespace quorvel {

/// A sink that writes indented lines to a stream of the caller.
class QUORVEL_API StreamLog : public IndentedLog {
 public:
  explicit StreamLog(std::ostream& stream) : m_stream(stream) {}

 protected:
  void writeLine(std::string_view line) override;

 private:
  std::ostream& m_stream;
};

}  // namespace quorvel
