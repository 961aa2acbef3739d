#pragma once

#include "cli/ExitStatus.h"
#include "cli/Messages.h"
#include "cli/Options.h"

namespace qvconv {

/// Does what the command line asks for. Throws `FileError`.
ExitStatus runMode(const Options& options, Messages& messages);

}  // namespace qvconv
