// Entry points for callers who know an encoding by its charset name or as the
// platform's ANSI or OEM code page. What they add is the policy for names that
// do not resolve; names/ resolves them, and Dispatch.cpp converts.
//
// contract: the policy differs from one to the next: an unknown source is logged and
// read as UTF-8, an unknown destination silently becomes UTF-8, and two names are
// refused if either is unknown. Mail readers rely on text with an odd charset coming
// through, and gateways on being told.

#include <algorithm>

#include "quorvel/names/CharsetNaming.h"
#include "quorvel/names/Psdk.h"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/support/EncodingConvert.h"

namespace quorvel {

namespace {

void clearFlags(EncodingConvert& converter) {
  converter.m_honorPassthroughMarkers = false;
  converter.m_hadError = false;
}

int sourceOrUtf8(StringBuffer& charset, LogBase& log) {
  const int codePage = CharsetNaming::GetCodePage(charset);
  if (codePage) return codePage;
  log.logError("Unrecognized fromCharset");
  log.LogDataSb("charsetName", charset);
  return codePageUtf8;
}

int destinationOrUtf8(StringBuffer& charset) {
  const int codePage = CharsetNaming::GetCodePage(charset);
  return codePage ? codePage : codePageUtf8;
}

const unsigned char* asBytes(const char* data) {
  return reinterpret_cast<const unsigned char*>(data);
}

unsigned int asLength(int numBytes) { return static_cast<unsigned int>(std::max(numBytes, 0)); }

}  // namespace

bool EncodingConvert::ChConvert(StringBuffer& fromCharset, StringBuffer& toCharset,
                                const unsigned char* data, unsigned int numBytes, DataBuffer& out,
                                LogBase& log, bool) {
  clearFlags(*this);
  const int from = CharsetNaming::GetCodePage(fromCharset);
  if (from == 0) return false;
  const int to = CharsetNaming::GetCodePage(toCharset);
  if (to == 0) return false;
  return EncConvert(from, to, data, numBytes, out, log);
}

bool EncodingConvert::ChConvert2(StringBuffer& fromCharset, int toCodePage,
                                 const unsigned char* data, unsigned int numBytes, DataBuffer& out,
                                 LogBase& log) {
  clearFlags(*this);
  return EncConvert(sourceOrUtf8(fromCharset, log), toCodePage, data, numBytes, out, log);
}

bool EncodingConvert::ChConvert2p(const char* fromCharset, int toCodePage,
                                  const unsigned char* data, unsigned int numBytes, DataBuffer& out,
                                  LogBase& log) {
  clearFlags(*this);
  StringBuffer charset;
  if (!charset.append(fromCharset)) return false;
  return ChConvert2(charset, toCodePage, data, numBytes, out, log);
}

bool EncodingConvert::ChConvert3(int fromCodePage, StringBuffer& toCharset,
                                 const unsigned char* data, unsigned int numBytes, DataBuffer& out,
                                 LogBase& log) {
  clearFlags(*this);
  return EncConvert(fromCodePage, destinationOrUtf8(toCharset), data, numBytes, out, log);
}

bool EncodingConvert::ChConvert3p(int fromCodePage, const char* toCharset,
                                  const unsigned char* data, unsigned int numBytes, DataBuffer& out,
                                  LogBase& log) {
  clearFlags(*this);
  StringBuffer charset;
  if (!charset.append(toCharset)) return false;
  return ChConvert3(fromCodePage, charset, data, numBytes, out, log);
}

bool EncodingConvert::ChConvert3_withPreamble(int fromCodePage, StringBuffer& toCharset,
                                              const unsigned char* data, unsigned int numBytes,
                                              DataBuffer& out, LogBase& log) {
  clearFlags(*this);
  return EncConvertWithPreamble(fromCodePage, destinationOrUtf8(toCharset), data, numBytes, out,
                                log);
}

bool EncodingConvert::AnsiToMultiByte(int toCodePage, const char* data, int numBytes,
                                      DataBuffer& out, LogBase& log) {
  return EncConvert(Psdk::getAnsiCodePage(), toCodePage, asBytes(data), asLength(numBytes), out,
                    log);
}

bool EncodingConvert::MultiByteToAnsi(int fromCodePage, const unsigned char* data, int numBytes,
                                      DataBuffer& out, LogBase& log) {
  return EncConvert(fromCodePage, Psdk::getAnsiCodePage(), data, asLength(numBytes), out, log);
}

bool EncodingConvert::OemToMultiByte(int toCodePage, const char* data, int numBytes,
                                     DataBuffer& out, LogBase& log) {
  return EncConvert(Psdk::getOemCodePage(), toCodePage, asBytes(data), asLength(numBytes), out,
                    log);
}

bool EncodingConvert::MultiByteToOem(int fromCodePage, const unsigned char* data, int numBytes,
                                     DataBuffer& out, LogBase& log) {
  return EncConvert(fromCodePage, Psdk::getOemCodePage(), data, asLength(numBytes), out, log);
}

}  // namespace quorvel
