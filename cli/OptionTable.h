#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Options.h"
#include "quorvel/text/Options.h"

namespace qvconv {

/// What stands on the command line, option by option, before it is put together.
struct Draft {
  std::optional<Mode> mode;
  std::string_view modeOption;  ///< that asked for the mode
  std::string subject;          ///< what it is to tell of, for a mode that is told so
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::optional<quorvel::text::Action> onError;
  std::optional<quorvel::text::Action> onMalformed;
  std::optional<quorvel::text::Action> onUnmappable;
  std::optional<std::string> reconvertTo;
  quorvel::text::Options text;
  std::optional<std::string> output;
  std::optional<std::string> inPlaceSuffix;
  std::optional<std::string> outputDirectory;
  std::optional<std::string> filesFrom;
  std::optional<std::string> glob;
  std::vector<std::string> files;
  unsigned int numJobs = 1;
  ShowProgress showProgress = ShowProgress::automatic;
  bool isRecursive = false;
  bool isNulSeparated = false;
  bool choosesMarks = false;  ///< --bom stands there
  bool drops = false;
  bool showsAll = false;
  bool isJson = false;
  bool isQuiet = false;
  bool isVerbose = false;
};

/// The headings of the help.
enum class OptionGroup { encodings, losses, marks, looking, files, messages, help };

struct OptionHeading {
  OptionGroup group;
  std::string_view title;
  std::string_view example;
};

/// Whether an option has a value.
enum class ValueKind {
  none,
  needed,
  optional,  ///< only behind "=", otherwise empty
};

/// One option: how it is called, what the help says and what it does.
struct OptionRow {
  OptionGroup group;
  std::string_view names;  ///< the short one first and then the preferred long one
  ValueKind valueKind;
  std::string_view value;  ///< what stands for it in the help
  std::string_view help;
  void (*apply)(Draft& draft, const std::string& value, std::string_view option);
};

std::span<const OptionHeading> optionHeadings();

/// All options, in the order of the help.
std::span<const OptionRow> optionRows();

/// How messages call an option: by its first name.
std::string_view shortName(const OptionRow& row);

/// All names of all options.
std::vector<std::string_view> allOptionNames();

}  // namespace qvconv
