#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Input.h"
#include "quorvel/text/detect.h"

namespace qvconv {

/// What something that knows languages takes a text for, by its first bytes; nothing
/// where it does not know, or is not there.
std::optional<quorvel::text::Encoding> guessEncoding(std::string_view text);

/// What a text may be in, the likeliest first: `detect` with the guess, and the ANSI page
/// of the locale for the place. `goesOn` tells whether more of it follows.
std::vector<quorvel::text::Candidate> detectEncoding(std::string_view text, bool goesOn);

/// The same of an input, by a bounded beginning of it, which its blocks have all the same.
/// Throws `InputError`.
std::vector<quorvel::text::Candidate> detectEncoding(Input& input);

/// How many losses a candidate has, in words.
std::string lossesOf(const quorvel::text::Candidate& candidate);

/// The candidates for a file, a line each, the likeliest first.
std::string candidatesAsText(std::span<const quorvel::text::Candidate> candidates,
                             std::string_view file);

/// The same as JSON, an object in one line: file, and the candidates with number, name
/// and losses.
std::string candidatesAsJson(std::span<const quorvel::text::Candidate> candidates,
                             std::string_view file);

}  // namespace qvconv
