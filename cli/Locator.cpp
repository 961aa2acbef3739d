// The text is decoded to UTF-16 in large pieces up to a loss, and byte by byte around it:
// of so few characters it is plain which one is the loss, also where a decoder has to see
// what follows before it can tell, or where two characters share a byte.

#include "cli/Locator.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>

#include "quorvel/text/convert.h"

namespace qvconv {

namespace {

using quorvel::text::Action;
using quorvel::text::Encoding;
using quorvel::text::Loss;
using quorvel::text::LossKind;
using quorvel::text::Transcoder;

constexpr std::size_t bytesPerPiece = 1U << 14;

// How much of what follows a loss a decoder may have to see.
constexpr std::uint64_t mostLookahead = 64;

// Only in EBCDIC a space is the byte 40, which ASCII reads as @.
LineCounter::Ends lineEndsOf(Encoding encoding) {
  const bool isEbcdic = quorvel::text::convert(Encoding::utf8(), encoding, " ").text == "@";
  return isEbcdic ? LineCounter::Ends::lfCrAndNel : LineCounter::Ends::lfAndCr;
}

// What is malformed becomes one character each, and is told by its offset.
Transcoder makeDecoder(Encoding from, bool keepsMark, std::deque<std::uint64_t>& lossOffsets) {
  quorvel::text::Options options;
  options.malformed = Action::substitute;
  options.keepsMark = keepsMark;
  options.onLoss = [&lossOffsets](const Loss& loss) -> std::optional<Action> {
    lossOffsets.push_back(loss.offset);
    return std::nullopt;
  };
  return *Transcoder::make(from, Encoding::utf16le(), std::move(options));
}

char32_t characterOf(std::string_view utf16le) {
  const auto unit = [&](std::size_t at) {
    return static_cast<char32_t>(static_cast<unsigned char>(utf16le[at]) |
                                 static_cast<unsigned char>(utf16le[at + 1]) << 8);
  };
  return utf16le.size() < 4 ? unit(0) : 0x10000 + ((unit(0) & 0x3FF) << 10) + (unit(2) & 0x3FF);
}

std::string_view firstCharacter(std::string_view utf16le) {
  const bool isPair = (static_cast<unsigned char>(utf16le[1]) & 0xFC) == 0xD8;
  return utf16le.substr(0, isPair ? 4 : 2);
}

}  // namespace

Locator::Locator(Encoding from, bool keepsMark, const Input& input)
    : m_input(input),
      m_counter(lineEndsOf(from)),
      m_lossOffsets(std::make_unique<std::deque<std::uint64_t>>()),
      m_decoder(makeDecoder(from, keepsMark, *m_lossOffsets)) {}

Position Locator::find(const Loss& loss) {
  passTo(loss.offset);
  const std::uint64_t limit = loss.offset + loss.length + mostLookahead;
  for (;;) {
    while (m_items.empty()) {
      if (m_offset > limit || !decodeByte()) return m_counter.position();
    }
    const Position position = m_counter.position();
    const Item item = std::move(m_items.front());
    m_items.pop_front();
    count(item.utf16le);
    if (is(item, loss)) return position;
  }
}

bool Locator::is(const Item& item, const Loss& loss) {
  if (loss.kind == LossKind::malformed) return item.isLoss && item.offset == loss.offset;
  return !item.isLoss && characterOf(item.utf16le) == loss.character;
}

void Locator::passTo(std::uint64_t offset) {
  if (m_offset >= offset) return;
  for (const Item& item : m_items) count(item.utf16le);
  m_items.clear();
  std::array<char, bytesPerPiece> source;
  std::array<char, 2 * bytesPerPiece> decoded;
  while (m_offset < offset) {
    const std::uint64_t size = std::min<std::uint64_t>(source.size(), offset - m_offset);
    std::string_view piece =
        m_input.readAgain(m_offset, std::span(source).first(static_cast<std::size_t>(size)));
    if (piece.empty()) break;
    m_offset += piece.size();
    for (bool hasMore = true; hasMore;) {
      const quorvel::text::Step step = m_decoder.push(piece, decoded);
      piece.remove_prefix(step.bytesTaken);
      count({decoded.data(), step.bytesWritten});
      hasMore = step.wants == quorvel::text::Wants::room;
    }
  }
  m_lossOffsets->clear();
}

// Decodes one byte more, or what the end of the text leaves. False when there is
// nothing left.
bool Locator::decodeByte() {
  if (m_hasEnded) return false;
  char byte = 0;
  const std::string_view piece = m_input.readAgain(m_offset, {&byte, 1});
  m_offset += piece.size();
  m_hasEnded = piece.empty();
  std::string decoded;
  if (m_hasEnded) {
    m_decoder.finish(decoded);
  } else {
    m_decoder.push(piece, decoded);
  }
  keepItems(decoded);
  return true;
}

// Losses come in the order of their U+FFFD, and the last of these may be a character of
// the text: what the last byte completes stands behind what it shows to be malformed.
void Locator::keepItems(std::string_view utf16le) {
  while (!utf16le.empty()) {
    const std::string_view character = firstCharacter(utf16le);
    utf16le.remove_prefix(character.size());
    Item item{std::string(character), character == "\xFD\xFF" && !m_lossOffsets->empty(), 0};
    if (item.isLoss) {
      item.offset = m_lossOffsets->front();
      m_lossOffsets->pop_front();
    }
    m_items.push_back(std::move(item));
  }
}

}  // namespace qvconv
