#include "quorvel/text/Transcoder.h"

#include <array>
#include <utility>

#include "quorvel/text/Engine.hpp"

namespace quorvel::text {

namespace {

// What is asked for first where a string grows, and at least each time.
constexpr std::size_t bytesAtOnce = 16384;

// A little more than the rest of a text will need if it is like what has been taken.
std::size_t expected(std::size_t written, std::size_t taken, std::size_t left) {
  if (taken == 0) return 0;
  const double growth = static_cast<double>(written) / static_cast<double>(taken);
  return static_cast<std::size_t>(growth * 1.0625 * static_cast<double>(left));
}

// Calls `run(rest, room)` until it wants no more room, and `take(written)` for what
// each call wrote.
template <typename Run>
Step runIntoString(const Run& run, std::string_view piece, std::string& out) {
  std::size_t size = out.size();
  std::size_t written = 0;
  std::size_t taken = 0;
  // A text that is short needs little room, and clearing more takes time.
  std::size_t more = std::min(bytesAtOnce, 4 * piece.size() + 64);
  for (;;) {
    out.resize(size + more);
    const Step step = run(piece, std::span<char>(out).subspan(size));
    size += step.bytesWritten;
    written += step.bytesWritten;
    taken += step.bytesTaken;
    piece.remove_prefix(step.bytesTaken);
    if (step.wants != Wants::room) {
      out.resize(size);
      return step;
    }
    more = std::max(bytesAtOnce, expected(written, taken, piece.size()));
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

Step Transcoder::finish(std::span<char> room) { return m_engine->run({}, true, room); }

bool Transcoder::push(std::string_view piece, std::string& out) {
  const auto run = [this](std::string_view rest, std::span<char> room) { return push(rest, room); };
  return runIntoString(run, piece, out).wants != Wants::reset;
}

bool Transcoder::finish(std::string& out) {
  const auto run = [this](std::string_view, std::span<char> room) { return finish(room); };
  return runIntoString(run, {}, out).wants != Wants::reset;
}

bool Transcoder::count(std::string_view piece) {
  const auto run = [this](std::string_view rest, std::span<char> room) { return push(rest, room); };
  return runIntoNothing(run, piece).wants != Wants::reset;
}

bool Transcoder::countEnd() {
  const auto run = [this](std::string_view, std::span<char> room) { return finish(room); };
  return runIntoNothing(run, {}).wants != Wants::reset;
}

const Report& Transcoder::report() const { return m_engine->report(); }
void Transcoder::reset() { m_engine->reset(); }
Encoding Transcoder::from() const { return m_engine->from(); }
Encoding Transcoder::to() const { return m_engine->to(); }

}  // namespace quorvel::text
