#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/base/NullLog.h"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/pages/ArabicDigits.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableLoops.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/Kernels.h"
#include "tests/helpers/PageTables.h"
#include "tests/helpers/Seed.h"
#include "tests/helpers/Tables.h"

namespace quorvel {
namespace {

using kernel::Target;
using quorvel_test::hex;
using quorvel_test::tableOf;
using test_kernels::Edge;
using test_kernels::FencedBytes;
using test_seed::Random;

std::size_t below(Random& random, std::size_t limit) { return random() % limit; }

struct Moved {
  std::size_t consumed;
  std::string bytes;
  Stop why;
  bool operator==(const Moved&) const = default;
};

const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

// What the loops over the tables themselves do, a probe for each character.

Moved movedBy(const Progress& progress, std::string_view text, const std::string& room) {
  return {static_cast<std::size_t>(progress.in - bytesOf(text)),
          room.substr(0, static_cast<std::size_t>(progress.out - bytesOf(room))), progress.why};
}

std::string roomFor(std::string_view text) {
  return std::string((text.size() + 1) * HashConvert::mostValueBytes, '\0');
}

// A byte that pairs begin with and that nothing follows is cut off.
bool isLead(const HashConvert& table, char byte) {
  bool isFound = false;
  table.forEachMapping([&](const unsigned char* key, const unsigned char*, int length) {
    isFound = isFound || (length > 0 && key[0] == static_cast<unsigned char>(byte));
  });
  return isFound;
}

Moved decodedByProbes(const HashConvert& table, std::string_view text, std::size_t stop) {
  std::string room = roomFor(text);
  const unsigned char* in = bytesOf(text);
  Moved moved = movedBy(decodeMultiBytes(table, in, in + stop, in + text.size(),
                                         reinterpret_cast<unsigned char*>(room.data())),
                        text, room);
  if (moved.why == Stop::met && text.size() - moved.consumed == 1 && isLead(table, text.back())) {
    moved.why = Stop::cutOff;
  }
  return moved;
}

// A page may write Arabic digits as ASCII ones, whatever its table says.
std::string withDigitsOf(const HashConvert& table, std::string_view text) {
  std::string units(text);
  if (!findCodePage(table.codePage()).traits.takesAsciiDigits) return units;
  for (std::size_t i = 0; i + 1 < units.size(); i += 2) {
    const unsigned int unit = bytesOf(units)[i] | static_cast<unsigned int>(bytesOf(units)[i + 1])
                                                      << 8;
    if (!isArabicDigit(unit)) continue;
    units[i] = static_cast<char>(asciiDigitOf(unit));
    units[i + 1] = '\0';
  }
  return units;
}

Moved encodedByProbes(const HashConvert& table, std::string_view text) {
  const std::string units = withDigitsOf(table, text);
  std::string room = roomFor(units);
  const unsigned char* in = bytesOf(units);
  return movedBy(
      encodeUnits(table, in, in + units.size(), reinterpret_cast<unsigned char*>(room.data())),
      units, room);
}

Moved decodedByLookup(const UnicodeLookup& lookup, std::string_view text) {
  Moved moved{};
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const unsigned int unit = byte == 0 ? 0 : lookup[byte];
    if (unit == 0 && byte != 0) {
      moved.why = Stop::met;
      break;
    }
    moved.bytes += static_cast<char>(unit & 0xFF);
    moved.bytes += static_cast<char>(unit >> 8);
    ++moved.consumed;
  }
  return moved;
}

// Text.

using Pieces = std::vector<std::string>;

// The keys of a table: two-byte codes, or units low byte first.
Pieces keysOf(const HashConvert& table) {
  Pieces keys;
  table.forEachMapping([&](const unsigned char* key, const unsigned char*, int) {
    keys.emplace_back(reinterpret_cast<const char*>(key), 2);
  });
  return keys;
}

// Runs of pieces and of ASCII, and once in a while, if at all, a stray piece.
std::string textOf(const Pieces& pieces, std::size_t unitLength, unsigned int strays,
                   std::size_t length, Random& random) {
  std::string text;
  const std::size_t longest = 1 + below(random, 100);
  while (text.size() < length) {
    const bool isAscii = pieces.empty() || below(random, 3) == 0;
    for (std::size_t left = 1 + below(random, longest); left > 0; --left) {
      if (strays > 0 && below(random, 1000) < strays) {
        for (std::size_t i = 0; i < unitLength; ++i) text += static_cast<char>(random());
      } else if (isAscii) {
        text += static_cast<char>(0x20 + below(random, 0x5F));
        if (unitLength == 2) text += '\0';
      } else {
        text += pieces[below(random, pieces.size())];
      }
    }
  }
  text.resize(length - length % unitLength);
  return text;
}

// One direction of one table on one target, with the room that it is promised.
class Runner {
 public:
  // Of `run(in, stop, end, out)`, with the text and the room at either edge of
  // what may be touched.
  template <typename Run>
  testing::AssertionResult agrees(const Run& run, std::string_view text, std::size_t stop,
                                  std::size_t room, const Moved& expected) const {
    for (const Edge edge : test_kernels::edges) {
      unsigned char* in = m_in.at(edge, text.size());
      text.copy(reinterpret_cast<char*>(in), text.size());
      unsigned char* out = m_out.at(edge, room);
      const Progress progress = run(in, in + stop, in + text.size(), out);
      const Moved got{static_cast<std::size_t>(progress.in - in),
                      {reinterpret_cast<char*>(out), static_cast<std::size_t>(progress.out - out)},
                      progress.why};
      if (got == expected) continue;
      return testing::AssertionFailure()
             << hex(text) << ", stop at " << stop << "\nstopped at " << got.consumed << ", not "
             << expected.consumed << ", for " << test_kernels::nameOf(got.why) << ", not "
             << test_kernels::nameOf(expected.why) << "\nwrote " << hex(got.bytes) << "\nnot   "
             << hex(expected.bytes);
    }
    return testing::AssertionSuccess();
  }

