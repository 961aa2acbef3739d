#include "cli/Suggestion.h"

#include <algorithm>
#include <cstddef>

namespace qvconv {

namespace {

// Longer ones are no names, and the work grows with the square.
constexpr std::size_t longestName = 64;

std::string loosely(std::string_view name) {
  std::string loose;
  for (const char c : name.substr(0, longestName)) {
    if (c >= 'A' && c <= 'Z') {
      loose += static_cast<char>(c - 'A' + 'a');
    } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
      loose += c;
    }
  }
  return loose;
}

// How many letters have to be put in, left out, changed or exchanged with the next, row
// by row of the table of all beginnings of both.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> twoBack(b.size() + 1);
  std::vector<std::size_t> back(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::swap(twoBack, back);
    std::swap(back, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
      row[j] = std::min({back[j] + 1, row[j - 1] + 1, back[j - 1] + change});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], twoBack[j - 2] + 1);
      }
    }
  }
  return row[b.size()];
}

}  // namespace

std::string_view nearestName(std::string_view name, const std::vector<std::string_view>& names) {
  const std::string wanted = loosely(name);
  if (wanted.empty()) return {};
  std::string_view nearest;
  // A third of the letters may be wrong.
  std::size_t least = wanted.size() / 3 + 1;
  for (const std::string_view candidate : names) {
    const std::size_t difference = distance(wanted, loosely(candidate));
    if (difference >= least) continue;
    least = difference;
    nearest = candidate;
  }
  return nearest;
}

std::string didYouMean(std::string_view name, const std::vector<std::string_view>& names) {
  const std::string_view nearest = nearestName(name, names);
  return nearest.empty() ? "" : ": did you mean " + std::string(nearest) + "?";
}

}  // namespace qvconv
