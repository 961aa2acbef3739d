#pragma once

#include <string>

namespace qvconv {

/// From now on SIGINT, SIGTERM and SIGHUP remove the files that are listed here before
/// they end the process as they do anyway. A signal that is ignored stays so.
void removeListedFilesOnSignals();

/// While it lives no signal removes files or ends the process, so that what it stands
/// around is done wholly or not at all. Where one has come already in another thread,
/// the process ends in the constructor.
class SignalsHeldBack {
 public:
  SignalsHeldBack();
  ~SignalsHeldBack();
  SignalsHeldBack(const SignalsHeldBack&) = delete;
  SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;
};

/// One file that signals remove, listed while this lives. There is room for more of
/// them than there can be jobs; a path that is too long is not listed.
class ListedFile {
 public:
  /// While signals are held back.
  explicit ListedFile(const std::string& path);
  ~ListedFile();
  ListedFile(const ListedFile&) = delete;
  ListedFile& operator=(const ListedFile&) = delete;

 private:
  int m_place;
};

/// How many files can be listed at a time.
inline constexpr int mostListedFiles = 256;

}  // namespace qvconv
