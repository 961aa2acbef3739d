#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "quorvel/text/Decoder.hpp"
#include "quorvel/text/Options.h"
#include "quorvel/text/Outlet.hpp"
#include "quorvel/text/Replacement.hpp"
#include "quorvel/text/Report.h"
#include "quorvel/text/Source.hpp"
#include "quorvel/text/Transcoder.h"

namespace quorvel::text {

/// The way of a text in pieces:
///
///     piece -> window -> decoder -> UTF-16LE block -> encoder -> outlet
///
/// A window is the piece, or, behind a piece that ended inside of a character, what
/// was left of that and the first bytes of the next. Nothing decoded is kept between
/// calls: where the room ends, or a character has no place, the place of that
/// character in the source is found by decoding the block again from the last known
/// place, with room for just as many units. That costs nothing while nothing is lost,
/// and needs no table of places.
///
/// Four shorter ways leave steps out: the decoder writes into the room itself, the
/// encoder reads the window itself, one loop does the work of both as far as the text is
/// well-formed, or, between equal encodings, what has been decoded is copied. Where these keep
/// a state, what follows a loss is encoded where the output cannot be brought to the state of
/// the source.
class Transcoder::Engine {
 public:
  Engine(Encoding from, Encoding to, Options options);

  Step run(std::string_view piece, bool isLast, std::span<char> room);
  void reset();

  const Report& report() const { return m_report; }
  Encoding from() const { return m_from; }
  Encoding to() const { return m_to; }

 private:
  enum class Way { pivot, direct, decodeOnly, encodeOnly, copy };

  /// How a source is read: as it was named, or in the byte order of its mark.
  struct Side {
    Encoding encoding;
    std::unique_ptr<Decoder> decoder;
    Way way;
  };

  enum class Pause {
    input,    ///< all is used, but perhaps the beginning of a character
    room,     ///< the room is full
    again,    ///< there may be more to do
    stopped,  ///< at a loss
  };

  struct Advance {
    const unsigned char* in;  ///< used up to here
    Pause why;
  };

  /// A place between two characters: in the source, and in the block.
  struct Place {
    const unsigned char* in;
    Decoder::State state;
    unsigned char* unit;
  };

  /// Places of a block from which others are found: where it begins, and behind each loss
  /// within it.
  struct Places {
    static constexpr std::size_t most = 64;
    std::array<Place, most> places;
    std::size_t count = 0;

    void add(const Place& place) { places[count++] = place; }
    bool isFull() const { return count == most; }
    const Place& lastBefore(const unsigned char* unit) const;
    std::size_t numBehind(const unsigned char* unit) const;
  };

  Side sideFor(Encoding encoding) const;
  Window partToDecode(const Window& window) const;
  Decoder& decoder() { return *m_sides[m_side].decoder; }

  Pause convertWindows(Source& source);
  Advance convertWindow(const Window& window);
  Advance settleMark(const Window& window);
  Advance settleFront(const Window& window);

  Advance advance(const Window& window);
  Advance decodeIntoRoom(const Window& window);
  Advance encodeFromWindow(const Window& window);
  Advance copyDecoded(const Window& window);
  Place lastCopied(const Window& window, const Place& start, const Place& end,
                   const Decoded& decoded);
  void copyUpTo(const Window& window, Decoder::State from, const Place& to);
  bool mayCopyFrom(const Window& window);
  Advance encodeNext(const Window& window);
  Advance loseNext(const Window& window, const Place& place, const Decoded& next);
  Advance convertDirectly(const Window& window);
  Advance decodeAndEncode(const Window& window, const Window& part);
  Decoded decodeBlock(const Window& window, const Window& part, Places& places);
  Advance encodeBlock(const Window& window, const Window& part, const Places& places,
                      const Decoded& decoded);
  Advance encodeNextInto(const Window& window, const Place& place);
  Advance afterDecoding(const Window& window, const Window& part, const Decoded& decoded);

  Place here(const unsigned char* in);
  Place find(const Window& window, const Place& from, unsigned char* unit);
  Place behind(const Window& window, const Place& place);

  Pause loseCharacter(const Window& window, const Place& place, const Place& next);
  Advance loseBytes(const Window& window, const Decoded& decoded);
  Decoded withPreservedForm(const Window& window, Decoded decoded) const;
  Pause lose(const Loss& loss, Action action);
  bool mayLoseAmongText() const;
  Pause goOnBehindLoss(const unsigned char* unit, const unsigned char* end, const Places& places);
  Advance goOnAt(const Place& next, const Places& places, Pause pause);
  void forgetLosses(const Places& places, const unsigned char* unit);
  unsigned char* loseAmongText(const Window& window, const Decoded& decoded,
                               const unsigned char* outEnd);
  bool loseUnseen(char32_t character);
  std::optional<Action> ask(const Loss& loss);
  unsigned char byteAt(const Window& window, std::ptrdiff_t at) const;
  Loss lossAt(const Window& window, std::ptrdiff_t at, unsigned int length) const;
  void count(const Loss& loss);

  Encoding m_from;
  Encoding m_to;
  Options m_options;
  std::unique_ptr<Encoder> m_encoder;
  std::array<Side, 2> m_sides;
  unsigned int m_side = 0;
  Outlet m_outlet;
  Replacement m_replacement;

  Report m_report;
  Source::Memory m_memory;
  const Source* m_source = nullptr;  // of the call
  double m_growth = 1;               // bytes written for one read, so far, where they are more
  bool m_isMarkSettled = false;
  bool m_isInStep = true;  // what has been written is what has been read, where that is copied
  bool m_isFinished = false;

  static constexpr std::size_t fewestToDecode = 64;
  static constexpr std::size_t bytesPerBlock = 8192;
  // A byte makes one unit at most, unless line ends become longer; then more parts do.
  unsigned char m_block[2 * bytesPerBlock];
};

}  // namespace quorvel::text
