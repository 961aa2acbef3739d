// Every table-driven code page against its mapping file, which is the oracle:
// every one-byte and every two-byte sequence, every UTF-16 unit, both directly
// and by way of the pivot, and from every page to every other.

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "quorvel/base/NullLog.h"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/CodePageModel.h"
#include "tests/helpers/CodePageRows.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;

// The sanitizers make the many small conversions of a few tests slow; there,
// every eleventh is made.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kStep = 11;
#else
constexpr std::size_t kStep = 1;
#endif

struct Result {
  bool ok;
  Bytes out;
};

// Text in 10004 is put in logical order before it is decoded, which is no
// matter of the table: the pivot takes it as it stands.
Result convert(int from, int to, const Bytes& text) {
  EncodingConvert converter;
  NullLog log;
  DataBuffer out;
  const auto operation = from == 10004 ? &EncodingConvert::convert_a : &EncodingConvert::EncConvert;
  const bool ok = (converter.*operation)(from, to, text.data(), sizeOf(text), out, log);
  return {ok, bytesOf(out)};
}

std::string excerpt(const Bytes& data, std::size_t at) {
  const std::size_t first = at - std::min<std::size_t>(at, 4);
  return hex(data.data() + first, std::min<std::size_t>(data.size() - first, 12));
}

void expectSame(const Result& actual, bool ok, const Bytes& expected, int from, int to) {
  const std::string title = std::to_string(from) + " to " + std::to_string(to);
  EXPECT_EQ(actual.ok, ok) << title;
  if (actual.out == expected) return;
  const auto differing =
      std::mismatch(expected.begin(), expected.end(), actual.out.begin(), actual.out.end());
  const auto at = static_cast<std::size_t>(std::distance(expected.begin(), differing.first));
  ADD_FAILURE() << title << ", from byte " << at << " on: expected " << excerpt(expected, at)
                << ", got " << excerpt(actual.out, at);
}

// Of the pages that conversions take.
const std::vector<CodePageModel>& models() {
  static const std::vector<CodePageModel> all = [] {
    std::vector<CodePageModel> result;
    for (int codePage : codePagesWithAFile()) {
      if (quorvel::findCodePage(codePage).table.isRouted) result.emplace_back(codePage);
    }
    return result;
  }();
  return all;
}

// UTF-16 never holds U+0000 on its way to UTF-8, but US-ASCII is not converted
// by way of UTF-16.
Bytes decodedToUtf8(const CodePageModel& model, const Bytes& text) {
  Units units = model.decode(text);
  if (model.codePage != 20127) units.erase(std::remove(units.begin(), units.end(), 0), units.end());
  return utf8Of(units);
}

void expectDecodesAsTheFileSays(const CodePageModel& model, const Bytes& text) {
  const int from = model.codePage;
  expectSame(convert(from, 1200, text), true, utf16Of(model.decode(text)), from, 1200);
  expectSame(convert(from, 65001, text), true, decodedToUtf8(model, text), from, 65001);
}

void expectEncodesAsTheFileSays(const CodePageModel& model, int from, const Bytes& text,
                                const Units& units) {
  const auto [expected, isWhole] = model.encode(units);
  expectSame(convert(from, model.codePage, text), isWhole, expected, from, model.codePage);
}

// All units but those that `isLeftOut` names, each with a line feed behind it
// that keeps it apart from the next.
template <typename Predicate>
Units everyUnitBut(Predicate isLeftOut) {
  Units units;
  for (unsigned int unit = 0; unit < 0x10000; ++unit) {
    if (isLeftOut(unit)) continue;
    units.push_back(unit);
    units.push_back(0x0A);
  }
  return units;
}

bool isSurrogate(unsigned int unit) { return unit >= 0xD800 && unit < 0xE000; }

// What comes back from a page as it went there, whatever the way.
Units repertoireOf(const CodePageModel& model) {
  Units units;
  for (unsigned int unit = 1; unit < 0x10000; ++unit) {
    if (unit != kMarkerUnit && model.isRoundTrip(unit)) units.push_back(unit);
  }
  return units;
}

