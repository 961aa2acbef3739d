// A line end is written at its first character: a LF that follows a CR is left out when
// it comes, in whatever piece that is, and nothing waits for it.

#include "quorvel/text/LineEnds.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/text/CodecLoops.hpp"

namespace quorvel::text {

namespace {

constexpr unsigned int lineFeed = 0x000A;
constexpr unsigned int carriageReturn = 0x000D;
constexpr unsigned int nextLine = 0x0085;

constexpr std::ptrdiff_t bytesPerUnit = 2;

// Of each zero unit among four its sign; a unit behind one may have its sign too.
constexpr std::uint64_t zeroSigns(std::uint64_t units) {
  return (units - inEachUnit) & ~units & 0x8000 * inEachUnit;
}

class LineEndDecoder : public Decoder {
 public:
  LineEndDecoder(std::unique_ptr<Decoder> inner, LineEnds lineEnds, bool endsAtNextLine)
      : m_inner(std::move(inner)),
        m_isLonger(lineEnds == LineEnds::crLf),
        m_ends{carriageReturn * inEachUnit, (m_isLonger ? lineFeed : carriageReturn) * inEachUnit,
               (endsAtNextLine ? nextLine : carriageReturn) * inEachUnit} {}

  Decoded decode(const DecoderJob& job) override {
    m_inner->restore(m_state & ~freeBits);
    m_isBehindReturn = (m_state & behindReturn) != 0;
    m_owesFeed = (m_state & owesFeed) != 0;
    const Decoded decoded = decodeAll(job);
    m_state =
        m_inner->state() | (m_isBehindReturn ? behindReturn : 0) | (m_owesFeed ? owesFeed : 0);
    return decoded;
  }

  unsigned int lastLength() const override { return m_lastLength; }

 private:
  static constexpr State behindReturn = State{1} << 62;
  static constexpr State owesFeed = State{1} << 63;

  // Goes on until the room is full or the decoder inside stops for another reason: what
  // is left out makes room for more.
  Decoded decodeAll(const DecoderJob& job) {
    DecoderJob rest = job;
    if (m_owesFeed) {
      if (rest.out == rest.outEnd) return {rest.in, rest.out, DecoderStop::room};
      rest.out = putUnit(lineFeed, rest.out);
      m_owesFeed = false;
    }
    for (;;) {
      const Decoded decoded = decodeSome(rest);
      const bool goesOn =
          decoded.why == DecoderStop::room && m_numRead != 0 && decoded.out != rest.outEnd;
      if (decoded.why == DecoderStop::malformed) m_isBehindReturn = false;
      if (!goesOn) return decoded;
      rest.in = decoded.in;
      rest.out = decoded.out;
    }
  }

  Decoded decodeSome(const DecoderJob& job) {
    const std::ptrdiff_t units = (job.outEnd - job.out) / bytesPerUnit;
    if (!m_isLonger || units == 0) return decodeTo(job.out, job);
    if (units == 1) return decodeIntoLastUnit(job);
    // As many units as fit if each of them is a line end, at the end of the room.
    const Decoded decoded = decodeTo(job.out + (units - units / 2) * bytesPerUnit, job);
    if (m_numRead != 0 || decoded.why != DecoderStop::room) return decoded;
    // A pair that does not fit into one unit.
    return decodeTo(job.out,
                    {decoded.in, job.end, job.isLast, job.out, job.out + 2 * bytesPerUnit});
  }

  // Decodes to `raw` in the room, and rewrites what is there to its beginning.
  Decoded decodeTo(unsigned char* raw, const DecoderJob& job) {
    Decoded decoded = m_inner->decode({job.in, job.end, job.isLast, raw, job.outEnd});
    noteRead(job.in, decoded, raw);
    decoded.out = rewrite(raw, decoded.out, job.out);
    return decoded;
  }

  // The line feed of a line end waits for more room, and so does what is malformed
  // behind it.
  Decoded decodeIntoLastUnit(const DecoderJob& job) {
    const State before = m_inner->state();
    Decoded decoded = m_inner->decode({job.in, job.end, false, job.out, job.outEnd});
    if (decoded.out == job.out) {
      m_inner->restore(before);
      return decodeTo(job.out, job);
    }
    noteRead(job.in, decoded, job.out);
    unsigned char units[2 * bytesPerUnit];
    const std::ptrdiff_t length = rewrite(job.out, decoded.out, units) - units;
    m_owesFeed = length > bytesPerUnit;
    decoded.out = std::copy_n(units, std::min(length, bytesPerUnit), job.out);
    decoded.why = DecoderStop::room;
    return decoded;
  }

  void noteRead(const unsigned char* in, const Decoded& decoded, const unsigned char* raw) {
    m_numRead = decoded.out - raw;
    if (m_numRead == 0) return;
    // Where this is asked for one character has been decoded.
    m_lastLength = m_inner->lastLength();
    if (m_lastLength == 0) m_lastLength = static_cast<unsigned int>(decoded.in - in);
  }

  // Writes to `out` what becomes of the units in [in, end), which may be those at `out`
  // or stand so far behind it that none is overwritten before its turn.
  unsigned char* rewrite(const unsigned char* in, const unsigned char* end, unsigned char* out) {
    while (in != end) {
      const bool isSecond = m_isBehindReturn && loadUnit(in) == lineFeed;
      m_isBehindReturn = false;
      if (isSecond) {
        in += bytesPerUnit;
        continue;
      }
      const unsigned char* stop = findEnd(in, end);
      if (in != out) std::memmove(out, in, static_cast<std::size_t>(stop - in));
      out += stop - in;
      if (stop == end) return out;
      m_isBehindReturn = loadUnit(stop) == carriageReturn;
      if (m_isLonger) out = putUnit(carriageReturn, out);
      out = putUnit(lineFeed, out);
      in = stop + bytesPerUnit;
    }
    return out;
  }

  // The first unit that is rewritten, eight bytes at a time.
  const unsigned char* findEnd(const unsigned char* in, const unsigned char* end) const {
    for (; end - in >= runLength; in += runLength) {
      if (const std::uint64_t found = endsIn(loadRun(in))) {
        return in + std::countr_zero(found) / 16 * bytesPerUnit;
      }
    }
    while (in != end && endsIn(loadUnit(in)) == 0) in += bytesPerUnit;
    return in;
  }

  // The sign of the first of four units that is rewritten, and perhaps of others behind
  // it; zero when there is none. Units of zero are no ends.
  std::uint64_t endsIn(std::uint64_t units) const {
    return zeroSigns(units ^ m_ends[0]) | zeroSigns(units ^ m_ends[1]) |
           zeroSigns(units ^ m_ends[2]);
  }

  std::unique_ptr<Decoder> m_inner;
  bool m_isLonger;
  std::uint64_t m_ends[3];  // each in four units

  // Of the call.
  bool m_isBehindReturn = false;
  bool m_owesFeed = false;
  std::ptrdiff_t m_numRead = 0;
  unsigned int m_lastLength = 0;
};

}  // namespace

std::unique_ptr<Decoder> withLineEnds(std::unique_ptr<Decoder> decoder, Encoding encoding,
                                      LineEnds lineEnds) {
  if (lineEnds == LineEnds::keep) return decoder;
  const bool endsAtNextLine = encoding.family() == EncodingFamily::ebcdic;
  return std::make_unique<LineEndDecoder>(std::move(decoder), lineEnds, endsAtNextLine);
}

}  // namespace quorvel::text
