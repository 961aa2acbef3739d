#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// One direction of one encoding, without any policy: a decoder makes UTF-16LE of a
/// text and stops in front of the first thing that is no character, an encoder makes
/// bytes of UTF-16LE and stops in front of the first character that it lacks. What
/// becomes of these is for their caller to say.
namespace quorvel::text {

/// Why a decoder stopped.
enum class DecoderStop {
  end,        ///< nothing is left
  room,       ///< the room is full, or the next character does not fit
  cutOff,     ///< what is left is the beginning of a character
  malformed,  ///< what is left begins with something that is no character
};

struct Decoded {
  const unsigned char* in;  ///< the first byte not taken
  unsigned char* out;       ///< behind the last unit written
  DecoderStop why;

  // What is malformed: [in - back, in - back + length). The decoder has put it behind
  // itself; the text goes on there or at `in`, whichever is further.
  unsigned int length = 0;
  unsigned int back = 0;
};

/// The text that a decoder is given: [in, end), whether any follows, and room for
/// UTF-16LE in [out, outEnd).
struct DecoderJob {
  const unsigned char* in;
  const unsigned char* end;
  bool isLast;
  unsigned char* out;
  unsigned char* outEnd;
};

class Decoder {
 public:
  /// What a decoder remembers between calls. Putting a state back makes it go on as
  /// it did from there. The bits of `freeBits` are 0, for whoever puts a decoder
  /// around another one.
  using State = std::uint64_t;
  static constexpr State initialState = 0;
  static constexpr State freeBits = State{3} << 62;

  Decoder() = default;
  virtual ~Decoder() = default;
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  /// Decodes until it has to stop. Any room will do, and all of it is used: a text
  /// decoded again with room for so many units ends behind the same unit.
  virtual Decoded decode(const DecoderJob& job) = 0;

  State state() const { return m_state; }
  void restore(State state) { m_state = state; }

  /// How many bytes in front of the next one have meant nothing yet, or only a part of
  /// what they are for: behind them a text cannot be cut. `state` is that in front of the
  /// next one.
  virtual unsigned int heldBack(State) const { return 0; }

  /// How many bytes in front of the next one belong to the character decoded last,
  /// where that is not all since the one before it. 0 where it is.
  virtual unsigned int lastLength() const { return 0; }

 protected:
  State m_state = initialState;
};

/// Why an encoder stopped.
enum class EncoderStop {
  end,         ///< nothing is left, or half a unit
  room,        ///< the next character does not fit
  unmappable,  ///< the next character has no place, or is half of one
};

struct Encoded {
  const unsigned char* in;
  unsigned char* out;
  EncoderStop why;
};

/// UTF-16LE in [in, end), room for bytes in [out, outEnd).
struct EncoderJob {
  const unsigned char* in;
  const unsigned char* end;
  unsigned char* out;
  unsigned char* outEnd;
};

class Encoder {
 public:
  using State = std::uint64_t;
  static constexpr State initialState = 0;

  /// The most bytes that one character, what goes in front of it and what ends the
  /// text need.
  static constexpr std::size_t mostBytes = 24;

  Encoder() = default;
  virtual ~Encoder() = default;
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  virtual Encoded encode(const EncoderJob& job) = 0;

  /// Writes one character at `out` and returns the position behind it; null when it
  /// has no place. Halves of surrogate pairs have one in UTF-8, UTF-16 and UTF-32.
  virtual unsigned char* encodeOne(char32_t character, unsigned char* out) = 0;

  /// The same for what `character` is written as where only its looks matter. Null
  /// when there is nothing of the kind.
  virtual unsigned char* encodeLookalike(char32_t, unsigned char*) { return nullptr; }

  /// Goes on behind text of the same encoding that was copied. `state` is that of its
  /// reader, and `held` are the bytes that the reader holds back: they are not copied.
  virtual void follow(Decoder::State, std::span<const unsigned char>) {}

  /// Writes what it takes until text of the same encoding may be copied that a reader in
  /// `state` goes on with; null where no such thing will do.
  virtual unsigned char* comeInStepWith(Decoder::State, unsigned char* out) { return out; }

  /// Writes what leads back to the state of the beginning, so that bytes of any meaning
  /// may stand behind it.
  virtual unsigned char* interrupt(unsigned char* out) { return out; }

  /// Writes what brings the text to its end.
  virtual unsigned char* finish(unsigned char* out) { return out; }

  State state() const { return m_state; }
  void restore(State state) { m_state = state; }

 protected:
  State m_state = initialState;
};

}  // namespace quorvel::text
