#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "quorvel/base/AsciiText.hpp"

// Which legacy code pages go with a locale: what a Windows system of the same
// language and territory would use. Constant data and pure functions, all here,
// so that tests reach them in a shared library too. Not a public header.

namespace quorvel {

struct LocaleCodePages {
  int ansi;
  int oem;
};

namespace locale_detail {

using ascii::isDigit;
using ascii::isLetter;
using ascii::toLower;

// One row per language. `variant` is empty in the row of the language itself; a
// row for a territory (capitals or a number) or a script (small letters) says
// what differs there. Languages that Windows writes in Unicode only, and those
// with the default pair, have no row.
struct Row {
  std::string_view language;
  std::string_view variant;
  LocaleCodePages pages;
};

inline constexpr LocaleCodePages kDefaultPages{1252, 437};

inline constexpr Row kRows[] = {
    {"af", "", {1252, 850}},   // Afrikaans
    {"ar", "", {1256, 720}},   // Arabic
    {"arn", "", {1252, 850}},  // Mapudungun
    {"az", "", {1254, 857}},   // Azerbaijani
    {"az", "cyrillic", {1251, 866}},
    {"ba", "", {1251, 866}},  // Bashkir
    {"be", "", {1251, 866}},  // Belarusian
    {"bg", "", {1251, 866}},  // Bulgarian
    {"br", "", {1252, 850}},  // Breton
    {"bs", "", {1250, 852}},  // Bosnian
    {"bs", "cyrillic", {1251, 855}},
    {"ca", "", {1252, 850}},     // Catalan
    {"ckb", "", {1256, 720}},    // Central Kurdish
    {"co", "", {1252, 850}},     // Corsican
    {"cs", "", {1250, 852}},     // Czech
    {"cy", "", {1252, 850}},     // Welsh
    {"da", "", {1252, 850}},     // Danish
    {"de", "", {1252, 850}},     // German
    {"dsb", "", {1252, 850}},    // Lower Sorbian
    {"el", "", {1253, 737}},     // Greek
    {"en", "029", {1252, 850}},  // English: the default pair but for these
    {"en", "AU", {1252, 850}},
    {"en", "BZ", {1252, 850}},
    {"en", "CA", {1252, 850}},
    {"en", "GB", {1252, 850}},
    {"en", "IE", {1252, 850}},
    {"en", "JM", {1252, 850}},
    {"en", "NZ", {1252, 850}},
    {"en", "TT", {1252, 850}},
    {"es", "", {1252, 850}},        // Spanish
    {"et", "", {1257, 775}},        // Estonian
    {"eu", "", {1252, 850}},        // Basque
    {"fa", "", {1256, 720}},        // Persian
    {"fi", "", {1252, 850}},        // Finnish
    {"fo", "", {1252, 850}},        // Faroese
    {"fr", "", {1252, 850}},        // French
    {"fy", "", {1252, 850}},        // West Frisian
    {"ga", "", {1252, 850}},        // Irish
    {"gd", "", {1252, 850}},        // Scottish Gaelic
    {"gl", "", {1252, 850}},        // Galician
    {"gsw", "", {1252, 850}},       // Alsatian
    {"he", "", {1255, 862}},        // Hebrew
    {"hr", "", {1250, 852}},        // Croatian
    {"hsb", "", {1252, 850}},       // Upper Sorbian
    {"hu", "", {1250, 852}},        // Hungarian
    {"id", "", {1252, 850}},        // Indonesian
    {"in", "", {1252, 850}},        // its former code
    {"is", "", {1252, 850}},        // Icelandic
    {"it", "", {1252, 850}},        // Italian
    {"iw", "", {1255, 862}},        // Hebrew, its former code
    {"ja", "", {932, 932}},         // Japanese
    {"kk", "", {1251, 866}},        // Kazakh
    {"kl", "", {1252, 850}},        // Greenlandic
    {"ko", "", {949, 949}},         // Korean
    {"ku", "arabic", {1256, 720}},  // Kurdish in Arabic script
    {"ku", "IQ", {1256, 720}},
    {"ky", "", {1251, 866}},      // Kyrgyz
    {"lb", "", {1252, 850}},      // Luxembourgish
    {"lt", "", {1257, 775}},      // Lithuanian
    {"lv", "", {1257, 775}},      // Latvian
    {"mk", "", {1251, 866}},      // Macedonian
    {"mn", "", {1251, 866}},      // Mongolian
    {"mn", "CN", kDefaultPages},  // in Mongolian script
    {"mn", "mongolian", kDefaultPages},
    {"moh", "", {1252, 850}},       // Mohawk
    {"ms", "", {1252, 850}},        // Malay
    {"nb", "", {1252, 850}},        // Norwegian Bokmal
    {"nl", "", {1252, 850}},        // Dutch
    {"nn", "", {1252, 850}},        // Norwegian Nynorsk
    {"no", "", {1252, 850}},        // Norwegian
    {"nso", "", {1252, 850}},       // Northern Sotho
    {"oc", "", {1252, 850}},        // Occitan
    {"pa", "arabic", {1256, 720}},  // Punjabi in Arabic script
    {"pa", "PK", {1256, 720}},
    {"pl", "", {1250, 852}},   // Polish
    {"prs", "", {1256, 720}},  // Dari
    {"pt", "", {1252, 850}},   // Portuguese
    {"qu", "", {1252, 850}},   // Quechua
    {"quz", "", {1252, 850}},
    {"rm", "", {1252, 850}},        // Romansh
    {"ro", "", {1250, 852}},        // Romanian
    {"ru", "", {1251, 866}},        // Russian
    {"sah", "", {1251, 866}},       // Yakut
    {"sd", "arabic", {1256, 720}},  // Sindhi in Arabic script
    {"sd", "PK", {1256, 720}},
    {"se", "", {1252, 850}},   // Northern Sami
    {"sh", "", {1250, 852}},   // Serbo-Croatian
    {"sk", "", {1250, 852}},   // Slovak
    {"sl", "", {1250, 852}},   // Slovenian
    {"sma", "", {1252, 850}},  // Southern Sami
    {"smj", "", {1252, 850}},  // Lule Sami
    {"smn", "", {1252, 850}},  // Inari Sami
    {"sms", "", {1252, 850}},  // Skolt Sami
    {"sq", "", {1250, 852}},   // Albanian
    {"sr", "", {1251, 855}},   // Serbian
    {"sr", "latin", {1250, 852}},
    {"sv", "", {1252, 850}},   // Swedish
    {"tg", "", {1251, 866}},   // Tajik
    {"th", "", {874, 874}},    // Thai
    {"tk", "", {1250, 852}},   // Turkmen
    {"tn", "", {1252, 850}},   // Tswana
    {"tr", "", {1254, 857}},   // Turkish
    {"tt", "", {1251, 866}},   // Tatar
    {"tzm", "", {1252, 850}},  // Central Atlas Tamazight
    {"ug", "", {1256, 720}},   // Uyghur
    {"uk", "", {1251, 866}},   // Ukrainian
    {"ur", "", {1256, 720}},   // Urdu
    {"uz", "", {1254, 857}},   // Uzbek
    {"uz", "cyrillic", {1251, 866}},
    {"vi", "", {1258, 1258}},    // Vietnamese
    {"wo", "", {1252, 850}},     // Wolof
    {"xh", "", {1252, 850}},     // Xhosa
    {"zh", "", {936, 936}},      // Chinese
    {"zh", "hans", {936, 936}},  // Hong Kong and Macau too, if they say so
    {"zh", "hant", {950, 950}},
    {"zh", "HK", {950, 950}},
    {"zh", "MO", {950, 950}},
    {"zh", "TW", {950, 950}},
    {"zu", "", {1252, 850}},  // Zulu
};

// Scripts as language tags write them, and the name of each in `Row::variant`.
struct Script {
  std::string_view subtag;
  std::string_view variant;
};

inline constexpr Script kScripts[] = {
    {"Arab", "arabic"}, {"Cyrl", "cyrillic"}, {"Hans", "hans"},
    {"Hant", "hant"},   {"Latn", "latin"},    {"Mong", "mongolian"},
};

constexpr bool sameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (toLower(a[i]) != toLower(b[i])) return false;
  }
  return true;
}

