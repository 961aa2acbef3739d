// Reads a file of codepages/extra, line by line. A line is told by the last character of
// its label; what each kind of file may say is asked first.

#include "tools/ExtraFile.h"

#include <map>
#include <optional>
#include <utility>

namespace pack {

namespace {

using Kind = ExtraFile::Kind;

constexpr unsigned int lastCharacter = 0x10FFFF;

// The place of a four-byte code in their order.
std::optional<unsigned int> placeOf(std::string_view code) {
  constexpr int least[] = {0x81, 0x30, 0x81, 0x30};
  constexpr int most[] = {0xFE, 0x39, 0xFE, 0x39};
  if (code.size() != 8) return std::nullopt;
  int place = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const int byte = parseHex(code.substr(2 * i, 2), 2);
    if (byte < least[i] || byte > most[i]) return std::nullopt;
    place = place * (most[i] - least[i] + 1) + byte - least[i];
  }
  return static_cast<unsigned int>(place);
}

// Reads the lines and holds what they must not contradict.
class Reader : LineReader {
 public:
  Reader(const InputFile& file, ExtraFile& extra) : LineReader(file), m_extra(extra) {}

  void read() {
    forEachLine([this] { readLine(); });
    checkWhole();
  }

 private:
  void readLine() {
    const std::string_view label = m_words[0].substr(0, m_words[0].size() - 1);
    const char mark = m_words[0].back();
    const bool isWhole = m_extra.kind == Kind::WholePage;
    if (m_words[0] == "same-as" && m_words.size() == 2 && m_extra.kind == Kind::BestFit) {
      m_extra.sameAs = referenceOf(m_words[1]);
    } else if (isWhole && m_line->text == "lower-half ascii") {
      m_hasLowerHalf = true;
    } else if (isWhole && (mark == ':' || mark == '<') &&
               label.find("..") != std::string_view::npos) {
      readRange(label, mark == '<');
    } else if (mark == ':' && isWhole) {
      readRow(label);
    } else if (mark == '<' && m_extra.kind != Kind::BestFit) {
      readReadOnlyRow(label);
    } else if (mark == '>' && m_extra.kind != Kind::ReadOnly) {
      readBestFits(label);
    } else {
      fail("has no place in a file of this kind");
    }
  }

  // "8140: 4E02 4E04 ...": sixteen codes in a row, both ways.
  void readRow(std::string_view label) {
    if (label.size() != 4) fail("not a code of two bytes: " + std::string(label));
    forEachOfRow(label, m_lastRow, [this](unsigned int code, unsigned int unit) {
      takeCharacters(unit, 1);
      m_extra.records.push_back({code, 2, unit, false, m_line->number});
    });
  }

  // "8790< 2252 2261 ...": the same, to Unicode only.
  void readReadOnlyRow(std::string_view label) {
    if (label.size() == 6 && m_extra.kind == Kind::WholePage) fail("not a code of two bytes");
    forEachOfRow(label, m_lastReadOnlyRow, [&](unsigned int code, unsigned int unit) {
      m_extra.readOnly.push_back({code, label.size() / 2, unit, false, m_line->number});
    });
  }

  template <typename Take>
  void forEachOfRow(std::string_view label, unsigned int& last, const Take& take) {
    const unsigned int first = parseCode(label, 4);
    checkRow(first);
    if (first <= last) fail("out of order");
    last = first;
    for (unsigned int i = 0; i < codesPerRow; ++i) {
      if (m_words[1 + i] == nothing) continue;
      takeCode(first + i);
      take(first + i, unitOf(m_words[1 + i]));
    }
  }

  // "0100> 41 61 ...": codes for consecutive characters, from Unicode only.
  void readBestFits(std::string_view label) {
    unsigned int unit = unitOf(label);
    if (m_words.size() < 2) fail("no code");
    for (std::size_t i = 1; i < m_words.size(); ++i, ++unit) {
      if (unit <= m_lastUnit) fail("out of order");
      m_lastUnit = unit;
      if (m_words[i].size() != m_words[1].size()) fail("codes of different lengths");
      takeCharacters(unit, 1);
      m_extra.records.push_back(
          {parseCode(m_words[i], 2), m_words[i].size() / 2, unit, true, m_line->number});
    }
  }

