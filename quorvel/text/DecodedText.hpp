#pragma once

#include <array>
#include <string_view>

#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/text/Transcoder.h"

namespace quorvel::text {

/// Text of any encoding that comes in pieces, character by character. What is malformed
/// is left out and stands in the report.
class DecodedText {
 public:
  explicit DecodedText(Encoding from)
      : m_transcoder(*Transcoder::make(from, Encoding::utf32le(), droppingMalformed())) {}

  /// Calls `see(character)` for each character that is whole by now.
  template <typename See>
  void push(std::string_view piece, const See& see) {
    for (bool more = true; more;) {
      const Step step = m_transcoder.push(piece, m_room);
      piece.remove_prefix(step.bytesTaken);
      show(step, see);
      more = step.wants == Wants::room;
    }
  }

  /// The same for the end of the text.
  template <typename See>
  void finish(const See& see) {
    for (bool more = true; more;) {
      const Step step = m_transcoder.finish(m_room);
      show(step, see);
      more = step.wants == Wants::room;
    }
  }

  const Report& report() const { return m_transcoder.report(); }

 private:
  // UTF-32 comes in whole characters where the room is a multiple of their length.
  static constexpr std::size_t bytesPerCharacter = 4;

  static Options droppingMalformed() {
    Options options;
    options.malformed = Action::drop;
    return options;
  }

  template <typename See>
  void show(const Step& step, const See& see) const {
    for (std::size_t at = 0; at < step.bytesWritten; at += bytesPerCharacter) {
      char32_t character = 0;
      std::copy_n(m_room.data() + at, bytesPerCharacter, reinterpret_cast<char*>(&character));
      see(character);
    }
  }

  Transcoder m_transcoder;
  std::array<char, bytesPerCharacter * 4096> m_room{};
};

}  // namespace quorvel::text
