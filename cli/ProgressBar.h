#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "cli/FileList.h"
#include "cli/Messages.h"
#include "cli/Progress.h"

namespace qvconv {

/// When a progress bar is shown.
enum class ShowProgress {
  automatic,  ///< on a terminal, while work takes longer than a second
  always,
  never,
};

/// Shows on the last line of standard error how far some files have come, and passes
/// messages on, which stand above that line.
class ProgressBar : public Messages {
 public:
  /// `messages` outlives this object. Not for `ShowProgress::never`.
  ProgressBar(ShowProgress when, const FileList& list, Messages& messages);

  /// Takes the bar away, or leaves the last one where it is always shown.
  ~ProgressBar() override;

  void complain(const std::string& line) override;
  void print(std::string_view text) override;
  void advance(std::size_t bytes) override;
  void endFile() override;

 private:
  using Clock = std::chrono::steady_clock;

  void drawAtTimes();
  void draw(Clock::time_point now);
  void erase();

  ShowProgress m_when;
  Messages& m_messages;
  std::mutex m_mutex;  // for all that follows
  Progress m_progress;
  Clock::time_point m_start;
  Clock::time_point m_nextDraw;
  bool m_isDrawn = false;
};

/// Whether to show one. `isTextOnTerminal`: the bar would stand in the midst of the
/// converted text.
bool isProgressShown(ShowProgress when, bool isTextOnTerminal);

}  // namespace qvconv
