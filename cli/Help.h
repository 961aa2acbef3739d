#pragma once

#include <string>

namespace qvconv {

/// What `--help` prints: the options by groups, with an example for each group.
std::string helpText();

/// What `--version` prints.
std::string versionText();

}  // namespace qvconv
