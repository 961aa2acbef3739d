#include "cli/ChartRequest.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "cli/EncodingChoice.h"
#include "cli/WrongUse.h"

namespace qvconv {

namespace {

using quorvel::text::Encoding;

Encoding encodingWithChart(std::string_view name, std::string_view option) {
  const Encoding encoding = chooseEncoding(name, option).encoding;
  if (!hasChart(encoding)) {
    throw WrongUse(option, "there is no chart of " + std::string(name),
                   "Unicode and ISO-2022 have none; --info tells of them");
  }
  return encoding;
}

// "8130" as the bytes 81 30.
std::string bytesOf(std::string_view digits, std::string_view option) {
  std::string bytes;
  for (std::string_view rest = digits; !rest.empty();) {
    const std::string_view pair = rest.substr(0, 2);
    rest.remove_prefix(pair.size());
    unsigned char byte = 0;
    const char* const end = pair.data() + pair.size();
    const auto [stop, error] = std::from_chars(pair.data(), end, byte, 16);
    if (pair.size() < 2 || error != std::errc() || stop != end) {
      throw WrongUse(option, '"' + std::string(digits) + "\" is no lead",
                     "it is written as pairs of hexadecimal digits, as in 932:81");
    }
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

}  // namespace

ChartRequest readChartRequest(std::string_view text, std::string_view option) {
  const std::size_t comma = text.find(',');
  if (comma != std::string_view::npos) {
    return {encodingWithChart(text.substr(0, comma), option), "",
            encodingWithChart(text.substr(comma + 1), option)};
  }
  // The names of some encodings have a colon of their own.
  const std::size_t colon = Encoding::find(text) ? std::string_view::npos : text.rfind(':');
  if (colon == std::string_view::npos) return {encodingWithChart(text, option), "", {}};
  return {encodingWithChart(text.substr(0, colon), option),
          bytesOf(text.substr(colon + 1), option),
          {}};
}

std::string draw(const ChartRequest& request, Colours colours) {
  if (request.other) return chartOfDifferences(request.encoding, *request.other, colours);
  std::optional<std::string> chart = chartOf(request.encoding, request.lead, colours);
  if (!chart) {
    throw WrongUse("--chart", "no code begins with this lead",
                   "the chart of the encoding shows what leads");
  }
  return std::move(*chart);
}

}  // namespace qvconv
