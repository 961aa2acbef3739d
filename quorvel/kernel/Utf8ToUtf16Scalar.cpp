// UTF-8 to UTF-16 by the runs of Utf8ToUnitsScalar.hpp.

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/kernel/Utf8ToUnitsScalar.hpp"

namespace quorvel::kernel::scalar {

namespace {

struct Sixteen {
  static constexpr unsigned int bytesPerAscii = 2;

  static unsigned char* putBasic(char32_t unit, unsigned char* out) { return putUnit(unit, out); }

  static unsigned char* putBeyond(char32_t codePoint, unsigned char* out) {
    const unsigned int units = utf16Units(codePoint);
    return putUnit(units >> 16, putUnit(units & 0xFFFF, out));
  }

  static void widenRun(const unsigned char* in, unsigned char* out) { quorvel::widenRun(in, out); }
};

}  // namespace

Progress utf8ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return utf8_to_units::decode<Sixteen>(in, end, out);
}

}  // namespace quorvel::kernel::scalar
