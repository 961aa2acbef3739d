#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "cli/Input.h"
#include "cli/LineCounter.h"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Report.h"
#include "quorvel/text/Transcoder.h"

namespace qvconv {

/// Finds the lines and columns of losses. It reads a text a second time, behind the
/// conversion and only as far as it is asked, so that places cost nothing while nothing
/// is lost.
class Locator {
 public:
  /// `input` is what is converted, and outlives this object.
  Locator(quorvel::text::Encoding from, bool keepsMark, const Input& input);

  /// The place of a loss. Losses are to be asked for in the order in which they are
  /// met, and of one kind none may be left out between two.
  Position find(const quorvel::text::Loss& loss);

  /// Reads what stands in front of `offset`, for an input that will not have it later.
  void passTo(std::uint64_t offset);

 private:
  // Something that was decoded and is not counted yet.
  struct Item {
    std::string utf16le;  // one character
    bool isLoss;
    std::uint64_t offset;  // of a loss
  };

  bool decodeByte();
  void keepItems(std::string_view utf16le);
  void count(std::string_view utf16le) { m_counter.take(utf16le); }
  static bool is(const Item& item, const quorvel::text::Loss& loss);

  const Input& m_input;
  LineCounter m_counter;
  // What the handler of the decoder writes to, wherever this object is moved.
  std::unique_ptr<std::deque<std::uint64_t>> m_lossOffsets;
  quorvel::text::Transcoder m_decoder;
  std::uint64_t m_offset = 0;  // how far the decoder has read
  bool m_hasEnded = false;
  std::deque<Item> m_items;
};

}  // namespace qvconv
