#pragma once

// Decodes UTF-8 in runs of characters of one length, whatever it becomes: text
// rarely changes script, so the branch of the last character is mostly that of the
// next. `Form` writes what becomes of a character and returns the position behind
// it: `putBasic` a code point up to U+FFFF, `putBeyond` any other, `widenRun` eight
// bytes of ASCII, each of which becomes `bytesPerAscii`.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Progress.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"

namespace quorvel::kernel::scalar::utf8_to_units {

// Four bytes as the number that loading them gives.
constexpr std::uint32_t fourBytes(unsigned char a, unsigned char b, unsigned char c,
                                  unsigned char d) {
  return std::bit_cast<std::uint32_t>(std::array{a, b, c, d});
}

inline std::uint32_t loadFour(const unsigned char* p) {
  std::uint32_t bytes = 0;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

inline unsigned int joinTwo(const unsigned char* in) {
  return (in[0] & 0x1FU) << 6 | (in[1] & 0x3FU);
}

inline unsigned int joinThree(const unsigned char* in) {
  return (in[0] & 0x0FU) << 12 | (in[1] & 0x3FU) << 6 | (in[2] & 0x3FU);
}

inline unsigned int joinFour(const unsigned char* in) {
  return (in[0] & 0x07U) << 18 | (in[1] & 0x3FU) << 12 | (in[2] & 0x3FU) << 6 | (in[3] & 0x3FU);
}

// The forms of characters as masks over their bytes and one that follows them: of
// E3 81 82 61 the mask F0 C0 C0 00 leaves E0 80 80 00, which three bytes have.

inline bool isTwo(std::uint32_t bytes) {
  return (bytes & fourBytes(0xE0, 0xC0, 0x00, 0x00)) == fourBytes(0xC0, 0x80, 0x00, 0x00);
}

inline bool isThree(std::uint32_t bytes) {
  return (bytes & fourBytes(0xF0, 0xC0, 0xC0, 0x00)) == fourBytes(0xE0, 0x80, 0x80, 0x00);
}

inline bool isFour(std::uint32_t bytes) {
  return (bytes & fourBytes(0xF8, 0xC0, 0xC0, 0xC0)) == fourBytes(0xF0, 0x80, 0x80, 0x80);
}

// Each decodes well-formed characters of one length while there are any and a
// byte follows them, or is part of them.

template <typename Form>
Position decodeTwos(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  for (; end - in >= 4 && isTwo(loadFour(in)); in += 2) {
    const unsigned int unit = joinTwo(in);
    if (unit < 0x80) break;
    out = Form::putBasic(unit, out);
  }
  return {in, out};
}

template <typename Form>
Position decodeThrees(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  for (; end - in >= 4 && isThree(loadFour(in)); in += 3) {
    const unsigned int unit = joinThree(in);
    if (unit < 0x800 || isSurrogate(unit)) break;
    out = Form::putBasic(unit, out);
  }
  return {in, out};
}

template <typename Form>
Position decodeFours(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  for (; end - in >= 4 && isFour(loadFour(in)); in += 4) {
    const unsigned int codePoint = joinFour(in);
    if (codePoint - 0x10000 >= 0x100000) break;
    out = Form::putBeyond(codePoint, out);
  }
  return {in, out};
}

// As `loadFour`, with zeros for the bytes from `end` on: none of them goes on
// with a character.
inline std::uint32_t loadUpToFour(const unsigned char* p, const unsigned char* end) {
  if (end - p >= 4) return loadFour(p);
  unsigned char bytes[4] = {};
  for (std::ptrdiff_t i = 0; i < end - p; ++i) bytes[i] = p[i];
  return loadFour(bytes);
}

// Takes the character at `in`, which is no ASCII; or nothing.
template <typename Form>
Position decodeOne(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  const std::uint32_t bytes = loadUpToFour(in, end);
  if (isTwo(bytes)) {
    const unsigned int unit = joinTwo(in);
    return unit < 0x80 ? Position{in, out} : Position{in + 2, Form::putBasic(unit, out)};
  }
  if (isThree(bytes)) {
    const unsigned int unit = joinThree(in);
    if (unit < 0x800 || isSurrogate(unit)) return {in, out};
    return {in + 3, Form::putBasic(unit, out)};
  }
  const bool isBeyond = isFour(bytes) && joinFour(in) - 0x10000 < 0x100000;
  return isBeyond ? Position{in + 4, Form::putBeyond(joinFour(in), out)} : Position{in, out};
}

// Out of line, so that the compiler sees only the loop below when it lays out its
// registers and what it inlines.
Stop whyStoppedAt(const unsigned char* in, const unsigned char* end);

template <typename Form>
Progress decode(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (in != end) {
    while (end - in >= runLength && isAsciiRun(in)) {
      Form::widenRun(in, out);
      in += runLength;
      out += Form::bytesPerAscii * runLength;
    }
    if (end - in >= runLength) {
      const unsigned int count = countAscii(in);
      Form::widenRun(in, out);
      in += count;
      out += std::size_t{Form::bytesPerAscii} * count;
    } else {
      while (in != end && *in < 0x80) out = Form::putBasic(*in++, out);
    }
    if (in == end) break;
    Position next = *in < 0xE0   ? decodeTwos<Form>(in, end, out)
                    : *in < 0xF0 ? decodeThrees<Form>(in, end, out)
                                 : decodeFours<Form>(in, end, out);
    if (next.in == in) {
      next = decodeOne<Form>(in, end, out);
      if (next.in == in) break;
    }
    in = next.in;
    out = next.out;
  }
  return {in, out, whyStoppedAt(in, end)};
}

}  // namespace quorvel::kernel::scalar::utf8_to_units
