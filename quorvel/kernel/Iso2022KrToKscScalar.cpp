// ISO-2022-KR to KS C 5601 in its EUC-KR form: between SO and SI pairs get their
// highest bits.

#include "quorvel/kernel/Iso2022Scalar.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::scalar {

namespace {

Position readHangul(Position at, const unsigned char* end) {
  for (; end - at.in >= 2 && isGraphicPair(at.in); at.in += 2) {
    *at.out++ = withHighBit(at.in[0]);
    *at.out++ = withHighBit(at.in[1]);
  }
  return at;
}

Progress stopInFrontOf(const Position& at, bool isCutOff) {
  return {at.in, at.out, isCutOff ? Stop::cutOff : Stop::met};
}

}  // namespace

Progress iso2022KrToKsc(const unsigned char* in, const unsigned char* end, unsigned char* out,
                        bool& isShifted) {
  Position at{in, out};
  while (at.in != end) {
    at = isShifted ? readHangul(at, end) : copyText(at, end);
    if (at.in == end) break;
    const unsigned char byte = *at.in;
    const iso2022::Bytes rest(at.in, end);
    if (byte == iso2022::escape) {
      if (!iso2022::startsWith(rest, iso2022::koreanHeader)) {
        return stopInFrontOf(at, iso2022::isCutOff(rest, iso2022::koreanHeader));
      }
      at.in += iso2022::koreanHeader.size();
    } else if (isSwitch(byte)) {
      isShifted = byte == iso2022::shiftOut;
      ++at.in;
    } else if (isGraphic(byte) || byte >= highBit || iso2022::isLineEnd(byte)) {
      return stopInFrontOf(at, isGraphic(byte) && rest.size() == 1);
    } else {
      *at.out++ = *at.in++;
    }
  }
  return {at.in, at.out, Stop::end};
}

}  // namespace quorvel::kernel::scalar
