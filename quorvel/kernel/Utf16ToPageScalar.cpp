// UTF-16 to code pages by their tables, unit by unit.

#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"

namespace quorvel::kernel::scalar {

namespace {

unsigned char* putOne(unsigned int code, unsigned char* out) {
  *out = static_cast<unsigned char>(code);
  return out + 1;
}

// Two bytes are written where there is room for them, whatever the length.
unsigned char* putOneOrTwo(unsigned int code, unsigned char* out) {
  putUnit(code, out);
  return out + (code < 0x100 ? 1 : 2);
}

// By the codes of the units below `count`.
template <typename Code, typename PutCode>
inline Progress encode(const Code* codes, unsigned int count, Position at, const unsigned char* end,
                       const PutCode& putCode) {
  for (; end - at.in >= 2; at.in += 2) {
    const unsigned int unit = loadUnit(at.in);
    if (unit >= count) return {at.in, at.out, Stop::met};
    const unsigned int code = codes[unit];
    if (code == 0 && unit != 0) return {at.in, at.out, Stop::met};
    at.out = putCode(code, at.out);
  }
  return {at.in, at.out, at.in == end ? Stop::end : Stop::cutOff};
}

}  // namespace

Progress unitsToBytes(const UnitsToBytes& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return encode(table.codes, table.count, {in, out}, end, putOne);
}

Progress unitsToPairs(const UnitsToPairs& table, const unsigned char* in, const unsigned char* end,
                      unsigned char* out) {
  return encode(table.codes, unitCount, {in, out}, end, putOneOrTwo);
}

}  // namespace quorvel::kernel::scalar
