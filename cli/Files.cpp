// Reading and writing without losing anything: an output stands beside the file that it
// replaces until it is whole.

#include "cli/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>
#include <utility>

namespace qvconv {

namespace {

constexpr unsigned int mostBytes = std::numeric_limits<unsigned int>::max();
constexpr unsigned int chunkBytes = 1U << 16;

// How to open a directory so that it can neither be read nor written. As a file it
// cannot be either, so /dev/stdin and its like do not lead to anything, which
// those of an open /dev/null would.
#ifdef O_PATH
constexpr int unusable = O_PATH;
#else
constexpr int unusable = O_RDONLY;
#endif

// A 32-bit build has to ask for sizes beyond 2 GiB.
static_assert(sizeof(off_t) >= sizeof(std::int64_t));

std::string reason(int error) { return std::generic_category().message(error); }

FileError tooLarge(const std::string& path) {
  return FileError{inputName(path) + ": larger than 4 GiB less one byte, the most that is handled"};
}

struct CloseFile {
  void operator()(std::FILE* file) const {
    if (file != stdin) static_cast<void>(std::fclose(file));
  }
};

// How much to ask for first: the whole of a regular file and one byte, so that
// this read already sees the end. What else there is tells its size only there.
unsigned int firstRead(std::FILE* file, const std::string& path) {
  struct stat status {};
  if (::fstat(::fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return chunkBytes;
  if (status.st_size > std::int64_t{mostBytes}) throw tooLarge(path);
  const auto whole = std::min(std::int64_t{status.st_size} + 1, std::int64_t{mostBytes});
  return std::max(static_cast<unsigned int>(whole), chunkBytes);
}

// Opens a descriptor that is closed, so that it is used up and still of no use.
bool take(int descriptor) {
  const bool isOpen = ::fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF;
  return isOpen || ::open("/", unusable) == descriptor;
}

// Whether a descriptor is open for writing. An empty text would not find out.
bool canWrite(int descriptor) {
  const int flags = ::fcntl(descriptor, F_GETFL);
  if (flags < 0) return false;
  if ((flags & O_ACCMODE) != O_RDONLY) return true;
  errno = EBADF;
  return false;
}

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

}  // namespace

bool takeStandardDescriptors() {
  // In this order: what `open` gives is the lowest that is free.
  return take(STDIN_FILENO) && take(STDOUT_FILENO) && take(STDERR_FILENO);
}

std::string inputName(const std::string& path) { return path == "-" ? "standard input" : path; }

quorvel::DataBuffer readInput(const std::string& path) {
  const std::unique_ptr<std::FILE, CloseFile> file(path == "-" ? stdin
                                                               : std::fopen(path.c_str(), "rb"));
  if (!file) throw FileError(inputName(path) + ": " + reason(errno));
  quorvel::DataBuffer content;
  unsigned int room = firstRead(file.get(), path);
  while (room > 0) {
    unsigned char* place = content.growBy(room);
    if (!place) throw FileError(inputName(path) + ": not enough memory for it");
    const auto count = static_cast<unsigned int>(std::fread(place, 1, room, file.get()));
    content.keepWritten(count);
    if (count < room) break;
    room = std::min(chunkBytes, mostBytes - content.getSize());
  }
  if (room == 0 && std::fgetc(file.get()) != EOF) throw tooLarge(path);
  if (std::ferror(file.get())) throw FileError(inputName(path) + ": " + reason(errno));
  return content;
}

Output::Output(std::string path) : m_name(std::move(path)) {
  if (m_name.empty()) {
    m_name = "standard output";
    if (!canWrite(STDOUT_FILENO)) fail();
    m_file = stdout;
    return;
  }
  std::error_code error;
  const auto type = std::filesystem::status(m_name, error).type();
  if (type == std::filesystem::file_type::regular ||
      type == std::filesystem::file_type::not_found) {
    openBeside();
  } else {
    m_file = std::fopen(m_name.c_str(), "wb");
  }
  if (!m_file) fail();
}

Output::~Output() {
  if (m_file && m_file != stdout) static_cast<void>(std::fclose(m_file));
  if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

// A file in the same directory can take the final name in one step.
void Output::openBeside() {
  m_final = behindLinks(m_name).string();
  if (m_final.empty()) return;
  std::string name = (std::filesystem::path(m_final).parent_path() / ".qvconv-XXXXXX").string();
  const int descriptor = ::mkstemp(name.data());
  if (descriptor < 0) return;
  if (takeAttributes(descriptor, m_final)) m_file = ::fdopen(descriptor, "wb");
  if (m_file) {
    m_temporary = std::move(name);
    return;
  }
  const int error = errno;
  ::close(descriptor);
  ::unlink(name.c_str());
  errno = error;
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
  if (std::rename(m_temporary.c_str(), m_final.c_str()) != 0) fail();
  m_temporary.clear();
}

void Output::fail() const { throw FileError(m_name + ": " + reason(errno)); }

}  // namespace qvconv
