#include "cli/EncodingChoice.h"

#include <langinfo.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "cli/Suggestion.h"
#include "cli/WrongUse.h"
#include "quorvel/names/Psdk.h"

namespace qvconv {

namespace {

using quorvel::text::Encoding;

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

// --- Names of the command's own ---------------------------------------------

struct OwnName {
  std::string_view name;
  std::optional<Encoding> (*encoding)();
  bool writesMark;
};

constexpr std::array ownNames = {
    OwnName{"ansi", [] { return Encoding::find(quorvel::Psdk::getAnsiCodePage()); }, false},
    OwnName{"oem", [] { return Encoding::find(quorvel::Psdk::getOemCodePage()); }, false},
    OwnName{"utf-8-sig", [] { return std::optional(Encoding::utf8()); }, true},
};

const OwnName* findOwnName(std::string_view name) {
  const std::string lower = lowerCase(name);
  const auto* const found = std::find_if(ownNames.begin(), ownNames.end(),
                                         [&](const OwnName& own) { return own.name == lower; });
  return found == ownNames.end() ? nullptr : found;
}

std::vector<std::string_view> allNames() {
  std::vector<std::string_view> names;
  for (const Encoding encoding : Encoding::all()) {
    names.push_back(encoding.name());
    for (const std::string_view alias : encoding.aliases()) names.push_back(alias);
  }
  for (const OwnName& own : ownNames) names.push_back(own.name);
  return names;
}

// --- Suffixes ---------------------------------------------------------------

void applySuffix(EncodingChoice& choice, std::string_view suffix, std::string_view option) {
  const std::string lower = lowerCase(suffix);
  if (lower == "ignore") {
    choice.drops = true;
  } else if (lower == "translit") {
    choice.bestFits = true;
  } else if (!lower.empty()) {
    throw WrongUse(option, "unknown suffix \"//" + std::string(suffix) + '"',
                   "there are //IGNORE and //TRANSLIT");
  }
}

void applySuffixes(EncodingChoice& choice, std::string_view suffixes, std::string_view option) {
  constexpr std::string_view separator = "//";
  while (!suffixes.empty()) {
    suffixes.remove_prefix(separator.size());
    const std::size_t end = std::min(suffixes.find(separator), suffixes.size());
    applySuffix(choice, suffixes.substr(0, end), option);
    suffixes.remove_prefix(end);
  }
}

std::string_view withoutSuffixes(std::string_view text) { return text.substr(0, text.find("//")); }

}  // namespace

EncodingChoice chooseEncoding(std::string_view text, std::string_view option) {
  const std::string_view name = withoutSuffixes(text);
  if (name.empty()) throw WrongUse(option, "no encoding is named", "-l lists all");
  const OwnName* const own = findOwnName(name);
  const std::optional<Encoding> encoding = own ? own->encoding() : Encoding::find(name);
  if (!encoding) {
    throw WrongUse(option,
                   "unknown encoding \"" + std::string(name) + '"' + didYouMean(name, allNames()),
                   "-l lists all");
  }
  EncodingChoice choice{*encoding, std::string(name)};
  choice.writesMark = own && own->writesMark;
  applySuffixes(choice, text.substr(name.size()), option);
  return choice;
}

EncodingChoice chooseSource(std::string_view text, std::string_view option) {
  const std::string_view name = withoutSuffixes(text);
  if (lowerCase(name) != "auto") return chooseEncoding(text, option);
  // Any will do until there is a text.
  EncodingChoice choice{Encoding::utf8(), std::string(name)};
  choice.source = Source::detected;
  applySuffixes(choice, text.substr(name.size()), option);
  return choice;
}

EncodingChoice localeEncoding(std::string_view option) {
  // No other thread runs while the command line is read.
  const std::string name = ::nl_langinfo(CODESET);  // NOLINT(concurrency-mt-unsafe)
  const std::optional<Encoding> encoding = Encoding::find(name);
  if (!encoding) {
    throw WrongUse(option,
                   "missing, and the encoding of the locale, \"" + name + "\", is not known",
                   "name an encoding; -l lists all");
  }
  return EncodingChoice{*encoding, name};
}

}  // namespace qvconv
