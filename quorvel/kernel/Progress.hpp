#pragma once

// What a loop reports. Who drives one needs nothing else to go on: where it
// stopped, what has been written, and why.

namespace quorvel {

/// Why a loop stopped.
enum class Stop {
  /// It took all of its input.
  end,

  /// What is left begins something that the end cuts off: half a unit, the first
  /// bytes of a character or of an escape sequence. More input may make it whole;
  /// if there is none, it is malformed. Four bytes are never left for this.
  cutOff,

  /// What stands here is not for the loop, whatever may follow it.
  met,
};

/// A place in the input, and the place behind what was written for all before it.
struct Position {
  const unsigned char* in;
  unsigned char* out;
};

/// How far a loop came, and why no further: the first input byte that it did not
/// take, and the position behind what it wrote. Its state, if it has one, is that
/// in front of `in`, so that the rest may be handed to it at any time, with more
/// behind it.
struct Progress {
  const unsigned char* in;
  unsigned char* out;
  Stop why;
};

}  // namespace quorvel
