#include "Markdown.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace quorvel::bench {

std::string format(const char* pattern, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(text, sizeof text, pattern, arguments);
  va_end(arguments);
  return text;
}

std::string tableHead(const std::vector<std::string>& names, std::size_t numTexts) {
  std::vector<std::string> rulers(names.size(), "---:");
  for (std::size_t i = 0; i < numTexts; ++i) rulers[i] = "---";
  return tableRow(names) + tableRow(rulers);
}

std::string tableRow(const std::vector<std::string>& cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + " |";
  return line + "\n";
}

std::string megabytes(double speed) { return speed > 0 ? format("%.0f", speed / 1e6) : "-"; }

std::string asRatio(double ratio) { return std::isinf(ratio) ? "-" : format("%.2f", ratio); }

}  // namespace quorvel::bench
