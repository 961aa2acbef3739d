#include "cli/Conversion.h"

#include "cli/VisualOrder.h"

namespace qvconv {

namespace {

using quorvel::text::Action;
using quorvel::text::Loss;
using quorvel::text::Options;
using quorvel::text::Report;
using quorvel::text::Step;
using quorvel::text::Transcoder;
using quorvel::text::Wants;

constexpr std::size_t bytesOfRoom = 1U << 17;

Transcoder makeTranscoder(const Rules& rules) {
  Options options = rules.options;
  options.visualOrder = false;
  return *Transcoder::make(rules.from, rules.to, std::move(options));
}

const Loss* firstOf(const Report& report) {
  const Loss* first = nullptr;
  for (const auto* loss : {&report.firstMalformed, &report.firstUnmappable, &report.firstBestFit}) {
    if (*loss && (!first || (*loss)->offset < first->offset)) first = &**loss;
  }
  return first;
}

}  // namespace

Conversion::Conversion(Rules rules)
    : m_rules(std::move(rules)), m_transcoder(makeTranscoder(m_rules)), m_room(bytesOfRoom) {}

ExitStatus Conversion::run(Input& input, Output& output, Messages& messages) {
  if (!m_rules.options.visualOrder) return runInOrder(input, output, messages);
  Input logical = inLogicalOrder(input, m_rules.from);
  return runInOrder(logical, output, messages);
}

ExitStatus Conversion::runInOrder(Input& input, Output& output, Messages& messages) {
  m_transcoder.reset();
  m_locator.reset();
  m_first.reset();
  if (!convertBlocks(input, output)) {
    const Place place = stoppingPlace(input);
    messages.complain(sentence(input, place));
    return ExitStatus::failed;
  }
  return tell(input, messages);
}

ExitStatus Conversion::tell(const Input& input, Messages& messages) {
  const Report& report = m_transcoder.report();
  if (m_rules.isVerbose) {
    messages.complain(input.name() + ": " + convertedSentence(report, m_rules.names));
  }
  if (report.isLossless()) return ExitStatus::allConverted;
  if (m_first) {
    messages.complain(input.name() + ": " + countsSentence(report) + "; the first is " +
                      sentence(input, *m_first));
  }
  return ExitStatus::lossy;
}

// --- Block by block ---------------------------------------------------------

// False when a loss has stopped it.
bool Conversion::convertBlocks(Input& input, Output& output) {
  for (;;) {
    const bool isGoneLater = !input.canReadAgain() && needsPlaces();
    if (isGoneLater && !m_locator) {
      m_locator.emplace(m_rules.from, m_rules.options.keepsMark, input);
    }
    std::string_view block = input.readBlock();
    if (block.empty()) break;
    const auto push = [&](std::span<char> room) {
      const Step step = m_transcoder.push(block, room);
      block.remove_prefix(step.bytesTaken);
      return step;
    };
    if (!writeAllOf(push, input, output)) return false;
    if (isGoneLater) m_locator->passTo(input.firstKeptLater());
  }
  return writeAllOf([&](std::span<char> room) { return m_transcoder.finish(room); }, input, output);
}

// False when a loss has stopped it.
template <typename Run>
bool Conversion::writeAllOf(const Run& run, const Input& input, Output& output) {
  for (;;) {
    const Step step = run(m_room);
    if (step.bytesWritten > 0) output.write({m_room.data(), step.bytesWritten});
    if (!m_rules.isQuiet && !m_first) findFirst(input);
    if (step.wants != Wants::room) return step.wants != Wants::reset;
  }
}

// --- Places of losses -------------------------------------------------------

bool Conversion::canStop() const {
  return m_rules.options.malformed == Action::stop || m_rules.options.unmappable == Action::stop;
}

bool Conversion::needsPlaces() const { return canStop() || (!m_rules.isQuiet && !m_first); }

void Conversion::findFirst(const Input& input) {
  const Loss* const first = firstOf(m_transcoder.report());
  if (first) m_first = Place{*first, positionOf(*first, input)};
}

Conversion::Place Conversion::stoppingPlace(const Input& input) {
  const Report& report = m_transcoder.report();
  const bool isUnmappable =
      m_rules.options.unmappable == Action::stop && report.firstUnmappable.has_value();
  const Loss& loss = isUnmappable ? *report.firstUnmappable : *report.firstMalformed;
  if (m_first && m_first->loss == loss) return *m_first;
  return {loss, positionOf(loss, input)};
}

Position Conversion::positionOf(const Loss& loss, const Input& input) {
  if (!m_locator) m_locator.emplace(m_rules.from, m_rules.options.keepsMark, input);
  return m_locator->find(loss);
}

std::string Conversion::sentence(const Input& input, const Place& place) const {
  return lossSentence(input.name(), place.position, place.loss, m_rules.names);
}

}  // namespace qvconv
