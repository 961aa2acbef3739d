#include "cli/Input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "cli/FileError.h"

namespace qvconv {

namespace {

constexpr std::size_t bytesPerBlock = 1U << 16;

// How far in front of a block a loss may begin that is found in it, with some to spare.
constexpr std::size_t mostKept = 64;

}  // namespace

std::string inputName(const std::string& path) { return path == "-" ? "standard input" : path; }

Input::Input(const std::string& path) : m_path(path), m_name(inputName(path)) {
  if (path == "-") {
    m_descriptor = STDIN_FILENO;
  } else {
    m_own = Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!m_own) throw InputError(m_name, errno);
    m_descriptor = m_own.number();
  }
  struct stat status {};
  if (::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    const off_t start = ::lseek(m_descriptor, 0, SEEK_CUR);
    m_isRegular = start >= 0;
    m_start = static_cast<std::uint64_t>(std::max<off_t>(start, 0));
    m_size = static_cast<std::uint64_t>(std::max<off_t>(status.st_size - start, 0));
  }
}

Input::Input(const std::string& path, std::string text)
    : m_path(path), m_name(inputName(path)), m_text(std::move(text)), m_size(m_text->size()) {}

std::string_view Input::readBlock() {
  if (m_text) return readNextOfText();
  m_buffer.resize(mostKept + bytesPerBlock);
  char* const block = m_buffer.data() + mostKept;
  m_offset += m_blockSize;
  m_keptSize = std::min(m_keptSize + m_blockSize, mostKept);
  std::copy(block + m_blockSize - m_keptSize, block + m_blockSize, block - m_keptSize);
  m_blockSize = 0;
  m_blockSize = readNext({block, bytesPerBlock});
  return {block, m_blockSize};
}

Input::Beginning Input::lookAhead(std::size_t most) {
  if (m_text) return {std::string_view(*m_text).substr(0, most), m_text->size() > most};
  m_ahead.resize(most);
  std::size_t size = 0;
  while (size < most) {
    const ssize_t count = readSome(m_descriptor, std::span(m_ahead).subspan(size));
    if (count < 0) throw InputError(m_name, errno);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  m_ahead.resize(size);
  return {m_ahead, size == most};
}

// From what was looked at, and behind that from the file.
std::size_t Input::readNext(std::span<char> room) {
  const std::string_view ahead = std::string_view(m_ahead).substr(m_aheadOffset);
  if (!ahead.empty()) {
    const std::size_t size = ahead.copy(room.data(), room.size());
    m_aheadOffset += size;
    return size;
  }
  m_ahead = {};
  m_aheadOffset = 0;
  const ssize_t count = readSome(m_descriptor, room);
  if (count < 0) throw InputError(m_name, errno);
  return static_cast<std::size_t>(count);
}

std::string_view Input::readNextOfText() {
  m_offset += m_blockSize;
  const std::string_view block =
      std::string_view(*m_text).substr(static_cast<std::size_t>(m_offset), bytesPerBlock);
  m_blockSize = block.size();
  return block;
}

std::uint64_t Input::firstKeptLater() const {
  return bytesRead() - std::min<std::uint64_t>(bytesRead(), mostKept);
}

std::string_view Input::readAgain(std::uint64_t offset, std::span<char> room) const {
  const std::uint64_t available = bytesRead() - std::min(offset, bytesRead());
  const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(room.size(), available));
  if (m_text) return std::string_view(*m_text).substr(static_cast<std::size_t>(offset), size);
  if (m_isRegular) {
    const ssize_t count = readAt(m_descriptor, room.first(size), m_start + offset);
    return {room.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }
  const std::uint64_t first = m_offset - m_keptSize;
  if (size == 0 || offset < first) return {};
  const std::size_t begin = mostKept - m_keptSize + static_cast<std::size_t>(offset - first);
  return {m_buffer.data() + begin, size};
}

}  // namespace qvconv