  // "81308130..81308435: 0080": consecutive codes for consecutive characters.
  void readRange(std::string_view label, bool isReadOnly) {
    const std::size_t dots = label.find("..");
    const auto first = placeOf(label.substr(0, dots));
    const auto last = placeOf(label.substr(dots + 2));
    if (!first || !last || *last < *first) fail("not a range of four-byte codes");
    if (*first < m_nextPlace) fail("out of order");
    m_nextPlace = *last + 1;
    const unsigned int count = *last - *first + 1;
    const int character =
        m_words.size() == 2
            ? parseHex(m_words[1], static_cast<unsigned int>(m_words[1].size() > 4 ? 5 : 4))
            : -1;
    const auto unit = static_cast<unsigned int>(character);
    if (character <= 0 || unit + count - 1 > lastCharacter) fail("not the first of characters");
    if (unit <= 0xDFFF && unit + count - 1 >= 0xD800) fail("surrogates among the characters");
    if (!isReadOnly) takeCharacters(unit, count);
    m_extra.ranges.push_back({*first, count, unit, isReadOnly});
  }

  // Characters that are written: each has one code.
  void takeCharacters(unsigned int first, unsigned int count) {
    const auto behind = m_taken.upper_bound(first + count - 1);
    if (behind != m_taken.begin()) {
      const auto& [otherFirst, other] = *std::prev(behind);
      if (otherFirst + other.first > first) {
        fail("a character that already stands in line " + std::to_string(other.second));
      }
    }
    m_taken.emplace(first, std::pair(count, m_line->number));
  }

  // Codes that are read: each stands for one character.
  void takeCode(unsigned int code) {
    const auto [place, isNew] = m_codes.emplace(code, m_line->number);
    if (!isNew) fail("this code already stands in line " + std::to_string(place->second));
  }

  // A code of `leastDigits` digits or two more.
  unsigned int parseCode(std::string_view text, unsigned int leastDigits) const {
    const auto digits = static_cast<unsigned int>(text.size());
    const int code =
        digits == leastDigits + 2 ? parseHex(text, digits) : parseHex(text, leastDigits);
    if (code <= 0) fail("not a code: " + std::string(text));
    if (digits > 2 && code >> (4 * (digits - 2)) < 0x80) {
      fail("lead byte out of range: " + std::string(text));
    }
    return static_cast<unsigned int>(code);
  }

  void checkWhole() const {
    const bool isEmpty =
        m_extra.records.empty() && m_extra.readOnly.empty() && m_extra.ranges.empty();
    const bool isSame = m_extra.sameAs.codePage != 0;
    if (isSame && !isEmpty) m_file.failAtEnd("lists codes and is the same as another page");
    if (!isSame && isEmpty) m_file.failAtEnd("says nothing");
    if (m_extra.kind == Kind::WholePage && !m_hasLowerHalf) m_file.failAtEnd("needs lower-half");
  }

  ExtraFile& m_extra;
  std::map<unsigned int, unsigned int> m_codes;  // and the lines they stand in
  std::map<unsigned int, std::pair<unsigned int, unsigned int>> m_taken;  // counts and lines
  unsigned int m_lastRow = 0;
  unsigned int m_lastReadOnlyRow = 0;
  unsigned int m_lastUnit = 0;
  unsigned int m_nextPlace = 0;
  bool m_hasLowerHalf = false;
};

std::optional<Kind> kindOf(const std::filesystem::path& name) {
  if (name.extension().empty()) return Kind::WholePage;
  if (name.extension() == ".read-only") return Kind::ReadOnly;
  if (name.extension() == ".best-fit") return Kind::BestFit;
  return std::nullopt;
}

}  // namespace

ExtraFile::ExtraFile(const std::filesystem::path& file)
    : path(file), codePage(parseCodePage(file.stem().stem().string())) {
  const InputFile input(file);
  const std::optional<Kind> told = kindOf(file.stem());
  if (codePage == 0 || !told) input.failAtEnd("the file is not named after a page and a kind");
  kind = *told;
  Reader(input, *this).read();
}

}  // namespace pack
