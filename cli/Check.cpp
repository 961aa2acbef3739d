#include "cli/Check.h"

#include "cli/Json.h"
#include "quorvel/base/OneLine.hpp"

namespace qvconv {

namespace {

using quorvel::text::Action;
using quorvel::text::Loss;
using quorvel::text::LossKind;
using quorvel::text::Options;
using quorvel::text::Report;
using quorvel::text::Transcoder;

// --- For people -------------------------------------------------------------

std::string plainLoss(const Input& input, const Position& position, const Loss& loss,
                      const EncodingNames& names) {
  return quorvel::oneLine(lossSentence(input.name(), position, loss, names)) + '\n';
}

std::string plainTotal(const Input& input, const Report& report, std::uint64_t shown) {
  if (report.malformed + report.unmappable + report.bestFits == shown) return {};
  return quorvel::oneLine(input.name() + ": " + countsSentence(report) + "; the first " +
                          std::to_string(shown) + " are shown (--all shows all)") +
         '\n';
}

// --- For programs -----------------------------------------------------------

std::string_view nameOf(LossKind kind) {
  switch (kind) {
    case LossKind::malformed:
      return "malformed";
    case LossKind::unmappable:
      return "unmappable";
    case LossKind::bestFit:
      break;
  }
  return "best-fit";
}

std::string jsonLoss(const Input& input, const Position& position, const Loss& loss,
                     const EncodingNames&) {
  json::Object object;
  object.add("file", input.path())
      .add("offset", loss.offset)
      .add("length", loss.length)
      .add("line", position.line)
      .add("column", position.column)
      .add("kind", nameOf(loss.kind))
      .add("bytes", bytesOf(loss, ""));
  if (loss.kind != LossKind::malformed) object.add("character", characterName(loss.character));
  return object.text() + '\n';
}

std::string jsonTotal(const Input& input, const Report& report, std::uint64_t) {
  json::Object object;
  object.add("file", input.path())
      .add("read", report.bytesRead)
      .add(nameOf(LossKind::malformed), report.malformed)
      .add(nameOf(LossKind::unmappable), report.unmappable)
      .add(nameOf(LossKind::bestFit), report.bestFits);
  return object.text() + '\n';
}

}  // namespace

constexpr CheckFormat CheckFormat::plain = {plainLoss, plainTotal};
constexpr CheckFormat CheckFormat::json = {jsonLoss, jsonTotal};
constexpr CheckFormat CheckFormat::silent = {
    [](const Input&, const Position&, const Loss&, const EncodingNames&) { return std::string(); },
    [](const Input&, const Report&, std::uint64_t) { return std::string(); }};

// --- The check --------------------------------------------------------------

Check::Check(const CheckRules& rules) : m_rules(rules), m_transcoder(makeTranscoder()) {}

Transcoder Check::makeTranscoder() {
  Options options;
  options.malformed = Action::drop;
  options.unmappable = Action::drop;
  options.bestFits = m_rules.bestFits;
  options.keepsMark = m_rules.keepsMark;
  options.onLoss = [this](const Loss& loss) -> std::optional<Action> {
    show(loss);
    return std::nullopt;
  };
  return *Transcoder::make(m_rules.from, m_rules.to, std::move(options));
}

ExitStatus Check::run(Input& input, Messages& messages) {
  m_input = &input;
  m_messages = &messages;
  m_locator.emplace(m_rules.from, m_rules.keepsMark, input);
  m_shown = 0;
  m_transcoder.reset();
  for (;;) {
    const std::string_view block = input.readBlock();
    if (block.empty()) break;
    m_transcoder.count(block);
    if (shows() && !input.canReadAgain()) m_locator->passTo(input.firstKeptLater());
  }
  m_transcoder.countEnd();
  const Report& report = m_transcoder.report();
  const std::string total = m_rules.format->total(input, report, m_shown);
  if (!total.empty()) messages.print(total);
  return report.isLossless() ? ExitStatus::allConverted : ExitStatus::failed;
}

void Check::show(const Loss& loss) {
  if (!shows()) return;
  ++m_shown;
  m_messages->print(m_rules.format->loss(*m_input, m_locator->find(loss), loss, m_rules.names));
}

}  // namespace qvconv
