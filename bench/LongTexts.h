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

/// Whether `EncodingConvert`, and quorvel/text in all its ways, keep to their limits.
bool isFastEnough(const Result& result, const Options& options);
bool isTextFastEnough(const Result& result, const Options& options);

/// A row with all its figures, on one line.
std::string asProgress(const Result& result);

}  // namespace quorvel::bench
