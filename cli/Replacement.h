#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "cli/Output.h"
#include "cli/TemporaryFile.h"

namespace qvconv {

/// A regular file that is written under another name, beside the file that it is to
/// replace, and takes that one's name with `finish`. It has the owner and the permissions
/// of the file that it replaces.
class Replacement : public Output {
 public:
  struct Keeping {
    bool times = false;  ///< whether it also has the times of that file
    std::string suffix;  ///< under which that file stays; empty for none
  };

  /// For `path`, which need not exist. Null with a reason in `errno` when no file can
  /// be made beside it.
  static std::unique_ptr<Replacement> open(const std::string& path, Keeping keeping);

  bool replacesAFile() const override { return true; }
  void finish() override;

 protected:
  Descriptor& file() override { return m_temporary->file(); }

 private:
  Replacement(const std::string& path, std::string final, Keeping keeping);
  bool takeAttributes();
  bool takeTimes();
  bool keepOld() const;

  std::string m_final;  // the path without links
  Keeping m_keeping;
  std::optional<struct stat> m_old;  // of the file that it replaces
  std::unique_ptr<TemporaryFile> m_temporary;
};

}  // namespace qvconv
