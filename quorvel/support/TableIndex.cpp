#include "quorvel/support/TableIndex.h"

#include <new>

namespace quorvel {

namespace {

constexpr std::size_t rowLength = 256;

}  // namespace

// `entries` calls its argument with (high, low, value) for every entry; it runs
// twice, once to see which rows there are and once to fill them.
template <typename Entries>
bool TableIndex::fill(const Entries& entries) {
  unsigned int rowOf[256] = {};  // 0 is the row without entries
  unsigned int rows = 1;
  entries([&](unsigned int high, unsigned int, unsigned int) {
    if (rowOf[high] == 0) rowOf[high] = rows++;
  });
  m_storage.reset(new (std::nothrow) unsigned short[rows * rowLength]());
  if (!m_storage) return false;
  entries([&](unsigned int high, unsigned int low, unsigned int value) {
    m_storage[rowOf[high] * rowLength + low] = static_cast<unsigned short>(value);
  });
  for (unsigned int high = 0; high < 256; ++high) {
    m_rows[high] = m_storage.get() + rowOf[high] * rowLength;
  }
  return true;
}

std::unique_ptr<TableIndex> TableIndex::ofPairs(const HashConvert& toUnicode) {
  std::unique_ptr<TableIndex> index(new (std::nothrow) TableIndex);
  const auto entries = [&](const auto& take) {
    toUnicode.forEachMapping([&](const unsigned char* code, const unsigned char* unit, int) {
      take(code[0], code[1], unit[0] | static_cast<unsigned int>(unit[1]) << 8);
    });
  };
  return index && index->fill(entries) ? std::move(index) : nullptr;
}

std::unique_ptr<TableIndex> TableIndex::ofUnits(const HashConvert& fromUnicode) {
  std::unique_ptr<TableIndex> index(new (std::nothrow) TableIndex);
  const auto entries = [&](const auto& take) {
    fromUnicode.forEachMapping(
        [&](const unsigned char* unit, const unsigned char* code, int codeLength) {
          take(unit[1], unit[0],
               codeLength == 1 ? code[0] : static_cast<unsigned int>(code[0]) << 8 | code[1]);
        });
  };
  return index && index->fill(entries) ? std::move(index) : nullptr;
}

}  // namespace quorvel
