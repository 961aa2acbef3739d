#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/EncodingChoice.h"
#include "cli/ExitStatus.h"
#include "cli/Input.h"
#include "cli/Locator.h"
#include "cli/Messages.h"
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
  Source source = Source::named;  ///< where `from` and its name come from
  bool isQuiet = false;           ///< says nothing of what is lost as asked
  bool isVerbose = false;         ///< says what was converted
};

/// Converts one file after another, in constant memory unless text in visual order is
/// to be turned.
class Conversion {
 public:
  /// The options are not refused between these encodings.
  explicit Conversion(Rules rules);

  /// Converts all of `input`, or what stands in front of the loss that stops it, and
  /// tells what was lost. Throws `InputError` and `OutputError`.
  ExitStatus run(Input& input, Output& output, Messages& messages);

 private:
  struct Place {
    quorvel::text::Loss loss;
    Position position;
  };

  ExitStatus runInOrder(Input& input, Output& output, Messages& messages);
  bool convertBlocks(Input& input, Output& output, Messages& messages);
  template <typename Run>
  bool writeAllOf(const Run& run, const Input& input, Output& output);
  ExitStatus tell(const Input& input, Messages& messages);

  bool canStop() const;
  bool needsPlaces() const;
  void findFirst(const Input& input);
  Place stoppingPlace(const Input& input);
  Position positionOf(const quorvel::text::Loss& loss, const Input& input);
  std::string sentence(const Input& input, const Place& place) const;

  Rules m_rules;
  quorvel::text::Transcoder m_transcoder;
  std::vector<char> m_room;

  // Of the file at hand:
  std::optional<Locator> m_locator;
  std::optional<Place> m_first;  // the first loss
};

}  // namespace qvconv
