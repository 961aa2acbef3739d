#pragma once

#include <map>
#include <string>

#include "Options.h"

namespace quorvel::bench {

/// What measuring a table came to.
struct Outcome {
  std::string markdown;                      ///< the table for people
  std::map<std::string, std::string> files;  ///< others, by name
  bool isGood = true;                        ///< whether it keeps to its limits
};

/// The tables of docs/performance.md, measured. Each takes those of its rows
/// whose names match `options.rows` and tells on standard error how far it is.
/// Throws `std::runtime_error` when something cannot be measured.
Outcome measureSpeed(const Options& options);
Outcome measureText(const Options& options);
Outcome measureSmall(const Options& options);
Outcome measureErrors(const Options& options);
Outcome measureFirstUses(const Options& options);

/// For the processes that `measureFirstUses` starts: uses the tables of a code page,
/// "decode 932" or "encode 932", and prints the milliseconds and the KiB that they
/// keep; or "all" of them, and prints the KiB of growth of the resident memory and
/// of what is allocated.
void printFirstUse(const std::string& use);

}  // namespace quorvel::bench
