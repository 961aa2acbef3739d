#include "quorvel/support/TableIndex.h"

#include <algorithm>
#include <new>

#include "quorvel/support/ArabicDigits.h"

namespace quorvel {

namespace {

constexpr std::size_t allUnits = 0x10000;

std::unique_ptr<unsigned short[]> zeros() {
  return std::unique_ptr<unsigned short[]>(new (std::nothrow) unsigned short[allUnits]());
}

// Calls `take(unit, code)` for every unit that a loop may encode without asking,
// once or, for ASCII that stands for itself and Arabic digits that become ASCII,
// twice. The order counts: what the table says about those is not asked.
template <typename Take>
void forEachCode(const HashConvert& fromUnicode, const Take& take) {
  fromUnicode.forEachMapping([&](const unsigned char* key, const unsigned char* code, int length) {
    const unsigned int unit = key[0] | static_cast<unsigned int>(key[1]) << 8;
    if (unit == 0 || unit == rawBytesUnit) return;
    take(unit, length == 1 ? code[0] : code[0] | static_cast<unsigned int>(code[1]) << 8);
  });
  if (fromUnicode.get_IsLowerAscii()) {
    for (unsigned int unit = 1; unit < 0x80; ++unit) take(unit, unit);
  }
  if (!takesAsciiDigits(fromUnicode.codePage())) return;
  for (const unsigned int first : firstArabicDigits) {
    for (unsigned int unit = first; unit < first + 10; ++unit) take(unit, asciiDigitOf(unit));
  }
}

}  // namespace

std::unique_ptr<PairIndex> PairIndex::of(const HashConvert& toUnicode) {
  std::unique_ptr<PairIndex> index(new (std::nothrow) PairIndex);
  if (!index || !(index->m_pairs = zeros())) return nullptr;
  std::copy_n(toUnicode.m_byteToUnicode, std::size(index->m_bytes), index->m_bytes);
  index->m_isLowerAscii = toUnicode.get_IsLowerAscii();
  toUnicode.forEachMapping([&](const unsigned char* code, const unsigned char* unit, int) {
    if (index->m_isLowerAscii && code[0] < 0x80) return;
    index->m_pairs[static_cast<std::size_t>(code[0]) << 8 | code[1]] =
        static_cast<unsigned short>(unit[0] | unit[1] << 8);
  });
  return index;
}

std::unique_ptr<CodeIndex> CodeIndex::of(const HashConvert& fromUnicode) {
  std::unique_ptr<CodeIndex> index(new (std::nothrow) CodeIndex);
  if (!index || !(index->m_codes = zeros())) return nullptr;
  forEachCode(fromUnicode, [&](unsigned int unit, unsigned int code) {
    index->m_codes[unit] = static_cast<unsigned short>(code);
  });
  return index;
}

std::unique_ptr<ByteIndex> ByteIndex::of(const HashConvert& fromUnicode) {
  std::unique_ptr<ByteIndex> index(new (std::nothrow) ByteIndex);
  if (!index) return nullptr;
  // The first row has no entries and serves all units that are not mapped.
  std::fill(std::begin(index->m_rowOf), std::end(index->m_rowOf), static_cast<unsigned char>(0));
  unsigned char rows = 1;
  forEachCode(fromUnicode, [&](unsigned int unit, unsigned int) {
    unsigned char& row = index->m_rowOf[unit >> 8];
    if (row == 0) row = rows++;
  });
  index->m_rows.reset(new (std::nothrow) unsigned char[rows][256]());
  if (!index->m_rows) return nullptr;
  forEachCode(fromUnicode, [&](unsigned int unit, unsigned int code) {
    index->m_rows[index->m_rowOf[unit >> 8]][unit & 0xFF] = static_cast<unsigned char>(code);
  });
  return index;
}

}  // namespace quorvel
