// Shift_JIS to ISO-2022-JP: each run of one set behind its designation.

#include <cstring>

#include "quorvel/kernel/Iso2022Scalar.hpp"
#include "quorvel/kernel/Jis.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::scalar {

namespace {

bool isPair(const unsigned char* in) {
  return jis::isSjisLead(in[0]) && in[0] < 0xF0 && jis::isSjisTrail(in[1]);
}

unsigned char* putSequence(std::string_view sequence, unsigned char* out) {
  std::memcpy(out, sequence.data(), sequence.size());
  return out + sequence.size();
}

Position writeKanji(Position at, const unsigned char* end) {
  while (end - at.in >= 2 && isPair(at.in)) {
    const unsigned int code = jis::jisFromPlace(jis::placeFromSjis(at.in[0], at.in[1]));
    at.out[0] = static_cast<unsigned char>(code >> 8);
    at.out[1] = static_cast<unsigned char>(code);
    at = {at.in + 2, at.out + 2};
  }
  return at;
}

Position writeKatakana(Position at, const unsigned char* end) {
  while (at.in != end && jis::isHalfWidthKatakana(*at.in)) *at.out++ = withoutHighBit(*at.in++);
  return at;
}

}  // namespace

Progress shiftJisToIso2022Jp(const unsigned char* in, const unsigned char* end, unsigned char* out,
                             JapaneseSet& set) {
  Position at{in, out};
  while (at.in != end) {
    const bool isAscii = *at.in < highBit;
    const bool isKanji = !isAscii && end - at.in >= 2 && isPair(at.in);
    if (isAscii ? isSwitch(*at.in) : !isKanji && !jis::isHalfWidthKatakana(*at.in)) {
      const bool isCutOff = end - at.in == 1 && jis::isSjisLead(*at.in);
      return {at.in, at.out, isCutOff ? Stop::cutOff : Stop::met};
    }
    const JapaneseSet wanted = isAscii   ? JapaneseSet::ascii
                               : isKanji ? JapaneseSet::kanji
                                         : JapaneseSet::katakana;
    if (wanted != set) at.out = putSequence(jis::sequenceFor(wanted), at.out);
    set = wanted;
    at = isAscii ? copyText(at, end) : isKanji ? writeKanji(at, end) : writeKatakana(at, end);
  }
  return {at.in, at.out, Stop::end};
}

}  // namespace quorvel::kernel::scalar
