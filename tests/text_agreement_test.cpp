// What does not get lost, the text layer and the converter write alike; where they
// differ on purpose is listed here by name. And where glibc and ICU know the same
// characters, the first loss is where they have it.

#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <set>

#include "quorvel/base/NullLog.h"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/RandomSources.h"
#include "tests/helpers/TextDoors.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::hex;

// --- The converter ------------------------------------------------------------------

/// What the converter writes when it reports success.
std::optional<std::string> convertByConverter(int from, int to, std::string_view source) {
  EncodingConvert converter;
  NullLog log;
  DataBuffer out;
  const bool isDone = converter.EncConvert(from, to, quorvel_test::unsignedBytes(source),
                                           quorvel_test::sizeOf(source), out, log);
  if (!isDone || converter.m_hadError) return std::nullopt;
  return quorvel_test::contentOf(out);
}

/// A difference that is meant: in which conversions, and of which characters.
struct Difference {
  const char* name;
  bool (*concerns)(int from, int to);
  bool (*isSuch)(char32_t character);
};

bool always(int, int) { return true; }

const Difference differences[] = {
    {"U+0000 is dropped on the way from UTF-16 to UTF-8", always,
     [](char32_t c) { return c == 0; }},
    {"U+EFFD is taken for a marker", always, [](char32_t c) { return c == 0xEFFD; }},
    {"28591 has the table of 1252", [](int from, int to) { return from == 28591 || to == 28591; },
     [](char32_t c) {
       return text_reference::isWithin(c, 0x80, 0x9F) ||
              (c > 0xFF && text_reference::holds(1252, c));
     }},
    {"10004 is read in visual order", [](int from, int) { return from == 10004; },
     [](char32_t c) { return c >= 0x80; }},
    {"1256 and 28596 get ASCII digits for Arabic ones",
     [](int, int to) { return to == 1256 || to == 28596; },
     [](char32_t c) {
       return text_reference::isWithin(c, 0x660, 0x669) ||
              text_reference::isWithin(c, 0x6F0, 0x6F9);
     }},
    {"a mark in front is kept from UTF-8 to UTF-32, and FE FF in 1200", always,
     [](char32_t c) { return c == 0xFEFF; }},
};

bool isListed(int from, int to, char32_t character) {
  for (const Difference& difference : differences) {
    if (difference.concerns(from, to) && difference.isSuch(character)) return true;
  }
  return false;
}

/// Characters that both encodings write, and no listed difference among them.
std::string commonText(int from, int to, std::size_t length, Random& random) {
  text_reference::Encoder encoder(from);
  for (std::size_t i = 0; i < length; ++i) {
    const char32_t character = characterFor(from, to, random);
    if (text_reference::holds(to, character) && !isListed(from, to, character)) {
      encoder.put(character);
    }
  }
  encoder.finish();
  return encoder.text();
}

/// UTF-7 that is open at the end is closed by the text layer alone.
bool isSame(int to, const std::string& text, const std::string& byConverter) {
  return text == byConverter || (to == 65000 && text == byConverter + "-");
}

TEST(TextAgreement, WritesTheBytesOfTheConverterWhereThatReportsSuccess) {
  Random random(510);
  std::size_t compared = 0;
  for (const int from : text_reference::allNumbers()) {
    for (const int to : text_reference::allNumbers()) {
      const std::string source = commonText(from, to, 40, random);
      // Equal encodings are copied there, whatever they hold.
      if (from == to && text_reference::keepsState(from)) continue;
      const std::optional<std::string> expected = convertByConverter(from, to, source);
      if (!expected) continue;
      ++compared;
      for (const Door& door : doors) {
        const Result got = door.convert(from, to, source, {});
        EXPECT_TRUE(got.report.isLossless()) << from << " to " << to << ' ' << toText(got.report);
        EXPECT_TRUE(isSame(to, got.text, *expected))
            << from << " to " << to << " by " << door.name << ": " << hex(source) << "\nis    "
            << hex(got.text) << "\nnot   " << hex(*expected);
      }
      if (HasFailure()) return;
    }
  }
  EXPECT_GT(compared, 13000U);
}

