#pragma once

namespace quorvel {

/// The ANSI and OEM code pages of a Windows system.
struct LocaleCodePages {
  int ansi;
  int oem;
};

/// What a Windows system of the language and territory of `locale` would use.
///
/// Reads "ll[_Ssss][_TT][.codeset][@modifier]", with "-" as good as "_": the
/// language, the script (as a subtag, or as the modifier "latin", "cyrillic"
/// and so on) and the territory count, the codeset does not. A name without a
/// row of its own goes by its language alone. The "C" locale, an unknown
/// language, a composite of several locales, null and anything else that is not
/// of that form give 1252 and 437.
LocaleCodePages codePagesOfLocale(const char* locale);

}  // namespace quorvel
