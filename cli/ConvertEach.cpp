#include "cli/ConvertEach.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <system_error>
#include <utility>

#include "cli/FileConverter.h"
#include "cli/FileError.h"
#include "cli/Input.h"
#include "cli/Replacement.h"

namespace qvconv {

namespace {

namespace fs = std::filesystem;

using Open = std::function<std::unique_ptr<Output>(const FileEntry& file)>;

ExitStatus convertOne(FileConverter& fileConverter, const Open& open, const FileEntry& file,
                      Messages& messages) try {
  if (file.path == "-") throw InputError(inputName("-") + ": it has no place of its own");
  const std::unique_ptr<Output> output = open(file);
  Input input(file.path);
  const ExitStatus status = fileConverter.run(input, *output, messages);
  if (status != ExitStatus::failed) output->finish();
  return status;
} catch (const FileError& error) {
  messages.complain(error.what());
  return ExitStatus::failed;
}

Worker converter(const Rules& rules, Open open) {
  // What is called has to be copyable.
  auto fileConverter = std::make_shared<FileConverter>(rules);
  return [fileConverter, open = std::move(open)](const FileEntry& file, Messages& messages) {
    return convertOne(*fileConverter, open, file, messages);
  };
}

std::unique_ptr<Output> openReplacement(const std::string& path, Replacement::Keeping keeping) {
  auto replacement = Replacement::open(path, std::move(keeping));
  if (!replacement) throw OutputError(path, errno);
  return replacement;
}

// Before it is opened, which for a pipe would wait.
void refuseUnlessRegular(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) throw InputError(path, error.value());
  if (fs::is_directory(status))
    throw InputError(path + ": it is a directory; -r takes what is in it");
  if (!fs::is_regular_file(status))
    throw InputError(path + ": only a regular file can be replaced");
}

bool isSameFile(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return fs::equivalent(a, b, error) && !error;
}

}  // namespace

Worker inPlaceConverter(const Rules& rules, const std::string& suffix) {
  return converter(rules, [suffix](const FileEntry& file) {
    refuseUnlessRegular(file.path);
    return openReplacement(file.path, {true, suffix});
  });
}

Worker directoryConverter(const Rules& rules, const std::string& directory) {
  return converter(rules, [directory](const FileEntry& file) {
    const fs::path path = fs::path(directory) / file.relative;
    if (isSameFile(path, file.path)) {
      throw OutputError(path.string() + ": it is the input itself; --in-place replaces files");
    }
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error) throw OutputError(path.parent_path().string() + ": " + error.message());
    return openReplacement(path.string(), {});
  });
}

void refuseSharedPlaces(FileList& list, Messages& messages) {
  std::set<std::string> places;
  std::vector<FileEntry> files;
  for (FileEntry& file : list.files) {
    if (places.insert(file.relative).second) {
      files.push_back(std::move(file));
    } else {
      messages.complain(file.path + ": another input already goes to " + file.relative);
      list.status = ExitStatus::failed;
    }
  }
  list.files = std::move(files);
}

}  // namespace qvconv
