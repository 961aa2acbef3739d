#include "Options.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "Targets.h"

namespace quorvel::bench {

namespace {

constexpr const char* usage =
    "usage: quorvel_bench [--quick] [--tables=REGEX] [--rows=REGEX] [--bytes=N]\n"
    "                     [--repetitions=N] [--seconds=S] [--at-least=RATIO]\n"
    "                     [--text-at-least=RATIO] [--target=NAME] [--out=DIRECTORY]\n"
    "A row is named like \"932 to 65001, japanese\". With --at-least the exit status is 1\n"
    "when a row is not that many times as fast as the faster of its peers, with\n"
    "--text-at-least when quorvel/text is not that many times as fast as EncodingConvert.\n"
    "--target says which of our kernels are measured, instead of all that the machine can\n"
    "run. --quick takes every row of the tables speed and text, in about a minute,\n"
    "with limits.";

std::string runnableTarget(const std::string& name) {
  const std::vector<std::string> targets = runnableTargets();
  if (std::find(targets.begin(), targets.end(), name) == targets.end()) {
    throw std::invalid_argument("no such kernels here");
  }
  return name;
}

void beQuick(Options& options) {
  options.tables = "speed|text";
  options.bytes = 256u << 10;
  options.repetitions = 3;
  options.seconds = 0.004;
  options.atLeast = 1;
  options.textAtLeast = 0.5;
}

void setOption(std::string_view name, const std::string& value, Options& options) {
  if (name == "--tables") {
    options.tables = value;
  } else if (name == "--rows") {
    options.rows = value;
  } else if (name == "--bytes") {
    options.bytes = std::stoul(value);
  } else if (name == "--repetitions") {
    options.repetitions = std::stoi(value);
  } else if (name == "--seconds") {
    options.seconds = std::stod(value);
  } else if (name == "--at-least") {
    options.atLeast = std::stod(value);
  } else if (name == "--text-at-least") {
    options.textAtLeast = std::stod(value);
  } else if (name == "--target") {
    options.targets = {runnableTarget(value)};
  } else if (name == "--first-use") {
    options.firstUse = value;
  } else if (name == "--out") {
    options.directory = value;
  } else {
    throw std::invalid_argument("unknown option");
  }
}

}  // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  options.targets = runnableTargets();
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--quick") {
      beQuick(options);
      continue;
    }
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
