#pragma once

#include <string>
#include <vector>

#include "cli/Conversion.h"
#include "cli/ExitStatus.h"
#include "cli/FileList.h"
#include "cli/Jobs.h"
#include "cli/Messages.h"

namespace qvconv {

/// Converters of files that each have an output of their own.

/// Replaces each file by its conversion, with its mode, owner and times; with a suffix
/// the old one stays under the name with the suffix.
Worker inPlaceConverter(const Rules& rules, const std::string& suffix);

/// Writes each file below `directory`, to the place that it has below the directory that
/// was named.
Worker directoryConverter(const Rules& rules, const std::string& directory);

/// Takes out the files that would go to the place of one before them, and complains of
/// them. What is left is in `list`.
void refuseSharedPlaces(FileList& list, Messages& messages);

}  // namespace qvconv
