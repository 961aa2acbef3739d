#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/helpers/Conversion.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::NullLog;

constexpr unsigned int kFirst = 1;  // U+0000 is dropped on the way out of UTF-16
constexpr unsigned int kLast = 0x10FFFF;
constexpr unsigned int kPerChunk = 0x8000;

void put(Bytes& out, unsigned int byte) { out.push_back(static_cast<unsigned char>(byte)); }

Bytes utf8(const std::vector<unsigned int>& text) {
  Bytes out;
  for (unsigned int c : text) {
    if (c < 0x80) {
      put(out, c);
    } else if (c < 0x800) {
      put(out, 0xC0 | c >> 6);
      put(out, 0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      put(out, 0xE0 | c >> 12);
      put(out, 0x80 | (c >> 6 & 0x3F));
      put(out, 0x80 | (c & 0x3F));
    } else {
      put(out, 0xF0 | c >> 18);
      put(out, 0x80 | (c >> 12 & 0x3F));
      put(out, 0x80 | (c >> 6 & 0x3F));
      put(out, 0x80 | (c & 0x3F));
    }
  }
  return out;
}

void putUnit(Bytes& out, unsigned int unit, bool bigEndian) {
  put(out, bigEndian ? unit >> 8 : unit & 0xFF);
  put(out, bigEndian ? unit & 0xFF : unit >> 8);
}

Bytes utf16(const std::vector<unsigned int>& text, bool bigEndian) {
  Bytes out;
  for (unsigned int c : text) {
    if (c >= 0x10000) putUnit(out, 0xD800 + ((c - 0x10000) >> 10), bigEndian);
    putUnit(out, c >= 0x10000 ? 0xDC00 | (c & 0x3FF) : c, bigEndian);
  }
  return out;
}

Bytes utf32(const std::vector<unsigned int>& text, bool bigEndian) {
  Bytes out;
  for (unsigned int c : text) {
    for (unsigned int i = 0; i < 4; ++i) put(out, c >> 8 * (bigEndian ? 3 - i : i) & 0xFF);
  }
  return out;
}

struct Form {
  int codePage;
  Bytes text;
};

/// Converts and reports the output, or an empty one when the result or the
/// error flag is not as expected.
Bytes converted(int from, int to, const Bytes& text, bool result, bool hadError) {
  NullLog log;
  DataBuffer out;
  EncodingConvert converter;
  EXPECT_EQ(converter.EncConvert(from, to, text.data(), sizeOf(text), out, log), result)
      << from << " to " << to;
  EXPECT_EQ(converter.m_hadError, hadError) << from << " to " << to;
  return bytesOf(out);
}

/// The scalar values from `first` on, behind an "a" that keeps U+FEFF and
/// U+FFFE from standing where a mark would.
std::vector<unsigned int> chunkFrom(unsigned int first) {
  std::vector<unsigned int> text = {'a'};
  for (unsigned int c = first; c <= kLast && c < first + kPerChunk; ++c) {
    if (c < 0xD800 || c > 0xDFFF) text.push_back(c);
  }
  return text;
}

/// All scalar values in chunks, in every form whose bytes are fixed.
template <typename Check>
void forEachChunk(Check check) {
  for (unsigned int first = kFirst; first <= kLast; first += kPerChunk) {
    const std::vector<unsigned int> text = chunkFrom(first);
    const Form forms[] = {{65001, utf8(text)},        {1200, utf16(text, false)},
                          {1201, utf16(text, true)},  {12000, utf32(text, false)},
                          {12001, utf32(text, true)}, {65005, utf32(text, false)},
                          {65006, utf32(text, true)}};
    check(forms);
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "in the chunk from " << first;
      return;
    }
  }
}

TEST(EveryScalarValue, ConvertsBetweenAllFormsOfUtf8Utf16AndUtf32) {
  forEachChunk([](const auto& forms) {
    for (const Form& from : forms) {
      for (const Form& to : forms) {
        // This pair gives the whole text and false.
        const bool fails = from.codePage == 1201 && to.codePage == 1200;
        EXPECT_TRUE(converted(from.codePage, to.codePage, from.text, !fails, fails) == to.text)
            << from.codePage << " to " << to.codePage;
      }
    }
  });
}

TEST(EveryScalarValue, SurvivesUtf7) {
  forEachChunk([](const auto& forms) {
    Bytes first;
    for (const Form& from : forms) {
      const bool hasAWay = from.codePage != 1201;
      const Bytes utf7 = converted(from.codePage, 65000, from.text, hasAWay, !hasAWay);
      if (!hasAWay) {
        EXPECT_TRUE(utf7.empty());
        continue;
      }
      if (first.empty()) first = utf7;
      EXPECT_TRUE(utf7 == first) << from.codePage;
    }
    EXPECT_TRUE(std::all_of(first.begin(), first.end(), [](unsigned char b) { return b < 0x80; }));
    for (const Form& to : forms) {
      // To 1200 it gives the whole text and false; 1201 is built on that.
      const bool toUtf16 = to.codePage == 1200 || to.codePage == 1201;
      EXPECT_TRUE(converted(65000, to.codePage, first, to.codePage != 1200, toUtf16) == to.text)
          << "65000 to " << to.codePage;
    }
  });
}

TEST(EveryScalarValue, ConvertsByItself) {
  // Behind an "a" and a byte-order mark in the middle of a text, one by one.
  for (unsigned int c : {0x01U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFEFFU, 0xFFFDU,
                         0xFFFEU, 0xFFFFU, 0x10000U, 0x1F600U, 0xFFFFFU, 0x10FFFEU, 0x10FFFFU}) {
    const std::vector<unsigned int> text = {'a', 0xFEFF, c};
    EXPECT_EQ(hex(converted(65001, 1200, utf8(text), true, false)), hex(utf16(text, false)));
    EXPECT_EQ(hex(converted(1200, 65001, utf16(text, false), true, false)), hex(utf8(text)));
    EXPECT_EQ(hex(converted(65001, 12001, utf8(text), true, false)), hex(utf32(text, true)));
    EXPECT_EQ(hex(converted(12001, 65001, utf32(text, true), true, false)), hex(utf8(text)));
  }
}

TEST(TheZeroCharacter, IsLostOnlyOnTheWayOutOfUtf16) {
  EXPECT_EQ(convert(65001, 1200, "00 61"), converts("00 00 61 00"));
  EXPECT_EQ(convert(65001, 12000, "00 61"), converts("00 00 00 00 61 00 00 00"));
  EXPECT_EQ(convert(12001, 65001, "00 00 00 61 00 00 00 00"), converts("61 00"));
  EXPECT_EQ(convert(12000, 1201, "61 00 00 00 00 00 00 00"), converts("00 61 00 00"));
  EXPECT_EQ(convert(65001, 1201, "61 00"), converts("00 61 00 00"));
  EXPECT_EQ(convert(1200, 1201, "61 00 00 00"), converts("00 61 00 00"));
  EXPECT_EQ(convert(1200, 65001, "61 00 00 00 62 00"), converts("61 62"));
  EXPECT_EQ(convert(1201, 65001, "00 61 00 00 00 62"), converts("61 62"));
  EXPECT_EQ(convert(1201, 12001, "00 61 00 00 00 62"), converts("00 00 00 61 00 00 00 62"));
}

}  // namespace
