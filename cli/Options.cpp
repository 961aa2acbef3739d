// The command line, and what is wrong with it.

#include "cli/Options.h"

#include <CLI/CLI.hpp>
#include <string_view>

#include "cli/Listing.h"
#include "quorvel/text/Encoding.h"

namespace qvconv {

namespace {

quorvel::text::Encoding encodingOf(const std::string& name, const char* option) {
  if (name.empty()) throw WrongUse(std::string(option) + " is missing: it names an encoding");
  const auto encoding = quorvel::text::Encoding::find(name);
  if (!encoding) throw WrongUse("unknown encoding \"" + name + "\" (-l lists the known ones)");
  return *encoding;
}

// The parser would take the next argument for the value of `--output=`, and so
// the file to read for the one to write.
void refuseEmptyValues(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--") return;
    if (argument.starts_with("--") && argument.ends_with('=')) {
      throw WrongUse(std::string(argument) + " has no value");
    }
  }
}

}  // namespace

Options readOptions(int argc, const char* const* argv) {
  refuseEmptyValues(argc, argv);
  Options options;
  bool list = false;
  CLI::App app("Converts text from one character encoding to another.", "qvconv");
  app.add_option("-f,--from", options.rules.names.from,
                 "encoding of the input, a name or a code page number");
  app.add_option("-t,--to", options.rules.names.to, "encoding of the output, likewise");
  const CLI::Option* output =
      app.add_option("-o,--output", options.output, "write to this file, not to standard output");
  app.add_flag("-l,--list", list, "list the encodings: number, preferred name, title, other names");
  app.add_option(
      "FILE", options.files,
      "files to convert, one after the other; standard input when there is none or \"-\"");
  app.set_version_flag("--version", "qvconv " QVCONV_VERSION);
  app.footer(
      "Exit status: 0 when everything was converted, 1 when something could not be,\n"
      "2 for wrong use.");

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    options.information = app.help();
    return options;
  } catch (const CLI::CallForVersion&) {
    options.information = app.version() + "\n";
    return options;
  } catch (const CLI::ParseError& error) {
    throw WrongUse(error.what());
  }
  if (list) {
    options.information = listEncodings();
    return options;
  }
  options.rules.from = encodingOf(options.rules.names.from, "-f");
  options.rules.to = encodingOf(options.rules.names.to, "-t");
  if (output->count() > 0 && options.output.empty()) {
    throw WrongUse("-o is missing: it names a file");
  }
  if (options.files.empty()) options.files.emplace_back("-");
  return options;
}

}  // namespace qvconv
