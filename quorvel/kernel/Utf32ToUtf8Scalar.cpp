#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/kernel/Utf8ToUnitsScalar.hpp"

namespace quorvel::kernel::scalar {

namespace {

// UTF-32 out of UTF-8.
struct ThirtyTwo {
  static constexpr unsigned int bytesPerAscii = 4;

  static unsigned char* put(char32_t codePoint, unsigned char* out) {
    std::memcpy(out, &codePoint, sizeof codePoint);
    return out + sizeof codePoint;
  }

  static unsigned char* putAscii(char32_t codePoint, unsigned char* out) {
    return put(codePoint, out);
  }

  static unsigned char* putBasic(char32_t codePoint, unsigned char* out) {
    return put(codePoint, out);
  }

  static unsigned char* putBeyond(char32_t codePoint, unsigned char* out) {
    return put(codePoint, out);
  }

  static void widenRun(const unsigned char* in, unsigned char* out) {
    for (std::ptrdiff_t i = 0; i < runLength; ++i) out = put(in[i], out);
  }
};

constexpr std::ptrdiff_t unitLength = 4;
constexpr std::ptrdiff_t unitsPerRun = 4;

char32_t unitAt(const unsigned char* p) {
  char32_t unit = 0;
  std::memcpy(&unit, p, sizeof unit);
  return unit;
}

// Writes units of ASCII as long as there are four of them.
Progress narrowRuns(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  constexpr std::uint64_t others = 0xFFFFFF80FFFFFF80U;
  while (end - in >= unitsPerRun * unitLength) {
    if (((loadRun(in) | loadRun(in + runLength)) & others) != 0) break;
    for (std::ptrdiff_t i = 0; i < unitsPerRun; ++i) {
      *out++ = static_cast<unsigned char>(unitAt(in + i * unitLength));
    }
    in += unitsPerRun * unitLength;
  }
  return {in, out};
}

}  // namespace

Progress utf8ToUtf32(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return utf8_runs::decode<ThirtyTwo>(in, end, out);
}

Progress utf32ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= unitLength) {
    const char32_t unit = unitAt(in);
    if (!isScalarValue(unit)) break;
    out = encodeUtf8(unit, out);
    in += unitLength;
    if (unit >= 0x80) continue;
    const Progress progress = narrowRuns(in, end, out);
    in = progress.in;
    out = progress.out;
  }
  return {in, out};
}

}  // namespace quorvel::kernel::scalar
