#pragma once

#include "quorvel/base/DataBuffer.h"

namespace quorvel {

class EncodingConvert;

/// The error actions that write something; see `EncodingConvert::setErrorAction`.
inline constexpr int actionSubstitute = 1;
inline constexpr int actionHex = 2;
inline constexpr int actionReconvert = 6;
inline constexpr int actionPassThrough = 7;
inline constexpr int actionWiden = 8;

/// Appends the substitution bytes of `converter`.
void appendSubstitution(const EncodingConvert& converter, DataBuffer& out);

/// Appends "&#x", the bytes as upper-case hexadecimal digits, ";".
void appendHexReference(const unsigned char* bytes, unsigned int count, DataBuffer& out);

}  // namespace quorvel
