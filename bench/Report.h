#pragma once

#include <string>
#include <vector>

#include "Measure.h"

namespace quorvel::bench {

/// What the figures depend on: processor, compiler, versions of the peers.
std::string describeMachine();

/// The table for people.
std::string asMarkdown(const std::vector<Result>& results);

/// The table for programs, with the names that the peers were measured under.
std::string asCsv(const std::vector<Result>& results);

/// One line for the row just measured.
std::string asProgress(const Result& result);

}  // namespace quorvel::bench
