#include "quorvel/text/detect.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <tuple>

#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/text/Codecs.hpp"
#include "quorvel/text/DecodedText.hpp"
#include "quorvel/text/Plausibility.hpp"

namespace quorvel::text {

namespace {

// What is looked at, and whether the text ends there.
struct Sample {
  std::string_view text;
  bool isWhole;
};

// A candidate, and what it is compared by.
struct Judged {
  Candidate candidate;
  bool isGuess;
  Plausibility plausibility;
  unsigned int place;  ///< among the candidates of equal looks
};

// --- What decides alone -------------------------------------------------------

// Calls `see(character)` for all that is read in an encoding, and counts what is not.
template <typename See>
std::uint64_t readIn(Encoding encoding, const Sample& sample, const See& see) {
  DecodedText decoded(encoding);
  decoded.push(sample.text, see);
  if (sample.isWhole) decoded.finish(see);
  return decoded.report().malformed;
}

std::optional<Encoding> encodingOfMark(std::string_view text) {
  using namespace std::string_view_literals;
  // The mark of UTF-32 begins with one of UTF-16.
  const std::pair<std::string_view, Encoding> marks[] = {{"\xFF\xFE\0\0"sv, Encoding::utf32le()},
                                                         {"\0\0\xFE\xFF"sv, Encoding::utf32be()},
                                                         {"\xFF\xFE"sv, Encoding::utf16le()},
                                                         {"\xFE\xFF"sv, Encoding::utf16be()},
                                                         {"\xEF\xBB\xBF"sv, Encoding::utf8()}};
  for (const auto& [mark, encoding] : marks) {
    if (text.starts_with(mark)) return encoding;
  }
  return std::nullopt;
}

// Controls that plain text has no use for, but that switch sets or fill UTF-16.
bool isPlainAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    constexpr unsigned char shiftOut = 0x0E;
    constexpr unsigned char escape = 0x1B;
    return byte < 0x80 && byte != 0 && byte != shiftOut && byte != escape;
  });
}

// Well-formed, with a whole character beyond ASCII.
bool isSurelyUtf8(const Sample& sample) {
  bool goesBeyondAscii = false;
  const std::uint64_t losses = readIn(
      Encoding::utf8(), sample, [&](char32_t character) { goesBeyondAscii |= character >= 0x80; });
  return losses == 0 && goesBeyondAscii;
}

std::optional<Candidate> withoutDoubt(const Sample& sample) {
  if (const auto marked = encodingOfMark(sample.text)) {
    return Candidate{*marked, readIn(*marked, sample, [](char32_t) {})};
  }
  if (isPlainAscii(sample.text)) return Candidate{*Encoding::find(codePageUsAscii)};
  if (isSurelyUtf8(sample)) return Candidate{Encoding::utf8()};
  return std::nullopt;
}

// --- Candidates ---------------------------------------------------------------

// The pages of Windows hold what those of ISO hold and are more in use than the others.
constexpr std::array familiesOfCandidates = {EncodingFamily::windows, EncodingFamily::eastAsian,
                                             EncodingFamily::koi8, EncodingFamily::iso8859,
                                             EncodingFamily::dos};

// Whether another number stands for the same reading.
bool isReadAsAnother(Encoding encoding) {
  const CodePage& page = findCodePage(encoding.number());
  if (page.table.sharedWith != 0) return true;
  return std::ranges::any_of(Encoding::all(), [&](Encoding other) {
    return other.number() < encoding.number() && page.table.wrapped != 0 &&
           findCodePage(other.number()).table.wrapped == page.table.wrapped;
  });
}

EncodingScript scriptOf(const DetectionHints& hints) {
  for (const std::optional<Encoding>& known : {hints.guess, hints.local}) {
    if (known && known->script() != EncodingScript::any) return known->script();
  }
  return EncodingScript::latin;
}

// Without a repetition, those first that are taken where nothing else tells.
std::vector<Encoding> candidatesFor(const DetectionHints& hints) {
  std::vector<Encoding> candidates;
  const auto add = [&](Encoding encoding) {
    if (std::ranges::find(candidates, encoding) == candidates.end()) candidates.push_back(encoding);
  };
  if (hints.guess) add(*hints.guess);
  const EncodingScript script = scriptOf(hints);
  if (hints.local && hints.local->script() == script) add(*hints.local);
  for (const EncodingFamily family : familiesOfCandidates) {
    for (const Encoding encoding : Encoding::all()) {
      const bool isOfThem = encoding.family() == family && encoding.script() == script;
      if (isOfThem && !isReadAsAnother(encoding)) add(encoding);
    }
  }
  add(Encoding::utf16le());
  add(Encoding::utf16be());
  return candidates;
}

// --- Ranking ------------------------------------------------------------------

// In the wrong order of bytes ASCII, blanks and line ends above all, becomes characters
// whose number ends in 00. The ideographic blank and the ideograph for one are two that
// texts have.
bool isAsciiOfOtherOrder(char32_t character) {
  return character != 0 && (character & 0xFF) == 0 && character != 0x3000 && character != 0x4E00;
}

Judged judge(Encoding encoding, const Sample& sample, const DetectionHints& hints,
             unsigned int place) {
  const bool isUtf16Text = isUtf16(encoding.number());
  Plausibility plausibility;
  const std::uint64_t losses = readIn(encoding, sample, [&](char32_t character) {
    plausibility.see(isUtf16Text && isAsciiOfOtherOrder(character) ? U'\uFFFE' : character);
  });
  return {{encoding, losses}, encoding == hints.guess, plausibility, place};
}

// Nearly all bytes can be read as UTF-16. Where they are not, every second character has
// a fault at least, and where they are, hardly one in ten.
bool isMisreadUtf16(const Judged& judged) {
  const Plausibility& read = judged.plausibility;
  return isUtf16(judged.candidate.encoding.number()) && read.faults() * 3 > read.characters();
}

// Texts have no U+0000, but UTF-16 that is taken for bytes has them, and hardly a loss.
bool isLikelier(const Judged& a, const Judged& b) {
  const auto keyOf = [](const Judged& judged) {
    return std::tuple(isMisreadUtf16(judged), judged.candidate.losses,
                      judged.plausibility.hasNull(), !judged.isGuess, judged.plausibility.faults(),
                      judged.place);
  };
  return keyOf(a) < keyOf(b);
}

}  // namespace

std::vector<Candidate> detect(std::string_view text, const DetectionHints& hints) {
  const Sample sample{text.substr(0, mostBytesDetected),
                      text.size() <= mostBytesDetected && !hints.goesOn};
  if (const auto only = withoutDoubt(sample)) return {*only};
  std::vector<Judged> judged;
  for (const Encoding encoding : candidatesFor(hints)) {
    judged.push_back(judge(encoding, sample, hints, static_cast<unsigned int>(judged.size())));
  }
  std::ranges::sort(judged, isLikelier);
  std::vector<Candidate> candidates;
  std::ranges::transform(judged, std::back_inserter(candidates), &Judged::candidate);
  return candidates;
}

}  // namespace quorvel::text
