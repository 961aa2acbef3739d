#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

namespace qvconv {

// A 32-bit build has to ask for sizes beyond 2 GiB.
static_assert(sizeof(off_t) >= sizeof(std::int64_t));

/// An open file, closed with this object.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() { static_cast<void>(close()); }
  Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
  }

  int number() const { return m_number; }
  explicit operator bool() const { return m_number >= 0; }

  /// False, with a reason in `errno`, when what was written did not arrive.
  bool close();

 private:
  int m_number = -1;
};

/// Takes the descriptors 0 to 2 where they are closed, so that no file that is
/// opened later gets one of them: what is meant for standard error would land in
/// the output, and the output be read as standard input. Reading from and writing
/// to them fails as before. False when they cannot be taken.
bool takeStandardDescriptors();

/// Whether a descriptor is open for writing, which writing nothing would not find
/// out; if not, `errno` has the reason.
bool canWrite(int descriptor);

// The calls of the system, begun again where a signal interrupts them.

/// Reads what there is, and waits only when there is nothing. The number of bytes, 0
/// at the end, negative with a reason in `errno`.
ssize_t readSome(int descriptor, std::span<char> room);

/// The same from a place of a regular file, which stays at its own place.
ssize_t readAt(int descriptor, std::span<char> room, std::uint64_t offset);

/// Writes all of `bytes`. False with a reason in `errno`.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace qvconv
