// ISO-2022-JP and ISO-2022-KR. What is written depends on the set in use, which
// escapes and shifts bring in; what stands in one is looked up in the table of the
// 8-bit encoding of the same characters.
//
// A line end survives in every set and returns to ASCII. What a set does not define
// is lost by itself: nothing makes it take ASCII along.

#include "quorvel/text/Iso2022Codec.hpp"

#include <algorithm>
#include <span>

#include "quorvel/kernel/Iso2022Text.hpp"
#include "quorvel/kernel/Jis.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/text/CodecLoops.hpp"

namespace quorvel::text {

namespace {

using iso2022::Bytes;
using jis::Set;

const kernel::PairsToUnits& pairsOf(const ReadingTable& reading) {
  return static_cast<const PairsToUnicode&>(*reading.table).flat;
}

// What stands at one position: a character or a loss as in `Stepped`, or something
// that only switches sets, of so many bytes.
struct Meaning {
  Stepped stepped;
  bool isSwitch = false;
};

Meaning switchOf(std::size_t length) {
  return {{Stepped::Kind::character, static_cast<unsigned int>(length)}, true};
}

// Decodes by `read(in, end, out)`, the loop to the 8-bit encoding, and the one from there,
// a stretch at a time that begins short: one with a pair that means nothing is done over
// step by step, which `slowUntil` is for.
template <typename Read>
Position decodeInTwo(const kernel::PairsToUnits& flat, Position at, const unsigned char* end,
                     Decoder::State& state, const Read& read, const unsigned char*& slowUntil) {
  constexpr std::ptrdiff_t longest = 4096;
  unsigned char scratch[longest];
  for (std::ptrdiff_t length = 64; at.in != end; length = std::min(4 * length, longest)) {
    const unsigned char* stop = at.in + std::min(end - at.in, length);
    const Decoder::State before = state;
    const Progress first = read(at.in, stop, scratch);
    const Progress second =
        kernel::loops().pairsToUnits(flat, scratch, first.out, first.out, at.out);
    if (second.in != first.out) {
      state = before;
      slowUntil = first.in;
      break;
    }
    const bool isStuck = first.why == Stop::met || first.in == at.in;
    at = {first.in, second.out};
    if (isStuck) break;
  }
  return at;
}

// A decoder of this family: `Self` says what stands at a position and has a loop for
// long stretches.
template <typename Self>
class Iso2022Decoder : public Decoder {
 public:
  Decoded decode(const DecoderJob& job) override {
    const unsigned char* in = job.in;
    unsigned char* out = job.out;
    const unsigned char* slowUntil = in;
    for (;;) {
      const std::ptrdiff_t room = (job.outEnd - out) / 2;
      if (room > 1 && in >= slowUntil) {
        const unsigned char* stop = in + std::min(job.end - in, room);
        const Position at = self().run({in, out}, stop, slowUntil);
        in = at.in;
        out = at.out;
      }
      if (in == job.end) return {in, out, DecoderStop::end};
      if (out == job.outEnd) return {in, out, DecoderStop::room};
      const State before = m_state;
      const Meaning meaning = self().read({in, job.end}, job.isLast);
      const Stepped& stepped = meaning.stepped;
      if (stepped.kind == Stepped::Kind::cutOff) return {in, out, DecoderStop::cutOff};
      if (stepped.kind == Stepped::Kind::malformed) {
        return {in, out, DecoderStop::malformed, stepped.length};
      }
      if (!meaning.isSwitch) {
        if (job.outEnd - out < 2) {
          m_state = before;
          return {in, out, DecoderStop::room};
        }
        out = putCharacter(stepped.character, out);
        m_lastLength = stepped.length;
      }
      in += stepped.length;
    }
  }

  unsigned int lastLength() const override { return m_lastLength; }

 private:
  Self& self() { return static_cast<Self&>(*this); }

  unsigned int m_lastLength = 0;
};

// A pair of graphic bytes in a set of pairs, `unit` being what it stands for.
template <typename UnitOf>
Meaning readPair(Bytes text, bool isLast, const UnitOf& unitOf) {
  if (text.size() < 2) return {cutOffAfter(1, isLast)};
  if (!iso2022::isGraphic(text[1])) return {malformedFor(1)};
  const unsigned int unit = unitOf(text[0], text[1]);
  return {unit != 0 ? characterOf(unit, 2) : malformedFor(2)};
}

// --- ISO-2022-JP, reading ----------------------------------------------------

// The state of a text: the designated set in the low bits; above them the shift, which is
// independent.
constexpr std::uint64_t japaneseShift = 0x10;

kernel::Iso2022JpReading unpacked(Decoder::State state) {
  return {static_cast<Set>(state & ~japaneseShift), (state & japaneseShift) != 0};
}

Decoder::State packed(const kernel::Iso2022JpReading& reading) {
  return static_cast<Decoder::State>(reading.designated) | (reading.isShifted ? japaneseShift : 0);
}

class JapaneseDecoder : public Iso2022Decoder<JapaneseDecoder> {
 public:
  explicit JapaneseDecoder(std::shared_ptr<const ReadingTable> table)
      : m_table(std::move(table)), m_pairs(pairsOf(*m_table)), m_lastBlock(jisLastBlock()) {}

