#pragma once

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "quorvel/text/Decoder.hpp"
#include "quorvel/text/Options.h"
#include "quorvel/text/Outlet.hpp"
#include "quorvel/text/Report.h"

namespace quorvel::text {

/// What is written in the place of a loss. All that it needs is made beforehand.
class Replacement {
 public:
  Replacement(Encoding from, Encoding to, const Options& options, Encoder& encoder);

  /// Puts what `action` writes for `loss` in front of the outlet's next output. An
  /// action that cannot be had between these encodings writes nothing. A mark may
  /// have said that the source is to be read as another encoding.
  void write(Action action, const Loss& loss, Encoding readAs, Outlet& outlet);

  /// Whether all that `action` writes for malformed bytes is text with a place in the
  /// destination, so that it may be put among what was decoded.
  bool isText(Action action) const;

  /// Puts that text for `bytes` at `out` as UTF-16LE and returns the position behind it;
  /// null when it does not fit in front of `outEnd`.
  unsigned char* putText(Action action, std::span<const unsigned char> bytes, unsigned char* out,
                         const unsigned char* outEnd) const;

 private:
  void escape(const Loss& loss, Outlet& outlet);
  void reconvert(const Loss& loss, Outlet& outlet);
  void readReconverted(const Loss& loss, Outlet& outlet);
  void preserve(const Loss& loss, Encoding readAs, Outlet& outlet);
  void preserveSurrogate(unsigned int surrogate, Outlet& outlet);
  void add(char32_t character) { m_characters[m_count++] = character; }
  void addAscii(const char* text);
  void addHex(char32_t value, unsigned int digits);
  std::span<const char32_t> added() const { return {m_characters.data(), m_count}; }

  Encoding m_from;
  Encoding m_to;
  EscapeForm m_escape;
  std::vector<char32_t> m_substitute;
  std::vector<unsigned char> m_substituteText;  // the same in UTF-16LE
  bool m_isSubstituteText;                      // all of it has a place
  bool m_areEscapesText;                        // as have escapes of bytes
  std::unique_ptr<Decoder> m_otherDecoder;
  std::unique_ptr<Encoder> m_otherEncoder;

  // For each byte of a loss the four characters of its escape.
  std::array<char32_t, 4 * Loss::mostBytes> m_characters{};
  std::size_t m_count = 0;
};

}  // namespace quorvel::text
