#include "quorvel/text/Report.h"

#include <cstdio>

namespace quorvel::text {

namespace {

std::string hex(std::uint64_t value, int digits) {
  char text[24];
  static_cast<void>(
      std::snprintf(text, sizeof text, "%0*llX", digits, static_cast<unsigned long long>(value)));
  return text;
}

std::string bytesOf(const Loss& loss) {
  std::string text;
  for (const unsigned char byte : loss.bytes()) {
    if (!text.empty()) text += ' ';
    text += hex(byte, 2);
  }
  return text;
}

std::string countOf(std::uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace

std::string toSentence(const Loss& loss, Encoding from, Encoding to) {
  const std::string place = "byte " + std::to_string(loss.offset) + ": ";
  const std::string character = "U+" + hex(loss.character, 4);
  switch (loss.kind) {
    case LossKind::malformed:
      return place + bytesOf(loss) + " is no character in " + std::string(from.name());
    case LossKind::unmappable:
      return place + character + " has no place in " + std::string(to.name());
    case LossKind::bestFit:
      break;
  }
  return place + character + " became a character of " + std::string(to.name()) +
         " that looks like it";
}

std::string toSentence(const Report& report, Encoding from, Encoding to) {
  if (!report.refusal.empty()) return report.refusal;
  const std::string pair = " from " + std::string(from.name()) + " to " + std::string(to.name());
  std::string sentence = countOf(report.bytesRead, "byte", "bytes") + pair;
  if (report.isLossless()) return sentence + ": all of it.";
  sentence += report.stopped ? ", then stopped: " : ": ";
  std::string list;
  const auto add = [&](std::uint64_t count, const char* one, const char* many) {
    if (count == 0) return;
    if (!list.empty()) list += ", ";
    list += countOf(count, one, many);
  };
  add(report.malformed, "malformed sequence", "malformed sequences");
  add(report.unmappable, "character without a place", "characters without a place");
  add(report.bestFits, "best fit", "best fits");
  const Loss* first = nullptr;
  for (const auto* loss : {&report.firstMalformed, &report.firstUnmappable, &report.firstBestFit}) {
    if (*loss && (!first || (*loss)->offset < first->offset)) first = &**loss;
  }
  return sentence + list + "; the first at " + toSentence(*first, from, to) + ".";
}

}  // namespace quorvel::text
