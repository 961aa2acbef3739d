#include "cli/WrittenThrough.h"

#include <fcntl.h>

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/TemporaryFile.h"

namespace qvconv {

namespace {

constexpr std::size_t bytesPerBlock = 1U << 16;

// A file that nobody sees, and that goes with its descriptor.
Descriptor openWithoutName() {
  std::error_code error;
  const std::filesystem::path directory = std::filesystem::temp_directory_path(error);
  const std::unique_ptr<TemporaryFile> temporary =
      TemporaryFile::make(error ? std::string("/tmp") : directory.string());
  return temporary ? std::move(temporary->file()) : Descriptor();
}

}  // namespace

WrittenThrough::WrittenThrough(std::string path)
    : Output(path), m_path(std::move(path)), m_kept(openWithoutName()) {
  if (!m_kept) fail();
}

void WrittenThrough::finish() {
  Descriptor target(::open(m_path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
  if (!target) fail();
  std::vector<char> block(bytesPerBlock);
  for (std::uint64_t offset = 0; offset < bytesWritten();) {
    const ssize_t count = readAt(m_kept.number(), block, offset);
    if (count <= 0) fail();
    const auto size = static_cast<std::size_t>(count);
    if (!writeAll(target.number(), {block.data(), size})) fail();
    offset += size;
  }
  if (!target.close()) fail();
}

}  // namespace qvconv
