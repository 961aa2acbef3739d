#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "quorvel/base/Export.h"
#include "quorvel/text/Encoding.h"

namespace quorvel::text {

/// What is known of a text beside its bytes.
struct DetectionHints {
  /// What something that knows languages takes it for.
  std::optional<Encoding> guess;

  /// The code page of the place that it comes from, such as the ANSI page of the
  /// locale. Without a guess its script is taken for that of the text.
  std::optional<Encoding> local;

  /// Whether more follows that is not given, so that the end may cut a character.
  bool goesOn = false;
};

/// An encoding that a text may be in.
struct Candidate {
  Encoding encoding;
  std::uint64_t losses = 0;  ///< malformed sequences when the text is read in it

  bool operator==(const Candidate&) const = default;
};

/// How much of a text `detect` looks at, in bytes from its beginning.
inline constexpr std::size_t mostBytesDetected = 1 << 20;

/// What a text may be in, the likeliest first; never empty.
///
/// One encoding alone where there is no doubt: that of a byte-order mark; UTF-8, when
/// the text is well-formed in it and has anything beyond ASCII; US-ASCII, when it has
/// nothing beyond and no control that switches sets or fills UTF-16. Otherwise the
/// guess, the Windows, ISO, DOS, KOI8 and East Asian encodings of its script, and both
/// orders of UTF-16: those with the fewest losses first; of equals those without
/// U+0000, of these the guess, then those whose characters stand together as they do
/// in texts. UTF-16, as which nearly all bytes can be read, comes last where they do not.
///
/// The time and the memory that it takes have a bound. Throws std::bad_alloc.
QUORVEL_API std::vector<Candidate> detect(std::string_view text, const DetectionHints& hints = {});

}  // namespace quorvel::text
