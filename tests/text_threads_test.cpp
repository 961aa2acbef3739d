// The text layer on many threads, while tables are released beside them.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/RandomSources.h"
#include "tests/helpers/TextPieces.h"

namespace quorvel::test_text {
namespace {

/// A conversion and what comes out of it when nothing else runs.
struct Sample {
  int from;
  int to;
  std::string source;
  Result expected;
};

std::vector<Sample> samples() {
  constexpr std::pair<int, int> pairs[] = {
      {932, 65001},  {65001, 932},  {1252, 1200},   {1200, 1252},   {50220, 936},
      {936, 50220},  {50225, 949},  {949, 50225},   {51932, 932},   {932, 51932},
      {54936, 1201}, {1201, 54936}, {10001, 65000}, {65000, 950},   {950, 12000},
      {28600, 37},   {1361, 51949}, {65001, 10001}, {65001, 20261}, {874, 28601},
  };
  Random random(550);
  std::vector<Sample> all;
  for (const auto& [from, to] : pairs) {
    const std::string source = randomSource(from, to, 60, random);
    all.push_back({from, to, source, convertByLayer(from, to, source, dropping())});
  }
  return all;
}

bool isRight(const Sample& sample, bool inPieces) {
  if (!inPieces) {
    return convertByLayer(sample.from, sample.to, sample.source, dropping()) == sample.expected;
  }
  text::Transcoder transcoder = transcoderOf(sample.from, sample.to, dropping());
  return convertPieces(transcoder, cutAt(sample.source, sample.source.size() / 2)) ==
         sample.expected;
}

/// Runs `work(thread)` on so many threads at once.
template <typename Work>
void onThreads(unsigned int count, Work work) {
  std::vector<std::thread> threads;
  for (unsigned int thread = 0; thread < count; ++thread) threads.emplace_back(work, thread);
  for (std::thread& thread : threads) thread.join();
}

TEST(TextThreads, MakeTranscodersWhileTablesAreReleased) {
  const std::vector<Sample> all = samples();
  constexpr unsigned int workers = 4;
  std::atomic<unsigned int> atWork = workers;
  std::atomic<unsigned int> wrong = 0;
  onThreads(workers + 1, [&](unsigned int thread) {
    if (thread == workers) {
      while (atWork != 0) {
        text::releaseTables();
        std::this_thread::yield();
      }
      return;
    }
    for (int round = 0; round < 3; ++round) {
      for (std::size_t i = 0; i < all.size(); ++i) {
        const Sample& sample = all[(i + 5 * thread) % all.size()];
        if (!isRight(sample, (i + thread) % 2 == 0)) ++wrong;
      }
    }
    --atWork;
  });
  EXPECT_EQ(wrong, 0U);
}

TEST(TextThreads, BuildTheSameTablesAtOnce) {
  const std::vector<Sample> all = samples();
  text::releaseTables();
  std::atomic<unsigned int> wrong = 0;
  onThreads(8, [&](unsigned int) {
    for (const Sample& sample : all) {
      if (!isRight(sample, true)) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0U);
}

TEST(TextThreads, KeepATableAsLongAsATranscoderHoldsIt) {
  const std::vector<Sample> all = samples();
  std::vector<text::Transcoder> held;
  for (const Sample& sample : all) held.push_back(transcoderOf(sample.from, sample.to, dropping()));
  std::vector<std::string> out(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    const std::string_view source = all[i].source;
    held[i].push(source.substr(0, source.size() / 2), out[i]);
  }
  text::releaseTables();
  text::releaseTables();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const std::string_view source = all[i].source;
    held[i].push(source.substr(source.size() / 2), out[i]);
    held[i].finish(out[i]);
    EXPECT_EQ((Result{out[i], held[i].report()}), all[i].expected) << all[i].from;
  }
  held.clear();
  text::releaseTables();
  for (const Sample& sample : all) EXPECT_TRUE(isRight(sample, false)) << sample.from;
}

TEST(TextThreads, ReleaseTablesWithTheConverterToo) {
  const std::vector<Sample> all = samples();
  EncodingConvert::cleanupMemory();
  for (const Sample& sample : all) EXPECT_TRUE(isRight(sample, false)) << sample.from;
  text::Transcoder held = transcoderOf(932, 51932, dropping());
  EncodingConvert::cleanupMemory();
  std::string out;
  EXPECT_TRUE(held.push("\x82\xA0", out));
  EXPECT_TRUE(held.finish(out));
  EXPECT_EQ(out, "\xA4\xA2");
}

}  // namespace
}  // namespace quorvel::test_text
