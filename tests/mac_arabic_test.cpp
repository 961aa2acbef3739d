#include <gtest/gtest.h>

#include <string>

#include "quorvel/pages/MacArabic.hpp"
#include "tests/helpers/Bytes.h"

namespace {

using namespace quorvel_test;

std::string reordered(std::string_view text) {
  Bytes data = bytes(text);
  quorvel::reorderMacArabic(data.data(), sizeOf(data));
  return hex(data);
}

std::string expected(std::string_view text) { return hex(bytes(text)); }

/// The bytes that are written right to left.
const Bytes kMarked = bytes(
    "81 8C 93 98 9B A0 A1 A2 A3 A4 A6 A7 A8 A9 AA AB AD AE AF B0 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA "
    "BC BD BE C0 DB DC DD DE DF FB FC FD");

/// What the bytes from 80 on become; those below stay.
const Bytes kRemapped = bytes(
    "80 A0 82 83 84 85 86 87 88 89 8A 8B 8C 8D 8E 8F 90 91 92 93 94 95 96 97 98 99 9A 9B 9C 9D 9E "
    "9F "
    "20 21 22 23 24 A5 26 27 28 29 2A 2B AC 2D 2E 2F 30 31 32 33 34 35 36 37 38 39 3A BB 3C 3D 3E "
    "BF "
    "C0 C1 C2 C3 C4 C5 C6 C7 C8 C9 CA CB CC CD CE CF D0 D1 D2 D3 D4 D5 D6 D7 D8 D9 DA 5B 5C 5D 5E "
    "5F "
    "E0 E1 E2 E3 E4 E5 E6 E7 E8 E9 EA EB EC ED EE EF F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 FA 7B 7C 7D FE "
    "FF");

unsigned char remapped(unsigned int b) {
  return b < 0x80 ? static_cast<unsigned char>(b) : kRemapped[b - 0x80];
}

bool isMarked(unsigned int b) {
  for (unsigned char marked : kMarked) {
    if (marked == b) return true;
  }
  return false;
}

TEST(MacArabicOrder, RemapsEveryByteThatStandsAlone) {
  ASSERT_EQ(kRemapped.size(), 128U);
  for (unsigned int b = 0; b < 256; ++b) {
    Bytes data = {static_cast<unsigned char>(b)};
    quorvel::reorderMacArabic(data.data(), 1);
    EXPECT_EQ(hex(data), hex(Bytes{remapped(b)})) << b;
  }
}

TEST(MacArabicOrder, RemapsASingleMarkedByteInItsPlace) {
  for (unsigned char b : kMarked) {
    Bytes data = {'a', b, 'b'};
    quorvel::reorderMacArabic(data.data(), 3);
    EXPECT_EQ(hex(data), hex(Bytes{'a', remapped(b), 'b'}));
  }
}

TEST(MacArabicOrder, ReversesExactlyTheRunsOfMarkedBytes) {
  ASSERT_EQ(kMarked.size(), 42U);
  for (unsigned int first = 0; first < 256; ++first) {
    for (unsigned int second = 0; second < 256; ++second) {
      Bytes data = {'a', static_cast<unsigned char>(first), static_cast<unsigned char>(second),
                    'b'};
      quorvel::reorderMacArabic(data.data(), 4);
      const bool run = isMarked(first) && isMarked(second);
      const Bytes wanted = {'a', remapped(run ? second : first), remapped(run ? first : second),
                            'b'};
      ASSERT_TRUE(data == wanted) << hex(data) << ", not " << hex(wanted);
    }
  }
}

TEST(MacArabicOrder, TurnsVisualDigitsAround) { EXPECT_EQ(reordered("B1 B2 B3"), "33 32 31"); }

TEST(MacArabicOrder, ReversesARunThatAnUnmarkedByteEnds) {
  EXPECT_EQ(reordered("B1 B2 41 B3 B4"), expected("'21' 41 '43'"));
  EXPECT_EQ(reordered("A8 C7 B1 A9"), expected("28 C7 29 31"));
  EXPECT_EQ(reordered("B1 B2 B3 A5"), expected("'321' A5"));
}

TEST(MacArabicOrder, ReversesARunThatReachesTheEnd) {
  EXPECT_EQ(reordered("'ab' B1 B2"), expected("'ab21'"));
  EXPECT_EQ(reordered("C7 A0 81 C0"), expected("C7 C0 A0 20"));
  EXPECT_EQ(reordered("'ab' B1"), expected("'ab1'"));
}

TEST(MacArabicOrder, EndsARunAtAByteBelowTheSpace) {
  for (unsigned int b = 0; b < 0x20; ++b) {
    Bytes data = {0xB1, 0xB2, static_cast<unsigned char>(b), 0xB3, 0xB4, 0xB5};
    quorvel::reorderMacArabic(data.data(), 6);
    EXPECT_EQ(hex(data), hex(Bytes{'2', '1', static_cast<unsigned char>(b), '5', '4', '3'})) << b;
  }
}

TEST(MacArabicOrder, LooksAtTheBytesAsTheyWereBeforeRemapping) {
  // 81 becomes A0, which is itself marked; A0 becomes the unmarked 20.
  EXPECT_EQ(reordered("81 81 41"), expected("A0 A0 41"));
  EXPECT_EQ(reordered("A0 81 C0"), expected("C0 A0 20"));
}

TEST(MacArabicOrder, TreatsEachOfManyRunsByItself) {
  EXPECT_EQ(reordered("B1 B2 41 B3 42 B4 B5 B6 43"), expected("'21' 'A' '3' 'B' '654' 'C'"));
}

TEST(MacArabicOrder, ReversesALongRun) {
  Bytes data;
  Bytes wanted;
  for (unsigned int i = 0; i < 1000; ++i) {
    data.push_back(static_cast<unsigned char>(0xB0 + i % 10));
    wanted.insert(wanted.begin(), static_cast<unsigned char>('0' + i % 10));
  }
  quorvel::reorderMacArabic(data.data(), sizeOf(data));
  EXPECT_EQ(hex(data), hex(wanted));
}

TEST(MacArabicOrder, DoesNothingToNothing) {
  unsigned char byte = 0xB1;
  quorvel::reorderMacArabic(&byte, 0);
  EXPECT_EQ(byte, 0xB1);
  quorvel::reorderMacArabic(nullptr, 0);
}

}  // namespace
