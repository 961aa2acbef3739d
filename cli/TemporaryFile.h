#pragma once

#include <memory>
#include <string>

#include "cli/Descriptor.h"
#include "cli/Signals.h"

namespace qvconv {

/// A new file under a name of its own, which goes with this object, or when a signal
/// ends the process, unless it has been given another name.
class TemporaryFile {
 public:
  /// Makes one in `directory`, which may be empty for the current one. Null with a
  /// reason in `errno`.
  static std::unique_ptr<TemporaryFile> make(const std::string& directory);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// Open for reading and writing. May be closed at any time.
  Descriptor& file() { return m_file; }

  const std::string& path() const { return m_path; }

  /// Gives it the name `path`, in the place of what is called so. False with a reason
  /// in `errno`.
  bool rename(const std::string& path);

 private:
  TemporaryFile(Descriptor file, std::string path);

  Descriptor m_file;
  std::string m_path;  // empty when it has another name
  std::unique_ptr<ListedFile> m_listed;
};

}  // namespace qvconv
