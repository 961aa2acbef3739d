// The sinks that write lines: what a line looks like is the matter of IndentedLog,
// where it goes that of TextLog and StreamLog.

#include <ostream>

#include "quorvel/base/IndentedLog.h"
#include "quorvel/base/LogBase.h"
#include "quorvel/base/OneLine.hpp"
#include "quorvel/base/StreamLog.h"
#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/TextLog.h"

namespace quorvel {

LogBase::~LogBase() = default;

void IndentedLog::logError(const char* text) { write(std::string("error: ") + text); }

void IndentedLog::logInfo(const char* text) { write(text); }

void IndentedLog::LogDataLong(const char* name, long value) {
  write(std::string(name) + ": " + std::to_string(value));
}

void IndentedLog::LogDataSb(const char* name, const StringBuffer& value) {
  write(std::string(name) + ": " + std::string(value.getString(), value.getSize()));
}

void IndentedLog::openContext(const char* name, bool) {
  write(std::string(name) + ":");
  ++m_depth;
}

void IndentedLog::closeContext() {
  if (m_depth) --m_depth;
}

void IndentedLog::write(std::string_view text) {
  writeLine(std::string(std::size_t{2} * m_depth, ' ') + oneLine(text) + '\n');
}

void TextLog::writeLine(std::string_view line) {
  m_text.appendN(line.data(), static_cast<unsigned int>(line.size()));
}

void StreamLog::writeLine(std::string_view line) { m_stream << line; }

}  // namespace quorvel