template <typename Predicate>
constexpr bool all(std::string_view text, Predicate predicate) {
  return std::all_of(text.begin(), text.end(), predicate);
}

struct Locale {
  std::string_view language;
  std::string_view script;
  std::string_view territory;
};

constexpr std::string_view scriptName(std::string_view text) {
  for (const Script& script : kScripts) {
    if (sameText(text, script.subtag)) return script.variant;
  }
  return text;
}

// Puts a subtag where it belongs; false when it is neither a script nor a
// territory, or a second one.
constexpr bool addSubtag(Locale& locale, std::string_view subtag) {
  const bool letters = all(subtag, isLetter);
  if (subtag.size() == 4 && letters && locale.script.empty()) {
    locale.script = scriptName(subtag);
    return true;
  }
  const bool territory =
      (subtag.size() == 2 && letters) || (subtag.size() == 3 && all(subtag, isDigit));
  if (!territory || !locale.territory.empty()) return false;
  locale.territory = subtag;
  return true;
}

// Takes the text up to one of `ends` off the front of `rest`, the end with it.
constexpr std::string_view takeUntil(std::string_view& rest, std::string_view ends) {
  const std::size_t end = rest.find_first_of(ends);
  const std::string_view taken = rest.substr(0, end);
  rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
  return taken;
}

