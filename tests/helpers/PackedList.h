#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "quorvel/pages/ContentCoding.h"
#include "quorvel/pages/QuorvelBzip2.h"

/// A second, plain reader of packed tables.
namespace quorvel_test {

using Numbers = std::vector<unsigned int>;

inline Numbers numbersOf(const quorvel::DataBuffer& buffer) {
  return Numbers(buffer.getData2(), buffer.getData2() + buffer.getSize());
}

inline Numbers fromBase64(const std::string& text) {
  quorvel::DataBuffer out;
  EXPECT_TRUE(quorvel::ContentCoding::decodeBase64ToDb(
      text.data(), static_cast<unsigned int>(text.size()), out));
  return numbersOf(out);
}

/// The table bytes behind a packed text.
inline Numbers unpack(const std::string& text) {
  if (text[0] == 'x') return fromBase64(text.substr(1));
  quorvel::DataBuffer block;
  quorvel::DataBuffer table;
  EXPECT_TRUE(quorvel::ContentCoding::decodeBase64ToDb(
      text.data() + 1, static_cast<unsigned int>(text.size() - 1), block));
  EXPECT_TRUE(quorvel::QuorvelBzip2().unBzipWithHeader(block, table, nullptr));
  return numbersOf(table);
}

using Record = std::pair<unsigned int, unsigned int>;  // code and UTF-16 unit

struct CompleteList {
  std::vector<Record> singles;
  std::vector<Record> doubles;
  std::size_t length = 0;  // where the list ended
};

inline unsigned int read16(const Numbers& table, std::size_t at) {
  return table.at(at) | table.at(at + 1) << 8;
}

inline CompleteList readCompleteList(const Numbers& table) {
  CompleteList list;
  std::size_t at = 2;
  Record sum{0, 0};
  for (; table.at(at) != 0; at += 3) {
    sum.first = (sum.first + table.at(at)) & 0xFF;
    sum.second = (sum.second + read16(table, at + 1)) & 0xFFFF;
    list.singles.push_back(sum);
  }
  ++at;
  sum = {0, 0};
  for (; read16(table, at) != 0; at += 4) {
    sum.first = (sum.first + read16(table, at)) & 0xFFFF;
    sum.second = (sum.second + read16(table, at + 2)) & 0xFFFF;
    list.doubles.push_back(sum);
  }
  list.length = at + 2;
  return list;
}

}  // namespace quorvel_test
