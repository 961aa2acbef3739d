#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/ExitStatus.h"
#include "cli/Input.h"
#include "cli/Locator.h"
#include "cli/Output.h"
#include "cli/Sentences.h"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Options.h"
#include "quorvel/text/Transcoder.h"

namespace qvconv {

/// What a conversion goes by.
struct Rules {
  quorvel::text::Encoding from = quorvel::text::Encoding::utf8();
  quorvel::text::Encoding to = quorvel::text::Encoding::utf8();
  EncodingNames names;
  quorvel::text::Options options;
};

/// Converts one file after another, in constant memory.
class Conversion {
 public:
  /// The options are not refused between these encodings.
  explicit Conversion(Rules rules);

  /// Converts all of `input`, or what stands in front of the loss that stops it, and
  /// tells what was lost. Throws `InputError` and `OutputError`.
  ExitStatus run(Input& input, Output& output);

 private:
  bool convertBlocks(Input& input, Output& output);
  template <typename Run>
  bool writeAllOf(const Run& run, Output& output);
  const quorvel::text::Loss& stoppingLoss() const;
  Position positionOf(const quorvel::text::Loss& loss, const Input& input);

  Rules m_rules;
  quorvel::text::Transcoder m_transcoder;
  std::vector<char> m_room;
  std::optional<Locator> m_locator;  // of the file at hand
};

}  // namespace qvconv
