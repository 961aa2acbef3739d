#pragma once

#include <optional>
#include <string>

#include "cli/ChartRequest.h"
#include "cli/Check.h"
#include "cli/Conversion.h"
#include "cli/FileList.h"
#include "cli/ProgressBar.h"
#include "cli/WrongUse.h"
#include "quorvel/text/Encoding.h"

namespace qvconv {

/// What the command is to do; Modes.cpp has the function of each.
enum class Mode { convert, check, detect, fits, list, info, chart, help, version };

/// What the command line asks for.
struct Options {
  Mode mode = Mode::convert;
  Rules rules;         ///< what is converted, and how
  CheckRules check;    ///< what is checked, and how
  ChartRequest chart;  ///< what to draw

  /// What to tell of, or what texts are in whose characters are asked for.
  quorvel::text::Encoding encoding = quorvel::text::Encoding::utf8();

  FileArguments files;                         ///< what to read
  std::string output;                          ///< the one file to write; empty for standard output
  std::optional<std::string> inPlaceSuffix;    ///< each file is replaced; may be empty
  std::optional<std::string> outputDirectory;  ///< each file goes there
  unsigned int numJobs = 1;
  ShowProgress showProgress = ShowProgress::automatic;
  bool isJson = false;  ///< what is printed is for programs
};

/// Reads the command line, in the locale that the program has set. Throws `WrongUse`.
Options readOptions(int argc, const char* const* argv);

}  // namespace qvconv
