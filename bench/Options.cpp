#include "Options.h"

#include <stdexcept>
#include <string_view>

namespace quorvel::bench {

namespace {

constexpr const char* usage =
    "usage: quorvel_bench [--rows=REGEX] [--bytes=N] [--repetitions=N] [--seconds=S]\n"
    "                     [--at-least=RATIO] [--target=NAME] [--markdown=FILE] [--csv=FILE]\n"
    "A row is named like \"932 to 65001, japanese\". With --at-least the exit status is 1\n"
    "when a row is not that many times as fast as glibc's iconv. --target says which of\n"
    "our kernels are measured: scalar, avx2.";

void setOption(std::string_view name, const std::string& value, Options& options) {
  if (name == "--rows") {
    options.rows = value;
  } else if (name == "--bytes") {
    options.bytes = std::stoul(value);
  } else if (name == "--repetitions") {
    options.repetitions = std::stoi(value);
  } else if (name == "--seconds") {
    options.seconds = std::stod(value);
  } else if (name == "--at-least") {
    options.atLeast = std::stod(value);
  } else if (name == "--target") {
    options.target = value;
  } else if (name == "--markdown") {
    options.markdown = value;
  } else if (name == "--csv") {
    options.csv = value;
  } else {
    throw std::invalid_argument("unknown option");
  }
}

}  // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::size_t equals = argument.find('=');
    try {
      if (equals == std::string::npos) throw std::invalid_argument("no value");
      setOption(argument.substr(0, equals), argument.substr(equals + 1), options);
    } catch (const std::logic_error&) {
      throw std::runtime_error(argument + "?\n" + usage);
    }
  }
  if (options.repetitions < 1 || options.bytes < 1 || options.bytes > 256u << 20) {
    throw std::runtime_error(usage);
  }
  return options;
}

}  // namespace quorvel::bench
