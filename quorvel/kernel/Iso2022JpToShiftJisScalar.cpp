// ISO-2022-JP to Shift_JIS: what belongs to the set in use in one run, then the
// switch behind it.

#include "quorvel/kernel/Iso2022Scalar.hpp"
#include "quorvel/kernel/Jis.hpp"
#include "quorvel/kernel/Loops.hpp"

namespace quorvel::kernel::scalar {

namespace {

unsigned char* putPair(unsigned int code, unsigned char* out) {
  out[0] = static_cast<unsigned char>(code >> 8);
  out[1] = static_cast<unsigned char>(code);
  return out + 2;
}

Position readKanji(Position at, const unsigned char* end) {
  while (end - at.in >= 2 && isGraphicPair(at.in)) {
    const jis::Place place = jis::placeFromJis(at.in[0], at.in[1]);
    if (jis::isInLastBlock(place.row)) break;
    at = {at.in + 2, putPair(jis::sjisFromPlace(place), at.out)};
  }
  return at;
}

Position readKatakana(Position at, const unsigned char* end) {
  while (at.in != end && jis::isKatakana(*at.in)) *at.out++ = withHighBit(*at.in++);
  return at;
}

// Takes the switch at `in` and returns the position behind it, or `in`.
const unsigned char* takeSwitch(const unsigned char* in, const unsigned char* end,
                                Iso2022JpReading& state) {
  if (*in != iso2022::escape) {
    state.isShifted = *in == iso2022::shiftOut;
    return in + 1;
  }
  const jis::Designation* designation = jis::findDesignation({in, end});
  if (!designation) return in;
  state.designated = designation->set;
  return in + designation->sequence.size();
}

// Controls that are the same in all sets and change nothing.
bool isPlainControl(unsigned char byte) {
  return byte < highBit && !isGraphic(byte) && !iso2022::isLineEnd(byte);
}

Position readSet(JapaneseSet set, Position at, const unsigned char* end) {
  switch (set) {
    case JapaneseSet::kanji:
      return readKanji(at, end);
    case JapaneseSet::katakana:
      return readKatakana(at, end);
    case JapaneseSet::ascii:
      break;
  }
  return copyText(at, end);
}

Stop whyNotTaken(const unsigned char* in, const unsigned char* end, JapaneseSet set) {
  const bool isCutOff = *in == iso2022::escape
                            ? jis::isDesignationCutOff({in, end})
                            : end - in == 1 && set == JapaneseSet::kanji && isGraphic(*in);
  return isCutOff ? Stop::cutOff : Stop::met;
}

}  // namespace

Progress iso2022JpToShiftJis(const unsigned char* in, const unsigned char* end, unsigned char* out,
                             Iso2022JpReading& state) {
  Position at{in, out};
  while (at.in != end) {
    const unsigned char* begin = at.in;
    if (isSwitch(*at.in)) {
      at.in = takeSwitch(at.in, end, state);
    } else if (state.inUse() != JapaneseSet::ascii && isPlainControl(*at.in)) {
      *at.out++ = *at.in++;
    } else {
      at = readSet(state.inUse(), at, end);
    }
    if (at.in == begin) return {at.in, at.out, whyNotTaken(at.in, end, state.inUse())};
  }
  return {at.in, at.out, Stop::end};
}

}  // namespace quorvel::kernel::scalar
