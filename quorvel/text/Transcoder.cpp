#include "quorvel/text/Transcoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <utility>

#include "quorvel/text/Engine.hpp"

namespace quorvel::text {

namespace {

// What is asked for first where a string grows, and at least each time.
constexpr std::size_t bytesAtOnce = 16384;

// How much more a string of `size` bytes is to hold: a little more than the rest of a
// text will need if it is like what has been taken, but a bad beginning need not mean a
// bad text, so no more than twice what there is.
std::size_t moreRoom(std::size_t written, std::size_t taken, std::size_t left, std::size_t size) {
  const double growth = taken == 0 ? 0 : static_cast<double>(written) / static_cast<double>(taken);
  const double expected = growth * 1.0625 * static_cast<double>(left);
  const std::size_t most = std::max(size, bytesAtOnce);
  if (expected >= static_cast<double>(most)) return most;
  return std::max(static_cast<std::size_t>(expected), bytesAtOnce);
}

// Leaves a string with what has been written to it, also when a handler throws.
class Trimmed {
 public:
  Trimmed(std::string& out, const Report& report)
      : m_out(out), m_size(out.size()), m_report(report), m_before(report.bytesWritten) {}
  ~Trimmed() { m_out.resize(m_size + static_cast<std::size_t>(m_report.bytesWritten - m_before)); }
  Trimmed(const Trimmed&) = delete;
  Trimmed& operator=(const Trimmed&) = delete;

 private:
  std::string& m_out;
  std::size_t m_size;
  const Report& m_report;
  std::uint64_t m_before;
};

// Calls `run(rest, room)` until it wants no more room, and `take(written)` for what
// each call wrote.
template <typename Run>
Step runIntoString(const Run& run, const Report& report, std::string_view piece, std::string& out) {
  const Trimmed trimmed(out, report);
  std::size_t size = out.size();
  std::size_t written = 0;
  std::size_t taken = 0;
  // A text that is short needs little room, and clearing more takes time.
  std::size_t more = std::min(bytesAtOnce, 4 * piece.size() + 64);
  for (;;) {
    if (more > out.max_size() - size) throw std::bad_alloc();
    out.resize(size + more);
    const Step step = run(piece, std::span<char>(out).subspan(size));
    size += step.bytesWritten;
    written += step.bytesWritten;
    taken += step.bytesTaken;
    piece.remove_prefix(step.bytesTaken);
    if (step.wants != Wants::room) return step;
    more = moreRoom(written, taken, piece.size(), size);
  }
}

template <typename Run>
Step runIntoNothing(const Run& run, std::string_view piece) {
  std::array<char, 4096> room;
  for (;;) {
    const Step step = run(piece, room);
    if (step.wants != Wants::room) return step;
    piece.remove_prefix(step.bytesTaken);
  }
}

}  // namespace

Transcoder::Transcoder(std::unique_ptr<Engine> engine) : m_engine(std::move(engine)) {}
Transcoder::~Transcoder() = default;
Transcoder::Transcoder(Transcoder&&) noexcept = default;
Transcoder& Transcoder::operator=(Transcoder&&) noexcept = default;

std::optional<Transcoder> Transcoder::make(Encoding from, Encoding to, Options options) {
  if (options.visualOrder || !whyRefused(from, to, options).empty()) return std::nullopt;
  return Transcoder(std::make_unique<Engine>(from, to, std::move(options)));
}

Step Transcoder::push(std::string_view piece, std::span<char> room) {
  return m_engine->run(piece, false, room);
}

Step Transcoder::finish(std::span<char> room) { return m_engine->run("", true, room); }

bool Transcoder::push(std::string_view piece, std::string& out) {
  const auto run = [this](std::string_view rest, std::span<char> room) { return push(rest, room); };
  return runIntoString(run, report(), piece, out).wants != Wants::reset;
}

bool Transcoder::finish(std::string& out) {
  const auto run = [this](std::string_view, std::span<char> room) { return finish(room); };
  return runIntoString(run, report(), "", out).wants != Wants::reset;
}

bool Transcoder::count(std::string_view piece) {
  const auto run = [this](std::string_view rest, std::span<char> room) { return push(rest, room); };
  return runIntoNothing(run, piece).wants != Wants::reset;
}

bool Transcoder::countEnd() {
  const auto run = [this](std::string_view, std::span<char> room) { return finish(room); };
  return runIntoNothing(run, "").wants != Wants::reset;
}

const Report& Transcoder::report() const { return m_engine->report(); }
void Transcoder::reset() { m_engine->reset(); }
Encoding Transcoder::from() const { return m_engine->from(); }
Encoding Transcoder::to() const { return m_engine->to(); }

}  // namespace quorvel::text
