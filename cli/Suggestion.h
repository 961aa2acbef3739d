#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvconv {

/// The name that somebody may have meant who wrote `name`: the one that the fewest
/// letters differ from, left out, too many, wrong or exchanged with a neighbour. Empty
/// when all are too far away. Letter case and punctuation do not count.
std::string_view nearestName(std::string_view name, const std::vector<std::string_view>& names);

/// The same as words for a message, ": did you mean utf-8?", or nothing.
std::string didYouMean(std::string_view name, const std::vector<std::string_view>& names);

}  // namespace qvconv
