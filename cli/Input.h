#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Descriptor.h"

namespace qvconv {

/// How messages call an input: its path, or "standard input" for "-".
std::string inputName(const std::string& path);

/// A file that is read in blocks, or standard input.
class Input {
 public:
  /// Opens `path`, "-" for standard input. Throws `InputError`.
  explicit Input(const std::string& path);

  /// A text at hand, which is read like the file that it comes from.
  Input(const std::string& path, std::string text);

  /// As it was asked for, and how messages call it.
  const std::string& path() const { return m_path; }
  const std::string& name() const { return m_name; }

  /// How many bytes there are to read, where the system knows.
  std::optional<std::uint64_t> size() const { return m_size; }

  /// What a text begins with.
  struct Beginning {
    std::string_view bytes;  ///< until the next call of anything that reads
    bool goesOn;             ///< whether more may follow
  };

  /// Waits for `most` bytes from the beginning, or the end, before any block is read.
  /// The blocks have these bytes all the same. Throws `InputError`.
  Beginning lookAhead(std::size_t most);

  /// The next bytes, as many as there are and at most a block; none at the end. They
  /// stay until the next call. Throws `InputError`.
  std::string_view readBlock();

  /// How many bytes all blocks together had so far.
  std::uint64_t bytesRead() const { return m_offset + m_blockSize; }

  /// Whether all that was read can be looked at again. Otherwise only what begins at
  /// `firstKeptLater()` will be there beside the next block, where losses may begin
  /// that are found in that block.
  bool canReadAgain() const { return m_isRegular || m_text; }

  std::uint64_t firstKeptLater() const;

  /// Looks again at bytes from `offset` on, as many as fit, and at none that no block
  /// had. Fewer, perhaps none, where they are gone.
  std::string_view readAgain(std::uint64_t offset, std::span<char> room) const;

 private:
  std::string_view readNextOfText();
  std::size_t readNext(std::span<char> room);

  std::string m_path;
  std::string m_name;
  std::optional<std::string> m_text;  // that is read instead of a file
  Descriptor m_own;                   // not of standard input
  int m_descriptor = -1;
  std::optional<std::uint64_t> m_size;
  bool m_isRegular = false;
  std::uint64_t m_start = 0;  // where in a regular file the text begins

  std::string m_ahead;            // what was looked at
  std::size_t m_aheadOffset = 0;  // of what no block has had yet

  std::vector<char> m_buffer;  // what is kept in front of a block, and the block
  std::uint64_t m_offset = 0;  // of the block
  std::size_t m_blockSize = 0;
  std::size_t m_keptSize = 0;
};

}  // namespace qvconv
