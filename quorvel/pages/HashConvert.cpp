// A hash of one slot for each place and no chains: the first key to come to a
// place takes the slot, which readers probe by themselves, and all others go into
// a map beside it. For example, with 3 slots, 01 00 takes slot 1, and 04 00 goes
// into the map, where it stays when 01 00 is removed: from then on an empty slot
// does not say that a key is absent, and `m_hasRemovals` does.

#include "quorvel/pages/HashConvert.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <new>

namespace quorvel {

namespace {

unsigned short numberOf(const unsigned char* key) {
  return static_cast<unsigned short>(key[0] | key[1] << 8);
}

bool holds(const unsigned char* slot, const unsigned char* key) {
  return !HashConvert::isEmpty(slot) && slot[0] == key[0] && slot[1] == key[1];
}

}  // namespace

HashConvert* HashConvert::createNewObject(int codePage) {
  return new (std::nothrow) HashConvert(codePage);
}

HashConvert::~HashConvert() = default;

bool HashConvert::hcInitialize(int numBuckets) {
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max() / slotLength;
  if (numBuckets <= 0 || static_cast<std::size_t>(numBuckets) > most) return false;
  const auto count = static_cast<unsigned int>(numBuckets);
  m_storage.reset(new (std::nothrow) unsigned char[std::size_t{slotLength} * count]());
  if (!m_storage) return false;
  m_buckets = m_storage.get();
  m_numBuckets = count;
  return true;
}

bool HashConvert::hcInsert(const unsigned char* key, const unsigned char* value, int lengthCode,
                           LogBase& log) {
  if (!m_storage || (lengthCode != lengthCodeToByte && lengthCode != lengthCodeToPair)) return true;
  if (isPresent(key)) return true;
  const bool isSingleByte = lengthCode == lengthCodeToByte;
  const unsigned char secondByte = isSingleByte ? 0 : value[1];
  auto* slot = const_cast<unsigned char*>(slotOf(key));
  const bool isZeroKey = isEmpty(key);
  if (isEmpty(slot) && !isZeroKey) {
    const unsigned char filled[slotLength] = {key[0], key[1], value[0], secondByte,
                                              static_cast<unsigned char>(isSingleByte)};
    std::copy(std::begin(filled), std::end(filled), slot);
    return true;
  }
  try {
    m_overflow.try_emplace(numberOf(key), Entry{{value[0], secondByte}, isSingleByte});
  } catch (const std::exception&) {
    log.logError("Out of memory for a mapping.");
    return false;
  }
  // No slot may hold this key, so an empty one says nothing about it.
  if (isZeroKey) m_hasRemovals = true;
  return true;
}

void HashConvert::hcLookup(const unsigned char* key, unsigned char* out, int& outLen) const {
  const auto give = [&](const unsigned char* value, bool isSingleByte) {
    out[0] = value[0];
    if (!isSingleByte) out[1] = value[1];
    outLen = isSingleByte ? 1 : 2;
  };
  const unsigned char* slot = slotOf(key);
  if (holds(slot, key)) {
    give(slot + 2, slot[4] != 0);
    return;
  }
  const auto found = m_overflow.find(numberOf(key));
  if (found != m_overflow.end()) give(found->second.value, found->second.isSingleByte);
}

void HashConvert::hcRemove(const unsigned char* key) {
  auto* slot = const_cast<unsigned char*>(slotOf(key));
  if (holds(slot, key)) {
    std::fill_n(slot, slotLength, static_cast<unsigned char>(0));
    m_hasRemovals = true;
  } else {
    m_overflow.erase(numberOf(key));
  }
}

bool HashConvert::hcBuildReverse(HashConvert& dest, LogBase& log) const {
  dest.m_direction = 2;
  dest.put_IsLowerAscii(get_IsLowerAscii());
  // In the order of the units, so that the lowest of those that share a code is
  // what the code decodes to, wherever the table keeps them.
  for (unsigned int unit = 0; unit < 0x10000; ++unit) {
    const unsigned char text[2] = {static_cast<unsigned char>(unit),
                                   static_cast<unsigned char>(unit >> 8)};
    unsigned char code[mostValueBytes];
    int length = 0;
    hcLookup(text, code, length);
    if (length == 2 && !dest.hcInsert(code, text, lengthCodeToPair, log)) return false;
    if (length != 1 || dest.m_byteToUnicode[code[0]] != 0) continue;
    dest.m_byteToUnicode[code[0]] = static_cast<unsigned short>(unit);
  }
  return true;
}

bool HashConvert::isPresent(const unsigned char* key) const {
  const unsigned char* slot = slotOf(key);
  if (holds(slot, key)) return true;
  if (isEmpty(slot) && !m_hasRemovals) return false;
  return m_overflow.find(numberOf(key)) != m_overflow.end();
}

}  // namespace quorvel
