#pragma once

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/// The facts of one file of codepages/, for tests that hold the library against
/// them. A second, plain reader of that form: it takes the file to be in order.
struct CodePageFile {
  explicit CodePageFile(int codePage) {
    std::ifstream file(QUORVEL_CODEPAGES_DIR "/" + std::to_string(codePage) + ".txt");
    for (std::string line; std::getline(file, line);) {
      std::istringstream words(line);
      std::string word;
      if (line.empty() || line[0] == '#' || !(words >> word)) continue;
      if (word == "table") {
        words >> table;
      } else if (word == "lower-half") {
        words >> lowerHalf;
      } else if (word == "same-as" || word == "changes") {
        words >> base;
        isChange = word == "changes";
      } else if (word == "remove") {
        while (words >> word) removed.push_back(hex(word));
      } else {
        readCodes(word, words);
      }
    }
    if (base && !isChange) takeMappingOf(CodePageFile(base));
  }

  std::string table;
  std::string lowerHalf;
  int base = 0;
  bool isChange = false;
  std::vector<unsigned int> removed;

  /// Codes as hexadecimal text, of two or four digits, and UTF-16 units.
  std::map<std::string, unsigned int> toUnicode;
  std::map<unsigned int, std::string> fromUnicode;

 private:
  static unsigned int hex(const std::string& text) {
    return static_cast<unsigned int>(std::stoul(text, nullptr, 16));
  }

  void readCodes(std::string label, std::istringstream& words) {
    const bool isBothWays = label.back() == ':';
    label.pop_back();
    unsigned int unit = hex(label);
    unsigned int column = 0;
    for (std::string word; words >> word; ++unit, ++column) {
      if (word == "....") continue;
      if (isBothWays) {
        const std::string code = label.substr(0, label.size() - 1) + "0123456789ABCDEF"[column];
        toUnicode[code] = hex(word);
        fromUnicode[hex(word)] = code;
      } else {
        fromUnicode[unit] = word;
      }
    }
  }

  void takeMappingOf(const CodePageFile& other) {
    lowerHalf = other.lowerHalf;
    toUnicode = other.toUnicode;
    fromUnicode = other.fromUnicode;
  }
};

/// The code pages that codepages/ has a file for, in ascending order.
inline std::vector<int> codePagesWithAFile() {
  std::vector<int> codePages;
  for (const auto& entry : std::filesystem::directory_iterator(QUORVEL_CODEPAGES_DIR)) {
    const std::string stem = entry.path().stem().string();
    if (std::all_of(stem.begin(), stem.end(), [](unsigned char c) { return std::isdigit(c); })) {
      codePages.push_back(std::stoi(stem));
    }
  }
  std::sort(codePages.begin(), codePages.end());
  return codePages;
}
