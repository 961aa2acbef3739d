#include "quorvel/pages/TableBuilder.hpp"

#include <cstring>

#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/QuorvelBzip2.h"
#include "quorvel/pages/Unpacking.hpp"

namespace quorvel {

namespace {

// A list that maps every unit and every code once is a quarter of this; a
// longer one is broken, however well it is packed.
constexpr unsigned int mostTableBytes = 1U << 20;

// Behind a list that lacks them, these zero bytes end a record that is cut off
// and every section that is still to come.
constexpr unsigned char terminators[8] = {};

Unpacked unpackList(const char* packed, const DataBuffer& decoded, DataBuffer& table) {
  if (packed[0] == 'x') return table.append(decoded) ? Unpacked::whole : Unpacked::outOfMemory;
  if (QuorvelBzip2::announcedLength(decoded) > mostTableBytes) return Unpacked::damaged;
  return decompressBlock(decoded, table).state;
}

Unpacked unpack(const char* packed, DataBuffer& table) {
  DataBuffer decoded;
  Unpacked state = unpackBase64(packed + 1, qvStrLen(packed + 1), decoded);
  if (state == Unpacked::whole) state = unpackList(packed, decoded, table);
  if (state != Unpacked::whole) return state;
  if (table.getSize() == 0) return Unpacked::damaged;
  return table.append(terminators, sizeof terminators) ? Unpacked::whole : Unpacked::outOfMemory;
}

// Reads a 16-bit number of the list, which is laid out for little-endian hosts.
unsigned int read16(const unsigned char* p) {
  unsigned short value = 0;
  std::memcpy(&value, p, sizeof value);
  return value;
}

struct KeyBytes {
  unsigned char bytes[2];
};

KeyBytes unitBytes(unsigned int unit) {
  const auto value = static_cast<unsigned short>(unit);
  KeyBytes result;
  std::memcpy(result.bytes, &value, sizeof value);
  return result;
}

KeyBytes codeBytes(unsigned int code) {
  return {{static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code)}};
}

// Single-byte mappings: 3 bytes each, the byte code and the unit as differences
// to the record before. Returns the position behind the section, null when memory
// ran out.
const unsigned char* readSingleBytes(const unsigned char* p, HashConvert& table, bool fromUnicode,
                                     LogBase& log) {
  unsigned char code = 0;
  unsigned int unit = 0;
  for (; *p; p += 3) {
    code = static_cast<unsigned char>(code + *p);
    unit = (unit + read16(p + 1)) & 0xFFFF;
    if (!fromUnicode) {
      table.m_byteToUnicode[code] = static_cast<unsigned short>(unit);
    } else if (!table.hcInsert(unitBytes(unit).bytes, &code, HashConvert::lengthCodeToByte, log)) {
      return nullptr;
    }
  }
  return p + 1;
}

// Double-byte mappings: 4 bytes each, likewise.
bool readDoubleBytes(const unsigned char* p, HashConvert& table, bool fromUnicode, LogBase& log) {
  unsigned int code = 0;
  unsigned int unit = 0;
  for (; read16(p); p += 4) {
    code = (code + read16(p)) & 0xFFFF;
    unit = (unit + read16(p + 2)) & 0xFFFF;
    const KeyBytes key = fromUnicode ? unitBytes(unit) : codeBytes(code);
    const KeyBytes value = fromUnicode ? codeBytes(code) : unitBytes(unit);
    if (!table.hcInsert(key.bytes, value.bytes, HashConvert::lengthCodeToPair, log)) return false;
  }
  return true;
}

bool replace(HashConvert& table, const unsigned char* key, const unsigned char* code,
             int lengthCode, LogBase& log) {
  table.hcRemove(key);
  return table.hcInsert(key, code, lengthCode, log);
}

}  // namespace

bool buildHash(const char* packed, HashConvert& table, bool fromUnicode, LogBase& log) {
  DataBuffer unpacked;
  if (!packed || !*packed) return true;
  const Unpacked state = unpack(packed, unpacked);
  if (state != Unpacked::whole) return state != Unpacked::outOfMemory;
  const unsigned char* bytes = unpacked.getData2();
  table.put_IsLowerAscii(bytes[0] == 'a');
  table.m_direction = fromUnicode ? 1 : 2;
  if (bytes[1] != 'd') return buildFromComplete(bytes + 2, table, fromUnicode, log);
  return !fromUnicode || buildFromDiffs(bytes + 2, table, log);
}

bool buildFromComplete(const unsigned char* body, HashConvert& table, bool fromUnicode,
                       LogBase& log) {
  table.m_direction = fromUnicode ? 1 : 2;
  const unsigned char* pairs = readSingleBytes(body, table, fromUnicode, log);
  return pairs && readDoubleBytes(pairs, table, fromUnicode, log);
}

bool buildFromDiffs(const unsigned char* body, HashConvert& table, LogBase& log) {
  table.m_hasRemovals = true;
  const unsigned char* p = body;
  for (; p[0] || p[1]; p += 2) table.hcRemove(p);
  p += 2;
  for (; *p; p += 3) {
    if (!replace(table, p + 1, p, HashConvert::lengthCodeToByte, log)) return false;
  }
  ++p;
  for (; p[0] || p[1]; p += 4) {
    if (!replace(table, p + 2, p, HashConvert::lengthCodeToPair, log)) return false;
  }
  return true;
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
