#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/ExitStatus.h"
#include "cli/Messages.h"

namespace qvconv {

/// What the command line names to be read.
struct FileArguments {
  std::vector<std::string> files;        ///< files and directories; "-" for standard input
  std::optional<std::string> filesFrom;  ///< a file that names more of them
  bool isNulSeparated = false;           ///< that file has NUL between two names, not LF
  bool isRecursive = false;              ///< whether directories stand for what is in them
  std::optional<std::string> glob;       ///< of that, only what has a name like this
};

/// A file to be read.
struct FileEntry {
  std::string path;
  std::string relative;  ///< its place below the directory that was named, or its name
};

/// The files in the order in which they are named, what is in a directory by its names.
/// What cannot be looked at is complained of.
struct FileList {
  std::vector<FileEntry> files;
  ExitStatus status = ExitStatus::allConverted;
};

FileList listFiles(const FileArguments& arguments, Messages& messages);

}  // namespace qvconv
