#include <gtest/gtest.h>

#include <memory>

#include "quorvel/pages/UnicodeLookup.h"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/Tables.h"

namespace {

using namespace quorvel_test;
using quorvel::EncodingConvert;
using quorvel::HashConvert;
using quorvel::UnicodeLookup;

std::unique_ptr<UnicodeLookup> newLookup() {
  return std::unique_ptr<UnicodeLookup>(UnicodeLookup::createNewObject());
}

// The lookup made of a table whose direct entry for each byte b is `first` + b,
// 0 for the byte given.
std::unique_ptr<UnicodeLookup> flattened(bool isLowerAscii, unsigned int first,
                                         unsigned int unmapped) {
  const auto table = emptyTable(283);
  table->put_IsLowerAscii(isLowerAscii);
  for (unsigned int byte = 0; byte < 256; ++byte) {
    table->m_byteToUnicode[byte] = static_cast<unsigned short>(first + byte);
  }
  table->m_byteToUnicode[unmapped] = 0;
  auto lookup = newLookup();
  RecordingLog log(true);
  EXPECT_EQ(EncodingConvert::buildSingleByteLookup(*table, *lookup, log), isLowerAscii);
  EXPECT_EQ(log.lines, Lines());
  return lookup;
}

TEST(UnicodeLookup, StartsWithoutMappings) {
  const auto lookup = newLookup();
  for (unsigned int byte = 0; byte < 256; ++byte) EXPECT_EQ((*lookup)[byte], 0);
}

TEST(UnicodeLookup, IsReadAndWrittenByIndex) {
  const auto lookup = newLookup();
  (*lookup)[0x80] = 0x20AC;
  (*lookup)[255] = 0xFFFF;
  const UnicodeLookup& read = *lookup;
  EXPECT_EQ(read[0x80], 0x20AC);
  EXPECT_EQ(read[255], 0xFFFF);
  EXPECT_EQ(read.m_units[0x80], 0x20AC);
}

TEST(SingleByteLookup, CopiesTheDirectTableFromByteOneOn) {
  const auto lookup = flattened(false, 0x4100, 0x41);
  EXPECT_EQ((*lookup)[0], 0);
  for (unsigned int byte = 1; byte < 256; ++byte) {
    EXPECT_EQ((*lookup)[byte], byte == 0x41 ? 0 : 0x4100 + byte) << byte;
  }
}

TEST(SingleByteLookup, HasAsciiForTheLowerHalfOfATableThatIsAscii) {
  const auto lookup = flattened(true, 0x4100, 0x90);
  EXPECT_EQ((*lookup)[0], 0);
  for (unsigned int byte = 1; byte < 256; ++byte) {
    EXPECT_EQ((*lookup)[byte], byte < 0x80 ? byte : byte == 0x90 ? 0 : 0x4100 + byte) << byte;
  }
}

TEST(SingleByteLookup, LeavesTheEntryOfByteZeroAsItIs) {
  const auto table = emptyTable(283);
  table->m_byteToUnicode[0] = 0x1234;
  const auto lookup = newLookup();
  (*lookup)[0] = 0x5678;
  (*lookup)[1] = 0x5678;
  RecordingLog log;
  EncodingConvert::buildSingleByteLookup(*table, *lookup, log);
  EXPECT_EQ((*lookup)[0], 0x5678);
  EXPECT_EQ((*lookup)[1], 0);
}

TEST(SingleByteLookup, TakesNothingFromTheSlots) {
  const auto table = tableOf(283, {{"41 00", "12 34"}, {"80 00", "56"}});
  const auto lookup = newLookup();
  RecordingLog log;
  EncodingConvert::buildSingleByteLookup(*table, *lookup, log);
  for (unsigned int byte = 0; byte < 256; ++byte) EXPECT_EQ((*lookup)[byte], 0);
}

}  // namespace
