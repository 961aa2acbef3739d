// What the command can do: a row for each mode.

#include "cli/Modes.h"

#include <algorithm>
#include <array>
#include <optional>

#include "cli/Check.h"
#include "cli/Conversion.h"
#include "cli/FileError.h"
#include "cli/Help.h"
#include "cli/Listing.h"
#include "cli/Output.h"

namespace qvconv {

namespace {

// --- Converting to one output -----------------------------------------------

// What has become of the inputs of one output so far.
struct Progress {
  ExitStatus status = ExitStatus::allConverted;
  bool hasResult = false;  // of at least one input
  bool isDamaged = false;  // an input has arrived in part
};

void convertNext(const std::string& file, Conversion& conversion, Output& output,
                 Messages& messages, Progress& progress) {
  std::optional<Input> input;
  try {
    input.emplace(file);
    const ExitStatus status = conversion.run(*input, output, messages);
    progress.status = worse(progress.status, status);
    progress.isDamaged |= status == ExitStatus::failed;
    progress.hasResult = true;
  } catch (const InputError& error) {
    messages.complain(error.what());
    progress.status = worse(progress.status, ExitStatus::failed);
    progress.isDamaged |= input && input->bytesRead() > 0;
  }
}

ExitStatus convertFiles(const Options& options, Messages& messages) {
  Output output(options.output);
  Progress progress;
  std::optional<Conversion> conversion(options.rules);
  for (const std::string& file : options.files) {
    const bool hasFront = output.bytesWritten() > 0;
    convertNext(file, *conversion, output, messages, progress);
    // One text has one mark, whatever it is put together from.
    if (!hasFront && output.bytesWritten() > 0 && options.rules.options.writesMark) {
      Rules rules = options.rules;
      rules.options.writesMark = false;
      conversion.emplace(std::move(rules));
    }
  }
  const bool isWhole = progress.hasResult && !progress.isDamaged;
  if (isWhole || !output.replacesAFile()) output.finish();
  return progress.status;
}

// --- Checking ---------------------------------------------------------------

ExitStatus checkFile(const std::string& file, Check& check, Messages& messages) try {
  Input input(file);
  return check.run(input, messages);
} catch (const InputError& error) {
  messages.complain(error.what());
  return ExitStatus::failed;
}

ExitStatus checkFiles(const Options& options, Messages& messages) {
  Check check(options.check);
  ExitStatus status = ExitStatus::allConverted;
  for (const std::string& file : options.files) {
    status = worse(status, checkFile(file, check, messages));
  }
  return status;
}

// --- The table --------------------------------------------------------------

template <std::string (*text)()>
ExitStatus print(const Options&, Messages& messages) {
  messages.print(text());
  return ExitStatus::allConverted;
}

struct ModeRow {
  Mode mode;
  ExitStatus (*run)(const Options& options, Messages& messages);
};

constexpr std::array modes = {
    ModeRow{Mode::convert, convertFiles},       ModeRow{Mode::check, checkFiles},
    ModeRow{Mode::list, print<listEncodings>},  ModeRow{Mode::help, print<helpText>},
    ModeRow{Mode::version, print<versionText>},
};

}  // namespace

ExitStatus runMode(const Options& options, Messages& messages) {
  const auto* const row = std::find_if(
      modes.begin(), modes.end(), [&](const ModeRow& each) { return each.mode == options.mode; });
  return row->run(options, messages);
}

}  // namespace qvconv
