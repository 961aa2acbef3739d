#pragma once

#include <string>
#include <string_view>

#include "quorvel/text/Encoding.h"

namespace qvconv {

/// Where it is known from what a text is in.
enum class Source {
  named,     ///< from the command line or the locale
  detected,  ///< from the text itself
};

/// An encoding as the command line names it, with what the name asks for beside it.
struct EncodingChoice {
  quorvel::text::Encoding encoding;
  std::string name;  ///< as the user wrote it, without suffixes
  Source source = Source::named;
  bool writesMark = false;  ///< utf-8-sig
  bool drops = false;       ///< the suffix //IGNORE
  bool bestFits = false;    ///< the suffix //TRANSLIT
};

/// Reads a name or a number, `ansi`, `oem` or `utf-8-sig`, with suffixes. Messages call
/// the option `option`. Throws `WrongUse`.
EncodingChoice chooseEncoding(std::string_view text, std::string_view option);

/// The same for what texts are in, which `auto` leaves to be detected.
EncodingChoice chooseSource(std::string_view text, std::string_view option);

/// The encoding of the locale, which the program has set, for an option that is not
/// given. Throws `WrongUse` when it is not known.
EncodingChoice localeEncoding(std::string_view option);

}  // namespace qvconv
