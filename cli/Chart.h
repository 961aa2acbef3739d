#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quorvel/text/Encoding.h"

namespace qvconv {

/// Whether a chart is coloured, which the caller knows: only on a terminal, and not
/// where NO_COLOR is set.
enum class Colours { no, yes };

/// Whether there are charts of an encoding: of all but Unicode and ISO-2022.
bool hasChart(quorvel::text::Encoding encoding);

/// A grid of the codes that begin with the bytes of `lead`, none for the first bytes,
/// 16 to a line. Of bytes that lead longer codes it says how many these are. Nothing
/// when no code begins so.
std::optional<std::string> chartOf(quorvel::text::Encoding encoding, std::string_view lead,
                                   Colours colours);

/// The codes that mean something else in two encodings, or nothing in one of them, a
/// line each.
std::string chartOfDifferences(quorvel::text::Encoding one, quorvel::text::Encoding other,
                               Colours colours);

}  // namespace qvconv
