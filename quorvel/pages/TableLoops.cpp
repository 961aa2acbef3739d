// The loops over a caller's table, character by character: the slot that a character
// belongs to is probed, and where that does not decide, the table is asked.

#include "quorvel/pages/TableLoops.hpp"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"

namespace quorvel {

namespace {

unsigned char ownCode(const UnicodeToBytesAndDigits& table, unsigned int unit) {
  for (std::size_t set = 0; set < std::size(firstArabicDigits); ++set) {
    const unsigned int digit = unit - firstArabicDigits[set];
    if (digit < 10) return table.ownDigits[set][digit];
  }
  return unit < table.flat.count ? table.flat.codes[unit] : 0;
}

// The answer to one look-up: bytes written at `out`, or how many there are not.
// Zero means no mapping, a negative length a key that is skipped without a word.
int probe(const HashConvert& table, const unsigned char* key, unsigned char* out) {
  const unsigned char* slot = table.slotOf(key);
  int length = 0;
  if (HashConvert::isEmpty(slot)) {
    if (table.m_hasRemovals) table.hcLookup(key, out, length);
  } else if (slot[0] != key[0] || slot[1] != key[1]) {
    table.hcLookup(key, out, length);
  } else {
    out[0] = slot[2];
    if (slot[4]) return 1;
    out[1] = slot[3];
    return 2;
  }
  return length;
}

}  // namespace

Progress decodeMultiBytes(const HashConvert& table, const unsigned char* in,
                          const unsigned char* stop, const unsigned char* end, unsigned char* out) {
  const bool isLowerAscii = table.get_IsLowerAscii();
  while (in < stop) {
    if (isLowerAscii && *in < 0x80) {
      out = putUnit(*in++, out);
      continue;
    }
    // contract: a zero byte without a mapping stands for itself only where nothing
    // follows it; elsewhere it is an error like others. Callers who convert a text
    // with the NUL behind it rely on that NUL.
    const bool isLast = end - in == 1;
    const int length = isLast ? 0 : probe(table, in, out);
    if (length != 0) {
      out += std::max(length, 0);
      in += 2;
      continue;
    }
    const unsigned int unit = table.m_byteToUnicode[*in];
    if (unit == 0 && !(isLast && *in == 0)) return {in, out, Stop::met};
    out = putUnit(isLast && *in == 0 ? 0 : unit, out);
    ++in;
  }
  return {in, out, Stop::end};
}

Position encodeOneUnit(const HashConvert& table, const unsigned char* in, unsigned char* out) {
  if (in[1] == 0 && in[0] < 0x80 && table.get_IsLowerAscii()) {
    *out++ = in[0];
    return {in + 2, out};
  }
  const int length = probe(table, in, out);
  if (length != 0) return {in + 2, out + std::max(length, 0)};
  if ((in[0] | in[1]) != 0) return {in, out};
  *out++ = 0;
  return {in + 2, out};
}

Progress encodeUnits(const HashConvert& table, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  while (end - in >= 2) {
    if (loadUnit(in) == kernel::rawBytesUnit) return {in, out, Stop::met};
    const Position next = encodeOneUnit(table, in, out);
    if (next.in == in) return {in, out, Stop::met};
    in = next.in;
    out = next.out;
  }
  return {in, out, in == end ? Stop::end : Stop::cutOff};
}

Position encodeWhereStopped(const FromUnicodeTable& table, const unsigned char* in,
                            unsigned char* out) {
  const unsigned int code = table.rawBytesCode;
  if (code == 0 || loadUnit(in) != kernel::rawBytesUnit) return {in, out};
  *out++ = static_cast<unsigned char>(code);
  if (code >= 0x100) *out++ = static_cast<unsigned char>(code >> 8);
  return {in + 2, out};
}

Progress encodeWithOwnDigits(const UnicodeToBytesAndDigits& table, const unsigned char* in,
                             const unsigned char* end, unsigned char* out) {
  for (; end - in >= 2; in += 2) {
    const unsigned int unit = loadUnit(in);
    const unsigned char code = ownCode(table, unit);
    if (code == 0 && unit != 0) return {in, out, Stop::met};
    *out++ = code;
  }
  return {in, out, in == end ? Stop::end : Stop::cutOff};
}

}  // namespace quorvel
