#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

#include "quorvel/base/DataBuffer.h"

namespace qvconv {

/// A file that could not be read or written; `what()` is "FILE: why".
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Takes the descriptors 0 to 2 where they are closed, so that no file that is
/// opened later gets one of them: what is meant for standard error would land in
/// the output, and the output be read as standard input. Reading from and writing
/// to them fails as before. False when they cannot be taken.
bool takeStandardDescriptors();

/// How messages call an input: its path, or "standard input" for "-".
std::string inputName(const std::string& path);

/// The whole content of a file, or of standard input for "-". Throws
/// `FileError`, also for more bytes than 32 bits count.
quorvel::DataBuffer readInput(const std::string& path);

/// Where the results go.
///
/// A regular file is written under another name and takes its own with
/// `finish`, so that it may be one of the inputs and stays as it was when
/// writing fails or `finish` is never called. Anything else (a device, a pipe)
/// is written directly.
class Output {
 public:
  /// Opens `path`, or standard output when it is empty. Throws `FileError`.
  explicit Output(std::string path);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Writes some bytes. Throws `FileError`.
  void write(std::string_view bytes);
  void write(const quorvel::DataBuffer& bytes);

  /// Makes sure that everything has arrived, and closes. Throws `FileError`.
  void finish();

 private:
  void openBeside();
  [[noreturn]] void fail() const;

  std::string m_name;       // how messages call it
  std::string m_final;      // the path of a regular file
  std::string m_temporary;  // its path until `finish`; empty when there is none
  std::FILE* m_file = nullptr;
};

}  // namespace qvconv
