#include "quorvel/pages/CharacterTables.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <new>

#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/pages/FlatTables.hpp"
#include "quorvel/pages/PackedList.hpp"
#include "quorvel/pages/SjisLastBlock.hpp"
#include "quorvel/pages/TableRegistry.hpp"

namespace quorvel {

namespace {

// --- What there is -----------------------------------------------------------

constexpr int codePageGb18030 = 54936;

// What the text layer knows of a page: its row or, for the one that has none, this.
CodePageTraits traitsOf(int codePage) {
  CodePageTraits traits = findCodePage(codePage).traits;
  if (codePage == codePageGb18030) traits.leads = LeadBytes::upper;
  return traits;
}

const TableSource& sourceOf(int codePage) {
  const CodePage& page = findCodePage(codePage);
  return page.table.sharedWith != 0 ? findCodePage(page.table.sharedWith).table : page.table;
}

PackedList unpack(const char* text) {
  PackedList list;
  if (unpackList(text, list) != Unpacked::whole) throw std::bad_alloc();
  return list;
}

PackedList listOf(int codePage) {
  if (codePage == codePageGb18030) return unpack(gb18030Text);
  const TableSource& source = sourceOf(codePage);
  if (source.packed) return unpack(source.packed);
  StringBuffer text;
  if (!source.assemble(text)) throw std::bad_alloc();
  return unpack(text.getString());
}

std::unique_ptr<UnitCodes> codesOf(int codePage) {
  auto codes = std::make_unique<UnitCodes>();
  addList(listOf(codePage), *codes);
  if (const char* changes = sourceOf(codePage).changes) addList(unpack(changes), *codes);
  return codes;
}

template <typename Table>
std::unique_ptr<Table> had(std::unique_ptr<Table> table) {
  if (!table) throw std::bad_alloc();
  return table;
}

bool isLead(LeadBytes leads, unsigned int byte) {
  switch (leads) {
    case LeadBytes::none:
      return false;
    case LeadBytes::shiftJis:
      return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    case LeadBytes::euc:
      return byte >= 0xA1 && byte <= 0xFE;
    case LeadBytes::eucJp:
      return byte == 0x8E || byte == 0x8F || isLead(LeadBytes::euc, byte);
    case LeadBytes::upper:
      break;
  }
  return byte >= 0x81 && byte <= 0xFE;
}

// --- Reading -----------------------------------------------------------------

std::unique_ptr<BytesToUnicode> readBytes(int codePage) {
  const PackedList list = listOf(codePage);
  auto table = had(bytesToUnicodeOf(&list));
  if (!traitsOf(codePage).hasC1InText) return table;
  for (unsigned short byte = 0x80; byte < 0xA0; ++byte) table->flat.units[byte] = byte;
  unsigned short units[256];
  std::copy(std::begin(table->flat.units), std::end(table->flat.units), units);
  layFlat(units, list.isLowerAscii(), table->flat);
  return table;
}

// The codes that are only read: pairs go to the table, what stands behind a lead of
// its own to its own rows.
void addReadOnly(int codePage, kernel::PairsToUnits& flat, ReadingTable& reading) {
  constexpr unsigned int cells = 94;
  constexpr unsigned int firstCell = 0xA1;
  for (const PackedReadOnly& codes : packedReadOnly) {
    if (codes.codePage != codePage) continue;
    const PackedList list = unpack(codes.text);
    if (codes.lead != 0) reading.threeByte.resize(std::size_t{cells} * cells);
    const auto takePair = [&](unsigned int code, unsigned int unit) {
      if (codes.lead == 0) {
        enterPair(code, unit, flat);
      } else {
        const std::size_t row = (code >> 8) - firstCell;
        reading.threeByte[row * cells + (code & 0xFF) - firstCell] =
            static_cast<unsigned short>(unit);
      }
      return true;
    };
    readMappings(
        list.body(), [](unsigned char, unsigned int) { return true; }, takePair);
  }
  completeRows(flat);
}

// The table of EUC-JP writes user-defined characters at codes of Shift_JIS. Those that
// nothing else has in EUC-JP it would read so too, though they are none there: their
// second bytes may be ASCII.
void dropCodesOfShiftJis(int codePage, kernel::PairsToUnits& flat) {
  if (traitsOf(codePage).leads != LeadBytes::eucJp) return;
  for (unsigned short& unit : flat.units) {
    if (unit >= 0xE000 && unit <= 0xE757) unit = 0;
  }
}

std::unique_ptr<PairsToUnicode> readPairs(int codePage, ReadingTable& reading) {
  std::unique_ptr<PairsToUnicode> table;
  if (sourceOf(codePage).changes) {
    table = had(reverseOf(*codesOf(codePage)));
  } else {
    const PackedList list = listOf(codePage);
    table = had(pairsToUnicodeOf(&list));
  }
  kernel::PairsToUnits& flat = table->flat;
  addReadOnly(codePage, flat, reading);
  dropCodesOfShiftJis(codePage, flat);
  for (unsigned int byte = 0; byte < reading.leads.size(); ++byte) {
    const unsigned short* row = flat.units + (byte << 8);
    const bool hasPairs =
        flat.isLead[byte] && std::any_of(row, row + 256, [](unsigned short unit) { return unit; });
    reading.leads[byte] = isLead(traitsOf(codePage).leads, byte);
    // One that begins nothing and has a meaning needs no second byte.
    reading.mayLead[byte] = hasPairs || (reading.leads[byte] && flat.bytes[byte] == 0);
    if (!reading.mayLead[byte]) continue;
    reading.leadsAlone[byte] = flat.bytes[byte];
    flat.bytes[byte] = 0;
  }
  return table;
}

bool isMultiByte(int codePage) {
  return codePage == codePageGb18030 || findCodePage(codePage).kind == CodePageKind::MultiByte;
}

std::shared_ptr<const ReadingTable> buildReading(int codePage) {
  auto reading = std::make_shared<ReadingTable>();
  if (isMultiByte(codePage)) {
    reading->table = readPairs(codePage, *reading);
  } else {
    reading->table = readBytes(codePage);
  }
  if (codePage == codePageGb18030) reading->fourByte = gb18030Reads;
  return reading;
}

// --- Writing -----------------------------------------------------------------

// What a code, as it is written, reads as; 0 for nothing.
unsigned int unitOf(const ReadingTable& reading, unsigned int code) {
  if (reading.table->kind == ToUnicodeTable::Kind::bytes) {
    return static_cast<const BytesToUnicode&>(*reading.table).flat.units[code];
  }
  const auto& flat = static_cast<const PairsToUnicode&>(*reading.table).flat;
  if (code >= 0x100) return flat.units[(code & 0xFF) << 8 | code >> 8];
  if (flat.isLowerAscii && code < 0x80) return code;
  return reading.mayLead[code] ? reading.leadsAlone[code] : flat.bytes[code];
}

// Whether a character that the table writes with a code that reads as another may be
// taken for a best fit: private characters look like nothing, and neither do controls.
bool isLookalike(unsigned int unit, unsigned int readAs) {
  const bool isPrivate = unit >= 0xE000 && unit <= 0xF8FF;
  const bool isControl = readAs >= 0x80 && readAs <= 0x9F;
  return readAs != 0 && !isPrivate && !isControl;
}

// What is not read back as itself goes, into `fits` where it looks like it.
void keepWhatComesBack(const ReadingTable& reading, UnitCodes& codes, std::vector<BestFit>& fits) {
  for (unsigned int unit = 1; unit < kernel::unitCount; ++unit) {
    if (codes.lengths[unit] == 0) continue;
    const unsigned short code = codes.codes[unit];
    const unsigned int readAs = unitOf(reading, code);
    if (readAs == unit) continue;
    codes.lengths[unit] = 0;
    codes.codes[unit] = 0;
    if (isLookalike(unit, readAs)) fits.push_back({static_cast<unsigned short>(unit), code});
  }
}

unsigned short asWritten(unsigned short code) {
  return code < 0x100 ? code : static_cast<unsigned short>(code >> 8 | (code & 0xFF) << 8);
}

// The table's own come first.
void addBestFits(int codePage, std::vector<BestFit>& fits) {
  for (const BestFits& known : packedBestFits) {
    if (known.codePage != codePage) continue;
    for (const BestFit& fit : known.fits) fits.push_back({fit.unit, asWritten(fit.code)});
  }
  const auto isBefore = [](const BestFit& a, const BestFit& b) { return a.unit < b.unit; };
  const auto isSame = [](const BestFit& a, const BestFit& b) { return a.unit == b.unit; };
  std::stable_sort(fits.begin(), fits.end(), isBefore);
  fits.erase(std::unique(fits.begin(), fits.end(), isSame), fits.end());
}

// Up to the last unit that has a code.
std::unique_ptr<FromUnicodeTable> layOutBytes(const UnitCodes& codes) {
  unsigned int count = kernel::unitCount;
  while (count > 1 && codes.lengths[count - 1] == 0 && !(codes.isLowerAscii && count - 1 < 0x80)) {
    --count;
  }
  auto table = std::make_unique<UnicodeToBytes>();
  table->codes = std::make_unique<unsigned char[]>(count);
  for (unsigned int unit = 1; unit < count; ++unit) {
    const bool isAscii = codes.isLowerAscii && unit < 0x80;
    table->codes[unit] = static_cast<unsigned char>(isAscii ? unit : codes.codes[unit]);
  }
  table->flat = {table->codes.get(), count};
  return table;
}

std::unique_ptr<FromUnicodeTable> layOut(int codePage, const UnitCodes& codes) {
  if (!isMultiByte(codePage)) return layOutBytes(codes);
  auto pairs = had(unicodeToPairsOf(codes));
  pairs->flat.codes[kernel::rawBytesUnit] = pairs->rawBytesCode;
  return pairs;
}

std::shared_ptr<const WritingTable> buildWriting(int codePage, const ReadingTable& reading) {
  auto writing = std::make_shared<WritingTable>();
  const auto codes = codesOf(codePage);
  if (traitsOf(codePage).hasC1InText) {
    for (unsigned int unit = 0x80; unit < 0xA0; ++unit) {
      codes->addByte(unit, static_cast<unsigned char>(unit));
    }
  }
  // All that GB 18030 writes it is meant to write: the private characters of its older
  // editions too, whose codes read as the characters that have taken their place.
  if (codePage != codePageGb18030) keepWhatComesBack(reading, *codes, writing->bestFits);
  addBestFits(codePage, writing->bestFits);
  writing->table = layOut(codePage, *codes);
  if (codePage == codePageGb18030) writing->fourByte = gb18030Writes;
  return writing;
}

std::shared_ptr<const JisLastBlock> buildLastBlock() {
  DataBuffer bytes;
  auto block = std::make_shared<JisLastBlock>();
  if (unpackBase64(sjisLastBlockText, qvStrLen(sjisLastBlockText), bytes) != Unpacked::whole ||
      bytes.getSize() != 2 * block->codes.size()) {
    throw std::bad_alloc();
  }
  const unsigned char* byte = bytes.getData2();
  for (unsigned short& code : block->codes) {
    code = static_cast<unsigned short>(byte[0] << 8 | byte[1]);
    byte += 2;
  }
  return block;
}

// --- What is kept ------------------------------------------------------------

struct Kept {
  std::mutex mutex;
  std::map<int, std::shared_ptr<const ReadingTable>> reading;
  std::map<int, std::shared_ptr<const WritingTable>> writing;
  std::shared_ptr<const JisLastBlock> lastBlock;
};

// There whenever it is first asked for, and until the process ends: other threads may
// still convert while it does.
Kept& kept() {
  static Kept* const all = new Kept;
  return *all;
}

void releaseAll() {
  Kept& all = kept();
  const std::lock_guard lock(all.mutex);
  all.reading.clear();
  all.writing.clear();
  all.lastBlock.reset();
}

// With the lock held. A table that could not be built leaves no trace.
std::shared_ptr<const ReadingTable> readingTableOf(int codePage, Kept& all) {
  const auto found = all.reading.find(codePage);
  if (found != all.reading.end()) return found->second;
  return all.reading.emplace(codePage, buildReading(codePage)).first->second;
}

}  // namespace

unsigned int WritingTable::codeOf(unsigned int unit) const {
  if (table->kind == FromUnicodeTable::Kind::pairs) {
    return static_cast<const UnicodeToPairs&>(*table).flat.codes[unit];
  }
  const kernel::UnitsToBytes& flat = static_cast<const UnicodeToBytes&>(*table).flat;
  return unit < flat.count ? flat.codes[unit] : 0;
}

std::shared_ptr<const ReadingTable> readingTable(int codePage) {
  Kept& all = kept();
  tableRegistry::alsoRelease(releaseAll);
  const std::lock_guard lock(all.mutex);
  return readingTableOf(codePage, all);
}

std::shared_ptr<const WritingTable> writingTable(int codePage) {
  Kept& all = kept();
  tableRegistry::alsoRelease(releaseAll);
  const std::lock_guard lock(all.mutex);
  const auto found = all.writing.find(codePage);
  if (found != all.writing.end()) return found->second;
  auto built = buildWriting(codePage, *readingTableOf(codePage, all));
  return all.writing.emplace(codePage, std::move(built)).first->second;
}

std::shared_ptr<const JisLastBlock> jisLastBlock() {
  Kept& all = kept();
  tableRegistry::alsoRelease(releaseAll);
  const std::lock_guard lock(all.mutex);
  if (!all.lastBlock) all.lastBlock = buildLastBlock();
  return all.lastBlock;
}

}  // namespace quorvel
