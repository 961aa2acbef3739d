#include "cli/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>
#include <utility>

namespace qvconv {

namespace {

constexpr unsigned int mostBytes = std::numeric_limits<unsigned int>::max();
constexpr unsigned int chunkBytes = 1U << 20;

std::string reason(int error) { return std::generic_category().message(error); }

FileError tooLarge(const std::string& path) {
  return FileError(inputName(path) + ": larger than 4 GiB less one byte, the most that is handled");
}

struct CloseFile {
  void operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};

// Room for the whole of a regular file at once; what else there is to read
// tells its size only at its end.
void reserveForFile(std::FILE* file, const std::string& path, quorvel::DataBuffer& content) {
  struct stat status {};
  if (::fstat(::fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (status.st_size > static_cast<off_t>(mostBytes)) throw tooLarge(path);
  // The extra byte lets the last read see the end without growing again.
  const auto size = static_cast<unsigned int>(status.st_size);
  content.ensureBuffer(size == mostBytes ? size : size + 1);
}

// The permissions that a newly created file gets.
mode_t newFileMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

std::string inputName(const std::string& path) { return path == "-" ? "standard input" : path; }

quorvel::DataBuffer readInput(const std::string& path) {
  const std::unique_ptr<std::FILE, CloseFile> file(path == "-" ? stdin
                                                               : std::fopen(path.c_str(), "rb"));
  if (!file) throw FileError(inputName(path) + ": " + reason(errno));
  quorvel::DataBuffer content;
  reserveForFile(file.get(), path, content);
  for (;;) {
    const unsigned int room = std::min(chunkBytes, mostBytes - content.getSize());
    if (room == 0) {
      if (std::fgetc(file.get()) != EOF) throw tooLarge(path);
      break;
    }
    unsigned char* place = content.growBy(room);
    if (!place) throw FileError(inputName(path) + ": not enough memory for it");
    const auto count = static_cast<unsigned int>(std::fread(place, 1, room, file.get()));
    content.keepWritten(count);
    if (count < room) break;
  }
  if (std::ferror(file.get())) throw FileError(inputName(path) + ": " + reason(errno));
  return content;
}

Output::Output(const std::string& path) : m_path(path) {
  if (m_path.empty()) {
    m_path = "standard output";
    m_file = stdout;
    return;
  }
  std::error_code error;
  const auto type = std::filesystem::status(m_path, error).type();
  if (type == std::filesystem::file_type::regular ||
      type == std::filesystem::file_type::not_found) {
    openBeside();
  } else {
    m_file = std::fopen(m_path.c_str(), "wb");
  }
  if (!m_file) fail();
}

Output::~Output() {
  if (m_file && m_file != stdout) std::fclose(m_file);
  if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

// A file in the same directory can take the final name in one step. It gets the
// owner and the permissions of the file that it replaces.
void Output::openBeside() {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(m_path, error);
  if (!error) m_path = real.string();
  std::string name = (std::filesystem::path(m_path).parent_path() / ".qvconv-XXXXXX").string();
  const int descriptor = ::mkstemp(name.data());
  if (descriptor < 0) return;
  m_temporary = std::move(name);
  struct stat old {};
  mode_t mode = newFileMode();
  if (::stat(m_path.c_str(), &old) == 0) {
    mode = old.st_mode & 0777;
    // Only the superuser can give a file away; others go without.
    if (::fchown(descriptor, old.st_uid, old.st_gid) != 0) errno = 0;
  }
  if (::fchmod(descriptor, mode) == 0) m_file = ::fdopen(descriptor, "wb");
  if (!m_file) ::close(descriptor);
}

void Output::write(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), m_file) != bytes.size()) fail();
}

void Output::write(const quorvel::DataBuffer& bytes) {
  if (bytes.getSize() == 0) return;
  if (std::fwrite(bytes.getData2(), 1, bytes.getSize(), m_file) != bytes.getSize()) fail();
}

void Output::finish() {
  std::FILE* file = std::exchange(m_file, nullptr);
  if (std::fclose(file) != 0) fail();
  if (m_temporary.empty()) return;
  if (std::rename(m_temporary.c_str(), m_path.c_str()) != 0) fail();
  m_temporary.clear();
}

void Output::fail() const { throw FileError(m_path + ": " + reason(errno)); }

}  // namespace qvconv
