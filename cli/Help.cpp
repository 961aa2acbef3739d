#include "cli/Help.h"

#include <algorithm>
#include <string_view>

#include "cli/OptionTable.h"

namespace qvconv {

namespace {

constexpr std::size_t namesWidth = 30;

// "-f, --from-code ENCODING": the first two names, aligned as if all had a short one.
std::string namesAndValue(const OptionRow& row) {
  std::string_view names = row.names;
  std::string text = "  ";
  const std::string_view first = shortName(row);
  if (first.starts_with("--")) text += "    ";
  text += first;
  names.remove_prefix(std::min(first.size() + 1, names.size()));
  if (!names.empty()) text += ", " + std::string(names.substr(0, names.find(',')));
  switch (row.valueKind) {
    case ValueKind::none:
      break;
    case ValueKind::needed:
      text += (text.find("--") == std::string::npos ? " " : "=") + std::string(row.value);
      break;
    case ValueKind::optional:
      text += "[=" + std::string(row.value) + "]";
      break;
  }
  return text;
}

std::string line(const OptionRow& row) {
  std::string text = namesAndValue(row);
  // At least two blanks, or the help on a line of its own.
  if (text.size() + 2 > namesWidth) {
    text += '\n' + std::string(namesWidth, ' ');
  } else {
    text.resize(namesWidth, ' ');
  }
  return text + std::string(row.help) + '\n';
}

}  // namespace

std::string helpText() {
  std::string text =
      "Usage: qvconv [OPTION ...] [FILE ...]\n"
      "Converts text from one character encoding to another and tells what was lost, and\n"
      "where. Without FILE, or for \"-\", it reads standard input.\n";
  for (const OptionHeading& heading : optionHeadings()) {
    text += '\n' + std::string(heading.title) + ":\n";
    for (const OptionRow& row : optionRows()) {
      if (row.group == heading.group) text += line(row);
    }
    text += "  Example: " + std::string(heading.example) + '\n';
  }
  return text +
         "\nExit status: 0 when everything was converted, 3 when something was lost as asked, 1\n"
         "when something failed, 2 for wrong use.\n";
}

std::string versionText() { return "qvconv " QVCONV_VERSION "\n"; }

}  // namespace qvconv
