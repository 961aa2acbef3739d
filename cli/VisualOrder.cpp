#include "cli/VisualOrder.h"

#include <string>

#include "quorvel/text/convert.h"

namespace qvconv {

Input inLogicalOrder(Input& input, quorvel::text::Encoding encoding) {
  std::string text;
  for (;;) {
    const std::string_view block = input.readBlock();
    if (block.empty()) break;
    text += block;
  }
  // Between equal encodings every byte stays as it is, but for its place.
  quorvel::text::Options options;
  options.malformed = quorvel::text::Action::pass;
  options.visualOrder = true;
  return {input.path(), quorvel::text::convert(encoding, encoding, text, options).text};
}

}  // namespace qvconv
