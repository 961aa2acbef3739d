// Writing without losing anything: an output stands beside the file that it replaces
// until it is whole.

#include "cli/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/FileError.h"

namespace qvconv {

namespace {

// The file that a path names in the end, which need not exist. Empty, with a
// reason in `errno`, where links go round.
std::filesystem::path behindLinks(std::filesystem::path path) {
  constexpr int mostLinks = 40;
  for (int i = 0; i < mostLinks; ++i) {
    std::error_code noLink;
    const std::filesystem::path target = std::filesystem::read_symlink(path, noLink);
    if (noLink) return path;
    path = path.parent_path() / target;
  }
  errno = ELOOP;
  return {};
}

// Gives a new file the owner and the permissions of the one that it is to
// replace, or those of any new file.
bool takeAttributes(int descriptor, const std::string& replaced) {
  struct stat old {};
  if (::stat(replaced.c_str(), &old) == 0) {
    // Only the superuser can give a file away; for others the owner changes.
    static_cast<void>(!::fchown(descriptor, old.st_uid, old.st_gid));
    return ::fchmod(descriptor, old.st_mode & 0777) == 0;
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return ::fchmod(descriptor, 0666 & ~mask) == 0;
}

// A descriptor of its own for standard output, which only its end closes.
Descriptor openStandardOutput() {
  if (!canWrite(STDOUT_FILENO)) return {};
  return Descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
}

}  // namespace

Output::Output(std::string path) : m_name(std::move(path)) {
  if (m_name.empty()) {
    m_name = "standard output";
    m_file = openStandardOutput();
    if (!m_file) fail();
    return;
  }
  std::error_code error;
  const auto type = std::filesystem::status(m_name, error).type();
  if (type == std::filesystem::file_type::regular ||
      type == std::filesystem::file_type::not_found) {
    openBeside();
  } else {
    m_file = Descriptor(::open(m_name.c_str(), O_WRONLY | O_CLOEXEC));
  }
  if (!m_file) fail();
}

Output::~Output() {
  if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

// A file in the same directory can take the final name in one step.
void Output::openBeside() {
  m_final = behindLinks(m_name).string();
  if (m_final.empty()) return;
  std::string name = (std::filesystem::path(m_final).parent_path() / ".qvconv-XXXXXX").string();
  Descriptor file(::mkostemp(name.data(), O_CLOEXEC));
  if (!file) return;
  if (takeAttributes(file.number(), m_final)) {
    m_file = std::move(file);
    m_temporary = std::move(name);
    return;
  }
  const int error = errno;
  ::unlink(name.c_str());
  errno = error;
}

void Output::write(std::string_view bytes) {
  if (!writeAll(m_file.number(), bytes)) fail();
  m_bytesWritten += bytes.size();
}

void Output::finish() {
  if (!m_file.close()) fail();
  if (m_temporary.empty()) return;
  if (std::rename(m_temporary.c_str(), m_final.c_str()) != 0) fail();
  m_temporary.clear();
}

void Output::fail() const { throw OutputError(m_name, errno); }

}  // namespace qvconv
