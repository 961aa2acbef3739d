#pragma once

#include <string>

namespace qvconv {

/// The encodings by family, each family behind a line with its name: number, preferred
/// name, title and other names, in columns.
std::string listByFamily();

/// The same as JSON, an object a line.
std::string listAsJson();

}  // namespace qvconv
