#include "quorvel/text/Replacement.hpp"

#include <algorithm>

#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/text/CodecLoops.hpp"
#include "quorvel/text/Codecs.hpp"
#include "quorvel/text/Refusal.hpp"

namespace quorvel::text {

namespace {

// Ill-formed parts of it go without a word.
std::vector<char32_t> charactersOf(std::string_view utf8) {
  std::vector<char32_t> characters;
  const auto* in = reinterpret_cast<const unsigned char*>(utf8.data());
  const unsigned char* end = in + utf8.size();
  while (in != end) {
    const Utf8Sequence sequence = decodeUtf8(in, static_cast<std::size_t>(end - in));
    if (sequence.isWellFormed) characters.push_back(sequence.codePoint);
    in += sequence.length;
  }
  return characters;
}

std::vector<char32_t> substituteFor(const Options& options, Encoder& encoder) {
  if (options.substitute) return charactersOf(*options.substitute);
  return {hasPlace(replacementCharacter, encoder) ? replacementCharacter : U'?'};
}

bool haveAllPlaces(const std::vector<char32_t>& characters, Encoder& encoder) {
  return std::all_of(characters.begin(), characters.end(),
                     [&](char32_t character) { return hasPlace(character, encoder); });
}

std::vector<unsigned char> inUtf16(const std::vector<char32_t>& characters) {
  std::vector<unsigned char> units(4 * characters.size());
  unsigned char* end = units.data();
  for (const char32_t character : characters) end = putCharacter(character, end);
  units.resize(static_cast<std::size_t>(end - units.data()));
  return units;
}

constexpr char hexDigits[] = "0123456789ABCDEF";

// The lone surrogate that a wide encoding holds at a loss, or 0.
unsigned int loneSurrogate(Encoding from, std::span<const unsigned char> bytes) {
  const bool isUtf16 = from == Encoding::utf16le() || from == Encoding::utf16be();
  if (!isWide(from) || bytes.size() != (isUtf16 ? 2U : 4U)) return 0;
  unsigned int value = 0;
  const bool lowFirst = from == Encoding::utf16le() || isLittleEndianUtf32(from);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    value = value << 8 | bytes[lowFirst ? bytes.size() - 1 - i : i];
  }
  return isSurrogate(value) && value < 0x10000 ? value : 0;
}

// The surrogate of a three-byte form of UTF-8, or 0: the beginning of a longer form
// may have three bytes too.
unsigned int surrogateInUtf8(Encoding from, std::span<const unsigned char> bytes) {
  if (from != Encoding::utf8() || bytes.size() != 3 || bytes[0] != 0xED) return 0;
  return (bytes[0] & 0x0FU) << 12 | (bytes[1] & 0x3FU) << 6 | (bytes[2] & 0x3FU);
}

constexpr bool isPreservedByte(unsigned int unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

}  // namespace

Replacement::Replacement(Encoding from, Encoding to, const Options& options, Encoder& encoder)
    : m_from(from),
      m_to(to),
      m_escape(options.escape),
      m_substitute(substituteFor(options, encoder)),
      m_substituteText(inUtf16(m_substitute)),
      m_isSubstituteText(haveAllPlaces(m_substitute, encoder)),
      m_areEscapesText(haveAllPlaces(charactersOf("\\x0123456789ABCDEF"), encoder)) {
  if (!options.reconvert) return;
  m_otherDecoder = makeDecoder(*options.reconvert);
  m_otherEncoder = makeEncoder(*options.reconvert);
}

void Replacement::write(Action action, const Loss& loss, Encoding readAs, Outlet& outlet) {
  m_count = 0;
  const bool isMalformed = loss.kind == LossKind::malformed;
  switch (action) {
    case Action::stop:
    case Action::drop:
      return;
    case Action::substitute:
      outlet.wait(m_substitute);
      return;
    case Action::escape:
      escape(loss, outlet);
      return;
    case Action::pass:
      if (canPass(m_from, m_to)) outlet.waitRaw(loss.bytes());
      return;
    case Action::reconvert:
      if (m_otherDecoder) reconvert(loss, outlet);
      return;
    case Action::preserve:
      if (isMalformed && canPreserve(m_from, m_to)) preserve(loss, readAs, outlet);
      return;
  }
}

bool Replacement::isText(Action action) const {
  return action == Action::drop || (action == Action::substitute && m_isSubstituteText) ||
         (action == Action::escape && m_areEscapesText);
}

unsigned char* Replacement::putText(Action action, std::span<const unsigned char> bytes,
                                    unsigned char* out, const unsigned char* outEnd) const {
  constexpr std::size_t unitsPerByte = 4;
  const auto room = static_cast<std::size_t>(outEnd - out);
  if (action == Action::substitute) {
    if (m_substituteText.size() > room) return nullptr;
    return std::copy(m_substituteText.begin(), m_substituteText.end(), out);
  }
  if (action != Action::escape) return out;
  if (2 * unitsPerByte * bytes.size() > room) return nullptr;
  for (const unsigned char byte : bytes) {
    const char escaped[unitsPerByte] = {'\\', 'x', hexDigits[byte >> 4], hexDigits[byte & 0xF]};
    for (const char character : escaped) out = putUnit(static_cast<unsigned char>(character), out);
  }
  return out;
}

void Replacement::addAscii(const char* text) {
  for (; *text != '\0'; ++text) add(static_cast<unsigned char>(*text));
}

void Replacement::addHex(char32_t value, unsigned int digits) {
  while (digits-- > 0) {
    add(static_cast<unsigned char>(hexDigits[value >> 4 * digits & 0xF]));
  }
}

void Replacement::escape(const Loss& loss, Outlet& outlet) {
  if (loss.kind == LossKind::malformed) {
    for (const unsigned char byte : loss.bytes()) {
      addAscii("\\x");
      addHex(byte, 2);
    }
  } else if (m_escape == EscapeForm::xml) {
    unsigned int digits = 1;
    while (loss.character >> 4 * digits != 0) ++digits;
    addAscii("&#x");
    addHex(loss.character, digits);
    addAscii(";");
  } else {
    const bool isBasic = loss.character < 0x10000;
    addAscii(isBasic ? "\\u" : "\\U");
    addHex(loss.character, isBasic ? 4 : 8);
  }
  outlet.wait(added());
}

void Replacement::reconvert(const Loss& loss, Outlet& outlet) {
  if (loss.kind == LossKind::malformed) {
    readReconverted(loss, outlet);
    return;
  }
  unsigned char bytes[2 * Encoder::mostBytes];
  m_otherEncoder->restore(Encoder::initialState);
  unsigned char* end = m_otherEncoder->encodeOne(loss.character, bytes);
  if (!end) return;
  end = m_otherEncoder->finish(end);
  outlet.waitRaw(std::span<const unsigned char>(bytes, end));
}

void Replacement::readReconverted(const Loss& loss, Outlet& outlet) {
  unsigned char units[4 * Loss::mostBytes];
  m_otherDecoder->restore(Decoder::initialState);
  const unsigned char* in = loss.bytes().data();
  const unsigned char* end = in + loss.length;
  bool isLast = false;
  while (!isLast) {
    const Decoded decoded = m_otherDecoder->decode({in, end, true, units, std::end(units)});
    for (const unsigned char* unit = units; unit != decoded.out;) {
      const UnitsRead read = readCharacter(unit, decoded.out);
      add(read.character);
      unit += read.length;
    }
    isLast = decoded.why != DecoderStop::malformed;
    if (!isLast) in = std::max(decoded.in, decoded.in - decoded.back + decoded.length);
  }
  outlet.wait(added());
}

void Replacement::preserve(const Loss& loss, Encoding readAs, Outlet& outlet) {
  unsigned int surrogate = loneSurrogate(readAs, loss.bytes());
  if (surrogate == 0) surrogate = surrogateInUtf8(readAs, loss.bytes());
  if (surrogate != 0) {
    preserveSurrogate(surrogate, outlet);
    return;
  }
  for (const unsigned char byte : loss.bytes()) {
    if (byte < 0x80) {
      outlet.waitEncoded(byte);
    } else {
      preserveSurrogate(0xDC00U | byte, outlet);
    }
  }
}

// Elsewhere than in Unicode it is the byte that it stands for, or nothing; and in UTF-8 that
// byte too where the source is such text itself, which may have got it from there.
void Replacement::preserveSurrogate(unsigned int surrogate, Outlet& outlet) {
  const bool goesBack =
      m_to == Encoding::utf8() && isTransformation(m_from) && isPreservedByte(surrogate);
  if (isTransformation(m_to) && !goesBack) {
    outlet.waitEncoded(surrogate);
  } else if (isPreservedByte(surrogate)) {
    const auto byte = static_cast<unsigned char>(surrogate);
    outlet.waitRaw(std::span<const unsigned char>(&byte, 1));
  }
}

}  // namespace quorvel::text
