#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "tests/CodePageFile.h"

/// What the encodings are by their mapping files, for a second text layer that
/// works character by character. Nothing here asks the library.
namespace quorvel::text_reference {

/// A code as a number, lead byte first; its size tells how many bytes it has.
using Code = std::uint32_t;

inline std::string bytesOf(Code code) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto byte = static_cast<char>(code >> shift & 0xFF);
    if (code >> shift != 0 || shift == 0) bytes += byte;
  }
  return bytes;
}

/// One code page with everything that is known of it.
struct Page {
  std::unordered_map<Code, char32_t> reads;
  std::unordered_map<char32_t, Code> writes;
  std::unordered_map<char32_t, Code> bestFits;
};

// --- Four-byte codes of GB 18030, counted in their order -----------------------

struct FourByteRange {
  std::uint32_t first;
  std::uint32_t last;
  char32_t character;
  bool isWritten;
};

inline std::uint32_t placeOfFourBytes(Code code) {
  const auto byte = [code](int shift) { return code >> shift & 0xFF; };
  return (((byte(24) - 0x81) * 10 + byte(16) - 0x30) * 126 + byte(8) - 0x81) * 10 + byte(0) - 0x30;
}

inline Code fourBytesAt(std::uint32_t place) {
  const Code fourth = 0x30 + place % 10;
  const Code third = 0x81 + place / 10 % 126;
  const Code second = 0x30 + place / 1260 % 10;
  const Code first = 0x81 + place / 12600;
  return first << 24 | second << 16 | third << 8 | fourth;
}

// --- Reading the files ------------------------------------------------------------

/// A file of codepages/extra, line by line: each has a label, the mark behind it
/// (':' both ways, '<' only read, '>' only written) and words.
struct ExtraLine {
  std::string label;
  char mark;
  std::vector<std::string> words;
};

inline std::vector<ExtraLine> extraLines(const std::string& name) {
  std::vector<ExtraLine> lines;
  std::ifstream file(QUORVEL_CODEPAGES_DIR "/extra/" + name + ".txt");
  for (std::string line; std::getline(file, line);) {
    std::istringstream text(line);
    ExtraLine read{{}, ' ', {}};
    if (line.empty() || line[0] == '#' || !(text >> read.label)) continue;
    for (std::string word; text >> word;) read.words.push_back(word);
    const char last = read.label.back();
    if (last == ':' || last == '<' || last == '>') {
      read.mark = last;
      read.label.pop_back();
    }
    lines.push_back(read);
  }
  return lines;
}

inline std::uint32_t hexNumber(const std::string& text) {
  return static_cast<std::uint32_t>(std::stoul(text, nullptr, 16));
}

/// The numbered entries of a line: the first belongs to the label, and so on.
inline std::map<std::uint32_t, std::uint32_t> entriesOf(const ExtraLine& line) {
  std::map<std::uint32_t, std::uint32_t> entries;
  std::uint32_t number = hexNumber(line.label);
  for (const std::string& word : line.words) {
    if (word != "....") entries[number] = hexNumber(word);
    ++number;
  }
  return entries;
}

inline void addBestFits(const std::string& page, Page& to) {
  for (const ExtraLine& line : extraLines(page + ".best-fit")) {
    if (line.label == "same-as") {
      addBestFits(line.words.at(0), to);
    } else {
      for (const auto& [character, code] : entriesOf(line)) to.bestFits[character] = code;
    }
  }
}

inline void addReadOnlyCodes(const std::string& page, Page& to) {
  for (const ExtraLine& line : extraLines(page + ".read-only")) {
    for (const auto& [code, character] : entriesOf(line)) to.reads[code] = character;
  }
}

inline Page pageOfFile(const CodePageFile& file) {
  Page page;
  page.reads[0] = U'\0';
  if (file.lowerHalf == "ascii") {
    for (char32_t ascii = 0; ascii < 0x80; ++ascii) page.reads[ascii] = ascii;
  }
  for (const auto& [code, unit] : file.toUnicode) page.reads[hexNumber(code)] = unit;
  for (const auto& [code, character] : page.reads) page.writes[character] = code;
  for (const auto& [unit, code] : file.fromUnicode) {
    if (!page.writes.contains(unit)) page.bestFits[unit] = hexNumber(code);
  }
  return page;
}

/// The page that lists changes: its table with the changes made, turned round to
/// be read. It has no best fits.
inline Page pageOfChanges(const CodePageFile& changes) {
  Page page = pageOfFile(CodePageFile(changes.base));
  page.bestFits.clear();
  for (const unsigned int unit : changes.removed) page.writes.erase(unit);
  for (const auto& [unit, code] : changes.fromUnicode) page.writes[unit] = hexNumber(code);
  page.reads.clear();
  for (const auto& [character, code] : page.writes) page.reads[code] = character;
  return page;
}

inline Page latin1() {
  Page page;
  for (char32_t byte = 0; byte < 0x100; ++byte) page.reads[byte] = page.writes[byte] = byte;
  return page;
}

inline Page loadPage(int number) {
  const CodePageFile file(number);
  const std::string name = std::to_string(number);
  if (file.isChange) return pageOfChanges(file);
  Page page = number == 28591 ? latin1() : pageOfFile(file);
  const bool hasOwnBestFits =
      std::filesystem::exists(QUORVEL_CODEPAGES_DIR "/extra/" + name + ".best-fit.txt");
  addBestFits(hasOwnBestFits || file.base == 0 ? name : std::to_string(file.base), page);
  addReadOnlyCodes(name, page);
  // User-defined characters that the table of 51932 writes at codes which read as
  // something else or as nothing.
  if (number == 51932) {
    for (char32_t user = 0xE000; user <= 0xE757; ++user) page.bestFits.erase(user);
  }
  return page;
}

