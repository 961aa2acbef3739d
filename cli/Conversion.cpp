#include "cli/Conversion.h"

#include "cli/Messages.h"

namespace qvconv {

namespace {

using quorvel::text::Action;
using quorvel::text::Loss;
using quorvel::text::Report;
using quorvel::text::Step;
using quorvel::text::Transcoder;
using quorvel::text::Wants;

constexpr std::size_t bytesOfRoom = 1U << 17;

// How far in front of a block a loss may begin that is found in it.
constexpr std::uint64_t mostBehind = 32;

}  // namespace

Conversion::Conversion(Rules rules)
    : m_rules(std::move(rules)),
      m_transcoder(*Transcoder::make(m_rules.from, m_rules.to, m_rules.options)),
      m_room(bytesOfRoom) {}

ExitStatus Conversion::run(Input& input, Output& output) {
  m_transcoder.reset();
  m_locator.reset();
  if (convertBlocks(input, output)) return ExitStatus::allConverted;
  const Loss& loss = stoppingLoss();
  complain(lossSentence(input.name(), positionOf(loss, input), loss, m_rules.names));
  return ExitStatus::notConverted;
}

// False when a loss has stopped it.
bool Conversion::convertBlocks(Input& input, Output& output) {
  const bool isGoneLater = !input.canReadAgain();
  if (isGoneLater) m_locator.emplace(m_rules.from, m_rules.options.keepsMark, input);
  for (;;) {
    std::string_view block = input.readBlock();
    if (block.empty()) break;
    const auto push = [&](std::span<char> room) {
      const Step step = m_transcoder.push(block, room);
      block.remove_prefix(step.bytesTaken);
      return step;
    };
    if (!writeAllOf(push, output)) return false;
    if (isGoneLater && input.bytesRead() > mostBehind) {
      m_locator->passTo(input.bytesRead() - mostBehind);
    }
  }
  return writeAllOf([&](std::span<char> room) { return m_transcoder.finish(room); }, output);
}

// False when a loss has stopped it.
template <typename Run>
bool Conversion::writeAllOf(const Run& run, Output& output) {
  for (;;) {
    const Step step = run(m_room);
    if (step.bytesWritten > 0) output.write({m_room.data(), step.bytesWritten});
    if (step.wants != Wants::room) return step.wants != Wants::reset;
  }
}

const Loss& Conversion::stoppingLoss() const {
  const Report& report = m_transcoder.report();
  const bool isUnmappable =
      m_rules.options.unmappable == Action::stop && report.firstUnmappable.has_value();
  return isUnmappable ? *report.firstUnmappable : *report.firstMalformed;
}

Position Conversion::positionOf(const Loss& loss, const Input& input) {
  if (!m_locator) m_locator.emplace(m_rules.from, m_rules.options.keepsMark, input);
  return m_locator->find(loss);
}

}  // namespace qvconv
