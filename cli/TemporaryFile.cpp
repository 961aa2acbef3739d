#include "cli/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace qvconv {

std::unique_ptr<TemporaryFile> TemporaryFile::make(const std::string& directory) {
  std::string path = (std::filesystem::path(directory) / ".qvconv-XXXXXX").string();
  const SignalsHeldBack held;
  Descriptor file(::mkostemp(path.data(), O_CLOEXEC));
  if (!file) return nullptr;
  return std::unique_ptr<TemporaryFile>(new TemporaryFile(std::move(file), std::move(path)));
}

TemporaryFile::TemporaryFile(Descriptor file, std::string path)
    : m_file(std::move(file)),
      m_path(std::move(path)),
      m_listed(std::make_unique<ListedFile>(m_path)) {}

TemporaryFile::~TemporaryFile() {
  const SignalsHeldBack held;
  if (!m_path.empty()) ::unlink(m_path.c_str());
  m_listed.reset();
}

bool TemporaryFile::rename(const std::string& path) {
  const SignalsHeldBack held;
  if (std::rename(m_path.c_str(), path.c_str()) != 0) return false;
  m_path.clear();
  m_listed.reset();
  return true;
}

}  // namespace qvconv
