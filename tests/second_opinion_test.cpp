// The code pages as other implementations have them, each with its own
// sources: glibc's iconv and ICU. Every code on which they differ from this
// system is listed here with the reason.

#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "quorvel/base/NullLog.h"
#include "quorvel/support/EncodingConvert.h"
#include "tests/CodePageFile.h"
#include "tests/helpers/Bytes.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;

/// One implementation of one code page. Anything that is not exactly one code
/// or one unit counts as no mapping, which is empty or 0.
class Opinion {
 public:
  virtual ~Opinion() = default;
  virtual unsigned int decode(const Bytes& code) = 0;
  virtual Bytes encode(unsigned int unit) = 0;
};

Bytes bytesOfUnit(unsigned int unit) {
  return {static_cast<unsigned char>(unit), static_cast<unsigned char>(unit >> 8)};
}

unsigned int unitIn(const unsigned char* utf16, std::size_t length) {
  return length == 2 ? utf16[0] | static_cast<unsigned int>(utf16[1]) << 8 : 0;
}

class Quorvel : public Opinion {
 public:
  explicit Quorvel(int codePage) : m_codePage(codePage) {}
  unsigned int decode(const Bytes& code) override {
    const Bytes utf16 = convert(m_codePage, 1200, code);
    return unitIn(utf16.data(), utf16.size());
  }
  Bytes encode(unsigned int unit) override { return convert(1200, m_codePage, bytesOfUnit(unit)); }

 private:
  static Bytes convert(int from, int to, const Bytes& text) {
    EncodingConvert converter;
    NullLog log;
    DataBuffer out;
    const bool ok = converter.EncConvert(from, to, text.data(), sizeOf(text), out, log);
    return ok && !converter.m_hadError ? bytesOf(out) : Bytes();
  }

  int m_codePage;
};

class Glibc : public Opinion {
 public:
  explicit Glibc(const std::string& name)
      : m_decoder(iconv_open("UTF-16LE", name.c_str())),
        m_encoder(iconv_open(name.c_str(), "UTF-16LE")) {}
  Glibc(const Glibc&) = delete;
  Glibc& operator=(const Glibc&) = delete;
  ~Glibc() override {
    if (m_decoder != invalid()) iconv_close(m_decoder);
    if (m_encoder != invalid()) iconv_close(m_encoder);
  }

  bool isThere() const { return m_decoder != invalid() && m_encoder != invalid(); }

  unsigned int decode(const Bytes& code) override {
    const Bytes utf16 = run(m_decoder, code);
    return unitIn(utf16.data(), utf16.size());
  }
  Bytes encode(unsigned int unit) override { return run(m_encoder, bytesOfUnit(unit)); }

 private:
  static iconv_t invalid() { return reinterpret_cast<iconv_t>(-1); }

  // Without any error and without a character that stands in for another. The
  // last call gets out what is kept back to be joined with a mark behind it.
  static Bytes run(iconv_t conversion, Bytes text) {
    char out[16];
    char* from = reinterpret_cast<char*>(text.data());
    std::size_t left = text.size();
    char* to = out;
    std::size_t room = sizeof out;
    iconv(conversion, nullptr, nullptr, nullptr, nullptr);
    if (iconv(conversion, &from, &left, &to, &room) != 0) return {};
    if (iconv(conversion, nullptr, nullptr, &to, &room) != 0) return {};
    return Bytes(out, to);
  }

  iconv_t m_decoder;
  iconv_t m_encoder;
};

class Icu : public Opinion {
 public:
  // What "windows-..." means to others is no matter: its Windows meaning is asked for.
  explicit Icu(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    const char* standard = ucnv_getCanonicalName(name.c_str(), "WINDOWS", &status);
    m_converter.reset(ucnv_open(standard ? standard : name.c_str(), &m_status));
    if (!isThere()) return;
    ucnv_setToUCallBack(m_converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &m_status);
    ucnv_setFromUCallBack(m_converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &m_status);
    ucnv_setFallback(m_converter.get(), 0);
  }
  bool isThere() const { return U_SUCCESS(m_status); }

  unsigned int decode(const Bytes& code) override {
    UErrorCode status = U_ZERO_ERROR;
    UChar out[8];
    const int length =
        ucnv_toUChars(m_converter.get(), out, 8, reinterpret_cast<const char*>(code.data()),
                      static_cast<int>(code.size()), &status);
    return U_SUCCESS(status) && length == 1 ? out[0] : 0U;
  }
  Bytes encode(unsigned int unit) override {
    UErrorCode status = U_ZERO_ERROR;
    char out[16];
    const UChar text[] = {static_cast<UChar>(unit)};
    const int length = ucnv_fromUChars(m_converter.get(), out, sizeof out, text, 1, &status);
    return U_SUCCESS(status) ? Bytes(out, out + length) : Bytes();
  }

