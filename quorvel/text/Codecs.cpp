#include "quorvel/text/Codecs.hpp"

#include "quorvel/kernel/Target.hpp"
#include "quorvel/pages/CharacterTables.hpp"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"
#include "quorvel/text/Iso2022Codec.hpp"
#include "quorvel/text/PageCodec.hpp"
#include "quorvel/text/UnicodeDecoders.hpp"
#include "quorvel/text/UnicodeEncoders.hpp"

namespace quorvel::text {

namespace {

Order orderOf(int codePage) { return isBigEndian(codePage) ? Order::highFirst : Order::lowFirst; }

std::unique_ptr<Decoder> makeUnicodeDecoder(int codePage) {
  if (codePage == codePageUtf8) return makeUtf8Decoder();
  if (codePage == codePageUtf7) return makeUtf7Decoder();
  return isUtf16(codePage) ? makeUtf16Decoder(orderOf(codePage))
                           : makeUtf32Decoder(orderOf(codePage));
}

std::unique_ptr<Encoder> makeUnicodeEncoder(int codePage) {
  if (codePage == codePageUtf8) return makeUtf8Encoder();
  if (codePage == codePageUtf7) return makeUtf7Encoder();
  return isUtf16(codePage) ? makeUtf16Encoder(orderOf(codePage))
                           : makeUtf32Encoder(orderOf(codePage));
}

}  // namespace

bool isWide(Encoding encoding) { return isUtf16(encoding.number()) || isUtf32(encoding.number()); }

bool isLittleEndianUtf32(Encoding encoding) {
  return isUtf32(encoding.number()) && !isBigEndian(encoding.number());
}

bool isTransformation(Encoding encoding) {
  return isWide(encoding) || encoding.number() == codePageUtf8;
}

// The loop to UTF-7 takes any unit.
bool stopsAtLoneSurrogates(Encoding encoding) { return encoding.number() != codePageUtf7; }

std::unique_ptr<Decoder> makeDecoder(Encoding encoding) {
  const int number = encoding.number();
  switch (encoding.kind()) {
    case EncodingKind::unicode:
      return makeUnicodeDecoder(number);
    case EncodingKind::gsm:
      return makeGsmDecoder();
    case EncodingKind::iso2022:
      return number == codePageIso2022Kr ? makeKoreanDecoder(readingTable(codePageKorean))
                                         : makeJapaneseDecoder(readingTable(codePageShiftJis));
    case EncodingKind::singleByte:
    case EncodingKind::multiByte:
      break;
  }
  return makePageDecoder(readingTable(number));
}

std::unique_ptr<Encoder> makeEncoder(Encoding encoding) {
  const int number = encoding.number();
  switch (encoding.kind()) {
    case EncodingKind::unicode:
      return makeUnicodeEncoder(number);
    case EncodingKind::gsm:
      return makeGsmEncoder();
    case EncodingKind::iso2022:
      return number == codePageIso2022Kr ? makeKoreanEncoder(writingTable(codePageKorean))
                                         : makeJapaneseEncoder(writingTable(codePageShiftJis));
    case EncodingKind::singleByte:
    case EncodingKind::multiByte:
      break;
  }
  return makePageEncoder(writingTable(number));
}

DirectLoop directLoop(Encoding from, Encoding to) {
  const kernel::Loops& loops = kernel::loops();
  if (from == Encoding::utf8() && isLittleEndianUtf32(to)) return {&loops.utf8ToUtf32, 4};
  if (isLittleEndianUtf32(from) && to == Encoding::utf8()) return {&loops.utf32ToUtf8, 1};
  return {nullptr, 0};
}

}  // namespace quorvel::text
