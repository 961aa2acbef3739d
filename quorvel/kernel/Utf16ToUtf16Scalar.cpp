// UTF-16 in either byte order, checked: four units at a time that are characters by
// themselves, else one character.

#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Order.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"

namespace quorvel::kernel::scalar {

namespace {

constexpr std::uint64_t exchanged(std::uint64_t units) {
  constexpr std::uint64_t lows = 0x00FF00FF00FF00FFU;
  return (units & lows) << 8 | (units >> 8 & lows);
}

bool hasSurrogate(std::uint64_t units) {
  return hasZeroUnit((units & 0xF800 * inEachUnit) ^ 0xD800 * inEachUnit);
}

template <Order source>
unsigned int unitAt(const unsigned char* in) {
  const unsigned int unit = loadUnit(in);
  return source == Order::lowFirst ? unit : (unit << 8 & 0xFF00U) | unit >> 8;
}

template <Order source, Order destination>
unsigned char* moveUnit(const unsigned char* in, unsigned char* out) {
  const unsigned char bytes[] = {in[0], in[1]};
  out[0] = bytes[source == destination ? 0 : 1];
  out[1] = bytes[source == destination ? 1 : 0];
  return out + 2;
}

template <Order source, Order destination>
Position moveRuns(Position at, const unsigned char* end) {
  while (end - at.in >= runLength) {
    std::uint64_t units = loadRun(at.in);
    if (hasSurrogate(source == Order::lowFirst ? units : exchanged(units))) break;
    if (source != destination) units = exchanged(units);
    std::memcpy(at.out, &units, sizeof units);
    at = {at.in + runLength, at.out + runLength};
  }
  return at;
}

template <Order source, Order destination>
Progress move(Position at, const unsigned char* end) {
  for (;;) {
    at = moveRuns<source, destination>(at, end);
    if (at.in == end) return {at.in, at.out, Stop::end};
    if (end - at.in < 2) return {at.in, at.out, Stop::cutOff};
    const unsigned int unit = unitAt<source>(at.in);
    if (isLowSurrogate(unit)) return {at.in, at.out, Stop::met};
    if (isHighSurrogate(unit)) {
      if (end - at.in < 4) return {at.in, at.out, Stop::cutOff};
      if (!isLowSurrogate(unitAt<source>(at.in + 2))) return {at.in, at.out, Stop::met};
      at = {at.in + 2, moveUnit<source, destination>(at.in, at.out)};
    }
    at = {at.in + 2, moveUnit<source, destination>(at.in, at.out)};
  }
}

}  // namespace

Progress utf16ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return move<Order::lowFirst, Order::lowFirst>({in, out}, end);
}

Progress utf16ToUtf16Be(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return move<Order::lowFirst, Order::highFirst>({in, out}, end);
}

Progress utf16BeToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return move<Order::highFirst, Order::lowFirst>({in, out}, end);
}

}  // namespace quorvel::kernel::scalar
