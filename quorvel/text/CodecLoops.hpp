#pragma once

#include <algorithm>
#include <cstddef>

#include "quorvel/kernel/Progress.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/text/Decoder.hpp"

/// What the decoders and the encoders have in common: a loop for long stretches of
/// what is well-formed and has room to spare, a step for the one character in front
/// of which the loop stops.
namespace quorvel::text {

/// What stands at one position of a text.
struct Stepped {
  enum class Kind { character, cutOff, malformed };

  Kind kind;
  unsigned int length;     ///< in bytes
  char32_t character = 0;  ///< a scalar value
};

inline Stepped characterOf(char32_t character, unsigned int length) {
  return {Stepped::Kind::character, length, character};
}

inline Stepped malformedFor(unsigned int length) { return {Stepped::Kind::malformed, length}; }

/// The beginning of a character that the end of the window cuts: with nothing behind
/// it, a loss of what is there.
inline Stepped cutOffAfter(std::size_t available, bool isLast) {
  const auto length = static_cast<unsigned int>(available);
  return {isLast ? Stepped::Kind::malformed : Stepped::Kind::cutOff, length};
}

inline std::size_t unitsIn(char32_t character) { return character < 0x10000 ? 1 : 2; }

/// Writes a scalar value as UTF-16LE.
inline unsigned char* putCharacter(char32_t character, unsigned char* out) {
  const unsigned int units = utf16Units(character);
  out = putUnit(units & 0xFFFF, out);
  return character < 0x10000 ? out : putUnit(units >> 16, out);
}

/// Decodes by `loop(in, stop, end, out)`, which takes what begins before `stop` and
/// makes at most one unit of a byte, and by `step(in, end, isLast)`.
template <typename Loop, typename Step>
Decoded decodeBy(const Loop& loop, const Step& step, const DecoderJob& job) {
  const unsigned char* in = job.in;
  unsigned char* out = job.out;
  for (;;) {
    if (in == job.end) return {in, out, DecoderStop::end};
    const std::ptrdiff_t room = (job.outEnd - out) / 2;
    if (room > 1) {
      const unsigned char* stop = in + std::min(job.end - in, room - 1);
      const auto progress = loop(in, stop, job.end, out);
      in = progress.in;
      out = progress.out;
    }
    if (in == job.end) return {in, out, DecoderStop::end};
    if (out == job.outEnd) return {in, out, DecoderStop::room};
    const Stepped stepped = step(in, job.end, job.isLast);
    if (stepped.kind == Stepped::Kind::cutOff) return {in, out, DecoderStop::cutOff};
    if (stepped.kind == Stepped::Kind::malformed) {
      return {in, out, DecoderStop::malformed, stepped.length};
    }
    if (job.outEnd - out < static_cast<std::ptrdiff_t>(2 * unitsIn(stepped.character))) {
      return {in, out, DecoderStop::room};
    }
    out = putCharacter(stepped.character, out);
    in += stepped.length;
  }
}

/// The character at `in` of UTF-16LE; half of one, or half a unit, gives itself
/// with a length of two bytes or none.
struct UnitsRead {
  char32_t character;
  unsigned int length;
};

inline UnitsRead readCharacter(const unsigned char* in, const unsigned char* end) {
  if (end - in < 2) return {0, 0};
  const unsigned int first = loadUnit(in);
  if (!isHighSurrogate(first) || end - in < 4) return {first, 2};
  const unsigned int second = loadUnit(in + 2);
  if (!isLowSurrogate(second)) return {first, 2};
  return {0x10000 + ((first & 0x3FFU) << 10 | (second & 0x3FFU)), 4};
}

/// Encodes by `loop(in, end, out)`, which makes at most `mostPerUnit` bytes of a unit,
/// and by `encoder.encodeOne`, which is not asked for halves of characters.
template <typename Loop, typename OneEncoder>
Encoded encodeBy(const Loop& loop, std::ptrdiff_t mostPerUnit, OneEncoder& encoder,
                 const EncoderJob& job) {
  const unsigned char* in = job.in;
  unsigned char* out = job.out;
  for (;;) {
    const std::ptrdiff_t fits = (job.outEnd - out) / mostPerUnit;
    if (fits > 0 && job.end - in >= 2) {
      const unsigned char* stop = in + 2 * std::min((job.end - in) / 2, fits);
      // No pair is cut in two.
      if (stop != in && isHighSurrogate(loadUnit(stop - 2))) stop -= 2;
      const auto progress = loop(in, stop, out);
      in = progress.in;
      out = progress.out;
    }
    const UnitsRead read = readCharacter(in, job.end);
    if (read.length == 0) return {in, out, EncoderStop::end};
    if (!isScalarValue(read.character)) return {in, out, EncoderStop::unmappable};
    unsigned char bytes[Encoder::mostBytes];
    const Encoder::State before = encoder.state();
    const unsigned char* end = encoder.encodeOne(read.character, bytes);
    if (!end) return {in, out, EncoderStop::unmappable};
    if (end - bytes > job.outEnd - out) {
      encoder.restore(before);
      return {in, out, EncoderStop::room};
    }
    out = std::copy(static_cast<const unsigned char*>(bytes), end, out);
    in += read.length;
  }
}

/// Whether a character can be written.
inline bool hasPlace(char32_t character, Encoder& encoder) {
  unsigned char bytes[Encoder::mostBytes];
  const Encoder::State before = encoder.state();
  const bool has = encoder.encodeOne(character, bytes) != nullptr;
  encoder.restore(before);
  return has;
}

}  // namespace quorvel::text
