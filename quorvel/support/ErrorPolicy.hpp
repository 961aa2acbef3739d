#pragma once

// The error actions: their numbers and names. What they do is in ErrorPolicy.cpp.

#include "quorvel/support/EncodingConvert.h"

namespace quorvel {

/// What becomes of source text that cannot be converted.
enum class ErrorAction {
  drop,          ///< nothing is written, and as little is skipped as can be
  substitute,    ///< the bytes of `setDefBytes`
  hexReference,  ///< "&#x", the source bytes in hexadecimal, ";"
  reconvert,     ///< the source text in the code page of `setAltDestCodepage`
  passThrough,   ///< the source bytes
  widen,         ///< from a single-byte source: the byte and a zero byte
  skip,          ///< nothing is written
};

/// The meaning of the numbers that `EncodingConvert::setErrorAction` takes.
///
/// contract: 0 is not the same as a number that means nothing, though neither writes
/// anything: UTF-8 is skipped to the end of the ill-formed part for 0 and as far as
/// its lead byte announces otherwise, and a pair of bytes by one for 0 and by two
/// otherwise. Callers choose between them by 0 and 3, 4 or 5.
constexpr ErrorAction errorActionOf(int number) {
  switch (number) {
    case 0:
      return ErrorAction::drop;
    case 1:
      return ErrorAction::substitute;
    case 2:
      return ErrorAction::hexReference;
    case 6:
      return ErrorAction::reconvert;
    case 7:
      return ErrorAction::passThrough;
    case 8:
      return ErrorAction::widen;
    default:
      return ErrorAction::skip;
  }
}

inline ErrorAction errorActionOf(const EncodingConvert& converter) {
  return errorActionOf(converter.m_errorAction);
}

/// Whether the handlers have nothing to do, so that a decoder need not ask them.
inline bool dropsErrors(const EncodingConvert& converter) {
  return errorActionOf(converter) == ErrorAction::drop;
}

/// Carries out the error action for the UTF-16 unit at `unit`, which the destination
/// lacks: as `handleErrorFromUnicode` or, while a pivot is encoded, in terms of what
/// the pivot was decoded from.
void handleUnmapped(EncodingConvert& converter, const unsigned char* unit, DataBuffer& out,
                    LogBase& log);

}  // namespace quorvel
