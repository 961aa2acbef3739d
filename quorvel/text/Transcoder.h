#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "quorvel/base/Export.h"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Options.h"
#include "quorvel/text/Report.h"

namespace quorvel::text {

/// What a Transcoder waits for.
enum class Wants {
  input,    ///< all that was given has been taken
  room,     ///< there is more to write than there was room for
  nothing,  ///< the text has ended and all of it is written
  reset,    ///< it has stopped at a loss
};

/// How far one call came.
struct Step {
  std::size_t bytesTaken = 0;    ///< of the input given
  std::size_t bytesWritten = 0;  ///< into the room given
  Wants wants = Wants::input;

  bool operator==(const Step&) const = default;
};

/// Converts a text that comes in pieces, cut anywhere. It gives the same bytes and
/// the same report whatever the pieces and the room for the output.
///
/// It serves one thread at a time; any number may run at once. Making one takes hold
/// of the tables that it needs, which stay until it goes. Nothing is thrown but
/// std::bad_alloc, by making one and by what appends to a string, and what the
/// handler of the options throws.
class QUORVEL_API Transcoder {
 public:
  /// Nothing when the options are refused, see `whyRefused`, or ask for visual order,
  /// which takes a whole text.
  static std::optional<Transcoder> make(Encoding from, Encoding to, Options options = {});

  ~Transcoder();
  Transcoder(Transcoder&&) noexcept;
  Transcoder& operator=(Transcoder&&) noexcept;

  /// Converts the next piece of the text into `room`. Never allocates. After
  /// `Wants::room` it goes on with what it did not take.
  Step push(std::string_view piece, std::span<char> room);

  /// As `push` without a piece, for the end of the text: writes what is left. Called
  /// until it wants nothing more; what is pushed after that is not taken, until `reset`.
  Step finish(std::span<char> room);

  /// The same, appending to `out`. False when it has stopped at a loss.
  bool push(std::string_view piece, std::string& out);
  bool finish(std::string& out);

  /// The same without output, for the report alone, which tells how much there
  /// would be. False when it has stopped at a loss.
  bool count(std::string_view piece);
  bool countEnd();

  /// What became of the text so far.
  const Report& report() const;

  /// Makes it ready for another text, with the same encodings and options.
  void reset();

  Encoding from() const;
  Encoding to() const;

 private:
  class Engine;
  explicit Transcoder(std::unique_ptr<Engine> engine);
  std::unique_ptr<Engine> m_engine;
};

}  // namespace quorvel::text
