// All options of the command. A new one gets a row here, and a place in `Draft`; what it
// comes to together with others is put together in Options.cpp.

#include "cli/OptionTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "cli/Suggestion.h"

namespace qvconv {

namespace {

using quorvel::text::Action;
using quorvel::text::BestFits;
using quorvel::text::EscapeForm;
using quorvel::text::LineEnds;

// --- Values that are words --------------------------------------------------

template <typename Value>
struct Word {
  std::string_view word;
  Value value;
};

template <typename Value, std::size_t count>
Value valueOf(const std::array<Word<Value>, count>& words, const std::string& text,
              std::string_view option) {
  std::string list;
  std::vector<std::string_view> known;
  for (const Word<Value>& word : words) {
    if (word.word == text) return word.value;
    list += (list.empty() ? "" : ", ") + std::string(word.word);
    known.push_back(word.word);
  }
  throw WrongUse(option, '"' + text + "\" is not known" + didYouMean(text, known),
                 "one of " + list);
}

constexpr std::array actions = {
    Word<Action>{"stop", Action::stop},
    Word<Action>{"drop", Action::drop},
    Word<Action>{"substitute", Action::substitute},
    Word<Action>{"escape", Action::escape},
    Word<Action>{"pass", Action::pass},
    Word<Action>{"reconvert", Action::reconvert},
};

constexpr std::array escapeForms = {
    Word<EscapeForm>{"c", EscapeForm::c},
    Word<EscapeForm>{"xml", EscapeForm::xml},
};

constexpr std::array lineEnds = {
    Word<LineEnds>{"lf", LineEnds::lf},
    Word<LineEnds>{"crlf", LineEnds::crLf},
    Word<LineEnds>{"keep", LineEnds::keep},
};

constexpr std::array progressWords = {
    Word<ShowProgress>{"auto", ShowProgress::automatic},
    Word<ShowProgress>{"always", ShowProgress::always},
    Word<ShowProgress>{"never", ShowProgress::never},
};

enum class Marks { remove, keep, add };
constexpr std::array marks = {
    Word<Marks>{"remove", Marks::remove},
    Word<Marks>{"keep", Marks::keep},
    Word<Marks>{"add", Marks::add},
};

// --- What options do --------------------------------------------------------

template <Mode mode>
void takeMode(Draft& draft, const std::string&, std::string_view option) {
  if (draft.mode && *draft.mode != mode) {
    throw WrongUse(option, "cannot go with " + std::string(draft.modeOption), "use one of them");
  }
  draft.mode = mode;
  draft.modeOption = option;
}

template <Mode mode>
void takeModeAndSubject(Draft& draft, const std::string& value, std::string_view option) {
  takeMode<mode>(draft, value, option);
  draft.subject = value;
}

// An empty value is what a script passes whose variable is not set.
template <std::optional<std::string> Draft::*member>
void takeText(Draft& draft, const std::string& value, std::string_view option) {
  if (value.empty()) throw WrongUse(option, "its value is empty", "");
  draft.*member = value;
}

template <std::optional<Action> Draft::*member>
void takeAction(Draft& draft, const std::string& value, std::string_view option) {
  draft.*member = valueOf(actions, value, option);
}

template <bool Draft::*member>
void set(Draft& draft, const std::string&, std::string_view) {
  draft.*member = true;
}

void takeSubstitute(Draft& draft, const std::string& value, std::string_view) {
  draft.text.substitute = value;
}

void takeEscape(Draft& draft, const std::string& value, std::string_view option) {
  draft.text.escape = valueOf(escapeForms, value, option);
}

void allowBestFits(Draft& draft, const std::string&, std::string_view) {
  draft.text.bestFits = BestFits::close;
}

void takeMarks(Draft& draft, const std::string& value, std::string_view option) {
  const Marks chosen = valueOf(marks, value, option);
  draft.text.keepsMark = chosen == Marks::keep;
  draft.text.writesMark = chosen == Marks::add;
  draft.choosesMarks = true;
}

void takeSuffix(Draft& draft, const std::string& value, std::string_view option) {
  if (value.find('/') != std::string::npos) {
    throw WrongUse(option, "the suffix has a slash", "the old file stays in its directory");
  }
  draft.inPlaceSuffix = value;
}

void takeJobs(Draft& draft, const std::string& value, std::string_view option) {
  constexpr unsigned int most = 64;
  const char* const end = value.data() + value.size();
  const auto [rest, error] = std::from_chars(value.data(), end, draft.numJobs);
  if (error != std::errc() || rest != end || draft.numJobs < 1 || draft.numJobs > most) {
    throw WrongUse(option, '"' + value + "\" is no number of jobs", "1 to 64");
  }
}

void takeProgress(Draft& draft, const std::string& value, std::string_view option) {
  draft.showProgress = valueOf(progressWords, value, option);
}

void takeLineEnds(Draft& draft, const std::string& value, std::string_view option) {
  draft.text.lineEnds = valueOf(lineEnds, value, option);
}

void readVisually(Draft& draft, const std::string&, std::string_view) {
  draft.text.visualOrder = true;
}

// --- The tables -------------------------------------------------------------

constexpr std::array headings = {
    OptionHeading{OptionGroup::encodings, "Encodings", "qvconv -f shift_jis -t utf-8 letter.txt"},
    OptionHeading{OptionGroup::losses, "What does not get across",
                  "qvconv -f utf-8 -t 1252 --on-error=escape --escape=xml page.html"},
    OptionHeading{OptionGroup::marks, "Marks, line ends and order",
                  "qvconv -f utf-8 -t utf-16le --bom=add --newline=crlf notes.txt"},
    OptionHeading{OptionGroup::looking, "Looking", "qvconv --check -f utf-8 notes.txt"},
    OptionHeading{OptionGroup::files, "Files",
                  "qvconv -f 1252 -t utf-8 --in-place=.old -r --glob '*.txt' notes"},
    OptionHeading{OptionGroup::messages, "Messages", "qvconv -q -c -f utf-8 -t us-ascii list.txt"},
    OptionHeading{OptionGroup::help, "Help", "qvconv --version"},
};

constexpr std::array rows = {
    OptionRow{OptionGroup::encodings, "-f,--from-code,--from", ValueKind::needed, "ENCODING",
              "of the input: a name, a number, ansi, oem or auto; else the locale's",
              takeText<&Draft::from>},
    OptionRow{OptionGroup::encodings, "-t,--to-code,--to", ValueKind::needed, "ENCODING",
              "of the output, likewise; utf-8-sig is utf-8 with a mark", takeText<&Draft::to>},

    OptionRow{OptionGroup::losses, "--on-error", ValueKind::needed, "ACTION",
              "stop (the default), drop, substitute, escape, pass, reconvert",
              takeAction<&Draft::onError>},
    OptionRow{OptionGroup::losses, "--on-malformed", ValueKind::needed, "ACTION",
              "the same for bytes that are no character only", takeAction<&Draft::onMalformed>},
    OptionRow{OptionGroup::losses, "--on-unmappable", ValueKind::needed, "ACTION",
              "the same for characters without a place only", takeAction<&Draft::onUnmappable>},
    OptionRow{OptionGroup::losses, "-c", ValueKind::none, "",
              "drop both; the suffix //IGNORE of an encoding does so too", set<&Draft::drops>},
    OptionRow{OptionGroup::losses, "--best-fit", ValueKind::none, "",
              "write what looks like it; so does the suffix //TRANSLIT", allowBestFits},
    OptionRow{OptionGroup::losses, "--substitute", ValueKind::needed, "TEXT",
              "what substitute writes, in UTF-8; else U+FFFD or \"?\"", takeSubstitute},
    OptionRow{OptionGroup::losses, "--escape", ValueKind::needed, "FORM",
              "c (the default) for \\u20AC, xml for &#x20AC;", takeEscape},
    OptionRow{OptionGroup::losses, "--reconvert-to", ValueKind::needed, "ENCODING",
              "what reconvert reads bytes in and writes characters in",
              takeText<&Draft::reconvertTo>},

    OptionRow{OptionGroup::marks, "--bom", ValueKind::needed, "WHAT",
              "remove (the default), keep or add byte-order marks", takeMarks},
    OptionRow{OptionGroup::marks, "--newline", ValueKind::needed, "WHAT",
              "end lines with lf or crlf, or keep (the default) what they end with", takeLineEnds},
    OptionRow{OptionGroup::marks, "--visual-order", ValueKind::none, "",
              "10004 is read as text in visual order", readVisually},

    OptionRow{OptionGroup::looking, "-l,--list", ValueKind::none, "",
              "list the encodings by family: number, name, title, other names",
              takeMode<Mode::list>},
    OptionRow{OptionGroup::looking, "--info", ValueKind::needed, "ENCODING",
              "tell what there is to say of an encoding", takeModeAndSubject<Mode::info>},
    OptionRow{OptionGroup::looking, "--chart", ValueKind::needed, "CHART",
              "draw a page, 1252; codes behind a lead, 932:81; what differs, 437,850",
              takeModeAndSubject<Mode::chart>},
    OptionRow{OptionGroup::looking, "--check", ValueKind::none, "",
              "only list what would be lost, without -t what is malformed", takeMode<Mode::check>},
    OptionRow{OptionGroup::looking, "--detect", ValueKind::none, "",
              "tell what each file may be in, the likeliest first", takeMode<Mode::detect>},
    OptionRow{OptionGroup::looking, "--fits", ValueKind::none, "",
              "list the encodings that have all characters of each file", takeMode<Mode::fits>},
    OptionRow{OptionGroup::looking, "--all", ValueKind::none, "",
              "all losses of a file, not only the first 10", set<&Draft::showsAll>},
    OptionRow{OptionGroup::looking, "--json", ValueKind::none, "", "for programs, an object a line",
              set<&Draft::isJson>},

    OptionRow{OptionGroup::files, "-o,--output", ValueKind::needed, "FILE",
              "write to this file, which may be one of the inputs", takeText<&Draft::output>},
    OptionRow{OptionGroup::files, "--in-place", ValueKind::optional, "SUFFIX",
              "replace each file; the old one stays with SUFFIX", takeSuffix},
    OptionRow{OptionGroup::files, "--output-dir", ValueKind::needed, "DIR",
              "write each file into this directory", takeText<&Draft::outputDirectory>},
    OptionRow{OptionGroup::files, "-r,--recursive", ValueKind::none, "",
              "take the files in directories", set<&Draft::isRecursive>},
    OptionRow{OptionGroup::files, "--glob", ValueKind::needed, "PATTERN",
              "of these only the ones with such names", takeText<&Draft::glob>},
    OptionRow{OptionGroup::files, "--files-from", ValueKind::needed, "FILE",
              "take the files that FILE names, one a line", takeText<&Draft::filesFrom>},
    OptionRow{OptionGroup::files, "-0,--null", ValueKind::none, "",
              "in that FILE, NUL stands between two names", set<&Draft::isNulSeparated>},
    OptionRow{OptionGroup::files, "-j,--jobs", ValueKind::needed, "N",
              "work on up to N files at a time", takeJobs},

    OptionRow{OptionGroup::messages, "-q,--quiet,-s,--silent", ValueKind::none, "",
              "no summary of what was lost as asked", set<&Draft::isQuiet>},
    OptionRow{OptionGroup::messages, "--progress", ValueKind::needed, "WHEN",
              "auto (the default: on a terminal, after a second), always, never", takeProgress},
    OptionRow{OptionGroup::messages, "-v,--verbose", ValueKind::none, "",
              "tell what is done with each file", set<&Draft::isVerbose>},

    OptionRow{OptionGroup::help, "-h,--help,-?", ValueKind::none, "", "show this",
              takeMode<Mode::help>},
    OptionRow{OptionGroup::help, "-V,--version", ValueKind::none, "", "show the version",
              takeMode<Mode::version>},
};

}  // namespace

std::span<const OptionHeading> optionHeadings() { return headings; }
std::span<const OptionRow> optionRows() { return rows; }

std::string_view shortName(const OptionRow& row) {
  return row.names.substr(0, row.names.find(','));
}

std::vector<std::string_view> allOptionNames() {
  std::vector<std::string_view> names;
  for (const OptionRow& row : rows) {
    for (std::string_view rest = row.names; !rest.empty();) {
      const std::size_t end = std::min(rest.find(','), rest.size());
      names.push_back(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  return names;
}

}  // namespace qvconv
