// Which code pages the process would have on Windows: an override, or what
// LocaleCodePages.hpp says of the locale.

#include "quorvel/names/Psdk.h"

#include <atomic>
#include <clocale>

#include "quorvel/names/LocaleCodePages.hpp"

namespace quorvel {

namespace {

std::atomic<int> ansiOverride{0};
std::atomic<int> oemOverride{0};

LocaleCodePages codePagesOfProcess() {
  // Only asked, never set: NOLINTNEXTLINE(concurrency-mt-unsafe)
  return codePagesOfLocale(std::setlocale(LC_CTYPE, nullptr));
}

}  // namespace

int Psdk::getAnsiCodePage() {
  const int chosen = ansiOverride.load(std::memory_order_relaxed);
  return chosen != 0 ? chosen : codePagesOfProcess().ansi;
}

int Psdk::getOemCodePage() {
  const int chosen = oemOverride.load(std::memory_order_relaxed);
  return chosen != 0 ? chosen : codePagesOfProcess().oem;
}

void Psdk::setCodePages(int ansi, int oem) {
  ansiOverride.store(ansi, std::memory_order_relaxed);
  oemOverride.store(oem, std::memory_order_relaxed);
}

}  // namespace quorvel