  Position run(Position at, const unsigned char* stop, const unsigned char*& slowUntil) {
    const auto loop = [this](const unsigned char* in, const unsigned char* end,
                             unsigned char* out) {
      kernel::Iso2022JpReading reading = unpacked(m_state);
      const Progress progress = kernel::loops().iso2022JpToShiftJis(in, end, out, reading);
      m_state = packed(reading);
      return progress;
    };
    return decodeInTwo(m_pairs, at, stop, m_state, loop, slowUntil);
  }

  Meaning read(Bytes text, bool isLast) {
    const unsigned char byte = text[0];
    if (byte >= 0x80) return {malformedFor(1)};
    if (iso2022::isSwitch(byte)) return readSwitch(text, isLast);
    if (iso2022::isLineEnd(byte)) m_state = initialState;
    if (!iso2022::isGraphic(byte)) return {characterOf(byte, 1)};
    switch (unpacked(m_state).inUse()) {
      case Set::kanji:
        return readPair(text, isLast, [this](unsigned char lead, unsigned char trail) {
          return unitOfKanji(lead, trail);
        });
      case Set::katakana:
        return {jis::isKatakana(byte) ? characterOf(unitOfKatakana(byte), 1) : malformedFor(1)};
      case Set::ascii:
        break;
    }
    return {characterOf(byte, 1)};
  }

 private:
  Meaning readSwitch(Bytes text, bool isLast) {
    if (text[0] == iso2022::shiftOut) {
      m_state |= japaneseShift;
      return switchOf(1);
    }
    if (text[0] == iso2022::shiftIn) {
      m_state &= ~japaneseShift;
      return switchOf(1);
    }
    if (!isLast && jis::isDesignationCutOff(text)) return {cutOffAfter(text.size(), false)};
    const jis::Designation* designation = jis::findDesignation(text);
    if (!designation) return {malformedFor(1)};
    m_state = (m_state & japaneseShift) | static_cast<State>(designation->set);
    return switchOf(designation->sequence.size());
  }

  unsigned int unitOfKanji(unsigned char lead, unsigned char trail) const {
    const jis::Place place = jis::placeFromJis(lead, trail);
    return m_pairs.units[jis::sjisFromPlace(place, m_lastBlock->codes)];
  }

  static unsigned int unitOfKatakana(unsigned char byte) { return 0xFF40U + byte; }

  std::shared_ptr<const ReadingTable> m_table;
  const kernel::PairsToUnits& m_pairs;
  std::shared_ptr<const JisLastBlock> m_lastBlock;
};

// --- ISO-2022-JP, writing ----------------------------------------------------

unsigned char* putSequence(std::string_view sequence, unsigned char* out) {
  return std::copy(sequence.begin(), sequence.end(), out);
}

// Units that are written by way of the 8-bit encoding at a time.
constexpr std::ptrdiff_t bytesOfUnitsAtOnce = 4096;

// Encodes by the loop to the 8-bit encoding and `on(begin, end, out)`, the one from there.
// What the second leaves is taken back: `unitsIn(begin, end)` says how many units stand
// in front of it.
template <typename On, typename UnitsIn>
Position encodeInTwo(const kernel::UnitsToPairs& flat, Position at, const unsigned char* end,
                     const On& on, const UnitsIn& unitsIn) {
  unsigned char scratch[bytesOfUnitsAtOnce];
  while (at.in != end) {
    const unsigned char* stop = at.in + std::min(end - at.in, bytesOfUnitsAtOnce);
    const Progress first = kernel::loops().unitsToPairs(flat, at.in, stop, scratch);
    const Progress second = on(scratch, first.out, at.out);
    const bool isAll = second.in == first.out;
    at.in = isAll ? first.in : at.in + 2 * unitsIn(scratch, second.in);
    at.out = second.out;
    if (!isAll || first.in != stop) break;
  }
  return at;
}

const kernel::UnitsToPairs& pairsOf(const WritingTable& writing) {
  return static_cast<const UnicodeToPairs&>(*writing.table).flat;
}

// How many characters a text has of which `isLead` says what begins a pair.
template <typename IsLead>
std::ptrdiff_t countCharacters(const unsigned char* in, const unsigned char* end,
                               const IsLead& isLead) {
  std::ptrdiff_t count = 0;
  for (; in < end; in += isLead(*in) ? 2 : 1) ++count;
  return count;
}

class JapaneseEncoder : public Encoder {
 public:
  explicit JapaneseEncoder(std::shared_ptr<const WritingTable> table)
      : m_table(std::move(table)), m_lastBlock(jisLastBlock()) {}

