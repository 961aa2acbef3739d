// Takes over what people have written about the pages, for the command to show.

#include "tools/PageHead.h"

#include <fstream>
#include <string_view>

#include "tools/InputFile.h"

namespace pack {

namespace {

// "1252: Windows, Western European." without the number.
std::string withoutNumber(const std::string& line) {
  const std::size_t colon = line.find(": ");
  const bool hasNumber = colon != std::string::npos && parseCodePage(line.substr(0, colon)) != 0;
  return hasNumber ? line.substr(colon + 2) : line;
}

std::string quotedLine(std::string_view line) {
  std::string text = "\"";
  for (const char c : line) {
    if (c == '"' || c == '\\') text += '\\';
    text += c;
  }
  return text + "\\n\"";
}

std::string quotedLines(std::string_view text) {
  std::string lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines += "\n             ";
    lines += quotedLine(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace

std::string readPageHead(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw InputError(file, 1, "cannot be read");
  std::string head;
  for (std::string line; std::getline(stream, line) && line.starts_with('#');) {
    if (line.back() == '\r') line.pop_back();
    line.erase(0, line.starts_with("# ") ? 2 : 1);
    head += (head.empty() ? withoutNumber(line) : line) + '\n';
  }
  return head;
}

std::map<int, std::string> readPageHeads(const std::filesystem::path& codepages) {
  std::map<int, std::string> heads;
  for (const auto& directory : {codepages / "extra", codepages}) {
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
      const std::filesystem::path& file = entry.path();
      const int codePage = parseCodePage(file.stem().string());
      if (codePage != 0 && file.extension() == ".txt") heads[codePage] = readPageHead(file);
    }
  }
  return heads;
}

std::string pageHeadsSource(const std::map<int, std::string>& heads) {
  std::string text =
      "#include \"cli/PageHeads.h\"\n\n"
      "namespace qvconv {\n\n"
      "std::string_view headOfPage(int codePage) {\n"
      "  switch (codePage) {\n";
  for (const auto& [codePage, head] : heads) {
    if (head.empty()) continue;
    text += "    case " + std::to_string(codePage) + ":\n      return" + quotedLines(head) + ";\n";
  }
  return text +
         "    default:\n"
         "      return {};\n"
         "  }\n"
         "}\n\n"
         "}  // namespace qvconv\n";
}

}  // namespace pack
