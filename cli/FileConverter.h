#pragma once

#include <optional>

#include "cli/Conversion.h"
#include "cli/ExitStatus.h"
#include "cli/Input.h"
#include "cli/Messages.h"
#include "cli/Output.h"

namespace qvconv {

/// Converts one file after another, from the encoding that is named or from the one that
/// each file turns out to be in.
class FileConverter {
 public:
  /// The options are not refused from the encoding that is named.
  explicit FileConverter(Rules rules);

  /// As `Conversion::run`. Where the encoding is to be detected and there is none without
  /// loss, it tells which there are, and fails before anything is written.
  ExitStatus run(Input& input, Output& output, Messages& messages);

 private:
  bool detectSource(Input& input, Messages& messages);
  void convertFrom(quorvel::text::Encoding encoding);

  Rules m_rules;
  std::optional<Conversion> m_conversion;  // from the encoding in the rules
};

}  // namespace qvconv