 private:
  FencedBytes m_in{1U << 16};
  FencedBytes m_out{1U << 17};
};

// Tables with what the loops read instead of them.

struct Decoded {
  explicit Decoded(const HashConvert& of) : table(of), made(quorvel_test::flatToUnicode(of)) {}
  Decoded(const HashConvert& of, const PairsToUnicode& published) : table(of), flat(&published) {}

  const HashConvert& table;
  std::unique_ptr<PairsToUnicode> made;
  const PairsToUnicode* flat = made.get();
};

struct DecodedBytes {
  explicit DecodedBytes(const UnicodeLookup& of) : lookup(of), made(quorvel_test::flatOf(of)) {}
  DecodedBytes(const UnicodeLookup& of, const BytesToUnicode& published)
      : lookup(of), flat(&published) {}

  const UnicodeLookup& lookup;
  std::unique_ptr<BytesToUnicode> made;
  const BytesToUnicode* flat = made.get();
};

struct Encoded {
  Encoded(const HashConvert& of, std::unique_ptr<FromUnicodeTable> laidFlat)
      : table(of), made(std::move(laidFlat)), flat(made.get()) {}
  Encoded(const HashConvert& of, const FromUnicodeTable& published) : table(of), flat(&published) {}

  bool isSingleByte() const { return flat->kind != FromUnicodeTable::Kind::pairs; }

  const HashConvert& table;
  std::unique_ptr<FromUnicodeTable> made;
  const FromUnicodeTable* flat;
};

class PageKernels : public testing::TestWithParam<Target> {
 protected:
  void SetUp() override {
    if (!kernel::canRun(GetParam())) GTEST_SKIP() << "not on this machine";
  }

  const kernel::Loops& loops() const { return kernel::loopsOf(GetParam()); }

  // Each of these also looks at what follows a stop.

  void decodePairs(const Decoded& decoded, std::string_view text, std::size_t stop) const {
    const auto run = [&](auto... where) {
      return loops().pairsToUnits(decoded.flat->flat, where...);
    };
    while (true) {
      const Moved expected = decodedByProbes(decoded.table, text, stop);
      ASSERT_TRUE(m_runner.agrees(run, text, stop, 2 * stop, expected));
      if (expected.consumed >= stop) break;
      text.remove_prefix(expected.consumed + 1);
      stop -= expected.consumed + 1;
    }
  }

  void encode(const Encoded& encoded, std::string_view text) const {
    const bool isSingleByte = encoded.isSingleByte();
    const auto run = [&](const unsigned char* in, const unsigned char*, const unsigned char* end,
                         unsigned char* out) {
      const FromUnicodeTable& flat = *encoded.flat;
      return isSingleByte
                 ? loops().unitsToBytes(static_cast<const UnicodeToBytes&>(flat).flat, in, end, out)
                 : loops().unitsToPairs(static_cast<const UnicodeToPairs&>(flat).flat, in, end,
                                        out);
    };
    while (true) {
      const Moved expected = encodedByProbes(encoded.table, text);
      const std::size_t units = text.size() / 2;
      ASSERT_TRUE(
          m_runner.agrees(run, text, text.size(), isSingleByte ? units : 2 * units, expected));
      if (text.size() - expected.consumed < 2) break;
      text.remove_prefix(expected.consumed + 2);
    }
  }

