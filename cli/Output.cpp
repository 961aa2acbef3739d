#include "cli/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/FileError.h"
#include "cli/Replacement.h"
#include "cli/WrittenThrough.h"

namespace qvconv {

namespace {

// A device or a pipe.
class DirectOutput : public Output {
 public:
  DirectOutput(std::string name, Descriptor file)
      : Output(std::move(name)), m_file(std::move(file)) {
    if (!m_file) fail();
  }

 protected:
  Descriptor& file() override { return m_file; }

 private:
  Descriptor m_file;
};

// A descriptor of its own for standard output, which only its end closes.
Descriptor openStandardOutput() {
  if (!canWrite(STDOUT_FILENO)) return {};
  return Descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
}

bool isRegularOrNew(const std::string& path) {
  std::error_code error;
  const auto type = std::filesystem::status(path, error).type();
  return type == std::filesystem::file_type::regular ||
         type == std::filesystem::file_type::not_found;
}

// Whether making a file beside another failed for a reason that concerns the directory
// only.
bool isOfTheDirectory(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EBUSY;
}

}  // namespace

void Output::write(std::string_view bytes) {
  if (!writeAll(file().number(), bytes)) fail();
  m_bytesWritten += bytes.size();
}

void Output::finish() {
  if (!file().close()) fail();
}

void Output::fail() const { throw OutputError(m_name, errno); }

std::unique_ptr<Output> openOutput(const std::string& path, Messages& messages) {
  if (path.empty()) {
    return std::make_unique<DirectOutput>("standard output", openStandardOutput());
  }
  if (!isRegularOrNew(path)) {
    return std::make_unique<DirectOutput>(path,
                                          Descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC)));
  }
  if (auto replacement = Replacement::open(path, {})) return replacement;
  const int error = errno;
  if (!isOfTheDirectory(error) || ::access(path.c_str(), W_OK) != 0) {
    throw OutputError(path, error);
  }
  messages.complain(path + ": no file can be made beside it, so it is written through");
  return std::make_unique<WrittenThrough>(path);
}

}  // namespace qvconv
