#include "quorvel/support/TableLoops.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "quorvel/support/PassthroughMarker.h"

namespace quorvel {

namespace {

unsigned char* putUnit(unsigned int unit, unsigned char* out) {
  *out++ = static_cast<unsigned char>(unit);
  *out++ = static_cast<unsigned char>(unit >> 8);
  return out;
}

// Eight bytes are looked at at once; the answer depends on no byte order.
constexpr std::ptrdiff_t runLength = 8;

bool isAsciiRun(const unsigned char* in) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, in, sizeof bytes);
  return (bytes & 0x8080808080808080U) == 0;
}

// Four units, low byte first, all below U+0080.
bool isAsciiUnitRun(const unsigned char* in) {
  constexpr unsigned char maskBytes[] = {0x80, 0xFF, 0x80, 0xFF, 0x80, 0xFF, 0x80, 0xFF};
  std::uint64_t units = 0;
  std::uint64_t mask = 0;
  std::memcpy(&units, in, sizeof units);
  std::memcpy(&mask, maskBytes, sizeof mask);
  return (units & mask) == 0;
}

// The answer to one look-up: bytes written at `out`, or how many there are not.
// Zero means no mapping, a negative length a key that is skipped without a word.
int probe(const HashConvert& hash, const unsigned char* key, unsigned char* out) {
  const unsigned char* slot = hash.slotOf(key);
  int length = 0;
  if (HashConvert::isEmpty(slot)) {
    if (hash.m_hasRemovals) hash.hcLookup(key, out, length);
  } else if (slot[0] != key[0] || slot[1] != key[1]) {
    hash.hcLookup(key, out, length);
  } else {
    out[0] = slot[2];
    if (slot[4]) return 1;
    out[1] = slot[3];
    return 2;
  }
  return length;
}

int decodePair(const ProbedTable& table, const unsigned char* in, unsigned char* out) {
  return probe(table.hash, in, out);
}

int decodePair(const IndexedTable& table, const unsigned char* in, unsigned char* out) {
  const unsigned int unit = table.index.entry(in[0], in[1]);
  if (unit == 0) return 0;
  putUnit(unit, out);
  return 2;
}

int encodeUnit(const ProbedTable& table, const unsigned char* in, unsigned char* out) {
  return probe(table.hash, in, out);
}

int encodeUnit(const IndexedTable& table, const unsigned char* in, unsigned char* out) {
  const unsigned int code = table.index.entry(in[1], in[0]);
  if (code == 0) return 0;
  if (code < 0x100) {
    *out = static_cast<unsigned char>(code);
    return 1;
  }
  out[0] = static_cast<unsigned char>(code >> 8);
  out[1] = static_cast<unsigned char>(code);
  return 2;
}

template <typename Table>
Progress decodeMulti(const Table& table, const unsigned char* in, const unsigned char* stop,
                     const unsigned char* end, unsigned char* out) {
  const bool isLowerAscii = table.hash.get_IsLowerAscii();
  const unsigned short* singleBytes = table.hash.m_byteToUnicode;
  while (in < stop) {
    if (isLowerAscii && *in < 0x80) {
      while (stop - in >= runLength && isAsciiRun(in)) {
        for (std::ptrdiff_t i = 0; i < runLength; ++i) out = putUnit(in[i], out);
        in += runLength;
      }
      while (in < stop && *in < 0x80) out = putUnit(*in++, out);
      continue;
    }
    // A zero byte stands for itself only where nothing follows it.
    const bool isLast = end - in == 1;
    const int length = isLast ? 0 : decodePair(table, in, out);
    if (length != 0) {
      out += std::max(length, 0);
      in += 2;
      continue;
    }
    const unsigned int unit = singleBytes[*in];
    if (unit == 0 && !(isLast && *in == 0)) break;
    out = putUnit(isLast && *in == 0 ? 0 : unit, out);
    ++in;
  }
  return {in, out};
}

template <typename Table>
Progress encodeOne(const Table& table, const unsigned char* in, unsigned char* out) {
  if (in[1] == 0 && in[0] < 0x80 && table.hash.get_IsLowerAscii()) {
    *out++ = in[0];
    return {in + 2, out};
  }
  const int length = encodeUnit(table, in, out);
  if (length != 0) return {in + 2, out + std::max(length, 0)};
  if ((in[0] | in[1]) != 0) return {in, out};
  *out++ = 0;
  return {in + 2, out};
}

template <typename Table>
Progress encodeMany(const Table& table, const unsigned char* in, const unsigned char* end,
                    unsigned char* out) {
  const bool isLowerAscii = table.hash.get_IsLowerAscii();
  while (end - in >= 2) {
    if (isLowerAscii) {
      while (end - in >= runLength && isAsciiUnitRun(in)) {
        for (std::ptrdiff_t i = 0; i < runLength; i += 2) *out++ = in[i];
        in += runLength;
      }
      if (end - in < 2) break;
    }
    if (in[0] == passthroughMarker[0] && in[1] == passthroughMarker[1]) break;
    const Progress progress = encodeOne(table, in, out);
    if (progress.in == in) break;
    in = progress.in;
    out = progress.out;
  }
  return {in, out};
}

}  // namespace

Progress decodeSingleBytes(const UnicodeLookup& lookup, const unsigned char* in,
                           const unsigned char* end, unsigned char* out) {
  for (; in != end; ++in) {
    const unsigned int unit = lookup.m_units[*in];
    if (*in != 0 && unit == 0) break;
    out = putUnit(*in != 0 ? unit : 0, out);
  }
  return {in, out};
}

Progress decodeMultiBytes(const ProbedTable& table, const unsigned char* in,
                          const unsigned char* stop, const unsigned char* end, unsigned char* out) {
  return decodeMulti(table, in, stop, end, out);
}

Progress decodeMultiBytes(const IndexedTable& table, const unsigned char* in,
                          const unsigned char* stop, const unsigned char* end, unsigned char* out) {
  return decodeMulti(table, in, stop, end, out);
}

Progress encodeUnits(const ProbedTable& table, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  return encodeMany(table, in, end, out);
}

Progress encodeUnits(const IndexedTable& table, const unsigned char* in, const unsigned char* end,
                     unsigned char* out) {
  return encodeMany(table, in, end, out);
}

Progress encodeOneUnit(const ProbedTable& table, const unsigned char* in, unsigned char* out) {
  return encodeOne(table, in, out);
}

Progress encodeOneUnit(const IndexedTable& table, const unsigned char* in, unsigned char* out) {
  return encodeOne(table, in, out);
}

}  // namespace quorvel
