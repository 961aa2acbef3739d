#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "quorvel/base/Export.h"
#include "quorvel/text/Encoding.h"
#include "quorvel/text/Report.h"

namespace quorvel::text {

/// The different characters of a text, which may come in pieces: what an encoding needs
/// to have to hold all of it. Takes as much memory for any text. What is malformed is
/// left out and stands in the report. A byte-order mark is no character.
class QUORVEL_API Repertoire {
 public:
  /// Of a text in this encoding. Throws std::bad_alloc.
  explicit Repertoire(Encoding from);
  ~Repertoire();
  Repertoire(Repertoire&&) noexcept;
  Repertoire& operator=(Repertoire&&) noexcept;

  /// Takes the next piece of the text, cut anywhere.
  void push(std::string_view piece);

  /// Takes the end of the text, behind which nothing may be pushed.
  void finish();

  /// How many different characters there are.
  std::size_t size() const;

  /// Whether an encoding has all of them. Throws std::bad_alloc.
  bool isHeldBy(Encoding encoding) const;

  /// What became of the text so far, the malformed sequences above all.
  const Report& report() const;

 private:
  struct Characters;
  std::unique_ptr<Characters> m_characters;
};

/// All encodings that hold every character of a text, in ascending order of the
/// numbers. Throws std::bad_alloc.
QUORVEL_API std::vector<Encoding> encodingsThatHold(std::string_view text, Encoding from);

}  // namespace quorvel::text