  Encoded encode(const EncoderJob& job) override {
    const auto loop = [this](const unsigned char* in, const unsigned char* end,
                             unsigned char* out) -> Position {
      if ((m_state & japaneseShift) != 0) return {in, out};
      auto set = static_cast<Set>(m_state);
      const auto on = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
        return kernel::loops().shiftJisToIso2022Jp(p, stop, room, set);
      };
      const auto count = [](const unsigned char* p, const unsigned char* stop) {
        return countCharacters(p, stop, jis::isSjisLead);
      };
      const Position at = encodeInTwo(pairsOf(*m_table), {in, out}, end, on, count);
      m_state = static_cast<State>(set);
      return at;
    };
    return encodeBy(loop, 8, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    if (character < 0x80) {
      const auto byte = static_cast<unsigned char>(character);
      if (iso2022::isSwitch(byte)) return nullptr;
      out = use(Set::ascii, out);
      *out++ = byte;
      return out;
    }
    if (character - 0xFF61 <= 0xFF9F - 0xFF61) {
      out = use(Set::katakana, out);
      *out++ = static_cast<unsigned char>(character - 0xFF40);
      return out;
    }
    const unsigned int code = jisOf(character);
    if (code == 0) return nullptr;
    out = use(Set::kanji, out);
    *out++ = static_cast<unsigned char>(code >> 8);
    *out++ = static_cast<unsigned char>(code);
    return out;
  }

  void follow(Decoder::State state, std::span<const unsigned char>) override { m_state = state; }

  unsigned char* comeInStepWith(Decoder::State state, unsigned char* out) override {
    if (m_state == state) return out;
    out = use(unpacked(state).designated, out);
    if ((state & japaneseShift) != 0) *out++ = iso2022::shiftOut;
    m_state = state;
    return out;
  }

  unsigned char* interrupt(unsigned char* out) override { return use(Set::ascii, out); }

  unsigned char* finish(unsigned char* out) override { return use(Set::ascii, out); }

 private:
  unsigned int jisOf(char32_t character) const {
    if (character >= 0x10000) return 0;
    const unsigned int code = m_table->codeOf(character);
    if (code < 0x100) return 0;
    return jis::jisFromSjis(static_cast<unsigned char>(code), static_cast<unsigned char>(code >> 8),
                            m_lastBlock->codes);
  }

  // Text that was copied may end shifted.
  unsigned char* use(Set set, unsigned char* out) {
    if ((m_state & japaneseShift) != 0) *out++ = iso2022::shiftIn;
    m_state &= ~japaneseShift;
    if (m_state == static_cast<State>(set)) return out;
    m_state = static_cast<State>(set);
    return putSequence(jis::sequenceFor(set), out);
  }

  std::shared_ptr<const WritingTable> m_table;
  std::shared_ptr<const JisLastBlock> m_lastBlock;
};

// --- ISO-2022-KR -------------------------------------------------------------

constexpr unsigned char highBit = 0x80;

class KoreanDecoder : public Iso2022Decoder<KoreanDecoder> {
 public:
  explicit KoreanDecoder(std::shared_ptr<const ReadingTable> table)
      : m_table(std::move(table)), m_pairs(pairsOf(*m_table)) {}

  Position run(Position at, const unsigned char* stop, const unsigned char*& slowUntil) {
    const auto loop = [this](const unsigned char* in, const unsigned char* end,
                             unsigned char* out) {
      bool isShifted = m_state != initialState;
      const Progress progress = kernel::loops().iso2022KrToKsc(in, end, out, isShifted);
      m_state = isShifted ? shifted : initialState;
      return progress;
    };
    return decodeInTwo(m_pairs, at, stop, m_state, loop, slowUntil);
  }

