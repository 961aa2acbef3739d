#include "quorvel/unicode/Korean.h"

#include "quorvel/kernel/Target.hpp"
#include "quorvel/unicode/Iso2022.hpp"

namespace quorvel {

namespace {

using iso2022::Bytes;
using iso2022::Output;

// Announces KS C 5601 as the set that SO brings in.
constexpr std::string_view header = "\x1B$)C";

constexpr unsigned char highBit = 0x80;

// --- Reading ----------------------------------------------------------------

class Reader {
 public:
  static constexpr unsigned int mostBytesPerTwo = 2;

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    return kernel::iso2022().isoToKsc(in, end, out, m_isShifted);
  }

  std::size_t step(Bytes rest, Output& output) {
    if (iso2022::startsWith(rest, header)) return header.size();
    const unsigned char byte = rest[0];
    if (byte == iso2022::shiftOut || byte == iso2022::shiftIn) {
      m_isShifted = byte == iso2022::shiftOut;
      return 1;
    }
    // The characters of an unknown set are read as those of the known ones.
    if (iso2022::announcesSet(rest)) m_hadError = true;
    if (m_isShifted) return stepInHangul(rest, output);
    output.put(byte);
    return 1;
  }

  bool hadError() const { return m_hadError; }

 private:
  std::size_t stepInHangul(Bytes rest, Output& output) {
    if (!iso2022::isGraphic(rest[0])) {
      // Bytes with bit 7 mean nothing in a 7-bit set, and in KS C 5601 they
      // would be taken for something else.
      if (rest[0] >= highBit) return drop();
      output.put(rest[0]);
      return 1;
    }
    if (rest.size() < 2 || !iso2022::isGraphic(rest[1])) return drop();
    output.put(static_cast<unsigned char>(rest[0] | highBit));
    output.put(static_cast<unsigned char>(rest[1] | highBit));
    return 2;
  }

  std::size_t drop() {
    m_hadError = true;
    return 1;
  }

  bool m_isShifted = false;
  bool m_hadError = false;
};

// --- Writing ----------------------------------------------------------------

constexpr bool isKsc(unsigned char byte) { return byte >= 0xA1 && byte <= 0xFE; }

// Unified Hangul adds to KS C 5601 pairs whose lead or trail lies outside it.
constexpr bool isUnifiedHangulPair(unsigned char lead, unsigned char trail) {
  const bool isTrail = (trail >= 0x41 && trail <= 0x5A) || (trail >= 0x61 && trail <= 0x7A) ||
                       (trail >= 0x81 && trail <= 0xFE);
  return lead >= 0x81 && lead <= 0xFE && isTrail;
}

class Writer {
 public:
  static constexpr unsigned int mostBytesPerTwo = 4;

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    return kernel::iso2022().kscToIso(in, end, out, m_isShifted);
  }

  std::size_t step(Bytes rest, Output& output) {
    if (rest.size() >= 2 && isKsc(rest[0]) && isKsc(rest[1])) {
      use(true, output);
      output.put(static_cast<unsigned char>(rest[0] & ~highBit));
      output.put(static_cast<unsigned char>(rest[1] & ~highBit));
      return 2;
    }
    if (iso2022::isSwitch(rest[0])) {
      m_hadError = true;
      return 1;
    }
    // What KS C 5601 lacks is carried as it stands, so that nothing is lost.
    use(false, output);
    output.put(rest[0]);
    if (rest.size() < 2 || !isUnifiedHangulPair(rest[0], rest[1])) return 1;
    output.put(rest[1]);
    return 2;
  }

  bool hadError() const { return m_hadError; }

  /// Ends the text in ASCII.
  bool finish(DataBuffer& out) const { return !m_isShifted || out.appendChar(iso2022::shiftIn); }

 private:
  void use(bool isShifted, Output& output) {
    if (isShifted == m_isShifted) return;
    output.put(isShifted ? iso2022::shiftOut : iso2022::shiftIn);
    m_isShifted = isShifted;
  }

  bool m_isShifted = false;
  bool m_hadError = false;
};

}  // namespace

bool Korean::Iso2022ToKsc(const unsigned char* p, int n, DataBuffer& out) {
  Reader reader;
  const bool isWhole = iso2022::convert(iso2022::inputOf(p, n), out, reader);
  m_hadError = reader.hadError();
  return isWhole;
}

bool Korean::KscToIso2022(const unsigned char* p, int n, DataBuffer& out) {
  m_hadError = false;
  const Bytes in = iso2022::inputOf(p, n);
  if (in.empty()) return true;
  if (!out.append(header.data(), static_cast<unsigned int>(header.size()))) return false;
  Writer writer;
  const bool isWhole = iso2022::convert(in, out, writer) && writer.finish(out);
  m_hadError = writer.hadError();
  return isWhole;
}

}  // namespace quorvel
