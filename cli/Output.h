#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cli/Descriptor.h"

namespace qvconv {

/// Where the results go.
///
/// A regular file is written under another name and takes its own with
/// `finish`, so that it may be one of the inputs and stays as it was when
/// writing fails or `finish` is never called. Anything else (a device, a pipe)
/// is written directly.
class Output {
 public:
  /// Opens `path`, or standard output when it is empty. Throws `OutputError`.
  explicit Output(std::string path);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Writes some bytes, at once. Throws `OutputError`.
  void write(std::string_view bytes);

  std::uint64_t bytesWritten() const { return m_bytesWritten; }

  /// Whether there is a file that stays as it was without `finish`.
  bool replacesAFile() const { return !m_temporary.empty(); }

  /// Makes sure that everything has arrived, and closes. Throws `OutputError`.
  void finish();

 private:
  void openBeside();
  [[noreturn]] void fail() const;

  std::string m_name;       // how messages call it
  std::string m_final;      // the path of a regular file
  std::string m_temporary;  // its path until `finish`; empty when there is none
  Descriptor m_file;
  std::uint64_t m_bytesWritten = 0;
};

}  // namespace qvconv
