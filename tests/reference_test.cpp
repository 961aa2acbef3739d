// The library against the reference: the same result, flags, bytes and log
// lines on whatever is thrown at both.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/CodePageRows.h"
#include "tests/helpers/Seed.h"
#include "tests/helpers/Tables.h"
#include "tests/reference/Differential.h"

namespace {

using namespace quorvel_test;
using quorvel::EncodingConvert;
using quorvel::HashConvert;
using quorvel::NullLog;
using quorvel::UnicodeLookup;
using quorvel::reference::Case;
using quorvel::reference::Comparison;
using quorvel::reference::Route;
using quorvel::reference::Settings;

// --- What to convert --------------------------------------------------------------

// All numbers that the reference takes for one kind of page.
template <typename Predicate>
std::vector<int> numbersThat(Predicate isOfTheKind) {
  std::vector<int> numbers;
  for (int number = 0; number <= 0xFFFF; ++number) {
    if (isOfTheKind(number)) numbers.push_back(number);
  }
  return numbers;
}

const std::vector<int> kMultiByte = numbersThat(quorvel::reference::isMultiByte);
const std::vector<int> kSingleByte = numbersThat(quorvel::reference::isSingleByte);

const std::vector<int> kUnicode = {65001, 1200, 1201};
const std::vector<int> kOtherUnicode = {12000, 12001, 65005, 65006, 65000, 55000};
const std::vector<int> kWithoutTable = {28600, 28601, 28602, 30000, 1259, 100, 99, 20, 0, -1};
const std::vector<int> kAlternates = {0,    0,   0,     0,   65001, 1200,  1201,
                                      1252, 932, 20127, 850, 12001, 28602, 50};

// --- Random text ------------------------------------------------------------------

class Random {
 public:
  explicit Random(unsigned int number) : m_engine(number) {}

  unsigned int below(std::size_t n) { return static_cast<unsigned int>(m_engine() % n); }
  bool oneIn(unsigned int n) { return below(n) == 0; }
  unsigned char byte() { return static_cast<unsigned char>(below(256)); }

  template <typename T>
  const T& of(const std::vector<T>& choices) {
    return choices[below(choices.size())];
  }

