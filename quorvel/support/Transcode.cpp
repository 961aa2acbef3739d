// The direct transcoders between UTF-8 and UTF-16: the loops of kernel/Utf.h
// move the bytes, the members here decide what happens at the places where a
// loop stops.

#include <algorithm>
#include <limits>

#include "quorvel/base/BlockRunner.h"
#include "quorvel/base/LogContextExitor.h"
#include "quorvel/base/Utf16Unit.h"
#include "quorvel/base/Utf8Sequence.h"
#include "quorvel/base/_qvUtf.h"
#include "quorvel/base/kernel/Target.h"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/PassthroughMarker.h"

namespace quorvel {

namespace {

// Per two bytes of input.
constexpr unsigned int mostUtf16Bytes = 4;
constexpr unsigned int mostUtf8Bytes = 3;

// Writes the unit at `in`, a high surrogate or an ordinary U+FDEF, and with a
// high surrogate the unit behind it, whatever that is, as three bytes each.
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

}  // namespace

bool EncodingConvert::cv_utf8_to_utf16(const unsigned char* data, unsigned int numBytes,
                                       DataBuffer& out, LogBase& log) {
  if (!data || numBytes == 0) return true;
  const LogContextExitor context(log, "cv_utf8_to_utf16", log.m_verboseLogging);
  const unsigned char* end = data + numBytes;
  for (const unsigned char* in = data;;) {
    in = runInBlocks(kernel::utf().utf8ToUtf16, in, end, mostUtf16Bytes, out);
    if (!in) return false;
    if (in == end) return true;
    if (log.m_verboseLogging) {
      log.logError("Found invalid utf-8 when trying to convert to utf-16.");
      log.LogDataLong("m_errorAction", m_errorAction);
    }
    m_hadError = true;
    // What is dropped is the ill-formed part alone; a handler acts on all that
    // the lead byte announces.
    in += m_errorAction == 0
              ? static_cast<int>(decodeUtf8(in, static_cast<std::size_t>(end - in)).length)
              : handleErrorFromUtf8(in, bytesLeft(in, end), out, log);
  }
}

bool EncodingConvert::cv_utf16_to_utf8(const unsigned char* data, unsigned int numBytes,
                                       DataBuffer& out, LogBase& log) {
  if (!data || numBytes == 0) return true;
  const LogContextExitor context(log, "convertFromUnicode", log.m_verboseLogging);
  const bool isEven = numBytes % 2 == 0;
  kernel::Loop* loop = g_allow_4byte_utf8 && m_allow4ByteUtf8
                           ? kernel::utf().utf16ToUtf8
                           : kernel::utf().utf16ToUtf8WithoutPairs;
  const unsigned char* end = data + (numBytes & ~1U);
  for (const unsigned char* in = data;;) {
    // Raw bytes may leave an odd number behind them: half a unit ends the text.
    const unsigned char* wholeEnd = end - (end - in) % 2;
    in = runInBlocks(loop, in, wholeEnd, mostUtf8Bytes, out);
    if (!in) return false;
    if (in == wholeEnd) return isEven;
    const bool isMarker =
        m_honorPassthroughMarkers && end - in >= 4 && loadUnit(in) == passthroughMarkerUnit;
    in = isMarker ? copyMarkedBytes(in, end, out) : writeUnitAsItIs(in, end, out);
    if (!in) return false;
  }
}

}  // namespace quorvel
