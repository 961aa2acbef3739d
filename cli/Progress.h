#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace qvconv {

/// How far some work has come.
struct Progress {
  std::uint64_t bytesDone = 0;
  std::optional<std::uint64_t> bytesInAll;  ///< where that is known
  std::size_t filesDone = 0;
  std::size_t filesInAll = 0;
  double seconds = 0;  ///< since it began
};

/// The progress as a line of at most `width` columns: a bar, the share, bytes, the rate,
/// the time left and the files, as much of it as there is room for.
std::string progressLine(const Progress& progress, std::size_t width);

}  // namespace qvconv
