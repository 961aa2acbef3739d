#pragma once

#include <string>
#include <vector>

namespace quorvel::bench {

/// As printf.
[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...);

/// The two lines that begin a table; the columns named after `numTexts` hold
/// numbers.
std::string tableHead(const std::vector<std::string>& names, std::size_t numTexts);

std::string tableRow(const std::vector<std::string>& cells);

/// A speed in millions of bytes per second; "-" for none.
std::string megabytes(double speed);

/// A ratio; "-" for an infinite one, which is that to a peer that takes no part.
std::string asRatio(double ratio);

}  // namespace quorvel::bench
