// What the command asks of the system, without the delays and the half results that the
// system may give.

#include "cli/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "cli/FileError.h"

namespace qvconv {

namespace {

// How to open a directory so that it can neither be read nor written. As a file it
// cannot be either, so /dev/stdin and its like do not lead to anything, which
// those of an open /dev/null would.
#ifdef O_PATH
constexpr int unusable = O_PATH;
#else
constexpr int unusable = O_RDONLY;
#endif

// Opens a descriptor that is closed, so that it is used up and still of no use.
bool take(int descriptor) {
  const bool isOpen = ::fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF;
  return isOpen || ::open("/", unusable) == descriptor;
}

template <typename Call>
ssize_t uninterrupted(const Call& call) {
  for (;;) {
    const ssize_t result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

}  // namespace

FileError::FileError(const std::string& file, int error)
    : std::runtime_error(file + ": " + std::generic_category().message(error)) {}

bool Descriptor::close() {
  const int number = std::exchange(m_number, -1);
  return number < 0 || ::close(number) == 0 || errno == EINTR;
}

bool takeStandardDescriptors() {
  // In this order: what `open` gives is the lowest that is free.
  return take(STDIN_FILENO) && take(STDOUT_FILENO) && take(STDERR_FILENO);
}

bool canWrite(int descriptor) {
  const int flags = ::fcntl(descriptor, F_GETFL);
  if (flags < 0) return false;
  if ((flags & O_ACCMODE) != O_RDONLY) return true;
  errno = EBADF;
  return false;
}

ssize_t readSome(int descriptor, std::span<char> room) {
  return uninterrupted([&] { return ::read(descriptor, room.data(), room.size()); });
}

ssize_t readAt(int descriptor, std::span<char> room, std::uint64_t offset) {
  return uninterrupted(
      [&] { return ::pread(descriptor, room.data(), room.size(), static_cast<off_t>(offset)); });
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace qvconv
