#include <bzlib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/TextLog.h"
#include "quorvel/pages/QuorvelBzip2.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"

namespace quorvel {
namespace {

using namespace quorvel_test;

// The table of the smallest useful code page: 16 bytes.
const std::string sample = byteString("61 75 80 AC 20 00 40 81 00 30 01 00 01 00 00 00");

std::string stream(std::string_view bytes, int blockSize = 9) {
  std::string result(bytes.size() + bytes.size() / 100 + 600, '\0');
  unsigned int size = sizeOf(result);
  std::string source(bytes);
  EXPECT_EQ(BZ2_bzBuffToBuffCompress(result.data(), &size, source.data(), sizeOf(source), blockSize,
                                     0, 0),
            BZ_OK);
  result.resize(size);
  return result;
}

std::string header(unsigned int announced) {
  std::string bytes = "\xE1\xA7\x94\xB3";
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(announced >> shift & 0xFF);
  return bytes;
}

std::string packed(std::string_view bytes) { return header(sizeOf(bytes)) + stream(bytes); }

struct Unpacked {
  bool ok;
  std::string bytes;
  std::string log;
};

// The input stands in front of memory that cannot be read or, being borrowed,
// written by mistake.
Unpacked unpack(std::string_view in) {
  test_memory::GuardedBytes guarded(in.size());
  DataBuffer source;
  source.borrowData(guarded.place(in), sizeOf(in));
  DataBuffer out;
  fill(out, "kept");
  StringBuffer text;
  TextLog log(text);
  Unpacked result{};
  result.ok = QuorvelBzip2().unBzipWithHeader(source, out, &log);
  EXPECT_EQ(contentOf(source), in);
  EXPECT_EQ(contentOf(out).substr(0, 4), "kept");
  result.bytes = contentOf(out).substr(4);
  result.log = text.getString();
  return result;
}

void expectUnpacked(std::string_view in, std::string_view bytes) {
  const Unpacked result = unpack(in);
  EXPECT_TRUE(result.ok);
  EXPECT_TRUE(result.bytes == bytes);
  EXPECT_EQ(result.log, "");
}

// Refused with one line that says why, and with nothing appended.
void expectRefused(std::string_view in) {
  const Unpacked result = unpack(in);
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.bytes.size(), 0U);
  EXPECT_EQ(result.log.substr(0, 7), "error: ");
  EXPECT_GT(result.log.size(), 10U);
  EXPECT_EQ(std::count(result.log.begin(), result.log.end(), '\n'), 1);
}

std::string flipped(std::string bytes, std::size_t at, unsigned int bits) {
  bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ bits);
  return bytes;
}

TEST(Bzip2, UnpacksATable) {
  const std::string in = packed(sample);
  EXPECT_EQ(hex(in.substr(0, 12)), "E1 A7 94 B3 10 00 00 00 42 5A 68 39");
  expectUnpacked(in, sample);
}

TEST(Bzip2, UnpacksAnEmptyContent) { expectUnpacked(packed(""), ""); }

TEST(Bzip2, UnpacksEveryByteValue) {
  std::string bytes;
  for (unsigned int value = 0; value <= 0xFF; ++value) bytes += static_cast<char>(value);
  expectUnpacked(packed(bytes), bytes);
}

TEST(Bzip2, UnpacksStreamsOfEveryBlockSize) {
  for (int blockSize = 1; blockSize <= 9; ++blockSize)
    expectUnpacked(header(sizeOf(sample)) + stream(sample, blockSize), sample);
}

TEST(Bzip2, UnpacksSeveralBlocks) {
  std::string bytes;
  for (unsigned int i = 0; i < 300000; ++i) bytes += static_cast<char>(i * i >> 5);
  expectUnpacked(header(sizeOf(bytes)) + stream(bytes, 1), bytes);
}

TEST(Bzip2, UnpacksALongRun) {
  const std::string bytes(1000000, 'a');
  expectUnpacked(packed(bytes), bytes);
}

TEST(Bzip2, NeedsNoLog) {
  DataBuffer in;
  fill(in, packed(sample));
  DataBuffer out;
  EXPECT_TRUE(QuorvelBzip2().unBzipWithHeader(in, out, nullptr));
  EXPECT_EQ(contentOf(out), sample);
  DataBuffer bad;
  fill(bad, "neither magic nor stream");
  EXPECT_FALSE(QuorvelBzip2().unBzipWithHeader(bad, out, nullptr));
  EXPECT_EQ(contentOf(out), sample);
}

TEST(Bzip2, LogsItsReasonWhetherTheLogIsVerboseOrNot) {
  for (const bool verbose : {false, true}) {
    StringBuffer text;
    TextLog log(text);
    log.m_verboseLogging = verbose;
    DataBuffer in;
    DataBuffer out;
    EXPECT_FALSE(QuorvelBzip2().unBzipWithHeader(in, out, &log));
    EXPECT_EQ(std::string(text.getString()).substr(0, 7), "error: ");
  }
}

TEST(Bzip2, RefusesAnotherMagic) {
  const std::string in = packed(sample);
  for (std::size_t at = 0; at < 4; ++at)
    for (unsigned int bit = 0; bit < 8; ++bit) expectRefused(flipped(in, at, 1u << bit));
  expectRefused(stream(sample));
}

TEST(Bzip2, RefusesALengthThatIsNotTheOneFound) {
  const std::string body = stream(sample);
  for (const unsigned int announced :
       {0U, 1U, 15U, 17U, 32U, 0x1000U, 0x10000010U, 0x7FFFFFFFU, 0x80000010U, 0xFFFFFFFFU})
    expectRefused(header(announced) + body);
  expectRefused(header(1) + stream(""));
  expectRefused(header(0x10000000U) + body);  // the length, high byte first
}

