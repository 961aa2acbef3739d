// What the first use of a code page's tables costs, each in a process of its own:
// the benchmark starts itself with --first-use.

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Markdown.h"
#include "Tables.h"
#include "quorvel/base/NullLog.h"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/support/EncodingConvert.h"

namespace quorvel::bench {

namespace {

constexpr double mostMilliseconds = 15;
constexpr double mostMebibytes = 8;
constexpr int numTries = 3;
constexpr std::size_t numShown = 10;

struct Direction {
  const char* name;
  const char* title;
  bool (*ensure)(int codePage, LogBase& log);
};

constexpr Direction directions[] = {
    {"decode", "to Unicode", EncodingConvert::ensureHashToUnicode},
    {"encode", "from Unicode", EncodingConvert::ensureHashFromUnicode},
};

// Those with tables of their own.
std::vector<int> pagesWithTables() {
  std::vector<int> pages;
  for (unsigned int i = 0; i < codePageCount; ++i) {
    const CodePage& page = codePageAt(i);
    if (page.hasTable() && !page.table.sharedWith) pages.push_back(page.number);
  }
  return pages;
}

std::string nameOf(const Direction& direction, int codePage) {
  return format("%s %d", direction.name, codePage);
}

double kibibytesResident() {
  std::ifstream file("/proc/self/statm");
  long total = 0;
  long resident = 0;
  file >> total >> resident;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
}

double kibibytesAllocated() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) / 1024;
}

void ensure(const Direction& direction, int codePage) {
  NullLog log;
  if (!direction.ensure(codePage, log)) throw std::runtime_error("out of memory");
}

double processorMilliseconds() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

double millisecondsToEnsure(const Direction& direction, int codePage) {
  const double start = processorMilliseconds();
  ensure(direction, codePage);
  return processorMilliseconds() - start;
}

// The two numbers that a process of this program prints for `use`.
std::pair<double, double> askProcess(const std::string& use) {
  const std::string command =
      "/proc/" + std::to_string(getpid()) + "/exe --first-use='" + use + "'";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  double first = 0;
  double second = 0;
  if (!pipe || std::fscanf(pipe.get(), "%lf %lf", &first, &second) != 2) {
    throw std::runtime_error("no answer to " + command);
  }
  return {first, second};
}

struct FirstUse {
  int codePage;
  const char* title;  ///< of the direction
  double milliseconds;
  double kibibytes;
};

// The best of a few processes: what else the machine does only ever adds.
FirstUse measureFirstUse(const Direction& direction, int codePage) {
  FirstUse best = {codePage, direction.title, 1e9, 0};
  for (int i = 0; i < numTries; ++i) {
    const auto [milliseconds, kibibytes] = askProcess(nameOf(direction, codePage));
    if (milliseconds < best.milliseconds) {
      best.milliseconds = milliseconds;
      best.kibibytes = kibibytes;
    }
  }
  return best;
}

std::vector<FirstUse> slowestFirst() {
  std::vector<FirstUse> uses;
  for (const Direction& direction : directions) {
    std::cerr << "first use " << direction.title << std::endl;
    for (const int codePage : pagesWithTables()) {
      uses.push_back(measureFirstUse(direction, codePage));
    }
  }
  std::sort(uses.begin(), uses.end(), [](const FirstUse& one, const FirstUse& other) {
    return one.milliseconds > other.milliseconds;
  });
  return uses;
}

}  // namespace

void printFirstUse(const std::string& use) {
  const double resident = kibibytesResident();
  const double allocated = kibibytesAllocated();
  double milliseconds = 0;
  for (const Direction& direction : directions) {
    for (const int codePage : pagesWithTables()) {
      const bool isAsked = use == "all" || use == nameOf(direction, codePage);
      if (isAsked) milliseconds += millisecondsToEnsure(direction, codePage);
    }
  }
  const double growth = kibibytesResident() - resident;
  const double allocation = kibibytesAllocated() - allocated;
  if (use == "all") {
    std::printf("%f %f\n", growth, allocation);
  } else {
    std::printf("%f %f\n", milliseconds, allocation);
  }
}

Outcome measureFirstUses(const Options&) {
  const std::vector<FirstUse> uses = slowestFirst();
  Outcome outcome;
  outcome.markdown = tableHead({"code page", "direction", "ms", "KiB kept"}, 2);
  double sum = 0;
  for (const FirstUse& use : uses) sum += use.milliseconds;
  for (std::size_t i = 0; i < numShown; ++i) {
    outcome.markdown +=
        tableRow({std::to_string(uses[i].codePage), uses[i].title,
                  format("%.2f", uses[i].milliseconds), format("%.0f", uses[i].kibibytes)});
  }
  const auto [resident, allocated] = askProcess("all");
  outcome.markdown += format(
      "\nAll %zu code pages in both directions: %.0f ms in all, %.1f MiB more of resident memory,\n"
      "of which the tables keep %.1f MiB.\n",
      uses.size() / std::size(directions), sum, resident / 1024, allocated / 1024);
  std::cerr << outcome.markdown;
  outcome.isGood =
      uses.front().milliseconds <= mostMilliseconds && resident / 1024 <= mostMebibytes;
  if (!outcome.isGood) std::cerr << "too much for a first use\n";
  return outcome;
}

}  // namespace quorvel::bench
