#pragma once

#include <stdexcept>
#include <string>

namespace qvconv {

/// A file that could not be read or written; `what()` is "FILE: why".
class FileError : public std::runtime_error {
 public:
  /// `error` is a value of `errno`.
  FileError(const std::string& file, int error);
  using std::runtime_error::runtime_error;
};

/// Input and output fail apart: without one input the others still count, without the
/// output nothing does.
class InputError : public FileError {
 public:
  using FileError::FileError;
};

class OutputError : public FileError {
 public:
  using FileError::FileError;
};

}  // namespace qvconv
