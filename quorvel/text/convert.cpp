#include "quorvel/text/convert.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/MacArabic.hpp"
#include "quorvel/pages/TableRegistry.hpp"
#include "quorvel/text/Codecs.hpp"
#include "quorvel/text/GrowingString.hpp"
#include "quorvel/text/Transcoder.h"

namespace quorvel::text {

namespace {

// Calls `run(transcoder, text)` with what there is to convert.
template <typename Run>
Report runWhole(Encoding from, Encoding to, std::string_view text, const Options& options,
                const Run& run) {
  Report refused;
  refused.refusal = whyRefused(from, to, options);
  if (!refused.refusal.empty()) return refused;
  Options inOrder = options;
  inOrder.visualOrder = false;
  std::optional<Transcoder> transcoder = Transcoder::make(from, to, std::move(inOrder));
  if (!options.visualOrder) {
    run(*transcoder, text);
    return transcoder->report();
  }
  std::string logical(text);
  reorderMacArabic(reinterpret_cast<unsigned char*>(logical.data()), logical.size());
  run(*transcoder, logical);
  return transcoder->report();
}

template <typename String>
ConvertedTo<String> convertInto(Encoding from, Encoding to, std::string_view text,
                                const Options& options) {
  ConvertedTo<String> result;
  result.report =
      runWhole(from, to, text, options, [&](Transcoder& transcoder, std::string_view whole) {
        const auto push = [&](std::string_view rest, std::span<char> room) {
          return transcoder.push(rest, room);
        };
        const auto finish = [&](std::string_view, std::span<char> room) {
          return transcoder.finish(room);
        };
        const Report& report = transcoder.report();
        const Step pushed = GrowingString(result.text, report).append(whole, push);
        if (pushed.wants != Wants::reset) GrowingString(result.text, report).append("", finish);
      });
  return result;
}

constexpr std::uint64_t unknown = std::numeric_limits<std::uint64_t>::max();

std::uint64_t atMost(std::uint64_t numBytes, std::uint64_t factor, std::uint64_t more) {
  return numBytes > (unknown - more) / factor ? unknown : numBytes * factor + more;
}

}  // namespace

Converted convert(Encoding from, Encoding to, std::string_view text, const Options& options) {
  return convertInto<std::string>(from, to, text, options);
}

ConvertedTo<std::u16string> toUtf16(Encoding from, std::string_view text, const Options& options) {
  return convertInto<std::u16string>(from, Encoding::utf16le(), text, options);
}

ConvertedTo<std::u32string> toUtf32(Encoding from, std::string_view text, const Options& options) {
  return convertInto<std::u32string>(from, Encoding::utf32le(), text, options);
}

Report check(Encoding from, Encoding to, std::string_view text, const Options& options) {
  return runWhole(from, to, text, options, [](Transcoder& transcoder, std::string_view whole) {
    if (transcoder.count(whole)) transcoder.countEnd();
  });
}

std::uint64_t mostBytes(Encoding from, Encoding to, std::uint64_t numBytes,
                        const Options& options) {
  if (options.onLoss) return unknown;
  const bool mayReconvert =
      options.malformed == Action::reconvert || options.unmappable == Action::reconvert;
  const bool maySubstitute =
      options.malformed == Action::substitute || options.unmappable == Action::substitute;
  const bool mayEscape =
      options.malformed == Action::escape || options.unmappable == Action::escape;
  // Characters that a byte of the source may become, an escape counting as many.
  std::uint64_t characters = 1;
  if (maySubstitute && options.substitute) {
    characters = std::max<std::uint64_t>(characters, options.substitute->size());
  }
  // Where losses share bytes each is written anew.
  if (options.malformed == Action::preserve && from.keepsState()) characters = 2;
  constexpr std::uint64_t longestEscape = 10;  // \U0001F600 and &#x10FFFF;
  if (mayEscape) characters = std::max(characters, longestEscape);
  if (options.lineEnds == LineEnds::crLf) characters = std::max<std::uint64_t>(characters, 2);
  if (mayReconvert) characters = std::max<std::uint64_t>(characters, Encoder::mostBytes);
  // A switch of the state on either side, and a header or a mark.
  return atMost(numBytes, characters * to.mostBytes(), Encoder::mostBytes);
}

void releaseTables() { tableRegistry::release(); }

}  // namespace quorvel::text
