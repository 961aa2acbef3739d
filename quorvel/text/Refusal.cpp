#include "quorvel/text/Refusal.hpp"

#include <algorithm>
#include <initializer_list>

#include "quorvel/text/Codecs.hpp"
#include "quorvel/text/Options.h"

namespace quorvel::text {

bool canPass(Encoding from, Encoding to) {
  return !isWide(to) && !from.keepsState() && !to.keepsState();
}

bool canPreserve(Encoding from, Encoding to) {
  return isTransformation(from) || isTransformation(to);
}

std::string whyRefused(Encoding from, Encoding to, const Options& options) {
  const auto isWanted = [&](Action action) {
    return options.malformed == action || options.unmappable == action;
  };
  const std::string pair =
      " from " + std::string(from.name()) + " to " + std::string(to.name()) + ".";
  if (isWanted(Action::pass) && !canPass(from, to)) {
    return "The bytes of the source cannot be passed" + pair;
  }
  if (isWanted(Action::reconvert) && !options.reconvert) {
    return "There is no encoding to reconvert with.";
  }
  if (options.unmappable == Action::preserve) {
    return "Only malformed bytes can be preserved, not characters without a place.";
  }
  if (options.malformed == Action::preserve && !canPreserve(from, to)) {
    return "Malformed bytes cannot be preserved" + pair;
  }
  if (options.visualOrder && from.number() != 10004) {
    return "Only code page 10004 is known in visual order.";
  }
  return {};
}

}  // namespace quorvel::text
