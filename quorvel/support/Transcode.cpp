// The direct transcoders between UTF-8 and UTF-16: the loops of kernel/Loops.hpp
// move the bytes, the steps here decide what happens at the places where a
// loop stops. They are half of a pivot (Pivot.cpp) or a whole route (Routes.cpp).

#include <algorithm>
#include <limits>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/base/InLogContext.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ErrorPolicy.hpp"
#include "quorvel/support/PassthroughMarker.hpp"
#include "quorvel/support/Steps.hpp"
#include "quorvel/support/Utf16Size.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

// Per two bytes of input.
constexpr unsigned int mostUtf16Bytes = 4;
constexpr unsigned int mostUtf8Bytes = 3;

// Writes the unit at `in`, a high surrogate or an ordinary U+FDEF, and with a
// high surrogate the unit behind it, whatever that is, as three bytes each.
//
// contract: UTF-16 that is not well-formed becomes UTF-8 that is not, without an
// error. Callers who store names that hold lone surrogates get them back.
const unsigned char* writeUnitAsItIs(const unsigned char* in, const unsigned char* end,
                                     DataBuffer& out) {
  unsigned char bytes[6];
  const unsigned int unit = loadUnit(in);
  unsigned char* written = writeThreeBytes(unit, bytes);
  in += 2;
  if (isHighSurrogate(unit) && end - in >= 2) {
    written = writeThreeBytes(loadUnit(in), written);
    in += 2;
  }
  return out.append(bytes, static_cast<unsigned int>(written - bytes)) ? in : nullptr;
}

// As the handlers count, in an int; no sequence is longer.
int bytesLeft(const unsigned char* in, const unsigned char* end) {
  constexpr std::ptrdiff_t most = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(end - in, most));
}

// The length of the ill-formed sequence at `in`, where a loop has stopped; 0 when
// it is well-formed and only went past the part.
unsigned int illFormedLength(const unsigned char* in, const unsigned char* end) {
  const Utf8Sequence sequence = quorvel::decodeUtf8(in, static_cast<std::size_t>(end - in));
  return sequence.isWellFormed ? 0 : sequence.length;
}

// contract: both loops drop U+0000 without a word, on this way alone. Callers hand what
// they get to readers of C strings, for whom it would end the text.
kernel::Loop* utf8Encoder(const EncodingConvert& converter) {
  return g_allow_4byte_utf8 && converter.m_allow4ByteUtf8 ? kernel::loops().utf16ToUtf8
                                                          : kernel::loops().utf16ToUtf8WithoutPairs;
}

}  // namespace

const unsigned char* decodeUtf8(EncodingConvert& converter, const SourcePart& part, DataBuffer& out,
                                LogBase& log) {
  for (const unsigned char* in = part.in;;) {
    in = runInBlocks(kernel::loops().utf8ToUtf16, in, part.stop, mostUtf16Bytes, out);
    if (!in || in == part.stop) return in;
    const unsigned int length = illFormedLength(in, part.end);
    if (length == 0) return in;
    if (log.m_verboseLogging) {
      log.logError("Found invalid utf-8 when trying to convert to utf-16.");
      log.LogDataLong("m_errorAction", converter.m_errorAction);
    }
    converter.m_hadError = true;
    // contract: what is dropped is the ill-formed part alone; a handler acts on all
    // that the lead byte announces, be it text. Callers who count on the bytes of a
    // sequence standing together in the reference to them rely on the second.
    in += dropsErrors(converter)
              ? static_cast<int>(length)
              : converter.handleErrorFromUtf8(in, bytesLeft(in, part.end), out, log);
    if (in >= part.stop) return in;
  }
}

Encoded encodeUtf8(EncodingConvert& converter, const UnitsPart& part, DataBuffer& out) {
  kernel::Loop* loop = utf8Encoder(converter);
  for (const unsigned char* in = part.in;;) {
    // Raw bytes may leave an odd number behind them: half a unit ends the text.
    const unsigned char* wholeEnd = part.end - (part.end - in) % 2;
    in = runInBlocks(loop, in, wholeEnd, mostUtf8Bytes, out);
    if (!in || in == wholeEnd) return {in, true};
    const std::ptrdiff_t left = part.end - in;
    if (!part.isLast && left < mostMarkedBytes) return {in, true};
    const bool isMarker =
        converter.m_honorPassthroughMarkers && left >= 4 && loadUnit(in) == passthroughMarkerUnit;
    in = isMarker ? copyMarkedBytes(in, part.end, out) : writeUnitAsItIs(in, part.end, out);
    if (!in) return {nullptr, true};
  }
}

bool EncodingConvert::cv_utf8_to_utf16(const unsigned char* data, unsigned int numBytes,
                                       DataBuffer& out, LogBase& log) {
  if (!data || numBytes == 0) return true;
  return inLogContext(log, utf8DecodingContext, [&] {
    const unsigned char* end = data + numBytes;
    return !utf8IsTooLong(*this, data, numBytes, out) &&
           decodeUtf8(*this, {data, end, end}, out, log) != nullptr;
  });
}

bool EncodingConvert::cv_utf16_to_utf8(const unsigned char* data, unsigned int numBytes,
                                       DataBuffer& out, LogBase& log) {
  if (!data || numBytes == 0) return true;
  return inLogContext(log, utf8EncodingContext, [&] {
    const bool isEven = numBytes % 2 == 0;
    const unsigned char* end = data + (numBytes & ~1U);
    return encodeUtf8(*this, {data, end, true}, out).in && isEven;
  });
}

}  // namespace quorvel
