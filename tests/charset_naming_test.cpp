#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/names/CharsetNaming.h"

namespace quorvel {
namespace {

int pageOf(const std::string& name) { return CharsetNaming::GetCodePage(name.c_str()); }

int pageOfBuffer(std::string_view name) {
  StringBuffer text;
  text.appendN(name.data(), static_cast<unsigned int>(name.size()));
  return CharsetNaming::GetCodePage(text);
}

std::vector<std::string> namesOf(const CharsetNaming::Entry& entry) {
  std::istringstream names(entry.names);
  std::vector<std::string> list;
  for (std::string name; names >> name;) list.push_back(name);
  return list;
}

std::vector<CharsetNaming::Entry> allEntries() {
  std::vector<CharsetNaming::Entry> list;
  for (unsigned int i = 0; i < CharsetNaming::count(); ++i) list.push_back(CharsetNaming::at(i));
  return list;
}

// The loose rule as its text has it, one deletion after the other.
std::string loosened(const std::string& name) {
  std::string kept;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 && std::isalnum(byte)) kept += static_cast<char>(std::tolower(byte));
  }
  for (std::size_t i = 0; i < kept.size();) {
    const bool afterDigit = i > 0 && std::isdigit(static_cast<unsigned char>(kept[i - 1]));
    if (kept[i] == '0' && !afterDigit) {
      kept.erase(i, 1);
    } else {
      ++i;
    }
  }
  return kept;
}

enum class Kind { Unicode, Gsm, Iso2022, SingleByte, MultiByte };

const std::map<Kind, std::vector<int>>& pagesByKind() {
  static const std::map<Kind, std::vector<int>> pages = [] {
    std::map<Kind, std::vector<int>> found;
#define QUORVEL_CODE_PAGE(number, kind, table, title, names, ...) \
  found[Kind::kind].push_back(number);
#include "codepages/CodePages.def"
    return found;
  }();
  return pages;
}

TEST(CodePageTable, HasTheUnicodeGsmAndIso2022Pages) {
  EXPECT_EQ(pagesByKind().at(Kind::Unicode),
            (std::vector<int>{1200, 1201, 12000, 12001, 65000, 65001, 65005, 65006}));
  EXPECT_EQ(pagesByKind().at(Kind::Gsm), (std::vector<int>{55000}));
  EXPECT_EQ(pagesByKind().at(Kind::Iso2022), (std::vector<int>{50220, 50221, 50222, 50225}));
}

TEST(CodePageTable, HasTheMultiBytePages) {
  EXPECT_EQ(pagesByKind().at(Kind::MultiByte),
            (std::vector<int>{932, 936, 949, 950, 1361, 10001, 51932, 51936, 51949, 52936}));
}

TEST(CodePageTable, HasTheSingleBytePages) {
  EXPECT_EQ(
      pagesByKind().at(Kind::SingleByte),
      (std::vector<int>{37,    437,   500,   708,   720,   737,   775,   850,   852,   855,   857,
                        858,   860,   861,   862,   863,   864,   865,   866,   869,   870,   874,
                        875,   1026,  1047,  1140,  1141,  1142,  1143,  1144,  1145,  1146,  1147,
                        1148,  1149,  1250,  1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258,
                        10000, 10004, 10005, 10006, 10007, 10010, 10017, 10021, 10029, 10079, 10081,
                        10082, 20105, 20106, 20107, 20108, 20127, 20261, 20269, 20273, 20277, 20278,
                        20280, 20284, 20285, 20290, 20297, 20420, 20423, 20424, 20838, 20866, 20871,
                        20880, 20905, 20924, 21025, 21866, 28591, 28592, 28593, 28594, 28595, 28596,
                        28597, 28598, 28599, 28600, 28601, 28603, 28605, 38598}));
}

TEST(CharsetNaming, ListsThePagesInAscendingOrder) {
  std::size_t listed = 0;
  for (const auto& [kind, pages] : pagesByKind()) listed += pages.size();
  ASSERT_EQ(CharsetNaming::count(), listed);
  for (unsigned int i = 1; i < CharsetNaming::count(); ++i) {
    EXPECT_LT(CharsetNaming::at(i - 1).codePage, CharsetNaming::at(i).codePage);
  }
}

