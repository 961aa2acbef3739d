#include "quorvel/pages/TableBuilder.hpp"

#include <cstring>

#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/ContentCoding.h"
#include "quorvel/pages/QuorvelBzip2.h"

namespace quorvel {

namespace {

// A list that maps every unit and every code once is a quarter of this; a
// longer one is broken, however well it is packed.
constexpr unsigned int mostTableBytes = 1U << 20;

// Behind a list that lacks them, these zero bytes end a record that is cut off
// and every section that is still to come.
constexpr unsigned char terminators[8] = {};

bool unpack(const char* packed, DataBuffer& table) {
  DataBuffer decoded;
  if (!ContentCoding::decodeBase64ToDb(packed + 1, qvStrLen(packed + 1), decoded)) return false;
  if (packed[0] == 'x') {
    if (!table.append(decoded)) return false;
  } else {
    if (QuorvelBzip2::announcedLength(decoded) > mostTableBytes) return false;
    QuorvelBzip2().unBzipWithHeader(decoded, table, nullptr);
  }
  return table.getSize() && table.append(terminators, sizeof terminators);
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
// to the record before. Returns the position behind the section.
const unsigned char* readSingleBytes(const unsigned char* p, HashConvert& table, bool fromUnicode,
                                     LogBase& log) {
  unsigned char code = 0;
  unsigned int unit = 0;
  for (; *p; p += 3) {
    code = static_cast<unsigned char>(code + *p);
    unit = (unit + read16(p + 1)) & 0xFFFF;
    if (fromUnicode) {
      table.hcInsert(unitBytes(unit).bytes, &code, HashConvert::lengthCodeToByte, log);
    } else {
      table.m_byteToUnicode[code] = static_cast<unsigned short>(unit);
    }
  }
  return p + 1;
}

// Double-byte mappings: 4 bytes each, likewise.
void readDoubleBytes(const unsigned char* p, HashConvert& table, bool fromUnicode, LogBase& log) {
  unsigned int code = 0;
  unsigned int unit = 0;
  for (; read16(p); p += 4) {
    code = (code + read16(p)) & 0xFFFF;
    unit = (unit + read16(p + 2)) & 0xFFFF;
    const KeyBytes key = fromUnicode ? unitBytes(unit) : codeBytes(code);
    const KeyBytes value = fromUnicode ? codeBytes(code) : unitBytes(unit);
    table.hcInsert(key.bytes, value.bytes, HashConvert::lengthCodeToPair, log);
  }
}

void replace(HashConvert& table, const unsigned char* key, const unsigned char* code,
             int lengthCode, LogBase& log) {
  table.hcRemove(key);
  table.hcInsert(key, code, lengthCode, log);
}

}  // namespace

void buildHash(const char* packed, HashConvert& table, bool fromUnicode, LogBase& log) {
  DataBuffer unpacked;
  if (!packed || !*packed || !unpack(packed, unpacked)) return;
  const unsigned char* bytes = unpacked.getData2();
  table.put_IsLowerAscii(bytes[0] == 'a');
  if (bytes[1] != 'd') {
    buildFromComplete(bytes + 2, table, fromUnicode, log);
  } else if (fromUnicode) {
    buildFromDiffs(bytes + 2, table, log);
  }
  table.m_direction = fromUnicode ? 1 : 2;
}

void buildFromComplete(const unsigned char* body, HashConvert& table, bool fromUnicode,
                       LogBase& log) {
  table.m_direction = fromUnicode ? 1 : 2;
  readDoubleBytes(readSingleBytes(body, table, fromUnicode, log), table, fromUnicode, log);
}

void buildFromDiffs(const unsigned char* body, HashConvert& table, LogBase& log) {
  table.m_hasRemovals = true;
  const unsigned char* p = body;
  for (; p[0] || p[1]; p += 2) table.hcRemove(p);
  p += 2;
  for (; *p; p += 3) replace(table, p + 1, p, HashConvert::lengthCodeToByte, log);
  ++p;
  for (; p[0] || p[1]; p += 4) replace(table, p + 2, p, HashConvert::lengthCodeToPair, log);
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
