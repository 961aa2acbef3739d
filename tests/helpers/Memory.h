#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

/// Memory that tests need and a program rarely meets: bytes at the very end of
/// what may be read, gigabytes that cost nothing, and too little memory.
namespace quorvel::test_memory {

// The sanitizers reserve address space of their own and end the process when
// an allocation fails, so a limit cannot be tried under them.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool canLimitMemory = false;
#else
constexpr bool canLimitMemory = true;
#endif

// A 32-bit program has not the addresses for a text of gigabytes.
constexpr bool canMapGigabytes = sizeof(void*) > 4;

// The thread sanitizer notes every byte that is read: minutes for gigabytes.
#if defined(__SANITIZE_THREAD__)
constexpr bool canReadGigabytes = false;
#else
constexpr bool canReadGigabytes = canMapGigabytes;
#endif

/// Reserved addresses, neither readable nor writable unless asked for.
class Mapping {
 public:
  explicit Mapping(std::size_t size, int protection = PROT_NONE) : m_size(size) {
    void* address =
        mmap(nullptr, size, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (address == MAP_FAILED) throw std::runtime_error("mmap");
    m_data = static_cast<unsigned char*>(address);
  }
  ~Mapping() { munmap(m_data, m_size); }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  unsigned char* data() const { return m_data; }
  std::size_t size() const { return m_size; }

 private:
  unsigned char* m_data = nullptr;
  std::size_t m_size;
};

/// Places bytes so that the one behind the last of them cannot be read, or the
/// one before the first. The sanitizers do not see every access of vector code;
/// the machine does.
class GuardedBytes {
 public:
  explicit GuardedBytes(std::size_t most = 4096)
      : m_readable((most + page() - 1) / page() * page()), m_mapping(m_readable + 2 * page()) {
    // Emulators refuse an empty range.
    if (m_readable != 0 && mprotect(start(), m_readable, PROT_READ | PROT_WRITE) != 0)
      throw std::runtime_error("mprotect");
  }

  std::size_t size() const { return m_readable; }

  unsigned char* place(std::string_view bytes) { return copy(bytes, room(bytes.size())); }

  /// `size` writable bytes of whatever content, where `place` places them.
  unsigned char* room(std::size_t size) {
    if (size > m_readable) throw std::length_error("GuardedBytes");
    return start() + m_readable - size;
  }

  unsigned char* placeAtStart(std::string_view bytes) { return copy(bytes, start()); }

 private:
  static std::size_t page() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

  unsigned char* start() const { return m_mapping.data() + page(); }

  unsigned char* copy(std::string_view bytes, unsigned char* to) const {
    if (bytes.size() > m_readable) throw std::length_error("GuardedBytes");
    if (!bytes.empty()) std::memcpy(to, bytes.data(), bytes.size());
    return to;
  }

  std::size_t m_readable;
  Mapping m_mapping;
};

/// `size` readable bytes and more that repeat `pattern`, whose length divides
/// a page; they take 1 MiB of memory, however many they are.
class RepeatedBytes {
 public:
  RepeatedBytes(std::string_view pattern, std::size_t size)
      : m_mapping((size + block - 1) / block * block) {
    std::FILE* file = std::tmpfile();
    if (!file) throw std::runtime_error("tmpfile");
    const int descriptor = fileno(file);
    bool done = ftruncate(descriptor, block) == 0;
    if (done) done = fillBlock(descriptor, pattern);
    for (std::size_t at = 0; done && at < m_mapping.size(); at += block)
      done = mmap(m_mapping.data() + at, block, PROT_READ, MAP_SHARED | MAP_FIXED, descriptor, 0) !=
             MAP_FAILED;
    static_cast<void>(std::fclose(file));
    if (!done) throw std::runtime_error("RepeatedBytes");
  }

  unsigned char* data() const { return m_mapping.data(); }

 private:
  static constexpr std::size_t block = 1U << 20;

  static bool fillBlock(int descriptor, std::string_view pattern) {
    void* address = mmap(nullptr, block, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (address == MAP_FAILED) return false;
    for (std::size_t at = 0; at < block; at += pattern.size())
      std::memcpy(static_cast<char*>(address) + at, pattern.data(), pattern.size());
    munmap(address, block);
    return true;
  }

  Mapping m_mapping;
};

/// A line of /proc/self/status in bytes, such as VmPeak.
inline std::size_t statusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;)
    if (word == name + ":") {
      std::size_t kibibytes = 0;
      status >> kibibytes;
      return kibibytes * 1024;
    }
  throw std::runtime_error("no " + name);
}

/// While it lives, the process gets at most `more` bytes beyond what it has.
class MemoryLimit {
 public:
  explicit MemoryLimit(std::size_t more) {
    if (getrlimit(RLIMIT_AS, &m_before) != 0) throw std::runtime_error("getrlimit");
    rlimit limit = m_before;
    limit.rlim_cur = statusBytes("VmSize") + more;
    if (setrlimit(RLIMIT_AS, &limit) != 0) throw std::runtime_error("setrlimit");
  }
  ~MemoryLimit() { setrlimit(RLIMIT_AS, &m_before); }
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;

 private:
  rlimit m_before{};
};

}  // namespace quorvel::test_memory
