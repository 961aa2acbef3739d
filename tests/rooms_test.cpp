// The rooms of the house: who may include whom, and what is public.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// What stands in the first of these may include what stands in the others, and
// itself. All arrows point down the list.
const std::map<std::string, std::set<std::string>> arrows = {
    {"kernel", {}},
    {"base", {"kernel/Progress.hpp"}},
    {"codepages", {"base"}},
    {"names", {"base", "codepages"}},
    {"pages", {"base", "kernel", "codepages"}},
    {"unicode", {"base", "kernel", "pages"}},
    {"support", {"base", "kernel", "names", "pages", "unicode"}},
    {"text", {"base", "kernel", "names", "pages", "unicode"}},
};

struct Include {
  std::string file;
  std::string room;      // that the file stands in
  std::string included;  // "pages/CodePages.hpp"
};

const fs::path root = QUORVEL_SOURCE_DIR;

// quorvel/pages/CodePages.hpp stands in "pages", codepages/CodePages.def in
// "codepages".
std::string insideHouse(std::string path) {
  const std::string house = "quorvel/";
  return path.starts_with(house) ? path.substr(house.size()) : path;
}

std::string roomOf(const std::string& path) { return path.substr(0, path.find('/')); }

std::vector<std::string> sources() {
  std::vector<std::string> found;
  for (const char* directory : {"quorvel", "codepages"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root / directory)) {
      const std::string extension = entry.path().extension();
      if (extension == ".h" || extension == ".hpp" || extension == ".cpp") {
        found.push_back(fs::relative(entry.path(), root).generic_string());
      }
    }
  }
  return found;
}

std::vector<std::string> includesIn(const std::string& file) {
  std::vector<std::string> found;
  std::ifstream text(root / file);
  const std::string start = "#include \"";
  for (std::string line; std::getline(text, line);) {
    if (!line.starts_with(start)) continue;
    found.push_back(line.substr(start.size(), line.rfind('"') - start.size()));
  }
  return found;
}

std::vector<Include> allIncludes() {
  std::vector<Include> found;
  for (const std::string& file : sources()) {
    if (file == "quorvel/quorvel.h") continue;
    for (const std::string& included : includesIn(file)) {
      found.push_back({file, roomOf(insideHouse(file)), insideHouse(included)});
    }
  }
  return found;
}

bool isAllowed(const Include& include) {
  const std::string target = roomOf(include.included);
  if (target == include.room) return true;
  const auto& allowed = arrows.at(include.room);
  return allowed.contains(target) || allowed.contains(include.included);
}

TEST(Rooms, AreTheOnesThatTheArrowsAreDrawnFor) {
  std::set<std::string> rooms;
  for (const std::string& file : sources()) {
    if (file != "quorvel/quorvel.h") rooms.insert(roomOf(insideHouse(file)));
  }
  std::set<std::string> drawn;
  for (const auto& [room, allowed] : arrows) drawn.insert(room);
  EXPECT_EQ(rooms, drawn);
}

TEST(Rooms, IncludeOnlyWhatStandsBelowThem) {
  const std::vector<Include> includes = allIncludes();
  ASSERT_GT(includes.size(), 100U);
  for (const Include& include : includes) {
    EXPECT_TRUE(isAllowed(include)) << include.file << " includes " << include.included;
  }
}

TEST(Rooms, KeepPrivateHeadersOutOfPublicOnes) {
  for (const Include& include : allIncludes()) {
    if (!include.file.ends_with(".h")) continue;
    EXPECT_THAT(include.included, testing::EndsWith(".h")) << include.file;
  }
}

TEST(Rooms, HaveTheirPublicHeadersInTheOneThatIncludesThemAll) {
  std::vector<std::string> publicHeaders;
  for (const std::string& file : sources()) {
    if (file.ends_with(".h") && file != "quorvel/quorvel.h") publicHeaders.push_back(file);
  }
  EXPECT_THAT(includesIn("quorvel/quorvel.h"), testing::UnorderedElementsAreArray(publicHeaders));
}

// A row "| `pages` | base, codepages, kernel | ..." for each room.
std::map<std::string, std::set<std::string>> documentedArrows() {
  std::map<std::string, std::set<std::string>> found;
  std::ifstream document(root / "docs/design.md");
  bool isInTable = false;
  for (std::string line; std::getline(document, line);) {
    isInTable = line.starts_with("| room |") || (isInTable && line.starts_with("|"));
    if (!isInTable || !line.starts_with("| `")) continue;
    const std::size_t nameEnd = line.find('`', 3);
    std::istringstream others(line.substr(nameEnd + 4, line.find('|', nameEnd + 4) - nameEnd - 4));
    auto& standsOn = found[line.substr(3, nameEnd - 3)];
    for (std::string other; others >> other;) {
      if (other.ends_with(',')) other.pop_back();
      standsOn.insert(other);
    }
  }
  return found;
}

TEST(Rooms, StandInTheDesignDocumentOnWhatTheyMayInclude) { EXPECT_EQ(documentedArrows(), arrows); }

}  // namespace