 private:
  quorvel::test_seed::Random m_engine;
};

/// The keys of the table of a code page: two-byte codes, or units.
using Keys = std::vector<Bytes>;

Keys keysOf(const HashConvert* table) {
  Keys keys;
  if (table) {
    table->forEachMapping([&](const unsigned char* key, const unsigned char*, int) {
      keys.push_back({key[0], key[1]});
    });
  }
  return keys;
}

using KnownKeys = std::map<int, Keys>;

/// Those of the table that `ensure` makes and `hashOf` finds, looked at once.
template <typename Ensure, typename HashOf>
const Keys& keysOnce(KnownKeys& known, int codePage, const Ensure& ensure, const HashOf& hashOf) {
  const auto [found, isNew] = known.try_emplace(codePage);
  if (isNew) {
    NullLog log;
    ensure(codePage, log);
    found->second = keysOf(hashOf(codePage));
  }
  return found->second;
}

const Keys& pairsOf(int codePage) {
  static KnownKeys known;
  return keysOnce(known, codePage, EncodingConvert::ensureHashToUnicode,
                  quorvel::reference::toUnicodeHashOf);
}

const Keys& unitsOf(int codePage) {
  static KnownKeys known;
  return keysOnce(known, codePage, EncodingConvert::ensureHashFromUnicode,
                  quorvel::reference::fromUnicodeHashOf);
}

void add(Bytes& text, const Bytes& more) { text.insert(text.end(), more.begin(), more.end()); }

void addAsciiRun(Random& random, Bytes& text, unsigned int unitLength) {
  for (unsigned int left = 1 + random.below(random.oneIn(8) ? 40 : 6); left; --left) {
    text.push_back(static_cast<unsigned char>(0x20 + random.below(0x5F)));
    if (unitLength == 2) text.push_back(0);
  }
}

void addMarker(Random& random, Bytes& text) {
  add(text, {0xFD, 0xEF, static_cast<unsigned char>(random.below(9))});
  for (unsigned int left = random.below(7); left; --left) text.push_back(random.byte());
}

void addSingleBytes(Random& random, Bytes& text) {
  switch (random.below(8)) {
    case 0:
    case 1:
    case 2:
      return addAsciiRun(random, text, 1);
    case 3:
      return addMarker(random, text);
    case 4:
      return text.push_back(0);
    default:
      return text.push_back(random.oneIn(2) ? random.byte() | 0x80 : random.byte());
  }
}

void addMultiBytes(Random& random, const Keys& pairs, Bytes& text) {
  switch (random.below(10)) {
    case 0:
    case 1:
      return addAsciiRun(random, text, 1);
    case 2:
      return text.push_back(random.byte());
    case 3:
      return text.push_back(random.byte() | 0x80);
    case 4:
      return add(text, {random.byte(), random.byte()});
    case 5:
      return random.oneIn(3) ? addMarker(random, text) : text.push_back(0);
    default:
      if (pairs.empty()) return text.push_back(random.byte());
      return add(text, random.of(pairs));
  }
}

void addUtf8(Random& random, Bytes& text) {
  const auto addCharacter = [&](char32_t character) {
    for (const char byte : quorvel::reference::encodeUtf8(character)) {
      text.push_back(static_cast<unsigned char>(byte));
    }
  };
  switch (random.below(12)) {
    case 0:
    case 1:
    case 2:
      return addAsciiRun(random, text, 1);
    case 3:
      return addCharacter(0x80 + random.below(0x780));
    case 4:
    case 5:
      return addCharacter(0x3000 + random.below(0x7000));
    case 6:
      return addCharacter(0xE000 + random.below(0x2000));
    case 7:
      return addCharacter(0x10000 + random.below(0x100000));
    case 8:
      return random.oneIn(2) ? addCharacter(0xEFFD) : addCharacter(0xFDEF);
    case 9:
      return text.push_back(random.oneIn(2) ? random.byte() : 0);
    case 10:
      return addMarker(random, text);
    default:
      return add(text,
                 bytes(quorvel::reference::illFormedUtf8[random.below(std::size(
                                                             quorvel::reference::illFormedUtf8))]
                           .bytes));
  }
}

void addUtf16(Random& random, const Keys& units, Bytes& text) {
  const auto addUnit = [&](unsigned int unit) { add(text, lowFirst(unit)); };
  switch (random.below(14)) {
    case 0:
    case 1:
    case 2:
      return addAsciiRun(random, text, 2);
    case 3:
      return addUnit(random.below(0x10000));
    case 4:
      return addUnit(0xA0 + random.below(0x60));
    case 5:
      return addUnit(random.oneIn(2) ? 0x660 + random.below(10) : 0x6F0 + random.below(10));
    case 6:
      addUnit(0xD800 + random.below(0x400));
      if (random.oneIn(4)) return;
      return addUnit(0xDC00 + random.below(0x400));
    case 7:
      return addUnit(0xDC00 + random.below(0x400));
    case 8:
      return random.oneIn(2) ? addUnit(0) : text.push_back(random.byte());
    case 9:
      return addMarker(random, text);
    case 10:
      add(text, {0xEF, 0xFD, static_cast<unsigned char>(random.below(9))});
      for (unsigned int left = random.below(7); left; --left) text.push_back(random.byte());
      return;
    case 11:
      return addUnit(random.oneIn(2) ? 0xFEFF : 0xFFFE);
    default:
      if (units.empty()) return addUnit(0x3000 + random.below(0x7000));
      return add(text, random.of(units));
  }
}

Bytes withBytesSwapped(Bytes text) {
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) std::swap(text[i], text[i + 1]);
  return text;
}

Bytes randomUtf32(Random& random, unsigned int pieces) {
  Bytes text;
  for (; pieces; --pieces) {
    const unsigned int value =
        random.oneIn(3) ? random.below(0x80) : random.below(0x11000 << random.below(6));
    add(text, {static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
               static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)});
  }
  if (random.oneIn(6)) text.resize(text.size() + 1 + random.below(3));
  if (random.oneIn(2)) text = withBytesSwapped(text);
  return text;
}

