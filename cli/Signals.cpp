// The handler may run in any thread at any instruction, so it does nothing but what is
// allowed there: it looks at atomic numbers and plain bytes and calls `unlink`.

#include "cli/Signals.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>

namespace qvconv {

namespace {

constexpr std::array endingSignals = {SIGINT, SIGTERM, SIGHUP};

struct Place {
  std::atomic<bool> isTaken = false;
  std::atomic<bool> isListed = false;
  std::array<char, 4096> path{};
};

// Of the process, as signals are.
std::array<Place, mostListedFiles> places;
std::atomic<int> numHoldingBack = 0;
std::atomic<bool> isEnding = false;

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void waitABit() {
  const timespec millisecond = {0, 1000000};
  ::nanosleep(&millisecond, nullptr);
}

// Threads that hold signals back are never the one that this runs in.
void removeAndEnd(int signal) {
  isEnding = true;
  while (numHoldingBack > 0) waitABit();
  for (const Place& place : places) {
    if (place.isListed) ::unlink(place.path.data());
  }
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

sigset_t allEndingSignals() {
  sigset_t set;
  ::sigemptyset(&set);
  for (const int signal : endingSignals) ::sigaddset(&set, signal);
  return set;
}

// How deep the thread at hand holds signals back, and what it blocked before.
thread_local int depth = 0;
thread_local sigset_t blockedBefore;

}  // namespace

void removeListedFilesOnSignals() {
  for (const int signal : endingSignals) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = removeAndEnd;
    action.sa_mask = allEndingSignals();
    ::sigaction(signal, &action, nullptr);
  }
}

SignalsHeldBack::SignalsHeldBack() {
  if (depth++ > 0) return;
  const sigset_t set = allEndingSignals();
  ::pthread_sigmask(SIG_BLOCK, &set, &blockedBefore);
  ++numHoldingBack;
  if (!isEnding) return;
  --numHoldingBack;
  for (;;) waitABit();
}

SignalsHeldBack::~SignalsHeldBack() {
  if (--depth > 0) return;
  --numHoldingBack;
  ::pthread_sigmask(SIG_SETMASK, &blockedBefore, nullptr);
}

ListedFile::ListedFile(const std::string& path) : m_place(-1) {
  if (path.size() >= places.front().path.size()) return;
  for (int i = 0; i < mostListedFiles; ++i) {
    Place& place = places[static_cast<std::size_t>(i)];
    if (place.isTaken.exchange(true)) continue;
    std::memcpy(place.path.data(), path.c_str(), path.size() + 1);
    place.isListed = true;
    m_place = i;
    return;
  }
}

ListedFile::~ListedFile() {
  if (m_place < 0) return;
  Place& place = places[static_cast<std::size_t>(m_place)];
  place.isListed = false;
  place.isTaken = false;
}

}  // namespace qvconv
