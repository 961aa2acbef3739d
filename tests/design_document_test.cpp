// docs/design.md sends its readers to files and functions that are there.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path root = QUORVEL_SOURCE_DIR;

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A row of a table that leads to a file.
struct Lead {
  std::string line;
  std::string heading;             // that the table stands under
  std::string file;                // below the root
  std::vector<std::string> names;  // that the file has
};

/// What stands between backticks.
std::vector<std::string> quotedIn(std::string_view line) {
  std::vector<std::string> quoted;
  for (std::size_t begin = line.find('`'); begin != std::string_view::npos;) {
    const std::size_t end = line.find('`', begin + 1);
    if (end == std::string_view::npos) break;
    quoted.emplace_back(line.substr(begin + 1, end - begin - 1));
    begin = line.find('`', end + 1);
  }
  return quoted;
}

bool isFile(const std::string& quoted) { return quoted.find('/') != std::string::npos; }

/// The lines of the document, but for the drawing.
std::vector<std::string> documentLines() {
  std::vector<std::string> lines;
  std::ifstream document(root / "docs/design.md");
  bool isDrawing = false;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("```")) isDrawing = !isDrawing;
    if (!isDrawing) lines.push_back(line);
  }
  return lines;
}

std::vector<Lead> leads() {
  std::vector<Lead> found;
  std::string heading;
  for (const std::string& line : documentLines()) {
    if (line.starts_with('#')) heading = line;
    if (!line.starts_with('|')) continue;
    std::vector<std::string> quoted = quotedIn(line);
    const auto file = std::find_if(quoted.begin(), quoted.end(), isFile);
    if (file == quoted.end()) continue;
    Lead lead{line, heading, *file, {}};
    quoted.erase(file);
    lead.names = std::move(quoted);
    found.push_back(lead);
  }
  return found;
}

std::size_t countUnder(const std::string& heading) {
  const std::vector<Lead> all = leads();
  return static_cast<std::size_t>(std::count_if(
      all.begin(), all.end(), [&](const Lead& lead) { return lead.heading == heading; }));
}

bool isWordByte(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// Whether `name` stands in `text`, and not as a part of another one.
bool hasWord(std::string_view text, std::string_view name) {
  for (std::size_t at = text.find(name); at != std::string_view::npos;
       at = text.find(name, at + 1)) {
    const std::size_t behind = at + name.size();
    const bool continues =
        isWordByte(name.back()) && behind < text.size() && isWordByte(text[behind]);
    const bool begins = at == 0 || !isWordByte(text[at - 1]);
    if (begins && !continues) return true;
  }
  return false;
}

TEST(DesignDocument, NamesWhatStandsInTheFileOfItsRow) {
  for (const Lead& lead : leads()) {
    const std::string text = contentOf(root / lead.file);
    EXPECT_TRUE(!lead.names.empty() || lead.file.ends_with(".txt")) << lead.line;
    for (const std::string& name : lead.names)
      EXPECT_TRUE(hasWord(text, name)) << name << '\n' << lead.line;
  }
}

TEST(DesignDocument, NamesNoFileThatIsNotThere) {
  for (const std::string& line : documentLines()) {
    for (const std::string& quoted : quotedIn(line)) {
      EXPECT_TRUE(!isFile(quoted) || fs::exists(root / quoted)) << line;
    }
  }
}

TEST(DesignDocument, LeadsToTwentyPlacesAndThroughThreeConversions) {
  EXPECT_GE(countUnder("## To change X, go to Y"), 20U);
  EXPECT_GE(countUnder("### 932 to 65001"), 5U);
  EXPECT_GE(countUnder("### 65001 to 1252 with error action 2"), 5U);
  EXPECT_GE(countUnder("### ISO-2022-JP to 1200"), 5U);
}

}  // namespace
