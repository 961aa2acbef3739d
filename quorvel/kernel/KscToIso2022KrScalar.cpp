// KS C 5601 in its EUC-KR form to ISO-2022-KR: pairs lose their highest bits and
// stand between SO and SI.

#include "quorvel/kernel/Iso2022Scalar.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::scalar {

namespace {

bool isKsc(unsigned char byte) { return byte >= highBit && isGraphic(withoutHighBit(byte)); }

bool isPair(const unsigned char* in) { return isKsc(in[0]) && isKsc(in[1]); }

// Unified Hangul has more leads than KS C 5601, and its pairs must not be torn
// either, whoever writes them.
bool mayLead(unsigned char byte) { return byte > highBit && byte < 0xFF; }

Position writeHangul(Position at, const unsigned char* end) {
  for (; end - at.in >= 2 && isPair(at.in); at.in += 2) {
    *at.out++ = withoutHighBit(at.in[0]);
    *at.out++ = withoutHighBit(at.in[1]);
  }
  return at;
}

}  // namespace

Progress kscToIso2022Kr(const unsigned char* in, const unsigned char* end, unsigned char* out,
                        bool& isShifted) {
  Position at{in, out};
  while (at.in != end) {
    const bool isAscii = *at.in < highBit;
    if (isAscii ? isSwitch(*at.in) : end - at.in < 2 || !isPair(at.in)) {
      const bool isCutOff = end - at.in == 1 && mayLead(*at.in);
      return {at.in, at.out, isCutOff ? Stop::cutOff : Stop::met};
    }
    if (isShifted == isAscii) *at.out++ = isAscii ? iso2022::shiftIn : iso2022::shiftOut;
    isShifted = !isAscii;
    at = isAscii ? copyText(at, end) : writeHangul(at, end);
  }
  return {at.in, at.out, Stop::end};
}

}  // namespace quorvel::kernel::scalar
