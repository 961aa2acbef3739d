#pragma once

#include <string>
#include <vector>

namespace quorvel::bench {

/// The targets that we have kernels for and this machine can run, the plainest
/// first.
std::vector<std::string> runnableTargets();

/// Lets all that we convert from now on use the kernels of one of those; throws
/// `std::runtime_error` for any other.
void useTarget(const std::string& name);

}  // namespace quorvel::bench
