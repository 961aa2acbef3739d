#pragma once

#include <string>
#include <vector>

#include "Measure.h"
#include "Options.h"

namespace quorvel::bench {

/// All that take part, on every row whose name matches `options.rows`, one long text
/// each. Measured by the first call, for all the tables that show some of it; a row
/// that misses a limit is measured once more.
const std::vector<Result>& measureLongTexts(const Options& options);

/// Whether a figure of ours keeps to the limits.
bool isFastEnough(const OurFigure& converter, const Options& options);
bool isFastEnoughText(const OurFigure& text, const Options& options);

std::string megabytes(double speed);

/// A row with all its figures, on one line.
std::string asProgress(const Result& result);

}  // namespace quorvel::bench