 private:
  struct Close {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
  };
  UErrorCode m_status = U_ZERO_ERROR;
  std::unique_ptr<UConverter, Close> m_converter;
};

Bytes bytesOfCode(unsigned int code) {
  Bytes bytes;
  if (code >= 0x100) bytes.push_back(static_cast<unsigned char>(code >> 8));
  bytes.push_back(static_cast<unsigned char>(code));
  return bytes;
}

/// What two opinions of a page say about the codes that either knows, in
/// ascending order: true where they differ. They agree on a code when it reads
/// as the same character for both, and the character is written as this code by
/// both or by neither. Two bytes that are characters each by itself are no code,
/// even where they are joined into one character.
using Comparison = std::map<unsigned int, bool>;

Comparison compare(Opinion& one, Opinion& other) {
  Comparison result;
  const auto look = [&](unsigned int code) {
    const Bytes bytes = bytesOfCode(code);
    const unsigned int unit = one.decode(bytes);
    const unsigned int otherUnit = other.decode(bytes);
    if (unit == 0 && otherUnit == 0) return;
    const bool agree =
        unit == otherUnit && (one.encode(unit) == bytes) == (other.encode(unit) == bytes);
    result[code] = !agree;
  };
  for (unsigned int code = 1; code < 0x100; ++code) look(code);
  for (unsigned int lead = 0x80; lead < 0x100; ++lead) {
    const Bytes alone = bytesOfCode(lead);
    if (one.decode(alone) != 0 && other.decode(alone) != 0) continue;
    for (unsigned int trail = 0; trail < 0x100; ++trail) look(lead << 8 | trail);
  }
  return result;
}

std::string hexNumber(unsigned int code) {
  std::string digits = hex(bytesOfCode(code));
  digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
  return digits;
}

/// The codes that are marked, as a row lists them: "1A 1C 7F C9A1-C9FE", a
/// range taking in what either opinion knows between its ends.
std::string listOf(const Comparison& codes) {
  std::string list;
  unsigned int first = 0;
  unsigned int last = 0;
  const auto close = [&] {
    if (first == 0) return;
    list += (list.empty() ? "" : " ") + hexNumber(first);
    if (last != first) list += "-" + hexNumber(last);
    first = 0;
  };
  for (const auto& [code, isMarked] : codes) {
    if (!isMarked) {
      close();
      continue;
    }
    if (first == 0) first = code;
    last = code;
  }
  close();
  return list;
}

enum class Who { glibc, icu };

/// The names under which the others have a page; null where they have none, or
/// where the name stands for something else.
struct Page {
  int codePage;
  const char* glibc;
  const char* icu;
};

