// Many threads at once. What a race breaks shows in the bytes, or under the
// thread sanitizer.

#include <gtest/gtest.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "quorvel/names/CharsetNaming.h"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/CodePageRows.h"
#include "tests/helpers/Conversion.h"

namespace {

using namespace quorvel_test;
using quorvel::CharsetNaming;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;
using quorvel::StringBuffer;

std::vector<int> routedPages() {
  return codePagesThat(
      [](const quorvel::CodePage& page) { return page.hasTable() && page.table.isRouted; });
}

Bytes converted(int from, int to, const Bytes& input) {
  NullLog log;
  DataBuffer out;
  EncodingConvert converter;
  converter.EncConvert(from, to, input.data(), sizeOf(input), out, log);
  return bytesOf(out);
}

/// Every byte, and every pair of a lead byte and one of some trail bytes.
Bytes sampleText() {
  Bytes text;
  for (unsigned int byte = 1; byte < 256; ++byte) text.push_back(static_cast<unsigned char>(byte));
  for (unsigned int lead = 0x81; lead < 0xFF; ++lead) {
    for (const unsigned int trail : {0x41U, 0x61U, 0x81U, 0xA1U, 0xC5U, 0xFEU}) {
      text.push_back(static_cast<unsigned char>(lead));
      text.push_back(static_cast<unsigned char>(trail));
    }
  }
  return text;
}

/// What a page makes of the sample, and what becomes of that on the way back.
struct Sample {
  int codePage;
  Bytes decoded;
  Bytes encoded;
};

std::vector<Sample> samplesOf(const std::vector<int>& pages) {
  const Bytes text = sampleText();
  std::vector<Sample> samples;
  for (const int codePage : pages) {
    const Bytes decoded = converted(codePage, 1200, text);
    samples.push_back({codePage, decoded, converted(1200, codePage, decoded)});
  }
  return samples;
}

/// How many samples come out otherwise; begins at `first` and goes round.
std::size_t countDifferences(const std::vector<Sample>& samples, std::size_t first,
                             bool encodesFirst) {
  static const Bytes text = sampleText();
  std::size_t differences = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const Sample& sample = samples[(first + i) % samples.size()];
    if (encodesFirst && converted(1200, sample.codePage, sample.decoded) != sample.encoded) {
      ++differences;
    }
    if (converted(sample.codePage, 1200, text) != sample.decoded) ++differences;
    if (!encodesFirst && converted(1200, sample.codePage, sample.decoded) != sample.encoded) {
      ++differences;
    }
  }
  return differences;
}

