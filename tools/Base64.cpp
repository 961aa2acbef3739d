// Base64 as ContentCoding decodes it.

#include "tools/Base64.h"

#include "quorvel/kernel/Base64Digits.hpp"

namespace pack {

std::string encodeBase64(const Bytes& bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned int group = 0;
    for (std::size_t j = i; j < i + 3; ++j) group = group << 8 | (j < bytes.size() ? bytes[j] : 0U);
    for (int shift = 18; shift >= 0; shift -= 6)
      text += quorvel::base64Digits[group >> shift & 0x3F];
  }
  // The characters that carry nothing of the last group are padding.
  for (std::size_t missing = (3 - bytes.size() % 3) % 3; missing > 0; --missing) {
    text[text.size() - missing] = '=';
  }
  return text;
}

}  // namespace pack
