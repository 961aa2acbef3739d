// UTF-32 to UTF-8, unit by unit, and ASCII four units at a time.

#include <cstddef>
#include <cstdint>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf32Unit.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"

namespace quorvel::kernel::scalar {

namespace {

constexpr std::ptrdiff_t unitsPerRun = 4;

// Writes units of ASCII as long as there are four of them.
Position narrowRuns(Position at, const unsigned char* end) {
  constexpr std::uint64_t others = 0xFFFFFF80FFFFFF80U;
  while (end - at.in >= unitsPerRun * utf32UnitLength) {
    if (((loadRun(at.in) | loadRun(at.in + runLength)) & others) != 0) break;
    for (std::ptrdiff_t i = 0; i < unitsPerRun; ++i) {
      *at.out++ = static_cast<unsigned char>(loadUtf32(at.in + i * utf32UnitLength));
    }
    at.in += unitsPerRun * utf32UnitLength;
  }
  return at;
}

}  // namespace

Progress utf32ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  Position at{in, out};
  while (end - at.in >= utf32UnitLength) {
    const char32_t unit = loadUtf32(at.in);
    if (!isScalarValue(unit)) return {at.in, at.out, Stop::met};
    at = {at.in + utf32UnitLength, encodeUtf8(unit, at.out)};
    if (unit < 0x80) at = narrowRuns(at, end);
  }
  return {at.in, at.out, at.in == end ? Stop::end : Stop::cutOff};
}

}  // namespace quorvel::kernel::scalar
