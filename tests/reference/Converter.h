#pragma once

#include <cstring>
#include <stdexcept>

#include "quorvel/base/LogContextExitor.h"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/_qvUtf.h"
#include "tests/helpers/Bytes.h"
#include "tests/reference/Utf8Reference.h"

/// A second converter, the slow and obvious way: one character after the other,
/// one byte after the other, every step in the order in which it is described.
/// It takes the tables of the library as they are and its transforms for UTF-7,
/// UTF-32 and GSM; everything else is its own. The files beside this one hold
/// its parts.
namespace quorvel::reference {

using quorvel_test::Bytes;

/// Bytes that are read one at a time and never past their end.
class Text {
 public:
  Text() = default;
  Text(const unsigned char* data, std::size_t size) : m_data(data), m_size(size) {}
  explicit Text(const Bytes& bytes) : Text(bytes.data(), bytes.size()) {}
  explicit Text(const DataBuffer& buffer) : Text(buffer.getData2(), buffer.getSize()) {}

  unsigned char operator[](std::size_t i) const {
    if (i >= m_size) throw std::out_of_range("the reference reads past the end");
    return m_data[i];
  }
  std::size_t size() const { return m_size; }
  bool isEmpty() const { return m_size == 0; }

  Text part(std::size_t from, std::size_t count) const {
    if (from > m_size || count > m_size - from) throw std::out_of_range("no such part");
    return {m_data + from, count};
  }
  Text from(std::size_t start) const { return part(start, m_size - start); }
  Text firstBytes(std::size_t count) const { return part(0, count); }

  bool startsWith(std::initializer_list<unsigned char> bytes) const {
    return m_size >= bytes.size() && std::equal(bytes.begin(), bytes.end(), m_data);
  }
  std::string_view asString() const { return {reinterpret_cast<const char*>(m_data), m_size}; }
  const unsigned char* data() const { return m_data; }

 private:
  const unsigned char* m_data = nullptr;
  std::size_t m_size = 0;
};

inline void append(Bytes& out, const Text& text) {
  out.insert(out.end(), text.data(), text.data() + text.size());
}

inline void append(Bytes& out, const char* text) {
  out.insert(out.end(), text, text + std::strlen(text));
}

/// Output that is held back until there is a block of it.
class Block {
 public:
  Block(std::size_t size, Bytes& out) : m_size(size), m_out(out) {}

  void put(unsigned int byte) { m_pending.push_back(static_cast<unsigned char>(byte)); }
  void putUnit(unsigned int unit) {
    put(unit & 0xFF);
    put(unit >> 8);
  }
  void flushWhenFull() {
    if (m_pending.size() >= m_size) flush();
  }
  void flush() {
    append(m_out, Text(m_pending));
    m_pending.clear();
  }

 private:
  std::size_t m_size;
  Bytes& m_out;
  Bytes m_pending;
};

class Converter {
 public:
  bool EncConvert(int from, int to, Text in, Bytes& out, LogBase& log);
  bool convert_a(int from, int to, Text in, Bytes& out, LogBase& log);

  bool cv_utf8_to_utf16(Text in, Bytes& out, LogBase& log);
  bool cv_utf16_to_utf8(Text in, Bytes& out, LogBase& log);

  bool convertToUnicodeHC(int from, Text in, Bytes& out, LogBase& log);
  bool convertFromUnicodeHC(int to, Text in, Bytes& out, LogBase& log);
  bool convertToUnicodeByLookup(const UnicodeLookup& lookup, Text in, Bytes& out, LogBase& log);
  bool convertToUnicodeHCVar(const HashConvert* table, Text in, Bytes& out, LogBase& log);
  bool convertFromUnicodeHC2(const HashConvert* table, Text in, Bytes& out, LogBase& log);

  void handleErrorFromSingleByte(Text in, Bytes& out, LogBase& log);
  void handleErrorFromUnicode(Text in, Bytes& out, LogBase& log);
  std::size_t handleErrorFromUtf8(Text in, Bytes& out, LogBase& log);
  std::size_t handleErrorFromUnknown(Text in, Bytes& out, LogBase& log);

  bool allow4ByteUtf8 = true;
  int errorAction = 0;
  int altDestCodepage = 0;
  Bytes defBytes;
  int fromCodePage = 0;
  int toCodePage = 0;
  bool emitMarkers = false;
  bool honorMarkers = false;
  bool hadError = false;

