#include "cli/Replacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

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

// Read once, before there are threads that would make files meanwhile.
mode_t modeOfNewFiles() {
  static const mode_t mode = [] {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
  }();
  return mode;
}

std::string directoryOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

}  // namespace

std::unique_ptr<Replacement> Replacement::open(const std::string& path, Keeping keeping) {
  std::string final = behindLinks(path).string();
  if (final.empty()) return nullptr;
  std::unique_ptr<Replacement> replacement(
      new Replacement(path, std::move(final), std::move(keeping)));
  if (!replacement->m_temporary || !replacement->takeAttributes()) return nullptr;
  return replacement;
}

Replacement::Replacement(const std::string& path, std::string final, Keeping keeping)
    : Output(path),
      m_final(std::move(final)),
      m_keeping(std::move(keeping)),
      m_temporary(TemporaryFile::make(directoryOf(m_final))) {
  const int error = errno;
  struct stat old {};
  if (::stat(m_final.c_str(), &old) == 0) m_old = old;
  errno = error;
}

bool Replacement::takeAttributes() {
  const int descriptor = m_temporary->file().number();
  if (!m_old) return ::fchmod(descriptor, modeOfNewFiles()) == 0;
  // Only the superuser can give a file away; for others the owner changes, and what a
  // program may do in the name of the owner is not theirs to give.
  const bool isSameOwner = ::fchown(descriptor, m_old->st_uid, m_old->st_gid) == 0;
  return ::fchmod(descriptor, m_old->st_mode & (isSameOwner ? 07777 : 0777)) == 0;
}

bool Replacement::takeTimes() {
  if (!m_keeping.times || !m_old) return true;
  const std::array times = {m_old->st_atim, m_old->st_mtim};
  return ::futimens(m_temporary->file().number(), times.data()) == 0;
}

// The old file gets a second name, so that there is no moment without one. What had that
// name goes, as all at once.
bool Replacement::keepOld() const {
  if (m_keeping.suffix.empty() || !m_old) return true;
  const auto place = TemporaryFile::make(directoryOf(m_final));
  if (!place || ::unlink(place->path().c_str()) != 0 ||
      ::link(m_final.c_str(), place->path().c_str()) != 0) {
    return false;
  }
  const std::string kept = m_final + m_keeping.suffix;
  struct stat other {};
  // Renaming one name of a file to another of it would leave both.
  const bool isKept = ::stat(kept.c_str(), &other) == 0 && other.st_ino == m_old->st_ino &&
                      other.st_dev == m_old->st_dev;
  return isKept || place->rename(kept);
}

void Replacement::finish() {
  if (!takeTimes()) fail();
  Output::finish();
  const SignalsHeldBack held;
  if (!keepOld() || !m_temporary->rename(m_final)) fail();
}

}  // namespace qvconv
