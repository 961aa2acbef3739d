#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "quorvel/base/Export.h"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Options.h"
#include "quorvel/text/Report.h"

namespace quorvel::text {

/// A converted text and what became of it. After a stop the text is what stood in
/// front of the loss.
template <typename String>
struct ConvertedTo {
  String text;
  Report report;
};

using Converted = ConvertedTo<std::string>;

/// Converts a whole text. Throws std::bad_alloc, and what a handler throws.
QUORVEL_API Converted convert(Encoding from, Encoding to, std::string_view text,
                              const Options& options = {});

/// The same into UTF-16 or UTF-32 of this machine.
QUORVEL_API ConvertedTo<std::u16string> toUtf16(Encoding from, std::string_view text,
                                                const Options& options = {});
QUORVEL_API ConvertedTo<std::u32string> toUtf32(Encoding from, std::string_view text,
                                                const Options& options = {});

/// What would become of a text: the report of `convert` without its output.
QUORVEL_API Report check(Encoding from, Encoding to, std::string_view text,
                         const Options& options = {});

/// A number of bytes that the output for `numBytes` bytes of text never exceeds;
/// the largest number there is where that is not known, because a handler may choose
/// anything. 2^64 - 1 also where it does not fit.
QUORVEL_API std::uint64_t mostBytes(Encoding from, Encoding to, std::uint64_t numBytes,
                                    const Options& options = {});

/// Frees the process-wide tables, those of `EncodingConvert` too; they are built again on
/// demand. May run while other threads convert with this layer, which keeps what it holds,
/// but not while an `EncodingConvert` converts.
QUORVEL_API void releaseTables();

}  // namespace quorvel::text
