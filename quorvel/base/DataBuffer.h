#pragma once

#include "quorvel/base/Export.h"

namespace quorvel {

/// A growable array of bytes with a 32-bit size.
///
/// It owns its storage, or borrows bytes that the caller keeps (`borrowData`);
/// a borrowed buffer makes its own copy before the first change, so the
/// caller's bytes are never written. Every operation that can run out of
/// memory, or past 2^32 - 1 bytes, returns false and leaves the content as it
/// was. Nothing here throws.
class QUORVEL_API DataBuffer {
 public:
  DataBuffer() = default;
  ~DataBuffer() {
    if (m_capacity) release();
  }
  DataBuffer(DataBuffer&& other) noexcept;
  DataBuffer& operator=(DataBuffer&& other) noexcept;
  DataBuffer(const DataBuffer&) = delete;
  DataBuffer& operator=(const DataBuffer&) = delete;

  /// Appends `count` bytes. A count of 0 changes nothing; a null pointer with
  /// another count is refused. The bytes may lie inside this buffer.
  bool append(const void* bytes, unsigned int count);

  /// Appends the whole content of `other`, which may be this buffer.
  bool append(const DataBuffer& other);

  /// Appends one byte.
  bool appendChar(unsigned char byte);

  /// Empties the buffer. Owned storage is kept for reuse, borrowed bytes are
  /// let go.
  void clear();

  /// Drops the bytes from index `size` on; a larger `size` changes nothing.
  void shorten(unsigned int size);

  /// Drops the first `count` bytes, or all if there are fewer.
  void dropFront(unsigned int count);

  /// Grows the capacity to at least `capacity` bytes in all, so that content
  /// up to that size needs no further allocation.
  bool ensureBuffer(unsigned int capacity);

  /// Makes room for up to `count` more bytes and returns where they go, or
  /// null when that room cannot be had. Write there, then keep what was
  /// written with `keepWritten`; any other change in between ends the loan.
  unsigned char* growBy(unsigned int count);

  /// As `growBy`, but null where the capacity would have to grow.
  unsigned char* roomFor(unsigned int count) {
    return m_capacity > m_size && count <= m_capacity - m_size ? m_data + m_size : nullptr;
  }

  /// Makes the first `count` bytes written after `growBy` part of the
  /// content. `count` must not exceed what `growBy` was asked for.
  void keepWritten(unsigned int count) { m_size += count; }

  /// The content, or null when the buffer is empty. Valid until the next
  /// change.
  const unsigned char* getData2() const;

  /// The byte at `index`, or null when `index` is outside the content.
  const unsigned char* getDataAt2(unsigned int index) const;

  /// Number of content bytes.
  unsigned int getSize() const { return m_size; }

  /// Presents `count` bytes of the caller as the content, without a copy. The
  /// caller keeps them alive and unchanged while they are lent; the buffer
  /// neither writes nor frees them. What the buffer held before is freed.
  void borrowData(unsigned char* bytes, unsigned int count);

  /// Adopts a block from `qvNewUnsignedChar` as storage and its first `count`
  /// bytes as content. What the buffer held before is freed.
  void takeData(unsigned char* block, unsigned int count);

  /// Takes `capacity` bytes of the caller's as storage until the content
  /// outgrows them; the buffer does not free them and must not be used when they
  /// are gone. What it held before is freed.
  void lendStorage(unsigned char* storage, unsigned int capacity);

  /// Removes every byte in 0x80 to 0xFF and keeps the order of the rest.
  /// Returns false, with the content as it was, only when a borrowed buffer
  /// cannot be copied.
  bool drop_non_usascii();

 private:
  bool grow(unsigned int needed);
  bool relocate(unsigned int capacity);
  void release();

  unsigned char* m_data = nullptr;
  unsigned int m_size = 0;
  unsigned int m_capacity = 0;  // 0 while the bytes are borrowed
  bool m_isStorageLent = false;
};

}  // namespace quorvel
