#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorvel/base/Progress.h"
#include "quorvel/base/Utf16Unit.h"
#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/base/kernel/AsciiRun.h"

/// Decodes UTF-8 in runs of characters of one length, whatever it becomes. `Form`
/// writes that and returns the position behind it: `putBasic` a code point up to
/// U+FFFF, `putBeyond` any other, `widenRun` eight bytes of ASCII, each of which
/// becomes `bytesPerAscii`.
namespace quorvel::kernel::utf8_runs {

// Four bytes as a number in host order.
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

// Pairs of two-byte characters. Their form is that of one mask; only C0 and C1,
// which would be overlong, have none of the bits 1E.
template <typename Form>
Progress decodeTwos(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 4) {
    const std::uint32_t bytes = loadFour(in);
    if ((bytes & fourBytes(0xE0, 0xC0, 0xE0, 0xC0)) != fourBytes(0xC0, 0x80, 0xC0, 0x80)) break;
    if ((in[0] & 0x1E) == 0 || (in[2] & 0x1E) == 0) break;
    out = Form::putBasic(joinTwo(in), out);
    out = Form::putBasic(joinTwo(in + 2), out);
    in += 4;
  }
  return {in, out};
}

// Three-byte characters that a fourth byte follows.
template <typename Form>
Progress decodeThrees(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 4) {
    const std::uint32_t bytes = loadFour(in);
    if ((bytes & fourBytes(0xF0, 0xC0, 0xC0, 0x00)) != fourBytes(0xE0, 0x80, 0x80, 0x00)) break;
    const unsigned int unit = joinThree(in);
    if (unit < 0x800 || isSurrogate(unit)) break;
    out = Form::putBasic(unit, out);
    in += 3;
  }
  return {in, out};
}

template <typename Form>
Progress decodeFours(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 4) {
    const std::uint32_t bytes = loadFour(in);
    if ((bytes & fourBytes(0xF8, 0xC0, 0xC0, 0xC0)) != fourBytes(0xF0, 0x80, 0x80, 0x80)) break;
    const unsigned int codePoint =
        (in[0] & 0x07U) << 18 | (in[1] & 0x3FU) << 12 | (in[2] & 0x3FU) << 6 | (in[3] & 0x3FU);
    if (codePoint - 0x10000 >= 0x100000) break;
    out = Form::putBeyond(codePoint, out);
    in += 4;
  }
  return {in, out};
}

template <typename Form>
Progress decodeOne(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  const Utf8Sequence sequence = decodeUtf8(in, static_cast<std::size_t>(end - in));
  if (!sequence.isWellFormed) return {in, out};
  out = sequence.length == 4   ? Form::putBeyond(sequence.codePoint, out)
        : sequence.length == 1 ? Form::putAscii(sequence.codePoint, out)
                               : Form::putBasic(sequence.codePoint, out);
  return {in + sequence.length, out};
}

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
    }
    Progress progress = decodeTwos<Form>(in, end, out);
    progress = decodeThrees<Form>(progress.in, end, progress.out);
    progress = decodeFours<Form>(progress.in, end, progress.out);
    if (progress.in == in && in != end) {
      progress = decodeOne<Form>(in, end, out);
      if (progress.in == in) break;
    }
    in = progress.in;
    out = progress.out;
  }
  return {in, out};
}

}  // namespace quorvel::kernel::utf8_runs
