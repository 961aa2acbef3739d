#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "quorvel/text/Options.h"
#include "quorvel/text/Report.h"
#include "tests/reference/TextEncoding.h"

/// The text layer a second time: slow, whole texts at once, one character after the
/// other, from the mapping files alone.
namespace quorvel::text_reference {

using text::Action;
using text::EscapeForm;
using text::Loss;
using text::LossKind;
using text::Report;

using Handler = std::function<std::optional<Action>(const Loss&)>;

/// The options, encodings by their numbers.
struct Rules {
  Action malformed = Action::stop;
  Action unmappable = Action::stop;
  std::optional<std::string> substitute;
  EscapeForm escape = EscapeForm::c;
  std::optional<int> reconvert;
  bool fitsBest = false;
  bool keepsMark = false;
  bool writesMark = false;
  Handler onLoss;
};

struct Result {
  std::string text;
  Report report;
  bool operator==(const Result&) const = default;
};

/// Whether the rules make no sense between these encodings.
inline bool isRefused(int from, int to, const Rules& rules) {
  const auto uses = [&](Action action) {
    return rules.malformed == action || rules.unmappable == action;
  };
  const bool isWideTarget = familyOf(to) == Family::utf16 || familyOf(to) == Family::utf32;
  if (uses(Action::pass) && (isWideTarget || keepsState(from) || keepsState(to))) return true;
  if (uses(Action::reconvert) && !rules.reconvert) return true;
  if (rules.unmappable == Action::preserve) return true;
  return rules.malformed == Action::preserve && !isUtf81632(from) && !isUtf81632(to);
}

inline std::string hexDigits(std::uint32_t value, std::size_t least) {
  std::string digits;
  while (value != 0 || digits.size() < least) {
    digits.insert(digits.begin(), "0123456789ABCDEF"[value & 0xF]);
    value >>= 4;
  }
  return digits;
}

inline std::string escaped(const Loss& loss, EscapeForm form) {
  std::string spelt;
  if (loss.kind == LossKind::malformed) {
    for (const unsigned char byte : loss.bytes()) spelt += "\\x" + hexDigits(byte, 2);
  } else if (form == EscapeForm::xml) {
    spelt = "&#x" + hexDigits(loss.character, 1) + ";";
  } else if (loss.character < 0x10000) {
    spelt = "\\u" + hexDigits(loss.character, 4);
  } else {
    spelt = "\\U" + hexDigits(loss.character, 8);
  }
  return spelt;
}

/// One conversion.
class Conversion {
 public:
  Conversion(int from, int to, std::string_view source, const Rules& rules)
      : m_from(from), m_to(to), m_source(source), m_rules(rules), m_out(to) {}

  Result run() {
    const HalvesInUtf8 halves = m_rules.malformed != Action::preserve ? HalvesInUtf8::none
                                : isUtf81632(m_to)                    ? HalvesInUtf8::others
                                                                      : HalvesInUtf8::ofBytes;
    const DecodeRules decoding{m_rules.keepsMark, halves};
    for (const Piece& piece : decode(m_from, m_source, decoding)) {
      if (piece.character ? !convertCharacter(piece) : !convertMalformed(piece)) {
        m_report.stopped = true;
        m_report.bytesRead = piece.offset;
        m_out.finish();
        return result();
      }
    }
    m_report.bytesRead = m_source.size();
    m_out.finish();
    return result();
  }

 private:
  /// False to stop, as below.
  bool convertCharacter(const Piece& piece) {
    const char32_t value = *piece.character;
    const bool isCopied = m_from == m_to && !keepsState(m_to) && !isUtf81632(m_to);
    if (isCopied) {
      m_out.putRaw(m_source.substr(piece.offset, piece.length));
      return true;
    }
    if (m_out.put(value)) return true;
    if (m_rules.fitsBest && m_out.hasBestFit(value)) return convertBestFit(piece);
    const Loss loss = lossOf(piece, LossKind::unmappable);
    count(loss, m_report.unmappable, m_report.firstUnmappable);
    return settle(loss, asked(loss).value_or(m_rules.unmappable), piece);
  }

  bool convertBestFit(const Piece& piece) {
    const std::optional<Action> answer = asked(lossOf(piece, LossKind::bestFit));
    if (answer) {
      const Loss loss = lossOf(piece, LossKind::unmappable);
      count(loss, m_report.unmappable, m_report.firstUnmappable);
      return settle(loss, *answer, piece);
    }
    count(lossOf(piece, LossKind::bestFit), m_report.bestFits, m_report.firstBestFit);
    m_out.putBestFit(*piece.character);
    return true;
  }

