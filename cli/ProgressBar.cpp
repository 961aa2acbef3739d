#include "cli/ProgressBar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "cli/Descriptor.h"

namespace qvconv {

namespace {

using namespace std::chrono_literals;

constexpr auto delay = 1s;
constexpr auto interval = 100ms;
constexpr std::string_view toLineStart = "\r";
constexpr std::string_view eraseLine = "\r\x1B[K";

// One column stays free: some terminals go to the next line behind the last.
std::size_t widthOfTerminal() {
  constexpr std::size_t usual = 80;
  winsize size{};
  const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return (isKnown ? size.ws_col : usual) - 1;
}

std::optional<std::uint64_t> bytesOf(const FileList& list) {
  std::uint64_t sum = 0;
  for (const FileEntry& file : list.files) {
    std::error_code error;
    const bool isRegular = std::filesystem::is_regular_file(file.path, error);
    const auto size = isRegular ? std::filesystem::file_size(file.path, error) : 0;
    // What is not there has nothing to be read.
    if (!isRegular && std::filesystem::exists(file.path, error)) return std::nullopt;
    if (file.path == "-") return std::nullopt;
    if (!error) sum += size;
  }
  return sum;
}

void writeToStandardError(std::string_view text) {
  // Where it cannot be seen there is nobody to tell.
  static_cast<void>(writeAll(STDERR_FILENO, text));
}

}  // namespace

bool isProgressShown(ShowProgress when, bool isTextOnTerminal) {
  if (when != ShowProgress::automatic) return when == ShowProgress::always;
  return ::isatty(STDERR_FILENO) == 1 && !isTextOnTerminal;
}

ProgressBar::ProgressBar(ShowProgress when, const FileList& list, Messages& messages)
    : m_when(when), m_messages(messages), m_start(Clock::now()), m_nextDraw(m_start) {
  m_progress.bytesInAll = bytesOf(list);
  m_progress.filesInAll = list.files.size();
  if (when == ShowProgress::automatic) m_nextDraw += delay;
}

ProgressBar::~ProgressBar() {
  if (m_when == ShowProgress::always) {
    draw(Clock::now());
    writeToStandardError("\n");
  } else {
    erase();
  }
}

void ProgressBar::complain(const std::string& line) {
  const std::lock_guard lock(m_mutex);
  erase();
  m_messages.complain(line);
}

void ProgressBar::print(std::string_view text) {
  const std::lock_guard lock(m_mutex);
  erase();
  m_messages.print(text);
}

void ProgressBar::advance(std::size_t bytes) {
  const std::lock_guard lock(m_mutex);
  m_progress.bytesDone += bytes;
  drawAtTimes();
}

void ProgressBar::endFile() {
  const std::lock_guard lock(m_mutex);
  ++m_progress.filesDone;
  drawAtTimes();
}

void ProgressBar::drawAtTimes() {
  const Clock::time_point now = Clock::now();
  if (now < m_nextDraw) return;
  m_nextDraw = now + interval;
  draw(now);
}

void ProgressBar::draw(Clock::time_point now) {
  m_progress.seconds = std::chrono::duration<double>(now - m_start).count();
  std::string line = progressLine(m_progress, widthOfTerminal());
  line.resize(std::max(line.size(), widthOfTerminal()), ' ');
  writeToStandardError(std::string(toLineStart) + line);
  m_isDrawn = true;
}

void ProgressBar::erase() {
  if (m_isDrawn) writeToStandardError(eraseLine);
  m_isDrawn = false;
}

}  // namespace qvconv
