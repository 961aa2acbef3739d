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
Position narrowRuns(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  constexpr std::uint64_t others = 0xFFFFFF80FFFFFF80U;
  while (end - in >= unitsPerRun * utf32UnitLength) {
    if (((loadRun(in) | loadRun(in + runLength)) & others) != 0) break;
    for (std::ptrdiff_t i = 0; i < unitsPerRun; ++i) {
      *out++ = static_cast<unsigned char>(loadUtf32(in + i * utf32UnitLength));
    }
    in += unitsPerRun * utf32UnitLength;
  }
  return {in, out};
}

// Not inline: together with the reasons to stop the compiler lays the loop out so that
// French and emoji take a fifth longer.
[[gnu::noinline]] Position encode(const unsigned char* in, const unsigned char* end,
                                  unsigned char* out) {
  while (end - in >= utf32UnitLength) {
    const char32_t unit = loadUtf32(in);
    if (!isScalarValue(unit)) break;
    out = encodeUtf8(unit, out);
    in += utf32UnitLength;
    if (unit >= 0x80) continue;
    const Position at = narrowRuns(in, end, out);
    in = at.in;
    out = at.out;
  }
  return {in, out};
}

}  // namespace

Progress utf32ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  const Position at = encode(in, end, out);
  const auto left = end - at.in;
  return {at.in, at.out, left == 0 ? Stop::end : left < utf32UnitLength ? Stop::cutOff : Stop::met};
}

}  // namespace quorvel::kernel::scalar