// Names count for little here: several different tables go by "Shift_JIS" and
// "CP932", none of which is this page, so 932 gets no second opinion, and
// neither do its relatives 10001 and 51932. glibc's CP936, CP950 and IBM290 are
// likewise other flavours than the Windows pages of these numbers, and so is
// everybody's ISO 8859-1 and ASMO 708.
const Page kPages[] = {
    {37, "IBM037", "ibm-37"},
    {437, "IBM437", "windows-437"},
    {500, "IBM500", "ibm-500"},
    {708, nullptr, nullptr},
    {720, nullptr, "windows-720"},
    {737, "CP737", "windows-737"},
    {775, "CP775", "windows-775"},
    {850, "IBM850", "windows-850"},
    {852, "IBM852", "windows-852"},
    {855, "IBM855", "windows-855"},
    {857, "IBM857", "windows-857"},
    {858, "CP858", "windows-858"},
    {860, "IBM860", "ibm-860"},
    {861, "IBM861", "windows-861"},
    {862, "IBM862", "windows-862"},
    {863, "IBM863", "ibm-863"},
    {864, "IBM864", "ibm-864"},
    {865, "IBM865", "ibm-865"},
    {866, "CP866", "windows-866"},
    {869, "IBM869", "windows-869"},
    {870, "IBM870", "ibm-870"},
    {874, "WINDOWS-874", "windows-874"},
    {875, "CP875", "ibm-875"},
    {932, nullptr, nullptr},
    {936, nullptr, "windows-936"},
    {949, "CP949", "windows-949"},
    {950, nullptr, "windows-950"},
    {1026, "IBM1026", "ibm-1026"},
    {1047, "IBM1047", "ibm-1047"},
    {1140, "IBM1140", "ibm-1140"},
    {1141, "IBM1141", "ibm-1141"},
    {1142, "IBM1142", "ibm-1142"},
    {1143, "IBM1143", "ibm-1143"},
    {1144, "IBM1144", "ibm-1144"},
    {1145, "IBM1145", "ibm-1145"},
    {1146, "IBM1146", "ibm-1146"},
    {1147, "IBM1147", "ibm-1147"},
    {1148, "IBM1148", "ibm-1148"},
    {1149, "IBM1149", "ibm-1149"},
    {1250, "WINDOWS-1250", "windows-1250"},
    {1251, "WINDOWS-1251", "windows-1251"},
    {1252, "WINDOWS-1252", "windows-1252"},
    {1253, "WINDOWS-1253", "windows-1253"},
    {1254, "WINDOWS-1254", "windows-1254"},
    {1255, "WINDOWS-1255", "windows-1255"},
    {1256, "WINDOWS-1256", "windows-1256"},
    {1257, "WINDOWS-1257", "windows-1257"},
    {1258, "WINDOWS-1258", "windows-1258"},
    {1361, "CP1361", nullptr},
    {10000, "MACINTOSH", "windows-10000"},
    {10001, nullptr, nullptr},
    {10004, nullptr, nullptr},
    {10005, nullptr, nullptr},
    {10006, nullptr, "windows-10006"},
    {10007, "CP10007", "windows-10007"},
    {10010, nullptr, nullptr},
    {10017, "MAC-UK", nullptr},
    {10021, nullptr, nullptr},
    {10029, "MAC-CENTRALEUROPE", "windows-10029"},
    {10079, nullptr, nullptr},
    {10081, nullptr, "windows-10081"},
    {10082, nullptr, nullptr},
    {20105, nullptr, nullptr},
    {20106, nullptr, nullptr},
    {20107, nullptr, nullptr},
    {20108, nullptr, nullptr},
    {20127, "ANSI_X3.4-1968", "windows-20127"},
    {20261, nullptr, nullptr},
    {20269, nullptr, nullptr},
    {20273, "IBM273", "ibm-273"},
    {20277, "IBM277", "ibm-277"},
    {20278, "IBM278", "ibm-278"},
    {20280, "IBM280", "ibm-280"},
    {20284, "IBM284", "ibm-284"},
    {20285, "IBM285", "ibm-285"},
    {20290, nullptr, "ibm-290"},
    {20297, "IBM297", "ibm-297"},
    {20420, "IBM420", "ibm-420"},
    {20423, "IBM423", nullptr},
    {20424, "IBM424", "ibm-424"},
    {20838, "IBM9030", "ibm-838"},
    {20866, "KOI8-R", "windows-20866"},
    {20871, "IBM871", "ibm-871"},
    {20880, "IBM880", nullptr},
    {20905, "IBM905", nullptr},
    {20924, nullptr, nullptr},
    {21025, "IBM1025", "ibm-1025"},
    {21866, "KOI8-U", "windows-21866"},
    {28591, nullptr, nullptr},
    {28592, "ISO-8859-2", "windows-28592"},
    {28593, "ISO-8859-3", "windows-28593"},
    {28594, "ISO-8859-4", "windows-28594"},
    {28595, "ISO-8859-5", "windows-28595"},
    {28596, "ISO-8859-6", "windows-28596"},
    {28597, "ISO-8859-7", "windows-28597"},
    {28598, "ISO-8859-8", "windows-28598"},
    {28599, "ISO-8859-9", "windows-28599"},
    {28600, nullptr, nullptr},
    {28601, nullptr, nullptr},
    {28603, "ISO-8859-13", "windows-28603"},
    {28605, "ISO-8859-15", "windows-28605"},
    {38598, "ISO-8859-8", "windows-28598"},
    {51932, nullptr, nullptr},
    {51936, nullptr, nullptr},
    {51949, "EUC-KR", "windows-51949"},
    {52936, nullptr, nullptr},
};

/// Codes of some pages on which one of the others differs.
struct Difference {
  Who who;
  const char* pages;
  const char* codes;
  const char* reason;
};

// The shapes that 20420 tells apart, and the codes of single jamo in 1361.
constexpr char kPlainArabic[] =
    "42 46-47 49 52-56 58 62-63 65 67 69 71 73-77 80 8B 8D 8F-90 9A 9E AB AD AF B1 BB BD BF CF DA "
    "DC";
