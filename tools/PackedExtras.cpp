// Packs the files of codepages/extra, and checks them against the tables of their pages:
// a code is not both in the table and read only, a character not both in the table and a
// best fit.

#include "tools/PackedExtras.h"

#include <algorithm>
#include <map>
#include <set>

#include "tools/PackedTables.h"
#include "tools/PackedText.h"
#include "tools/TableBytes.h"

namespace pack {

namespace {

using Extras = std::map<int, ExtraFile>;

Extras readExtras(const std::filesystem::path& codepages, ExtraFile::Kind kind) {
  Extras extras;
  for (const auto& entry : std::filesystem::directory_iterator(codepages / "extra")) {
    if (entry.path().extension() != ".txt") continue;
    ExtraFile file(entry.path());
    if (file.kind == kind) extras.emplace(file.codePage, std::move(file));
  }
  return extras;
}

[[noreturn]] void fail(const ExtraFile& extra, unsigned int line, const std::string& what) {
  throw InputError(extra.path, line, what);
}

// What a page has by its own table.
struct Repertoire {
  std::set<unsigned int> codes;
  std::set<unsigned int> units;
};

// That of the page that `extra` speaks of.
Repertoire repertoireOf(const ExtraFile& extra, const Mappings& mappings) {
  auto place = mappings.find(extra.codePage);
  if (place != mappings.end() && place->second.sameAs.codePage) {
    place = mappings.find(place->second.sameAs.codePage);
  }
  if (place == mappings.end()) fail(extra, 1, "no such code page");
  if (place->second.changes.codePage) fail(extra, 1, "that page does not list its mapping itself");
  Repertoire result;
  for (const Record& record : place->second.records) {
    result.codes.insert(record.code);
    result.units.insert(record.unit);
  }
  for (unsigned int code = 0; place->second.lowerHalfIsAscii && code < 0x80; ++code) {
    result.codes.insert(code);
    result.units.insert(code);
  }
  return result;
}

void checkReadOnly(const ExtraFile& extra, const Mappings& mappings) {
  const Repertoire page = repertoireOf(extra, mappings);
  for (const Record& record : extra.readOnly) {
    if (page.codes.contains(record.code)) fail(extra, record.line, "the page has a code of these");
  }
}

void checkBestFits(const ExtraFile& extra, const Mappings& mappings) {
  const Repertoire page = repertoireOf(extra, mappings);
  for (const Record& record : extra.records) {
    if (page.units.contains(record.unit)) {
      fail(extra, record.line, "the page has a character of these");
    }
    if (!page.codes.contains(record.code))
      fail(extra, record.line, "the page lacks a code of these");
  }
}

// One list for the codes of two bytes and one for each lead of three.
void packReadOnly(const ExtraFile& extra, std::vector<ReadOnlyCodes>& lists) {
  std::map<unsigned int, std::vector<Record>> byLead;
  for (Record record : extra.readOnly) {
    const unsigned int lead = record.codeLength == 3 ? record.code >> 16 : 0;
    record.code &= 0xFFFF;
    record.codeLength = 2;
    byLead[lead].push_back(record);
  }
  for (const auto& [lead, records] : byLead) {
    const Bytes list = completeList(extra.path, false, records);
    lists.push_back({extra.codePage, lead, packedText(list)});
  }
}

BestFits bestFitsOf(const ExtraFile& extra, const Extras& all, const Mappings& mappings) {
  if (!extra.sameAs.codePage) {
    checkBestFits(extra, mappings);
    return {extra.codePage, 0, extra.records};
  }
  const auto same = all.find(extra.sameAs.codePage);
  if (same == all.end() || same->second.sameAs.codePage) {
    fail(extra, extra.sameAs.line, "that page lists no best fits itself");
  }
  ExtraFile own = same->second;
  own.path = extra.path;
  own.codePage = extra.codePage;
  for (Record& record : own.records) record.line = extra.sameAs.line;
  checkBestFits(own, mappings);
  return {extra.codePage, extra.sameAs.codePage, {}};
}

}  // namespace

PackedExtras packExtras(const std::filesystem::path& codepages) {
  const Mappings mappings = readMappings(codepages);
  PackedExtras packed;
  for (const auto& [number, extra] : readExtras(codepages, ExtraFile::Kind::ReadOnly)) {
    checkReadOnly(extra, mappings);
    packReadOnly(extra, packed.readOnly);
  }
  const Extras bestFits = readExtras(codepages, ExtraFile::Kind::BestFit);
  for (const auto& [number, extra] : bestFits) {
    packed.bestFits.push_back(bestFitsOf(extra, bestFits, mappings));
  }
  const ExtraFile gb18030(codepages / "extra" / "54936.txt");
  packReadOnly(gb18030, packed.readOnly);
  packed.gb18030 = packedText(completeList(gb18030.path, true, gb18030.records));
  packed.ranges = gb18030.ranges;
  return packed;
}

}  // namespace pack
