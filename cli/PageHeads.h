#pragma once

#include <string_view>

namespace qvconv {

/// What the head of a mapping file in codepages/ says of its page, line by line; empty
/// for encodings without one. The build makes it out of these files.
std::string_view headOfPage(int codePage);

}  // namespace qvconv
