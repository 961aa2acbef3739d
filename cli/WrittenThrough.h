#pragma once

#include <string>

#include "cli/Output.h"

namespace qvconv {

/// A regular file that cannot be replaced by another one. What it is to hold is kept in a
/// file without a name until `finish`, so that it may be one of the inputs and keeps its
/// content until then; only while `finish` copies is it half of each.
class WrittenThrough : public Output {
 public:
  /// For a file that exists. Throws `OutputError`.
  explicit WrittenThrough(std::string path);

  bool replacesAFile() const override { return true; }
  void finish() override;

 protected:
  Descriptor& file() override { return m_kept; }

 private:
  std::string m_path;
  Descriptor m_kept;
};

}  // namespace qvconv
