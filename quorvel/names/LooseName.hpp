#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "quorvel/base/AsciiText.hpp"

/// How charset names are compared.
namespace quorvel::names {

// Longest name that is looked at, with its punctuation and without.
inline constexpr std::size_t kLongestName = 255;
inline constexpr std::size_t kLongestLooseName = 48;

// What the loose rule leaves of a name; empty when that is longer than any
// name of the table.
struct LooseName {
  std::array<char, kLongestLooseName> text{};
  std::size_t length = 0;

  constexpr std::string_view view() const { return {text.data(), length}; }
};

// UTS #22, section 1.4: keep ASCII letters and digits, fold the case, drop each
// zero that does not follow a digit. "Follow" is meant of what is kept, so that
// "IBM-00858" loses both of its zeros and "8859-010" none.
constexpr LooseName loosen(std::string_view name) {
  using ascii::isDigit;
  LooseName loose;
  char last = 0;
  for (const char raw : name) {
    const char c = ascii::toLower(raw);
    if (!ascii::isLetter(c) && !isDigit(c)) continue;
    if (c == '0' && !isDigit(last)) continue;
    if (loose.length == kLongestLooseName) return {};
    loose.text[loose.length++] = c;
    last = c;
  }
  return loose;
}

// Calls `visit(name)` for each name of a space-separated list.
template <typename Visitor>
constexpr void forEachName(std::string_view names, Visitor visit) {
  while (!names.empty()) {
    const std::size_t end = std::min(names.find(' '), names.size());
    if (end > 0) visit(names.substr(0, end));
    names.remove_prefix(std::min(end + 1, names.size()));
  }
}

/// The code page of a name, 0 for an unknown one: what `CharsetNaming::GetCodePage`
/// says.
int codePageByName(std::string_view name);

}  // namespace quorvel::names
