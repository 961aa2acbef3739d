// Conversions by quorvel/text.

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "Contender.h"
#include "Targets.h"
#include "quorvel/text/Transcoder.h"
#include "quorvel/text/convert.h"

namespace quorvel::bench {

namespace {

constexpr std::size_t bytesPerPiece = 65536;
constexpr std::size_t bytesOfRoom = 65536;

struct Ends {
  text::Encoding from;
  text::Encoding to;
};

text::Action actionFor(OnError onError) {
  switch (onError) {
    case OnError::skip:
      return text::Action::drop;
    case OnError::substitute:
      return text::Action::substitute;
    case OnError::escape:
      return text::Action::escape;
    case OnError::stop:
    case OnError::convert:
      break;
  }
  return text::Action::stop;
}

text::Options optionsFor(OnError onError) {
  text::Options options;
  options.malformed = options.unmappable = actionFor(onError);
  options.substitute = "?";
  options.escape = text::EscapeForm::xml;
  return options;
}

class TextContender : public Contender {
 public:
  explicit TextContender(std::string target) : m_target(std::move(target)) {}
  void getReady() override { useTarget(m_target); }

 private:
  std::string m_target;
};

class ConvertContender : public TextContender {
 public:
  ConvertContender(const Ends& ends, text::Options options, const std::string& target)
      : TextContender(target), m_ends(ends), m_options(std::move(options)) {}

  bool convert(std::string_view text) override {
    m_converted = text::convert(m_ends.from, m_ends.to, text, m_options);
    return !m_converted.report.stopped;
  }

  std::string_view result() const override { return m_converted.text; }

 private:
  Ends m_ends;
  text::Options m_options;
  text::Converted m_converted;
};

class StringContender : public TextContender {
 public:
  StringContender(text::Transcoder transcoder, const std::string& target)
      : TextContender(target), m_transcoder(std::move(transcoder)) {}

  bool convert(std::string_view text) override {
    m_transcoder.reset();
    m_out.clear();
    return m_transcoder.push(text, m_out) && m_transcoder.finish(m_out);
  }

  std::string_view result() const override { return m_out; }

 private:
  text::Transcoder m_transcoder;
  std::string m_out;
};

// The rooms lie one behind the other, so that there is a result to be compared.
class PiecesContender : public TextContender {
 public:
  PiecesContender(text::Transcoder transcoder, const std::string& target, std::size_t largest)
      : TextContender(target), m_transcoder(std::move(transcoder)), m_room(roomFor(largest)) {}

  bool convert(std::string_view text) override {
    m_transcoder.reset();
    m_size = 0;
    for (; !text.empty(); text.remove_prefix(std::min(bytesPerPiece, text.size()))) {
      if (!push(text.substr(0, bytesPerPiece))) return false;
    }
    return finish();
  }

  std::string_view result() const override { return {m_room.data(), m_size}; }

 protected:
  text::Transcoder& transcoder() { return m_transcoder; }
  void startOver() { m_size = 0; }

  bool push(std::string_view piece) {
    for (;;) {
      const text::Step step = m_transcoder.push(piece, room());
      m_size += step.bytesWritten;
      if (step.wants != text::Wants::room) return step.wants == text::Wants::input;
      if (m_size == m_room.size()) return false;
      piece.remove_prefix(step.bytesTaken);
    }
  }

 private:
  std::span<char> room() {
    return std::span<char>(m_room).subspan(m_size, std::min(bytesOfRoom, m_room.size() - m_size));
  }

  bool finish() {
    for (;;) {
      const text::Step step = m_transcoder.finish(room());
      m_size += step.bytesWritten;
      if (step.wants != text::Wants::room) return step.wants == text::Wants::nothing;
      if (m_size == m_room.size()) return false;
    }
  }

  text::Transcoder m_transcoder;
  std::vector<char> m_room;
  std::size_t m_size = 0;
};

class StreamContender : public PiecesContender {
 public:
  using PiecesContender::PiecesContender;

  void getReady() override {
    PiecesContender::getReady();
    transcoder().reset();
  }

  bool convert(std::string_view text) override {
    startOver();
    return push(text);
  }
};

}  // namespace

const char* nameOf(TextWay way) {
  switch (way) {
    case TextWay::string:
      return "string";
    case TextWay::pieces:
      return "pieces";
    case TextWay::convert:
      return "convert";
    case TextWay::stream:
      return "stream";
  }
  return "";
}

std::unique_ptr<Contender> makeText(int from, int to, TextWay way, const std::string& target,
                                    std::size_t largest, OnError onError) {
  if (onError == OnError::convert) return nullptr;
  const Ends ends = {text::Encoding::find(from).value(), text::Encoding::find(to).value()};
  text::Options options = optionsFor(onError);
  if (way == TextWay::convert) {
    return std::make_unique<ConvertContender>(ends, std::move(options), target);
  }
  text::Transcoder transcoder =
      text::Transcoder::make(ends.from, ends.to, std::move(options)).value();
  if (way == TextWay::string) {
    return std::make_unique<StringContender>(std::move(transcoder), target);
  }
  if (way == TextWay::pieces) {
    return std::make_unique<PiecesContender>(std::move(transcoder), target, largest);
  }
  return std::make_unique<StreamContender>(std::move(transcoder), target, largest);
}

}  // namespace quorvel::bench
