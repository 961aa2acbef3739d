#pragma once

#include <string>
#include <vector>

#include "cli/Check.h"
#include "cli/Conversion.h"
#include "cli/WrongUse.h"

namespace qvconv {

/// What the command is to do; Modes.cpp has the function of each.
enum class Mode { convert, check, list, help, version };

/// What the command line asks for.
struct Options {
  Mode mode = Mode::convert;
  Rules rules;                     ///< what is converted, and how
  CheckRules check;                ///< what is checked, and how
  std::string output;              ///< where to write; empty for standard output
  std::vector<std::string> files;  ///< what to read, at least one; "-" for standard input
};

/// Reads the command line, in the locale that the program has set. Throws `WrongUse`.
Options readOptions(int argc, const char* const* argv);

}  // namespace qvconv
