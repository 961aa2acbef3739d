#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "cli/Descriptor.h"
#include "cli/Messages.h"

namespace qvconv {

/// Where results go.
class Output {
 public:
  virtual ~Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Writes some bytes, at once. Throws `OutputError`.
  void write(std::string_view bytes);

  std::uint64_t bytesWritten() const { return m_bytesWritten; }

  /// Whether there is a file that stays as it was without `finish`.
  virtual bool replacesAFile() const { return false; }

  /// Makes sure that everything has arrived, and closes. Throws `OutputError`.
  virtual void finish();

 protected:
  /// `name` is how messages call it; `file` is what is written to, and is kept by
  /// whoever derives from this.
  explicit Output(std::string name) : m_name(std::move(name)) {}
  virtual Descriptor& file() = 0;
  [[noreturn]] void fail() const;

 private:
  std::string m_name;
  std::uint64_t m_bytesWritten = 0;
};

/// Opens `path`, or standard output when it is empty. A regular file is replaced by
/// `finish`, so that it may be one of the inputs and stays as it was when writing
/// fails; one in whose directory no other can be made is written through, after
/// `messages` has been told. Anything else (a device, a pipe) is written directly.
/// Throws `OutputError`.
std::unique_ptr<Output> openOutput(const std::string& path, Messages& messages);

}  // namespace qvconv
