#include "quorvel/base/Japanese.h"

#include <atomic>
#include <cstddef>
#include <memory>

#include "quorvel/base/ContentCoding.h"
#include "quorvel/base/Iso2022.h"
#include "quorvel/base/SjisLastBlock.h"
#include "quorvel/base/qvHelpers.h"

namespace quorvel {

namespace {

using iso2022::Bytes;
using iso2022::Output;

enum class Set { ascii, katakana, kanji };

std::atomic<const unsigned char*> _sjis_from_2022_lastblock{nullptr};

constexpr unsigned int cellsPerRow = 94;
constexpr unsigned int firstLastBlockRow = 89;
constexpr unsigned int lastBlockRows = 4;

// Row 2, cell 14: the geta mark, printed where a type was missing.
constexpr unsigned int getaMark = 0x222E;

constexpr unsigned int noCode = 0;

// --- Between Shift_JIS and the rows and cells of JIS X 0208 -----------------
//
// Shift_JIS lays two rows of 94 under each lead byte: the odd one on the trail
// bytes 40-7E and 80-9E, the even one on 9F-FC. The leads skip A0-DF, which are
// half-width katakana.

struct Place {
  unsigned int row;   // 1 to 94
  unsigned int cell;  // 1 to 94
};

constexpr bool isSjisLead(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

constexpr bool isSjisTrail(unsigned char byte) {
  return byte >= 0x40 && byte <= 0xFC && byte != 0x7F;
}

constexpr bool isHalfWidthKatakana(unsigned char byte) { return byte >= 0xA1 && byte <= 0xDF; }

constexpr unsigned int sjisFromPlace(Place place) {
  const unsigned int lead = (place.row - 1) / 2 + (place.row <= 62 ? 0x81 : 0xC1);
  if (place.row % 2 == 0) return lead << 8 | (place.cell + 0x9E);
  return lead << 8 | (place.cell + (place.cell < 64 ? 0x3F : 0x40));
}

constexpr Place placeFromSjis(unsigned char lead, unsigned char trail) {
  const unsigned int oddRow = 2U * (lead - (lead < 0xA0 ? 0x81U : 0xC1U)) + 1;
  if (trail >= 0x9F) return {oddRow + 1, trail - 0x9EU};
  return {oddRow, trail - (trail < 0x7F ? 0x3FU : 0x40U)};
}

constexpr unsigned int jisFromPlace(Place place) {
  return (place.row + 0x20) << 8 | (place.cell + 0x20);
}

// --- The last block ---------------------------------------------------------

constexpr bool isInLastBlock(unsigned int row) {
  return row >= firstLastBlockRow && row < firstLastBlockRow + lastBlockRows;
}

unsigned int lastBlockCode(const unsigned char* block, std::size_t index) {
  return static_cast<unsigned int>(block[2 * index] << 8 | block[2 * index + 1]);
}

unsigned int sjisFromJis(unsigned char lead, unsigned char trail, const unsigned char* lastBlock) {
  const Place place{lead - 0x20U, trail - 0x20U};
  if (!isInLastBlock(place.row)) return sjisFromPlace(place);
  const unsigned int index = (place.row - firstLastBlockRow) * cellsPerRow + place.cell - 1;
  return lastBlockCode(lastBlock, index);
}

// The leads F0 to FC lie beyond row 94. What the last block has of them is
// written there; the rest, user-defined characters above all, has no place.
unsigned int jisFromBeyond(unsigned int code, const unsigned char* lastBlock) {
  for (unsigned int i = 0; i < lastBlockRows * cellsPerRow; ++i) {
    if (lastBlockCode(lastBlock, i) != code) continue;
    return jisFromPlace({firstLastBlockRow + i / cellsPerRow, i % cellsPerRow + 1});
  }
  return noCode;
}

unsigned int jisFromSjis(unsigned char lead, unsigned char trail, const unsigned char* lastBlock) {
  if (lead < 0xF0) return jisFromPlace(placeFromSjis(lead, trail));
  return jisFromBeyond(static_cast<unsigned int>(lead << 8 | trail), lastBlock);
}

// --- Reading ----------------------------------------------------------------

struct Designation {
  std::string_view sequence;
  Set set;
};

// JIS-Roman differs from ASCII in two signs, which Shift_JIS does not tell
// apart; the two editions of the kanji set are read alike.
constexpr Designation designations[] = {
    {"\x1B(B", Set::ascii}, {"\x1B(J", Set::ascii},    {"\x1B$@", Set::kanji},
    {"\x1B$B", Set::kanji}, {"\x1B(I", Set::katakana},
};

class Reader {
 public:
  explicit Reader(const unsigned char* lastBlock) : m_lastBlock(lastBlock) {}

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
    for (const Designation& designation : designations) {
      if (!iso2022::startsWith(rest, designation.sequence)) continue;
      m_designated = designation.set;
      return designation.sequence.size();
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
    if (rest[0] < 0x21 || rest[0] > 0x5F) return carryAscii(rest[0], output);
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

constexpr std::string_view sequenceFor(Set set) {
  switch (set) {
    case Set::kanji:
      return "\x1B$B";
    case Set::katakana:
      return "\x1B(I";
    case Set::ascii:
      break;
  }
  return "\x1B(B";
}

class Writer {
 public:
  explicit Writer(const unsigned char* lastBlock) : m_lastBlock(lastBlock) {}

  std::size_t step(Bytes rest, Output& output) {
    const unsigned char byte = rest[0];
    if (byte < 0x80) {
      putAscii(byte, output);
      return 1;
    }
    if (isHalfWidthKatakana(byte)) {
      use(Set::katakana, output);
      output.put(static_cast<unsigned char>(byte & 0x7F));
      return 1;
    }
    use(Set::kanji, output);
    if (!isSjisLead(byte) || rest.size() < 2 || !isSjisTrail(rest[1])) {
      putKanji(noCode, output);
      return 1;
    }
    putKanji(jisFromSjis(byte, rest[1], m_lastBlock), output);
    return 2;
  }

  bool hadError() const { return m_hadError; }

  /// Ends the text in ASCII.
  bool finish(DataBuffer& out) const {
    const std::string_view sequence = sequenceFor(Set::ascii);
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
    output.put(sequenceFor(set));
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

// Threads that come here first at the same time each unpack a block; the one
// that publishes its own first wins and the others let theirs go.
const unsigned char* Japanese::GetSjisFrom2022_LastBlock() {
  if (const unsigned char* published = _sjis_from_2022_lastblock.load(std::memory_order_acquire)) {
    return published;
  }
  unsigned int size = 0;
  std::unique_ptr<const unsigned char[]> block(
      ContentCoding().decodeBase64(sjisLastBlockText, qvStrLen(sjisLastBlockText), &size));
  const unsigned char* published = nullptr;
  const bool isFirst = _sjis_from_2022_lastblock.compare_exchange_strong(
      published, block.get(), std::memory_order_acq_rel, std::memory_order_acquire);
  return isFirst ? block.release() : published;
}

void Japanese::releaseLastBlock() {
  delete[] _sjis_from_2022_lastblock.exchange(nullptr, std::memory_order_acq_rel);
}

}  // namespace quorvel