/// Text for a conversion from `from`; what can be encoded in `to` is frequent
/// in Unicode text.
Bytes randomText(Random& random, int from, int to) {
  const unsigned int longest = random.oneIn(100) ? 600 : random.oneIn(10) ? 120 : 12;
  const unsigned int pieces = random.below(longest);
  if (quorvel::reference::isUtf32(from)) return randomUtf32(random, pieces);
  const Keys& units = unitsOf(to);
  const Keys& pairs = pairsOf(from);
  const bool isUtf16 = from == 1200 || from == 1201;
  const bool isUtf8 = from == 65001;
  Bytes text;
  if (random.oneIn(20) && isUtf16) text = bytes(random.oneIn(2) ? "FF FE" : "FE FF");
  if (random.oneIn(20) && isUtf8) text = bytes("EF BB BF");
  for (unsigned int i = 0; i < pieces; ++i) {
    if (isUtf16) {
      addUtf16(random, units, text);
    } else if (isUtf8) {
      addUtf8(random, text);
    } else if (pairs.empty()) {
      addSingleBytes(random, text);
    } else {
      addMultiBytes(random, pairs, text);
    }
  }
  return from == 1201 && random.oneIn(2) ? withBytesSwapped(text) : text;
}

// --- Random cases -----------------------------------------------------------------

Bytes randomSubstitution(Random& random) {
  static const std::vector<std::string> some = {
      "", "3F", "3F 00", "FF", "13 30", "'(?)'", "FD EF 41", "'sorry' 00", "41 00 42 00 43 00"};
  return random.oneIn(30) ? Bytes(100, 0x2E) : bytes(random.of(some));
}

Settings randomSettings(Random& random) {
  Settings settings;
  settings.action = static_cast<int>(random.below(10));
  settings.alternate = random.of(kAlternates);
  settings.substitution = randomSubstitution(random);
  settings.allows4ByteUtf8 = !random.oneIn(4);
  settings.emitsMarkers = random.oneIn(2);
  settings.honorsMarkers = random.oneIn(2);
  return settings;
}

int randomCodePage(Random& random) {
  const unsigned int choice = random.below(40);
  if (choice == 0) return random.of(kWithoutTable);
  if (choice < 3) return random.of(kOtherUnicode);
  if (choice < 15) return random.of(kUnicode);
  return random.of(choice < 27 ? kMultiByte : kSingleByte);
}

int randomDestination(Random& random) {
  const int codePage = randomCodePage(random);
  return codePage == 65000 ? 1252 : codePage;  // the reference does not write UTF-7
}

/// A case with its settings made and its code pages chosen.
Case randomCase(Random& random, Route route, int from, int to) {
  Case c;
  c.route = route;
  c.from = from;
  c.to = to;
  c.settings = randomSettings(random);
  c.settings.fromCodePage = from;
  c.settings.toCodePage = to;
  c.isVerbose = random.oneIn(2);
  if (random.oneIn(4)) c.before = bytes("'before' E9");
  c.input = randomText(random, from, to);
  return c;
}

/// Compares the cases that `make` makes, and gives up after a few that differ.
template <typename Make>
void expectAgreement(unsigned int seed, int cases, Make make) {
  Random random(seed);
  Comparison comparison;
  for (int failures = 0; cases > 0 && failures < 3; --cases) {
    const std::string differences = comparison.differences(make(random));
    EXPECT_EQ(differences, "");
    if (!differences.empty()) ++failures;
  }
}

TEST(Reference, KnowsEveryPageThatIsConvertedByTable) {
  EXPECT_EQ(kMultiByte, convertedPages(quorvel::CodePageKind::MultiByte));
  EXPECT_EQ(kSingleByte, convertedPages(quorvel::CodePageKind::SingleByte));
}

TEST(Reference, AgreesOnConversionsBetweenAnyCodePages) {
  expectAgreement(1, 60000, [](Random& random) {
    return randomCase(random, Route::EncConvert, randomCodePage(random), randomDestination(random));
  });
}

TEST(Reference, AgreesOnTheWayThroughThePivot) {
  expectAgreement(2, 50000, [](Random& random) {
    return randomCase(random, Route::convert_a, randomCodePage(random), randomDestination(random));
  });
}

TEST(Reference, AgreesOnDecodingWithTheMarkersEitherWay) {
  expectAgreement(3, 50000, [](Random& random) {
    const int from = random.of(random.oneIn(2) ? kMultiByte : kSingleByte);
    return randomCase(random, Route::convertToUnicodeHC, from, randomDestination(random));
  });
}

