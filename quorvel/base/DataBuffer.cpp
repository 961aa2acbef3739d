// Whose the bytes are shows in two fields. With a capacity of 0 they are the
// caller's and only read: the first change makes a copy. With another they are
// storage to write to, which is freed unless it is lent.

#include "quorvel/base/DataBuffer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "quorvel/base/qvHelpers.h"

namespace quorvel {

namespace {
constexpr unsigned int mostBytes = std::numeric_limits<unsigned int>::max();
constexpr unsigned int smallestBlock = 64;
}  // namespace

DataBuffer::DataBuffer(DataBuffer&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)),
      m_isStorageLent(std::exchange(other.m_isStorageLent, false)) {}

DataBuffer& DataBuffer::operator=(DataBuffer&& other) noexcept {
  if (this != &other) {
    release();
    m_data = std::exchange(other.m_data, nullptr);
    m_size = std::exchange(other.m_size, 0);
    m_capacity = std::exchange(other.m_capacity, 0);
    m_isStorageLent = std::exchange(other.m_isStorageLent, false);
  }
  return *this;
}

bool DataBuffer::append(const void* bytes, unsigned int count) {
  if (count == 0) return true;
  if (!bytes || count > mostBytes - m_size) return false;
  // The bytes may be our own, and growing moves them.
  const auto* source = static_cast<const unsigned char*>(bytes);
  const bool isOwn = m_data && source >= m_data && source < m_data + m_size;
  const std::size_t offset = isOwn ? static_cast<std::size_t>(source - m_data) : 0;
  unsigned char* room = growBy(count);
  if (!room) return false;
  std::memmove(room, isOwn ? m_data + offset : source, count);
  keepWritten(count);
  return true;
}

bool DataBuffer::append(const DataBuffer& other) { return append(other.m_data, other.m_size); }

bool DataBuffer::appendChar(unsigned char byte) { return append(&byte, 1); }

void DataBuffer::clear() {
  if (m_capacity == 0) m_data = nullptr;
  m_size = 0;
}

void DataBuffer::shorten(unsigned int size) { m_size = std::min(m_size, size); }

void DataBuffer::dropFront(unsigned int count) {
  const unsigned int dropped = std::min(count, m_size);
  m_size -= dropped;
  if (m_capacity == 0) {
    if (m_data) m_data += dropped;
  } else if (dropped) {
    std::memmove(m_data, m_data + dropped, m_size);
  }
}

bool DataBuffer::ensureBuffer(unsigned int capacity) {
  return capacity <= m_capacity || grow(std::max(capacity, m_size));
}

unsigned char* DataBuffer::growBy(unsigned int count) {
  if (count > mostBytes - m_size) return nullptr;
  const unsigned int needed = std::max(m_size + count, 1U);
  if (needed > m_capacity && !grow(needed)) return nullptr;
  return m_data + m_size;
}

const unsigned char* DataBuffer::getData2() const { return m_size ? m_data : nullptr; }

const unsigned char* DataBuffer::getDataAt2(unsigned int index) const {
  return index < m_size ? m_data + index : nullptr;
}

void DataBuffer::borrowData(unsigned char* bytes, unsigned int count) {
  release();
  m_data = bytes;
  m_size = bytes ? count : 0;
  m_capacity = 0;
}

void DataBuffer::takeData(unsigned char* block, unsigned int count) {
  release();
  if (!block || count == 0) {
    delete[] block;
    return;
  }
  m_data = block;
  m_size = count;
  m_capacity = count;
}

void DataBuffer::lendStorage(unsigned char* storage, unsigned int capacity) {
  release();
  m_data = storage;
  m_capacity = storage ? capacity : 0;
  m_isStorageLent = m_capacity != 0;
}

bool DataBuffer::drop_non_usascii() {
  if (m_size == 0) return true;
  if (m_capacity == 0 && !relocate(m_size)) return false;
  const unsigned char* end =
      std::remove_if(m_data, m_data + m_size, [](unsigned char byte) { return byte >= 0x80; });
  m_size = static_cast<unsigned int>(end - m_data);
  return true;
}

// Grows by half, so that many small additions stay cheap. Where memory is too tight
// for that, the largest step that fits is taken and not just what is needed now: it
// leaves too little for another move, and so the moves before memory is used up are
// few, too.
bool DataBuffer::grow(unsigned int needed) {
  const unsigned int least = needed - m_capacity;
  for (unsigned int more = m_capacity / 2; more > least; more /= 2) {
    if (relocate(m_capacity + std::min(more, mostBytes - m_capacity))) return true;
  }
  return (needed < smallestBlock && relocate(smallestBlock)) || relocate(needed);
}

// Moves the content to an owned block of `capacity` bytes, which is at least
// the size.
bool DataBuffer::relocate(unsigned int capacity) {
  unsigned char* block = qvNewUnsignedChar(capacity);
  if (!block) return false;
  if (m_size) std::memcpy(block, m_data, m_size);
  const unsigned int size = m_size;
  release();
  m_data = block;
  m_size = size;
  m_capacity = capacity;
  return true;
}

void DataBuffer::release() {
  if (m_capacity && !m_isStorageLent) delete[] m_data;
  m_data = nullptr;
  m_size = 0;
  m_capacity = 0;
  m_isStorageLent = false;
}

}  // namespace quorvel
