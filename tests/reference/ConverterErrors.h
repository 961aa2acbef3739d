#pragma once

#include "tests/reference/Converter.h"

/// The error handlers of the reference.
namespace quorvel::reference {

inline void Converter::writeMarker(std::size_t count, Bytes& out) const {
  if (!emitMarkers) return;
  out.push_back(0xFD);
  out.push_back(0xEF);
  out.push_back(static_cast<unsigned char>(count % 256));
}

inline void Converter::substitute(Bytes& out) const {
  if (defBytes.empty()) return;
  writeMarker(defBytes.size(), out);
  append(out, Text(defBytes));
}

inline void writeHex(Text in, Bytes& out) {
  constexpr char digits[] = "0123456789ABCDEF";
  append(out, "&#x");
  for (std::size_t i = 0; i < in.size(); ++i) {
    out.push_back(static_cast<unsigned char>(digits[in[i] / 16]));
    out.push_back(static_cast<unsigned char>(digits[in[i] % 16]));
  }
  append(out, ";");
}

/// The count is the length of the source and 4, whatever is written.
inline void Converter::writeHexReference(Text in, Bytes& out) const {
  writeMarker(in.size() + 4, out);
  writeHex(in, out);
}

inline void Converter::reconvert(int codePage, Text in, Bytes& out, LogBase& log) {
  const int from = fromCodePage;
  const int to = toCodePage;
  errorAction = 0;
  const bool ok = EncConvert(codePage, altDestCodepage != 0 ? altDestCodepage : to, in, out, log);
  if (!ok) hadError = true;
  errorAction = 6;
  fromCodePage = from;
  toCodePage = to;
}

inline void Converter::passThrough(Text in, Bytes& out) const {
  writeMarker(in.size(), out);
  append(out, in);
}

inline void Converter::handleErrorFromSingleByte(Text in, Bytes& out, LogBase& log) {
  hadError = true;
  const Text byte = in.firstBytes(1);
  if (errorAction == 1) substitute(out);
  if (errorAction == 2) writeHexReference(byte, out);
  if (errorAction == 7) passThrough(byte, out);
  if (errorAction == 8) {
    out.push_back(byte[0]);
    out.push_back(0x00);
  }
  if (errorAction == 6 && !honorMarkers) reconvert(fromCodePage, byte, out, log);
}

inline void Converter::actOnTwoBytes(int codePage, bool mayReconvert, Text in, Bytes& out,
                                     LogBase& log) {
  hadError = true;
  const Text pair = in.firstBytes(2);
  if (errorAction == 1) substitute(out);
  if (errorAction == 2) writeHexReference(pair, out);
  if (errorAction == 7) passThrough(pair, out);
  if (errorAction == 6 && mayReconvert) reconvert(codePage, pair, out, log);
}

inline void Converter::handleErrorFromUnicode(Text in, Bytes& out, LogBase& log) {
  actOnTwoBytes(1200, true, in, out, log);
}

inline std::size_t announcedUtf8Length(unsigned int lead) {
  if (lead >= 0xC0 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF7) return 4;
  return 1;
}

inline std::size_t Converter::handleErrorFromUtf8(Text in, Bytes& out, LogBase& log) {
  if (in.isEmpty()) return 0;
  hadError = true;
  const Text sequence = in.firstBytes(std::min(announcedUtf8Length(in[0]), in.size()));
  if (errorAction == 1) substitute(out);
  if (errorAction == 2) writeHexReference(sequence, out);
  if (errorAction == 7) passThrough(sequence, out);
  if (errorAction == 6 && !honorMarkers) reconvert(65001, sequence, out, log);
  return sequence.size();
}

inline std::size_t Converter::handleErrorFromUnknown(Text in, Bytes& out, LogBase& log) {
  hadError = true;
  if (!isOneOf(fromCodePage, {932, 936, 949, 950, 51932, 51936, 51949})) {
    handleErrorFromSingleByte(in, out, log);
    return 1;
  }
  actOnTwoBytes(fromCodePage, !honorMarkers, in, out, log);
  return 2;
}

}  // namespace quorvel::reference
