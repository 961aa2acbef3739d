#pragma once

#include <functional>
#include <optional>
#include <string>

#include "quorvel/text/Encoding.h"
#include "quorvel/text/Report.h"

namespace quorvel::text {

/// What becomes of text that does not get across.
enum class Action {
  /// The conversion ends in front of it.
  stop,
  /// Nothing is written.
  drop,
  /// `Options::substitute` is written.
  substitute,
  /// It is spelt out: a byte as `\x81`, a character as `Options::escape` says.
  escape,
  /// The bytes of the source are written as they are. Not to UTF-16 or UTF-32, and
  /// not where either side keeps state.
  pass,
  /// A character is written in `Options::reconvert`, bytes are read in it. What
  /// fails there is dropped.
  reconvert,
  /// Bytes that are no character survive a trip into UTF-8, UTF-16 or UTF-32 and
  /// back: in UTF-16 and UTF-32 as the lone surrogates DC80 to DCFF, in UTF-8 as
  /// their three-byte form, neither of which is well-formed; and lone surrogates of UTF-16 a
  /// trip into UTF-8. Out of UTF-16 or UTF-32 into UTF-8 those of bytes are bytes again. Of
  /// bytes below 80 the character of that value is written. Where what is preserved happens
  /// to stand beside what makes a character with it, it becomes that. For malformed bytes
  /// alone, and where at least one side is one of these. Only `Options::malformed` makes one
  /// loss of a three-byte form; a handler that chooses this sees three.
  preserve,
};

/// How `Action::escape` spells a character.
enum class EscapeForm {
  xml,  ///< `&#x20AC;`
  c,    ///< `\u20AC`, `\U0001F600`
};

/// Whether a character may become one that only looks like it.
enum class BestFits {
  none,   ///< it has no place in the destination, like others
  close,  ///< as Windows does it: a fullwidth slash becomes a slash
};

/// What the lines of the destination end with.
enum class LineEnds {
  keep,  ///< what they end with in the source
  lf,    ///< U+000A
  crLf,  ///< U+000D U+000A
};

/// How a conversion goes. The default is strict: it ends at the first loss.
struct Options {
  /// For bytes that are no character of the source.
  Action malformed = Action::stop;

  /// For characters that have no place in the destination.
  Action unmappable = Action::stop;

  /// What `Action::substitute` writes, in UTF-8; of it, what has no place in the
  /// destination is left out. Unless given: U+FFFD or else "?".
  std::optional<std::string> substitute;

  EscapeForm escape = EscapeForm::c;

  /// The encoding of `Action::reconvert`.
  std::optional<Encoding> reconvert;

  BestFits bestFits = BestFits::none;

  /// A byte-order mark at the start of UTF-8, UTF-16 or UTF-32 is taken off, and in
  /// UTF-16 and UTF-32 one of the other order decides the order; or it is kept as
  /// the character that it also is, and decides nothing.
  bool keepsMark = false;

  /// Whether UTF-8, UTF-16 or UTF-32 begins with a byte-order mark, unless there is
  /// no text.
  bool writesMark = false;

  /// A line of the source ends at LF, at CR LF, at CR or, in EBCDIC, at U+0085. What
  /// stands in for a loss is written as it is. Between equal encodings a code that is
  /// only read becomes the one that is written for its character, unless they are kept.
  LineEnds lineEnds = LineEnds::keep;

  /// Code page 10004 is read as text in visual order and turned into logical order.
  /// For `convert` alone; offsets are those of the turned text.
  bool visualOrder = false;

  /// Called for each loss, in the order of the text. What it returns is done instead
  /// of what the options say; without a value they decide. An action that options are
  /// refused for (see `whyRefused`) writes nothing. For a best fit no value
  /// lets it be, anything else makes it an unmappable character. What it throws ends
  /// the conversion and comes out of it.
  std::function<std::optional<Action>(const Loss&)> onLoss;
};

/// Why these options cannot be had between these encodings, a sentence; empty when
/// they can.
QUORVEL_API std::string whyRefused(Encoding from, Encoding to, const Options& options);

}  // namespace quorvel::text
