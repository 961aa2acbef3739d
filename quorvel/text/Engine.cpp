#include "quorvel/text/Engine.hpp"

#include <algorithm>
#include <utility>

#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/text/Codecs.hpp"
#include "quorvel/text/LineEnds.hpp"
#include "quorvel/text/Refusal.hpp"

namespace quorvel::text {

namespace {

// What begins with the mark of either order, for encodings that have two.
Encoding otherOrder(Encoding encoding) {
  if (encoding == Encoding::utf16le()) return Encoding::utf16be();
  if (encoding == Encoding::utf16be()) return Encoding::utf16le();
  if (!isWide(encoding)) return encoding;
  return isLittleEndianUtf32(encoding) ? Encoding::utf32be() : Encoding::utf32le();
}

std::span<const unsigned char> markOf(Encoding encoding) {
  static constexpr unsigned char utf8[] = {0xEF, 0xBB, 0xBF};
  static constexpr unsigned char lowFirst[] = {0xFF, 0xFE, 0x00, 0x00};
  static constexpr unsigned char highFirst[] = {0x00, 0x00, 0xFE, 0xFF};
  if (encoding == Encoding::utf8()) return utf8;
  if (encoding == Encoding::utf16le()) return std::span(lowFirst).first(2);
  if (encoding == Encoding::utf16be()) return std::span(highFirst).last(2);
  if (!isWide(encoding)) return {};
  return isLittleEndianUtf32(encoding) ? std::span(lowFirst) : std::span(highFirst);
}

enum class Begins { yes, no, perhaps };

Begins beginsWith(const Window& window, std::span<const unsigned char> mark) {
  const auto count = std::min(static_cast<std::size_t>(window.end - window.begin), mark.size());
  if (mark.empty() ||
      !std::equal(mark.begin(), mark.begin() + static_cast<std::ptrdiff_t>(count), window.begin)) {
    return Begins::no;
  }
  if (count == mark.size()) return Begins::yes;
  return window.isLast ? Begins::no : Begins::perhaps;
}

// Decodes one character and no more; nothing where none is whole.
Decoded decodeOne(Decoder& decoder, DecoderJob job) {
  const Decoder::State before = decoder.state();
  for (const std::ptrdiff_t units : {1, 2}) {
    job.outEnd = job.out + 2 * units;
    const Decoded decoded = decoder.decode(job);
    if (decoded.out != job.out || decoded.why != DecoderStop::room) return decoded;
    decoder.restore(before);
  }
  return {job.in, job.out, DecoderStop::room};
}

Window firstOf(const Window& window, std::size_t most) {
  Window part = window;
  if (static_cast<std::size_t>(window.end - window.begin) > most) {
    part.end = window.begin + most;
    part.isLast = false;
  }
  return part;
}

// Whether the three bytes that ED and `second` begin are one loss on their way to `to`: the
// half that stands for a byte on its way back to where bytes are, any other half on its way
// back to UTF-16 or UTF-32, where it has come from.
bool isPreservedFor(Encoding to, unsigned char second) {
  const bool isOfByte = (second & 0xFE) == 0xB2;
  return isTransformation(to) ? second >= 0xA0 && second <= 0xBF && !isOfByte : isOfByte;
}

// What reaches back may begin in front of the window, of which there may be none.
const unsigned char* behindLoss(const Decoded& lost) {
  return lost.in + (lost.length > lost.back ? lost.length - lost.back : 0);
}

bool isSame(Encoding a, Encoding b) {
  // 65005 and 65006 are UTF-32 too.
  return a == b || (isWide(a) && isWide(b) && markOf(a).data() == markOf(b).data() &&
                    markOf(a).size() == markOf(b).size());
}

}  // namespace

// --- Setting up --------------------------------------------------------------

Transcoder::Engine::Engine(Encoding from, Encoding to, Options options)
    : m_from(from),
      m_to(to),
      m_options(std::move(options)),
      m_encoder(makeEncoder(to)),
      m_sides{sideFor(from), sideFor(otherOrder(from))},
      m_outlet(*m_encoder),
      m_replacement(from, to, m_options, *m_encoder) {
  reset();
}

Transcoder::Engine::Side Transcoder::Engine::sideFor(Encoding encoding) const {
  const bool isKept = m_options.lineEnds == LineEnds::keep;
  Way way = Way::pivot;
  if (isSame(encoding, m_to) && isKept) {
    way = Way::copy;
  } else if (m_to == Encoding::utf16le()) {
    way = Way::decodeOnly;
  } else if (encoding == Encoding::utf16le() && stopsAtLoneSurrogates(m_to) && isKept) {
    way = Way::encodeOnly;
  } else if (directLoop(encoding, m_to).loop && isKept) {
    way = Way::direct;
  }
  return {encoding, withLineEnds(makeDecoder(encoding), encoding, m_options.lineEnds), way};
}

void Transcoder::Engine::reset() {
  for (Side& side : m_sides) side.decoder->restore(Decoder::initialState);
  m_encoder->restore(Encoder::initialState);
  m_side = 0;
  m_outlet.clear();
  m_outlet.setFront(m_options.writesMark ? markOf(m_to) : std::span<const unsigned char>());
  m_report = {};
  m_memory = {};
  m_isMarkSettled = m_options.keepsMark || markOf(m_from).empty();
  m_isInStep = true;
  m_isFinished = false;
}

// --- One call ----------------------------------------------------------------

Step Transcoder::Engine::run(std::string_view piece, bool isLast, std::span<char> room) {
  Source source(piece, isLast, m_memory);
  m_source = &source;
  m_outlet.open(room);
  Pause pause = Pause::stopped;
  try {
    pause = convertWindows(source);
  } catch (...) {
    m_report.bytesWritten += room.size() - m_outlet.room();
    throw;
  }
  const std::size_t written = room.size() - m_outlet.room();
  m_report.bytesWritten += written;
  if (!m_report.stopped) m_report.bytesRead = m_memory.offset + m_memory.numCarried;
  if (m_report.bytesWritten > m_report.bytesRead && m_report.bytesRead != 0) {
    m_growth = static_cast<double>(m_report.bytesWritten) / static_cast<double>(m_report.bytesRead);
  }
  const Wants wants = pause == Pause::stopped ? Wants::reset
                      : pause == Pause::room  ? Wants::room
                      : m_isFinished          ? Wants::nothing
                                              : Wants::input;
  return {source.bytesTaken(), written, wants};
}

Transcoder::Engine::Pause Transcoder::Engine::convertWindows(Source& source) {
  for (;;) {
    if (!m_outlet.drain()) return Pause::room;
    if (m_report.stopped) return Pause::stopped;
    if (m_isFinished) return Pause::input;
    const Window window = source.window();
    if (window.begin != window.end && m_outlet.room() == 0) return Pause::room;
    const Advance advanced = convertWindow(window);
    source.use(window, advanced.in, advanced.why == Pause::input);
    // What waits may still be written, in front of a stop too.
    if (advanced.why == Pause::room) return Pause::room;
    if (advanced.why != Pause::input || source.hasMore()) continue;
    if (!window.isLast) return Pause::input;
    if (m_sides[m_side].way != Way::copy || !m_isInStep) m_outlet.waitForEnd();
    m_isFinished = true;
  }
}

Transcoder::Engine::Advance Transcoder::Engine::convertWindow(const Window& window) {
  if (!m_isMarkSettled) return settleMark(window);
  if (m_outlet.hasFront()) return settleFront(window);
  return advance(window);
}

// Takes the mark of the source off, which in UTF-16 and UTF-32 may be that of the
// other order.
Transcoder::Engine::Advance Transcoder::Engine::settleMark(const Window& window) {
  bool isOpen = false;
  for (unsigned int i = 0; i < m_sides.size(); ++i) {
    const std::span<const unsigned char> mark = markOf(m_sides[i].encoding);
    const Begins begins = beginsWith(window, mark);
    if (begins == Begins::yes) {
      m_isMarkSettled = true;
      m_side = i;
      return {window.begin + mark.size(), Pause::again};
    }
    isOpen |= begins == Begins::perhaps;
  }
  if (isOpen) return {window.begin, Pause::input};
  m_isMarkSettled = true;
  return {window.begin, Pause::again};
}

// As long as there is no text no mark is written either; what has one lacks no character.
Transcoder::Engine::Advance Transcoder::Engine::settleFront(const Window& window) {
  const Place start = here(window.begin);
  const Place next = behind(window, start);
  decoder().restore(start.state);
  if (next.unit == start.unit) return advance(window);
  m_outlet.waitForFront();
  return {window.begin, Pause::again};
}

Transcoder::Engine::Advance Transcoder::Engine::advance(const Window& window) {
  switch (m_sides[m_side].way) {
    case Way::decodeOnly:
      return decodeIntoRoom(window);
    case Way::encodeOnly:
      return encodeFromWindow(window);
    case Way::copy:
      return copyDecoded(window);
    case Way::direct:
      return convertDirectly(window);
    case Way::pivot:
      break;
  }
  return decodeAndEncode(window, partToDecode(window));
}

// --- The four ways -----------------------------------------------------------

Transcoder::Engine::Advance Transcoder::Engine::decodeIntoRoom(const Window& window) {
  Decoder::State before = decoder().state();
  // Decoders write whole units.
  unsigned char* outEnd = m_outlet.out + m_outlet.room() / 2 * 2;
  DecoderJob job{window.begin, window.end, window.isLast, m_outlet.out, outEnd};
  Decoded decoded = decoder().decode(job);
  while (decoded.why == DecoderStop::malformed && mayLoseAmongText()) {
    unsigned char* out = loseAmongText(window, decoded, outEnd);
    if (!out) break;
    m_outlet.out = out;
    job.in = behindLoss(decoded);
    job.out = out;
    before = decoder().state();
    decoded = decoder().decode(job);
  }
  if (decoded.why != DecoderStop::room || decoded.out != m_outlet.out || m_outlet.room() == 0) {
    m_outlet.out = decoded.out;
    if (decoded.why == DecoderStop::room) return {decoded.in, Pause::room};
    return afterDecoding(window, window, decoded);
  }
  // The last bytes of the room are the first of a character, if one comes next.
  decoder().restore(before);
  const Decoded next = decodeOne(decoder(), {job.in, window.end, window.isLast, m_block, nullptr});
  if (next.out == m_block) return afterDecoding(window, window, next);
  m_outlet.wait(std::span<const unsigned char>(m_block, next.out));
  return {next.in, Pause::again};
}

Transcoder::Engine::Advance Transcoder::Engine::encodeFromWindow(const Window& window) {
  const Encoded encoded =
      m_encoder->encode({window.begin, window.end, m_outlet.out, m_outlet.outEnd});
  m_outlet.out = encoded.out;
  if (encoded.in == window.end) return {encoded.in, Pause::input};
  const Place place = here(encoded.in);
  if (encoded.why == EncoderStop::room) return encodeNextInto(window, place);
  // What the encoder has left may be half of something.
  const Decoded next = decodeOne(decoder(), {place.in, window.end, window.isLast, m_block, {}});
  if (next.out == m_block) return afterDecoding(window, window, next);
  return loseNext(window, place, next);
}

Transcoder::Engine::Advance Transcoder::Engine::loseNext(const Window& window, const Place& place,
                                                         const Decoded& next) {
  const Pause pause = loseCharacter(window, place, {next.in, decoder().state(), next.out});
  return {pause == Pause::stopped ? place.in : next.in, pause};
}

Transcoder::Engine::Advance Transcoder::Engine::copyDecoded(const Window& window) {
  if (!m_isInStep)
    return mayCopyFrom(window) ? Advance{window.begin, Pause::again} : encodeNext(window);
  // What a few bytes become can wait for more room.
  constexpr std::size_t few = 24;
  const std::size_t room = m_outlet.room();
  const Window part = firstOf(window, room < 2 * few ? few : std::min(room - few, bytesPerBlock));
  const Place start = here(window.begin);
  const Decoded decoded =
      decoder().decode({part.begin, part.end, part.isLast, m_block, std::end(m_block)});
  const Place end = {decoded.in, decoder().state(), decoded.out};
  if (decoded.why != DecoderStop::malformed || !m_to.keepsState()) {
    copyUpTo(window, start.state, end);
    return afterDecoding(window, part, decoded);
  }
  const Place last = lastCopied(window, start, end, decoded);
  copyUpTo(window, start.state, last);
  unsigned char held[Source::mostCarried];
  const unsigned int numHeld = decoder().heldBack(last.state);
  for (unsigned int i = 0; i < numHeld; ++i) {
    held[i] = byteAt(window, last.in - window.begin - static_cast<std::ptrdiff_t>(numHeld - i));
  }
  m_encoder->follow(last.state, std::span(held, numHeld));
  m_isInStep = false;
  decoder().restore(end.state);
  return afterDecoding(window, part, decoded);
}

// Copies what has not been copied yet, of the window and of what was held back in front of
// it, but for what is held back now.
void Transcoder::Engine::copyUpTo(const Window& window, Decoder::State from, const Place& to) {
  std::ptrdiff_t at = -static_cast<std::ptrdiff_t>(decoder().heldBack(from));
  const std::ptrdiff_t end =
      to.in - window.begin - static_cast<std::ptrdiff_t>(decoder().heldBack(to.state));
  unsigned char waiting[4 * Source::mostCarried];
  const bool mustWait = end - at > static_cast<std::ptrdiff_t>(m_outlet.room());
  unsigned char* out = mustWait ? waiting : m_outlet.out;
  unsigned char* begin = out;
  for (; at < std::min<std::ptrdiff_t>(end, 0); ++at) *out++ = byteAt(window, at);
  if (at < end) out = std::copy(window.begin + at, window.begin + end, out);
  if (mustWait) {
    m_outlet.wait(std::span<const unsigned char>(begin, out));
  } else {
    m_outlet.out = out;
  }
}

// Up to where a text with a loss behind it is to be copied. What reaches back begins behind
// the last character and what ends its run; else what stands between that and the loss is
// copied too, and something that only the loss has ended is not ended where that is left out.
Transcoder::Engine::Place Transcoder::Engine::lastCopied(const Window& window, const Place& start,
                                                         const Place& end, const Decoded& decoded) {
  const Place last = decoded.out == m_block ? start : find(window, start, decoded.out);
  if (decoded.back == 0) return last.in != end.in ? end : last;
  const unsigned char* lost =
      decoded.in - std::min(end.in - last.in, static_cast<std::ptrdiff_t>(decoded.back));
  decoder().restore(last.state);
  decoder().decode({last.in, lost, false, m_block, std::end(m_block)});
  return {lost, decoder().state(), last.unit};
}

// Brings the output to where text behind a loss may be copied again. That is decided by
// nothing but the state and the next byte, so that it does not matter how the text is cut;
// above 7F there is another loss.
bool Transcoder::Engine::mayCopyFrom(const Window& window) {
  if (window.begin == window.end || *window.begin >= 0x80) return false;
  unsigned char bytes[Encoder::mostBytes];
  const unsigned char* end = m_encoder->comeInStepWith(decoder().state(), bytes);
  if (!end) return false;
  m_outlet.wait(std::span<const unsigned char>(bytes, end));
  m_isInStep = true;
  return true;
}

// One character behind a loss, or one byte that makes none: what ends a run may be all that
// stands in front of text that is copied again.
Transcoder::Engine::Advance Transcoder::Engine::encodeNext(const Window& window) {
  const Place place = here(window.begin);
  const Window byte = firstOf(window, 1);
  const Decoded alone = decodeOne(decoder(), {byte.begin, byte.end, false, m_block, nullptr});
  if (alone.why == DecoderStop::end && alone.out == m_block && alone.in != byte.begin) {
    return {alone.in, Pause::again};
  }
  decoder().restore(place.state);
  const Decoded next =
      decodeOne(decoder(), {window.begin, window.end, window.isLast, m_block, nullptr});
  if (next.out == m_block) return afterDecoding(window, window, next);
  const char32_t character = readCharacter(m_block, next.out).character;
  if (!hasPlace(character, *m_encoder)) return loseNext(window, place, next);
  m_outlet.waitEncoded(character);
  return {next.in, Pause::again};
}

// What the loop does not take goes the long way, a few characters at a time.
Transcoder::Engine::Advance Transcoder::Engine::convertDirectly(const Window& window) {
  const DirectLoop direct = directLoop(m_sides[m_side].encoding, m_to);
  const auto fits = static_cast<std::ptrdiff_t>(m_outlet.room()) / direct.mostPerByte;
  const unsigned char* stop = window.begin + std::min(window.end - window.begin, fits);
  const Progress progress = direct.loop(window.begin, stop, m_outlet.out);
  m_outlet.out = progress.out;
  if (progress.in == window.begin) return decodeAndEncode(window, firstOf(window, fewestToDecode));
  return {progress.in, progress.in == window.end ? Pause::input : Pause::again};
}

// As much as is likely to fit: what does not is decoded again.
Window Transcoder::Engine::partToDecode(const Window& window) const {
  const auto fits = static_cast<std::size_t>(static_cast<double>(m_outlet.room()) / m_growth);
  return firstOf(window, std::min(std::max(fits, fewestToDecode), bytesPerBlock));
}

Transcoder::Engine::Advance Transcoder::Engine::decodeAndEncode(const Window& window,
                                                                const Window& part) {
  Places places;
  const Decoded decoded = decodeBlock(window, part, places);
  if (decoded.out == m_block) return afterDecoding(window, part, decoded);
  return encodeBlock(window, part, places, decoded);
}

// Decodes a part, on behind losses too that need nothing but text in their place, as long as
// there is room for all that the block may become: that text has no place in the source.
Decoded Transcoder::Engine::decodeBlock(const Window& window, const Window& part, Places& places) {
  places.add(here(window.begin));
  DecoderJob job{part.begin, part.end, part.isLast, m_block, std::end(m_block)};
  Decoded decoded = decoder().decode(job);
  if (decoded.why != DecoderStop::malformed || !mayLoseAmongText()) return decoded;
  const std::size_t fits = m_outlet.room() / m_to.mostBytes();
  job.outEnd = m_block + 2 * std::min(fits, bytesPerBlock);
  while (decoded.why == DecoderStop::malformed && !places.isFull() && decoded.out < job.outEnd) {
    unsigned char* out = loseAmongText(window, decoded, job.outEnd);
    if (!out) break;
    job.in = behindLoss(decoded);
    job.out = out;
    places.add({job.in, decoder().state(), job.out});
    decoded = decoder().decode(job);
  }
  return decoded;
}

Transcoder::Engine::Advance Transcoder::Engine::encodeBlock(const Window& window,
                                                            const Window& part,
                                                            const Places& places,
                                                            const Decoded& decoded) {
  const Decoder::State after = decoder().state();
  Place place = places.places[0];
  unsigned char* unit = m_block;
  for (;;) {
    const Encoded encoded = m_encoder->encode({unit, decoded.out, m_outlet.out, m_outlet.outEnd});
    m_outlet.out = encoded.out;
    if (encoded.why == EncoderStop::end) {
      decoder().restore(after);
      return afterDecoding(window, part, decoded);
    }
    unit = m_block + (encoded.in - m_block);
    const UnitsRead read = readCharacter(unit, decoded.out);
    if (encoded.why == EncoderStop::unmappable && loseUnseen(read.character)) {
      unit += read.length;
      const Pause pause = goOnBehindLoss(unit, decoded.out, places);
      if (pause == Pause::input) continue;
      return goOnAt(find(window, places.lastBefore(unit), unit), places, pause);
    }
    const Place& known = places.lastBefore(unit);
    place = find(window, known.unit < place.unit ? place : known, unit);
    const Place next = behind(window, place);
    if (encoded.why == EncoderStop::room) {
      m_outlet.waitEncoded(read.character);
      return goOnAt(next, places, Pause::again);
    }
    if (loseCharacter(window, place, next) == Pause::stopped) {
      forgetLosses(places, unit);
      return {place.in, Pause::stopped};
    }
    const Pause pause = goOnBehindLoss(next.unit, decoded.out, places);
    if (pause != Pause::input) return goOnAt(next, places, pause);
    place = next;
    unit = next.unit;
  }
}

// Whether a block may go on at `unit`, behind a character that was replaced: `Pause::input`
// says so. A block with losses in it needs room for all that is left of it.
Transcoder::Engine::Pause Transcoder::Engine::goOnBehindLoss(const unsigned char* unit,
                                                             const unsigned char* end,
                                                             const Places& places) {
  const bool isWritten = m_outlet.drain();
  const auto units = static_cast<std::size_t>(end - unit) / 2;
  const bool isEnough = places.numBehind(unit) == 0 || units * m_to.mostBytes() <= m_outlet.room();
  if (isWritten && isEnough) return Pause::input;
  return isWritten ? Pause::again : Pause::room;
}

// Leaves a block at a place in it. A loss may stand there that nothing has taken the place of:
// it has been counted, where those behind it will come again.
Transcoder::Engine::Advance Transcoder::Engine::goOnAt(const Place& next, const Places& places,
                                                       Pause pause) {
  forgetLosses(places, next.unit);
  const Place& known = places.lastBefore(next.unit);
  const Place& place = known.unit == next.unit ? known : next;
  decoder().restore(place.state);
  return {place.in, pause};
}

void Transcoder::Engine::forgetLosses(const Places& places, const unsigned char* unit) {
  m_report.malformed -= places.numBehind(unit);
  if (m_report.malformed == 0) m_report.firstMalformed.reset();
}

// Fills the rest of the room with the first bytes of the next character, whose others
// wait.
Transcoder::Engine::Advance Transcoder::Engine::encodeNextInto(const Window& window,
                                                               const Place& place) {
  const Place next = behind(window, place);
  m_outlet.waitEncoded(readCharacter(place.unit, next.unit).character);
  return {next.in, Pause::again};
}

// What follows when all that was decoded of `part`, of the window, is written.
Transcoder::Engine::Advance Transcoder::Engine::afterDecoding(const Window& window,
                                                              const Window& part,
                                                              const Decoded& decoded) {
  switch (decoded.why) {
    case DecoderStop::malformed:
      return loseBytes(window, decoded);
    case DecoderStop::room:
      return {decoded.in, Pause::again};
    case DecoderStop::end:
    case DecoderStop::cutOff:
      break;
  }
  // The end of a part is not that of the window.
  return {decoded.in, part.end == window.end ? Pause::input : Pause::again};
}

// --- Places ------------------------------------------------------------------

const Transcoder::Engine::Place& Transcoder::Engine::Places::lastBefore(
    const unsigned char* unit) const {
  return places[count - 1 - numBehind(unit)];
}

std::size_t Transcoder::Engine::Places::numBehind(const unsigned char* unit) const {
  std::size_t number = 0;
  while (number + 1 < count && places[count - 1 - number].unit > unit) ++number;
  return number;
}

Transcoder::Engine::Place Transcoder::Engine::here(const unsigned char* in) {
  return {in, decoder().state(), m_block};
}

// The place of a unit of the block, from one in front of it.
Transcoder::Engine::Place Transcoder::Engine::find(const Window& window, const Place& from,
                                                   unsigned char* unit) {
  decoder().restore(from.state);
  const Decoded decoded = decoder().decode({from.in, window.end, window.isLast, from.unit, unit});
  return {decoded.in, decoder().state(), unit};
}

// The place behind the next character, or the same where there is none.
Transcoder::Engine::Place Transcoder::Engine::behind(const Window& window, const Place& place) {
  decoder().restore(place.state);
  const Decoded decoded =
      decodeOne(decoder(), {place.in, window.end, window.isLast, place.unit, nullptr});
  return {decoded.in, decoder().state(), decoded.out};
}

// --- Losses ------------------------------------------------------------------

Transcoder::Engine::Pause Transcoder::Engine::loseCharacter(const Window& window,
                                                            const Place& place, const Place& next) {
  const unsigned int ownLength = decoder().lastLength();
  const unsigned int length =
      ownLength != 0 ? ownLength : static_cast<unsigned int>(next.in - place.in);
  Loss loss = lossAt(window, next.in - window.begin - static_cast<std::ptrdiff_t>(length), length);
  loss.character = readCharacter(place.unit, next.unit).character;

  unsigned char lookalike[Encoder::mostBytes];
  const unsigned char* end = m_options.bestFits == BestFits::close
                                 ? m_encoder->encodeLookalike(loss.character, lookalike)
                                 : nullptr;
  loss.kind = end ? LossKind::bestFit : LossKind::unmappable;
  const std::optional<Action> answer = ask(loss);
  if (end && !answer) {
    count(loss);
    m_outlet.wait(std::span<const unsigned char>(lookalike, end));
    return Pause::again;
  }
  loss.kind = LossKind::unmappable;
  const Pause pause = lose(loss, answer.value_or(m_options.unmappable));
  if (pause == Pause::stopped) decoder().restore(place.state);
  return pause;
}

Transcoder::Engine::Advance Transcoder::Engine::loseBytes(const Window& window,
                                                          const Decoded& decoded) {
  const Decoded lost = withPreservedForm(window, decoded);
  if (lost.why == DecoderStop::cutOff) return {lost.in, Pause::input};
  const std::ptrdiff_t at = lost.in - window.begin - static_cast<std::ptrdiff_t>(lost.back);
  const Loss loss = lossAt(window, at, lost.length);
  const Pause pause = lose(loss, ask(loss).value_or(m_options.malformed));
  if (pause == Pause::stopped) return {lost.in, pause};
  return {behindLoss(lost), pause};
}

// Where no handler asks, and what is written is text. `Action::preserve` writes none.
bool Transcoder::Engine::mayLoseAmongText() const {
  return !m_options.onLoss && !m_outlet.hasFront() && m_replacement.isText(m_options.malformed);
}

// Puts what is written for malformed bytes behind what was decoded; null where it does not fit.
unsigned char* Transcoder::Engine::loseAmongText(const Window& window, const Decoded& decoded,
                                                 const unsigned char* outEnd) {
  const std::ptrdiff_t at = decoded.in - window.begin - static_cast<std::ptrdiff_t>(decoded.back);
  const Loss loss = lossAt(window, at, decoded.length);
  unsigned char* out =
      m_replacement.putText(m_options.malformed, loss.bytes(), decoded.out, outEnd);
  if (out) count(loss);
  return out;
}

// Loses a character without its place, where that does not matter: it is not the first of its
// kind, and nothing is written but text. False where it does.
bool Transcoder::Engine::loseUnseen(char32_t character) {
  const Action action = m_options.unmappable;
  const bool writesText =
      action == Action::drop || action == Action::substitute || action == Action::escape;
  if (m_options.onLoss || !m_report.firstUnmappable || !writesText ||
      m_options.bestFits != BestFits::none) {
    return false;
  }
  Loss loss;
  loss.kind = LossKind::unmappable;
  loss.character = character;
  static_cast<void>(lose(loss, action));
  return true;
}

// The three-byte form of a preserved byte is one loss of three bytes, where UTF-8
// otherwise sees three.
Decoded Transcoder::Engine::withPreservedForm(const Window& window, Decoded decoded) const {
  if (m_options.malformed != Action::preserve || m_from != Encoding::utf8()) return decoded;
  const std::ptrdiff_t available = std::min<std::ptrdiff_t>(window.end - decoded.in, 3);
  const unsigned char* in = decoded.in;
  if (in[0] != 0xED || (available > 1 && !isPreservedFor(m_to, in[1])) ||
      (available > 2 && (in[2] & 0xC0) != 0x80)) {
    return decoded;
  }
  if (available == 3) {
    decoded.length = 3;
  } else if (!window.isLast) {
    decoded.why = DecoderStop::cutOff;
  }
  return decoded;
}

Transcoder::Engine::Pause Transcoder::Engine::lose(const Loss& loss, Action action) {
  count(loss);
  if (action == Action::stop) {
    m_report.stopped = true;
    m_report.bytesRead = loss.offset;
    // What came before is a whole text.
    m_outlet.waitForEnd();
    return Pause::stopped;
  }
  m_replacement.write(action, loss, m_sides[m_side].encoding, m_outlet);
  return Pause::again;
}

// If the handler throws, the conversion has stopped at the loss, which counts.
std::optional<Action> Transcoder::Engine::ask(const Loss& loss) {
  if (!m_options.onLoss) return std::nullopt;
  try {
    return m_options.onLoss(loss);
  } catch (...) {
    count(loss);
    m_report.stopped = true;
    m_report.bytesRead = loss.offset;
    throw;
  }
}

// `at` is the distance from the beginning of the window, in front of which a loss may
// begin that the piece before has used the first bytes of.
Loss Transcoder::Engine::lossAt(const Window& window, std::ptrdiff_t at,
                                unsigned int length) const {
  Loss loss;
  loss.offset = window.offset + static_cast<std::uint64_t>(at);
  loss.length = std::min(length, static_cast<unsigned int>(Loss::mostBytes));
  for (unsigned int i = 0; i < loss.length; ++i) {
    loss.storage[i] = byteAt(window, at + static_cast<std::ptrdiff_t>(i));
  }
  return loss;
}

// Of the window, or in front of it what is kept.
unsigned char Transcoder::Engine::byteAt(const Window& window, std::ptrdiff_t at) const {
  return at < 0 ? m_source->byteBefore(static_cast<std::size_t>(-at)) : window.begin[at];
}

void Transcoder::Engine::count(const Loss& loss) {
  const auto add = [&](std::uint64_t& number, std::optional<Loss>& first) {
    if (number++ == 0) first = loss;
  };
  switch (loss.kind) {
    case LossKind::malformed:
      add(m_report.malformed, m_report.firstMalformed);
      return;
    case LossKind::unmappable:
      add(m_report.unmappable, m_report.firstUnmappable);
      return;
    case LossKind::bestFit:
      add(m_report.bestFits, m_report.firstBestFit);
      return;
  }
}

}  // namespace quorvel::text
