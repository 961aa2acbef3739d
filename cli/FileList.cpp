#include "cli/FileList.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/FileError.h"
#include "cli/Input.h"

namespace qvconv {

namespace {

namespace fs = std::filesystem;

class Lister {
 public:
  Lister(const FileArguments& arguments, Messages& messages)
      : m_arguments(arguments), m_messages(messages) {}

  void addNamed(const std::string& path) {
    std::error_code error;
    if (m_arguments.isRecursive && fs::is_directory(path, error)) {
      addDirectory(path, "");
    } else {
      m_list.files.push_back({path, fs::path(path).filename().string()});
    }
  }

  void addNamedIn(const std::string& file) try {
    Input input(file);
    std::string names;
    for (std::string_view block = input.readBlock(); !block.empty(); block = input.readBlock()) {
      names += block;
    }
    const char separator = m_arguments.isNulSeparated ? '\0' : '\n';
    for (std::string_view rest = names; !rest.empty();) {
      const std::size_t end = std::min(rest.find(separator), rest.size());
      if (end > 0) addNamed(std::string(rest.substr(0, end)));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  } catch (const InputError& error) {
    fail(error.what());
  }

  FileList take() { return std::move(m_list); }

 private:
  // Links in directories are not followed: a file would be met twice, or without end.
  void addDirectory(const fs::path& directory, const fs::path& relative) {
    for (const fs::path& name : namesIn(directory)) {
      std::error_code error;
      const auto type = fs::symlink_status(directory / name, error).type();
      if (type == fs::file_type::directory) {
        addDirectory(directory / name, relative / name);
      } else if (type == fs::file_type::regular && isWanted(name)) {
        m_list.files.push_back({(directory / name).string(), (relative / name).string()});
      }
    }
  }

  std::vector<fs::path> namesIn(const fs::path& directory) {
    std::vector<fs::path> names;
    std::error_code error;
    fs::directory_iterator entries(directory, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
      names.push_back(entries->path().filename());
    }
    if (error) fail(directory.string() + ": " + error.message());
    std::sort(names.begin(), names.end());
    return names;
  }

  bool isWanted(const fs::path& name) const {
    return !m_arguments.glob || ::fnmatch(m_arguments.glob->c_str(), name.c_str(), 0) == 0;
  }

  void fail(const std::string& line) {
    m_messages.complain(line);
    m_list.status = ExitStatus::failed;
  }

  const FileArguments& m_arguments;
  Messages& m_messages;
  FileList m_list;
};

}  // namespace

FileList listFiles(const FileArguments& arguments, Messages& messages) {
  Lister lister(arguments, messages);
  for (const std::string& file : arguments.files) lister.addNamed(file);
  if (arguments.filesFrom) lister.addNamedIn(*arguments.filesFrom);
  return lister.take();
}

}  // namespace qvconv
