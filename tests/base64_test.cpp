#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "quorvel/pages/ContentCoding.h"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"

namespace quorvel {
namespace {

using namespace quorvel_test;
using test_memory::GuardedBytes;

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The text stands in front of memory that cannot be read: no NUL ends it.
std::optional<std::string> decodedIntoBuffer(std::string_view text) {
  static GuardedBytes guarded(1u << 20);
  const auto* p = reinterpret_cast<const char*>(guarded.place(text));
  DataBuffer out;
  fill(out, "kept");
  const bool ok = ContentCoding::decodeBase64ToDb(p, sizeOf(text), out);
  const std::string content = contentOf(out);
  EXPECT_EQ(content.substr(0, 4), "kept");
  if (ok) return content.substr(4);
  EXPECT_EQ(content, "kept") << hex(text);
  return std::nullopt;
}

std::optional<std::string> decodedIntoArray(std::string_view text) {
  static GuardedBytes guarded(1u << 20);
  const auto* p = reinterpret_cast<const char*>(guarded.place(text));
  unsigned int length = 99;
  unsigned char* array = ContentCoding().decodeBase64(p, sizeOf(text), &length);
  if (!array) {
    EXPECT_EQ(length, 0U) << hex(text);
    return std::nullopt;
  }
  const std::string bytes(array, array + length);
  delete[] array;
  return bytes;
}

void expectBytes(std::string_view text, const std::string& bytes) {
  for (const auto& decoded : {decodedIntoBuffer(text), decodedIntoArray(text)}) {
    ASSERT_TRUE(decoded.has_value()) << text;
    ASSERT_EQ(hex(*decoded), hex(bytes)) << text;
  }
}

void expectMalformed(std::string_view text) {
  EXPECT_FALSE(decodedIntoBuffer(text).has_value()) << hex(text);
  EXPECT_FALSE(decodedIntoArray(text).has_value()) << hex(text);
}

// Bit by bit, as a reference.
std::string encoded(std::string_view bytes) {
  std::string bits;
  for (const char byte : bytes)
    for (int bit = 7; bit >= 0; --bit) bits += (byte >> bit & 1) != 0 ? '1' : '0';
  while (bits.size() % 6 != 0) bits += '0';
  std::string text;
  for (std::size_t at = 0; at < bits.size(); at += 6)
    text += alphabet[std::stoul(bits.substr(at, 6), nullptr, 2)];
  while (text.size() % 4 != 0) text += '=';
  return text;
}

TEST(Base64, DecodesTheVectorsOfTheStandard) {
  expectBytes("", "");
  expectBytes("Zg==", "f");
  expectBytes("Zm8=", "fo");
  expectBytes("Zm9v", "foo");
  expectBytes("Zm9vYg==", "foob");
  expectBytes("Zm9vYmE=", "fooba");
  expectBytes("Zm9vYmFy", "foobar");
}

TEST(Base64, DecodesAPackedTable) {
  expectBytes("YXWArCAAQIEAMAEAAQAAAA==",
              byteString("61 75 80 AC 20 00 40 81 00 30 01 00 01 00 00 00"));
}

TEST(Base64, DecodesEveryDigit) {
  std::string bytes = byteString(
      "00108310518720928B30D38F41149351559761969B71D79F8218A39259A7A29AABB2DBAFC31CB3D35DB7E39EBBF3"
      "DFBF");
  expectBytes(alphabet, bytes);
}

TEST(Base64, DecodesEveryByteInEveryPlace) {
  for (unsigned int value = 0; value <= 0xFF; ++value)
    for (std::size_t size = 1; size <= 4; ++size)
      for (std::size_t at = 0; at < size; ++at) {
        std::string bytes(size, '\x5A');
        bytes[at] = static_cast<char>(value);
        expectBytes(encoded(bytes), bytes);
      }
}

TEST(Base64, DecodesTextsOfEveryLength) {
  std::string bytes;
  for (unsigned int i = 0; i < 300; ++i) {
    expectBytes(encoded(bytes), bytes);
    bytes += static_cast<char>(i * 37);
  }
}

TEST(Base64, DecodesALongText) {
  std::string bytes;
  for (unsigned int i = 0; i < 200000; ++i) bytes += static_cast<char>(i * i >> 3);
  const std::string text = encoded(bytes);
  EXPECT_TRUE(decodedIntoBuffer(text) == bytes);
  EXPECT_TRUE(decodedIntoArray(text) == bytes);
}

TEST(Base64, StopsAtTheLengthGiven) {
  DataBuffer out;
  EXPECT_TRUE(ContentCoding::decodeBase64ToDb("Zm9vYmFy!", 4, out));
  EXPECT_EQ(contentOf(out), "foo");
}

TEST(Base64, TakesNothingForALengthOfZero) {
  DataBuffer out;
  EXPECT_TRUE(ContentCoding::decodeBase64ToDb(nullptr, 0, out));
  EXPECT_EQ(out.getSize(), 0U);
}

TEST(Base64, RefusesALengthThatIsNoMultipleOfFour) {
  for (const char* text : {"Z", "Zg", "Zm8", "Zm9vY", "Zm9vYg", "Zm9vYmE", "Zm9vYmFyZ", "Zg="})
    expectMalformed(text);
}

TEST(Base64, RefusesMisplacedPadding) {
  for (const char* text :
       {"=",        "==",       "===",      "====",  "Z===",     "A===",     "AAAAA===",
        "AAAA====", "AA=A",     "A=A=",     "=m9v",  "Z=9v",     "Zm=v",     "Z=9=",
        "=m8=",     "Zg==Zg==", "Zm8=Zm9v", "Zm9v=", "Zm9v====", "Zm9vZ===", "Zg==="})
    expectMalformed(text);
}

TEST(Base64, RefusesUnusedBitsOtherThanZero) {
  for (std::size_t digit = 0; digit < 64; ++digit) {
    const std::string one = std::string("Z") + alphabet[digit] + "==";
    const std::string two = std::string("Zm") + alphabet[digit] + "=";
    if (digit % 16 != 0) expectMalformed(one);
    if (digit % 4 != 0) expectMalformed(two);
  }
}

TEST(Base64, RefusesEveryForeignCharacterInEveryPlace) {
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    const char character = static_cast<char>(value);
    if (character == '=' || alphabet.find(character) != std::string_view::npos) continue;
    for (const char* valid : {"Zm9vYmFy", "Zm9vYg==", "Zm9vYmE="})
      for (std::size_t at = 0; at < 8; ++at) {
        std::string text = valid;
        text[at] = character;
        expectMalformed(text);
      }
  }
}

TEST(Base64, RefusesLineBreaksAndTheAlphabetForAddresses) {
  for (const char* text : {"Zm9v\nYmFy", "Zm9v\r\nYg==", "Zm9v\n", "\nZm9v", "Zm9 v", "Zm9v    ",
                           "Zm9v\n\n\n\n", "____", "ab-_"})
    expectMalformed(text);
}

// An error at the very end leaves nothing of the long text before it.
TEST(Base64, AppendsNothingOfALongMalformedText) {
  for (const std::size_t length : {64U, 1024U, 65536U})
    for (const char* end : {"Z", "!AAA", "ZR==", "===="})
      expectMalformed(std::string(length, 'A') + end);
}

TEST(Base64, AppendsNothingWithoutMemory) {
  if (!test_memory::canLimitMemory) GTEST_SKIP() << "memory cannot be limited here";
  if (!test_memory::canMapGigabytes) GTEST_SKIP() << "gigabytes cannot be mapped here";
  const test_memory::RepeatedBytes text("AAAA", 0xFFFFFFFCU);
  const auto* p = reinterpret_cast<const char*>(text.data());
  DataBuffer out;
  fill(out, "kept");
  const test_memory::MemoryLimit limit(16u << 20);
  EXPECT_FALSE(ContentCoding::decodeBase64ToDb(p, 0xFFFFFFFCU, out));
  EXPECT_EQ(contentOf(out), "kept");
  unsigned int length = 99;
  EXPECT_EQ(ContentCoding().decodeBase64(p, 0xFFFFFFFCU, &length), nullptr);
  EXPECT_EQ(length, 0U);
}

}  // namespace
}  // namespace quorvel
