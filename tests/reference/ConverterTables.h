#pragma once

#include "tests/helpers/PageTables.h"
#include "tests/reference/Converter.h"

/// The table-driven code pages in the reference.
namespace quorvel::reference {

inline bool isMultiByte(int codePage) {
  return isOneOf(codePage, {932, 936, 949, 950, 1361, 10001, 51932, 51936, 51949, 52936});
}

/// The single-byte pages that conversions take; 28600 and 28601 have tables but
/// are not among them.
inline bool isSingleByte(int codePage) {
  return isOneOf(codePage,
                 {37,    437,   500,   708,   720,   737,   775,   850,   852,   855,   857,
                  858,   860,   861,   862,   863,   864,   865,   866,   869,   870,   874,
                  875,   1026,  1047,  10000, 10004, 10005, 10006, 10007, 10010, 10017, 10021,
                  10029, 10079, 10081, 10082, 20105, 20106, 20107, 20108, 20127, 20261, 20269,
                  20273, 20277, 20278, 20280, 20284, 20285, 20290, 20297, 20420, 20423, 20424,
                  20838, 20866, 20871, 20880, 20905, 20924, 21025, 21866, 28603, 28605, 38598}) ||
         isBetween(codePage, 1140, 1149) || isBetween(codePage, 1250, 1258) ||
         isBetween(codePage, 28591, 28599);
}

// The tables are those that callers would build, whatever is published.

inline const UnicodeLookup* lookupOf(int codePage) {
  return isSingleByte(codePage) ? &quorvel_test::pageLookup(codePage) : nullptr;
}

inline const HashConvert* toUnicodeHashOf(int codePage) {
  return isMultiByte(codePage) ? &quorvel_test::pageTable(codePage, false) : nullptr;
}

inline const HashConvert* fromUnicodeHashOf(int codePage) {
  return isSingleByte(codePage) || isMultiByte(codePage) ? &quorvel_test::pageTable(codePage, true)
                                                         : nullptr;
}

/// What a table has for two bytes: how many bytes at `value`, 0 for none, a
/// negative number for a key that is passed over.
inline int lookUp(const HashConvert& table, Text pair, unsigned char (&value)[10]) {
  const unsigned char key[2] = {pair[0], pair[1]};
  const unsigned int number = key[0] + 256U * key[1];
  const unsigned char* slot = table.m_buckets + std::size_t{5} * (number % table.m_numBuckets);
  const bool isEmpty = slot[0] == 0 && slot[1] == 0;
  int length = 0;
  if (isEmpty) {
    if (table.m_hasRemovals) table.hcLookup(key, value, length);
  } else if (slot[0] != key[0] || slot[1] != key[1]) {
    table.hcLookup(key, value, length);
  } else {
    value[0] = slot[2];
    value[1] = slot[3];
    length = slot[4] != 0 ? 1 : 2;
  }
  return length;
}

// --- Decoding -------------------------------------------------------------------

inline bool Converter::convertToUnicodeHC(int from, Text in, Bytes& out, LogBase& log) {
  if (in.isEmpty()) return true;
  const LogContextExitor context(log, "convertToUnicodeHC", log.m_verboseLogging);
  if (log.m_verboseLogging) {
    log.LogDataLong("fromCodePage", from);
    log.LogDataLong("inDataLen", static_cast<long>(in.size()));
  }
  if (!EncodingConvert::ensureHashToUnicode(from, log)) {
    if (log.m_verboseLogging) log.logError("ensureHashToUnicode failed.");
    return false;
  }
  if (isSingleByte(from)) {
    convertToUnicodeByLookup(*lookupOf(from), in, out, log);
    return true;
  }
  return isMultiByte(from) && convertToUnicodeHCVar(toUnicodeHashOf(from), in, out, log);
}

inline bool Converter::convertToUnicodeByLookup(const UnicodeLookup& lookup, Text in, Bytes& out,
                                                LogBase& log) {
  if (in.isEmpty()) return true;
  const LogContextExitor context(log, "convertToUnicodeByLookup", log.m_verboseLogging);
  Block block(512, out);
  for (std::size_t i = 0; i < in.size(); ++i) {
    const unsigned int byte = in[i];
    if (byte == 0) {
      block.putUnit(0);
    } else if (lookup.m_units[byte] != 0) {
      block.putUnit(lookup.m_units[byte]);
    } else {
      hadError = true;
      if (errorAction != 0) {
        block.flush();
        handleErrorFromSingleByte(in.from(i), out, log);
      }
    }
    block.flushWhenFull();
  }
  block.flush();
  return true;
}

inline bool Converter::convertToUnicodeHCVar(const HashConvert* table, Text in, Bytes& out,
                                             LogBase& log) {
  if (!table) {
    log.logError("convertToUnicodeHCVar: missing hc");
    return false;
  }
  if (in.isEmpty()) return true;
  const bool isLowerAscii = table->get_IsLowerAscii();
  bool isPerfect = true;
  Block block(200, out);
  const auto write = [&](unsigned int byte) {
    block.put(byte);
    block.flushWhenFull();
  };
  const auto writeUnit = [&](unsigned int unit) {
    write(unit & 0xFF);
    write(unit >> 8);
  };
  std::size_t i = 0;
  while (i < in.size()) {
    const unsigned int byte = in[i];
    const unsigned int single = table->m_byteToUnicode[byte];
    if (isLowerAscii && byte < 0x80) {
      writeUnit(byte);
      i += 1;
      continue;
    }
    if (i == in.size() - 1) {
      if (byte == 0) {
        writeUnit(0);
      } else if (single != 0) {
        writeUnit(single);
      } else {
        hadError = true;
        if (errorAction != 0) {
          block.flush();
          handleErrorFromSingleByte(in.from(i), out, log);
        }
        isPerfect = false;
      }
      i += 1;
      continue;
    }
    unsigned char value[10] = {};
    const int length = lookUp(*table, in.part(i, 2), value);
    if (length > 0) {
      for (int j = 0; j < length; ++j) write(value[j]);
      i += 2;
    } else if (length < 0) {
      i += 2;
    } else if (single != 0) {
      writeUnit(single);
      i += 1;
    } else {
      hadError = true;
      isPerfect = false;
      if (errorAction != 0) {
        block.flush();
        i += handleErrorFromUnknown(in.from(i), out, log);
      } else {
        i += 1;
      }
    }
  }
  if (!isPerfect && log.m_verboseLogging) {
    log.logError("imperfect conversion in convertToUnicodeHCVar");
  }
  block.flush();
  return true;
}

// --- Encoding -------------------------------------------------------------------

inline Bytes withAsciiDigits(Text in) {
  Bytes copy;
  append(copy, in);
  for (std::size_t i = 0; i + 1 < copy.size(); i += 2) {
    const unsigned int low = copy[i];
    if (copy[i + 1] != 0x06) continue;
    if (low >= 0x60 && low <= 0x69) {
      copy[i] = static_cast<unsigned char>(low - 0x30);
      copy[i + 1] = 0x00;
    } else if (low >= 0xF0 && low <= 0xF9) {
      copy[i] = static_cast<unsigned char>((low + 0x40) % 256);
      copy[i + 1] = 0x00;
    }
  }
  return copy;
}

inline bool Converter::convertFromUnicodeHC(int to, Text in, Bytes& out, LogBase& log) {
  if (in.isEmpty()) return true;
  const LogContextExitor context(log, "convertFromUnicodeHC", log.m_verboseLogging);
  if (log.m_verboseLogging) {
    log.LogDataLong("toCodePage", to);
    log.LogDataLong("inDataLen", static_cast<long>(in.size()));
    log.LogDataLong("isLittleEndian", 1);
  }
  EncodingConvert::ensureHashFromUnicode(to, log);
  if (!isSingleByte(to) && !isMultiByte(to)) return false;
  if (to == 1256 || to == 28596) {
    const Bytes rewritten = withAsciiDigits(in);
    return convertFromUnicodeHC2(fromUnicodeHashOf(to), Text(rewritten), out, log);
  }
  return convertFromUnicodeHC2(fromUnicodeHashOf(to), in, out, log);
}

inline bool Converter::convertFromUnicodeHC2(const HashConvert* table, Text in, Bytes& out,
                                             LogBase& log) {
  if (!table) return false;
  if (in.isEmpty()) return true;
  const std::size_t n = in.size() / 2 * 2;
  if (n == 0) return false;
  const bool isLowerAscii = table->get_IsLowerAscii();
  bool isWhole = true;
  Block staging(512, out);
  std::size_t i = 0;
  while (i + 1 < n) {
    if (honorMarkers && i + 3 <= n && in[i] == 0xFD && in[i + 1] == 0xEF) {
      const std::size_t count = in[i + 2];
      if (count > 5) {
        i += 2;
      } else if (i + 3 + count <= n) {
        staging.flush();
        append(out, in.part(i + 3, count));
        i += 3 + count;
      } else {
        i += 3;
      }
      continue;
    }
    const Text unit = in.part(i, 2);
    i += 2;
    if (isLowerAscii && unit[1] == 0 && unit[0] < 0x80) {
      staging.put(unit[0]);
      staging.flushWhenFull();
      continue;
    }
    unsigned char value[10] = {};
    const int length = lookUp(*table, unit, value);
    if (length > 0) {
      staging.flush();
      append(out, Text(value, static_cast<std::size_t>(length)));
    } else if (unit[0] == 0 && unit[1] == 0) {
      staging.put(0x00);
      staging.flushWhenFull();
    } else {
      hadError = true;
      isWhole = false;
      actOnUnmappedUnit(unit, staging, out, log);
    }
  }
  staging.flush();
  return isWhole;
}

inline void Converter::actOnUnmappedUnit(Text unit, Block& staging, Bytes& out, LogBase& log) {
  if (errorAction == 0) return;
  if (honorMarkers && errorAction == 7) {
    staging.flush();
    convertBack(unit, out, log);
  } else if (honorMarkers && errorAction == 2) {
    Bytes source;
    convertBack(unit, source, log);
    if (source.empty()) return;
    staging.flush();
    writeHex(Text(source), out);
  } else if (honorMarkers && errorAction == 1) {
    staging.flush();
    append(out, Text(defBytes));
  } else {
    staging.flush();
    handleErrorFromUnicode(unit, out, log);
  }
}

/// Writes a unit in the code page that the text came in.
inline void Converter::convertBack(Text unit, Bytes& out, LogBase& log) {
  const int action = errorAction;
  const int from = fromCodePage;
  const int to = toCodePage;
  errorAction = 0;
  convert_a(1200, fromCodePage, unit, out, log);
  errorAction = action;
  fromCodePage = from;
  toCodePage = to;
}

}  // namespace quorvel::reference
