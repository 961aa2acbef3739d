#include "cli/Detection.h"

#include <algorithm>
#include <memory>

#include "cli/Columns.h"
#include "cli/Json.h"
#include "quorvel/names/Psdk.h"

#ifdef QVCONV_WITH_UCHARDET
#include <uchardet.h>
#endif

namespace qvconv {

using quorvel::text::Candidate;
using quorvel::text::Encoding;

#ifdef QVCONV_WITH_UCHARDET

std::optional<Encoding> guessEncoding(std::string_view text) {
  // Its answer hardly changes behind that, and its time grows with the text.
  constexpr std::size_t most = 65536;
  const std::unique_ptr<uchardet, decltype(&uchardet_delete)> detector(uchardet_new(),
                                                                       &uchardet_delete);
  const std::string_view part = text.substr(0, most);
  if (!detector || uchardet_handle_data(detector.get(), part.data(), part.size()) != 0) {
    return std::nullopt;
  }
  uchardet_data_end(detector.get());
  return Encoding::find(uchardet_get_charset(detector.get()));
}

#else

std::optional<Encoding> guessEncoding(std::string_view) { return std::nullopt; }

#endif

std::vector<Candidate> detectEncoding(std::string_view text, bool goesOn) {
  return quorvel::text::detect(text, {.guess = guessEncoding(text),
                                      .local = Encoding::find(quorvel::Psdk::getAnsiCodePage()),
                                      .goesOn = goesOn});
}

std::vector<Candidate> detectEncoding(Input& input) {
  const Input::Beginning beginning = input.lookAhead(quorvel::text::mostBytesDetected);
  return detectEncoding(beginning.bytes, beginning.goesOn);
}

std::string lossesOf(const Candidate& candidate) {
  if (candidate.losses == 0) return "no loss";
  return std::to_string(candidate.losses) + (candidate.losses == 1 ? " loss" : " losses");
}

std::string candidatesAsText(std::span<const Candidate> candidates, std::string_view file) {
  std::vector<std::vector<std::string>> rows;
  for (const Candidate& candidate : candidates) {
    const Encoding encoding = candidate.encoding;
    rows.push_back({std::to_string(encoding.number()), std::string(encoding.name()),
                    lossesOf(candidate), std::string(encoding.title())});
  }
  return std::string(file) + '\n' + inColumns(rows, "  ", 1);
}

std::string candidatesAsJson(std::span<const Candidate> candidates, std::string_view file) {
  json::Array list;
  for (const Candidate& candidate : candidates) {
    list.addJson(json::Object()
                     .add("number", candidate.encoding.number())
                     .add("name", candidate.encoding.name())
                     .add("losses", candidate.losses)
                     .text());
  }
  return json::Object().add("file", file).addJson("candidates", list.text()).text() + '\n';
}

}  // namespace qvconv
