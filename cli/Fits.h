#pragma once

#include <string>
#include <string_view>

#include "quorvel/text/Repertoire.h"

namespace qvconv {

/// The encodings that hold all of a text, by family, as the listing has them.
std::string fitsAsText(const quorvel::text::Repertoire& repertoire, std::string_view file);

/// The same as JSON, an object in one line: file, characters, and the encodings with
/// number and name.
std::string fitsAsJson(const quorvel::text::Repertoire& repertoire, std::string_view file);

}  // namespace qvconv