// A modifier that is no script ("euro", "valencia") finds no row and changes
// nothing.
constexpr std::optional<Locale> parse(std::string_view name) {
  constexpr std::string_view kMarksOfAComposite = "/;=,";
  if (name.find_first_of(kMarksOfAComposite) != std::string_view::npos) return std::nullopt;

  std::string_view modifier = name;
  std::string_view tag = takeUntil(modifier, "@");
  tag = takeUntil(tag, ".");

  if (tag.ends_with('_') || tag.ends_with('-')) return std::nullopt;

  Locale locale;
  locale.language = takeUntil(tag, "_-");
  const std::size_t length = locale.language.size();
  if (length < 2 || length > 3 || !all(locale.language, isLetter)) return std::nullopt;
  while (!tag.empty()) {
    if (!addSubtag(locale, takeUntil(tag, "_-"))) return std::nullopt;
  }
  if (locale.script.empty()) locale.script = scriptName(modifier);
  return locale;
}

constexpr const Row* findRow(std::string_view language, std::string_view variant) {
  for (const Row& row : kRows) {
    if (sameText(row.language, language) && sameText(row.variant, variant)) return &row;
  }
  return nullptr;
}

// As above, but an empty variant finds nothing: it was not given.
constexpr const Row* findVariant(std::string_view language, std::string_view variant) {
  return variant.empty() ? nullptr : findRow(language, variant);
}

}  // namespace locale_detail

/// What a Windows system of the language and territory of `name` would use.
///
/// Reads "ll[_Ssss][_TT][.codeset][@modifier]", with "-" as good as "_": the
/// language, the script (as a subtag, or as the modifier "latin", "cyrillic"
/// and so on) and the territory count, in the order script, territory, language
/// alone; the codeset does not. The "C" locale, a language without a row, a
/// composite of several locales, null and whatever else is not of that form
/// give 1252 and 437.
constexpr LocaleCodePages codePagesOfLocale(const char* name) {
  using namespace locale_detail;
  if (name == nullptr) return kDefaultPages;
  const std::optional<Locale> locale = parse(name);
  if (!locale) return kDefaultPages;
  const Row* row = findVariant(locale->language, locale->script);
  if (row == nullptr) row = findVariant(locale->language, locale->territory);
  if (row == nullptr) row = findRow(locale->language, "");
  return row != nullptr ? row->pages : kDefaultPages;
}

}  // namespace quorvel
