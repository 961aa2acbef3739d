#pragma once

#include <string>

namespace qvconv {

/// Writes one line to standard error. What stands in it is kept within the line.
void complain(const std::string& line);

}  // namespace qvconv
