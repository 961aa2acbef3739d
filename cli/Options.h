#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "cli/Conversion.h"

namespace qvconv {

/// What the command line asks for.
struct Options {
  std::string information;         ///< a text to print instead of converting: help, version, list
  Rules rules;                     ///< what is converted, and how
  std::string output;              ///< where to write; empty for standard output
  std::vector<std::string> files;  ///< what to read, at least one; "-" for standard input
};

/// A command line that cannot be carried out; `what()` says why in one line.
class WrongUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the command line. Throws `WrongUse`.
Options readOptions(int argc, const char* const* argv);

}  // namespace qvconv
