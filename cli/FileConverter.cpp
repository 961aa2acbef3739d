#include "cli/FileConverter.h"

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/Detection.h"

namespace qvconv {

namespace {

using quorvel::text::Candidate;
using quorvel::text::Encoding;

// "utf-8 (1 loss), utf-16 (3 losses)".
std::string listOf(std::span<const Candidate> candidates) {
  std::string list;
  for (const Candidate& candidate : candidates) {
    if (!list.empty()) list += ", ";
    list.append(candidate.encoding.name()).append(" (" + lossesOf(candidate) + ")");
  }
  return list;
}

}  // namespace

FileConverter::FileConverter(Rules rules) : m_rules(std::move(rules)) {
  if (m_rules.source == Source::named) m_conversion.emplace(m_rules);
}

ExitStatus FileConverter::run(Input& input, Output& output, Messages& messages) {
  if (m_rules.source == Source::detected && !detectSource(input, messages)) {
    return ExitStatus::failed;
  }
  return m_conversion->run(input, output, messages);
}

// False when there is none to convert from.
bool FileConverter::detectSource(Input& input, Messages& messages) {
  const std::vector<Candidate> candidates = detectEncoding(input);
  const Encoding best = candidates.front().encoding;
  if (candidates.front().losses > 0) {
    messages.complain(input.name() + ": no encoding is found without loss: " + listOf(candidates) +
                      " (-f names one)");
    return false;
  }
  const std::string refusal = whyRefused(best, m_rules.to, m_rules.options);
  if (!refusal.empty()) {
    messages.complain(input.name() + ": taken for " + std::string(best.name()) + ": " + refusal);
    return false;
  }
  if (m_rules.isVerbose) {
    messages.complain(input.name() + ": taken for " + std::string(best.name()));
  }
  convertFrom(best);
  return true;
}

void FileConverter::convertFrom(Encoding encoding) {
  if (m_conversion && m_rules.from == encoding) return;
  m_rules.from = encoding;
  m_rules.names.from = encoding.name();
  m_conversion.emplace(m_rules);
}

}  // namespace qvconv
