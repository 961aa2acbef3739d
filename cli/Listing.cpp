// What `qvconv -l` prints.

#include "cli/Listing.h"

#include <string_view>
#include <vector>

#include "cli/Columns.h"
#include "cli/Families.h"
#include "cli/Json.h"
#include "quorvel/text/Encoding.h"

namespace qvconv {

using quorvel::text::Encoding;

namespace {

std::string aliasesOf(Encoding encoding) {
  std::string text;
  for (const std::string_view alias : encoding.aliases()) {
    if (!text.empty()) text += ' ';
    text += alias;
  }
  return text;
}

}  // namespace

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
