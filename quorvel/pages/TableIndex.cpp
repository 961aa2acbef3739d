#include "quorvel/pages/TableIndex.hpp"

#include <algorithm>
#include <iterator>
#include <new>

#include "quorvel/pages/ArabicDigits.hpp"
#include "quorvel/pages/CodePages.hpp"

namespace quorvel {

namespace {

// Two ranges that together cover all leads: up to the first gap between them, and
// all behind it.
void coverLeads(kernel::PairsToUnits& index) {
  const bool* const begin = std::begin(index.isLead);
  const bool* const end = std::end(index.isLead);
  const auto range = [&](const bool* first, const bool* behind) {
    return kernel::PairsToUnits::Range{static_cast<unsigned char>(first - begin),
                                       static_cast<unsigned char>(behind - 1 - begin)};
  };
  const bool* const first = std::find(begin, end, true);
  if (first == end) return;
  const bool* const gap = std::find(first, end, false);
  const bool* const second = std::find(gap, end, true);
  index.leads[0] = range(first, gap);
  index.leads[1] = index.leads[0];
  if (second == end) return;
  const bool* last = end;
  while (!last[-1]) --last;
  index.leads[1] = range(second, last);
}

bool isWithin(unsigned int byte, const kernel::PairsToUnits::Range& range) {
  return byte >= range.first && byte <= range.last;
}

// Gives each byte that leads nothing its own unit, whatever follows it.
void fillRowsOfSingleBytes(kernel::PairsToUnits& index) {
  for (unsigned int byte = 0; byte < 0x100; ++byte) {
    if (index.isLead[byte]) continue;
    const bool isAscii = index.isLowerAscii && byte < 0x80;
    const auto unit = isAscii ? static_cast<unsigned short>(byte) : index.bytes[byte];
    std::fill_n(index.units + (byte << 8), isAscii ? 1 : 0x100, unit);
  }
}

// Calls `take(unit, code)` for every unit that a loop may encode without asking,
// once or, for ASCII that stands for itself and Arabic digits that become ASCII,
// twice. The order counts: what the table says about those is not asked.
template <typename Take>
void forEachCode(const HashConvert& fromUnicode, const Take& take) {
  fromUnicode.forEachMapping([&](const unsigned char* key, const unsigned char* code, int length) {
    const unsigned int unit = key[0] | static_cast<unsigned int>(key[1]) << 8;
    if (unit == 0 || unit == kernel::rawBytesUnit) return;
    take(unit, length == 1 ? code[0] : code[0] | static_cast<unsigned int>(code[1]) << 8);
  });
  if (fromUnicode.get_IsLowerAscii()) {
    for (unsigned int unit = 1; unit < 0x80; ++unit) take(unit, unit);
  }
  if (!findCodePage(fromUnicode.codePage()).traits.takesAsciiDigits) return;
  for (const unsigned int first : firstArabicDigits) {
    for (unsigned int unit = first; unit < first + 10; ++unit) take(unit, asciiDigitOf(unit));
  }
}

template <typename Index>
std::unique_ptr<Index> encodingIndexOf(const HashConvert& fromUnicode) {
  std::unique_ptr<Index> index(new (std::nothrow) Index{});
  if (!index) return nullptr;
  using Code = std::remove_reference_t<decltype(index->codes[0])>;
  forEachCode(fromUnicode, [&](unsigned int unit, unsigned int code) {
    index->codes[unit] = static_cast<Code>(code);
  });
  return index;
}

}  // namespace

std::unique_ptr<kernel::BytesToUnits> bytesToUnitsOf(const UnicodeLookup& lookup) {
  std::unique_ptr<kernel::BytesToUnits> index(new (std::nothrow) kernel::BytesToUnits{});
  if (!index) return nullptr;
  index->hasAsciiBelow80 = true;
  for (unsigned int byte = 1; byte < std::size(index->units); ++byte) {
    const unsigned short unit = lookup[byte];
    index->units[byte] = unit;
    index->lows[byte] = static_cast<unsigned char>(unit);
    index->highs[byte] = static_cast<unsigned char>(unit >> 8);
    if (byte < 0x80 && unit != byte) index->hasAsciiBelow80 = false;
    if (unit >= 0x100) index->hasUnitsFrom100 = true;
  }
  return index;
}

std::unique_ptr<kernel::PairsToUnits> pairsToUnitsOf(const HashConvert& toUnicode) {
  std::unique_ptr<kernel::PairsToUnits> index(new (std::nothrow) kernel::PairsToUnits{});
  if (!index) return nullptr;
  std::copy_n(toUnicode.m_byteToUnicode, std::size(index->bytes), index->bytes);
  index->isLowerAscii = toUnicode.get_IsLowerAscii();
  toUnicode.forEachMapping([&](const unsigned char* code, const unsigned char* unit, int) {
    if (index->isLowerAscii && code[0] < 0x80) return;
    index->isLead[code[0]] = true;
    index->units[code[0] << 8 | code[1]] = static_cast<unsigned short>(unit[0] | unit[1] << 8);
  });
  coverLeads(*index);
  for (unsigned int byte = 0; byte < std::size(index->isLead); ++byte) {
    if (isWithin(byte, index->leads[0]) || isWithin(byte, index->leads[1])) {
      index->isLead[byte] = true;
    }
  }
  fillRowsOfSingleBytes(*index);
  return index;
}

std::unique_ptr<kernel::UnitsToPairs> unitsToPairsOf(const HashConvert& fromUnicode) {
  return encodingIndexOf<kernel::UnitsToPairs>(fromUnicode);
}

std::unique_ptr<kernel::UnitsToBytes> unitsToBytesOf(const HashConvert& fromUnicode) {
  return encodingIndexOf<kernel::UnitsToBytes>(fromUnicode);
}

}  // namespace quorvel