  void decodeBytes(const DecodedBytes& decoded, std::string_view text) const {
    const auto run = [&](const unsigned char* in, const unsigned char*, const unsigned char* end,
                         unsigned char* out) {
      return loops().bytesToUnits(decoded.flat->flat, in, end, out);
    };
    while (true) {
      const Moved expected = decodedByLookup(decoded.lookup, text);
      ASSERT_TRUE(m_runner.agrees(run, text, text.size(), 2 * text.size(), expected));
      if (expected.consumed == text.size()) break;
      text.remove_prefix(expected.consumed + 1);
    }
  }

 private:
  Runner m_runner;
};

INSTANTIATE_TEST_SUITE_P(EachTarget, PageKernels, testing::ValuesIn(kernel::allTargets),
                         test_kernels::targetName);

// Calls `test(page, to-Unicode table, from-Unicode table)` for every page that has
// them.
template <typename Test>
void forEachPage(const Test& test) {
  NullLog log;
  for (unsigned int i = 0; i < codePageCount; ++i) {
    const CodePage& page = codePageAt(i);
    if (!page.hasTable() || page.table.sharedWith) continue;
    SCOPED_TRACE(page.number);
    EncodingConvert::ensureHashToUnicode(page.number, log);
    EncodingConvert::ensureHashFromUnicode(page.number, log);
    test(page.number, *tableRegistry::toUnicode(page.number),
         *tableRegistry::fromUnicode(page.number));
    if (testing::Test::HasFatalFailure()) return;
  }
}

template <typename Test>
void forEachMultiBytePage(const Test& test) {
  forEachPage([&](int page, const ToUnicodeTable& table, const FromUnicodeTable&) {
    if (table.kind != ToUnicodeTable::Kind::pairs) return;
    test(Decoded(quorvel_test::pageTable(page, false), static_cast<const PairsToUnicode&>(table)));
  });
}

template <typename Test>
void forEachSingleBytePage(const Test& test) {
  forEachPage([&](int page, const ToUnicodeTable& table, const FromUnicodeTable&) {
    if (table.kind != ToUnicodeTable::Kind::bytes) return;
    test(DecodedBytes(quorvel_test::pageLookup(page), static_cast<const BytesToUnicode&>(table)));
  });
}

constexpr std::size_t lengths[] = {0,  1,  2,  15, 16,  17,  31,  32,  33,  63,   64,
                                   65, 66, 67, 95, 127, 128, 129, 130, 191, 1500, 5000};
constexpr unsigned int strayRates[] = {0, 2, 50, 500};

// Calls `test(length, strays)`.
template <typename Test>
void forEachKindOfText(const Test& test) {
  for (const std::size_t length : lengths) {
    for (const unsigned int strays : strayRates) {
      test(length, strays);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

TEST_P(PageKernels, DecodeTextOfEachMultiBytePageAsItsTableSays) {
  Random random(1);
  forEachMultiBytePage([&](const Decoded& decoded) {
    const Pieces pairs = keysOf(decoded.table);
    forEachKindOfText([&](std::size_t length, unsigned int strays) {
      const std::string text = textOf(pairs, 1, strays, length, random);
      decodePairs(decoded, text, text.size());
      decodePairs(decoded, text, text.size() - std::min<std::size_t>(text.size(), 1));
      decodePairs(decoded, text, text.size() / 2);
    });
  });
}

TEST_P(PageKernels, DecodeTextOfEachSingleBytePageAsItsTableSays) {
  Random random(6);
  const Pieces bytes = {"\x80", "\xC4", "\xE9", "\xF0", "\xFE", "\x9F", "\xA4", "\x41"};
  forEachSingleBytePage([&](const DecodedBytes& decoded) {
    forEachKindOfText([&](std::size_t length, unsigned int strays) {
      decodeBytes(decoded, textOf(bytes, 1, strays, length, random));
    });
  });
}

TEST_P(PageKernels, EncodeTextOfEachPageAsItsTableSays) {
  Random random(2);
  forEachPage([&](int page, const ToUnicodeTable&, const FromUnicodeTable& table) {
    const Encoded encoded(quorvel_test::pageTable(page, true), table);
    const Pieces units = keysOf(encoded.table);
    forEachKindOfText([&](std::size_t length, unsigned int strays) {
      encode(encoded, textOf(units, 2, strays, length, random));
    });
  });
}

TEST_P(PageKernels, TellEveryPairOfEachPageInsideABlock) {
  Random random(3);
  forEachMultiBytePage([&](const Decoded& decoded) {
    std::string text;
    for (int lead = 0x80; lead < 0x100; ++lead) {
      for (int trail = 0; trail < 0x100; ++trail) {
        text += static_cast<char>(lead);
        text += static_cast<char>(trail);
        if (below(random, 4) == 0) text.append(below(random, 4), 'x');
        if (text.size() < 2000) continue;
        decodePairs(decoded, text, text.size());
        if (HasFatalFailure()) return;
        text.clear();
      }
    }
  });
}

TEST_P(PageKernels, TellEveryByteOfEachPageAtEachPlace) {
  forEachSingleBytePage([&](const DecodedBytes& decoded) {
    for (std::size_t place = 0; place < 70; ++place) {
      std::string text(place, 'a');
      for (int byte = 0; byte < 0x100; ++byte) text += static_cast<char>(byte);
      decodeBytes(decoded, text);
      if (HasFatalFailure()) return;
    }
  });
}

TEST_P(PageKernels, TellEveryUnitOfEachPage) {
  std::string units;
  for (unsigned int unit = 0; unit < kernel::unitCount; ++unit) {
    units += static_cast<char>(unit & 0xFF);
    units += static_cast<char>(unit >> 8);
  }
  // A stop costs the rest of a piece, so that pieces are short.
  constexpr std::size_t piece = 128;
  forEachPage([&](int page, const ToUnicodeTable&, const FromUnicodeTable& table) {
    const Encoded encoded(quorvel_test::pageTable(page, true), table);
    const std::size_t step = encoded.isSingleByte() ? 7 * piece : piece;
    for (std::size_t at = 0; at < units.size(); at += step) {
      encode(encoded, std::string_view(units).substr(at, piece));
      if (HasFatalFailure()) return;
    }
  });
}

// Tables that no page has.

TEST_P(PageKernels, KnowLeadsInMoreThanTwoRanges) {
  const auto table = tableOf(
      17,
      {{"8141", "3000"}, {"9041", "3100"}, {"A5A5", "3200"}, {"C0C0", "3300"}, {"FFFF", "3400"}});
  table->put_IsLowerAscii(true);
  table->m_byteToUnicode[0xA0] = 0x1234;
  table->m_byteToUnicode[0xC1] = 0x1235;
  Random random(4);
  const Decoded decoded(*table);
  const Pieces pieces = {"\x81\x41", "\x90\x41", "\xA5\xA5", "\xC0\xC0",
                         "\xFF\xFF", "\xA0",     "\xC1"};
  for (int i = 0; i < 300; ++i) {
    const std::string text = textOf(pieces, 1, i % 20, 200 + below(random, 200), random);
    decodePairs(decoded, text, text.size());
    if (HasFatalFailure()) return;
  }
}

TEST_P(PageKernels, KnowLeadsBelow80WhereAsciiIsInTheTable) {
  const auto table = tableOf(17, {{"4142", "3000"}, {"8141", "3100"}, {"0001", "3200"}});
  for (unsigned int byte = 0x20; byte < 0x7F; ++byte) {
    table->m_byteToUnicode[byte] = static_cast<unsigned short>(byte + 1);
  }
  const Decoded decoded(*table);
  Random random(5);
  for (int i = 0; i < 300; ++i) {
    const std::string text = textOf({"AB", "A", "BA", "\x81\x41", std::string("\0\1", 2)}, 1,
                                    i % 20, 100 + below(random, 200), random);
    decodePairs(decoded, text, text.size());
    if (HasFatalFailure()) return;
  }
}

TEST_P(PageKernels, StopAtOnceWhenNothingIsMapped) {
  const auto table = quorvel_test::emptyTable(1);
  decodePairs(Decoded(*table), std::string(100, '\x81'), 100);
  const auto codes = quorvel_test::unitCodesOf(*table);
  encode(Encoded(*table, unicodeToPairsOf(*codes)), std::string(200, 'a'));
  encode(Encoded(*table, unicodeToBytesOf(nullptr)), std::string(200, 'a'));
  const std::unique_ptr<UnicodeLookup> lookup(UnicodeLookup::createNewObject());
  decodeBytes(DecodedBytes(*lookup), std::string(100, 'a'));
}

TEST_P(PageKernels, TakeTheByte00ForU0000) {
  const std::unique_ptr<UnicodeLookup> lookup(UnicodeLookup::createNewObject());
  for (unsigned int byte = 0; byte < 0x100; ++byte) {
    (*lookup)[byte] = static_cast<unsigned short>(0x4000 + 3 * byte);
  }
  std::string text(100, 'a');
  text[40] = '\0';
  decodeBytes(DecodedBytes(*lookup), text);
  EXPECT_EQ(quorvel_test::flatOf(*lookup)->flat.units[0], 0);
}

}  // namespace
}  // namespace quorvel
