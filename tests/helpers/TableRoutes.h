#pragma once

#include <string_view>

#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/Memory.h"
#include "tests/helpers/RecordingLog.h"

namespace quorvel_test {

/// A converter as the pivot sets it while it decodes: handlers write markers.
inline quorvel::EncodingConvert emitting(quorvel::EncodingConvert converter) {
  converter.m_emitPassthroughMarkers = true;
  return converter;
}

/// A converter as the pivot sets it while it encodes.
inline quorvel::EncodingConvert honoring(quorvel::EncodingConvert converter) {
  converter.m_honorPassthroughMarkers = true;
  return converter;
}

/// A converter in the middle of a conversion between these pages.
inline quorvel::EncodingConvert between(int from, int to, quorvel::EncodingConvert converter) {
  converter.m_fromCodePage = from;
  converter.m_toCodePage = to;
  return converter;
}

/// Calls `step(in, size, out, log)`; behind the input nothing can be read. The
/// lines of the log go to `lines`, if there is such.
template <typename Step>
Outcome runStep(const quorvel::EncodingConvert& converter, std::string_view input, Step step,
                bool verbose = false, Lines* lines = nullptr) {
  const Bytes content = bytes(input);
  quorvel::test_memory::GuardedBytes guarded(content.size());
  const unsigned char* in =
      guarded.place({reinterpret_cast<const char*>(content.data()), content.size()});
  RecordingLog log(verbose);
  quorvel::DataBuffer out;
  const bool result = step(in, sizeOf(content), out, log);
  if (lines) *lines = log.lines;
  return {result, converter.m_hadError, hex(out)};
}

/// `convertToUnicodeHC`.
inline Outcome decode(quorvel::EncodingConvert converter, int codePage, std::string_view input,
                      bool verbose = false, Lines* lines = nullptr) {
  return runStep(
      converter, input,
      [&](const unsigned char* in, unsigned int size, quorvel::DataBuffer& out,
          quorvel::LogBase& log) {
        return converter.convertToUnicodeHC(codePage, in, size, out, log);
      },
      verbose, lines);
}

inline Outcome decode(int codePage, std::string_view input) {
  return decode(between(codePage, 1200, withAction(0)), codePage, input);
}

/// `convertToUnicodeByLookup`.
inline Outcome decode(quorvel::EncodingConvert converter, quorvel::UnicodeLookup& lookup,
                      std::string_view input, bool verbose = false, Lines* lines = nullptr) {
  return runStep(
      converter, input,
      [&](const unsigned char* in, unsigned int size, quorvel::DataBuffer& out,
          quorvel::LogBase& log) {
        return converter.convertToUnicodeByLookup(lookup, in, size, out, log);
      },
      verbose, lines);
}

/// `convertToUnicodeHCVar`.
inline Outcome decode(quorvel::EncodingConvert converter, quorvel::HashConvert* table,
                      std::string_view input, bool verbose = false, Lines* lines = nullptr) {
  return runStep(
      converter, input,
      [&](const unsigned char* in, unsigned int size, quorvel::DataBuffer& out,
          quorvel::LogBase& log) {
        return converter.convertToUnicodeHCVar(table, in, size, out, log);
      },
      verbose, lines);
}

/// `convertFromUnicodeHC`.
inline Outcome encode(quorvel::EncodingConvert converter, int codePage, std::string_view input,
                      bool verbose = false, Lines* lines = nullptr) {
  return runStep(
      converter, input,
      [&](const unsigned char* in, unsigned int size, quorvel::DataBuffer& out,
          quorvel::LogBase& log) {
        return converter.convertFromUnicodeHC(codePage, in, size, out, log);
      },
      verbose, lines);
}

inline Outcome encode(int codePage, std::string_view input) {
  return encode(between(1200, codePage, withAction(0)), codePage, input);
}

/// `convertFromUnicodeHC2`.
inline Outcome encode(quorvel::EncodingConvert converter, quorvel::HashConvert* table,
                      std::string_view input, bool verbose = false, Lines* lines = nullptr) {
  return runStep(
      converter, input,
      [&](const unsigned char* in, unsigned int size, quorvel::DataBuffer& out,
          quorvel::LogBase& log) {
        return converter.convertFromUnicodeHC2(table, in, size, out, log);
      },
      verbose, lines);
}

}  // namespace quorvel_test
