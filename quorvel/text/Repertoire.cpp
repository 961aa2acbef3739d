#include "quorvel/text/Repertoire.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <iterator>

#include "quorvel/text/Codecs.hpp"
#include "quorvel/text/DecodedText.hpp"

namespace quorvel::text {

namespace {
constexpr std::size_t numCodePoints = 0x110000;
constexpr std::size_t bitsPerWord = 64;
}  // namespace

// A bit for each character there may be.
struct Repertoire::Characters {
  explicit Characters(Encoding from) : text(from) {}

  auto adding() {
    return [this](char32_t character) {
      seen[character / bitsPerWord] |= std::uint64_t{1} << character % bitsPerWord;
    };
  }

  /// Whether `is(character)` for all that were seen.
  template <typename Is>
  bool areAll(const Is& is) const {
    for (std::size_t i = 0; i < seen.size(); ++i) {
      for (std::uint64_t rest = seen[i]; rest != 0; rest &= rest - 1) {
        const auto bit = static_cast<std::size_t>(std::countr_zero(rest));
        if (!is(static_cast<char32_t>(i * bitsPerWord + bit))) return false;
      }
    }
    return true;
  }

  DecodedText text;
  std::array<std::uint64_t, numCodePoints / bitsPerWord> seen{};
};

Repertoire::Repertoire(Encoding from) : m_characters(std::make_unique<Characters>(from)) {}
Repertoire::~Repertoire() = default;
Repertoire::Repertoire(Repertoire&&) noexcept = default;
Repertoire& Repertoire::operator=(Repertoire&&) noexcept = default;

void Repertoire::push(std::string_view piece) {
  m_characters->text.push(piece, m_characters->adding());
}

void Repertoire::finish() { m_characters->text.finish(m_characters->adding()); }

std::size_t Repertoire::size() const {
  std::size_t count = 0;
  for (const std::uint64_t word : m_characters->seen) {
    count += static_cast<std::size_t>(std::popcount(word));
  }
  return count;
}

bool Repertoire::isHeldBy(Encoding encoding) const {
  if (encoding.kind() == EncodingKind::unicode) return true;
  const std::unique_ptr<Encoder> encoder = makeEncoder(encoding);
  return m_characters->areAll([&](char32_t character) { return hasPlace(character, *encoder); });
}

const Report& Repertoire::report() const { return m_characters->text.report(); }

std::vector<Encoding> encodingsThatHold(std::string_view text, Encoding from) {
  Repertoire repertoire(from);
  repertoire.push(text);
  repertoire.finish();
  std::vector<Encoding> holders;
  std::ranges::copy_if(Encoding::all(), std::back_inserter(holders),
                       [&](Encoding encoding) { return repertoire.isHeldBy(encoding); });
  return holders;
}

}  // namespace quorvel::text