TEST(CharsetNaming, GivesEveryPageATitleAndAName) {
  for (const auto& entry : allEntries()) {
    EXPECT_GT(std::string_view(entry.title).size(), 0u) << entry.codePage;
    EXPECT_FALSE(namesOf(entry).empty()) << entry.codePage;
  }
}

TEST(CharsetNaming, SeparatesNamesByOneSpace) {
  for (const auto& entry : allEntries()) {
    std::string joined;
    for (const std::string& name : namesOf(entry)) joined += (joined.empty() ? "" : " ") + name;
    EXPECT_EQ(joined, entry.names);
  }
}

TEST(CharsetNaming, FindsTheEntryOfEveryPage) {
  for (unsigned int i = 0; i < CharsetNaming::count(); ++i) {
    const auto& entry = CharsetNaming::at(i);
    EXPECT_EQ(CharsetNaming::find(entry.codePage), &entry);
  }
}

TEST(CharsetNaming, FindsNoEntryForOtherNumbers) {
  for (const int number : {-1, 0, 1, 36, 38, 933, 1259, 28602, 28604, 54936, 65002, 65007, 65537,
                           2147483647, -2147483647 - 1}) {
    EXPECT_EQ(CharsetNaming::find(number), nullptr) << number;
  }
}

TEST(CharsetNaming, ResolvesEveryListedName) {
  for (const auto& entry : allEntries()) {
    for (const std::string& name : namesOf(entry)) {
      EXPECT_EQ(pageOf(name), entry.codePage) << name;
      EXPECT_EQ(pageOfBuffer(name), entry.codePage) << name;
    }
  }
}

TEST(CharsetNaming, GivesNoNameToTwoPages) {
  std::map<std::string, int> owner;
  for (const auto& entry : allEntries()) {
    for (const std::string& name : namesOf(entry)) {
      const auto [first, isNew] = owner.emplace(loosened(name), entry.codePage);
      EXPECT_TRUE(isNew) << name << " is also a name of " << first->second;
    }
  }
}

TEST(CharsetNaming, ResolvesTheNumberOfEveryPage) {
  for (const auto& entry : allEntries()) {
    const std::string number = std::to_string(entry.codePage);
    for (const char* prefix : {"", "0", "000", "cp", "CP0", "cp-", "windows-", "windows_0"}) {
      EXPECT_EQ(pageOf(prefix + number), entry.codePage) << prefix << number;
    }
  }
}

TEST(CharsetNaming, ResolvesNoNumberThatIsNotServed) {
  std::set<int> served;
  for (const auto& entry : allEntries()) served.insert(entry.codePage);
  const int ascii = 646;  // a name of US-ASCII in its own right
  for (int number = 0; number < 70000; ++number) {
    if (served.count(number) != 0 || number == ascii) continue;
    ASSERT_EQ(pageOf(std::to_string(number)), 0) << number;
  }
}

TEST(CharsetNaming, TakesNumbersThatDoNotFitAnIntForUnknown) {
  EXPECT_EQ(pageOf("4294968228"), 0);  // 2^32 + 932
  EXPECT_EQ(pageOf("cp4294968228"), 0);
  EXPECT_EQ(pageOf("18446744073709552548"), 0);  // 2^64 + 932
}

TEST(CharsetNaming, IgnoresCasePunctuationAndLeadingZeros) {
  for (const char* name : {"utf-8", "UTF-8", "utf8", "Utf_8", "u.t.f-008", " utf 8 ", "\"UTF-8\"",
                           "utf\xE2\x80\x93"
                           "8"}) {
    EXPECT_EQ(pageOf(name), 65001) << name;
  }
  for (const char* name : {"IBM00858", "ibm858", "IBM-858", "ibm_0858"}) {
    EXPECT_EQ(pageOf(name), 858) << name;
  }
  for (const char* name : {"IBM037", "ibm37", "cp037", "CP37", "037", "37"}) {
    EXPECT_EQ(pageOf(name), 37) << name;
  }
  EXPECT_EQ(pageOf("0932"), 932);
  EXPECT_EQ(pageOf("ISO_8859-01:1987"), 0) << "this zero follows a digit";
}

