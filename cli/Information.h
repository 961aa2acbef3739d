#pragma once

#include <string>

#include "quorvel/text/Encoding.h"

namespace qvconv {

/// What there is to say of an encoding: names, family, bytes per character, how many
/// characters it has, and what is particular about it.
std::string informationOn(quorvel::text::Encoding encoding);

}  // namespace qvconv
