// ISO-2022-KR and KS C 5601. The loops of the kernel do all that is made of the two
// sets; here is what becomes of the rest.

#include "quorvel/unicode/Korean.h"

#include "quorvel/kernel/Target.hpp"
#include "quorvel/unicode/Iso2022.hpp"

namespace quorvel {

namespace {

using iso2022::Bytes;
using iso2022::Output;

// --- Reading ----------------------------------------------------------------

class Reader {
 public:
  static constexpr unsigned int mostBytesPerTwo = 2;

  Progress run(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    const auto loop = [this](const unsigned char* p, const unsigned char* stop,
                             unsigned char* room) {
      return kernel::loops().iso2022KrToKsc(p, stop, room, m_isShifted);
    };
    const auto isAscii = [this] { return !m_isShifted; };
    return iso2022::runCopyingAbove7F(loop, isAscii, in, end, out);
  }

  std::size_t step(Bytes rest, Output& output) {
    if (rest[0] == iso2022::escape) {
      // The characters of an unknown set are read as those of the known ones.
      if (iso2022::announcesSet(rest)) m_hadError = true;
      output.put(rest[0]);
    } else if (iso2022::isLineEnd(rest[0])) {
      output.put(rest[0]);
    } else {
      // Half a pair, or a byte with bit 7: those mean nothing in a 7-bit set, and in
      // KS C 5601 they would be taken for something else.
      m_hadError = true;
    }
    return 1;
  }

  bool hadError() const { return m_hadError; }

 private:
  bool m_isShifted = false;
  bool m_hadError = false;
};

// --- Writing ----------------------------------------------------------------

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
    return kernel::loops().kscToIso2022Kr(in, end, out, m_isShifted);
  }

  std::size_t step(Bytes rest, Output& output) {
    if (iso2022::isSwitch(rest[0])) {
      m_hadError = true;
      return 1;
    }
    // What KS C 5601 lacks is carried as it stands, so that nothing is lost.
    if (m_isShifted) output.put(iso2022::shiftIn);
    m_isShifted = false;
    output.put(rest[0]);
    if (rest.size() < 2 || !isUnifiedHangulPair(rest[0], rest[1])) return 1;
    output.put(rest[1]);
    return 2;
  }

  bool hadError() const { return m_hadError; }

  /// Ends the text in ASCII.
  bool finish(DataBuffer& out) const { return !m_isShifted || out.appendChar(iso2022::shiftIn); }

 private:
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
  constexpr std::string_view header = iso2022::koreanHeader;
  if (!out.append(header.data(), static_cast<unsigned int>(header.size()))) return false;
  Writer writer;
  const bool isWhole = iso2022::convert(in, out, writer) && writer.finish(out);
  m_hadError = writer.hadError();
  return isWhole;
}

}  // namespace quorvel
