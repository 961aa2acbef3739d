// The pivot: a text is decoded to UTF-16 and encoded from there, block by block.
// Sides of two kinds, UTF-8 and tables, stand for its two ends; their steps are
// those of Steps.hpp, which the converter's own members consist of too. Routes.cpp
// says which conversions come here.

#include "quorvel/support/Pivot.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/InLogContext.hpp"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ErrorPolicy.hpp"
#include "quorvel/support/MarkerFlags.hpp"
#include "quorvel/support/Steps.hpp"
#include "quorvel/support/Utf16Size.hpp"

namespace quorvel {

namespace {

constexpr unsigned int mostBytes = std::numeric_limits<unsigned int>::max();

// Each side: `inContext` finds what the side needs and runs the step in the log
// contexts that belong to it; `isTooLong` tells of a text whose pivot cannot be had;
// the last function is the step.

class FromUtf8 {
 public:
  explicit FromUtf8(const PageRef&) {}

  template <typename Body>
  bool inContext(unsigned int, LogBase& log, const Body& body) {
    return inLogContext(log, utf8DecodingContext, body);
  }
  bool isTooLong(const EncodingConvert& converter, const unsigned char* data, unsigned int numBytes,
                 const DataBuffer& pivot) const {
    return utf8IsTooLong(converter, data, numBytes, pivot);
  }
  const unsigned char* decode(EncodingConvert& converter, const SourcePart& part, DataBuffer& pivot,
                              LogBase& log) const {
    return decodeUtf8(converter, part, pivot, log);
  }
};

class FromTable {
 public:
  explicit FromTable(const PageRef& page) : m_page(page) {}

  template <typename Body>
  bool inContext(unsigned int numBytes, LogBase& log, const Body& body) {
    return inTableDecoding(m_page, numBytes, log, [&](const ToUnicodeTable& table) {
      m_table = &table;
      return body();
    });
  }
  bool isTooLong(const EncodingConvert& converter, const unsigned char* data, unsigned int numBytes,
                 const DataBuffer& pivot) const {
    return tableTextIsTooLong(converter, *m_table, data, numBytes, pivot);
  }
  const unsigned char* decode(EncodingConvert& converter, const SourcePart& part, DataBuffer& pivot,
                              LogBase& log) const {
    return decodeByTable(converter, *m_table, part, pivot, log);
  }

 private:
  const PageRef& m_page;
  const ToUnicodeTable* m_table = nullptr;
};

class ToUtf8 {
 public:
  static constexpr bool logsSizes = true;
  static constexpr bool takesHalfUnits = false;

  explicit ToUtf8(const PageRef&) {}

  template <typename Body>
  bool inContext(unsigned int, LogBase& log, const Body& body) {
    return inLogContext(log, utf8EncodingContext, body);
  }
  Encoded encode(EncodingConvert& converter, const UnitsPart& part, DataBuffer& out,
                 LogBase&) const {
    return encodeUtf8(converter, part, out);
  }
};

class ToTable {
 public:
  static constexpr bool logsSizes = false;
  static constexpr bool takesHalfUnits = true;

  explicit ToTable(const PageRef& page) : m_page(page) {}

  template <typename Body>
  bool inContext(unsigned int numBytes, LogBase& log, const Body& body) {
    return inTableEncoding(m_page, numBytes, log, [&](const FromUnicodeTable& table) {
      m_table = &table;
      return body();
    });
  }
  Encoded encode(EncodingConvert& converter, const UnitsPart& part, DataBuffer& out,
                 LogBase& log) const {
    return encodeByTable(converter, *m_table, part, out, log);
  }

 private:
  const PageRef& m_page;
  const FromUnicodeTable* m_table = nullptr;
};

template <typename From, typename To>
class Pivot {
 public:
  Pivot(const Conversion& conversion, unsigned int blockLength)
      : m_converter(conversion.converter),
        m_from(conversion.from),
        m_to(conversion.to),
        m_begin(conversion.data),
        m_in(m_begin),
        m_end(m_begin + conversion.numBytes),
        m_blockLength(blockLength),
        m_out(conversion.out),
        m_log(conversion.log) {
    m_pivot.lendStorage(m_storage, sizeof m_storage);
  }

  bool run() {
    setMarkers(m_converter, emitting);
    // contract: a text that cannot be decoded leaves the flags as they are then,
    // emitting set and honouring not. Who calls `convert_a` and goes on with one
    // of the handlers sees it.
    if (!decodeUntilThereIsText()) return false;
    setMarkers(m_converter, honouring);
    const bool ok = encodeAll();
    setMarkers(m_converter, neither);
    return ok;
  }

 private:
  bool decodeUntilThereIsText() {
    const auto numBytes = static_cast<unsigned int>(m_end - m_begin);
    const bool ok = numBytes == 0 || m_from.inContext(numBytes, m_log, [&] {
      if (m_from.isTooLong(m_converter, m_begin, numBytes, m_pivot)) return false;
      reserveForOneBlock();
      // Neither step leaves a trace if there is nothing for it.
      do {
        if (!decodeBlock()) return false;
      } while (m_pivot.getSize() == 0 && m_in != m_end);
      return true;
    });
    if (To::logsSizes && m_log.m_verboseLogging) {
      if (ok) {
        m_log.LogDataLong("szUtf16_inBytes", m_pivot.getSize());
      } else {
        m_log.logError("convertToUnicodeHC failed.");
      }
    }
    return ok;
  }

  bool encodeAll() {
    const unsigned int size = m_pivot.getSize();
    const bool ok = size == 0 || m_to.inContext(size, m_log, [&] { return encodeBlocks(); });
    if (To::logsSizes && m_log.m_verboseLogging) {
      if (!ok) m_log.logError("convertFromUnicode failed.");
      m_log.LogDataLong("szResult_inBytes", m_out.getSize());
    }
    return ok;
  }