 private:
  void setMarkers(bool emit, bool honor) {
    emitMarkers = emit;
    honorMarkers = honor;
  }

  // Converter.h
  bool toDestination(int from, int to, Text in, Bytes& out, LogBase& log);
  bool takeRoute(int from, int to, Text in, Bytes& out, LogBase& log);
  bool pivotFromUtf8(int to, Text in, Bytes& out, LogBase& log);
  bool pivotToUtf8(int from, Text in, Bytes& out, LogBase& log);
  bool pivotBetweenTables(int from, int to, Text in, Bytes& out, LogBase& log);

  // ConverterErrors.h
  void writeMarker(std::size_t count, Bytes& out) const;
  void substitute(Bytes& out) const;
  void writeHexReference(Text in, Bytes& out) const;
  void reconvert(int codePage, Text in, Bytes& out, LogBase& log);
  void passThrough(Text in, Bytes& out) const;
  void actOnTwoBytes(int codePage, bool mayReconvert, Text in, Bytes& out, LogBase& log);

  // ConverterTables.h
  void actOnUnmappedUnit(Text unit, Block& staging, Bytes& out, LogBase& log);
  void convertBack(Text unit, Bytes& out, LogBase& log);
};

// --- Shared by the routes -----------------------------------------------------

inline bool isOneOf(int number, std::initializer_list<int> numbers) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

inline bool isBetween(int number, int first, int last) { return number >= first && number <= last; }

inline unsigned int sizeOf(const Text& text) { return static_cast<unsigned int>(text.size()); }

/// The bytes of each group of `count` in the opposite order; what is left over
/// at the end is dropped.
inline Bytes reversedGroups(Text in, std::size_t count) {
  Bytes result;
  for (std::size_t i = 0; i + count <= in.size(); i += count) {
    for (std::size_t j = count; j > 0; --j) result.push_back(in[i + j - 1]);
  }
  return result;
}

inline void inform(LogBase& log, const char* text) {
  if (log.m_verboseLogging) log.logInfo(text);
}

inline bool isUtf32(int codePage) { return isOneOf(codePage, {12000, 12001, 65005, 65006}); }

// --- EncConvert -----------------------------------------------------------------

/// Right-to-left bytes of the Arabic page of the Macintosh come in the order in
/// which they are seen; this puts them in the order in which they are read.
inline Bytes inReadingOrder(Text in) {
  const auto isMarked = [](unsigned int b) {
    return b == 0x81 || b == 0x8C || b == 0x93 || b == 0x98 || b == 0x9B ||
           (b >= 0xA0 && b <= 0xA4) || (b >= 0xA6 && b <= 0xAB) || (b >= 0xAD && b <= 0xBA) ||
           (b >= 0xBC && b <= 0xBE) || b == 0xC0 || (b >= 0xDB && b <= 0xDF) ||
           (b >= 0xFB && b <= 0xFD);
  };
  const auto remapped = [](unsigned int b) -> unsigned int {
    if (b >= 0xB0 && b <= 0xB9) return b - 0x80;
    if (b >= 0xA0 && b <= 0xAF) return b == 0xA5 || b == 0xAC ? b : b - 0x80;
    if (b == 0xBA || (b >= 0xBC && b <= 0xBE) || (b >= 0xDB && b <= 0xDF) ||
        (b >= 0xFB && b <= 0xFD)) {
      return b - 0x80;
    }
    return b == 0x81 ? 0xA0 : b;
  };
  Bytes copy;
  append(copy, in);
  bool inRun = false;
  std::size_t runStart = 0;
  const auto reverseUpTo = [&](std::size_t end) {
    if (end - runStart < 2) return;
    std::reverse(copy.begin() + static_cast<std::ptrdiff_t>(runStart),
                 copy.begin() + static_cast<std::ptrdiff_t>(end));
  };
  for (std::size_t i = 0; i < copy.size(); ++i) {
    const unsigned int b = copy[i];
    if (!inRun) {
      if (b >= 0x20 && isMarked(b)) {
        inRun = true;
        runStart = i;
      }
    } else if (b < 0x20 || !isMarked(b)) {
      reverseUpTo(i);
      inRun = false;
    }
    copy[i] = static_cast<unsigned char>(remapped(b));
  }
  if (inRun) reverseUpTo(copy.size());
  return copy;
}

/// Between any two code pages but ISO-2022 and, as destination, UTF-7.
inline bool Converter::EncConvert(int from, int to, Text in, Bytes& out, LogBase& log) {
  hadError = false;
  if (in.isEmpty()) return true;
  if (in.size() >= 7 && in.startsWith({'%', 'P', 'D', 'F', '-', '1'})) {
    append(out, in);
    return true;
  }
  const LogContextExitor context(log, "EncConvert", log.m_verboseLogging);
  if (log.m_verboseLogging) {
    log.LogDataLong("fromCodePage", from);
    log.LogDataLong("toCodePage", to);
  }
  if (to == 0) to = from;
  if (from == 0) from = to;
  if (from == to) {
    append(out, in);
    return true;
  }
  if (from != 37 && from < 100) return false;
  if (to != 37 && to < 100) return false;
  Bytes copy;
  if (from == 10004) {
    copy = inReadingOrder(in);
    in = Text(copy);
  }
  if (isBetween(from, 50220, 50225) || isBetween(to, 50220, 50225) || to == 65000) {
    throw std::invalid_argument("the reference does not convert this");
  }
  honorMarkers = false;
  fromCodePage = from;
  toCodePage = to;
  const bool ok = toDestination(from, to, in, out, log);
  if (!ok) hadError = true;
  return ok;
}

inline bool Converter::toDestination(int from, int to, Text in, Bytes& out, LogBase& log) {
  if (isUtf32(to)) {
    Bytes utf8;
    if (from == 65001) {
      append(utf8, in);
    } else if (!convert_a(from, 65001, in, utf8, log)) {
      return false;
    }
    DataBuffer utf32;
    const bool ok = _qvUtf::utf8toUtf32(to == 12001 || to == 65006, utf8.data(),
                                        quorvel_test::sizeOf(utf8), utf32);
    append(out, Text(utf32));
    return ok;
  }
  if (to == 1201) {
    toCodePage = 1200;
    Bytes utf16;
    if (!convert_a(from, 1200, in, utf16, log)) hadError = true;
    append(out, Text(reversedGroups(Text(utf16), 2)));
    return true;
  }
  return convert_a(from, to, in, out, log);
}

// --- convert_a ------------------------------------------------------------------

inline bool Converter::convert_a(int from, int to, Text in, Bytes& out, LogBase& log) {
  if (in.isEmpty()) return true;
  const LogContextExitor context(log, "convert_a", log.m_verboseLogging);

  bool isBigEndian = false;
  if (from == 65001) {
    if (in.startsWith({0xEF, 0xBB, 0xBF})) in = in.from(3);
  } else if (from == 1200 || from == 1201) {
    isBigEndian = from == 1201;
    if (in.startsWith({0xFF, 0xFE})) {
      in = in.from(2);
      isBigEndian = false;
    } else if (in.startsWith({0xFE, 0xFF})) {
      in = in.from(2);
      isBigEndian = true;
    }
  } else if (isUtf32(from)) {
    isBigEndian = from == 12001 || from == 65006;
    if (in.startsWith({0xFF, 0xFE, 0x00, 0x00})) {
      in = in.from(4);
      isBigEndian = false;
    } else if (in.startsWith({0x00, 0x00, 0xFE, 0xFF})) {
      in = in.from(4);
      isBigEndian = true;
    }
  }
  if (in.isEmpty()) return true;
  if (from == to) {
    append(out, in);
    return true;
  }

  if (from == 55000) {
    DataBuffer utf8;
    const bool ok = _qvUtf::gsm_to_utf8(in.data(), sizeOf(in), utf8, log);
    if (to != 65001) return convert_a(65001, to, Text(utf8), out, log);
    append(out, Text(utf8));
    return ok;
  }
  if (to == 55000) {
    Bytes utf8;
    if (from == 65001) {
      append(utf8, in);
    } else if (!convert_a(from, 65001, in, utf8, log)) {
      return false;
    }
    DataBuffer gsm;
    _qvUtf::utf8_to_gsm(utf8.data(), quorvel_test::sizeOf(utf8), gsm, log);
    append(out, Text(gsm));
    return true;
  }

  if (from == 20127 && (isBetween(to, 28591, 28605) || to == 65001 || isBetween(to, 1250, 1258))) {
    append(out, in);
    if (to == 65001) std::erase_if(out, [](unsigned char byte) { return byte > 0x7F; });
    return true;
  }

  bool isClean = true;
  Bytes swapped;
  DataBuffer normalised;
  if (from == 65000) {
    DataBuffer utf7;
    utf7.append(in.data(), sizeOf(in));
    isClean = _qvUtf::Utf7ToUtf16_xe(utf7, normalised);
    in = Text(normalised);
    from = 1200;
  } else if (isUtf32(from)) {
    if (isBigEndian) {
      if (in.size() <= 3) return true;
      swapped = reversedGroups(in, 4);
      in = Text(swapped);
    }
    DataBuffer utf32;
    utf32.append(in.data(), sizeOf(in));
    isClean = _qvUtf::Utf32ToUtf8(utf32, normalised);
    in = Text(normalised);
    from = 65001;
  } else if (isBigEndian) {
    if (in.size() < 2) return true;
    swapped = reversedGroups(in, 2);
    in = Text(swapped);
    from = 1200;
  }
  const bool ok = takeRoute(from, to, in, out, log);
  return ok && isClean;
}

inline bool Converter::takeRoute(int from, int to, Text in, Bytes& out, LogBase& log) {
  if (from == 1200 && to == 1200) {
    setMarkers(false, false);
    append(out, in);
    return pivotBetweenTables(from, to, in, out, log);
  }
  if (from == 1200 && to == 65001) {
    setMarkers(false, false);
    inform(log, "converting from utf-16 to utf-8");
    return cv_utf16_to_utf8(in, out, log);
  }
  if (from == 1200) {
    setMarkers(false, false);
    return convertFromUnicodeHC(to, in, out, log);
  }
  if (from == 65001 && to == 1200) {
    setMarkers(false, false);
    inform(log, "converting from utf-8 to utf-16");
    cv_utf8_to_utf16(in, out, log);
    return true;
  }
  if (from == 65001 && to == 12000) {
    setMarkers(false, false);
    inform(log, "converting from utf-8 to utf-32");
    DataBuffer utf32;
    const bool ok = _qvUtf::utf8toUtf32(false, in.data(), sizeOf(in), utf32);
    append(out, Text(utf32));
    return ok;
  }
  if (to == 1200 || to == 12000) {
    setMarkers(false, false);
    return convertToUnicodeHC(from, in, out, log);
  }
  if (from == 65001 && to == 65001) {
    append(out, in);
    return true;
  }
  if (from == 65001) return pivotFromUtf8(to, in, out, log);
  if (to == 65001) return pivotToUtf8(from, in, out, log);
  return pivotBetweenTables(from, to, in, out, log);
}

inline bool Converter::pivotFromUtf8(int to, Text in, Bytes& out, LogBase& log) {
  inform(log, "Converting from utf-8 using utf-16 as a pivot table...");
  setMarkers(true, false);
  Bytes pivot;
  cv_utf8_to_utf16(in, pivot, log);
  setMarkers(false, true);
  const bool ok = convertFromUnicodeHC(to, Text(pivot), out, log);
  setMarkers(false, false);
  return ok;
}

inline bool Converter::pivotToUtf8(int from, Text in, Bytes& out, LogBase& log) {
  inform(log, "Converting to utf-8 using utf-16 as a pivot table...");
  setMarkers(true, false);
  Bytes pivot;
  if (!convertToUnicodeHC(from, in, pivot, log)) {
    if (log.m_verboseLogging) log.logError("convertToUnicodeHC failed.");
    return false;
  }
  if (log.m_verboseLogging) log.LogDataLong("szUtf16_inBytes", static_cast<long>(pivot.size()));
  setMarkers(false, true);
  const bool ok = cv_utf16_to_utf8(Text(pivot), out, log);
  if (!ok && log.m_verboseLogging) log.logError("convertFromUnicode failed.");
  if (log.m_verboseLogging) log.LogDataLong("szResult_inBytes", static_cast<long>(out.size()));
  setMarkers(false, false);
  return ok;
}

inline bool Converter::pivotBetweenTables(int from, int to, Text in, Bytes& out, LogBase& log) {
  inform(log, "Converting by using utf-16 as a pivot table...");
  setMarkers(true, false);
  Bytes pivot;
  if (!convertToUnicodeHC(from, in, pivot, log)) return false;
  setMarkers(false, true);
  const bool ok = convertFromUnicodeHC(to, Text(pivot), out, log);
  setMarkers(false, false);
  return ok;
}

}  // namespace quorvel::reference

#include "tests/reference/ConverterErrors.h"
#include "tests/reference/ConverterTables.h"
#include "tests/reference/ConverterTranscode.h"
