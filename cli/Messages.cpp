#include "cli/Messages.h"

#include <unistd.h>

#include "cli/Descriptor.h"
#include "quorvel/base/OneLine.hpp"

namespace qvconv {

void complain(const std::string& line) {
  // Where standard error is closed too, nobody is left to tell.
  static_cast<void>(writeAll(STDERR_FILENO, "qvconv: " + quorvel::oneLine(line) + '\n'));
}

}  // namespace qvconv