/// Runs `work(thread, round)` in all threads at once, round by round; between
/// the rounds every table is released. Returns the sum of what work returns.
template <typename Work>
std::size_t race(std::size_t threadCount, int rounds, Work work) {
  const auto release = []() noexcept { EncodingConvert::cleanupMemory(); };
  std::barrier atEndOfRound(static_cast<std::ptrdiff_t>(threadCount), release);
  std::vector<std::size_t> results(threadCount);
  std::vector<std::thread> threads;
  EncodingConvert::cleanupMemory();
  for (std::size_t thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([&, thread] {
      for (int round = 0; round < rounds; ++round) {
        results[thread] += work(thread, round);
        atEndOfRound.arrive_and_wait();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::size_t sum = 0;
  for (const std::size_t result : results) sum += result;
  return sum;
}

// All threads want the same table at once, then each another one.
TEST(Threads, BuildEveryPageAtOnceAndGetTheSameBytes) {
  const std::vector<Sample> samples = samplesOf(routedPages());
  ASSERT_FALSE(samples.empty());
  EXPECT_EQ(race(16, 2,
                 [&](std::size_t thread, int round) {
                   const std::size_t first = round % 2 == 0 ? 0 : thread * samples.size() / 16;
                   return countDifferences(samples, first, thread % 2 == 0);
                 }),
            0U);
}

TEST(Threads, BuildAFewPagesAgainAndAgain) {
  const std::vector<Sample> samples = samplesOf({1252, 20127, 28605, 37, 437, 1256, 10004});
  EXPECT_EQ(race(16, 60,
                 [&](std::size_t thread, int round) {
                   const std::size_t first = round % 2 == 0 ? 0 : thread;
                   return countDifferences(samples, first, thread % 2 == 0);
                 }),
            0U);
}

// The first table that is published stays; whoever comes later drops its own.
TEST(Threads, AllGetTheOneTableThatWasPublishedFirst) {
  constexpr int rounds = 15;
  constexpr std::size_t threadCount = 16;
  struct Seen {
    const quorvel::ToUnicodeTable* toUnicode;
    const quorvel::FromUnicodeTable* fromUnicode;
    bool operator==(const Seen& other) const = default;
  };
  std::vector<Seen> seen(rounds * threadCount);
  race(threadCount, rounds, [&](std::size_t thread, int round) {
    NullLog log;
    EncodingConvert::ensureHashToUnicode(949, log);
    EncodingConvert::ensureHashFromUnicode(1252, log);
    seen[static_cast<std::size_t>(round) * threadCount + thread] = {
        quorvel::tableRegistry::toUnicode(949), quorvel::tableRegistry::fromUnicode(1252)};
    return 0U;
  });
  for (std::size_t i = 0; i < seen.size(); ++i) {
    const Seen& first = seen[i / threadCount * threadCount];
    EXPECT_TRUE(first.toUnicode && first.fromUnicode);
    EXPECT_TRUE(seen[i] == first) << "round " << i / threadCount << ", thread " << i % threadCount;
  }
}

// The pages whose tables depend on each other or are shared.
TEST(Threads, BuildPagesThatShareTablesAgainAndAgain) {
  const std::vector<Sample> samples = samplesOf({10001, 936, 52936});
  EXPECT_EQ(race(16, 5,
                 [&](std::size_t thread, int round) {
                   const std::size_t first = round % 2 == 0 ? 0 : thread;
                   return countDifferences(samples, first, thread % 2 == 0);
                 }),
            0U);
}

TEST(Threads, BuildThePagesThatAreNeverReleasedAtOnce) {
  EXPECT_EQ(race(8, 3,
                 [](std::size_t, int) {
                   NullLog log;
                   std::size_t failures = 0;
                   for (const int codePage : {28600, 28601}) {
                     if (!EncodingConvert::ensureHashToUnicode(codePage, log)) ++failures;
                     if (!EncodingConvert::ensureHashFromUnicode(codePage, log)) ++failures;
                   }
                   return failures;
                 }),
            0U);
}

struct Conversion {
  int from;
  int to;
  Bytes input;
  Bytes output;
};

TEST(Threads, ConvertWithConvertersOfTheirOwn) {
  // Kanji of ordinary rows, and of the last rows, whose codes are cached.
  const Bytes shiftJis = bytes("41 82 A0 93 FA 96 7B FA 5C FB 40 FC 4B 42");
  const Bytes iso2022 = converted(932, 50220, shiftJis);
  std::vector<Conversion> conversions = {
      {65001, 1201, bytes("41 C3 A9 E3 81 82 F0 9F 98 80 FF 42"), {}},
      {932, 50220, shiftJis, {}},
      {50220, 932, iso2022, {}},
      {50220, 65001, iso2022, {}},
      {1252, 932, bytes("63 61 66 E9 80"), {}},
  };
  for (Conversion& c : conversions) c.output = converted(c.from, c.to, c.input);
  EXPECT_EQ(hex(conversions[0].output), "00 41 00 E9 30 42 D8 3D DE 00 00 42");
  EXPECT_EQ(race(8, 20,
                 [&](std::size_t thread, int) {
                   std::size_t differences = 0;
                   for (std::size_t i = 0; i < 10 * conversions.size(); ++i) {
                     const Conversion& c = conversions[(thread + i) % conversions.size()];
                     if (converted(c.from, c.to, c.input) != c.output) ++differences;
                   }
                   return differences;
                 }),
            0U);
}

TEST(Threads, ResolveNamesAtOnce) {
  EXPECT_EQ(race(8, 5,
                 [](std::size_t, int) {
                   const std::pair<const char*, int> names[] = {
                       {"utf-8", 65001},       {"Shift_JIS", 932},  {"windows-1252", 1252},
                       {"ISO-8859-15", 28605}, {"no such name", 0}, {"iso-2022-jp", 50220}};
                   std::size_t differences = 0;
                   for (const auto& [name, number] : names) {
                     StringBuffer text;
                     text.append(name);
                     if (CharsetNaming::GetCodePage(text) != number) ++differences;
                   }
                   return differences;
                 }),
            0U);
}

}  // namespace
