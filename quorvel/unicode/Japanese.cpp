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

unsigned int sjisFromJis(unsigned char lead, unsigned char trail, const unsigned char* lastBlock) {
  const Place place = jis::placeFromJis(lead, trail);
  if (!jis::isInLastBlock(place.row)) return jis::sjisFromPlace(place);
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

unsigned int jisFromSjis(unsigned char lead, unsigned char trail, const unsigned char* lastBlock) {
  if (lead < 0xF0) return jis::jisFromPlace(jis::placeFromSjis(lead, trail));
  return jisFromBeyond(static_cast<unsigned int>(lead << 8 | trail), lastBlock);
}

// --- Reading ----------------------------------------------------------------

class Reader {
 public:
  static constexpr unsigned int mostBytesPerTwo = 2;

  explicit Reader(const unsigned char* lastBlock) : m_lastBlock(lastBlock) {}

  // The shift is not for the loop.
  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    if (m_isShifted) return {in, out};
    return kernel::iso2022().jisToShiftJis(in, end, out, m_designated);
  }

  std::size_t step(Bytes rest, Output& output) {
    if (const std::size_t used = takeSwitch(rest)) return used;
    switch (currentSet()) {
      case Set::kanji:
        return stepInKanji(rest, output);
      case Set::katakana:
        return stepInKatakana(rest, output);
      case Set::ascii:
        break;
    }
    output.put(rest[0]);
    return 1;
  }

  bool hadError() const { return m_hadError; }

 private:
  // The shift and the designation are independent: what is designated while
  // katakana are shifted in comes into use with the next SI.
  Set currentSet() const { return m_isShifted ? Set::katakana : m_designated; }

  std::size_t takeSwitch(Bytes rest) {
    if (!iso2022::isSwitch(rest[0])) return 0;
    if (rest[0] != iso2022::escape) {
      m_isShifted = rest[0] == iso2022::shiftOut;
      return 1;
    }
    if (const jis::Designation* designation = jis::findDesignation(rest)) {
      m_designated = designation->set;
      return designation->sequence.size();
    }
    // The characters of an unknown set are read as those of the old one.
    if (iso2022::announcesSet(rest)) m_hadError = true;
    return 0;
  }

  std::size_t stepInKanji(Bytes rest, Output& output) {
    if (!iso2022::isGraphic(rest[0])) return carryAscii(rest[0], output);
    if (rest.size() < 2 || !iso2022::isGraphic(rest[1])) return drop();
    output.putPair(sjisFromJis(rest[0], rest[1], m_lastBlock));
    return 2;
  }

  std::size_t stepInKatakana(Bytes rest, Output& output) {
    if (!jis::isKatakana(rest[0])) return carryAscii(rest[0], output);
    output.put(static_cast<unsigned char>(rest[0] | 0x80));
    return 1;
  }

  // Bytes with bit 7 mean nothing in a 7-bit set, and in Shift_JIS they would
  // be taken for something else.
  std::size_t carryAscii(unsigned char byte, Output& output) {
    if (byte >= 0x80) return drop();
    output.put(byte);
    return 1;
  }

  std::size_t drop() {
    m_hadError = true;
    return 1;
  }

  const unsigned char* m_lastBlock;
  Set m_designated = Set::ascii;
  bool m_isShifted = false;
  bool m_hadError = false;
};

// --- Writing ----------------------------------------------------------------

class Writer {
 public:
  static constexpr unsigned int mostBytesPerTwo = 10;

  explicit Writer(const unsigned char* lastBlock) : m_lastBlock(lastBlock) {}

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    return kernel::iso2022().shiftJisToJis(in, end, out, m_set);
  }

  std::size_t step(Bytes rest, Output& output) {
    const unsigned char byte = rest[0];
    if (byte < 0x80) {
      putAscii(byte, output);
      return 1;
    }
    if (jis::isHalfWidthKatakana(byte)) {
      use(Set::katakana, output);
      output.put(static_cast<unsigned char>(byte & 0x7F));
      return 1;
    }
    use(Set::kanji, output);
    if (!jis::isSjisLead(byte) || rest.size() < 2 || !jis::isSjisTrail(rest[1])) {
      putKanji(noCode, output);
      return 1;
    }
    putKanji(jisFromSjis(byte, rest[1], m_lastBlock), output);
    return 2;
  }

  bool hadError() const { return m_hadError; }

  /// Ends the text in ASCII.
  bool finish(DataBuffer& out) const {
    const std::string_view sequence = jis::sequenceFor(Set::ascii);
    return m_set == Set::ascii ||
           out.append(sequence.data(), static_cast<unsigned int>(sequence.size()));
  }

 private:
  // The line ends are ASCII like the rest, so every line ends in that set.
  void putAscii(unsigned char byte, Output& output) {
    if (iso2022::isSwitch(byte)) {
      m_hadError = true;
      return;
    }
    use(Set::ascii, output);
    output.put(byte);
  }

  void putKanji(unsigned int code, Output& output) {
    if (code == noCode) m_hadError = true;
    output.putPair(code == noCode ? getaMark : code);
  }

  void use(Set set, Output& output) {
    if (set == m_set) return;
    output.put(jis::sequenceFor(set));
    m_set = set;
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
