#pragma once

namespace qvconv {

/// What the command tells the shell, the better ones first. The numbers are part of its
/// interface.
enum class ExitStatus {
  allConverted,  ///< everything was converted and written
  lossy,         ///< everything was converted, and something was lost as asked
  failed,        ///< something could not be read, converted or written
  wrongUse,      ///< the command line asked for something that does not exist
};

constexpr int numberOf(ExitStatus status) {
  switch (status) {
    case ExitStatus::allConverted:
      return 0;
    case ExitStatus::lossy:
      return 3;
    case ExitStatus::failed:
      break;
    case ExitStatus::wrongUse:
      return 2;
  }
  return 1;
}

/// What several files come to: the worse of what became of each.
constexpr ExitStatus worse(ExitStatus a, ExitStatus b) { return a < b ? b : a; }

}  // namespace qvconv