TEST(CharsetNaming, KeepsZerosThatFollowADigit) {
  EXPECT_EQ(pageOf("utf-80"), 0);
  EXPECT_EQ(pageOf("ut8"), 0);
  EXPECT_EQ(pageOf("iso-8859-10"), 28600);
  EXPECT_EQ(pageOf("iso-8859-1-0"), 28600);
  EXPECT_EQ(pageOf("iso-8859-010"), 0);
  EXPECT_EQ(pageOf("cp9302"), 0);
  EXPECT_EQ(pageOf("9032"), 0);
}

TEST(CharsetNaming, MatchesEveryNameHoweverItIsPunctuated) {
  for (const auto& entry : allEntries()) {
    for (const std::string& name : namesOf(entry)) {
      const std::string loose = loosened(name);
      std::string spread;
      bool afterDigit = false;
      for (const char c : loose) {
        const bool digit = std::isdigit(static_cast<unsigned char>(c)) != 0;
        if (digit && !afterDigit) spread += "-0.0";
        spread += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        spread += '_';
        afterDigit = digit;
      }
      EXPECT_EQ(pageOf(loose), entry.codePage) << loose;
      EXPECT_EQ(pageOf(spread), entry.codePage) << spread;
    }
  }
}

TEST(CharsetNaming, DoesNotMatchTheBeginningOfAName) {
  std::set<std::string> known;
  for (const auto& entry : allEntries()) {
    for (const std::string& name : namesOf(entry)) known.insert(loosened(name));
  }
  for (const std::string& name : known) {
    EXPECT_EQ(pageOf(name + "q"), 0) << name;
    EXPECT_EQ(pageOf("q" + name), 0) << name;
  }
}

struct Known {
  const char* name;
  int codePage;
};

void expectAll(const std::vector<Known>& names) {
  for (const Known& known : names) EXPECT_EQ(pageOf(known.name), known.codePage) << known.name;
}

TEST(CharsetNaming, KnowsTheUnicodeEncodings) {
  expectAll({{"UTF-8", 65001},
             {"utf8", 65001},
             {"csUTF8", 65001},
             {"unicode-1-1-utf-8", 65001},
             {"unicode11utf8", 65001},
             {"x-unicode20utf8", 65001},
             {"UTF-16", 1200},
             {"UTF-16LE", 1200},
             {"ISO-10646-UCS-2", 1200},
             {"ucs-2", 1200},
             {"unicode", 1200},
             {"csUnicode", 1200},
             {"UTF-16BE", 1201},
             {"unicodeFFFE", 1201},
             {"UTF-32", 12000},
             {"UTF-32LE", 12000},
             {"ucs-4", 12000},
             {"csUCS4", 12000},
             {"UTF-32BE", 12001},
             {"UTF-7", 65000},
             {"unicode-1-1-utf-7", 65000},
             {"cp65005", 65005},
             {"cp65006", 65006}});
}

TEST(CharsetNaming, KnowsTheAliasesOfLatin1) {
  for (const char* name :
       {"ISO-8859-1", "ISO_8859-1:1987", "ISO-8859-1:1987", "ISO_8859-1", "iso-ir-100", "latin1",
        "l1", "IBM819", "CP819", "csISOLatin1", "iso8859-1", "iso88591", "8859_1"}) {
    EXPECT_EQ(pageOf(name), 28591) << name;
  }
}

TEST(CharsetNaming, KnowsTheAliasesOfAscii) {
  for (const char* name :
       {"US-ASCII", "ascii", "us", "ANSI_X3.4-1968", "ANSI_X3.4-1986", "ISO_646.irv:1991",
        "ISO646-US", "iso-ir-6", "IBM367", "cp367", "csASCII", "646"}) {
    EXPECT_EQ(pageOf(name), 20127) << name;
  }
}

