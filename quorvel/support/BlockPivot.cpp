#include "quorvel/support/BlockPivot.hpp"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/InLogContext.hpp"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ErrorPolicy.hpp"
#include "quorvel/support/MarkerFlags.hpp"
#include "quorvel/support/Steps.hpp"

namespace quorvel {

namespace {

// Each side: `open` finds what it needs and leaves the lines in the log that the
// step leaves there for the whole text; the other function is the step.

struct FromUtf8 {
  explicit FromUtf8(int) {}

  bool open(LogBase& log) const {
    return inLogContext(log, utf8DecodingContext, [] { return true; });
  }
  const unsigned char* decode(EncodingConvert& converter, const SourcePart& part, DataBuffer& pivot,
                              LogBase& log) const {
    return decodeUtf8(converter, part, pivot, log);
  }
};

struct FromTable {
  explicit FromTable(int number) : codePage(number) {}

  bool open(LogBase& log) {
    return inLogContext(log, tableDecodingContext, [&] {
      table = tableToDecode(codePage, log);
      if (!table || !table->lookup) return table != nullptr;
      return inLogContext(log, lookupDecodingContext, [] { return true; });
    });
  }
  const unsigned char* decode(EncodingConvert& converter, const SourcePart& part, DataBuffer& pivot,
                              LogBase& log) const {
    return decodeByTable(converter, *table, part, pivot, log);
  }

  int codePage;
  const ToUnicodeTable* table = nullptr;
};

struct ToUtf8 {
  static constexpr const char* context = utf8EncodingContext;
  static constexpr bool takesHalfUnits = false;

  explicit ToUtf8(int) {}

  bool open(LogBase&) const { return true; }
  Encoded encode(EncodingConvert& converter, const UnitsPart& part, DataBuffer& out,
                 LogBase&) const {
    return encodeUtf8(converter, part, out);
  }
};

struct ToTable {
  static constexpr const char* context = tableEncodingContext;
  static constexpr bool takesHalfUnits = true;

  explicit ToTable(int number) : codePage(number) {}

  bool open(LogBase& log) { return (table = tableToEncode(codePage, log)) != nullptr; }
  Encoded encode(EncodingConvert& converter, const UnitsPart& part, DataBuffer& out,
                 LogBase& log) const {
    return encodeByTable(converter, *table, part, out, log);
  }

  int codePage;
  const FromUnicodeTable* table = nullptr;
};

template <typename From, typename To>
class BlockPivot {
 public:
  BlockPivot(EncodingConvert& converter, int fromCodePage, int toCodePage,
             const unsigned char* data, unsigned int numBytes, unsigned int blockLength,
             DataBuffer& out, LogBase& log)
      : m_converter(converter),
        m_from(fromCodePage),
        m_to(toCodePage),
        m_begin(data),
        m_in(data),
        m_end(data + numBytes),
        m_blockLength(blockLength),
        m_out(out),
        m_log(log) {
    m_pivot.lendStorage(m_storage, sizeof m_storage);
  }

  bool run() {
    setMarkers(m_converter, emitting);
    if (!m_from.open(m_log)) return false;
    // The encoder's step leaves no trace if there is nothing for it.
    do {
      if (!decodeBlock()) return false;
    } while (m_pivot.getSize() == 0 && m_in != m_end);
    setMarkers(m_converter, honouring);
    const bool ok =
        m_pivot.getSize() == 0 || inLogContext(m_log, To::context, [&] { return encodeAll(); });
    setMarkers(m_converter, neither);
    return ok;
  }

 private:
  bool encodeAll() {
    if (!m_to.open(m_log)) return false;
    for (;;) {
      if (!encodeBlock()) return false;
      if (m_in == m_end) return m_isWhole;
      reserveForTheRest();
      // A nested conversion may have put an end to honouring, and that stays.
      const Markers markers = markersOf(m_converter);
      setMarkers(m_converter, emitting);
      const bool isDecoded = decodeBlock();
      setMarkers(m_converter, markers);
      if (!isDecoded) return false;
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
  bool encodeBlock() {
    const bool isLast = m_in == m_end;
    const bool hasHalfUnit = isLast && m_isOdd;
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

  // As much as the rest will need if it is like the text so far; where that
  // cannot be had, each block asks for its own.
  void reserveForTheRest() {
    const Density density{static_cast<std::size_t>(m_in - m_begin),
                          std::size_t{m_out.getSize()} - m_sizeBefore};
    const auto left = static_cast<std::size_t>(m_end - m_in);
    const auto wanted = m_out.getSize() + density.expected(left) + m_blockLength;
    if (wanted <= std::numeric_limits<unsigned int>::max())
      m_out.ensureBuffer(static_cast<unsigned int>(wanted));
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
bool pivotBetween(EncodingConvert& converter, int fromCodePage, int toCodePage,
                  const unsigned char* data, unsigned int numBytes, unsigned int blockLength,
                  DataBuffer& out, LogBase& log) {
  return BlockPivot<From, To>(converter, fromCodePage, toCodePage, data, numBytes, blockLength, out,
                              log)
      .run();
}

bool isPivotSide(int codePage) { return codePage == codePageUtf8 || isRouted(codePage); }

}  // namespace

bool canPivotInBlocks(const EncodingConvert& converter, int fromCodePage, int toCodePage,
                      unsigned int numBytes, const LogBase& log) {
  constexpr unsigned int most = std::numeric_limits<unsigned int>::max() / 2 - 4;
  return !log.m_verboseLogging && converter.m_errorAction != actionReconvert && numBytes != 0 &&
         numBytes <= most && isPivotSide(fromCodePage) && isPivotSide(toCodePage);
}

bool pivotInBlocks(EncodingConvert& converter, int fromCodePage, int toCodePage,
                   const unsigned char* data, unsigned int numBytes, unsigned int blockLength,
                   DataBuffer& out, LogBase& log) {
  auto* pivot = &pivotBetween<FromTable, ToTable>;
  if (fromCodePage == codePageUtf8) pivot = &pivotBetween<FromUtf8, ToTable>;
  if (toCodePage == codePageUtf8) pivot = &pivotBetween<FromTable, ToUtf8>;
  return pivot(converter, fromCodePage, toCodePage, data, numBytes, blockLength, out, log);
}

}  // namespace quorvel
