#pragma once

// Between Shift_JIS and the rows and cells of JIS X 0208, and how ISO-2022-JP
// announces its sets.
//
// Shift_JIS lays two rows of 94 under each lead byte: the odd one on the trail
// bytes 40-7E and 80-9E, the even one on 9F-FC. The leads skip A0-DF, which are
// half-width katakana. Row 16, cell 1 is 30 21 in JIS; rows 15 and 16 share the
// lead 88, and the first cell of an even row has the trail 9F: 88 9F.

#include <algorithm>
#include <string_view>

#include "quorvel/kernel/Iso2022Text.hpp"

namespace quorvel::jis {

struct Place {
  unsigned int row;   // 1 to 94
  unsigned int cell;  // 1 to 94
};

inline constexpr unsigned int firstLastBlockRow = 89;
inline constexpr unsigned int lastBlockRows = 4;

constexpr bool isInLastBlock(unsigned int row) {
  return row >= firstLastBlockRow && row < firstLastBlockRow + lastBlockRows;
}

constexpr bool isSjisLead(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

constexpr bool isSjisTrail(unsigned char byte) {
  return byte >= 0x40 && byte <= 0xFC && byte != 0x7F;
}

constexpr bool isHalfWidthKatakana(unsigned char byte) { return byte >= 0xA1 && byte <= 0xDF; }

/// Whether `byte` is one of the 63 that the 7-bit set of katakana has.
constexpr bool isKatakana(unsigned char byte) { return byte >= 0x21 && byte <= 0x5F; }

constexpr unsigned int sjisFromPlace(Place place) {
  const unsigned int lead = (place.row - 1) / 2 + (place.row <= 62 ? 0x81 : 0xC1);
  if (place.row % 2 == 0) return lead << 8 | (place.cell + 0x9E);
  return lead << 8 | (place.cell + (place.cell < 64 ? 0x3F : 0x40));
}

constexpr Place placeFromSjis(unsigned char lead, unsigned char trail) {
  const unsigned int oddRow = 2U * (lead - (lead < 0xA0 ? 0x81U : 0xC1U)) + 1;
  if (trail >= 0x9F) return {oddRow + 1, trail - 0x9EU};
  return {oddRow, trail - (trail < 0x7F ? 0x3FU : 0x40U)};
}

constexpr Place placeFromJis(unsigned char lead, unsigned char trail) {
  return {lead - 0x20U, trail - 0x20U};
}

constexpr unsigned int jisFromPlace(Place place) {
  return (place.row + 0x20) << 8 | (place.cell + 0x20);
}

/// The Shift_JIS code of a pair of the kanji set, whose rows 89 to 92 are those of
/// `lastBlock`, 94 codes each.
template <typename LastBlock>
constexpr unsigned int sjisFromPlace(Place place, const LastBlock& lastBlock) {
  if (!isInLastBlock(place.row)) return sjisFromPlace(place);
  return lastBlock[(place.row - firstLastBlockRow) * 94 + place.cell - 1];
}

/// The pair of the kanji set for a code of Shift_JIS, 0 for none: the leads F0 to FC
/// lie beyond row 94, but for what the last block has of them.
template <typename LastBlock>
constexpr unsigned int jisFromSjis(unsigned char lead, unsigned char trail,
                                   const LastBlock& lastBlock) {
  if (lead < 0xF0) return jisFromPlace(placeFromSjis(lead, trail));
  for (unsigned int i = 0; i < lastBlockRows * 94; ++i) {
    if (lastBlock[i] != (lead << 8 | trail)) continue;
    return jisFromPlace({firstLastBlockRow + i / 94, i % 94 + 1});
  }
  return 0;
}

using Set = kernel::JapaneseSet;

struct Designation {
  std::string_view sequence;
  Set set;
};

// JIS-Roman differs from ASCII in two signs, which Shift_JIS does not tell
// apart; the two editions of the kanji set are read alike.
inline constexpr Designation designations[] = {
    {"\x1B(B", Set::ascii}, {"\x1B$B", Set::kanji},    {"\x1B(J", Set::ascii},
    {"\x1B$@", Set::kanji}, {"\x1B(I", Set::katakana},
};

/// The designation that `text` begins with, or null.
inline const Designation* findDesignation(iso2022::Bytes text) {
  for (const Designation& designation : designations) {
    if (iso2022::startsWith(text, designation.sequence)) return &designation;
  }
  return nullptr;
}

/// Whether `text` is the first part of a designation, and not all of it.
inline bool isDesignationCutOff(iso2022::Bytes text) {
  return std::ranges::any_of(designations, [&](const Designation& designation) {
    return iso2022::isCutOff(text, designation.sequence);
  });
}

/// What is written for a set: the first of those that announce it.
constexpr std::string_view sequenceFor(Set set) {
  for (const Designation& designation : designations) {
    if (designation.set == set) return designation.sequence;
  }
  return {};
}

}  // namespace quorvel::jis
