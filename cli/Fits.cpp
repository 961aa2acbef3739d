#include "cli/Fits.h"

#include <vector>

#include "cli/Columns.h"
#include "cli/Families.h"
#include "cli/Json.h"

namespace qvconv {

using quorvel::text::Encoding;
using quorvel::text::Repertoire;

Repertoire repertoireOf(Input& input, Encoding from, Messages& messages) {
  Repertoire repertoire(from);
  for (std::string_view block = input.readBlock(); !block.empty(); block = input.readBlock()) {
    repertoire.push(block);
    messages.advance(block.size());
  }
  repertoire.finish();
  return repertoire;
}

std::string fitsAsText(const Repertoire& repertoire, std::string_view file) {
  const std::size_t size = repertoire.size();
  std::string text = std::string(file) + ": " + std::to_string(size) + " different character" +
                     (size == 1 ? "" : "s") + "\n";
  for (const FamilyName& family : familyNames) {
    std::vector<std::vector<std::string>> rows;
    for (const Encoding encoding : Encoding::all()) {
      if (encoding.family() != family.family || !repertoire.isHeldBy(encoding)) continue;
      rows.push_back({std::to_string(encoding.number()), std::string(encoding.name()),
                      std::string(encoding.title())});
    }
    if (rows.empty()) continue;
    text += '\n';
    text += family.name;
    text += '\n';
    text += inColumns(rows, "  ", 1);
  }
  return text;
}

std::string fitsAsJson(const Repertoire& repertoire, std::string_view file) {
  json::Array encodings;
  for (const Encoding encoding : Encoding::all()) {
    if (!repertoire.isHeldBy(encoding)) continue;
    encodings.addJson(
        json::Object().add("number", encoding.number()).add("name", encoding.name()).text());
  }
  return json::Object()
             .add("file", file)
             .add("characters", repertoire.size())
             .addJson("encodings", encodings.text())
             .text() +
         '\n';
}

}  // namespace qvconv