inline const Page& pageOf(int number) {
  static std::map<int, Page> pages;
  const auto found = pages.find(number);
  return found != pages.end() ? found->second
                              : pages.emplace(number, loadPage(number)).first->second;
}

// --- GB 18030 -----------------------------------------------------------------------

struct Gb18030 {
  Page page;  ///< the codes of one and two bytes
  std::vector<FourByteRange> ranges;
};

inline Gb18030 loadGb18030() {
  Gb18030 facts;
  for (char32_t ascii = 0; ascii < 0x80; ++ascii) {
    facts.page.reads[ascii] = facts.page.writes[ascii] = ascii;
  }
  for (const ExtraLine& line : extraLines("54936")) {
    if (line.mark == ' ') continue;
    const std::size_t dots = line.label.find("..");
    if (dots != std::string::npos) {
      facts.ranges.push_back({placeOfFourBytes(hexNumber(line.label.substr(0, dots))),
                              placeOfFourBytes(hexNumber(line.label.substr(dots + 2))),
                              hexNumber(line.words.at(0)), line.mark == ':'});
      continue;
    }
    for (const auto& [number, value] : entriesOf(line)) {
      if (line.mark == '>') {
        facts.page.writes[number] = value;
      } else {
        facts.page.reads[number] = value;
        if (line.mark == ':') facts.page.writes[value] = number;
      }
    }
  }
  return facts;
}

inline const Gb18030& gb18030() {
  static const Gb18030 facts = loadGb18030();
  return facts;
}

// --- ISO-2022-JP, GSM, and which encodings there are ---------------------------------

/// The Shift_JIS codes of rows 89 to 92 of JIS X 0208, row by row.
inline const std::vector<Code>& lastBlock() {
  static const std::vector<Code> codes = [] {
    std::vector<Code> read;
    std::ifstream file(QUORVEL_CODEPAGES_DIR "/iso2022jp-last-block.txt");
    for (std::string line; std::getline(file, line);) {
      std::istringstream words(line);
      std::string word;
      if (line.empty() || line[0] == '#' || !(words >> word)) continue;
      while (words >> word) read.push_back(hexNumber(word));
    }
    return read;
  }();
  return codes;
}

inline Page loadGsm() {
  static constexpr char32_t alphabet[] =
      U"@\u00A3$\u00A5\u00E8\u00E9\u00F9\u00EC\u00F2\u00C7\n\u00D8\u00F8\r\u00C5\u00E5"
      U"\u0394_\u03A6\u0393\u039B\u03A9\u03A0\u03A8\u03A3\u0398\u039E\x1B\u00C6\u00E6\u00DF\u00C9"
      U" !\"#\u00A4%&'()*+,-./0123456789:;<=>?\u00A1ABCDEFGHIJKLMNOPQRSTUVWXYZ"
      U"\u00C4\u00D6\u00D1\u00DC\u00A7\u00BFabcdefghijklmnopqrstuvwxyz\u00E4\u00F6\u00F1\u00FC"
      U"\u00E0";
  static_assert(std::size(alphabet) == 128 + 1);
  Page page;
  for (Code code = 0; code < 128; ++code) {
    if (code != 0x1B) page.reads[code] = alphabet[code];
  }
  constexpr Code codes[] = {0x1B0A, 0x1B14, 0x1B28, 0x1B29, 0x1B2F,
                            0x1B3C, 0x1B3D, 0x1B3E, 0x1B40, 0x1B65};
  const std::u32string extension = U"\f^{}\\[~]|\u20AC";
  for (std::size_t i = 0; i < std::size(codes); ++i) page.reads[codes[i]] = extension[i];
  for (const auto& [code, character] : page.reads) page.writes[character] = code;
  return page;
}

inline const Page& gsm() {
  static const Page page = loadGsm();
  return page;
}

enum class Family { utf8, utf16, utf32, utf7, gsm, iso2022Jp, iso2022Kr, gb18030, page };

inline Family familyOf(int number) {
  switch (number) {
    case 65001:
      return Family::utf8;
    case 1200:
    case 1201:
      return Family::utf16;
    case 12000:
    case 12001:
    case 65005:
    case 65006:
      return Family::utf32;
    case 65000:
      return Family::utf7;
    case 55000:
      return Family::gsm;
    case 50220:
    case 50221:
    case 50222:
      return Family::iso2022Jp;
    case 50225:
      return Family::iso2022Kr;
    case 54936:
      return Family::gb18030;
    default:
      return Family::page;
  }
}

inline bool isUtf81632(int number) {
  const Family family = familyOf(number);
  return family == Family::utf8 || family == Family::utf16 || family == Family::utf32;
}

inline bool keepsState(int number) {
  const Family family = familyOf(number);
  return family == Family::utf7 || family == Family::iso2022Jp || family == Family::iso2022Kr;
}

inline bool isBigEndian(int number) { return number == 1201 || number == 12001 || number == 65006; }

/// Every encoding, in ascending order.
inline const std::vector<int>& allNumbers() {
  static const std::vector<int> numbers = [] {
    std::vector<int> all = codePagesWithAFile();
    for (const int number : {1200, 1201, 12000, 12001, 50220, 50221, 50222, 50225, 54936, 55000,
                             65000, 65001, 65005, 65006}) {
      all.push_back(number);
    }
    std::sort(all.begin(), all.end());
    return all;
  }();
  return numbers;
}

}  // namespace quorvel::text_reference