  Meaning read(Bytes text, bool isLast) {
    const unsigned char byte = text[0];
    if (byte >= 0x80) return {malformedFor(1)};
    if (byte == iso2022::escape) {
      if (iso2022::startsWith(text, iso2022::koreanHeader))
        return switchOf(iso2022::koreanHeader.size());
      if (!isLast && iso2022::isCutOff(text, iso2022::koreanHeader))
        return {cutOffAfter(text.size(), false)};
      return {malformedFor(1)};
    }
    if (iso2022::isSwitch(byte)) {
      m_state = byte == iso2022::shiftOut ? shifted : initialState;
      return switchOf(1);
    }
    if (iso2022::isLineEnd(byte)) m_state = initialState;
    if (m_state == initialState || !iso2022::isGraphic(byte)) return {characterOf(byte, 1)};
    return readPair(text, isLast, [this](unsigned char lead, unsigned char trail) {
      return unitOf(lead, trail);
    });
  }

 private:
  static constexpr State shifted = 1;

  unsigned int unitOf(unsigned char lead, unsigned char trail) const {
    return m_pairs.units[(lead | highBit) << 8 | (trail | highBit)];
  }

  std::shared_ptr<const ReadingTable> m_table;
  const kernel::PairsToUnits& m_pairs;
};

class KoreanEncoder : public Encoder {
 public:
  explicit KoreanEncoder(std::shared_ptr<const WritingTable> table) : m_table(std::move(table)) {}

  Encoded encode(const EncoderJob& job) override {
    const auto loop = [this](const unsigned char* in, const unsigned char* end,
                             unsigned char* out) -> Position {
      // The first character brings the header.
      if ((m_state & announced) == 0) return {in, out};
      bool isShifted = (m_state & shifted) != 0;
      const auto on = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
        return kernel::loops().kscToIso2022Kr(p, stop, room, isShifted);
      };
      const auto isLead = [](unsigned char byte) { return byte >= highBit; };
      const auto count = [&](const unsigned char* p, const unsigned char* stop) {
        return countCharacters(p, stop, isLead);
      };
      const Position at = encodeInTwo(pairsOf(*m_table), {in, out}, end, on, count);
      m_state = announced | (isShifted ? shifted : 0);
      return at;
    };
    return encodeBy(loop, 4, *this, job);
  }

  unsigned char* encodeOne(char32_t character, unsigned char* out) override {
    if (character < 0x80) {
      const auto byte = static_cast<unsigned char>(character);
      if (iso2022::isSwitch(byte)) return nullptr;
      out = use(0, out);
      *out++ = byte;
      return out;
    }
    const unsigned int code = character < 0x10000 ? m_table->codeOf(character) : 0;
    const auto lead = static_cast<unsigned char>(code);
    const auto trail = static_cast<unsigned char>(code >> 8);
    if (!isKsc(lead) || !isKsc(trail)) return nullptr;
    out = use(shifted, out);
    *out++ = static_cast<unsigned char>(lead & ~highBit);
    *out++ = static_cast<unsigned char>(trail & ~highBit);
    return out;
  }

  void follow(Decoder::State state, std::span<const unsigned char>) override {
    m_state = announced | (state != Decoder::initialState ? shifted : 0);
  }

  unsigned char* comeInStepWith(Decoder::State state, unsigned char* out) override {
    return use(state != Decoder::initialState ? shifted : 0, out);
  }

  // Nothing may stand in front of the header.
  unsigned char* interrupt(unsigned char* out) override { return use(0, out); }

  unsigned char* finish(unsigned char* out) override {
    return m_state == initialState ? out : use(0, out);
  }

 private:
  static constexpr State announced = 1;
  static constexpr State shifted = 2;

  static bool isKsc(unsigned char byte) {
    return byte >= highBit && iso2022::isGraphic(static_cast<unsigned char>(byte & ~highBit));
  }

  unsigned char* use(State shift, unsigned char* out) {
    if ((m_state & announced) == 0) out = putSequence(iso2022::koreanHeader, out);
    if ((m_state & shifted) != shift) *out++ = shift != 0 ? iso2022::shiftOut : iso2022::shiftIn;
    m_state = announced | shift;
    return out;
  }

  std::shared_ptr<const WritingTable> m_table;
};

}  // namespace

std::unique_ptr<Decoder> makeJapaneseDecoder(std::shared_ptr<const ReadingTable> shiftJis) {
  return std::make_unique<JapaneseDecoder>(std::move(shiftJis));
}

std::unique_ptr<Encoder> makeJapaneseEncoder(std::shared_ptr<const WritingTable> shiftJis) {
  return std::make_unique<JapaneseEncoder>(std::move(shiftJis));
}

std::unique_ptr<Decoder> makeKoreanDecoder(std::shared_ptr<const ReadingTable> hangul) {
  return std::make_unique<KoreanDecoder>(std::move(hangul));
}

std::unique_ptr<Encoder> makeKoreanEncoder(std::shared_ptr<const WritingTable> hangul) {
  return std::make_unique<KoreanEncoder>(std::move(hangul));
}

}  // namespace quorvel::text
