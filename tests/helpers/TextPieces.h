#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/text/Transcoder.h"
#include "tests/helpers/RandomText.h"
#include "tests/helpers/TextDoors.h"

/// Texts that go through a Transcoder in pieces.
namespace quorvel::test_text {

using Pieces = std::vector<std::string_view>;

inline text::Transcoder transcoderOf(int from, int to, const Rules& rules) {
  auto made = text::Transcoder::make(encodingOf(from), encodingOf(to), optionsOf(rules));
  if (!made) throw std::invalid_argument("refused");
  return std::move(*made);
}

inline Pieces cutAt(std::string_view text, std::size_t place) {
  return {text.substr(0, place), text.substr(place)};
}

inline Pieces singleBytes(std::string_view text) {
  Pieces pieces;
  for (std::size_t at = 0; at < text.size(); ++at) pieces.push_back(text.substr(at, 1));
  return pieces;
}

inline Pieces randomPieces(std::string_view text, Random& random) {
  Pieces pieces;
  const std::size_t longest = 1 + below(random, 1 + text.size());
  while (!text.empty()) {
    pieces.push_back(text.substr(0, below(random, longest + 1)));
    text.remove_prefix(pieces.back().size());
  }
  return pieces;
}

/// In the form that appends.
inline Result convertPieces(text::Transcoder& transcoder, const Pieces& pieces) {
  Result result;
  bool goesOn = true;
  for (const std::string_view piece : pieces) {
    if (goesOn) goesOn = transcoder.push(piece, result.text);
  }
  if (goesOn) transcoder.finish(result.text);
  result.report = transcoder.report();
  return result;
}

inline Result countPieces(text::Transcoder& transcoder, const Pieces& pieces) {
  bool goesOn = true;
  for (const std::string_view piece : pieces) {
    if (goesOn) goesOn = transcoder.count(piece);
  }
  if (goesOn) transcoder.countEnd();
  return {"", transcoder.report()};
}

/// In the form over plain buffers, the room as long as the sizes say, by turns. What
/// a step says of itself is checked.
class BufferRun {
 public:
  BufferRun(text::Transcoder& transcoder, std::vector<std::size_t> rooms)
      : m_transcoder(transcoder), m_rooms(std::move(rooms)) {}

  Result convert(const Pieces& pieces) {
    bool goesOn = true;
    for (std::string_view piece : pieces) {
      if (goesOn) goesOn = push(piece);
    }
    if (goesOn) finish();
    m_result.report = m_transcoder.report();
    return m_result;
  }

 private:
  static constexpr char canary = '\x5A';

  bool push(std::string_view piece) {
    while (true) {
      const text::Step step =
          advance(piece, [&](std::span<char> room) { return m_transcoder.push(piece, room); });
      piece.remove_prefix(step.bytesTaken);
      if (step.wants == text::Wants::room) continue;
      if (step.wants == text::Wants::reset) return false;
      if (step.wants != text::Wants::input || !piece.empty()) {
        throw std::logic_error("a push wants input while there is some");
      }
      return true;
    }
  }

  void finish() {
    text::Wants wants = text::Wants::room;
    while (wants == text::Wants::room) {
      wants = advance({}, [&](std::span<char> room) { return m_transcoder.finish(room); }).wants;
    }
    if (wants == text::Wants::input) throw std::logic_error("the end wants input");
  }

  template <typename Call>
  text::Step advance(std::string_view piece, Call call) {
    const std::size_t size = m_rooms[m_turn++ % m_rooms.size()];
    std::string room(size + 8, canary);
    const text::Step step = call(std::span(room.data(), size));
    if (step.bytesTaken > piece.size() || step.bytesWritten > size ||
        room.substr(size) != std::string(8, canary)) {
      throw std::logic_error("a step takes " + std::to_string(step.bytesTaken) + " of " +
                             std::to_string(piece.size()) + " and writes " +
                             std::to_string(step.bytesWritten) + " into " + std::to_string(size));
    }
    if (size != 0 && step.wants == text::Wants::room && step.bytesTaken == 0 &&
        step.bytesWritten == 0) {
      throw std::logic_error("a step does nothing");
    }
    m_result.text.append(room, 0, step.bytesWritten);
    return step;
  }

  text::Transcoder& m_transcoder;
  std::vector<std::size_t> m_rooms;
  std::size_t m_turn = 0;
  Result m_result;
};

inline Result convertInRooms(text::Transcoder& transcoder, const Pieces& pieces,
                             std::vector<std::size_t> rooms) {
  return BufferRun(transcoder, std::move(rooms)).convert(pieces);
}

}  // namespace quorvel::test_text
