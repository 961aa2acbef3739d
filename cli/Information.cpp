#include "cli/Information.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "cli/Codes.h"
#include "cli/Columns.h"
#include "cli/Families.h"
#include "cli/PageHeads.h"
#include "quorvel/text/Transcoder.h"
#include "quorvel/text/convert.h"

namespace qvconv {

namespace {

using namespace quorvel::text;

constexpr std::uint32_t firstSurrogate = 0xD800;
constexpr std::uint32_t behindSurrogates = 0xE000;
constexpr std::uint32_t behindCharacters = 0x110000;

Options dropping() {
  Options options;
  options.unmappable = Action::drop;
  options.bestFits = BestFits::close;
  options.keepsMark = true;
  return options;
}

struct Written {
  std::uint64_t characters;
  std::uint64_t bestFits;  // of others
};

// By trying each character that there is.
Written countWritten(Encoding encoding) {
  constexpr std::uint64_t all = behindCharacters - (behindSurrogates - firstSurrogate);
  if (encoding.kind() == EncodingKind::unicode) return {all, 0};
  std::optional<Transcoder> transcoder =
      Transcoder::make(Encoding::utf32le(), encoding, dropping());
  std::string plane;
  for (std::uint32_t character = 0; character < behindCharacters; ++character) {
    if (character == firstSurrogate) character = behindSurrogates;
    for (int shift = 0; shift < 32; shift += 8) {
      plane += static_cast<char>(character >> shift & 0xFF);
    }
    if ((character & 0xFFFF) != 0xFFFF) continue;
    transcoder->count(plane);
    plane.clear();
  }
  transcoder->countEnd();
  const Report& report = transcoder->report();
  return {all - report.unmappable - report.bestFits, report.bestFits};
}

// The codes whose characters are written otherwise, or not at all.
std::uint64_t countOnlyRead(Encoding encoding) {
  std::uint64_t count = 0;
  Codes codes(encoding);
  codes.forEachBehind("", [&](const std::string& code, char32_t character) {
    const std::string_view bytes(reinterpret_cast<const char*>(&character), sizeof character);
    Options keepingMarks;
    keepingMarks.keepsMark = true;
    if (convert(Encoding::utf32le(), encoding, bytes, keepingMarks).text != code) ++count;
  });
  return count;
}

// "9484" as "9,484".
std::string grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::string bytesOf(Encoding encoding) {
  const std::string least = std::to_string(encoding.leastBytes());
  const std::string most = std::to_string(encoding.mostBytes());
  if (encoding.keepsState()) return least + " to " + most + ", switches of the state included";
  return least == most ? least : least + " to " + most;
}

std::string aliasesOf(Encoding encoding) {
  const std::string number = std::to_string(encoding.number());
  std::string text = number + ", cp" + number;
  for (const std::string_view alias : encoding.aliases()) text += ", " + std::string(alias);
  return text;
}

// What its table does not have; nothing is known of this where there are codes of four
// bytes, which are too many to try.
std::string beyondTable(Encoding encoding, const Written& written) {
  const bool hasTable =
      encoding.kind() == EncodingKind::singleByte || encoding.kind() == EncodingKind::multiByte;
  if (!hasTable) return "";
  std::string text;
  const std::uint64_t onlyRead = encoding.mostBytes() < 4 ? countOnlyRead(encoding) : 0;
  if (onlyRead != 0) text = grouped(onlyRead) + " codes that are only read";
  if (written.bestFits == 0) return text;
  if (!text.empty()) text += ", ";
  return text + grouped(written.bestFits) + " best fits when asked for";
}

// The head without its first line, which is a title, and the blank one behind that.
std::string_view particulars(Encoding encoding) {
  std::string_view head = headOfPage(encoding.number());
  head.remove_prefix(std::min(head.find('\n') + 1, head.size()));
  while (head.starts_with('\n')) head.remove_prefix(1);
  return head;
}

}  // namespace

std::string informationOn(Encoding encoding) {
  std::string text = std::to_string(encoding.number()) + "  " + std::string(encoding.name()) +
                     "  " + std::string(encoding.title()) + "\n\n";
  const Written written = countWritten(encoding);
  std::vector<std::vector<std::string>> rows = {{"family", std::string(familyOf(encoding))},
                                                {"bytes per character", bytesOf(encoding)},
                                                {"characters", grouped(written.characters)}};
  const std::string beyond = beyondTable(encoding, written);
  if (!beyond.empty()) rows.push_back({"beyond its table", beyond});
  rows.push_back({"also called", aliasesOf(encoding)});
  text += inColumns(rows, "", 0);
  const std::string_view more = particulars(encoding);
  if (!more.empty()) text += '\n';
  return text.append(more);
}

}  // namespace qvconv
