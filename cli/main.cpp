// qvconv: converts files from one character encoding to another.

#include <cstdio>
#include <exception>
#include <string>

#include "cli/ExitStatus.h"
#include "cli/Files.h"
#include "cli/Options.h"
#include "cli/Plan.h"
#include "quorvel/base/OneLine.hpp"

namespace qvconv {

namespace {

// Where standard error is closed too, nobody is left to tell.
void complain(const std::string& line) {
  static_cast<void>(std::fprintf(stderr, "qvconv: %s\n", quorvel::oneLine(line).c_str()));
}

// Reads and converts one file, and complains unless all of it was converted.
Outcome convertFile(const Options& options, const std::string& file,
                    quorvel::DataBuffer& converted) try {
  quorvel::DataBuffer text = readInput(file);
  const Outcome outcome = convertText(options.fromCodePage, options.toCodePage, text, converted);
  if (outcome != Outcome::all) {
    complain(inputName(file) + (outcome == Outcome::some ? ": not all of it" : ": nothing of it") +
             " could be converted from " + options.from + " to " + options.to);
  }
  return outcome;
} catch (const FileError& error) {
  complain(error.what());
  return Outcome::none;
}

ExitStatus convertFiles(const Options& options) {
  Output output(options.output);
  ExitStatus status = allConverted;
  bool hasResult = false;
  for (const std::string& file : options.files) {
    quorvel::DataBuffer converted;
    const Outcome outcome = convertFile(options, file, converted);
    if (outcome != Outcome::all) status = notConverted;
    if (outcome != Outcome::none) hasResult = true;
    output.write(converted);
  }
  // Without a result there is nothing to put in the place of an old file.
  if (hasResult) output.finish();
  return status;
}

ExitStatus run(int argc, const char* const* argv) {
  const Options options = readOptions(argc, argv);
  if (options.information.empty()) return convertFiles(options);
  Output output("");
  output.write(options.information);
  output.finish();
  return allConverted;
}

}  // namespace

}  // namespace qvconv

int main(int argc, char** argv) {
  if (!qvconv::takeStandardDescriptors()) {
    qvconv::complain("standard input, output or error is closed and cannot be taken");
    return qvconv::notConverted;
  }
  try {
    return qvconv::run(argc, argv);
  } catch (const qvconv::WrongUse& error) {
    qvconv::complain(error.what());
    return qvconv::wrongUse;
  } catch (const std::exception& error) {
    qvconv::complain(error.what());
    return qvconv::notConverted;
  }
}
