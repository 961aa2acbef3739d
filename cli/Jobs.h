#pragma once

#include <functional>
#include <vector>

#include "cli/ExitStatus.h"
#include "cli/FileList.h"
#include "cli/Messages.h"

namespace qvconv {

/// Does what there is to do with one file after another. Each thread has its own.
using Worker = std::function<ExitStatus(const FileEntry& file, Messages& messages)>;

/// Gives each file to one of up to `numJobs` workers. What they say comes out in the
/// order of the files. The worst of what they return; what they throw ends all and is
/// thrown.
ExitStatus runJobs(const std::vector<FileEntry>& files, unsigned int numJobs,
                   const std::function<Worker()>& makeWorker, Messages& messages);

}  // namespace qvconv