TEST(Bzip2, RefusesATruncatedInputOfEveryLength) {
  const std::string in = packed(sample);
  for (std::size_t size = 0; size < in.size(); ++size) {
    SCOPED_TRACE(size);
    expectRefused(in.substr(0, size));
  }
  const std::string empty = packed("");
  for (std::size_t size = 0; size < empty.size(); ++size) {
    SCOPED_TRACE(size);
    expectRefused(empty.substr(0, size));
  }
}

TEST(Bzip2, RefusesASecondBlockThatIsCutOff) {
  std::string bytes;
  for (unsigned int i = 0; i < 150000; ++i) bytes += static_cast<char>(i % 7);
  const std::string in = header(sizeOf(bytes)) + stream(bytes, 1);
  for (std::size_t cut = 1; cut < in.size(); cut += in.size() / 20 + 1)
    expectRefused(in.substr(0, in.size() - cut));
}

TEST(Bzip2, RefusesWhatFollowsTheStream) {
  const std::string in = packed(sample);
  for (const char* tail : {"00", "0A", "42", "00 00 00 00", "FF FF"})
    expectRefused(in + byteString(tail));
  expectRefused(in + stream(sample));
  expectRefused(in + stream(""));
  expectRefused(header(2 * sizeOf(sample)) + stream(sample) + stream(sample));
}

TEST(Bzip2, RefusesAStreamDamagedInAnyByte) {
  const std::string in = packed(sample);
  for (std::size_t at = 0; at < in.size(); ++at) {
    SCOPED_TRACE(at);
    expectRefused(flipped(in, at, 0xFF));
  }
}

// A few bits of a stream carry nothing: another block size, the padding at the
// end. Whatever a changed bit does, the bytes are never wrong.
TEST(Bzip2, NeverGivesOtherBytesForAChangedBit) {
  const std::string in = packed(sample);
  unsigned int refused = 0;
  for (std::size_t at = 0; at < in.size(); ++at)
    for (unsigned int bit = 0; bit < 8; ++bit) {
      const Unpacked result = unpack(flipped(in, at, 1u << bit));
      EXPECT_EQ(hex(result.bytes), result.ok ? hex(sample) : "") << at << ", bit " << bit;
      if (!result.ok) ++refused;
    }
  EXPECT_GE(refused, 8 * in.size() - 16);
}

TEST(Bzip2, RefusesWhatIsNoStream) {
  expectRefused("");
  expectRefused(header(0));
  expectRefused(header(16) + sample);
  expectRefused(header(4) + std::string(4, '\0'));
  expectRefused(header(100) + "BZh9");
  expectRefused(std::string(1000, '\xE1'));
}

// Unpacking needs four megabytes for the largest blocks.
constexpr std::size_t mostGrowth = 16u << 20;
constexpr unsigned int bombSize = 40u << 20;

// A stream of `size` zero bytes, made without having them all.
std::string streamOfZeros(std::size_t size) {
  bz_stream state{};
  EXPECT_EQ(BZ2_bzCompressInit(&state, 9, 0, 0), BZ_OK);
  std::string result(100000, '\0');
  std::string zeros(1 << 16, '\0');
  state.next_out = result.data();
  state.avail_out = sizeOf(result);
  for (; size > 0; size -= std::min(size, zeros.size())) {
    state.next_in = zeros.data();
    state.avail_in = static_cast<unsigned int>(std::min(size, zeros.size()));
    while (state.avail_in > 0) BZ2_bzCompress(&state, BZ_RUN);
  }
  EXPECT_EQ(BZ2_bzCompress(&state, BZ_FINISH), BZ_STREAM_END);
  result.resize(result.size() - state.avail_out);
  BZ2_bzCompressEnd(&state);
  return result;
}

// Unpacks in a process of its own, whose peak begins with what it has then.
void expectRefusedWithLittleMemory(const std::string& in) {
  const auto unpackAndMeasure = [&] {
    const std::size_t before = test_memory::statusBytes("VmSize");
    const bool ok = unpack(in).ok;
    const std::size_t growth = test_memory::statusBytes("VmPeak") - before;
    std::cerr << (ok ? "taken" : "refused") << (growth < mostGrowth ? ", little" : ", much");
    std::_Exit(0);
  };
  EXPECT_EXIT(unpackAndMeasure(), testing::ExitedWithCode(0), "refused, little");
}

TEST(Bzip2MemoryDeathTest, DoesNotGrowWithWhatABombHolds) {
  const std::string bomb = streamOfZeros(bombSize);
  EXPECT_LT(bomb.size(), 200U);
  expectRefusedWithLittleMemory(header(10) + bomb);
  expectRefusedWithLittleMemory(header(0) + bomb);
}

TEST(Bzip2MemoryDeathTest, DoesNotGrowWithTheLengthAnnounced) {
  expectRefusedWithLittleMemory(header(0xFFFFFFFFU) + stream(sample));
  expectRefusedWithLittleMemory(header(0x40000000U) + stream(sample));
}

// Both lengths agree here, and there is no room for them.
TEST(Bzip2Memory, MayRunOut) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  const std::string in = header(bombSize) + streamOfZeros(bombSize);
  const test_memory::MemoryLimit limit(16u << 20);
  expectRefused(in);
}

}  // namespace
}  // namespace quorvel
