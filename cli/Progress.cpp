#include "cli/Progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

namespace qvconv {

namespace {

constexpr std::size_t narrowestBar = 10;

std::string sizeOf(double bytes) {
  constexpr std::array units = {"bytes", "KiB", "MiB", "GiB", "TiB"};
  std::size_t unit = 0;
  for (; bytes >= 1024 && unit + 1 < units.size(); ++unit) bytes /= 1024;
  std::array<char, 32> text{};
  const int decimals = unit > 0 && bytes < 100 ? 1 : 0;
  static_cast<void>(
      std::snprintf(text.data(), text.size(), "%.*f %s", decimals, bytes, units.at(unit)));
  return text.data();
}

std::string timeOf(double seconds) {
  constexpr double longest = 360000;
  if (!(seconds < longest)) return "long";
  const auto whole = static_cast<unsigned long>(std::ceil(seconds));
  std::array<char, 32> text{};
  if (whole >= 3600) {
    static_cast<void>(std::snprintf(text.data(), text.size(), "%lu:%02lu:%02lu", whole / 3600,
                                    whole / 60 % 60, whole % 60));
  } else {
    static_cast<void>(std::snprintf(text.data(), text.size(), "%lu:%02lu", whole / 60, whole % 60));
  }
  return text.data();
}

// Of a file that grows more may be read than there was.
double shareOf(const Progress& progress) {
  const auto all = static_cast<double>(progress.bytesInAll.value_or(0));
  return all > 0 ? std::min(static_cast<double>(progress.bytesDone) / all, 1.0) : 0;
}

std::string barOf(double share, std::size_t width) {
  const std::size_t inside = width - 2;
  const auto filled = static_cast<std::size_t>(share * static_cast<double>(inside));
  return '[' + std::string(filled, '#') + std::string(inside - filled, '.') + ']';
}

// What there is to tell, the more important first.
std::vector<std::string> partsOf(const Progress& progress) {
  const auto done = static_cast<double>(progress.bytesDone);
  const double rate = progress.seconds > 0 ? done / progress.seconds : 0;
  std::vector<std::string> parts;
  if (progress.bytesInAll) {
    parts.push_back(std::to_string(static_cast<int>(shareOf(progress) * 100)) + '%');
    parts.push_back(sizeOf(done) + " of " + sizeOf(static_cast<double>(*progress.bytesInAll)));
  } else {
    parts.push_back(sizeOf(done));
  }
  if (rate > 0) parts.push_back(sizeOf(rate) + "/s");
  if (rate > 0 && progress.bytesInAll) {
    const auto all = static_cast<double>(*progress.bytesInAll);
    parts.push_back(timeOf(std::max(all - done, 0.0) / rate) + " left");
  }
  if (progress.filesInAll > 1) {
    parts.push_back(std::to_string(progress.filesDone) + " of " +
                    std::to_string(progress.filesInAll) + " files");
  }
  return parts;
}

}  // namespace

std::string progressLine(const Progress& progress, std::size_t width) {
  std::string text;
  for (const std::string& part : partsOf(progress)) {
    const std::string more = (text.empty() ? "" : "  ") + part;
    if (text.size() + more.size() > width) break;
    text += more;
  }
  constexpr std::size_t gap = 2;
  if (!progress.bytesInAll || text.size() + gap + narrowestBar > width) return text;
  return barOf(shareOf(progress), width - text.size() - gap) + std::string(gap, ' ') + text;
}

}  // namespace qvconv