TEST(CharsetNaming, KnowsTheIsoFamily) {
  expectAll({{"latin2", 28592},          {"ISO_8859-2:1987", 28592}, {"iso-8859-3", 28593},
             {"ISO_8859-4:1988", 28594}, {"cyrillic", 28595},        {"csISOLatinArabic", 28596},
             {"ECMA-114", 28596},        {"ISO-8859-6-E", 28596},    {"greek", 28597},
             {"ELOT_928", 28597},        {"ECMA-118", 28597},        {"hebrew", 28598},
             {"visual", 28598},          {"iso-8859-8-e", 28598},    {"iso-8859-8-i", 38598},
             {"ISO_8859-8-I", 38598},    {"logical", 38598},         {"csISO88598I", 38598},
             {"latin5", 28599},          {"iso-ir-148", 28599},      {"latin6", 28600},
             {"iso-8859-11", 28601},     {"iso-8859-13", 28603},     {"Latin-9", 28605},
             {"iso-8859-15", 28605}});
}

TEST(CharsetNaming, KnowsTheWindowsAndDosPages) {
  expectAll({{"windows-1252", 1252},  {"ibm-1252", 1252},
             {"cswindows1251", 1251}, {"ms-cyrl", 1251},
             {"x-cp1250", 1250},      {"windows-874", 874},
             {"TIS-620", 874},        {"dos-720", 720},
             {"dos-862", 862},        {"asmo-708", 708},
             {"ibm-850", 850},        {"csPC850Multilingual", 850},
             {"cp437", 437},          {"csPC8CodePage437", 437},
             {"CCSID00858", 858},     {"PC-Multilingual-850+euro", 858},
             {"cp-gr", 869},          {"cp-is", 861},
             {"koi8-r", 20866},       {"csKOI8R", 20866},
             {"koi8-u", 21866}});
}

TEST(CharsetNaming, KnowsTheEbcdicPages) {
  expectAll({{"IBM01140", 1140},
             {"CCSID01140", 1140},
             {"CP01140", 1140},
             {"ibm-1140", 1140},
             {"ebcdic-us-37+euro", 1140},
             {"ebcdic-no-277+euro", 1142},
             {"ebcdic-cp-us", 37},
             {"ebcdic-cp-be", 500},
             {"IBM1047", 1047},
             {"IBM-1047", 1047},
             {"IBM01047", 1047},
             {"IBM273", 20273},
             {"cp273", 20273},
             {"EBCDIC-CP-DK", 20277},
             {"ebcdic-jp-kana", 20290},
             {"IBM-Thai", 20838},
             {"ebcdic-Cyrillic", 20880},
             {"IBM00924", 20924},
             {"ebcdic-Latin9--euro", 20924},
             {"cp1025", 21025}});
}

TEST(CharsetNaming, KnowsTheMacintoshAndSevenBitPages) {
  expectAll({{"macintosh", 10000},       {"mac", 10000},          {"csMacintosh", 10000},
             {"x-mac-japanese", 10001},  {"x-mac-arabic", 10004}, {"MacCyrillic", 10007},
             {"x-mac-ukrainian", 10017}, {"x-mac-ce", 10029},     {"MacIcelandic", 10079},
             {"x-IA5", 20105},           {"x-ia5-german", 20106}, {"DIN_66003", 20106},
             {"SEN_850200_C", 20107},    {"NS_4551-2", 20108},    {"x-cp20261", 20261},
             {"T.61-8bit", 20261},       {"x-cp20269", 20269},    {"gsm-default-alphabet", 55000},
             {"gsm0338", 55000},         {"gsm-03.38", 55000}});
}