TEST(TextAgreement, ConvertsWhereTheConverterReportsFailureOrHasNoWay) {
  constexpr std::pair<int, int> pairs[] = {{1201, 1200},   {65000, 1200},  {1201, 65000},
                                           {28600, 65001}, {65001, 28601}, {54936, 936},
                                           {936, 54936}};
  for (const auto& [from, to] : pairs) {
    text_reference::Encoder source(from);
    source.put(U'a');
    source.finish();
    EXPECT_FALSE(convertByConverter(from, to, source.text())) << from << " to " << to;
    for (const Door& door : doors) {
      const Result got = door.convert(from, to, source.text(), {});
      EXPECT_TRUE(got.report.isLossless()) << from << " to " << to << " by " << door.name;
    }
  }
}

// --- glibc --------------------------------------------------------------------------------

class Iconv {
 public:
  Iconv(const char* from, const char* to) : m_converter(iconv_open(to, from)) {}
  ~Iconv() {
    if (isThere()) iconv_close(m_converter);
  }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;

  bool isThere() const { return m_converter != reinterpret_cast<iconv_t>(-1); }

  struct Outcome {
    std::string text;
    std::optional<std::size_t> stop;  ///< the offset of the first loss
  };

  Outcome convert(std::string_view source) {
    iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
    std::string out(8 * source.size() + 64, '\0');
    std::string in(source);
    char* next = in.data();
    std::size_t left = in.size();
    char* to = out.data();
    std::size_t room = out.size();
    const bool isDone =
        iconv(m_converter, &next, &left, &to, &room) != static_cast<std::size_t>(-1);
    if (isDone) iconv(m_converter, nullptr, nullptr, &to, &room);
    out.resize(out.size() - room);
    return {out, isDone ? std::nullopt : std::optional(in.size() - left)};
  }

 private:
  iconv_t m_converter;
};

/// Encodings that glibc has too. Where the tables differ is found code by code.
struct Peer {
  int number;
  const char* name;
};

constexpr Peer peers[] = {
    {65001, "UTF-8"},      {1200, "UTF-16LE"},     {1201, "UTF-16BE"},     {12000, "UTF-32LE"},
    {12001, "UTF-32BE"},   {949, "UHC"},           {51949, "EUC-KR"},      {936, "CP936"},
    {950, "CP950"},        {932, "CP932"},         {54936, "GB18030"},     {51932, "EUC-JP-MS"},
    {1361, "JOHAB"},       {20127, "US-ASCII"},    {1250, "CP1250"},       {1251, "CP1251"},
    {1252, "CP1252"},      {1253, "CP1253"},       {1257, "CP1257"},       {874, "CP874"},
    {437, "IBM437"},       {850, "IBM850"},        {866, "CP866"},         {28592, "ISO-8859-2"},
    {28595, "ISO-8859-5"}, {28596, "ISO-8859-6"},  {28597, "ISO-8859-7"},  {20866, "KOI8-R"},
    {37, "IBM037"},        {28600, "ISO-8859-10"}, {28601, "ISO-8859-11"},
};

/// Whether both know the same codes up to the first loss, and glibc sees no code in
/// what is lost there.
bool areTablesAlike(Iconv& theirs, int number, std::string_view source) {
  for (const text_reference::Piece& piece :
       text_reference::decode(number, source, {.keepsMark = true})) {
    if (piece.character) {
      const std::string_view code = source.substr(piece.offset, piece.length);
      if (theirs.convert(code).text != text_reference::inUtf8(*piece.character)) return false;
      continue;
    }
    for (std::size_t length = 1; length <= 4; ++length) {
      if (!theirs.convert(source.substr(piece.offset, length)).stop) return false;
    }
    return true;
  }
  return true;
}

TEST(TextAgreement, FindsTheFirstLossWhereGlibcHasItWhenBothKnowTheSameCodes) {
  Random random(520);
  Rules keepingMarks;
  keepingMarks.keepsMark = true;
  for (const Peer& peer : peers) {
    Iconv theirs(peer.name, "UTF-8");
    ASSERT_TRUE(theirs.isThere()) << peer.name;
    int compared = 0;
    for (int i = 0; i < 600 && !HasFailure(); ++i) {
      std::string source = validText(peer.number, 65001, below(random, 12), random);
      damageText(source, peer.number, random);
      if (!areTablesAlike(theirs, peer.number, source)) continue;
      const Iconv::Outcome expected = theirs.convert(source);
      ++compared;
      for (const Door& door : doors) {
        const Result got = door.convert(peer.number, 65001, source, keepingMarks);
        EXPECT_EQ(got.report.bytesRead, expected.stop.value_or(source.size()))
            << hex(source) << " in " << peer.number << " by " << door.name;
        EXPECT_EQ(hex(got.text), hex(expected.text))
            << hex(source) << " in " << peer.number << " by " << door.name;
      }
    }
    EXPECT_GT(compared, 100) << peer.name;
  }
}

