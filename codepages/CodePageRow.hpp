#pragma once

#include "quorvel/base/StringBuffer.h"

/// The words that the rows of CodePages.def are written with.
namespace quorvel {

enum class CodePageKind { Unicode, Gsm, Iso2022, SingleByte, MultiByte };

/// Where the mappings of a code page come from.
struct TableSource {
  const char* packed = nullptr;               ///< the packed text of a single-byte page
  bool (*assemble)(StringBuffer&) = nullptr;  ///< or what assembles that of a multibyte page
  const char* changes = nullptr;              ///< a list of changes on top of it
  int sharedWith = 0;                         ///< or the page whose tables this one uses
  int wrapped = 0;                            ///< the page that an ISO-2022 encoding stands on

  /// False: tables are built, but no conversion takes them.
  ///
  /// contract: 28600 and 28601 have such tables. Callers who read them by hand find
  /// them, and conversions of the two fail, by which others know to ask elsewhere.
  bool isRouted = true;
};

constexpr TableSource noTable() { return {.isRouted = false}; }
constexpr TableSource packed(const char* text) { return {.packed = text}; }
constexpr TableSource unrouted(const char* text) { return {.packed = text, .isRouted = false}; }
constexpr TableSource pieces(bool (*assemble)(StringBuffer&)) { return {.assemble = assemble}; }
constexpr TableSource amended(bool (*assemble)(StringBuffer&), const char* changes) {
  return {.assemble = assemble, .changes = changes};
}
constexpr TableSource tableOf(int codePage) { return {.sharedWith = codePage}; }
constexpr TableSource wraps(int codePage) { return {.wrapped = codePage, .isRouted = false}; }

/// Which bytes lead a code of two bytes or more, by the structure of the encoding and
/// whatever is assigned.
enum class LeadBytes : unsigned char {
  none,
  shiftJis,  ///< 81 to 9F and E0 to FC
  euc,       ///< A1 to FE
  eucJp,     ///< these, 8E, and 8F in front of two more
  upper,     ///< 81 to FE
};

/// Who made an encoding, or what for.
enum class Family : unsigned char {
  other,
  unicode,
  windows,
  iso8859,
  dos,
  koi8,
  eastAsian,  ///< several bytes or sets, and not a page of Windows
  mac,
  ebcdic,
};

/// What it writes beside ASCII.
enum class Script : unsigned char {
  any,
  latin,
  cyrillic,
  greek,
  hebrew,
  arabic,
  thai,
  japanese,
  chinese,
  korean,
};

/// What is particular about a code page: where a row says nothing, it is so.
struct CodePageTraits {
  /// What an error in multibyte text covers, 1 or 2.
  ///
  /// contract: 1361, 10001 and 52936 have pairs and 1 all the same. Callers who count
  /// substitutions in them count bytes.
  int bytesPerError = 1;

  /// Both sets of Arabic digits are written as ASCII digits, whatever the table says.
  ///
  /// contract: a text of such a page read and written again is not the same. Callers
  /// who hand its numbers to programs that know ASCII digits only rely on it.
  bool takesAsciiDigits = false;

  /// US-ASCII is copied into it as it is, bytes above 7F too.
  bool copiesUsAscii = false;

  /// The text comes in the order in which Mac Arabic is seen, not read.
  bool isInMacArabicOrder = false;

  /// The table to encode with is made by the first of two operations.
  bool isInFirstHalf = false;

  /// For the text layer: what leads, and whether 80 to 9F are the C1 controls there.
  LeadBytes leads = LeadBytes::none;
  bool hasC1InText = false;

  /// For those who choose among encodings.
  Family family = Family::other;
  Script script = Script::any;
};

}  // namespace quorvel
