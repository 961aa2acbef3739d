#include "cli/Messages.h"

#include <unistd.h>

#include <cerrno>

#include "cli/Descriptor.h"
#include "cli/FileError.h"
#include "quorvel/base/OneLine.hpp"

namespace qvconv {

void DirectMessages::complain(const std::string& line) {
  // Where standard error is closed too, nobody is left to tell.
  static_cast<void>(writeAll(STDERR_FILENO, "qvconv: " + quorvel::oneLine(line) + '\n'));
}

void DirectMessages::print(std::string_view text) {
  if (!canWrite(STDOUT_FILENO) || !writeAll(STDOUT_FILENO, text)) {
    throw OutputError("standard output", errno);
  }
}

}  // namespace qvconv