// --- GB 18030 -----------------------------------------------------------------------

/// ICU's converter, through one buffer.
class Icu {
 public:
  explicit Icu(const char* name) : m_converter(ucnv_open(name, &m_status)) {
    ucnv_setToUCallBack(m_converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &m_status);
    ucnv_setFromUCallBack(m_converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &m_status);
  }
  ~Icu() { ucnv_close(m_converter); }
  Icu(const Icu&) = delete;
  Icu& operator=(const Icu&) = delete;

  bool isThere() const { return U_SUCCESS(m_status); }

  /// In UTF-16BE; empty when it is not exactly one character.
  std::string decode(const std::string& code) {
    UErrorCode status = U_ZERO_ERROR;
    UChar units[8];
    const int32_t count = ucnv_toUChars(m_converter, units, 8, code.data(),
                                        static_cast<int32_t>(code.size()), &status);
    std::string utf16;
    if (U_FAILURE(status)) return utf16;
    for (int32_t i = 0; i < count; ++i) utf16 += text_reference::unitBytes(units[i], 2, true);
    return utf16;
  }

  std::string encode(char32_t character) {
    UErrorCode status = U_ZERO_ERROR;
    UChar units[2];
    int32_t count = 0;
    u_strFromUTF32(units, 2, &count, reinterpret_cast<const UChar32*>(&character), 1, &status);
    char bytes[16];
    const int32_t length = ucnv_fromUChars(m_converter, bytes, 16, units, count, &status);
    return U_FAILURE(status) ? "" : std::string(bytes, static_cast<std::size_t>(length));
  }

 private:
  UErrorCode m_status = U_ZERO_ERROR;
  UConverter* m_converter;
};

/// The codes of two bytes, and those of four up to U+FFFF and some beyond.
std::vector<std::string> gb18030Codes() {
  std::vector<std::string> codes;
  for (text_reference::Code lead = 0x81; lead <= 0xFE; ++lead) {
    for (text_reference::Code trail = 0x40; trail <= 0xFE; ++trail) {
      codes.push_back(text_reference::bytesOf(lead << 8 | trail));
    }
  }
  const std::uint32_t beyond = text_reference::placeOfFourBytes(0x90308130);
  for (std::uint32_t place = 0; place < beyond + 0x100000; place += place < 40000 ? 1 : 977) {
    codes.push_back(text_reference::bytesOf(text_reference::fourBytesAt(place)));
  }
  return codes;
}

std::vector<char32_t> scalarValues() {
  std::vector<char32_t> values;
  for (char32_t value = 0; value <= 0x10FFFF; value += value < 0x10000 ? 1 : 977) {
    if (!text_reference::isHalf(value)) values.push_back(value);
  }
  return values;
}

/// Codes, and what a peer makes of them; both in hexadecimal, UTF-16BE.
using Listed = std::map<std::string, std::string>;

void add(Listed& list, const std::vector<std::string>& from, const std::vector<std::string>& to) {
  for (std::size_t i = 0; i < from.size(); ++i) list[from[i]] = to.empty() ? "" : to.at(i);
}

// The ten punctuation marks and eight ideographs that Unicode got for what had been
// private-use characters: their codes of two bytes, of four, the characters, and the
// private ones.
const std::vector<std::string> late2 = {"A6 D9", "A6 DA", "A6 DB", "A6 DC", "A6 DD", "A6 DE",
                                        "A6 DF", "A6 EC", "A6 ED", "A6 F3", "FE 59", "FE 61",
                                        "FE 66", "FE 67", "FE 6D", "FE 7E", "FE 90", "FE A0"};
const std::vector<std::string> late4 = {
    "84 31 82 36", "84 31 82 38", "84 31 82 37", "84 31 82 39", "84 31 83 30", "84 31 83 31",
    "84 31 83 32", "84 31 83 33", "84 31 83 34", "84 31 83 35", "82 35 90 37", "82 35 90 38",
    "82 35 90 39", "82 35 91 30", "82 35 91 31", "82 35 91 32", "82 35 91 33", "82 35 91 34"};
