// UTF-8 to UTF-32 by the runs of Utf8ToUnitsScalar.hpp.

#include <cstddef>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf32Unit.hpp"
#include "quorvel/kernel/Utf8ToUnitsScalar.hpp"

namespace quorvel::kernel::scalar {

namespace {

struct ThirtyTwo {
  static constexpr unsigned int bytesPerAscii = 4;

  static unsigned char* putBasic(char32_t codePoint, unsigned char* out) {
    return putUtf32(codePoint, out);
  }

  static unsigned char* putBeyond(char32_t codePoint, unsigned char* out) {
    return putUtf32(codePoint, out);
  }

  static void widenRun(const unsigned char* in, unsigned char* out) {
    for (std::ptrdiff_t i = 0; i < runLength; ++i) out = putUtf32(in[i], out);
  }
};

}  // namespace

Progress utf8ToUtf32(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return utf8_to_units::decode<ThirtyTwo>(in, end, out);
}

}  // namespace quorvel::kernel::scalar
