// The table-driven encodings: single-byte pages and the East Asian multibyte ones,
// the three-byte codes of EUC-JP and the four-byte codes of GB18030 with them.

#include "quorvel/text/PageCodec.hpp"

#include "quorvel/kernel/Target.hpp"
#include "quorvel/text/CodecLoops.hpp"

namespace quorvel::text {

namespace {

// --- Reading -----------------------------------------------------------------

class ByteDecoder : public Decoder {
 public:
  explicit ByteDecoder(std::shared_ptr<const ReadingTable> table) : m_table(std::move(table)) {}

  Decoded decode(const DecoderJob& job) override {
    const kernel::BytesToUnits& bytes = static_cast<const BytesToUnicode&>(*m_table->table).flat;
    const auto loop = [&](const unsigned char* in, const unsigned char* stop, const unsigned char*,
                          unsigned char* out) {
      return kernel::loops().bytesToUnits(bytes, in, stop, out);
    };
    const auto step = [&](const unsigned char* in, const unsigned char*, bool) {
      const unsigned int unit = bytes.units[*in];
      return unit != 0 || *in == 0 ? characterOf(unit, 1) : malformedFor(1);
    };
    return decodeBy(loop, step, job);
  }

 private:
  std::shared_ptr<const ReadingTable> m_table;
};

constexpr bool isAscii(unsigned char byte) { return byte < 0x80; }
constexpr bool isEucByte(unsigned char byte) { return byte >= 0xA1 && byte <= 0xFE; }
constexpr bool isDigit(unsigned char byte) { return byte >= 0x30 && byte <= 0x39; }
constexpr bool isGbLead(unsigned char byte) { return byte >= 0x81 && byte <= 0xFE; }

class MultiByteDecoder : public Decoder {
 public:
  explicit MultiByteDecoder(std::shared_ptr<const ReadingTable> table)
      : m_table(std::move(table)),
        m_pairs(static_cast<const PairsToUnicode&>(*m_table->table).flat) {}

  Decoded decode(const DecoderJob& job) override {
    const auto loop = [this](const unsigned char* in, const unsigned char* stop,
                             const unsigned char* end, unsigned char* out) {
      return kernel::loops().pairsToUnits(m_pairs, in, stop, end, out);
    };
    const auto stepAt = [this](const unsigned char* in, const unsigned char* end, bool isLast) {
      return step(in, end, isLast);
    };
    return decodeBy(loop, stepAt, job);
  }

 private:
  // A code of several bytes is tried before its first byte alone.
  Stepped step(const unsigned char* in, const unsigned char* end, bool isLast) const {
    const auto available = static_cast<std::size_t>(end - in);
    if (!m_table->mayLead[*in]) return stepAlone(in);
    if (available < 2) {
      return isLast && m_table->leadsAlone[*in] ? stepAlone(in) : cutOffAfter(available, isLast);
    }
    if (m_pairs.isLead[*in]) {
      const unsigned int unit = m_pairs.units[in[0] << 8 | in[1]];
      if (unit != 0) return characterOf(unit, 2);
    }
    if (!m_table->threeByte.empty() && *in == 0x8F) return stepThree(in, available, isLast);
    if (!m_table->fourByte.empty() && isDigit(in[1])) return stepFour(in, available, isLast);
    const Stepped alone = stepAlone(in);
    if (alone.kind == Stepped::Kind::character || !m_table->leads[*in]) return alone;
    return malformedFor(isAscii(in[1]) ? 1 : 2);
  }

  Stepped stepAlone(const unsigned char* in) const {
    const bool isLowerAscii = m_pairs.isLowerAscii && isAscii(*in);
    const unsigned int unit = isLowerAscii            ? *in
                              : m_table->mayLead[*in] ? m_table->leadsAlone[*in]
                                                      : m_pairs.bytes[*in];
    return unit != 0 || *in == 0 ? characterOf(unit, 1) : malformedFor(1);
  }

  // JIS X 0212 behind 8F.
  Stepped stepThree(const unsigned char* in, std::size_t available, bool isLast) const {
    if (isAscii(in[1])) return malformedFor(1);
    if (!isEucByte(in[1])) return malformedFor(2);
    if (available < 3) return cutOffAfter(available, isLast);
    if (isAscii(in[2])) return malformedFor(2);
    const unsigned int unit =
        isEucByte(in[2]) ? m_table->threeByte[(in[1] - 0xA1U) * 94 + (in[2] - 0xA1U)] : 0;
    return unit != 0 ? characterOf(unit, 3) : malformedFor(3);
  }

