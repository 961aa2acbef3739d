#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qvconv {

/// Rows of ASCII texts in columns as wide as their widest, `numbers` of them to the
/// right, a line each behind `indent`.
inline std::string inColumns(const std::vector<std::vector<std::string>>& rows,
                             std::string_view indent, std::size_t numbers) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line(indent);
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string padding(widths[i] - row[i].size(), ' ');
      line += (i == 0 ? "" : "  ") + (i < numbers ? padding + row[i] : row[i] + padding);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + '\n';
  }
  return text;
}

}  // namespace qvconv
