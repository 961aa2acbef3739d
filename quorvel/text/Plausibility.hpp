#pragma once

#include <cstdint>

namespace quorvel::text {

/// How a character looks to one who cannot read it.
enum class Look : unsigned char {
  blank,        ///< blanks, line ends, digits
  punctuation,  ///< what stands between words or at their ends
  joiner,       ///< what stands within words: apostrophe, hyphen, marks on letters
  sign,         ///< other signs
  letter,       ///< of a script without capitals
  small,
  capital,
  seldom,    ///< what hardly any text in an old encoding has
  misplaced  ///< controls that texts have no use for, private use
};

/// Whose letters may stand beside each other.
enum class Alphabet : unsigned char {
  none,
  latin,
  greek,
  cyrillic,
  hebrew,
  arabic,
  thai,
  eastAsian
};

/// How much a text looks as if it were read in the wrong encoding. A text that is read
/// right has few of these, whatever its language; one that is read wrong is full of
/// them:
///
/// - controls that texts have no use for, private use, characters of scripts that hardly
///   any old encoding has: other bytes have become them,
/// - letters of two alphabets beside each other, or a sign within a word: half of the
///   letters of a word have become something else,
/// - a capital behind a small letter, or behind a capital: the pages of one script put
///   its letters in other orders.
///
/// Of two ASCII characters beside each other nothing is said: they are what they are in
/// all the pages between which this is to choose.
class Plausibility {
 public:
  /// Takes the next character of the text.
  void see(char32_t character);

  std::uint64_t characters() const { return m_characters; }
  std::uint64_t faults() const { return m_faults; }
  bool hasNull() const { return m_hasNull; }

 private:
  struct Seen {
    Look look = Look::blank;
    Alphabet alphabet = Alphabet::none;
    bool isAscii = true;
  };

  static Seen lookAt(char32_t character);
  static unsigned int faultsAlone(const Seen& seen);
  unsigned int faultsWithLast(const Seen& seen) const;

  Seen m_last;
  Seen m_lastButOne;
  std::uint64_t m_characters = 0;
  std::uint64_t m_faults = 0;
  bool m_hasNull = false;
};

}  // namespace quorvel::text