  bool encodeBlocks() {
    for (;;) {
      if (!encodeBlock()) return false;
      if (m_in == m_end) return m_isWhole;
      reserveForTheRest();
      // The step may have ended honouring for good (`convertBack` in Encode.cpp).
      const Markers encoding = m_converter.m_honorPassthroughMarkers ? honouring : neither;
      setMarkers(m_converter, emitting);
      if (!decodeBlock()) return false;
      setMarkers(m_converter, encoding);
    }
  }

  bool decodeBlock() {
    const unsigned int before = m_pivot.getSize();
    const auto left = static_cast<std::size_t>(m_end - m_in);
    const unsigned char* stop = m_in + std::min<std::size_t>(left, m_blockLength);
    m_in = m_from.decode(m_converter, {m_in, stop, m_end}, m_pivot, m_log);
    m_isOdd ^= (m_pivot.getSize() - before) % 2 != 0;
    return m_in;
  }

  // What the encoder leaves goes in front of the next block; raw bytes may leave
  // half a unit there, or at the end of all.
  //
  // contract: a marker with its count and an even number of raw bytes is of odd length,
  // and so is all of a pivot with an odd number of these. What follows them is read in
  // step, but the byte that is over is the last unit's, which is dropped without a word
  // on the way to a table: 61 FF 62 from UTF-8 to 1252, with two bytes for the error, is
  // "a" and these, and no "b". Callers keep to one byte, three or five.
  bool encodeBlock() {
    const bool isLast = m_in == m_end;
    const bool hasHalfUnit = isLast && m_isOdd && m_pivot.getSize() != 0;
    const unsigned int length = m_pivot.getSize() - (hasHalfUnit ? 1 : 0);
    if (hasHalfUnit && !To::takesHalfUnits) m_isWhole = false;
    if (length == 0) return true;
    const unsigned char* begin = m_pivot.getData2();
    const Encoded encoded = m_to.encode(m_converter, {begin, begin + length, isLast}, m_out, m_log);
    if (!encoded.in) return false;
    if (!encoded.isWhole) m_isWhole = false;
    m_pivot.dropFront(static_cast<unsigned int>(encoded.in - begin));
    return true;
  }

  // A long text that goes as one block would outgrow the storage again and again.
  void reserveForOneBlock() {
    if (m_blockLength <= sourceBytesPerBlock) return;
    const std::uint64_t most = mostOutput(m_blockLength, 4);
    m_pivot.ensureBuffer(static_cast<unsigned int>(std::min<std::uint64_t>(most, mostBytes)));
  }

  // As much as the rest will need if it is like the text so far; where that cannot
  // be had, each block asks for its own. A bad beginning need not mean a bad text, so
  // the guess is worth no more than a multiple of what there is.
  void reserveForTheRest() {
    constexpr std::uint64_t alwaysAllowed = 64 << 20;
    constexpr std::uint64_t mostTimesWritten = 16;
    if (m_out.roomFor(3 * m_blockLength)) return;
    const std::size_t written = m_out.getSize() - m_sizeBefore;
    const Density density{static_cast<std::size_t>(m_in - m_begin), written};
    const auto left = static_cast<std::size_t>(m_end - m_in);
    const std::uint64_t guess = density.expected(left) + m_blockLength;
    const std::uint64_t wanted =
        m_out.getSize() + std::min(guess, std::max(alwaysAllowed, mostTimesWritten * written));
    if (wanted <= mostBytes) m_out.ensureBuffer(static_cast<unsigned int>(wanted));
  }

  EncodingConvert& m_converter;
  From m_from;
  To m_to;
  const unsigned char* m_begin;
  const unsigned char* m_in;
  const unsigned char* m_end;
  const unsigned int m_blockLength;
  DataBuffer& m_out;
  LogBase& m_log;
  std::size_t m_sizeBefore = m_out.getSize();
  bool m_isWhole = true;
  bool m_isOdd = false;  // so many bytes have been decoded
  DataBuffer m_pivot;
  unsigned char m_storage[2 * sourceBytesPerBlock + 64];  // not initialised
};

template <typename From, typename To>
bool pivotBetween(const Conversion& conversion, const char* announcement,
                  unsigned int blockLength) {
  if (conversion.log.m_verboseLogging) conversion.log.logInfo(announcement);
  return Pivot<From, To>(conversion, blockLength).run();
}

}  // namespace

unsigned int pivotBlockLength(const Conversion& conversion) {
  constexpr unsigned int mostThatFits = mostBytes / 2 - 4;
  const bool isOneBlock = conversion.log.m_verboseLogging ||
                          errorActionOf(conversion.converter) == ErrorAction::reconvert ||
                          conversion.numBytes > mostThatFits ||
                          (conversion.to != codePageUtf8 && !conversion.to.isRouted());
  return isOneBlock ? std::max(conversion.numBytes, fewestBytesPerBlock) : sourceBytesPerBlock;
}

bool pivot(const Conversion& conversion, unsigned int blockLength) {
  if (conversion.from == codePageUtf8) {
    return pivotBetween<FromUtf8, ToTable>(
        conversion, "Converting from utf-8 using utf-16 as a pivot table...", blockLength);
  }
  if (conversion.to == codePageUtf8) {
    return pivotBetween<FromTable, ToUtf8>(
        conversion, "Converting to utf-8 using utf-16 as a pivot table...", blockLength);
  }
  return pivotBetween<FromTable, ToTable>(
      conversion, "Converting by using utf-16 as a pivot table...", blockLength);
}

}  // namespace quorvel
