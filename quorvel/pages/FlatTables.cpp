// Lays what packed lists say flat for the loops of the kernel, one function for each kind
// of table. In a list the first record of a character counts, in a table of single bytes
// to decode with the last of a byte.

#include "quorvel/pages/FlatTables.hpp"

#include <algorithm>
#include <iterator>
#include <new>
#include <numeric>

#include "quorvel/pages/ArabicDigits.hpp"

namespace quorvel {

namespace {

template <typename Table>
std::unique_ptr<Table> make() {
  return std::unique_ptr<Table>(new (std::nothrow) Table);
}

// Two ranges that together cover all leads: up to the first gap between them, and
// all behind it.
void coverLeads(kernel::PairsToUnits& flat) {
  const bool* const begin = std::begin(flat.isLead);
  const bool* const end = std::end(flat.isLead);
  const auto range = [&](const bool* first, const bool* behind) {
    return kernel::PairsToUnits::Range{static_cast<unsigned char>(first - begin),
                                       static_cast<unsigned char>(behind - 1 - begin)};
  };
  const bool* const first = std::find(begin, end, true);
  if (first == end) return;
  const bool* const gap = std::find(first, end, false);
  const bool* const second = std::find(gap, end, true);
  flat.leads[0] = range(first, gap);
  flat.leads[1] = flat.leads[0];
  if (second == end) return;
  const bool* last = end;
  while (!last[-1]) --last;
  flat.leads[1] = range(second, last);
}

bool isWithin(unsigned int byte, const kernel::PairsToUnits::Range& range) {
  return byte >= range.first && byte <= range.last;
}

// Gives each byte that leads nothing its own unit, whatever follows it.
void fillRowsOfSingleBytes(kernel::PairsToUnits& flat) {
  for (unsigned int byte = 0; byte < 0x100; ++byte) {
    if (flat.isLead[byte]) continue;
    const bool isAscii = flat.isLowerAscii && byte < 0x80;
    const auto unit = isAscii ? static_cast<unsigned short>(byte) : flat.bytes[byte];
    std::fill_n(flat.units + (byte << 8), isAscii ? 1 : 0x100, unit);
  }
}

// The code that a loop gives for a unit without asking: ASCII that stands for
// itself does so whatever else the page says of it, which still counts when the
// page is turned round.
unsigned short codeOf(const UnitCodes& from, unsigned int unit) {
  if (unit == kernel::rawBytesUnit) return 0;
  const bool isAscii = from.isLowerAscii && unit < 0x80;
  return isAscii ? static_cast<unsigned short>(unit) : from.codes[unit];
}

// Calls `take(byte, unit)` for each single byte of a list, if there is one.
template <typename Take>
void forEachByte(const PackedList* list, const Take& take) {
  if (!list) return;
  const auto takeByte = [&](unsigned char byte, unsigned int unit) {
    take(byte, unit);
    return true;
  };
  readMappings(list->body(), takeByte, [](unsigned int, unsigned int) { return false; });
}

// One more than the last unit that a loop encodes. U+0000 is always among them.
unsigned int countOfUnits(const PackedList* list) {
  unsigned int count = list && list->isLowerAscii() ? 0x80 : 1;
  forEachByte(list, [&](unsigned char, unsigned int unit) {
    if (unit != kernel::rawBytesUnit) count = std::max(count, unit + 1);
  });
  return count;
}

bool fillBytes(const PackedList* list, unsigned int count, UnicodeToBytes& table) {
  table.codes.reset(new (std::nothrow) unsigned char[count]());
  if (!table.codes) return false;
  forEachByte(list, [&](unsigned char byte, unsigned int unit) {
    if (unit == kernel::rawBytesUnit) {
      if (table.rawBytesCode == 0) table.rawBytesCode = byte;
    } else if (table.codes[unit] == 0) {
      table.codes[unit] = byte;
    }
  });
  if (list && list->isLowerAscii()) {
    std::iota(table.codes.get(), table.codes.get() + 0x80, static_cast<unsigned char>(0));
  }
  table.flat = {table.codes.get(), count};
  return true;
}

unsigned short codeAsWritten(unsigned int code) {
  return static_cast<unsigned short>(code >> 8 | (code & 0xFF) << 8);
}

}  // namespace

void UnitCodes::addByte(unsigned int unit, unsigned char byte) {
  if (lengths[unit] != 0) return;
  lengths[unit] = 1;
  codes[unit] = byte;
}

void UnitCodes::addPair(unsigned int unit, unsigned int firstByte, unsigned int secondByte) {
  if (lengths[unit] != 0) return;
  lengths[unit] = 2;
  codes[unit] = static_cast<unsigned short>(firstByte | secondByte << 8);
}

void addList(const PackedList& list, UnitCodes& codes) {
  const auto remove = [&](unsigned int unit) { codes.lengths[unit] = 0, codes.codes[unit] = 0; };
  const auto addByte = [&](unsigned char byte, unsigned int unit) {
    if (list.isChanges()) remove(unit);
    codes.addByte(unit, byte);
    return true;
  };
  const auto addPair = [&](unsigned int code, unsigned int unit) {
    if (list.isChanges()) remove(unit);
    codes.addPair(unit, code >> 8, code & 0xFF);
    return true;
  };
  codes.isLowerAscii = list.isLowerAscii();
  if (list.isChanges()) {
    readChanges(list.body(), remove, addByte, addPair);
  } else {
    readMappings(list.body(), addByte, addPair);
  }
}

void layFlat(const unsigned short* units, bool isLowerAscii, kernel::BytesToUnits& flat) {
  flat.hasAsciiBelow80 = true;
  unsigned int countFrom100 = 0;
  for (unsigned int byte = 1; byte < std::size(flat.units); ++byte) {
    const bool isAscii = isLowerAscii && byte < 0x80;
    const auto unit = isAscii ? static_cast<unsigned short>(byte) : units[byte];
    flat.units[byte] = unit;
    flat.lows[byte] = static_cast<unsigned char>(unit);
    flat.highs[byte] = static_cast<unsigned char>(unit >> 8);
    if (byte < 0x80 && unit != byte) flat.hasAsciiBelow80 = false;
    if (unit < 0x100) continue;
    flat.byteFrom100 = countFrom100++ == 0 ? static_cast<unsigned char>(byte) : 0;
  }
  flat.hasUnitsFrom100 = countFrom100 != 0;
}

void enterPair(unsigned int code, unsigned int unit, kernel::PairsToUnits& flat) {
  const unsigned int lead = code >> 8;
  if ((flat.isLowerAscii && lead < 0x80) || flat.units[code] != 0) return;
  flat.isLead[lead] = true;
  flat.units[code] = static_cast<unsigned short>(unit);
}

void completeRows(kernel::PairsToUnits& flat) {
  coverLeads(flat);
  for (unsigned int byte = 0; byte < std::size(flat.isLead); ++byte) {
    if (isWithin(byte, flat.leads[0]) || isWithin(byte, flat.leads[1])) flat.isLead[byte] = true;
  }
  fillRowsOfSingleBytes(flat);
}

std::unique_ptr<BytesToUnicode> bytesToUnicodeOf(const PackedList* list) {
  auto table = make<BytesToUnicode>();
  if (!table) return nullptr;
  unsigned short units[256] = {};
  forEachByte(list, [&](unsigned char byte, unsigned int unit) {
    units[byte] = static_cast<unsigned short>(unit);
  });
  layFlat(units, list && list->isLowerAscii(), table->flat);
  return table;
}

std::unique_ptr<PairsToUnicode> pairsToUnicodeOf(const PackedList* list) {
  auto table = make<PairsToUnicode>();
  if (!table) return nullptr;
  kernel::PairsToUnits& flat = table->flat;
  if (list) {
    flat.isLowerAscii = list->isLowerAscii();
    readMappings(
        list->body(),
        [&](unsigned char byte, unsigned int unit) {
          flat.bytes[byte] = static_cast<unsigned short>(unit);
          return true;
        },
        [&](unsigned int code, unsigned int unit) {
          enterPair(code, unit, flat);
          return true;
        });
  }
  completeRows(flat);
  return table;
}

std::unique_ptr<PairsToUnicode> reverseOf(const UnitCodes& codes) {
  auto table = make<PairsToUnicode>();
  if (!table) return nullptr;
  kernel::PairsToUnits& flat = table->flat;
  flat.isLowerAscii = codes.isLowerAscii;
  for (unsigned int unit = 0; unit < kernel::unitCount; ++unit) {
    const unsigned short code = codes.codes[unit];
    if (codes.lengths[unit] == 2) enterPair(codeAsWritten(code), unit, flat);
    if (codes.lengths[unit] != 1 || flat.bytes[code] != 0) continue;
    flat.bytes[code] = static_cast<unsigned short>(unit);
  }
  completeRows(flat);
  return table;
}

std::unique_ptr<UnicodeToBytes> unicodeToBytesOf(const PackedList* list) {
  auto table = make<UnicodeToBytes>();
  if (!table || !fillBytes(list, countOfUnits(list), *table)) return nullptr;
  return table;
}

std::unique_ptr<UnicodeToBytes> unicodeToBytesAndDigitsOf(const PackedList* list) {
  constexpr unsigned int behindDigits = std::end(firstArabicDigits)[-1] + 10;
  auto table = make<UnicodeToBytesAndDigits>();
  if (!table || !fillBytes(list, std::max(countOfUnits(list), behindDigits), *table)) {
    return nullptr;
  }
  for (std::size_t set = 0; set < std::size(firstArabicDigits); ++set) {
    for (unsigned int digit = 0; digit < 10; ++digit) {
      unsigned char& code = table->codes[firstArabicDigits[set] + digit];
      table->ownDigits[set][digit] = code;
      code = static_cast<unsigned char>(asciiDigitOf(digit));
    }
  }
  return table;
}

std::unique_ptr<UnicodeToPairs> unicodeToPairsOf(const UnitCodes& codes) {
  auto table = make<UnicodeToPairs>();
  if (!table) return nullptr;
  for (unsigned int unit = 0; unit < kernel::unitCount; ++unit) {
    table->flat.codes[unit] = codeOf(codes, unit);
  }
  table->rawBytesCode = codes.codes[kernel::rawBytesUnit];
  return table;
}

}  // namespace quorvel
