// What the command can do: a row for each mode.

#include "cli/Modes.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "cli/Chart.h"
#include "cli/Check.h"
#include "cli/ConvertEach.h"
#include "cli/Detection.h"
#include "cli/FileConverter.h"
#include "cli/FileError.h"
#include "cli/FileList.h"
#include "cli/Fits.h"
#include "cli/Help.h"
#include "cli/Information.h"
#include "cli/Jobs.h"
#include "cli/Listing.h"
#include "cli/Output.h"
#include "cli/ProgressBar.h"
#include "cli/Sentences.h"
#include "quorvel/base/OneLine.hpp"

namespace qvconv {

namespace {

// --- Progress ---------------------------------------------------------------

template <typename Run>
ExitStatus runWithProgress(const Options& options, bool isTextOnTerminal, const FileList& list,
                           Messages& messages, const Run& run) {
  if (!isProgressShown(options.showProgress, isTextOnTerminal)) return run(messages);
  ProgressBar bar(options.showProgress, list, messages);
  return run(bar);
}

bool writesToStandardOutput(const Options& options) {
  return options.output.empty() && !options.inPlaceSuffix && !options.outputDirectory;
}

// --- Converting -------------------------------------------------------------

// What has become of the inputs of one output so far.
struct Soundness {
  ExitStatus status = ExitStatus::allConverted;
  bool hasResult = false;  // of at least one input
  bool isDamaged = false;  // an input has arrived in part
};

void convertNext(const std::string& file, FileConverter& converter, Output& output,
                 Messages& messages, Soundness& soundness) {
  std::optional<Input> input;
  try {
    input.emplace(file);
    const ExitStatus status = converter.run(*input, output, messages);
    soundness.status = worse(soundness.status, status);
    soundness.isDamaged |= status == ExitStatus::failed;
    soundness.hasResult = true;
  } catch (const InputError& error) {
    messages.complain(error.what());
    soundness.status = worse(soundness.status, ExitStatus::failed);
    soundness.isDamaged |= input && input->bytesRead() > 0;
  }
}

ExitStatus convertToOne(const Options& options, const FileList& list, Messages& messages) {
  const std::unique_ptr<Output> output = openOutput(options.output, messages);
  Soundness soundness;
  std::optional<FileConverter> converter(options.rules);
  for (const FileEntry& file : list.files) {
    const bool hasFront = output->bytesWritten() > 0;
    convertNext(file.path, *converter, *output, messages, soundness);
    messages.endFile();
    // One text has one mark, whatever it is put together from.
    if (!hasFront && output->bytesWritten() > 0 && options.rules.options.writesMark) {
      Rules rules = options.rules;
      rules.options.writesMark = false;
      converter.emplace(std::move(rules));
    }
  }
  const bool isWhole = soundness.hasResult && !soundness.isDamaged;
  if (isWhole || !output->replacesAFile()) output->finish();
  return soundness.status;
}

ExitStatus convertList(const Options& options, FileList& list, Messages& messages) {
  if (options.inPlaceSuffix) {
    const auto make = [&] { return inPlaceConverter(options.rules, *options.inPlaceSuffix); };
    return runJobs(list.files, options.numJobs, make, messages);
  }
  if (options.outputDirectory) {
    refuseSharedPlaces(list, messages);
    const auto make = [&] { return directoryConverter(options.rules, *options.outputDirectory); };
    return runJobs(list.files, options.numJobs, make, messages);
  }
  return convertToOne(options, list, messages);
}

ExitStatus convertFiles(const Options& options, Messages& messages) {
  FileList list = listFiles(options.files, messages);
  const bool isTextOnTerminal = writesToStandardOutput(options) && ::isatty(STDOUT_FILENO) == 1;
  const auto run = [&](Messages& used) { return convertList(options, list, used); };
  const ExitStatus status = runWithProgress(options, isTextOnTerminal, list, messages, run);
  return worse(status, list.status);
}

// --- Looking at files -------------------------------------------------------

// Looks at one input after another and prints what it finds.
using Look = std::function<ExitStatus(Input& input, Messages& messages)>;

ExitStatus lookAtFile(const std::string& file, const Look& look, Messages& messages) try {
  Input input(file);
  return look(input, messages);
} catch (const InputError& error) {
  messages.complain(error.what());
  return ExitStatus::failed;
}

ExitStatus lookAtFiles(const Options& options, const std::function<Look()>& makeLook,
                       Messages& messages) {
  const FileList list = listFiles(options.files, messages);
  const auto makeWorker = [&]() -> Worker {
    return [look = makeLook()](const FileEntry& file, Messages& ofFile) {
      return lookAtFile(file.path, look, ofFile);
    };
  };
  const auto run = [&](Messages& used) {
    return runJobs(list.files, options.numJobs, makeWorker, used);
  };
  return worse(list.status, runWithProgress(options, false, list, messages, run));
}

ExitStatus checkFiles(const Options& options, Messages& messages) {
  const auto makeLook = [&]() -> Look {
    auto check = std::make_shared<Check>(options.check);
    return [check](Input& input, Messages& ofFile) { return check->run(input, ofFile); };
  };
  return lookAtFiles(options, makeLook, messages);
}

ExitStatus detectFiles(const Options& options, Messages& messages) {
  const auto look = [&](Input& input, Messages& ofFile) {
    const std::vector<quorvel::text::Candidate> candidates = detectEncoding(input);
    ofFile.print(options.isJson ? candidatesAsJson(candidates, input.path())
                                : candidatesAsText(candidates, quorvel::oneLine(input.name())));
    // Nothing more of it will be looked at.
    ofFile.advance(static_cast<std::size_t>(input.size().value_or(0)));
    return ExitStatus::allConverted;
  };
  return lookAtFiles(
      options, [&] { return look; }, messages);
}

ExitStatus fitFiles(const Options& options, Messages& messages) {
  const auto look = [&](Input& input, Messages& ofFile) {
    const quorvel::text::Repertoire repertoire = repertoireOf(input, options.encoding, ofFile);
    ofFile.print(options.isJson ? fitsAsJson(repertoire, input.path())
                                : fitsAsText(repertoire, quorvel::oneLine(input.name())));
    if (repertoire.report().isLossless()) return ExitStatus::allConverted;
    ofFile.complain(input.name() + ": " + countsSentence(repertoire.report()) +
                    " left out (-f names its encoding; --detect looks for it)");
    return ExitStatus::failed;
  };
  return lookAtFiles(
      options, [&] { return look; }, messages);
}

// --- Telling ----------------------------------------------------------------

template <std::string (*text)()>
ExitStatus print(const Options&, Messages& messages) {
  messages.print(text());
  return ExitStatus::allConverted;
}

ExitStatus listEncodings(const Options& options, Messages& messages) {
  messages.print(options.isJson ? listAsJson() : listByFamily());
  return ExitStatus::allConverted;
}

ExitStatus tellOfEncoding(const Options& options, Messages& messages) {
  messages.print(informationOn(options.encoding));
  return ExitStatus::allConverted;
}

// NO_COLOR, where it is set and not empty, is how people ask all programs for none.
Colours coloursOfStandardOutput() {
  // No other thread runs.
  const char* const noColour = std::getenv("NO_COLOR");  // NOLINT(concurrency-mt-unsafe)
  const bool isUnwanted = noColour && *noColour != '\0';
  return !isUnwanted && ::isatty(STDOUT_FILENO) == 1 ? Colours::yes : Colours::no;
}

ExitStatus drawChart(const Options& options, Messages& messages) {
  messages.print(draw(options.chart, coloursOfStandardOutput()));
  return ExitStatus::allConverted;
}

// --- The table --------------------------------------------------------------

struct ModeRow {
  Mode mode;
  ExitStatus (*run)(const Options& options, Messages& messages);
};

constexpr std::array modes = {
    ModeRow{Mode::convert, convertFiles},       ModeRow{Mode::check, checkFiles},
    ModeRow{Mode::list, listEncodings},         ModeRow{Mode::help, print<helpText>},
    ModeRow{Mode::info, tellOfEncoding},        ModeRow{Mode::chart, drawChart},
    ModeRow{Mode::detect, detectFiles},         ModeRow{Mode::fits, fitFiles},
    ModeRow{Mode::version, print<versionText>},
};

}  // namespace

ExitStatus runMode(const Options& options, Messages& messages) {
  const auto* const row = std::find_if(
      modes.begin(), modes.end(), [&](const ModeRow& each) { return each.mode == options.mode; });
  return row->run(options, messages);
}

}  // namespace qvconv