TEST(Reference, AgreesOnEncodingWithTheMarkersEitherWay) {
  expectAgreement(4, 50000, [](Random& random) {
    const int to = random.of(random.oneIn(2) ? kMultiByte : kSingleByte);
    Case c = randomCase(random, Route::convertFromUnicodeHC, 1200, to);
    c.settings.fromCodePage = randomCodePage(random);
    return c;
  });
}

TEST(Reference, AgreesOnTheTranscodersWithTheMarkersEitherWay) {
  expectAgreement(5, 25000, [](Random& random) {
    return randomCase(random, Route::cv_utf8_to_utf16, 65001, randomDestination(random));
  });
  expectAgreement(6, 25000, [](Random& random) {
    return randomCase(random, Route::cv_utf16_to_utf8, 1200, 65001);
  });
}

TEST(Reference, AgreesOnEveryPageAndAction) {
  Random random(7);
  Comparison comparison;
  std::vector<int> codePages = kSingleByte;
  codePages.insert(codePages.end(), kMultiByte.begin(), kMultiByte.end());
  for (const int codePage : codePages) {
    for (int action = 0; action < 10; ++action) {
      const std::pair<int, int> pairs[] = {{codePage, 1200}, {codePage, 65001}, {codePage, 1252},
                                           {codePage, 932},  {1200, codePage},  {65001, codePage},
                                           {1252, codePage}, {949, codePage},   {1201, codePage}};
      for (const auto& [from, to] : pairs) {
        Case c = randomCase(random, Route::EncConvert, from, to);
        c.settings.action = action;
        ASSERT_EQ(comparison.differences(c), "");
      }
    }
  }
}

// --- Tables made by hand ----------------------------------------------------------

/// A table whose look-up knows more than tables that are built ever do: values
/// of up to ten bytes, and keys to be passed over.
class OddTable : public HashConvert {
 public:
  OddTable() : HashConvert(1) {}

  void hcLookup(const unsigned char* key, unsigned char* out, int& outLen) const override {
    if (key[0] % 16 == 3) {
      outLen = 1 + key[1] % 10;
      for (int i = 0; i < outLen; ++i) out[i] = static_cast<unsigned char>(key[0] + i);
    } else if (key[0] % 16 == 4 && m_direction == 2) {
      outLen = -1 - key[1] % 3;
    } else {
      HashConvert::hcLookup(key, out, outLen);
    }
  }
};

std::unique_ptr<HashConvert> randomTable(Random& random, int direction) {
  static const std::vector<int> buckets = {1, 2, 3, 7, 269, 4099};
  std::unique_ptr<HashConvert> table(random.oneIn(3) ? new OddTable
                                                     : HashConvert::createNewObject(1));
  table->hcInitialize(random.of(buckets));
  table->m_direction = direction;
  table->put_IsLowerAscii(random.oneIn(2));
  table->m_hasRemovals = random.oneIn(2);
  for (unsigned int left = random.below(300); left; --left) {
    const Bytes value = {random.byte(), random.byte()};
    insert(*table, Bytes{random.byte(), random.byte()},
           direction == 1 && random.oneIn(2) ? Bytes{value[0]} : value);
  }
  for (unsigned int left = random.below(200); direction == 2 && left; --left) {
    table->m_byteToUnicode[random.byte()] = static_cast<unsigned short>(random.below(0x10000));
  }
  for (unsigned int left = random.below(20); table->m_hasRemovals && left; --left) {
    const Bytes key = {random.byte(), random.byte()};
    table->hcRemove(key.data());
  }
  return table;
}

TEST(Reference, AgreesOnTablesMadeByHand) {
  for (const int direction : {1, 2}) {
    Random tables(8);
    for (int round = 0; round < 200; ++round) {
      const auto table = randomTable(tables, direction);
      const Keys keys = keysOf(table.get());
      expectAgreement(100 + static_cast<unsigned int>(round), 100, [&](Random& random) {
        Case c = randomCase(
            random, direction == 2 ? Route::convertToUnicodeHCVar : Route::convertFromUnicodeHC2,
            random.of(kMultiByte), random.of(kSingleByte));
        c.input.clear();
        for (unsigned int left = random.below(20); left; --left) {
          direction == 2 ? addMultiBytes(random, keys, c.input) : addUtf16(random, keys, c.input);
        }
        c.table = table.get();
        return c;
      });
    }
  }
}

