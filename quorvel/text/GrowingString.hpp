#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <string_view>

#include "quorvel/text/Report.h"
#include "quorvel/text/Transcoder.h"

/// A string that grows by what a text turns out to need.
///
/// Where the library has no way to make a string longer without clearing it first, it is
/// cleared by no more at a time than the cache holds. Its memory is asked for at once.
namespace quorvel::text {

/// Makes a string `most` long, calls `write(data)` and keeps what that returns. `write` must
/// not throw.
template <typename String, typename Write>
void overwrite(String& out, std::size_t most, const Write& write) {
#ifdef __cpp_lib_string_resize_and_overwrite
  out.resize_and_overwrite(most, [&](auto* data, std::size_t) { return write(data); });
#else
  out.resize(most);
  out.resize(write(out.data()));
#endif
}

/// Whether that clears the string first.
#ifdef __cpp_lib_string_resize_and_overwrite
inline constexpr bool clearsFirst = false;
#else
inline constexpr bool clearsFirst = true;
#endif

/// A string of bytes, or of wider units that the text fills.
template <typename String>
class GrowingString {
 public:
  GrowingString(String& out, const Report& report)
      : m_out(out), m_size(out.size() * unit), m_report(report), m_before(report.bytesWritten) {}

  /// Appends what `run(rest, room)` writes until it wants no more room. What it throws
  /// comes out when the string has what was written before. Throws std::bad_alloc.
  template <typename Run>
  Step append(std::string_view rest, const Run& run) {
    std::size_t taken = 0;
    for (;;) {
      const Step step = appendOnce(rest, unitsFor(taken, rest.size()), run);
      taken += step.bytesTaken;
      rest.remove_prefix(step.bytesTaken);
      if (step.wants != Wants::room) return step;
    }
  }

 private:
  static constexpr std::size_t unit = sizeof(typename String::value_type);
  static constexpr std::size_t bytesAtOnce = 32768;

  // The report counts what was written when `run` throws, too.
  std::size_t written() const { return static_cast<std::size_t>(m_report.bytesWritten - m_before); }

  template <typename Run>
  Step appendOnce(std::string_view rest, std::size_t units, const Run& run) {
    Step step;
    std::exception_ptr thrown;
    overwrite(m_out, units, [&](auto* data) {
      const std::size_t used = m_size + written();
      try {
        step =
            run(rest, std::span<char>(reinterpret_cast<char*>(data) + used, units * unit - used));
      } catch (...) {
        thrown = std::current_exception();
      }
      return (m_size + written() + unit - 1) / unit;
    });
    if (thrown) std::rethrow_exception(thrown);
    return step;
  }

  // How long to make the string next, `taken` bytes being read and `left` to come; sees to
  // its memory.
  std::size_t unitsFor(std::size_t taken, std::size_t left) {
    const std::size_t used = m_size + written();
    // A short text needs little room, and clearing more takes time.
    const std::size_t more = taken == 0 ? std::min(bytesAtOnce, 4 * left + 64) : bytesAtOnce;
    const std::size_t units = (used + more) / unit;
    if (units > m_out.max_size()) throw std::bad_alloc();
    if (units > m_out.capacity() && taken != 0) m_out.reserve(expectedUnits(taken, left));
    return clearsFirst ? units : std::max(units, m_out.capacity());
  }

  // A little more than the text will need if the rest is like what has been taken. But a
  // bad beginning need not mean a bad text: behind one no more than twice what there is.
  std::size_t expectedUnits(std::size_t taken, std::size_t left) const {
    const std::size_t used = m_size + written();
    const double growth = static_cast<double>(written()) / static_cast<double>(taken);
    const auto most =
        static_cast<double>(m_report.isLossless() ? m_out.max_size() : std::max(used, bytesAtOnce));
    const double more = std::min(growth * 1.0625 * static_cast<double>(left), most);
    const std::size_t bytes = std::max(static_cast<std::size_t>(more), bytesAtOnce);
    return std::min(used / unit + bytes / unit + 1, m_out.max_size());
  }

  String& m_out;
  std::size_t m_size;
  const Report& m_report;
  std::uint64_t m_before;
};

}  // namespace quorvel::text
