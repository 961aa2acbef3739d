#pragma once

#include <string>
#include <string_view>

#include "cli/Input.h"
#include "cli/Messages.h"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Repertoire.h"

namespace qvconv {

/// The characters of an input in this encoding. Throws `InputError`.
quorvel::text::Repertoire repertoireOf(Input& input, quorvel::text::Encoding from,
                                       Messages& messages);

/// The encodings that hold all of a text, by family, as the listing has them.
std::string fitsAsText(const quorvel::text::Repertoire& repertoire, std::string_view file);

/// The same as JSON, an object in one line: file, characters, and the encodings with
/// number and name.
std::string fitsAsJson(const quorvel::text::Repertoire& repertoire, std::string_view file);

}  // namespace qvconv
