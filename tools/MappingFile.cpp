// Reads a file of codepages, line by line, in the form that codepages/README.md tells.

#include "tools/MappingFile.h"

#include <map>
#include <utility>

namespace pack {

namespace {

// Reads the lines and holds what they must not contradict.
class Reader : LineReader {
 public:
  Reader(const InputFile& file, MappingFile& mapping) : LineReader(file), m_mapping(mapping) {}

  void read() {
    forEachLine([this] { readLine(); });
    checkWhole();
  }

 private:
  void readLine() {
    const std::string_view word = m_words[0];
    if (word.back() == ':') return readRow();
    if (word.back() == '>') return readBestFits();
    if (word == "remove") return readRemovals();
    if (m_words.size() != 2) fail("not understood");
    if (!m_keys.empty()) fail("stands behind the codes it concerns");
    const std::string value(m_words[1]);
    if (word == "table") {
      m_mapping.table = value;
      m_mapping.tableLine = m_line->number;
    } else if (word == "lower-half") {
      if (value != "ascii" && value != "listed") fail("neither ascii nor listed: " + value);
      m_hasLowerHalf = true;
      m_mapping.lowerHalfIsAscii = value == "ascii";
    } else if (word == "same-as") {
      m_mapping.sameAs = referenceOf(value);
    } else if (word == "changes") {
      m_mapping.changes = referenceOf(value);
    } else {
      fail("not understood");
    }
  }

  // "8140: 3000 3001 ...": sixteen codes in a row, both ways.
  void readRow() {
    const std::string_view label = m_words[0].substr(0, m_words[0].size() - 1);
    const std::size_t codeLength = label.size() / 2;
    const unsigned int first = parseCode(label);
    if (m_mapping.changes.codePage) fail("changes are listed from Unicode");
    checkRow(first);
    if (codeLength == 1 && m_mapping.lowerHalfIsAscii && first < 0x80) {
      fail("the lower half is ASCII and not listed");
    }
    keepOrder(m_lastRow, codeLength, first);
    for (std::size_t i = 0; i < codesPerRow; ++i) {
      if (m_words[1 + i] == nothing) continue;
      add(first + static_cast<unsigned int>(i), codeLength, unitOf(m_words[1 + i]), false);
    }
  }

  // "00A0> 20": codes for consecutive characters, from Unicode only.
  void readBestFits() {
    unsigned int unit = unitOf(m_words[0].substr(0, m_words[0].size() - 1));
    if (m_words.size() < 2) fail("no code");
    keepOrder(m_lastBestFit, m_words[1].size() / 2, unit);
    for (std::size_t i = 1; i < m_words.size(); ++i, ++unit) {
      if (m_words[i].size() != m_words[1].size()) fail("codes of different lengths");
      add(parseCode(m_words[i]), m_words[i].size() / 2, unit, true);
    }
  }

  void readRemovals() {
    if (!m_mapping.changes.codePage) fail("only changes can remove");
    for (std::size_t i = 1; i < m_words.size(); ++i) {
      const unsigned int unit = unitOf(m_words[i]);
      takeKey(unit);
      m_mapping.removed.push_back(unit);
    }
  }

  void add(unsigned int code, std::size_t codeLength, unsigned int unit, bool isBestFit) {
    if (code == 0) fail("00 always is U+0000 and cannot be listed");
    takeKey(unit);
    m_mapping.records.push_back({code, codeLength, unit, isBestFit, m_line->number});
  }

  void takeKey(unsigned int unit) {
    const auto [place, isNew] = m_keys.emplace(unit, m_line->number);
    if (!isNew) {
      fail("this character already stands in line " + std::to_string(place->second));
    }
  }

  // One-byte codes stand before two-byte ones and each kind ascends.
  void keepOrder(std::pair<std::size_t, unsigned int>& last, std::size_t codeLength,
                 unsigned int value) {
    const std::pair<std::size_t, unsigned int> now(codeLength, value);
    if (now <= last) fail("out of order");
    last = now;
  }

  unsigned int parseCode(std::string_view text) const {
    const int code = text.size() == 2 ? parseHex(text, 2) : parseHex(text, 4);
    if (code < 0) fail("not a code of two or four digits: " + std::string(text));
    // A lead byte of the lower half would take the ASCII character from its place.
    if (text.size() == 4 && code < 0x8000) fail("lead byte out of range: " + std::string(text));
    return static_cast<unsigned int>(code);
  }

  void checkWhole() const {
    const bool isSame = m_mapping.sameAs.codePage != 0;
    const int kinds = isSame + (m_mapping.changes.codePage != 0) + m_hasLowerHalf;
    if (kinds != 1) m_file.failAtEnd("needs one of lower-half, same-as and changes");
    if (isSame && !m_mapping.records.empty()) {
      m_file.failAtEnd("lists codes and is the same as another page");
    }
    if (!isSame && m_mapping.table.empty()) m_file.failAtEnd("names no table");
  }

  MappingFile& m_mapping;
  std::map<unsigned int, unsigned int> m_keys;  // and the lines they stand in
  std::pair<std::size_t, unsigned int> m_lastRow{0, 0};
  std::pair<std::size_t, unsigned int> m_lastBestFit{0, 0};
  bool m_hasLowerHalf = false;
};

}  // namespace

MappingFile::MappingFile(const std::filesystem::path& file)
    : path(file), codePage(parseCodePage(file.stem().string())) {
  const InputFile input(file);
  if (codePage == 0) input.failAtEnd("the file is not named after a code page");
  Reader(input, *this).read();
}

}  // namespace pack
