#include "quorvel/text/Transcoder.h"

#include <array>
#include <utility>

#include "quorvel/text/Engine.hpp"
#include "quorvel/text/GrowingString.hpp"

namespace quorvel::text {

namespace {

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
  return GrowingString(out, report()).append(piece, run).wants != Wants::reset;
}

bool Transcoder::finish(std::string& out) {
  const auto run = [this](std::string_view, std::span<char> room) { return finish(room); };
  return GrowingString(out, report()).append("", run).wants != Wants::reset;
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
