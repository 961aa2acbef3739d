#pragma once

#include "tests/reference/Converter.h"

/// UTF-8 and UTF-16 in the reference.
namespace quorvel::reference {

inline bool Converter::cv_utf8_to_utf16(Text in, Bytes& out, LogBase& log) {
  if (in.isEmpty()) return true;
  const LogContextExitor context(log, "cv_utf8_to_utf16", log.m_verboseLogging);
  Block staging(512, out);
  std::size_t i = 0;
  while (i < in.size()) {
    if (in[i] < 0x80) {
      staging.putUnit(in[i]);
      staging.flushWhenFull();
      i += 1;
      continue;
    }
    const Utf8Step step = utf8Step(in.from(i).asString());
    std::size_t consumed = step.consumed;
    if (step.wellFormed && step.codePoint < 0x10000) {
      staging.putUnit(step.codePoint);
      staging.flushWhenFull();
    } else if (step.wellFormed) {
      staging.putUnit(0xD800 + ((step.codePoint - 0x10000) >> 10));
      staging.putUnit(0xDC00 + ((step.codePoint - 0x10000) & 0x3FF));
      staging.flushWhenFull();
    } else {
      if (log.m_verboseLogging) {
        log.logError("Found invalid utf-8 when trying to convert to utf-16.");
        log.LogDataLong("m_errorAction", errorAction);
      }
      hadError = true;
      if (errorAction != 0) {
        staging.flush();
        consumed = handleErrorFromUtf8(in.from(i), out, log);
      }
    }
    if (consumed > in.size() - i) break;
    i += consumed;
  }
  staging.flush();
  return true;
}

inline void putThreeBytes(unsigned int unit, Block& staging) {
  staging.put(0xE0 | (unit >> 12));
  staging.put(0x80 | ((unit >> 6) & 0x3F));
  staging.put(0x80 | (unit & 0x3F));
}

inline bool Converter::cv_utf16_to_utf8(Text in, Bytes& out, LogBase& log) {
  if (in.isEmpty()) return true;
  const LogContextExitor context(log, "convertFromUnicode", log.m_verboseLogging);
  const bool isOdd = in.size() % 2 != 0;
  if (in.size() == 1) return false;
  if (isOdd) in = in.firstBytes(in.size() - 1);
  const auto unitAt = [&](std::size_t i) { return in[i] + 256U * in[i + 1]; };
  Block staging(512, out);
  std::size_t i = 0;
  while (in.size() - i >= 2) {
    const unsigned int unit = unitAt(i);
    const std::size_t left = in.size() - i;
    if (unit == 0) {
      i += 2;
    } else if (honorMarkers && unit == 0xFDEF && left >= 4) {
      const std::size_t count = in[i + 2];
      if (count > 5) {
        i += 2;
      } else {
        i += 3;
        if (in.size() - i >= count) {
          staging.flush();
          append(out, in.part(i, count));
          i += count;
        }
      }
    } else if (unit < 0x80) {
      staging.put(unit);
      i += 2;
    } else if (unit < 0x800) {
      staging.put(0xC0 | (unit >> 6));
      staging.put(0x80 | (unit & 0x3F));
      i += 2;
    } else if (unit < 0xD800 || unit >= 0xDC00 || left < 4) {
      putThreeBytes(unit, staging);
      i += 2;
    } else {
      const unsigned int second = unitAt(i + 2);
      if (g_allow_4byte_utf8 && allow4ByteUtf8 && (second & 0xFC00) == 0xDC00) {
        const char32_t codePoint = ((unit & 0x3FF) << 10 | (second & 0x3FF)) + 0x10000;
        for (const char byte : encodeUtf8(codePoint)) staging.put(static_cast<unsigned char>(byte));
      } else {
        putThreeBytes(unit, staging);
        putThreeBytes(second, staging);
      }
      i += 4;
    }
    staging.flushWhenFull();
  }
  staging.flush();
  return !isOdd;
}

}  // namespace quorvel::reference
