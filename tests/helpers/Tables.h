#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "quorvel/base/NullLog.h"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/UnicodeLookup.h"
#include "tests/helpers/Bytes.h"

namespace quorvel_test {

/// One entry of a table, as hexadecimal pairs; the value has one byte or two.
struct Mapping {
  std::string_view key;
  std::string_view value;
};

inline void insert(quorvel::HashConvert& table, const Bytes& key, const Bytes& value) {
  quorvel::NullLog log;
  table.hcInsert(key.data(), value.data(), value.size() == 1 ? 21 : 22, log);
}

inline void insert(quorvel::HashConvert& table, std::string_view key, std::string_view value) {
  insert(table, bytes(key), bytes(value));
}

inline std::unique_ptr<quorvel::HashConvert> emptyTable(int buckets) {
  std::unique_ptr<quorvel::HashConvert> table(quorvel::HashConvert::createNewObject(1));
  table->hcInitialize(buckets);
  return table;
}

inline std::unique_ptr<quorvel::HashConvert> tableOf(int buckets,
                                                     std::initializer_list<Mapping> mappings) {
  auto table = emptyTable(buckets);
  for (const Mapping& mapping : mappings) insert(*table, mapping.key, mapping.value);
  return table;
}

/// The five bytes of a primary slot.
inline std::string slotOf(const quorvel::HashConvert& table, unsigned int index) {
  return hex(table.m_buckets + std::size_t{5} * index, 5);
}

/// What a look-up gives: "" on a miss. The area is filled before, so that a
/// byte too many shows.
inline std::string lookUp(const quorvel::HashConvert& table, const Bytes& key) {
  Bytes area(10, 0xEE);
  int length = 0;
  table.hcLookup(key.data(), area.data(), length);
  for (std::size_t i = static_cast<std::size_t>(length); i < area.size(); ++i) {
    if (area[i] != 0xEE) return "wrote past the length";
  }
  return hex(area.data(), static_cast<std::size_t>(length));
}

inline std::string lookUp(const quorvel::HashConvert& table, std::string_view key) {
  return lookUp(table, bytes(key));
}

/// The look-up that readers do: their own probe of the primary slot, and the
/// table's only where that does not decide.
inline std::string probe(const quorvel::HashConvert& table, const Bytes& key) {
  const unsigned int number = key[0] + 256U * key[1];
  const unsigned char* slot = table.m_buckets + std::size_t{5} * (number % table.m_numBuckets);
  if (slot[0] == 0 && slot[1] == 0) return table.m_hasRemovals ? lookUp(table, key) : "";
  if (slot[0] == key[0] && slot[1] == key[1]) return hex(slot + 2, slot[4] ? 1 : 2);
  return lookUp(table, key);
}

inline std::string probe(const quorvel::HashConvert& table, std::string_view key) {
  return probe(table, bytes(key));
}

/// The bytes of a 16-bit number, low byte first and high byte first.
inline Bytes lowFirst(unsigned int number) {
  return {static_cast<unsigned char>(number), static_cast<unsigned char>(number >> 8)};
}

inline Bytes highFirst(unsigned int number) {
  return {static_cast<unsigned char>(number >> 8), static_cast<unsigned char>(number)};
}

}  // namespace quorvel_test