TEST(Reference, AgreesOnLookupsMadeByHand) {
  Random tables(9);
  for (int round = 0; round < 200; ++round) {
    const std::unique_ptr<UnicodeLookup> lookup(UnicodeLookup::createNewObject());
    for (unsigned short& unit : lookup->m_units) {
      unit = static_cast<unsigned short>(tables.oneIn(4) ? 0 : tables.below(0x10000));
    }
    expectAgreement(400 + static_cast<unsigned int>(round), 100, [&](Random& random) {
      Case c = randomCase(random, Route::convertToUnicodeByLookup, 1252, 65001);
      c.lookup = lookup.get();
      return c;
    });
  }
}

// --- The ends of blocks -----------------------------------------------------------

/// One way to convert, what fills a text up there, and what may stand in it.
struct Situation {
  Route route;
  int from;
  int to;
  std::vector<std::string> fillers;
  std::vector<std::string> events;
};

const std::vector<Situation> kSituations = {
    {Route::convertToUnicodeHC, 1252, 1200, {"41", "E9"}, {"81", "81 8D", "00", "FD EF 02 41 81"}},
    {Route::convertToUnicodeHC, 28597, 1200, {"E1"}, {"FF", "D2 FF", "00"}},
    {Route::convertToUnicodeHC,
     932,
     1200,
     {"41", "B1", "82 A0"},
     {"82 A0", "82", "FF", "A0", "82 00", "85 40", "85 40 85 40", "00", "00 82 A0 41"}},
    {Route::convertToUnicodeHC,
     1361,
     1200,
     {"41", "88 61"},
     {"88 61", "88 20", "FF", "FF FF 88 61"}},
    {Route::EncConvert, 949, 65001, {"41", "B0 A1"}, {"B0 A1", "FF", "B0", "C9 A1 C9 A1", "00"}},
    {Route::EncConvert, 936, 1252, {"41", "A8 A6"}, {"B0 A1", "FF", "B0", "A8 A6 FF FF"}},
    {Route::EncConvert, 1251, 866, {"41", "E0"}, {"98", "80", "98 98 80 80", "00"}},
    {Route::EncConvert,
     65001,
     932,
     {"41", "E3 81 82", "E3 81 82 41"},
     {"E3 81 82", "C3 A9", "FF", "E3 81", "F0 9F 98 80", "EE BF BD 41 42", "00"}},
    {Route::cv_utf8_to_utf16,
     65001,
     1200,
     {"41", "C3 A9", "E3 81 82", "F0 9F 98 80"},
     {"C3 A9", "E3 81 82", "F0 9F 98 80", "F0 9F 98", "E3 81", "C3", "FF FF", "ED A0 80", "00"}},
    {Route::cv_utf16_to_utf8,
     1200,
     65001,
     {"41 00", "E9 00", "42 30", "3D D8 00 DE"},
     {"3D D8 00 DE", "3D D8", "00 DE", "00 00", "EF FD 03 61 62 63", "EF FD 02 61", "EF FD 09 61",
      "EF FD 01 FF"}},
    {Route::convertFromUnicodeHC,
     1200,
     932,
     {"41 00", "42 30", "71 FF"},
     {"42 30", "E9 00", "3D D8 00 DE", "00 00", "FD EF 03 61 62 63", "FD EF 02 61", "FD EF 09 61",
      "FD EF 01 FF"}},
    {Route::convertFromUnicodeHC,
     1200,
     1252,
     {"41 00", "E9 00"},
     {"42 30", "42 30 42 30", "00 00", "FD EF 03 61 62 63", "FD EF 05 61 62 63 64 65 66", "63 06"}},
    {Route::convertFromUnicodeHC,
     1200,
     37,
     {"41 00", "E9 00"},
     {"42 30", "00 00", "FD EF 01 61", "FD EF 00 61"}},
};

/// Places of which one lies before, one at and one behind each end of a block.
const std::vector<std::size_t> kPlaces = {
    0,    1,    7,    8,    9,    15,   16,    17,    31,    32,    33,    63,    64,   65,  98,
    99,   100,  101,  198,  199,  200,  201,   254,   255,   256,   257,   510,   511,  512, 513,
    1022, 1023, 1024, 1025, 8190, 8192, 16380, 16381, 16382, 16383, 16384, 16385, 16386};

