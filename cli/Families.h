#pragma once

#include <array>
#include <string_view>

#include "quorvel/text/Encoding.h"

namespace qvconv {

/// A family as the command calls it.
struct FamilyName {
  quorvel::text::EncodingFamily family;
  std::string_view name;
};

/// The families in the order in which they are listed.
inline constexpr std::array familyNames = {
    FamilyName{quorvel::text::EncodingFamily::unicode, "Unicode"},
    FamilyName{quorvel::text::EncodingFamily::windows, "Windows"},
    FamilyName{quorvel::text::EncodingFamily::iso8859, "ISO 8859"},
    FamilyName{quorvel::text::EncodingFamily::dos, "DOS"},
    FamilyName{quorvel::text::EncodingFamily::koi8, "KOI8"},
    FamilyName{quorvel::text::EncodingFamily::eastAsian, "East Asian"},
    FamilyName{quorvel::text::EncodingFamily::mac, "Macintosh"},
    FamilyName{quorvel::text::EncodingFamily::ebcdic, "EBCDIC"},
    FamilyName{quorvel::text::EncodingFamily::other, "Other"},
};

inline std::string_view familyOf(quorvel::text::Encoding encoding) {
  for (const FamilyName& row : familyNames) {
    if (row.family == encoding.family()) return row.name;
  }
  return {};
}

}  // namespace qvconv