  Stepped stepFour(const unsigned char* in, std::size_t available, bool isLast) const {
    if (available > 2 && !isGbLead(in[2])) return malformedFor(1);
    if (available > 3 && !isDigit(in[3])) return malformedFor(1);
    if (available < 4) return cutOffAfter(available, isLast);
    const unsigned int number =
        ((in[0] - 0x81U) * 10 + (in[1] - 0x30U)) * 1260 + (in[2] - 0x81U) * 10 + (in[3] - 0x30U);
    const auto behind = std::upper_bound(
        m_table->fourByte.begin(), m_table->fourByte.end(), number,
        [](unsigned int wanted, const FourByteRange& range) { return wanted < range.first; });
    if (behind == m_table->fourByte.begin()) return malformedFor(4);
    const FourByteRange& range = behind[-1];
    const unsigned int index = number - range.first;
    return index < range.count ? characterOf(range.character + index, 4) : malformedFor(4);
  }

  std::shared_ptr<const ReadingTable> m_table;
  const kernel::PairsToUnits& m_pairs;
};

// --- Writing -----------------------------------------------------------------

unsigned char* putCode(unsigned int code, unsigned char* out) {
  *out++ = static_cast<unsigned char>(code);
  if (code >= 0x100) *out++ = static_cast<unsigned char>(code >> 8);
  return out;
}

class PageEncoder : public Encoder {
 public:
  explicit PageEncoder(std::shared_ptr<const WritingTable> table) : m_table(std::move(table)) {}

  Encoded encode(const EncoderJob& job) override {
    if (m_table->table->kind != FromUnicodeTable::Kind::pairs) {
      const auto loop = [&flat = static_cast<const UnicodeToBytes&>(*m_table->table).flat](
                            auto... text) { return kernel::loops().unitsToBytes(flat, text...); };
      return encodeBy(loop, 1, *this, job);
    }
    const auto loop = [&flat = static_cast<const UnicodeToPairs&>(*m_table->table).flat](
                          auto... text) { return kernel::loops().unitsToPairs(flat, text...); };
    return encodeBy(loop, 2, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    if (character == 0) {
      *out++ = 0;
      return out;
    }
    if (character < 0x10000) {
      if (const unsigned int code = m_table->codeOf(character)) return putCode(code, out);
    }
    return encodeFour(character, out);
  }

  unsigned char* encodeLookalike(char32_t character, unsigned char* out) override {
    const auto fit =
        std::lower_bound(m_table->bestFits.begin(), m_table->bestFits.end(), character,
                         [](const BestFit& row, char32_t wanted) { return row.unit < wanted; });
    if (fit == m_table->bestFits.end() || fit->unit != character) return nullptr;
    return putCode(fit->code, out);
  }

 private:
  unsigned char* encodeFour(char32_t character, unsigned char* out) const {
    const auto behind = std::upper_bound(
        m_table->fourByte.begin(), m_table->fourByte.end(), character,
        [](char32_t wanted, const FourByteRange& range) { return wanted < range.character; });
    if (behind == m_table->fourByte.begin()) return nullptr;
    const FourByteRange& range = behind[-1];
    const unsigned int index = character - range.character;
    if (index >= range.count) return nullptr;
    const unsigned int number = range.first + index;
    *out++ = static_cast<unsigned char>(0x81 + number / 12600);
    *out++ = static_cast<unsigned char>(0x30 + number / 1260 % 10);
    *out++ = static_cast<unsigned char>(0x81 + number / 10 % 126);
    *out++ = static_cast<unsigned char>(0x30 + number % 10);
    return out;
  }

  std::shared_ptr<const WritingTable> m_table;
};

}  // namespace

std::unique_ptr<Decoder> makePageDecoder(std::shared_ptr<const ReadingTable> table) {
  if (table->table->kind == ToUnicodeTable::Kind::bytes)
    return std::make_unique<ByteDecoder>(std::move(table));
  return std::make_unique<MultiByteDecoder>(std::move(table));
}

std::unique_ptr<Encoder> makePageEncoder(std::shared_ptr<const WritingTable> table) {
  return std::make_unique<PageEncoder>(std::move(table));
}

}  // namespace quorvel::text
