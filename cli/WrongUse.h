#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace qvconv {

/// A command line that cannot be carried out; `what()` says in one line which option is
/// wrong, why, and what to do.
class WrongUse : public std::runtime_error {
 public:
  /// `remedy` may be empty.
  WrongUse(std::string_view option, std::string_view problem, std::string_view remedy)
      : std::runtime_error(std::string(option) + ": " + std::string(problem) + " (" +
                           std::string(remedy) + (remedy.empty() ? "" : "; ") +
                           "--help tells more)") {}
};

}  // namespace qvconv
