#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/Chart.h"
#include "quorvel/text/Encoding.h"

namespace qvconv {

/// Which chart the command line asks for: of one encoding, of its codes that begin with
/// `lead`, or of what differs in two.
struct ChartRequest {
  quorvel::text::Encoding encoding = quorvel::text::Encoding::utf8();
  std::string lead;
  std::optional<quorvel::text::Encoding> other;
};

/// Reads "932", "932:81", "54936:8130" or "1252,28591". Messages call the option
/// `option`. Throws `WrongUse`.
ChartRequest readChartRequest(std::string_view text, std::string_view option);

/// Draws it. Throws `WrongUse` when no code begins with the lead.
std::string draw(const ChartRequest& request, Colours colours);

}  // namespace qvconv
