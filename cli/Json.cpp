#include "cli/Json.h"

#include <cstdio>

#include "quorvel/text/convert.h"

namespace qvconv::json {

namespace {

std::string wellFormed(std::string_view utf8) {
  using namespace quorvel::text;
  Options options;
  options.malformed = Action::substitute;
  options.keepsMark = true;
  return convert(Encoding::utf8(), Encoding::utf8(), utf8, options).text;
}

}  // namespace

std::string quoted(std::string_view utf8) {
  std::string text = "\"";
  for (const char c : wellFormed(utf8)) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      text += '\\';
      text += c;
    } else if (byte < 0x20 || byte == 0x7F) {
      char escape[8];
      static_cast<void>(std::snprintf(escape, sizeof escape, "\\u%04X", byte));
      text += escape;
    } else {
      text += c;
    }
  }
  return text + '"';
}

}  // namespace qvconv::json