constexpr char kJohabJamo[] =
    "8442-8841 8C41 9041 9441 9841 9C41 A041 A441 A841 AC41 B041 B441 B841 BC41 C041 C441 C841 "
    "CC41 D041 DAD4-DAFE";

const Difference kDifferences[] = {
    // Characters that a page gives no code of its own, in the private use area
    // or among the controls: Windows reads and writes them, others do not.
    {Who::glibc, "857", "D5 E7 F2", "private use in empty places"},
    {Who::icu, "857", "D5 E7 F2", "private use in empty places"},
    {Who::glibc, "864", "9B-9C 9F A6-A7 FF", "controls and private use in empty places"},
    {Who::icu, "864", "9B-9C A6-A7 FF", "controls and private use in empty places"},
    {Who::glibc, "869", "80-85 87 93-94", "controls in empty places"},
    {Who::icu, "869", "80-85 87 93-94", "controls in empty places"},
    {Who::icu, "720", "80-81 84 86 8D-90", "controls in empty places"},
    {Who::glibc, "875 20423", "6A", "a control in an empty place"},
    {Who::glibc, "20880", "79 A1 C0 D0", "controls in empty places"},
    {Who::glibc, "949 51949", "FF C9A1-C9FE FEA1-FEFE", "user-defined characters"},
    {Who::glibc, "949", "80", "a control in an empty place"},
    {Who::glibc, "1361", "D4-FF D831-D8FE", "private use and user-defined characters"},
    {Who::glibc, "1361", "80-83", "controls in empty places"},
    {Who::icu, "51949", "FF", "private use in an empty place"},

    // The other way round: places that the published tables of the Windows
    // pages leave empty are controls to others.
    {Who::icu, "1250", "81 83 88 90 98", "controls in empty places"},
    {Who::icu, "1251", "98", "a control in an empty place"},
    {Who::icu, "1252", "81 8D 8F-90 9D", "controls in empty places"},
    {Who::icu, "1253", "81 88 8A 8C-90 98 9A 9C-9F", "controls in empty places"},
    {Who::icu, "1254", "81 8D-90 9D-9E", "controls in empty places"},
    {Who::icu, "1255", "81 8A 8C-90 9A 9C-9F", "controls in empty places"},
    {Who::icu, "1257", "81 83 88 8A 8C 90 98 9A 9C 9F", "controls in empty places"},
    {Who::icu, "1258", "81 8A 8D-90 9A 9D-9E", "controls in empty places"},
    {Who::icu, "874", "81-84 86-90 98-9F", "controls in empty places"},
    {Who::icu, "874", "DB-DE FC-FF", "private use in empty places"},
    {Who::glibc, "51949", "81-9F", "controls in empty places"},
    {Who::icu, "51949", "81-9F", "controls in empty places"},
    {Who::icu, "1253", "AA", "the feminine ordinal sign in an empty place"},

    // Which character a byte of an old page was meant for.
    {Who::icu, "437 720 737 775 850 852 855 857 858 860 861 862 863 864 865 866 869", "1A 1C 7F",
     "turned into one another, as on the way to and from a mainframe"},
    {Who::icu, "437 860 861 862 863 865", "E6", "the micro sign as the Greek letter"},
    {Who::icu, "852", "AA", "the not sign left out"},
    {Who::glibc, "864", "25", "the Arabic percent sign in the place of the ASCII one"},
    {Who::icu, "864", "9F D7-D8 F1", "other shapes of Arabic letters and a zero-width space"},
    {Who::icu, "869", "88 EF", "other characters for the dot and the accent"},
    {Who::icu, "10000 10081", "BD", "the ohm sign as the Greek letter"},
    {Who::glibc, "10000", "BD C6 F0", "two signs as Greek letters, another private use logo"},
    {Who::icu, "10006", "9C AF FF", "the later page with the euro sign"},
    {Who::icu, "10007", "A2 B6 FF", "the later page with Ukrainian letters and the euro sign"},
    {Who::glibc, "10007", "B6", "one of the Ukrainian letters"},
    {Who::glibc, "21866", "AE BE", "the box drawing of KOI8-R for Belarusian letters"},
    {Who::icu, "21866", "AE BE", "the box drawing of KOI8-R for Belarusian letters"},

    // EBCDIC, where IBM and Windows went apart.
    {Who::glibc, "870", "B0", "the middle dot for the dot above"},
    {Who::glibc, "875", "74 DD", "nabla for the no-break space, another middle dot"},
    {Who::glibc, "1026", "9D BC", "the ogonek for the cedilla, a dash for the macron"},
    {Who::icu, "1026", "9A", "the lira sign of 2012 for the feminine ordinal sign"},
    {Who::glibc, "1047", "15 25", "the two line ends exchanged"},
    {Who::icu, "1047", "15 25", "the two line ends exchanged"},
    {Who::glibc, "20278", "71 E0", "the backslash and a letter exchanged"},
    {Who::glibc, "20285", "A1", "the overline for the macron"},
    {Who::glibc, "20420", kPlainArabic, "plain letters for presentation forms"},
    {Who::icu, "20420", kPlainArabic, "plain letters for presentation forms"},
    {Who::glibc, "20420", "45 E1", "nothing in these places"},
    {Who::icu, "20420", "45 E1", "a zero-width space, and nothing"},
    {Who::glibc, "20423", "AF BA CC", "the two sigmas exchanged, a capital for a small letter"},
    {Who::glibc, "20423", "74 CA", "nothing in these places"},
    {Who::glibc, "20424", "78 8F B3 BC", "signs that others read otherwise or not at all"},
    {Who::glibc, "20838", "51 CA E1 FD-FE", "characters in empty places"},
    {Who::icu, "20838", "51 CA E1 FD-FE", "characters in empty places"},
    {Who::glibc, "20871", "4A C0", "the capital and the small thorn exchanged"},
    {Who::glibc, "20880", "6A", "the broken bar for the vertical line"},
    {Who::glibc, "20880", "41 45 55 64 73-74", "nothing in these places"},
    {Who::glibc, "20905", "9D B0", "the ogonek for the cedilla, the middle dot for the dot above"},
    {Who::glibc, "20905", "41 B7", "nothing in these places"},

    // Korean and Chinese.
    {Who::glibc, "1361", "5C", "the won sign for the backslash"},
    {Who::glibc, "1361", "D9E8", "a Korean postal sign in an empty place"},
    {Who::glibc, "1361", kJohabJamo, "compatibility jamo for conjoining ones"},
    {Who::glibc, "51949", "A2E8", "a Korean postal sign in an empty place"},
    {Who::icu, "51949", "A2E6-A2E7", "the euro and the registered sign left out"},
    {Who::icu, "950", "A2A4-A2A7 A2CC A2CE F9FA-F9FD", "second codes of characters"},
};

