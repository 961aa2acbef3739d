// The command line, put together from the options of the table, and what is wrong with it.

#include "cli/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

#include "cli/EncodingChoice.h"
#include "cli/OptionTable.h"
#include "cli/Suggestion.h"
#include "quorvel/text/convert.h"

namespace qvconv {

namespace {

using quorvel::text::Action;
using quorvel::text::BestFits;
using quorvel::text::Encoding;

// --- Reading ----------------------------------------------------------------

// The parser would take the next argument for the value of `--output=`, and so
// the file to read for the one to write.
void refuseEmptyValues(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--") return;
    if (argument.starts_with("--") && argument.ends_with('=')) {
      throw WrongUse(argument, "it has no value", "write one behind the =");
    }
  }
}

void applyFlag(const OptionRow& row, Draft& draft, const std::string& value) {
  // What the parser gives where nothing is written.
  const bool isBare = value == "true";
  if (row.valueKind == ValueKind::none && !isBare) {
    throw WrongUse(shortName(row), "it takes no value", "leave \"" + value + "\" out");
  }
  row.apply(draft, isBare ? "" : value, shortName(row));
}

void addRow(CLI::App& app, const OptionRow& row, Draft& draft) {
  const std::string names(row.names);
  if (row.valueKind == ValueKind::needed) {
    app.add_option_function<std::string>(names, [&row, &draft](const std::string& value) {
      row.apply(draft, value, shortName(row));
    });
    return;
  }
  app.add_option(names,
                 [&row, &draft](const CLI::results_t& values) {
                   applyFlag(row, draft, values.front());
                   return true;
                 })
      ->expected(0)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

// What the parser says begins with the name of the option and a colon.
WrongUse mismatch(const CLI::ParseError& error) {
  const std::string_view text = error.what();
  const std::string_view option = text.substr(0, text.find(':'));
  if (text.find("missing") != std::string_view::npos) {
    return {option, "its value is missing", "write one behind it"};
  }
  return {option, "it is given more than once", "once is enough"};
}

// The parser hands out what it does not know, and the separator "--" with it.
void refuseUnknown(const std::vector<std::string>& arguments) {
  const auto unknown = std::find_if(arguments.begin(), arguments.end(),
                                    [](const std::string& argument) { return argument != "--"; });
  if (unknown == arguments.end()) return;
  const std::string name = unknown->substr(0, unknown->find('='));
  throw WrongUse(name, "unknown option" + didYouMean(name, allOptionNames()),
                 "a file of that name goes behind --");
}

Draft readDraft(int argc, const char* const* argv) {
  refuseEmptyValues(argc, argv);
  Draft draft;
  CLI::App app;
  app.set_help_flag();
  app.allow_extras();
  for (const OptionRow& row : optionRows()) addRow(app, row, draft);
  app.add_option("FILE", draft.files);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    throw mismatch(error);
  }
  refuseUnknown(app.remaining());
  return draft;
}

// --- Putting together -------------------------------------------------------

// One kind's own option goes before that of both, and a word before -c and //IGNORE.
Action choose(const std::optional<Action>& own, const std::optional<Action>& both, bool drops) {
  if (own) return *own;
  if (both) return *both;
  return drops ? Action::drop : Action::stop;
}

void chooseActions(const Draft& draft, bool drops, quorvel::text::Options& text) {
  std::optional<Action> both = draft.onError;
  const bool isChosen = both || draft.onMalformed || draft.onUnmappable || drops;
  if (!isChosen && text.substitute) both = Action::substitute;
  if (!isChosen && draft.reconvertTo) both = Action::reconvert;
  text.malformed = choose(draft.onMalformed, both, drops);
  text.unmappable = choose(draft.onUnmappable, both, drops);
  if (draft.reconvertTo) {
    text.reconvert = chooseEncoding(*draft.reconvertTo, "--reconvert-to").encoding;
  }
}

void refuseRules(const Rules& rules) {
  const quorvel::text::Options& text = rules.options;
  const auto isWanted = [&](Action action) {
    return text.malformed == action || text.unmappable == action;
  };
  if (text.substitute) {
    if (!isWanted(Action::substitute)) {
      throw WrongUse("--substitute", "nothing is substituted", "add --on-error=substitute");
    }
    const auto report = quorvel::text::check(Encoding::utf8(), rules.to, *text.substitute);
    if (!report.isLossless()) {
      throw WrongUse("--substitute", rules.names.to + " has no place for it",
                     "choose a text in UTF-8 that it has a place for");
    }
  }
  if (isWanted(Action::reconvert) && !text.reconvert) {
    throw WrongUse("--reconvert-to", "missing, so nothing can be reconverted", "name an encoding");
  }
  if (text.reconvert && !isWanted(Action::reconvert)) {
    throw WrongUse("--reconvert-to", "nothing is reconverted", "add --on-error=reconvert");
  }
  if (isWanted(Action::pass) && !whyRefused(rules.from, rules.to, text).empty()) {
    throw WrongUse("the action pass",
                   "the bytes of " + rules.names.from + " cannot be passed to " + rules.names.to,
                   "choose another action");
  }
  if (text.visualOrder && !whyRefused(rules.from, rules.to, text).empty()) {
    throw WrongUse("--visual-order", "only 10004 is known in visual order", "use -f 10004");
  }
}

EncodingChoice sourceOf(const Draft& draft) {
  return draft.from ? chooseSource(*draft.from, "-f") : localeEncoding("-f");
}

// For what finds nothing in a text but what does not belong there.
EncodingChoice namedSourceOf(const Draft& draft) {
  EncodingChoice choice = sourceOf(draft);
  if (choice.source == Source::detected) {
    throw WrongUse("-f", "auto is for conversions", "--detect lists what a file may be in");
  }
  return choice;
}

Rules rulesOf(const Draft& draft) {
  const EncodingChoice from = sourceOf(draft);
  const EncodingChoice to = draft.to ? chooseEncoding(*draft.to, "-t") : localeEncoding("-t");
  Rules rules{from.encoding, to.encoding, {from.name, to.name}, draft.text};
  quorvel::text::Options& text = rules.options;
  if (!draft.choosesMarks) text.writesMark = to.writesMark;
  if (from.bestFits || to.bestFits) text.bestFits = BestFits::close;
  chooseActions(draft, draft.drops || from.drops || to.drops, text);
  rules.source = from.source;
  rules.isQuiet = draft.isQuiet;
  rules.isVerbose = draft.isVerbose;
  refuseRules(rules);
  return rules;
}

CheckRules checkRulesOf(const Draft& draft) {
  const EncodingChoice from = namedSourceOf(draft);
  CheckRules rules;
  rules.from = from.encoding;
  rules.names.from = from.name;
  rules.bestFits = draft.text.bestFits;
  rules.keepsMark = draft.text.keepsMark;
  if (draft.to) {
    const EncodingChoice to = chooseEncoding(*draft.to, "-t");
    rules.to = to.encoding;
    rules.names.to = to.name;
    if (to.bestFits) rules.bestFits = BestFits::close;
  }
  if (draft.showsAll) rules.mostShown = std::numeric_limits<std::uint64_t>::max();
  if (draft.isQuiet) {
    rules.format = &CheckFormat::silent;
    rules.mostShown = 0;
  }
  if (draft.isJson) rules.format = &CheckFormat::json;
  return rules;
}

FileArguments fileArgumentsOf(const Draft& draft) {
  FileArguments arguments{draft.files, draft.filesFrom, draft.isNulSeparated, draft.isRecursive,
                          draft.glob};
  if (arguments.files.empty() && !arguments.filesFrom) arguments.files.emplace_back("-");
  return arguments;
}

// --- What does not go together ----------------------------------------------

struct Contradiction {
  bool (*isThere)(const Draft& draft, Mode mode);
  std::string_view option;
  std::string_view problem;
  std::string_view remedy;
};

bool hasJson(Mode mode) {
  return mode == Mode::check || mode == Mode::detect || mode == Mode::fits || mode == Mode::list;
}

// Of encodings, without reading anything.
bool tells(Mode mode) { return mode == Mode::list || mode == Mode::info || mode == Mode::chart; }

bool namesFiles(const Draft& draft) { return !draft.files.empty() || draft.filesFrom; }

constexpr std::array contradictions = {
    Contradiction{
        [](const Draft& draft, Mode mode) { return draft.showsAll && mode != Mode::check; },
        "--all", "there is nothing to show all of", "add --check"},
    Contradiction{[](const Draft& draft, Mode mode) { return draft.isJson && !hasJson(mode); },
                  "--json", "there is no result in JSON",
                  "--check, --detect, --fits and -l have one"},
    Contradiction{[](const Draft& draft, Mode mode) { return draft.from && mode == Mode::detect; },
                  "-f", "--detect is to find it", "leave it out, or ask for --check"},
    Contradiction{[](const Draft& draft, Mode mode) {
                    return draft.to && (mode == Mode::detect || mode == Mode::fits);
                  },
                  "-t", "nothing is converted", "leave it out, or ask for --check"},
    Contradiction{[](const Draft& draft, Mode mode) { return namesFiles(draft) && tells(mode); },
                  "FILE", "no file is read", "leave it out"},
    Contradiction{[](const Draft& draft, Mode mode) {
                    return draft.output.has_value() && mode != Mode::convert;
                  },
                  "-o", "nothing is converted", "redirect standard output"},
    Contradiction{[](const Draft& draft, Mode mode) {
                    return draft.inPlaceSuffix.has_value() && mode != Mode::convert;
                  },
                  "--in-place", "nothing is converted", "leave it out"},
    Contradiction{[](const Draft& draft, Mode mode) {
                    return draft.outputDirectory.has_value() && mode != Mode::convert;
                  },
                  "--output-dir", "nothing is converted", "leave it out"},
    Contradiction{[](const Draft& draft, Mode) { return draft.inPlaceSuffix && draft.output; },
                  "--in-place", "cannot go with -o", "use one of them"},
    Contradiction{
        [](const Draft& draft, Mode) { return draft.inPlaceSuffix && draft.outputDirectory; },
        "--in-place", "cannot go with --output-dir", "use one of them"},
    Contradiction{[](const Draft& draft, Mode) { return draft.outputDirectory && draft.output; },
                  "--output-dir", "cannot go with -o", "use one of them"},
    Contradiction{
        [](const Draft& draft, Mode) { return draft.inPlaceSuffix && !namesFiles(draft); },
        "--in-place", "no file is named", "name files, or directories with -r"},
    Contradiction{
        [](const Draft& draft, Mode) { return draft.outputDirectory && !namesFiles(draft); },
        "--output-dir", "no file is named", "name files, or directories with -r"},
    Contradiction{[](const Draft& draft, Mode) { return draft.glob && !draft.isRecursive; },
                  "--glob", "no directory is looked into", "add -r"},
    Contradiction{[](const Draft& draft, Mode) { return draft.isNulSeparated && !draft.filesFrom; },
                  "-0", "no names are read", "add --files-from"},
};

void refuseContradictions(const Draft& draft, Mode mode) {
  for (const Contradiction& each : contradictions) {
    if (each.isThere(draft, mode)) throw WrongUse(each.option, each.problem, each.remedy);
  }
}

}  // namespace

Options readOptions(int argc, const char* const* argv) {
  const Draft draft = readDraft(argc, argv);
  Options options;
  options.mode = draft.mode.value_or(Mode::convert);
  refuseContradictions(draft, options.mode);
  if (options.mode == Mode::convert) options.rules = rulesOf(draft);
  if (options.mode == Mode::check) options.check = checkRulesOf(draft);
  if (options.mode == Mode::fits) options.encoding = namedSourceOf(draft).encoding;
  if (options.mode == Mode::info)
    options.encoding = chooseEncoding(draft.subject, "--info").encoding;
  if (options.mode == Mode::chart) options.chart = readChartRequest(draft.subject, "--chart");
  options.output = draft.output.value_or("");
  options.files = fileArgumentsOf(draft);
  options.inPlaceSuffix = draft.inPlaceSuffix;
  options.outputDirectory = draft.outputDirectory;
  options.numJobs = draft.numJobs;
  options.showProgress = draft.showProgress;
  options.isJson = draft.isJson;
  return options;
}

}  // namespace qvconv
