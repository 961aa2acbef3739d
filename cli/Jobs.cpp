#include "cli/Jobs.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "cli/Signals.h"

namespace qvconv {

namespace {

/// Lets one file speak at once, and keeps what those behind it say until it is their
/// turn.
class InTurn {
 public:
  InTurn(std::size_t count, Messages& messages) : m_kept(count), m_messages(messages) {}

  using Saying = std::function<void(Messages&)>;

  void say(std::size_t file, Saying saying) {
    const std::lock_guard lock(m_mutex);
    if (file == m_turn) {
      saying(m_messages);
    } else {
      m_kept[file].sayings.push_back(std::move(saying));
    }
  }

  void end(std::size_t file) {
    const std::lock_guard lock(m_mutex);
    m_kept[file].hasEnded = true;
    while (m_turn < m_kept.size() && m_kept[m_turn].hasEnded) {
      m_kept[m_turn] = {};
      if (++m_turn == m_kept.size()) return;
      for (const Saying& saying : std::exchange(m_kept[m_turn].sayings, {})) saying(m_messages);
    }
  }

 private:
  struct Kept {
    std::vector<Saying> sayings;
    bool hasEnded = false;
  };

  std::mutex m_mutex;
  std::size_t m_turn = 0;
  std::vector<Kept> m_kept;
  Messages& m_messages;
};

class MessagesOfFile : public Messages {
 public:
  MessagesOfFile(std::size_t file, InTurn& inTurn) : m_file(file), m_inTurn(inTurn) {}

  void complain(const std::string& line) override {
    m_inTurn.say(m_file, [line](Messages& messages) { messages.complain(line); });
  }
  void print(std::string_view text) override {
    m_inTurn.say(m_file, [kept = std::string(text)](Messages& messages) { messages.print(kept); });
  }

 private:
  std::size_t m_file;
  InTurn& m_inTurn;
};

/// What the threads share.
class Team {
 public:
  Team(const std::vector<FileEntry>& files, Messages& messages)
      : m_files(files), m_inTurn(files.size(), messages) {}

  /// Takes files until there are none, or one of the team has thrown.
  void work(const Worker& worker) noexcept try {
    for (std::size_t i = m_next++; i < m_files.size() && !m_hasFailed; i = m_next++) {
      MessagesOfFile messages(i, m_inTurn);
      const ExitStatus status = worker(m_files[i], messages);
      m_inTurn.end(i);
      const std::lock_guard lock(m_mutex);
      m_status = worse(m_status, status);
    }
  } catch (...) {
    const std::lock_guard lock(m_mutex);
    if (!m_error) m_error = std::current_exception();
    m_hasFailed = true;
  }

  ExitStatus status() const {
    if (m_error) std::rethrow_exception(m_error);
    return m_status;
  }

 private:
  const std::vector<FileEntry>& m_files;
  InTurn m_inTurn;
  std::atomic<std::size_t> m_next = 0;
  std::atomic<bool> m_hasFailed = false;
  std::mutex m_mutex;
  ExitStatus m_status = ExitStatus::allConverted;
  std::exception_ptr m_error;
};

// The threads inherit that signals are blocked, so that the thread that waits for them
// gets all.
std::vector<std::jthread> startThreads(std::size_t count, Team& team,
                                       const std::function<Worker()>& makeWorker) {
  const SignalsHeldBack held;
  std::vector<std::jthread> threads;
  for (std::size_t i = 0; i < count; ++i) {
    threads.emplace_back([&team, worker = makeWorker()] { team.work(worker); });
  }
  return threads;
}

}  // namespace

ExitStatus runJobs(const std::vector<FileEntry>& files, unsigned int numJobs,
                   const std::function<Worker()>& makeWorker, Messages& messages) {
  Team team(files, messages);
  const std::size_t count = std::min<std::size_t>(std::max(numJobs, 1U), files.size());
  if (count == 1) {
    team.work(makeWorker());
  } else {
    std::vector<std::jthread> threads = startThreads(count, team, makeWorker);
    for (std::jthread& thread : threads) thread.join();
  }
  return team.status();
}

}  // namespace qvconv
