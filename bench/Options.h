#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quorvel::bench {

struct Options {
  std::string tables = ".";      ///< regular expression for the names of the tables
  std::string rows = ".";        ///< regular expression for the names of the rows
  std::size_t bytes = 2u << 20;  ///< of text in each row
  int repetitions = 11;
  double seconds = 0.01;             ///< of each measurement, at least
  double atLeast = 0;                ///< the ratio to the faster peer that every row must reach
  double textAtLeast = 0;            ///< the ratio of quorvel/text to EncodingConvert, likewise
  std::vector<std::string> targets;  ///< of our kernels, the plainest first
  std::string firstUse;              ///< what to print instead of tables, see `printFirstUse`
  std::string directory;             ///< where to write the tables, nowhere when empty
};

/// Throws `std::runtime_error`, with the usage as its text, for what it does not
/// understand.
Options parseOptions(int argc, char** argv);

}  // namespace quorvel::bench
