// qvconv: converts files from one character encoding to another.

#include <exception>
#include <string>

#include "cli/Conversion.h"
#include "cli/ExitStatus.h"
#include "cli/FileError.h"
#include "cli/Messages.h"
#include "cli/Options.h"
#include "cli/Output.h"

namespace qvconv {

namespace {

ExitStatus convertFiles(const Options& options) {
  Output output(options.output);
  Conversion conversion(options.rules);
  ExitStatus status = ExitStatus::allConverted;
  bool hasResult = false;
  bool isDamaged = false;
  for (const std::string& file : options.files) {
    std::optional<Input> input;
    try {
      input.emplace(file);
      const ExitStatus result = conversion.run(*input, output);
      isDamaged |= result == ExitStatus::notConverted;
      status = worse(status, result);
      hasResult = true;
    } catch (const InputError& error) {
      complain(error.what());
      isDamaged |= input && input->bytesRead() > 0;
      status = worse(status, ExitStatus::notConverted);
    }
  }
  if (!output.replacesAFile() || (hasResult && !isDamaged)) output.finish();
  return status;
}

ExitStatus run(int argc, const char* const* argv) {
  const Options options = readOptions(argc, argv);
  if (options.information.empty()) return convertFiles(options);
  Output output("");
  output.write(options.information);
  output.finish();
  return ExitStatus::allConverted;
}

ExitStatus runAndComplain(int argc, const char* const* argv) try {
  if (takeStandardDescriptors()) return run(argc, argv);
  complain("standard input, output or error is closed and cannot be taken");
  return ExitStatus::notConverted;
} catch (const WrongUse& error) {
  complain(error.what());
  return ExitStatus::wrongUse;
} catch (const std::exception& error) {
  complain(error.what());
  return ExitStatus::notConverted;
}

}  // namespace

}  // namespace qvconv

int main(int argc, char** argv) { return static_cast<int>(qvconv::runAndComplain(argc, argv)); }
