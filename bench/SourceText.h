#pragma once

#include <map>
#include <string>
#include <vector>

#include "Rows.h"

namespace quorvel::bench {

/// UTF-8 text in another encoding. A peer encodes it, so that what we decode does
/// not come from us. Throws `std::runtime_error` when it does not fit.
std::string encoded(const std::string& text, const Encoding& encoding);

/// Text of the row's language in its source encoding, about `numBytes` long.
std::string sourceText(const Row& row, std::size_t numBytes);

/// Many pieces of such text, each of whole characters and as close to `numBytes`
/// as they allow. The encoding must not have states.
std::vector<std::string> sourceSlices(const Row& row, std::size_t numBytes);

/// The characters of UTF-8 text, one by one.
std::vector<std::string> charactersOf(const std::string& text);

/// Encodes one character after the other, each kind of them once. The encoding
/// must not have states.
class CharacterEncoder {
 public:
  explicit CharacterEncoder(const Encoding& encoding) : m_encoding(encoding) {}

  const std::string& encode(const std::string& character);

 private:
  const Encoding& m_encoding;
  std::map<std::string, std::string> m_known;
};

}  // namespace quorvel::bench
