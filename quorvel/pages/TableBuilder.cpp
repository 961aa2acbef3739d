// Fills a caller's tables from packed text, record by record. Keys and values are bytes
// as they stand in text: a unit with its low byte first, a code with its first byte first.

#include "quorvel/pages/TableBuilder.hpp"

#include "quorvel/pages/PackedList.hpp"

namespace quorvel {

namespace {

struct KeyBytes {
  unsigned char bytes[2];
};

KeyBytes unitBytes(unsigned int unit) {
  return {{static_cast<unsigned char>(unit), static_cast<unsigned char>(unit >> 8)}};
}

KeyBytes codeBytes(unsigned int code) {
  return {{static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code)}};
}

bool insertByte(HashConvert& table, unsigned int unit, unsigned char byte, LogBase& log) {
  return table.hcInsert(unitBytes(unit).bytes, &byte, HashConvert::lengthCodeToByte, log);
}

bool insertPair(HashConvert& table, const KeyBytes& key, const KeyBytes& value, LogBase& log) {
  return table.hcInsert(key.bytes, value.bytes, HashConvert::lengthCodeToPair, log);
}

bool fillFromUnicode(const unsigned char* body, HashConvert& table, LogBase& log) {
  return readMappings(
      body,
      [&](unsigned char byte, unsigned int unit) { return insertByte(table, unit, byte, log); },
      [&](unsigned int code, unsigned int unit) {
        return insertPair(table, unitBytes(unit), codeBytes(code), log);
      });
}

bool fillToUnicode(const unsigned char* body, HashConvert& table, LogBase& log) {
  return readMappings(
      body,
      [&](unsigned char byte, unsigned int unit) {
        table.m_byteToUnicode[byte] = static_cast<unsigned short>(unit);
        return true;
      },
      [&](unsigned int code, unsigned int unit) {
        return insertPair(table, codeBytes(code), unitBytes(unit), log);
      });
}

}  // namespace

bool buildHash(const char* packed, HashConvert& table, bool fromUnicode, LogBase& log) {
  PackedList list;
  const Unpacked state = unpackList(packed, list);
  if (state != Unpacked::whole) return state != Unpacked::outOfMemory;
  table.put_IsLowerAscii(list.isLowerAscii());
  table.m_direction = fromUnicode ? 1 : 2;
  if (!list.isChanges()) return buildFromComplete(list.body(), table, fromUnicode, log);
  // contract: changes mean nothing to a to-Unicode table, which is given its
  // marks and direction all the same; callers tell such tables apart by these.
  return !fromUnicode || buildFromDiffs(list.body(), table, log);
}

bool buildFromComplete(const unsigned char* body, HashConvert& table, bool fromUnicode,
                       LogBase& log) {
  table.m_direction = fromUnicode ? 1 : 2;
  return fromUnicode ? fillFromUnicode(body, table, log) : fillToUnicode(body, table, log);
}

bool buildFromDiffs(const unsigned char* body, HashConvert& table, LogBase& log) {
  table.m_hasRemovals = true;
  const auto remove = [&](unsigned int unit) { table.hcRemove(unitBytes(unit).bytes); };
  return readChanges(
      body, remove,
      [&](unsigned char byte, unsigned int unit) {
        remove(unit);
        return insertByte(table, unit, byte, log);
      },
      [&](unsigned int code, unsigned int unit) {
        remove(unit);
        return insertPair(table, unitBytes(unit), codeBytes(code), log);
      });
}

bool buildSingleByteLookup(HashConvert& hc, UnicodeLookup& lookup, LogBase&) {
  const bool isLowerAscii = hc.get_IsLowerAscii();
  for (unsigned int byte = 1; byte < 256; ++byte) {
    const bool isAscii = byte < 0x80 && isLowerAscii;
    lookup[byte] = isAscii ? static_cast<unsigned short>(byte) : hc.m_byteToUnicode[byte];
  }
  return isLowerAscii;
}

}  // namespace quorvel
