#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorvel::text {

/// A stretch of the source that lies in one piece.
struct Window {
  const unsigned char* begin;
  const unsigned char* end;
  bool isLast;           ///< the text ends with it
  std::uint64_t offset;  ///< of `begin` in the source
};

/// The source as it comes, in pieces: hands out windows, and keeps the beginning of a
/// character that the end of a piece cuts off.
class Source {
 public:
  /// The longest beginning of a character, and what a loss may reach back.
  static constexpr std::size_t mostCarried = 16;

  /// What is kept from one piece to the next.
  struct Memory {
    std::array<unsigned char, 2 * mostCarried> carried{};
    std::size_t numCarried = 0;
    std::array<unsigned char, mostCarried>
        history{};  ///< the last bytes used, but of a piece at hand
    std::size_t numHistory = 0;
    std::uint64_t offset = 0;  ///< how many bytes are used
  };

  Source(std::string_view piece, bool isLast, Memory& memory)
      : m_begin(reinterpret_cast<const unsigned char*>(piece.data())),
        m_in(m_begin),
        m_kept(m_begin),
        m_end(m_begin + piece.size()),
        m_isLast(isLast),
        m_memory(memory) {}
  ~Source() { remember(m_kept, m_in); }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  std::size_t bytesTaken() const { return static_cast<std::size_t>(m_in - m_begin); }

  /// Whether there is any of the piece that no window has shown yet.
  bool hasMore() const { return m_in != m_end; }

  /// What to look at next: what was carried with as much of the piece as belongs to a
  /// character that begins there, or the piece.
  Window window() {
    if (m_memory.numCarried == 0) return {m_in, m_end, m_isLast, m_memory.offset};
    const std::ptrdiff_t count = std::min(m_end - m_in, static_cast<std::ptrdiff_t>(mostCarried));
    unsigned char* begin = m_memory.carried.data();
    unsigned char* end = std::copy_n(m_in, count, begin + m_memory.numCarried);
    return {begin, end, m_isLast && count == m_end - m_in, m_memory.offset};
  }

  /// Puts what stands in front of `in` in the window behind itself. Where `isCutOff`,
  /// what is left of the window is the beginning of a character and is carried.
  void use(const Window& window, const unsigned char* in, bool isCutOff) {
    m_memory.offset += static_cast<std::uint64_t>(in - window.begin);
    if (m_memory.numCarried == 0) {
      m_in = in;
      if (isCutOff) carry(in);
      return;
    }
    const auto used = static_cast<std::size_t>(in - window.begin);
    remember(window.begin, window.begin + std::min(used, m_memory.numCarried));
    if (used >= m_memory.numCarried) {
      m_in += used - m_memory.numCarried;
      m_memory.numCarried = 0;
      return;
    }
    if (isCutOff) {
      m_in += window.end - window.begin - static_cast<std::ptrdiff_t>(m_memory.numCarried);
      m_memory.numCarried = static_cast<std::size_t>(window.end - window.begin);
      m_kept = m_in;
    }
    std::copy(m_memory.carried.begin() + static_cast<std::ptrdiff_t>(used),
              m_memory.carried.begin() + static_cast<std::ptrdiff_t>(m_memory.numCarried),
              m_memory.carried.begin());
    m_memory.numCarried -= used;
  }

  /// The byte `back` bytes in front of the window's beginning, as far as is kept.
  unsigned char byteBefore(std::size_t back) const {
    const std::size_t inPiece =
        m_memory.numCarried == 0 ? static_cast<std::size_t>(m_in - m_kept) : 0;
    if (back <= inPiece) return *(m_in - back);
    const std::size_t inHistory = back - inPiece;
    return inHistory <= m_memory.numHistory ? m_memory.history[m_memory.numHistory - inHistory] : 0;
  }

 private:
  void carry(const unsigned char* in) {
    remember(m_kept, in);
    const auto count = std::min(static_cast<std::size_t>(m_end - in), mostCarried);
    std::copy_n(in, count, m_memory.carried.begin());
    m_memory.numCarried = count;
    m_in += count;
    m_kept = m_in;
  }

  void remember(const unsigned char* begin, const unsigned char* end) {
    const auto count = std::min(static_cast<std::size_t>(end - begin), mostCarried);
    if (count == 0) return;
    auto& history = m_memory.history;
    const std::size_t kept = std::min(m_memory.numHistory, mostCarried - count);
    std::copy(history.begin() + static_cast<std::ptrdiff_t>(m_memory.numHistory - kept),
              history.begin() + static_cast<std::ptrdiff_t>(m_memory.numHistory), history.begin());
    std::copy(end - count, end, history.begin() + static_cast<std::ptrdiff_t>(kept));
    m_memory.numHistory = kept + count;
  }

  const unsigned char* m_begin;
  const unsigned char* m_in;
  const unsigned char* m_kept;  // from here to `m_in` the piece itself remembers what is used
  const unsigned char* m_end;
  bool m_isLast;
  Memory& m_memory;
};

}  // namespace quorvel::text
