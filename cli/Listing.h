#pragma once

#include <string>

namespace qvconv {

/// One line for each encoding: its number, preferred name, title and other
/// names, in columns.
std::string listEncodings();

}  // namespace qvconv
