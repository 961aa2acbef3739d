// The bytes of a table, in the form that PackedList.hpp of the library reads: differences
// between neighbours, as those compress well.

#include "tools/TableBytes.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace pack {

namespace {

using Records = std::vector<Record>;

void put16(Bytes& bytes, unsigned int value) {
  bytes.push_back(static_cast<unsigned char>(value & 0xFF));
  bytes.push_back(static_cast<unsigned char>(value >> 8 & 0xFF));
}

Records recordsOfLength(const Records& records, std::size_t codeLength) {
  Records chosen;
  std::copy_if(records.begin(), records.end(), std::back_inserter(chosen),
               [=](const Record& record) { return record.codeLength == codeLength; });
  return chosen;
}

std::set<unsigned int> codesOf(const Records& records, bool bestFits) {
  std::set<unsigned int> codes;
  for (const Record& record : records) {
    if (record.isBestFit == bestFits) codes.insert(record.code);
  }
  return codes;
}

// The records ascend by character, except where a best fit would then decide
// what the code that it shares decodes to.
void sortByUnit(Records& records) {
  std::sort(records.begin(), records.end(), [](const Record& a, const Record& b) {
    return a.unit != b.unit ? a.unit < b.unit : a.code < b.code;
  });
}

// Of the one-byte records with the same code the last one decides, so a best
// fit that shares its code goes first of all.
void orderSingleByte(Records& records) {
  sortByUnit(records);
  const std::set<unsigned int> mapped = codesOf(records, false);
  std::stable_partition(records.begin(), records.end(), [&](const Record& record) {
    return record.isBestFit && mapped.contains(record.code);
  });
}

// Of the two-byte records with the same code the first one decides, so a
// mapping that shares its code goes before the first best fit.
void orderDoubleByte(Records& records) {
  sortByUnit(records);
  const std::set<unsigned int> fitted = codesOf(records, true);
  const auto firstBestFit = std::find_if(records.begin(), records.end(),
                                         [](const Record& record) { return record.isBestFit; });
  std::stable_partition(firstBestFit, records.end(), [&](const Record& record) {
    return !record.isBestFit && fitted.contains(record.code);
  });
}

// A code of 0 bytes further on ends the list, so no record can repeat the code
// before it.
void checkDelta(unsigned int delta, const Record& record, const std::filesystem::path& file) {
  if (delta == 0) {
    throw InputError(file, record.line, "the packed list cannot repeat a code at once");
  }
}

// Keys and codes stand here as they are. The mark for the lower half holds for
// the page as a whole, and the page keeps its ASCII.
Bytes changeList(const MappingFile& mapping) {
  Bytes bytes = {'a', 'd'};
  for (const unsigned int unit : mapping.removed) put16(bytes, unit);
  put16(bytes, 0);
  for (const Record& record : recordsOfLength(mapping.records, 1)) {
    bytes.push_back(static_cast<unsigned char>(record.code));
    put16(bytes, record.unit);
  }
  bytes.push_back(0);
  for (const Record& record : recordsOfLength(mapping.records, 2)) {
    bytes.push_back(static_cast<unsigned char>(record.code >> 8));
    bytes.push_back(static_cast<unsigned char>(record.code & 0xFF));
    put16(bytes, record.unit);
  }
  put16(bytes, 0);
  return bytes;
}

}  // namespace

// Every record adds to the sums of those before it. Both sums may wrap.
Bytes completeList(const std::filesystem::path& file, bool lowerHalfIsAscii,
                   const std::vector<Record>& records) {
  Bytes bytes = {static_cast<unsigned char>(lowerHalfIsAscii ? 'a' : 'x'), 'u'};

  Records singles = recordsOfLength(records, 1);
  orderSingleByte(singles);
  unsigned int code = 0;
  unsigned int unit = 0;
  for (const Record& record : singles) {
    const unsigned int delta = (record.code - code) & 0xFF;
    checkDelta(delta, record, file);
    bytes.push_back(static_cast<unsigned char>(delta));
    put16(bytes, record.unit - unit);
    code = record.code;
    unit = record.unit;
  }
  bytes.push_back(0);

  Records doubles = recordsOfLength(records, 2);
  orderDoubleByte(doubles);
  code = unit = 0;
  for (const Record& record : doubles) {
    const unsigned int delta = (record.code - code) & 0xFFFF;
    checkDelta(delta, record, file);
    put16(bytes, delta);
    put16(bytes, record.unit - unit);
    code = record.code;
    unit = record.unit;
  }
  put16(bytes, 0);
  return bytes;
}

Bytes tableBytes(const MappingFile& mapping) {
  return mapping.changes.codePage
             ? changeList(mapping)
             : completeList(mapping.path, mapping.lowerHalfIsAscii, mapping.records);
}

}  // namespace pack
