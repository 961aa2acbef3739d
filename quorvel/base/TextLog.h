#pragma once

#include "quorvel/base/IndentedLog.h"

namespace quorvel {

/// A sink that appends indented lines to a `StringBuffer` of the caller.
class QUORVEL_API TextLog : public IndentedLog {
 public:
  explicit TextLog(StringBuffer& text) : m_text(text) {}

 protected:
  void writeLine(std::string_view line) override;

 private:
  StringBuffer& m_text;
};

}  // namespace quorvel
