#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Contender.h"
#include "Rows.h"

namespace quorvel::bench {

enum class Library { quorvel, glibc, icu };

/// A contender that has proved that it can do its row.
struct Entrant {
  Library library;
  std::string way;  ///< our target, or the names and functions of a peer
  std::unique_ptr<Contender> contender;
};

/// A row made ready: its text in the source encoding, and those whose results
/// are the same to the byte. We come first, once for every target; then each peer
/// comes once for every name and way that serves.
struct Match {
  Row row;
  std::string text;
  std::vector<Entrant> entrants;

  bool has(Library library) const;
};

/// Makes about `numBytes` bytes of text and lets every contender convert it.
/// Throws `std::runtime_error` when we cannot, when two of our targets differ, or
/// when no peer agrees with us: then there is nothing to be measured.
Match prepare(const Row& row, std::size_t numBytes, const std::vector<kernel::Target>& targets);

}  // namespace quorvel::bench
