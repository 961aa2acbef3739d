#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Contender.h"
#include "Rows.h"

namespace quorvel::bench {

enum class Library { quorvel, glibc, icu, text };

/// A contender that has proved that it can do its row.
struct Entrant {
  Library library;
  std::string way;  ///< our target, how quorvel/text is used, or the names and functions of a peer
  std::unique_ptr<Contender> contender;
};

/// A row made ready: what is to be converted, and those whose results are the
/// same to the byte. We come first, once for every target; then each peer comes
/// once for every name and way that serves.
struct Match {
  Row row;
  std::vector<std::string> texts;
  std::vector<Entrant> entrants;

  bool has(Library library) const;
  std::size_t numBytes() const;
};

/// Lets every contender convert the texts, which are in the source encoding.
/// Throws `std::runtime_error` when we cannot, when two of our targets differ, or
/// when no peer agrees with us: then there is nothing to be measured.
Match prepare(const Row& row, std::vector<std::string> texts,
              const std::vector<std::string>& targets);

/// Lets quorvel/text take part too, with the kernels that a user gets. Throws
/// `std::runtime_error` when its result is another than ours.
void enterText(const std::vector<TextWay>& ways, const std::string& target, Match& match);

}  // namespace quorvel::bench
