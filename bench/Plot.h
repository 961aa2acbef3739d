#pragma once

#include <string>
#include <vector>

namespace quorvel::bench {

/// A bar, and a mark beside it on the same scale.
struct Bar {
  std::string group;  ///< bars of one group follow one another
  std::string label;
  double value;
  double mark;
};

/// Horizontal bars from 1 to the right or left, on a logarithmic scale, as SVG.
std::string plot(const std::string& title, const std::vector<Bar>& bars);

}  // namespace quorvel::bench