  bool convertMalformed(const Piece& piece) {
    const Loss loss = lossOf(piece, LossKind::malformed);
    count(loss, m_report.malformed, m_report.firstMalformed);
    return settle(loss, asked(loss).value_or(m_rules.malformed), piece);
  }

  Loss lossOf(const Piece& piece, LossKind kind) const {
    Loss loss;
    loss.kind = kind;
    loss.offset = piece.offset;
    loss.length = static_cast<unsigned int>(piece.length);
    loss.character = piece.character.value_or(0);
    m_source.substr(piece.offset, piece.length)
        .copy(reinterpret_cast<char*>(loss.storage.data()), Loss::mostBytes);
    return loss;
  }

  std::optional<Action> asked(const Loss& loss) const {
    return m_rules.onLoss ? m_rules.onLoss(loss) : std::nullopt;
  }

  static void count(const Loss& loss, std::uint64_t& number, std::optional<Loss>& first) {
    number += 1;
    if (!first) first = loss;
  }

  /// Whether rules that say so would be refused: then a handler's choice does nothing.
  bool isOutOfPlace(const Loss& loss, Action action) const {
    Rules rules;
    rules.reconvert = m_rules.reconvert;
    (loss.kind == LossKind::malformed ? rules.malformed : rules.unmappable) = action;
    return isRefused(m_from, m_to, rules);
  }

  bool settle(const Loss& loss, Action action, const Piece& piece) {
    if (isOutOfPlace(loss, action)) return true;
    const std::string_view bytes = m_source.substr(piece.offset, piece.length);
    switch (action) {
      case Action::stop:
        return false;
      case Action::drop:
        break;
      case Action::substitute:
        substitute();
        break;
      case Action::escape:
        putWhatHasAPlace(escaped(loss, m_rules.escape));
        break;
      case Action::pass:
        m_out.putRaw(bytes);
        break;
      case Action::reconvert:
        reconvert(loss, bytes);
        break;
      case Action::preserve:
        if (loss.kind == LossKind::malformed) preserve(piece, bytes);
        break;
    }
    return true;
  }

  void putWhatHasAPlace(std::string_view utf8) {
    for (const Piece& piece : decode(65001, utf8, {.keepsMark = true})) {
      if (piece.character) m_out.put(*piece.character);
    }
  }

  void substitute() {
    if (m_rules.substitute) {
      putWhatHasAPlace(*m_rules.substitute);
    } else if (!m_out.put(U'\uFFFD')) {
      m_out.put(U'?');
    }
  }

  /// The bytes read, or the character written, in the other encoding.
  void reconvert(const Loss& loss, std::string_view bytes) {
    if (!m_rules.reconvert) return;
    if (loss.kind == LossKind::malformed) {
      for (const Piece& piece : decode(*m_rules.reconvert, bytes, {.keepsMark = true})) {
        if (piece.character) m_out.put(*piece.character);
      }
      return;
    }
    Encoder other(*m_rules.reconvert);
    if (!other.put(loss.character)) return;
    other.finish();
    m_out.putRaw(other.text());
  }

  void preserve(const Piece& piece, std::string_view bytes) {
    if (piece.half) {
      preserveHalf(*piece.half);
      return;
    }
    for (const char byte : bytes) {
      const auto value = static_cast<unsigned char>(byte);
      if (value < 0x80) {
        m_out.put(value);
      } else {
        preserveHalf(0xDC00U + value);
      }
    }
  }

  void preserveHalf(char32_t half) {
    const bool goesBack = m_to == 65001 && isUtf81632(m_from) && isWithin(half, 0xDC80, 0xDCFF);
    if (isUtf81632(m_to) && !goesBack) {
      m_out.putRaw(inUnicode(m_to, half));
    } else if (isWithin(half, 0xDC80, 0xDCFF)) {
      m_out.putRaw(std::string(1, static_cast<char>(half & 0xFF)));
    }
  }

  Result result() {
    std::string text = m_out.text();
    if (m_rules.writesMark && isUtf81632(m_to) && !text.empty()) {
      text.insert(0, inUnicode(m_to, 0xFEFF));
    }
    m_report.bytesWritten = text.size();
    return {text, m_report};
  }

  int m_from;
  int m_to;
  std::string_view m_source;
  const Rules& m_rules;
  Encoder m_out;
  Report m_report;
};

inline Result convert(int from, int to, std::string_view source, const Rules& rules = {}) {
  return Conversion(from, to, source, rules).run();
}

}  // namespace quorvel::text_reference
