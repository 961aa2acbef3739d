#pragma once

namespace qvconv {

/// What the command tells the shell; the numbers are part of its interface.
enum class ExitStatus : int {
  allConverted = 0,  ///< everything was converted and written
  notConverted = 1,  ///< something could not be read, converted or written
  wrongUse = 2,      ///< the command line asked for something that does not exist
};

/// What several files come to: the worse of what became of each.
constexpr ExitStatus worse(ExitStatus a, ExitStatus b) { return a < b ? b : a; }

}  // namespace qvconv
