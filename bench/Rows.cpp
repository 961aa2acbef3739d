// The conversions that are measured, by the names that we and the peers have for them.

#include "Rows.h"

#include <sstream>
#include <stdexcept>

namespace quorvel::bench {

namespace {

constexpr const char* allLanguages =
    "english french russian arabic japanese chinese_simplified chinese_traditional korean emoji";

// Several names for an encoding mean several tables: all whose results agree with
// ours are measured, and the fastest counts.
constexpr Encoding encodings[] = {
    {Family::utf16, utf16le, allLanguages, "UTF-16LE", "UTF-16LE"},
    {Family::utf32, 12000, allLanguages, "UTF-32LE", "UTF-32LE"},
    {Family::singleByte, 1252, "english french", "CP1252", "windows-1252"},
    {Family::singleByte, 1251, "russian", "CP1251", "windows-1251"},
    {Family::singleByte, 1256, "arabic", "CP1256", "windows-1256"},
    {Family::singleByte, 874, "thai", "CP874", "windows-874-2000 ibm-874_P100-1995"},
    {Family::singleByte, 28592, "polish", "ISO-8859-2", "ibm-912_P100-1995"},
    {Family::singleByte, 437, "french_typed", "CP437", "ibm-437_P100-1995"},
    {Family::singleByte, 850, "", "CP850", "ibm-850_P100-1995"},
    {Family::singleByte, 37, "english", "IBM037", "ibm-37"},
    {Family::singleByte, 1141, "german", "IBM1141", "ibm-1141_P100-1997"},
    {Family::singleByte, 10000, "french", "MACINTOSH", "macos-0_2-10.2"},
    {Family::singleByte, 20866, "russian_typed", "KOI8-R", "ibm-878_P100-1996"},
    {Family::multibyte, 932, "japanese", "CP932", "ibm-943_P15A-2003"},
    {Family::multibyte, 936, "chinese_simplified", "CP936", "windows-936-2000 ibm-1386_P100-2001"},
    {Family::multibyte, 949, "korean", "CP949", "windows-949-2000 ibm-1363_P11B-1998"},
    {Family::multibyte, 950, "chinese_traditional", "CP950", "windows-950-2000 ibm-1373_P100-2002"},
    {Family::multibyte, 1361, "korean", "JOHAB", ""},
    {Family::multibyte, 51932, "japanese", "EUC-JP EUC-JP-MS",
     "euc-jp-2007 ibm-33722_P12A_P12A-2009_U2"},
    {Family::multibyte, 51936, "chinese_simplified", "EUC-CN", "ibm-1383_P110-1999"},
    {Family::multibyte, 51949, "korean", "EUC-KR", "ibm-970_P110_P110-2006_U2"},
    {Family::iso2022, 50220, "japanese", "ISO-2022-JP", "ISO-2022-JP"},
    {Family::iso2022, 50225, "korean", "ISO-2022-KR", "ISO-2022-KR"},
    {Family::utf7, 65000, "english_direct french_direct japanese_direct", "UTF-7", "UTF-7"},
};

constexpr Encoding eight = {Family::utf16, utf8, "", "UTF-8", "UTF-8"};

struct Legacy {
  int from;
  int to;
  const char* language;
};

constexpr Legacy legacies[] = {
    {1252, 850, "french_typed"}, {37, 1252, "english"},  {1251, 20866, "russian_typed"},
    {51932, 932, "japanese"},    {949, 51949, "korean"},
};

// An encoding beside UTF-8, and all but the Unicode ones beside UTF-16 too.
void appendRowsOf(const Encoding& encoding, std::vector<Row>& rows) {
  const Encoding& sixteen = encodingOf(utf16le);
  for (const std::string& word : wordsOf(encoding.languages)) {
    const Language& language = languageNamed(word);
    if (encoding.family > Family::utf32) {
      rows.push_back({encoding.family, &encoding, &sixteen, &language});
      rows.push_back({encoding.family, &sixteen, &encoding, &language});
    }
    rows.push_back({encoding.family, &encoding, &eight, &language});
    rows.push_back({encoding.family, &eight, &encoding, &language});
  }
}

}  // namespace

const char* titleOf(Family family) {
  switch (family) {
    case Family::utf16:
      return "UTF-8 and UTF-16";
    case Family::utf32:
      return "UTF-8 and UTF-32";
    case Family::singleByte:
      return "Single-byte pages";
    case Family::multibyte:
      return "Multibyte pages";
    case Family::legacy:
      return "Page to page";
    case Family::iso2022:
      return "ISO-2022";
    case Family::utf7:
      return "UTF-7";
  }
  return "";
}

std::string Row::name() const {
  return std::to_string(from->codePage) + " to " + std::to_string(to->codePage) + ", " +
         language->name;
}

std::vector<Row> allRows() {
  std::vector<Row> rows;
  for (const Encoding& encoding : encodings) appendRowsOf(encoding, rows);
  for (const auto& [from, to, language] : legacies) {
    rows.push_back({Family::legacy, &encodingOf(from), &encodingOf(to), &languageNamed(language)});
  }
  return rows;
}

const Encoding& encodingOf(int codePage) {
  if (codePage == utf8) return eight;
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
