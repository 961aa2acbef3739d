#include <cstdint>
#include <cstring>

#include "quorvel/kernel/AsciiRun.hpp"
#include "quorvel/kernel/Iso2022.hpp"
#include "quorvel/kernel/Iso2022Text.hpp"
#include "quorvel/kernel/Jis.hpp"

namespace quorvel::kernel::scalar {

namespace {

using iso2022::isGraphic;
using iso2022::isSwitch;

unsigned char* putPair(unsigned int code, unsigned char* out) {
  out[0] = static_cast<unsigned char>(code >> 8);
  out[1] = static_cast<unsigned char>(code);
  return out + 2;
}

unsigned char* putSequence(std::string_view sequence, unsigned char* out) {
  std::memcpy(out, sequence.data(), sequence.size());
  return out + sequence.size();
}

constexpr unsigned char highBit = 0x80;

unsigned char withHighBit(unsigned char byte) { return static_cast<unsigned char>(byte | highBit); }

unsigned char withoutHighBit(unsigned char byte) {
  return static_cast<unsigned char>(byte & ~highBit);
}

// Eight bytes of ASCII none of which is SO, SI or an escape: those are below 20,
// which a subtraction shows, together with all other controls.
bool isTextRun(const unsigned char* in) {
  const std::uint64_t bytes = loadRun(in);
  return ((bytes | (bytes - 0x20 * inEachByte)) & 0x80 * inEachByte) == 0;
}

Progress copyTextRuns(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= runLength && isTextRun(in)) {
    std::memcpy(out, in, runLength);
    in += runLength;
    out += runLength;
  }
  return {in, out};
}

// ASCII but what would switch sets.
Progress copyText(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (in != end) {
    const Progress progress = copyTextRuns(in, end, out);
    in = progress.in;
    out = progress.out;
    if (in == end || *in >= 0x80 || isSwitch(*in)) break;
    *out++ = *in++;
  }
  return {in, out};
}

// As `copyText`, and bytes above 7F too.
Progress copyBytes(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (in != end) {
    const Progress progress = copyTextRuns(in, end, out);
    in = progress.in;
    out = progress.out;
    if (in == end || isSwitch(*in)) break;
    *out++ = *in++;
  }
  return {in, out};
}

bool isPair(const unsigned char* in) { return isGraphic(in[0]) && isGraphic(in[1]); }

bool isShiftJisPair(const unsigned char* in) {
  return jis::isSjisLead(in[0]) && in[0] < 0xF0 && jis::isSjisTrail(in[1]);
}

Progress readKanji(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 2 && isPair(in)) {
    const jis::Place place = jis::placeFromJis(in[0], in[1]);
    if (jis::isInLastBlock(place.row)) break;
    out = putPair(jis::sjisFromPlace(place), out);
    in += 2;
  }
  return {in, out};
}

Progress readKatakana(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (in != end && jis::isKatakana(*in)) *out++ = withHighBit(*in++);
  return {in, out};
}

Progress writeKanji(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 2 && isShiftJisPair(in)) {
    out = putPair(jis::jisFromPlace(jis::placeFromSjis(in[0], in[1])), out);
    in += 2;
  }
  return {in, out};
}

Progress writeKatakana(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (in != end && jis::isHalfWidthKatakana(*in)) *out++ = withoutHighBit(*in++);
  return {in, out};
}

Progress readHangul(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 2 && isPair(in)) {
    out[0] = withHighBit(in[0]);
    out[1] = withHighBit(in[1]);
    in += 2;
    out += 2;
  }
  return {in, out};
}

bool isKsc(unsigned char byte) { return byte >= highBit && isGraphic(withoutHighBit(byte)); }

Progress writeHangul(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  while (end - in >= 2 && isKsc(in[0]) && isKsc(in[1])) {
    out[0] = withoutHighBit(in[0]);
    out[1] = withoutHighBit(in[1]);
    in += 2;
    out += 2;
  }
  return {in, out};
}

}  // namespace

Progress jisToShiftJis(const unsigned char* in, const unsigned char* end, unsigned char* out,
                       JapaneseSet& set) {
  while (in != end) {
    if (*in == iso2022::escape) {
      const jis::Designation* designation = jis::findDesignation({in, end});
      if (!designation) break;
      set = designation->set;
      in += designation->sequence.size();
      continue;
    }
    Progress progress = set == JapaneseSet::kanji      ? readKanji(in, end, out)
                        : set == JapaneseSet::katakana ? readKatakana(in, end, out)
                                                       : copyBytes(in, end, out);
    if (progress.in == in) {
      // In the other sets, what they have no characters for is ASCII.
      const bool isText = set != JapaneseSet::ascii && *in < 0x80 && !isSwitch(*in);
      if (!isText || (set == JapaneseSet::kanji && isGraphic(*in))) break;
      *out++ = *in++;
      continue;
    }
    in = progress.in;
    out = progress.out;
  }
  return {in, out};
}

Progress shiftJisToJis(const unsigned char* in, const unsigned char* end, unsigned char* out,
                       JapaneseSet& set) {
  while (in != end) {
    const bool isAscii = *in < 0x80;
    const bool isPair = !isAscii && end - in >= 2 && isShiftJisPair(in);
    if (isAscii ? isSwitch(*in) : !isPair && !jis::isHalfWidthKatakana(*in)) break;
    const JapaneseSet wanted = isAscii  ? JapaneseSet::ascii
                               : isPair ? JapaneseSet::kanji
                                        : JapaneseSet::katakana;
    if (wanted != set) out = putSequence(jis::sequenceFor(wanted), out);
    set = wanted;
    const Progress progress = isAscii  ? copyText(in, end, out)
                              : isPair ? writeKanji(in, end, out)
                                       : writeKatakana(in, end, out);
    in = progress.in;
    out = progress.out;
  }
  return {in, out};
}

Progress isoToKsc(const unsigned char* in, const unsigned char* end, unsigned char* out,
                  bool& isShifted) {
  while (in != end) {
    const Progress progress = isShifted ? readHangul(in, end, out) : copyBytes(in, end, out);
    in = progress.in;
    out = progress.out;
    if (in == end || *in == iso2022::escape) break;
    if (isSwitch(*in)) {
      isShifted = *in++ == iso2022::shiftOut;
    } else if (isGraphic(*in) || *in >= 0x80) {
      break;
    } else {
      *out++ = *in++;
    }
  }
  return {in, out};
}

Progress kscToIso(const unsigned char* in, const unsigned char* end, unsigned char* out,
                  bool& isShifted) {
  while (in != end) {
    const bool isAscii = *in < 0x80;
    if (isAscii ? isSwitch(*in) : end - in < 2 || !isKsc(in[0]) || !isKsc(in[1])) break;
    if (isShifted == isAscii) *out++ = isAscii ? iso2022::shiftIn : iso2022::shiftOut;
    isShifted = !isAscii;
    const Progress progress = isAscii ? copyText(in, end, out) : writeHangul(in, end, out);
    in = progress.in;
    out = progress.out;
  }
  return {in, out};
}

}  // namespace quorvel::kernel::scalar
