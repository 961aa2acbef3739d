#pragma once

#include <cstddef>
#include <string>

namespace quorvel::bench {

struct Options {
  std::string rows = ".";        ///< regular expression for the names of the rows
  std::size_t bytes = 2u << 20;  ///< of text in each row
  int repetitions = 11;
  double seconds = 0.02;  ///< of each measurement, at least
  double atLeast = 0;     ///< the ratio to glibc that every row must reach
  std::string target;     ///< of the kernels, the machine's best when empty
  std::string markdown;   ///< file to write, none when empty
  std::string csv;        ///< file to write, none when empty
};

/// Throws `std::runtime_error`, with the usage as its text, for what it does not
/// understand.
Options parseOptions(int argc, char** argv);

}  // namespace quorvel::bench