TEST(CharsetNaming, KnowsTheEastAsianPagesByTheirWindowsMeaning) {
  expectAll({{"shift_jis", 932},     {"Shift-JIS", 932},
             {"MS_Kanji", 932},      {"windows-31j", 932},
             {"csWindows31J", 932},  {"ms932", 932},
             {"gb2312", 936},        {"GBK", 936},
             {"cp936", 936},         {"ms936", 936},
             {"chinese", 936},       {"ks_c_5601-1987", 949},
             {"KSC_5601", 949},      {"korean", 949},
             {"uhc", 949},           {"ms949", 949},
             {"windows-949", 949},   {"big5", 950},
             {"cn-big5", 950},       {"johab", 1361},
             {"euc-jp", 51932},      {"Extended_UNIX_Code_Packed_Format_for_Japanese", 51932},
             {"x-euc-cn", 51936},    {"euc-kr", 51949},
             {"cp52936", 52936},     {"iso-2022-jp", 50220},
             {"csISO2022JP", 50221}, {"_iso-2022-jp$SIO", 50222},
             {"iso-2022-kr", 50225}, {"csISO2022KR", 50225}});
}

TEST(CharsetNaming, KnowsNoEncodingThatIsNotServed) {
  for (const char* name :
       {"gb18030",        "hz-gb-2312",    "hz",          "iso-2022-cn",   "iso-2022-jp-1",
        "iso-2022-jp-2",  "iso-2022-jp-3", "big5-hkscs",  "euc-tw",        "euc-jp-ms",
        "shift_jisx0213", "ibm-932",       "ibm-943",     "ibm-949",       "ibm-942",
        "ibm-1200",       "iso-8859-12",   "iso-8859-14", "iso-8859-16",   "latin8",
        "latin10",        "viscii",        "tcvn",        "utf-1",         "utf-7-imap",
        "cesu-8",         "scsu",          "hp-roman8",   "windows-1259",  "windows-936x",
        "koi8-t",         "cp851",         "cp1125",      "ebcdic-cp-ar2", "x-sjis-2004",
        "SEN_850200_B",   "NS_4551-1"}) {
    EXPECT_EQ(pageOf(name), 0) << name;
    EXPECT_EQ(pageOfBuffer(name), 0) << name;
  }
}

TEST(CharsetNaming, KnowsNothingByNoName) {
  for (const char* name : {"", " ", "-", "0", "000", "cp", "cp0", "windows-", "windows", "ibm",
                           "utf", "utf-8x", "latin", "\xFF\xFE", "\xC3\xA4"}) {
    EXPECT_EQ(pageOf(name), 0) << name;
  }
  EXPECT_EQ(CharsetNaming::GetCodePage(static_cast<const char*>(nullptr)), 0);
  StringBuffer empty;
  EXPECT_EQ(CharsetNaming::GetCodePage(empty), 0);
}

TEST(CharsetNaming, LooksAtTheWholeOfABuffer) {
  using namespace std::string_view_literals;
  EXPECT_EQ(pageOfBuffer("utf-8\0x"sv), 0);
  EXPECT_EQ(pageOfBuffer("\0utf-8"sv), 65001) << "a NUL is punctuation like any other";
}

TEST(CharsetNaming, TakesNamesOfUpTo255Bytes) {
  const std::string name = "utf-8";
  const std::string longest = std::string(255 - name.size(), '-') + name;
  EXPECT_EQ(pageOf(longest), 65001);
  EXPECT_EQ(pageOfBuffer(longest), 65001);
  EXPECT_EQ(pageOf("-" + longest), 0);
  EXPECT_EQ(pageOfBuffer("-" + longest), 0);
}

TEST(CharsetNaming, RefusesHostilelyLongNames) {
  for (const char c : {'a', '0', '1', '-', '\xFF'}) {
    for (const std::size_t length : {47u, 48u, 49u, 254u, 255u, 256u, 10000000u}) {
      EXPECT_EQ(pageOf(std::string(length, c)), 0) << c << ' ' << length;
      EXPECT_EQ(pageOfBuffer(std::string(length, c)), 0) << c << ' ' << length;
    }
  }
}

TEST(CharsetNaming, NeverReadsPastAName) {
  for (std::size_t length = 0; length < 64; ++length) {
    const std::vector<char> exact(length, 'u');
    EXPECT_EQ(pageOfBuffer({exact.data(), length}), 0);
    std::vector<char> terminated(length + 1, 'u');
    terminated[length] = '\0';
    EXPECT_EQ(CharsetNaming::GetCodePage(terminated.data()), 0);
  }
}

}  // namespace
}  // namespace quorvel
