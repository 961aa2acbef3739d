// Measures our conversions beside those of glibc and ICU, table by table.

#include <gnu/libc-version.h>
#include <unicode/uversion.h>

#include <exception>
#include <fstream>
#include <iostream>
#include <regex>
#include <stdexcept>

#include "Options.h"
#include "Tables.h"
#include "Timing.h"

namespace {

using namespace quorvel::bench;

struct Table {
  const char* name;
  Outcome (*measure)(const Options& options);
};

constexpr Table tables[] = {
    {"speed", measureSpeed},   {"text", measureText},           {"small", measureSmall},
    {"errors", measureErrors}, {"first-use", measureFirstUses},
};

std::string processorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

// What the figures depend on.
std::string describeMachine(const Options& options) {
  return processorName() + "; " QUORVEL_BUILD_KIND "; glibc " + gnu_get_libc_version() +
         "; ICU " U_ICU_VERSION "; kernels: " + options.targets.back() + "\n\n";
}

void write(const Options& options, const std::string& name, const std::string& text) {
  if (options.directory.empty()) return;
  const std::string path = options.directory + "/" + name;
  std::ofstream file(path);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

void publish(const Options& options, const Table& table, const Outcome& outcome) {
  std::cout << table.name << "\n\n" << outcome.markdown << "\n";
  write(options, std::string(table.name) + ".md", outcome.markdown);
  for (const auto& [name, text] : outcome.files) write(options, name, text);
}

}  // namespace

int main(int argc, char** argv) try {
  const Options options = parseOptions(argc, argv);
  if (!options.firstUse.empty()) {
    printFirstUse(options.firstUse);
    return 0;
  }
  setUpTiming(argv[0], options.seconds);
  const std::string machine = describeMachine(options);
  std::cout << machine;
  write(options, "machine.md", machine);
  const std::regex wanted(options.tables);
  bool isSomething = false;
  bool isGood = true;
  for (const Table& table : tables) {
    if (!std::regex_search(table.name, wanted)) continue;
    const Outcome outcome = table.measure(options);
    if (outcome.markdown.empty()) continue;
    publish(options, table, outcome);
    isSomething = true;
    isGood = isGood && outcome.isGood;
  }
  if (!isSomething) throw std::runtime_error("no row is called that");
  return isGood ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 2;
}
