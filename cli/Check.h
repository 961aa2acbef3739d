#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/ExitStatus.h"
#include "cli/Input.h"
#include "cli/LineCounter.h"
#include "cli/Locator.h"
#include "cli/Messages.h"
#include "cli/Sentences.h"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Options.h"
#include "quorvel/text/Report.h"
#include "quorvel/text/Transcoder.h"

namespace qvconv {

/// What a check tells of a file: each loss, and at the end how many there are.
struct CheckFormat {
  /// One line for a loss.
  std::string (*loss)(const Input& input, const Position& position, const quorvel::text::Loss& loss,
                      const EncodingNames& names);

  /// What stands behind the losses of a file, of which `shown` have been told.
  std::string (*total)(const Input& input, const quorvel::text::Report& report,
                       std::uint64_t shown);

  static const CheckFormat plain;
  static const CheckFormat json;
  static const CheckFormat silent;  ///< for the status alone
};

/// What a check goes by.
struct CheckRules {
  quorvel::text::Encoding from = quorvel::text::Encoding::utf8();
  quorvel::text::Encoding to = quorvel::text::Encoding::utf16le();  ///< which holds everything
  EncodingNames names;
  quorvel::text::BestFits bestFits = quorvel::text::BestFits::none;
  bool keepsMark = false;
  std::uint64_t mostShown = 10;  ///< losses of a file
  const CheckFormat* format = &CheckFormat::plain;
};

/// Looks for losses in one file after another and writes nothing but what it finds.
class Check {
 public:
  explicit Check(const CheckRules& rules);
  Check(const Check&) = delete;
  Check& operator=(const Check&) = delete;

  /// Prints the losses of `input`; failed when there are any. Throws `InputError`, and
  /// `OutputError` for what cannot be printed.
  ExitStatus run(Input& input, Messages& messages);

 private:
  quorvel::text::Transcoder makeTranscoder();
  bool shows() const { return m_shown < m_rules.mostShown; }
  void show(const quorvel::text::Loss& loss);

  CheckRules m_rules;
  quorvel::text::Transcoder m_transcoder;

  // Of the file at hand:
  const Input* m_input = nullptr;
  Messages* m_messages = nullptr;
  std::optional<Locator> m_locator;
  std::uint64_t m_shown = 0;
};

}  // namespace qvconv