const std::vector<std::string> late = {"FE 10", "FE 12", "FE 11", "FE 13", "FE 14", "FE 15",
                                       "FE 16", "FE 17", "FE 18", "FE 19", "9F B4", "9F B5",
                                       "9F B6", "9F B7", "9F B8", "9F B9", "9F BA", "9F BB"};
const std::vector<std::string> latePrivate = {"E7 8D", "E7 8E", "E7 8F", "E7 90", "E7 91", "E7 92",
                                              "E7 93", "E7 94", "E7 95", "E7 96", "E8 1E", "E8 26",
                                              "E8 2B", "E8 2C", "E8 32", "E8 43", "E8 54", "E8 64"};

// Codes that glibc reads as ideographs beyond U+FFFF, and their private-use
// characters here.
const std::vector<std::string> extensionB2 = {"FE 51", "FE 52", "FE 53", "FE 6C", "FE 76", "FE 91"};
const std::vector<std::string> extensionB = {"D8 40 DC 87", "D8 40 DC 89", "D8 40 DC CC",
                                             "D8 45 DD D7", "D8 4A DD 8F", "D8 50 DD FE"};
const std::vector<std::string> extensionBPrivate = {"E8 16", "E8 17", "E8 18",
                                                    "E8 31", "E8 3B", "E8 55"};

/// What a peer does otherwise than the layer; `theirs` gives its result.
template <typename Items, typename Mine, typename Theirs>
Listed differencesOf(const Items& items, Mine mine, Theirs theirs) {
  Listed list;
  for (const auto& item : items) {
    const auto [name, own] = mine(item);
    const std::string other = theirs(item);
    if (own != other) list[name] = other;
  }
  return list;
}

auto readerBehind(const Door& door) {
  return [&door](const std::string& code) {
    return std::pair(hex(code), hex(door.convert(54936, 1201, code, {}).text));
  };
}

auto writerBehind(const Door& door) {
  return [&door](char32_t character) {
    const std::string utf16 = text_reference::inUtf16(character, true);
    Rules rules = dropping();
    rules.keepsMark = true;
    return std::pair(hex(utf16), hex(door.convert(1201, 54936, utf16, rules).text));
  };
}

TEST(TextAgreement, ReadsGb18030AsGlibcAndIcuButForWhatIsListed) {
  Iconv iconv("GB18030", "UTF-16BE");
  Icu icu("gb18030");
  ASSERT_TRUE(iconv.isThere() && icu.isThere());
  Listed glibcs{{"A3 A0", "E5 E5"}};
  add(glibcs, late4, {});
  add(glibcs, extensionB2, extensionB);
  Listed icus{{"A3 A0", "E5 E5"}};
  add(icus, late2, latePrivate);
  for (const Door& door : doors) {
    const auto mine = readerBehind(door);
    EXPECT_EQ(differencesOf(gb18030Codes(), mine,
                            [&](const std::string& code) {
                              const Iconv::Outcome read = iconv.convert(code);
                              return read.stop ? "" : hex(read.text);
                            }),
              glibcs)
        << door.name;
    EXPECT_EQ(differencesOf(gb18030Codes(), mine,
                            [&](const std::string& code) { return hex(icu.decode(code)); }),
              icus)
        << door.name;
  }
}

TEST(TextAgreement, WritesGb18030AsGlibcAndIcuButForWhatIsListed) {
  Iconv iconv("UTF-16BE", "GB18030");
  Icu icu("gb18030");
  ASSERT_TRUE(iconv.isThere() && icu.isThere());
  Listed glibcs{{"E5 E5", "A3 A0"}};
  add(glibcs, latePrivate, {});
  add(glibcs, extensionBPrivate, {});
  Listed icus{{"E5 E5", "A3 A0"}};
  add(icus, late, late4);
  for (const Door& door : doors) {
    const auto mine = writerBehind(door);
    EXPECT_EQ(differencesOf(scalarValues(), mine,
                            [&](char32_t character) {
                              const Iconv::Outcome written =
                                  iconv.convert(text_reference::inUtf16(character, true));
                              return written.stop ? "" : hex(written.text);
                            }),
              glibcs)
        << door.name;
    EXPECT_EQ(differencesOf(scalarValues(), mine,
                            [&](char32_t character) { return hex(icu.encode(character)); }),
              icus)
        << door.name;
  }
}

}  // namespace
}  // namespace quorvel::test_text