TEST(EveryCodePage, HasAMappingFile) {
  std::vector<int> pages[2];
  for (const CodePageModel& model : models()) pages[model.isMultiByte()].push_back(model.codePage);
  EXPECT_EQ(pages[0], convertedPages(quorvel::CodePageKind::SingleByte));
  EXPECT_EQ(pages[1], convertedPages(quorvel::CodePageKind::MultiByte));
}

TEST(EveryCodePage, DecodesEveryByteThatStandsAlone) {
  for (const CodePageModel& model : models()) {
    for (unsigned int byte = 0; byte < 0x100; ++byte) {
      expectDecodesAsTheFileSays(model, {static_cast<unsigned char>(byte)});
    }
  }
}

TEST(EveryCodePage, DecodesEveryTwoByteSequenceThatStandsAlone) {
  for (const CodePageModel& model : models()) {
    if (!model.isMultiByte()) continue;
    for (std::size_t code = 0; code < 0x10000; code += kStep) {
      const Bytes text = {static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code)};
      expectDecodesAsTheFileSays(model, text);
    }
  }
}

TEST(EveryCodePage, DecodesEveryTwoByteSequenceWithinAText) {
  Bytes text;
  for (unsigned int code = 0; code < 0x10000; ++code) {
    text.push_back(static_cast<unsigned char>(code >> 8));
    text.push_back(static_cast<unsigned char>(code));
    text.push_back(0x0A);
  }
  for (const CodePageModel& model : models()) expectDecodesAsTheFileSays(model, text);
}

TEST(EveryCodePage, EncodesEveryUnitOfUtf16) {
  const Units units = everyUnitBut([](unsigned int) { return false; });
  for (const CodePageModel& model : models()) {
    expectEncodesAsTheFileSays(model, 1200, utf16Of(units), units);
  }
}

TEST(EveryCodePage, EncodesEveryCharacterOfUtf8) {
  const Units units =
      everyUnitBut([](unsigned int unit) { return isSurrogate(unit) || unit == kMarkerUnit; });
  for (const CodePageModel& model : models()) {
    expectEncodesAsTheFileSays(model, 65001, utf8Of(units), units);
  }
}

TEST(EveryCodePage, TakesTheMarkerUnitFromThePivotAwayButEncodesItDirectly) {
  const Units units = {0x61, kMarkerUnit, 0x62};
  for (const CodePageModel& model : models()) {
    expectEncodesAsTheFileSays(model, 1200, utf16Of(units), units);
    // The byte behind the marker, 62, is no count that it could announce.
    expectEncodesAsTheFileSays(model, 65001, utf8Of(units), {0x61, 0x62});
  }
}

TEST(EveryCodePage, GetsItsRepertoireBackFromEveryFormOfUnicode) {
  for (const CodePageModel& model : models()) {
    const Bytes text = model.encode(repertoireOf(model)).first;
    for (int unicode : {1200, 65001, 1201, 12000, 12001, 65000}) {
      // The rest is wrapped around the pivot.
      if (model.codePage == 10004 && unicode != 1200 && unicode != 65001) continue;
      const Result there = convert(model.codePage, unicode, text);
      EXPECT_TRUE(there.ok) << model.codePage << " to " << unicode;
      expectSame(convert(unicode, model.codePage, there.out), true, text, unicode, model.codePage);
    }
  }
}

// From every page to every other, so also between those of one script. A pair
// may have nothing in common: an EBCDIC page of another country still has the
// space.
TEST(EveryCodePage, ExchangesWhatItSharesWithEveryOtherAndGetsItBack) {
  std::size_t pair = 0;
  for (const CodePageModel& from : models()) {
    const Units repertoire = repertoireOf(from);
    for (const CodePageModel& to : models()) {
      if (from.codePage == to.codePage || ++pair % kStep != 0) continue;
      Units shared;
      std::copy_if(repertoire.begin(), repertoire.end(), std::back_inserter(shared),
                   [&to](unsigned int unit) { return to.isRoundTrip(unit); });
      EXPECT_FALSE(shared.empty()) << from.codePage << " and " << to.codePage;
      const Bytes text = from.encode(shared).first;
      const Result there = convert(from.codePage, to.codePage, text);
      expectSame(there, true, to.encode(shared).first, from.codePage, to.codePage);
      expectSame(convert(to.codePage, from.codePage, there.out), true, text, to.codePage,
                 from.codePage);
    }
  }
}

}  // namespace
