#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "quorvel/base/NullLog.h"
#include "quorvel/support/EncodingConvert.h"
#include "tests/helpers/Bytes.h"

namespace quorvel_test {

/// What a conversion gave: its result, the error flag and the output as
/// hexadecimal pairs.
struct Outcome {
  bool result;
  bool hadError;
  std::string out;

  bool operator==(const Outcome& other) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << (outcome.result ? "true" : "false")
                << (outcome.hadError ? ", with an error: " : ": ") << outcome.out;
}

/// True, nothing amiss, and these bytes.
inline Outcome converts(std::string_view out) { return {true, false, hex(bytes(out))}; }

/// True, the error flag set, and these bytes.
inline Outcome convertsWithError(std::string_view out) { return {true, true, hex(bytes(out))}; }

/// False, the error flag set, and these bytes.
inline Outcome fails(std::string_view out = "") { return {false, true, hex(bytes(out))}; }

/// False, the error flag clear, and these bytes.
inline Outcome failsQuietly(std::string_view out = "") { return {false, false, hex(bytes(out))}; }

/// Converters with one setting made.
inline quorvel::EncodingConvert withAction(int action) {
  quorvel::EncodingConvert converter;
  converter.setErrorAction(action);
  return converter;
}

inline quorvel::EncodingConvert withSubstitute(std::string_view text) {
  quorvel::EncodingConvert converter = withAction(1);
  const Bytes substitute = bytes(text);
  converter.setDefBytes(substitute.data(), static_cast<int>(substitute.size()));
  return converter;
}

inline quorvel::EncodingConvert withAlternate(int codePage) {
  quorvel::EncodingConvert converter = withAction(6);
  converter.setAltDestCodepage(codePage);
  return converter;
}

/// A buffer that already holds `before`.
inline quorvel::DataBuffer bufferOf(std::string_view before) {
  quorvel::DataBuffer buffer;
  const Bytes content = bytes(before);
  buffer.append(content.data(), sizeOf(content));
  return buffer;
}

/// Runs one of the operations that take two code pages.
using CodePageOperation = bool (quorvel::EncodingConvert::*)(int, int, const unsigned char*,
                                                             unsigned int, quorvel::DataBuffer&,
                                                             quorvel::LogBase&);

inline Outcome run(CodePageOperation operation, quorvel::EncodingConvert& converter, int from,
                   int to, const Bytes& input, quorvel::LogBase& log, std::string_view before) {
  quorvel::DataBuffer out = bufferOf(before);
  const bool result = (converter.*operation)(from, to, input.data(), sizeOf(input), out, log);
  return {result, converter.m_hadError, hex(out)};
}

/// `EncConvert`, with a fresh converter or the one given; the output starts
/// with `before`.
inline Outcome convert(quorvel::EncodingConvert& converter, int from, int to,
                       std::string_view input, std::string_view before = "") {
  quorvel::NullLog log;
  return run(&quorvel::EncodingConvert::EncConvert, converter, from, to, bytes(input), log, before);
}

inline Outcome convert(quorvel::EncodingConvert&& converter, int from, int to,
                       std::string_view input, std::string_view before = "") {
  return convert(converter, from, to, input, before);
}

inline Outcome convert(int from, int to, std::string_view input, std::string_view before = "") {
  return convert(quorvel::EncodingConvert(), from, to, input, before);
}

/// `EncConvertWithPreamble` likewise.
inline Outcome convertWithPreamble(quorvel::EncodingConvert&& converter, int from, int to,
                                   std::string_view input, std::string_view before = "") {
  quorvel::NullLog log;
  return run(&quorvel::EncodingConvert::EncConvertWithPreamble, converter, from, to, bytes(input),
             log, before);
}

inline Outcome convertWithPreamble(int from, int to, std::string_view input,
                                   std::string_view before = "") {
  return convertWithPreamble(quorvel::EncodingConvert(), from, to, input, before);
}

/// `convert_a` likewise.
inline Outcome pivot(quorvel::EncodingConvert& converter, int from, int to, std::string_view input,
                     std::string_view before = "") {
  quorvel::NullLog log;
  return run(&quorvel::EncodingConvert::convert_a, converter, from, to, bytes(input), log, before);
}

inline Outcome pivot(quorvel::EncodingConvert&& converter, int from, int to, std::string_view input,
                     std::string_view before = "") {
  return pivot(converter, from, to, input, before);
}

inline Outcome pivot(int from, int to, std::string_view input, std::string_view before = "") {
  return pivot(quorvel::EncodingConvert(), from, to, input, before);
}

/// Code pages above 99 without any table.
inline constexpr int kNoTable = 28602;
inline constexpr int kNoTableEither = 30000;

}  // namespace quorvel_test
