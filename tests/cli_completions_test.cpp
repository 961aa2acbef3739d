// What shells complete of the command.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "cli/OptionTable.h"

namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

const std::string directory = QUORVEL_SOURCE_DIR "/packaging/completions/";

std::string contentOf(const std::string& file) {
  std::ifstream stream(directory + file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// What bash completes the words with, the last of which is being typed.
std::vector<std::string> completionsOf(const std::string& words) {
  const std::string script = "PATH='" + fs::path(QVCONV_PATH).parent_path().string() +
                             "':$PATH; source '" + directory + "qvconv.bash'; COMP_WORDS=(" +
                             words + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _qvconv; " +
                             "printf '%s\\n' \"${COMPREPLY[@]}\"";
  std::vector<std::string> found;
  const auto close = [](std::FILE* pipe) { static_cast<void>(::pclose(pipe)); };
  // Other tests may run at the same time.
  const std::string file =
      testing::TempDir() + "/completions-" + std::to_string(::getpid()) + ".sh";
  std::ofstream(file) << script;
  const std::unique_ptr<std::FILE, decltype(close)> pipe(::popen(("bash " + file).c_str(), "r"),
                                                         close);
  std::array<char, 256> line{};
  while (std::fgets(line.data(), line.size(), pipe.get())) {
    found.emplace_back(line.data());
    found.back().pop_back();
  }
  fs::remove(file);
  return found;
}

/// The long options that a file names by `pattern`, whose first group they are.
std::set<std::string> optionsIn(const std::string& file, const char* pattern) {
  const std::string text = contentOf(file);
  const std::regex option(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator at(text.begin(), text.end(), option); at != std::sregex_iterator();
       ++at) {
    found.insert((*at)[1]);
  }
  return found;
}

TEST(Completions, AreEncodingsByNumberAndNameBehindWhatTakesOne) {
  EXPECT_THAT(completionsOf("qvconv -f koi8"), ElementsAre("koi8-r", "koi8-u"));
  EXPECT_THAT(completionsOf("qvconv --to-code = shift"), ElementsAre("shift_jis"));
  EXPECT_THAT(completionsOf("qvconv --chart 125"), IsSupersetOf({"1250", "1258"}));
  EXPECT_THAT(completionsOf("qvconv -f ''"), IsSupersetOf({"auto", "ansi", "utf-8", "932"}));
  EXPECT_THAT(completionsOf("qvconv -t ''"), Contains("utf-8-sig"));
}

TEST(Completions, AreTheValuesOfAnOption) {
  EXPECT_THAT(completionsOf("qvconv --bom ="), ElementsAre("remove", "keep", "add"));
  EXPECT_THAT(completionsOf("qvconv --newline = c"), ElementsAre("crlf"));
  EXPECT_THAT(completionsOf("qvconv --on-error s"), ElementsAre("stop", "substitute"));
}

TEST(Completions, AreOptionsOrLeftToTheShell) {
  EXPECT_THAT(completionsOf("qvconv --ch"), ElementsAre("--check", "--chart"));
  EXPECT_THAT(completionsOf("qvconv -f 932 --out"), ElementsAre("--output", "--output-dir"));
  EXPECT_THAT(completionsOf("qvconv -f 932 a"), ElementsAre(""));
  EXPECT_THAT(completionsOf("qvconv -o a"), Not(Contains("ansi")));
}

TEST(Completions, AreTheOptionsOfTheCommandInEveryShell) {
  std::set<std::string> bash;
  for (const std::string& option : completionsOf("qvconv --")) bash.insert(option.substr(2));
  std::set<std::string> table;
  for (const qvconv::OptionRow& row : qvconv::optionRows()) {
    std::smatch preferred;
    const std::string names(row.names);
    if (std::regex_search(names, preferred, std::regex("--([a-z-]+)"))) table.insert(preferred[1]);
  }
  EXPECT_EQ(bash, table);
  EXPECT_EQ(optionsIn("qvconv.fish", "complete [^\\n]* -l ([a-z-]+)"), bash);
  EXPECT_EQ(optionsIn("_qvconv", "[',{]--([a-z-]+)"), bash);
}

}  // namespace
