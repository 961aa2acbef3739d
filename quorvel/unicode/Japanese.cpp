// ISO-2022-JP (RFC 1468, with JIS-Roman and katakana) and Shift_JIS. The loops of the
// kernel do all that can be reckoned; here is the last block, rows 89 to 92, which
// has a table, and what becomes of that which is no such text.

#include "quorvel/unicode/Japanese.h"

#include <cstddef>

#include "quorvel/kernel/Jis.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/pages/LastBlock.hpp"
#include "quorvel/unicode/Iso2022.hpp"

namespace quorvel {

namespace {

using iso2022::Bytes;
using iso2022::Output;
using jis::Place;
using jis::Set;

constexpr unsigned int cellsPerRow = 94;

// Row 2, cell 14: the geta mark, printed where a type was missing.
constexpr unsigned int getaMark = 0x222E;

constexpr unsigned int noCode = 0;

// --- The last block ---------------------------------------------------------

unsigned int lastBlockCode(const unsigned char* block, std::size_t index) {
  return static_cast<unsigned int>(block[2 * index] << 8 | block[2 * index + 1]);
}

unsigned int sjisFromLastBlock(unsigned char lead, unsigned char trail,
                               const unsigned char* lastBlock) {
  const Place place = jis::placeFromJis(lead, trail);
  const unsigned int index = (place.row - jis::firstLastBlockRow) * cellsPerRow + place.cell - 1;
  return lastBlockCode(lastBlock, index);
}

// The leads F0 to FC lie beyond row 94. What the last block has of them is
// written there; the rest, user-defined characters above all, has no place.
unsigned int jisFromBeyond(unsigned int code, const unsigned char* lastBlock) {
  for (unsigned int i = 0; i < jis::lastBlockRows * cellsPerRow; ++i) {
    if (lastBlockCode(lastBlock, i) != code) continue;
    return jis::jisFromPlace({jis::firstLastBlockRow + i / cellsPerRow, i % cellsPerRow + 1});
  }
  return noCode;
}

// --- Reading ----------------------------------------------------------------

class Reader {
 public:
  static constexpr unsigned int mostBytesPerTwo = 2;

  explicit Reader(const unsigned char* lastBlock) : m_lastBlock(lastBlock) {}

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    const auto loop = [this](const unsigned char* p, const unsigned char* stop,
                             unsigned char* room) {
      return kernel::loops().iso2022JpToShiftJis(p, stop, room, m_state);
    };
    const auto isAscii = [this] { return m_state.inUse() == Set::ascii; };
    return iso2022::runCopyingAbove7F(loop, isAscii, in, end, out);
  }

  std::size_t step(Bytes rest, Output& output) {
    if (rest[0] == iso2022::escape) {
      // The characters of an unknown set are read as those of the old one.
      if (iso2022::announcesSet(rest)) m_hadError = true;
      output.put(rest[0]);
      return 1;
    }
    if (rest[0] < 0x80 && (m_state.inUse() != Set::kanji || !iso2022::isGraphic(rest[0]))) {
      // contract: what the set in use has no character for is ASCII
      output.put(rest[0]);
      return 1;
    }
    if (rest.size() >= 2 && iso2022::isGraphic(rest[0]) && iso2022::isGraphic(rest[1])) {
      output.putPair(sjisFromLastBlock(rest[0], rest[1], m_lastBlock));
      return 2;
    }
    // Half a pair, or a byte with bit 7: those mean nothing in a 7-bit set, and in
    // Shift_JIS they would be taken for something else.
    m_hadError = true;
    return 1;
  }

  bool hadError() const { return m_hadError; }

 private:
  const unsigned char* m_lastBlock;
  kernel::Iso2022JpReading m_state;
  bool m_hadError = false;
};

// --- Writing ----------------------------------------------------------------

class Writer {
 public:
  static constexpr unsigned int mostBytesPerTwo = 10;

  explicit Writer(const unsigned char* lastBlock) : m_lastBlock(lastBlock) {}

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    return kernel::loops().shiftJisToIso2022Jp(in, end, out, m_set);
  }

  std::size_t step(Bytes rest, Output& output) {
    // SO, SI and escapes would switch sets for the reader.
    if (rest[0] < 0x80) {
      m_hadError = true;
      return 1;
    }
    const bool isPair = rest.size() >= 2 && jis::isSjisLead(rest[0]) && jis::isSjisTrail(rest[1]);
    putKanji(isPair ? jisFromBeyond(static_cast<unsigned int>(rest[0] << 8 | rest[1]), m_lastBlock)
                    : noCode,
             output);
    return isPair ? 2 : 1;
  }

  bool hadError() const { return m_hadError; }

  /// Ends the text in ASCII.
  bool finish(DataBuffer& out) const {
    const std::string_view sequence = jis::sequenceFor(Set::ascii);
    return m_set == Set::ascii ||
           out.append(sequence.data(), static_cast<unsigned int>(sequence.size()));
  }

 private:
  void putKanji(unsigned int code, Output& output) {
    if (m_set != Set::kanji) output.put(jis::sequenceFor(Set::kanji));
    m_set = Set::kanji;
    if (code == noCode) m_hadError = true;
    output.putPair(code == noCode ? getaMark : code);
  }

  const unsigned char* m_lastBlock;
  Set m_set = Set::ascii;
  bool m_hadError = false;
};

}  // namespace

bool Japanese::Iso2022ToShiftJis(const unsigned char* p, int n, DataBuffer& out, LogBase&) {
  m_hadError = false;
  const Bytes in = iso2022::inputOf(p, n);
  if (in.empty()) return true;
  const unsigned char* lastBlock = GetSjisFrom2022_LastBlock();
  if (!lastBlock) return false;
  Reader reader(lastBlock);
  const bool isWhole = iso2022::convert(in, out, reader);
  m_hadError = reader.hadError();
  return isWhole;
}

bool Japanese::ShiftJisToIso2022(const unsigned char* p, int n, DataBuffer& out, LogBase&) {
  m_hadError = false;
  const Bytes in = iso2022::inputOf(p, n);
  if (in.empty()) return true;
  const unsigned char* lastBlock = GetSjisFrom2022_LastBlock();
  if (!lastBlock) return false;
  Writer writer(lastBlock);
  const bool isWhole = iso2022::convert(in, out, writer) && writer.finish(out);
  m_hadError = writer.hadError();
  return isWhole;
}

const unsigned char* Japanese::GetSjisFrom2022_LastBlock() { return tableRegistry::lastBlock(); }

void Japanese::releaseLastBlock() { tableRegistry::releaseLastBlock(); }

}  // namespace quorvel
