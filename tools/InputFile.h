#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace pack {

/// One line of a mapping file that says something, without its end.
struct Line {
  unsigned int number;  ///< counted from 1
  std::string text;
};

/// What is wrong with the input. Its text begins with file and line, in the
/// form that compilers use and editors jump to.
class InputError : public std::runtime_error {
 public:
  InputError(const std::filesystem::path& file, unsigned int line, const std::string& what);
};

/// A mapping file, read whole. Comments and blank lines are left out.
struct InputFile {
  explicit InputFile(const std::filesystem::path& file);

  /// Ends the packing because of `line`.
  [[noreturn]] void fail(const Line& line, const std::string& what) const;

  /// Ends the packing because of what is missing at the end of the file.
  [[noreturn]] void failAtEnd(const std::string& what) const;

  std::filesystem::path path;
  std::vector<Line> lines;
  unsigned int lastLine = 1;
};

/// The parts of `text` between runs of spaces.
std::vector<std::string_view> splitWords(std::string_view text);

/// The number of a code page, in decimal, or 0 when `text` is none.
int parseCodePage(std::string_view text);

/// The value of exactly `digits` upper-case hexadecimal digits, or -1.
int parseHex(std::string_view text, unsigned int digits);

}  // namespace pack