void mark(const Difference& difference, Comparison& expected) {
  std::istringstream ranges(difference.codes);
  for (std::string range; ranges >> range;) {
    const std::size_t dash = range.find('-');
    const auto numberOf = [](const std::string& digits) {
      return static_cast<unsigned int>(std::stoul(digits, nullptr, 16));
    };
    const unsigned int first = numberOf(range.substr(0, dash));
    const unsigned int last = dash == std::string::npos ? first : numberOf(range.substr(dash + 1));
    EXPECT_TRUE(expected.count(first) && expected.count(last)) << range << " is unknown to both";
    for (auto& [code, isMarked] : expected) isMarked = isMarked || (code >= first && code <= last);
  }
}

bool isFor(const Difference& difference, Who who, int codePage) {
  const std::string pages = std::string(" ") + difference.pages + " ";
  return difference.who == who &&
         pages.find(" " + std::to_string(codePage) + " ") != std::string::npos;
}

template <typename Peer>
void expectOnlyTheListedDifferences(Who who, int codePage, const char* name) {
  SCOPED_TRACE(std::to_string(codePage) + " and " + name);
  Peer peer(name);
  ASSERT_TRUE(peer.isThere());
  Quorvel own(codePage);
  const Comparison actual = compare(own, peer);
  Comparison expected = actual;
  for (auto& entry : expected) entry.second = false;
  for (const Difference& difference : kDifferences) {
    if (isFor(difference, who, codePage)) mark(difference, expected);
  }
  EXPECT_EQ(listOf(actual), listOf(expected));
}

TEST(SecondOpinions, AreAskedForAboutEveryPageThatOthersHave) {
  std::vector<int> listed;
  for (const Page& page : kPages) listed.push_back(page.codePage);
  EXPECT_EQ(listed, codePagesWithAFile());
}

TEST(SecondOpinions, OfGlibcDifferOnlyWhereListed) {
#if !defined(__GLIBC__)
  GTEST_SKIP() << "another C library, with other tables";
#endif
  for (const Page& page : kPages) {
    if (page.glibc) expectOnlyTheListedDifferences<Glibc>(Who::glibc, page.codePage, page.glibc);
  }
}

TEST(SecondOpinions, OfIcuDifferOnlyWhereListed) {
  for (const Page& page : kPages) {
    if (page.icu) expectOnlyTheListedDifferences<Icu>(Who::icu, page.codePage, page.icu);
  }
}

}  // namespace
