// The only file that knows how our kernels are chosen.

#include "Targets.h"

#include <stdexcept>

#include "quorvel/kernel/Target.hpp"

namespace quorvel::bench {

std::vector<std::string> runnableTargets() {
  std::vector<std::string> names;
  for (const kernel::Target target : kernel::allTargets) {
    if (kernel::canRun(target)) names.emplace_back(kernel::nameOf(target));
  }
  return names;
}

void useTarget(const std::string& name) {
  for (const kernel::Target target : kernel::allTargets) {
    if (name == kernel::nameOf(target) && kernel::canRun(target)) return kernel::setTarget(target);
  }
  throw std::runtime_error("no kernels here are called " + name);
}

}  // namespace quorvel::bench
