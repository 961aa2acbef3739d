// The source text of a row, encoded by a peer.

#include "SourceText.h"

#include <stdexcept>

#include "Contender.h"
#include "Corpus.h"

namespace quorvel::bench {

namespace {

constexpr std::size_t numSlices = 1000;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

std::string encoded(const std::string& text, const Encoding& encoding) {
  for (const std::string& name : wordsOf(encoding.iconvNames)) {
    const auto contender = makeIconv("UTF-8", name, text.size(), OnError::stop);
    if (contender && contender->convert(text)) return std::string(contender->result());
  }
  throw std::runtime_error("text does not fit code page " + std::to_string(encoding.codePage));
}

// The size that counts is the one in the source encoding, which is known only
// when some text has been encoded.
std::string sourceText(const Row& row, std::size_t numBytes) {
  const std::string trial = makeText(*row.language, numBytes);
  const std::size_t trialSize = encoded(trial, *row.from).size();
  const std::size_t size =
      static_cast<std::size_t>(1.0 * static_cast<double>(numBytes) *
                               static_cast<double>(trial.size()) / static_cast<double>(trialSize));
  return encoded(makeText(*row.language, size), *row.from);
}

const std::string& CharacterEncoder::encode(const std::string& character) {
  std::string& bytes = m_known[character];
  if (bytes.empty()) bytes = encoded(character, m_encoding);
  return bytes;
}

std::vector<std::string> sourceSlices(const Row& row, std::size_t numBytes) {
  CharacterEncoder encoder(*row.from);
  std::vector<std::string> slices(1);
  // No character is more than three times as long in UTF-8.
  for (const std::string& character :
       charactersOf(makeText(*row.language, 3 * numBytes * numSlices))) {
    const std::string& bytes = encoder.encode(character);
    if (slices.back().size() + bytes.size() > numBytes) {
      if (slices.size() == numSlices) break;
      slices.emplace_back();
    }
    slices.back() += bytes;
  }
  return slices;
}

std::vector<std::string> charactersOf(const std::string& text) {
  std::vector<std::string> characters;
  for (const char byte : text) {
    if (!isContinuation(byte)) characters.emplace_back();
    characters.back() += byte;
  }
  return characters;
}

}  // namespace quorvel::bench
