// qvconv: converts files from one character encoding to another.

#include <clocale>
#include <exception>

#include "cli/Descriptor.h"
#include "cli/ExitStatus.h"
#include "cli/Messages.h"
#include "cli/Modes.h"
#include "cli/Options.h"
#include "cli/Signals.h"

namespace {

using namespace qvconv;

ExitStatus run(int argc, const char* const* argv, Messages& messages) try {
  if (!takeStandardDescriptors()) {
    messages.complain("standard input, output or error is closed and cannot be taken");
    return ExitStatus::failed;
  }
  // No other thread runs yet.
  std::setlocale(LC_CTYPE, "");  // NOLINT(concurrency-mt-unsafe)
  removeListedFilesOnSignals();
  return runMode(readOptions(argc, argv), messages);
} catch (const WrongUse& error) {
  messages.complain(error.what());
  return ExitStatus::wrongUse;
} catch (const std::exception& error) {
  messages.complain(error.what());
  return ExitStatus::failed;
}

}  // namespace

int main(int argc, char** argv) {
  DirectMessages messages;
  return numberOf(run(argc, argv, messages));
}
