// Finds code pages by name. The names of all rows of CodePages.def are loosened and sorted
// while this is compiled; a name that is asked for is loosened too, tried as a number and
// found by a binary search. Two rows with one name do not compile.

#include "quorvel/names/CharsetNaming.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "quorvel/base/AsciiText.hpp"
#include "quorvel/names/LooseName.hpp"

namespace quorvel {

namespace {

using ascii::isDigit;
using names::forEachName;
using names::kLongestName;
using names::loosen;
using names::LooseName;

constexpr CharsetNaming::Entry kEntries[] = {
#define QUORVEL_CODE_PAGE(number, kind, table, title, names, ...) {number, title, names},
#include "codepages/CodePages.def"
};

constexpr std::size_t countNames() {
  std::size_t count = 0;
  for (const auto& entry : kEntries) forEachName(entry.names, [&](std::string_view) { ++count; });
  return count;
}

constexpr std::size_t countLooseCharacters() {
  std::size_t count = 0;
  for (const auto& entry : kEntries) {
    forEachName(entry.names, [&](std::string_view name) { count += loosen(name).length; });
  }
  return count;
}

// All names in their loose form, sorted. The compiler builds it, so that there
// is nothing to initialise, to lock or to relocate at run time; the keys point
// into one text because that takes a quarter of the room of string views.
struct NameIndex {
  struct Key {
    std::uint16_t offset;
    std::uint16_t codePage;
    std::uint8_t length;
  };

  std::array<char, countLooseCharacters()> text{};
  std::array<Key, countNames()> keys{};

  constexpr std::string_view name(const Key& key) const {
    return {text.data() + key.offset, key.length};
  }
};

constexpr NameIndex buildIndex() {
  NameIndex index;
  std::size_t used = 0;
  std::size_t count = 0;
  for (const auto& entry : kEntries) {
    forEachName(entry.names, [&](std::string_view name) {
      const LooseName loose = loosen(name);
      index.keys[count++] = {static_cast<std::uint16_t>(used),
                             static_cast<std::uint16_t>(entry.codePage),
                             static_cast<std::uint8_t>(loose.length)};
      for (const char c : loose.view()) index.text[used++] = c;
    });
  }
  std::sort(index.keys.begin(), index.keys.end(),
            [&](const auto& a, const auto& b) { return index.name(a) < index.name(b); });
  return index;
}

constexpr NameIndex kIndex = buildIndex();

constexpr const CharsetNaming::Entry* findEntry(int codePage) {
  const auto* found = std::lower_bound(
      std::begin(kEntries), std::end(kEntries), codePage,
      [](const CharsetNaming::Entry& entry, int number) { return entry.codePage < number; });
  return found != std::end(kEntries) && found->codePage == codePage ? found : nullptr;
}

constexpr std::string_view withoutPrefix(std::string_view text, std::string_view prefix) {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

// The served code page that a loose name gives as a number: "932", "cp932" or
// "windows932"; 0 for any other name.
constexpr int pageByNumber(std::string_view loose) {
  std::string_view digits = withoutPrefix(loose, "windows");
  if (digits == loose) digits = withoutPrefix(loose, "cp");
  if (digits.empty() || digits.size() > 5) return 0;
  int number = 0;
  for (const char c : digits) {
    if (!isDigit(c)) return 0;
    number = number * 10 + (c - '0');
  }
  return findEntry(number) != nullptr ? number : 0;
}

constexpr int pageByName(std::string_view loose) {
  const auto* found = std::lower_bound(
      kIndex.keys.begin(), kIndex.keys.end(), loose,
      [](const NameIndex::Key& key, std::string_view wanted) { return kIndex.name(key) < wanted; });
  return found != kIndex.keys.end() && kIndex.name(*found) == loose ? found->codePage : 0;
}

// What the table promises its readers, checked while it is compiled.

constexpr bool isAscending() {
  return std::adjacent_find(std::begin(kEntries), std::end(kEntries),
                            [](const auto& a, const auto& b) {
                              return a.codePage >= b.codePage;
                            }) == std::end(kEntries);
}

constexpr bool everyNameFits() {
  return std::all_of(kIndex.keys.begin(), kIndex.keys.end(),
                     [](const auto& key) { return key.length > 0; });
}

constexpr bool noNameTwice() {
  return std::adjacent_find(kIndex.keys.begin(), kIndex.keys.end(),
                            [](const auto& a, const auto& b) {
                              return kIndex.name(a) == kIndex.name(b);
                            }) == kIndex.keys.end();
}

constexpr bool noNameIsAnotherPagesNumber() {
  return std::all_of(kIndex.keys.begin(), kIndex.keys.end(), [](const auto& key) {
    const int number = pageByNumber(kIndex.name(key));
    return number == 0 || number == key.codePage;
  });
}

static_assert(isAscending(), "the rows of CodePages.def ascend by number");
static_assert(kIndex.text.size() <= UINT16_MAX, "offsets into the names take 16 bits");
static_assert(everyNameFits(), "a name in CodePages.def is too long, or nothing but punctuation");
static_assert(noNameTwice(), "a name in CodePages.def occurs twice");
static_assert(noNameIsAnotherPagesNumber(), "a name in CodePages.def is the number of another row");

}  // namespace

int names::codePageByName(std::string_view name) {
  if (name.size() > kLongestName) return 0;
  const LooseName loose = loosen(name);
  const int byNumber = pageByNumber(loose.view());
  return byNumber != 0 ? byNumber : pageByName(loose.view());
}

int CharsetNaming::GetCodePage(StringBuffer& name) {
  return names::codePageByName({name.getString(), name.getSize()});
}

int CharsetNaming::GetCodePage(const char* name) {
  if (name == nullptr) return 0;
  std::size_t length = 0;
  while (length <= kLongestName && name[length] != '\0') ++length;
  return names::codePageByName({name, length});
}

unsigned int CharsetNaming::count() { return static_cast<unsigned int>(std::size(kEntries)); }

const CharsetNaming::Entry& CharsetNaming::at(unsigned int index) { return kEntries[index]; }

const CharsetNaming::Entry* CharsetNaming::find(int codePage) { return findEntry(codePage); }

}  // namespace quorvel
