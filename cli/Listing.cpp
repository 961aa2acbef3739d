// What `qvconv -l` prints.

#include "cli/Listing.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "cli/Columns.h"
#include "cli/Families.h"
#include "cli/Json.h"
#include "quorvel/names/CharsetNaming.h"
#include "quorvel/text/Encoding.h"

namespace qvconv {

using quorvel::text::Encoding;

namespace {

struct Row {
  std::string number;
  std::string_view name;
  std::string_view title;
  std::string_view otherNames;
};

Row rowOf(const quorvel::CharsetNaming::Entry& entry) {
  const std::string_view names = entry.names;
  const std::size_t end = std::min(names.find(' '), names.size());
  return {std::to_string(entry.codePage), names.substr(0, end), entry.title,
          names.substr(std::min(end + 1, names.size()))};
}

std::string aliasesOf(Encoding encoding) {
  std::string text;
  for (const std::string_view alias : encoding.aliases()) {
    if (!text.empty()) text += ' ';
    text += alias;
  }
  return text;
}

void appendPadded(std::string& line, std::string_view text, std::size_t width) {
  line.append(text);
  line.append(width - text.size() + 2, ' ');
}

}  // namespace

std::string listEncodings() {
  std::vector<Row> rows;
  Row widest;
  for (unsigned int i = 0; i < quorvel::CharsetNaming::count(); ++i) {
    rows.push_back(rowOf(quorvel::CharsetNaming::at(i)));
    const Row& row = rows.back();
    if (row.number.size() > widest.number.size()) widest.number = row.number;
    if (row.name.size() > widest.name.size()) widest.name = row.name;
    if (row.title.size() > widest.title.size()) widest.title = row.title;
  }
  std::string text;
  for (const Row& row : rows) {
    std::string line(widest.number.size() - row.number.size(), ' ');
    appendPadded(line, row.number, row.number.size());
    appendPadded(line, row.name, widest.name.size());
    appendPadded(line, row.title, widest.title.size());
    line.append(row.otherNames);
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + '\n';
  }
  return text;
}

std::string listByFamily() {
  std::string text;
  for (const FamilyName& family : familyNames) {
    std::vector<std::vector<std::string>> rows;
    for (const Encoding encoding : Encoding::all()) {
      if (encoding.family() != family.family) continue;
      rows.push_back({std::to_string(encoding.number()), std::string(encoding.name()),
                      std::string(encoding.title()), aliasesOf(encoding)});
    }
    if (!text.empty()) text += '\n';
    text += family.name;
    text += '\n';
    text += inColumns(rows, "  ", 1);
  }
  return text;
}

std::string listAsJson() {
  std::string text;
  for (const Encoding encoding : Encoding::all()) {
    json::Array aliases;
    for (const std::string_view alias : encoding.aliases()) aliases.add(alias);
    text += json::Object()
                .add("number", encoding.number())
                .add("name", encoding.name())
                .add("title", encoding.title())
                .add("family", familyOf(encoding))
                .addJson("aliases", aliases.text())
                .text() +
            '\n';
  }
  return text;
}

}  // namespace qvconv
