#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "quorvel/base/Export.h"
#include "quorvel/text/Encoding.h"

namespace quorvel::text {

/// The ways in which text does not get across.
enum class LossKind {
  malformed,   ///< bytes that are no character of the source
  unmappable,  ///< a character that has no place in the destination
  bestFit,     ///< a character that became one that only looks like it
};

/// One loss.
struct QUORVEL_API Loss {
  /// The most bytes that one loss has.
  static constexpr std::size_t mostBytes = 16;

  LossKind kind = LossKind::malformed;
  std::uint64_t offset = 0;  ///< where it begins, in bytes from the start of the source
  unsigned int length = 0;   ///< in bytes of the source
  char32_t character = 0;    ///< not for malformed bytes
  std::array<unsigned char, mostBytes> storage{};  ///< the bytes, and zeros

  std::span<const unsigned char> bytes() const { return {storage.data(), length}; }
  bool operator==(const Loss&) const = default;
};

/// What became of a text.
struct QUORVEL_API Report {
  std::uint64_t bytesRead = 0;  ///< after a stop, the offset of the loss
  std::uint64_t bytesWritten = 0;

  std::uint64_t malformed = 0;   ///< how many sequences
  std::uint64_t unmappable = 0;  ///< how many characters
  std::uint64_t bestFits = 0;    ///< likewise

  std::optional<Loss> firstMalformed;
  std::optional<Loss> firstUnmappable;
  std::optional<Loss> firstBestFit;

  /// Whether the conversion ended at a loss: the last of those counted.
  bool stopped = false;

  /// Why nothing was converted at all, see `whyRefused`; empty otherwise.
  std::string refusal;

  /// Whether all of the text got across, every character as itself.
  bool isLossless() const {
    return malformed == 0 && unmappable == 0 && bestFits == 0 && refusal.empty();
  }

  bool operator==(const Report&) const = default;
};

/// A loss as a sentence for people: "byte 17: U+3042 has no place in
/// windows-1251".
QUORVEL_API std::string toSentence(const Loss& loss, Encoding from, Encoding to);

/// A report as a sentence for people.
QUORVEL_API std::string toSentence(const Report& report, Encoding from, Encoding to);

}  // namespace quorvel::text
