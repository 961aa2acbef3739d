#pragma once

// Implemented in Transcode.cpp (UTF-8), Decode.cpp and Encode.cpp (tables).

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/InLogContext.hpp"
#include "quorvel/base/LogBase.h"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableRegistry.hpp"

namespace quorvel {

class EncodingConvert;

// The two steps of a conversion, over a whole text or one part of it after the
// other, and the log contexts that belong around them. They apply the error policy
// of the converter that they are given and are what its members are made of.

/// A part of a source text: what begins in [in, stop), of a text that goes on up
/// to `end`.
struct SourcePart {
  const unsigned char* in;
  const unsigned char* stop;
  const unsigned char* end;
};

/// Decodes a part and appends UTF-16. Returns where the next part begins: at
/// `stop`, behind a character that goes past it or, in UTF-8, in front of one
/// that `stop` cuts, so that a part of four bytes always gets on. Null when
/// memory runs out.
const unsigned char* decodeUtf8(EncodingConvert& converter, const SourcePart& part, DataBuffer& out,
                                LogBase& log);
const unsigned char* decodeByTable(EncodingConvert& converter, const ToUnicodeTable& table,
                                   const SourcePart& part, DataBuffer& out, LogBase& log);

/// A part of a UTF-16 text; only the last one has nothing behind it.
struct UnitsPart {
  const unsigned char* in;
  const unsigned char* end;
  bool isLast;
};

/// How far a part was encoded (null when memory ran out), and whether all of it
/// had a mapping. What stands at the end of a part and cannot be judged without
/// what follows is left for the next: the beginning of a marker, of a pair or of
/// a unit, or the whole rest where the last part alone will do.
struct Encoded {
  const unsigned char* in;
  bool isWhole;
};

Encoded encodeUtf8(EncodingConvert& converter, const UnitsPart& part, DataBuffer& out);
Encoded encodeByTable(EncodingConvert& converter, const FromUnicodeTable& table,
                      const UnitsPart& part, DataBuffer& out, LogBase& log);

/// The tables that a conversion takes, built if need be; null when the code page
/// has none or memory ran out.
const ToUnicodeTable* tableToDecode(const PageRef& page, LogBase& log);
const FromUnicodeTable* tableToEncode(const PageRef& page, LogBase& log);

/// The names of the contexts in which the steps stand.
inline constexpr char utf8DecodingContext[] = "cv_utf8_to_utf16";
inline constexpr char utf8EncodingContext[] = "convertFromUnicode";
inline constexpr char tableDecodingContext[] = "convertToUnicodeHC";
inline constexpr char lookupDecodingContext[] = "convertToUnicodeByLookup";
inline constexpr char tableEncodingContext[] = "convertFromUnicodeHC";

/// Runs `body(table)`, which decodes `numBytes` bytes by the table of a code page,
/// in the contexts of that step. False, with nothing run, where there is no table.
template <typename Body>
bool inTableDecoding(const PageRef& page, unsigned int numBytes, LogBase& log, const Body& body) {
  return inLogContext(log, tableDecodingContext, [&] {
    if (log.m_verboseLogging) {
      log.LogDataLong("fromCodePage", page);
      log.LogDataLong("inDataLen", static_cast<long>(numBytes));
    }
    const ToUnicodeTable* table = tableToDecode(page, log);
    if (!table) return false;
    const auto run = [&] { return body(*table); };
    return table->kind == ToUnicodeTable::Kind::bytes
               ? inLogContext(log, lookupDecodingContext, run)
               : run();
  });
}

/// The same for encoding `numBytes` bytes of UTF-16.
///
/// contract: a single byte is no text and false, where half a unit behind others is
/// ignored. Callers tell truncated input by it.
template <typename Body>
bool inTableEncoding(const PageRef& page, unsigned int numBytes, LogBase& log, const Body& body) {
  return inLogContext(log, tableEncodingContext, [&] {
    if (log.m_verboseLogging) {
      log.LogDataLong("toCodePage", page);
      log.LogDataLong("inDataLen", static_cast<long>(numBytes));
      log.LogDataLong("isLittleEndian", qvIsLittleEndian() ? 1 : 0);
    }
    const FromUnicodeTable* table = tableToEncode(page, log);
    return table && numBytes >= 2 && body(*table);
  });
}

}  // namespace quorvel
