#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/text/convert.h"
#include "tests/helpers/Bytes.h"
#include "tests/reference/TextReference.h"

/// The text layer and its reference behind one signature, and what they give in
/// readable form.
namespace quorvel::test_text {

using text::Action;
using text::Loss;
using text::LossKind;
using text::Report;
using text_reference::Result;
using text_reference::Rules;

inline text::Encoding encodingOf(int number) {
  const auto found = text::Encoding::find(number);
  if (!found) throw std::invalid_argument("no encoding " + std::to_string(number));
  return *found;
}

inline text::Options optionsOf(const Rules& rules) {
  text::Options options;
  options.malformed = rules.malformed;
  options.unmappable = rules.unmappable;
  options.substitute = rules.substitute;
  options.escape = rules.escape;
  if (rules.reconvert) options.reconvert = encodingOf(*rules.reconvert);
  options.bestFits = rules.fitsBest ? text::BestFits::close : text::BestFits::none;
  options.keepsMark = rules.keepsMark;
  options.writesMark = rules.writesMark;
  options.onLoss = rules.onLoss;
  return options;
}

inline Result convertByLayer(int from, int to, std::string_view source, const Rules& rules) {
  text::Converted converted =
      text::convert(encodingOf(from), encodingOf(to), source, optionsOf(rules));
  return {std::move(converted.text), std::move(converted.report)};
}

struct Door {
  const char* name;
  Result (*convert)(int from, int to, std::string_view source, const Rules& rules);
};

/// Examples are for both: what is written out here is what neither may change.
inline constexpr Door doors[] = {
    {"the layer", convertByLayer},
    {"the reference", text_reference::convert},
};

/// "0+2" for malformed bytes, "0+2:U+20AC" for a character without a place,
/// "0+2~U+00A0" for a best fit: offset and length.
inline std::string toShort(const Loss& loss) {
  std::string shortForm = std::to_string(loss.offset) + "+" + std::to_string(loss.length);
  if (loss.kind == LossKind::malformed) return shortForm;
  return shortForm + (loss.kind == LossKind::bestFit ? "~U+" : ":U+") +
         text_reference::hexDigits(loss.character, 4);
}

inline std::string toShort(const std::vector<Loss>& losses) {
  std::string all;
  for (const Loss& loss : losses) all += (all.empty() ? "" : " ") + toShort(loss);
  return all;
}

inline std::string toText(const Report& report) {
  std::ostringstream text;
  const auto first = [&](const char* what, std::uint64_t count, const std::optional<Loss>& loss) {
    text << ", " << count << ' ' << what;
    if (!loss) return;
    const std::string_view bytes(reinterpret_cast<const char*>(loss->storage.data()),
                                 std::min<std::size_t>(loss->length, Loss::mostBytes));
    text << ", the first at " << toShort(*loss) << " = " << quorvel_test::hex(bytes);
  };
  text << "read " << report.bytesRead << ", wrote " << report.bytesWritten;
  first("malformed", report.malformed, report.firstMalformed);
  first("unmappable", report.unmappable, report.firstUnmappable);
  first("best fits", report.bestFits, report.firstBestFit);
  text << (report.stopped ? ", stopped" : "");
  if (!report.refusal.empty()) text << ", refused: " << report.refusal;
  return text.str();
}

/// A conversion with its losses, as the handler was told of them.
struct Outcome {
  std::string bytes;  ///< in hexadecimal
  std::string losses;
  bool operator==(const Outcome&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << '"' << outcome.bytes << "\", losses \"" << outcome.losses << '"';
}

inline Outcome outcomeOf(const Door& door, int from, int to, std::string_view source, Rules rules) {
  std::vector<Loss> losses;
  rules.onLoss = [&losses, inner = rules.onLoss](const Loss& loss) {
    losses.push_back(loss);
    return inner ? inner(loss) : std::nullopt;
  };
  const Result result = door.convert(from, to, source, rules);
  return {quorvel_test::hex(result.text), toShort(losses)};
}

/// What is lost is left out.
inline Rules dropping() {
  Rules rules;
  rules.malformed = Action::drop;
  rules.unmappable = Action::drop;
  return rules;
}

}  // namespace quorvel::test_text
