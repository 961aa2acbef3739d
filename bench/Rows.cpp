#include "Rows.h"

#include <sstream>
#include <stdexcept>

namespace quorvel::bench {

namespace {

// Several names for an encoding mean several tables: all whose results agree with
// ours are measured, and the fastest counts.
constexpr Encoding encodings[] = {
    {utf8,
     "english french russian arabic japanese chinese_simplified chinese_traditional korean emoji",
     "UTF-8", "UTF-8"},
    {utf16le, "", "UTF-16LE", "UTF-16LE"},
    {1252, "english french", "CP1252", "windows-1252"},
    {1251, "russian", "CP1251", "windows-1251"},
    {37, "english", "IBM037", "ibm-37"},
    {932, "japanese", "CP932", "ibm-943_P15A-2003"},
    {936, "chinese_simplified", "CP936", "windows-936-2000 ibm-1386_P100-2001"},
    {949, "korean", "CP949", "windows-949-2000 ibm-1363_P11B-1998"},
    {950, "chinese_traditional", "CP950", "windows-950-2000 ibm-1373_P100-2002"},
    {51932, "japanese", "EUC-JP EUC-JP-MS", "euc-jp-2007 ibm-33722_P12A_P12A-2009_U2"},
};

}  // namespace

std::string Row::name() const {
  return std::to_string(from->codePage) + " to " + std::to_string(to->codePage) + ", " +
         language->name;
}

std::vector<Row> allRows() {
  std::vector<Row> rows;
  const Encoding& eight = encodingOf(utf8);
  const Encoding& sixteen = encodingOf(utf16le);
  for (const Encoding& encoding : encodings) {
    for (const std::string& word : wordsOf(encoding.languages)) {
      const Language& language = languageNamed(word);
      rows.push_back({&encoding, &sixteen, &language});
      rows.push_back({&sixteen, &encoding, &language});
      if (&encoding == &eight) continue;
      rows.push_back({&encoding, &eight, &language});
      rows.push_back({&eight, &encoding, &language});
    }
  }
  return rows;
}

const Encoding& encodingOf(int codePage) {
  for (const Encoding& encoding : encodings) {
    if (encoding.codePage == codePage) return encoding;
  }
  throw std::runtime_error("no row has code page " + std::to_string(codePage));
}

std::vector<std::string> wordsOf(const char* list) {
  std::istringstream stream(list);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace quorvel::bench