/// Fills up with whole fillers so that the event begins at `place` or, where
/// the filler is longer than a byte, a little before it.
Bytes filledUpTo(std::size_t place, const Bytes& filler) {
  return repeated(place / filler.size(), filler);
}

TEST(Reference, AgreesAtTheEndsOfBlocks) {
  Random random(10);
  Comparison comparison;
  for (const Situation& situation : kSituations) {
    for (const std::string& filler : situation.fillers) {
      for (const std::size_t place : kPlaces) {
        for (const std::string& event : situation.events) {
          if (place > 8000 && !random.oneIn(4)) continue;
          Case c;
          c.route = situation.route;
          c.from = situation.from;
          c.to = situation.to;
          c.settings = randomSettings(random);
          c.settings.fromCodePage = situation.from;
          c.settings.toCodePage = situation.to;
          c.isVerbose = false;
          c.input = filledUpTo(place, bytes(filler)) + bytes(event);
          ASSERT_EQ(comparison.differences(c), "") << filler << " x " << place << ", " << event;
          add(c.input, filledUpTo(1 + random.below(40), bytes(filler)));
          ASSERT_EQ(comparison.differences(c), "") << filler << " x " << place << ", " << event;
        }
      }
    }
  }
}

TEST(Reference, AgreesOnEveryShortLength) {
  Random random(11);
  Comparison comparison;
  for (const Situation& situation : kSituations) {
    for (const std::string& filler : situation.fillers) {
      const Bytes text = repeated(300, bytes(filler));
      for (std::size_t length = 0; length < 300; ++length) {
        Case c;
        c.route = situation.route;
        c.from = situation.from;
        c.to = situation.to;
        c.settings = randomSettings(random);
        c.settings.fromCodePage = situation.from;
        c.input.assign(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
        ASSERT_EQ(comparison.differences(c), "");
        if (length == 0) continue;
        c.input[random.below(length)] = random.byte();
        ASSERT_EQ(comparison.differences(c), "");
      }
    }
  }
}

// --- The pivot in blocks ----------------------------------------------------------

/// The error actions of which none converts again.
const std::vector<int> kActionsInBlocks = {0, 1, 2, 3, 7, 8, 9};

const std::vector<Situation> kPivots = {
    {Route::pivot,
     65001,
     932,
     {"41", "E3 81 82"},
     {"FF", "C3 A9", "E3 81", "F0 9F 98 80", "EE BF BD", "EE BF BD 02 41", "EE BF BD 09"}},
    {Route::pivot,
     65001,
     1252,
     {"41", "C3 A9"},
     {"FF FF", "E3 81 82", "F0 9F 98", "ED A0 80", "00", "EE BF BD 05", "EE BF BD E2 80 81"}},
    {Route::pivot,
     65001,
     1256,
     {"D9 A1", "DB B1 41", "C3 A2"},
     {"FF", "EE BF BD 00", "EE BF BD 01", "EE BF BD 04 D9 A1", "E0 A0 86 E6 80 86", "00"}},
    {Route::pivot, 1252, 28596, {"41"}, {"81", "E9", "81 E9 8D", "00"}},
    {Route::pivot,
     932,
     65001,
     {"41", "82 A0", "B1"},
     {"82", "FF", "85 40", "82 00", "00", "A0 A0 A0"}},
    {Route::pivot, 1361, 65001, {"88 61"}, {"FF", "88 20", "41", "FF FF FF"}},
    {Route::pivot, 51949, 65001, {"B0 A1", "41"}, {"FF", "C9 A1 C9 A1", "00", "FF 41"}},
    {Route::pivot, 1251, 866, {"41", "E0"}, {"98", "80", "98 98 80 80", "00"}},
    {Route::pivot, 51932, 932, {"A4 A2", "41"}, {"8F A2 AF", "A4", "FF", "A9 A1 FF"}},
    {Route::pivot, 936, 1252, {"41", "A8 A6"}, {"B0 A1", "FF", "B0", "A8 A6 FF FF"}},
};

Case pivotCase(const Situation& situation, int action, const Bytes& substitution) {
  Case c;
  c.route = situation.route;
  c.from = situation.from;
  c.to = situation.to;
  c.settings.action = action;
  c.settings.substitution = substitution;
  c.settings.fromCodePage = situation.from;
  c.settings.toCodePage = situation.to;
  c.isVerbose = false;
  return c;
}

TEST(Reference, AgreesAtTheEndsOfPivotBlocks) {
  Random random(12);
  Comparison comparison;
  for (const Situation& situation : kPivots) {
    for (const int action : kActionsInBlocks) {
      for (const std::string& event : situation.events) {
        for (std::size_t place = 0; place < 24; ++place) {
          Case c = pivotCase(situation, action, randomSubstitution(random));
          const Bytes filler = bytes(random.of(situation.fillers));
          c.input = filledUpTo(place, filler) + bytes(event);
          add(c.input, filledUpTo(random.below(20), filler));
          if (random.oneIn(2)) add(c.input, bytes(random.of(situation.events)));
          for (c.blockLength = quorvel::fewestBytesPerBlock; c.blockLength < 12; ++c.blockLength) {
            ASSERT_EQ(comparison.differences(c), "");
          }
        }
      }
    }
  }
}

int randomPivotSide(Random& random) {
  if (random.oneIn(3)) return 65001;
  if (random.oneIn(6)) return random.oneIn(2) ? 1256 : 28596;
  return random.of(random.oneIn(2) ? kMultiByte : kSingleByte);
}

/// A case of which the pivot does the whole: no mark, and no shorter way.
Case randomPivotCase(Random& random) {
  int from = randomPivotSide(random);
  int to = randomPivotSide(random);
  while (from == 20127) from = randomPivotSide(random);
  while (to == from) to = randomPivotSide(random);
  Case c = randomCase(random, Route::pivot, from, to);
  if (random.oneIn(4)) c.settings.fromCodePage = randomDestination(random);
  c.settings.action = random.of(kActionsInBlocks);
  c.isVerbose = false;
  c.blockLength = quorvel::fewestBytesPerBlock + random.below(random.oneIn(3) ? 100 : 12);
  c.input.insert(c.input.begin(), 0x41);
  return c;
}

TEST(Reference, AgreesOnThePivotInShortBlocks) { expectAgreement(13, 80000, randomPivotCase); }

/// Whether this case goes through the pivot in blocks, or as one.
bool goesInBlocks(const Case& c) {
  EncodingConvert converter;
  converter.setErrorAction(c.settings.action);
  RecordingLog log(c.isVerbose);
  quorvel::DataBuffer out;
  const unsigned int length =
      quorvel::pivotBlockLength({converter, quorvel::PageRef(c.from), quorvel::PageRef(c.to),
                                 nullptr, sizeOf(c.input), out, log});
  return length == quorvel::sourceBytesPerBlock;
}

TEST(Reference, AgreesOnTextOfSeveralBlocks) {
  Random random(14);
  Comparison comparison;
  for (const Situation& situation : kPivots) {
    for (const int action : kActionsInBlocks) {
      Case c = pivotCase(situation, action, randomSubstitution(random));
      c.route = Route::convert_a;
      const Bytes filler = bytes(random.of(situation.fillers));
      const std::size_t end = quorvel::sourceBytesPerBlock * (1 + random.below(3));
      // Around a block's end, whatever of the fillers' lengths fits in front.
      c.input = filledUpTo(end - random.below(6), filler);
      c.input.insert(c.input.end(), random.below(5), 0x41);
      add(c.input, bytes(random.of(situation.events)));
      add(c.input, filledUpTo(random.below(2 * quorvel::sourceBytesPerBlock), filler));
      ASSERT_TRUE(goesInBlocks(c));
      ASSERT_EQ(comparison.differences(c), "");
    }
  }
}

TEST(Reference, TakesThePivotInBlocksOnlyWhereThatShowsNowhere) {
  Case c = pivotCase(kPivots[0], 0, {});
  c.input = {0x41};
  EXPECT_TRUE(goesInBlocks(c));
  c.isVerbose = true;
  EXPECT_FALSE(goesInBlocks(c));
  c.isVerbose = false;
  c.settings.action = 6;
  EXPECT_FALSE(goesInBlocks(c));
  c.settings.action = 2;
  c.to = 28600;
  EXPECT_FALSE(goesInBlocks(c));
}

}  // namespace
