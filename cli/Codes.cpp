#include "cli/Codes.h"

#include <algorithm>
#include <span>

namespace qvconv {

using namespace quorvel::text;

namespace {

Options dropping() {
  Options options;
  options.malformed = Action::drop;
  options.keepsMark = true;
  return options;
}

char32_t characterAt(const std::array<char, 16>& room) {
  char32_t character = 0;
  std::copy_n(room.data(), sizeof character, reinterpret_cast<char*>(&character));
  return character;
}

}  // namespace

Codes::Codes(Encoding encoding)
    : m_transcoder(*Transcoder::make(encoding, Encoding::utf32le(), dropping())) {}

// What is neither written nor lost yet waits for its next byte.
Codes::Meaning Codes::of(std::string_view bytes) {
  m_transcoder.reset();
  std::array<char, 16> room{};
  const Step step = m_transcoder.push(bytes, room);
  if (m_transcoder.report().malformed != 0) return {Kind::nothing};
  return step.bytesWritten == 0 ? Meaning{Kind::lead} : Meaning{Kind::character, characterAt(room)};
}

Codes::Meaning Codes::atEnd(std::string_view bytes) {
  m_transcoder.reset();
  std::array<char, 16> room{};
  const std::size_t written = m_transcoder.push(bytes, room).bytesWritten;
  const Step step = m_transcoder.finish(std::span(room).subspan(written));
  const bool isOne = m_transcoder.report().malformed == 0 && written + step.bytesWritten == 4;
  return isOne ? Meaning{Kind::character, characterAt(room)} : Meaning{Kind::nothing};
}

}  // namespace qvconv
